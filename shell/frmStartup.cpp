#include "shell/frmStartup.h"

#include <optional>
#include <utility>

namespace vrk {

frmStartup::frmStartup(PanelContext& context, Uses uses)
    : Panel(context, "frmStartup", "VRK Evaluation"), uses_(std::move(uses)) {
    cboVRKSelect.setCaption("Device");
    cboDeviceSelect.setCaption("Part");
    OptLM73.setCaptions({"Enable LM 73 ", "Disable LM 73 "});
    for (auto& option : OptLM73)
        option->join(lm73Group_);
    Timer1.setInterval(Milliseconds{1500});
    Shpstatus[2].setCaption("Waiting for a selection");
    Shpstatus[2].setVisible(false);
    chkTRDetail.setCaption("Detailed");
    chkTRDetail.showValue(uses_.trace.traceDetail ? 1 : 0);
    ChkTrace.setCaption("Trace");
    Command1.setCaption("Command1");
    Command2.setCaption("Command2");
    Command3.setCaption("Calibrate");
    cmdShow4410.setCaption("Instruction form");
    cmdShowBlock.setCaption("Block");
    mnuAboutShow.setCaption("About");
    Picture1.setToolTip("Double click: show the consoles along with the device panel");
    Label1.setCaption("Connect Hardware as Shown, then select Option");
    switches_ =
        uses_.trace.observeSwitches([this] { chkTRDetail.showValue(uses_.trace.traceDetail ? 1 : 0); });

    wireClick(cboVRKSelect, &frmStartup::cboVRKSelect_Click);
    wireClick(OptLM73, &frmStartup::OptLM73_Click);
    wireClick(chkTRDetail, &frmStartup::chkTRDetail_Click);
    wireClick(mnuAboutShow, &frmStartup::mnuAboutShow_Click);
    wireClick(Command1, &frmStartup::Command1_Click);
    wireClick(Command2, &frmStartup::Command2_Click);
    wireClick(Command3, &frmStartup::Command3_Click);
    wireClick(cmdShow4410, &frmStartup::cmdShow4410_Click);
    wireClick(cmdShowBlock, &frmStartup::cmdShowBlock_Click);
    Picture1.onDoubleClick([this] { Picture1_DblClick(); });
    Timer1.onTimer([this] { Timer1_Timer(); });
    action("Picture1_DblClick", &frmStartup::Picture1_DblClick);
    action("Timer1_Timer", &frmStartup::Timer1_Timer);
    action("Form_GotFocus", &frmStartup::Form_GotFocus);
}

void frmStartup::Form_Load() {
    uses_.analog.ProcessorID = 320;
    uses_.link.BoardConnected = false;
    uses_.analog.ADRef = 3.3;
    uses_.supply.TrackOn = true;
    uses_.state = {};
    OptLM73[0].showSelected();
    cboVRKSelect.setRows({{"Device Selection", 0},
                          {"   VRK Devices", 0},
                          {"I2C", 0},
                          {"SPI", 0},
                          {"Up /Down", 0},
                          {"Push Button", 0},
                          {"---------", 0},
                          {"", 0},
                          {"", 0},
                          {"Calibrate Device VCC Supply", 0}});
    cboDeviceSelect.setRows({{"--  --  --  --  --", 0}});
    cboDeviceSelect.setListIndex(0);
    Timer1.setRunning(true);
    cboVRKSelect.setListIndex(kHead);
}

void frmStartup::Form_Activate() {
    uses_.link.activePanel = this;
    Timer1.setRunning(true);
    events().letEventsRun();
    cboVRKSelect.setListIndex(kHead);
    uses_.state.reloadI2CList = false;
    uses_.state.reloadSPIList = false;
    uses_.self().show();
}

void frmStartup::Form_GotFocus() {
    Timer1.setRunning(true);
    uses_.link.activePanel = this;
}

void frmStartup::Form_Unload() {
    Timer1.setRunning(false);
    uses_.link.closeHIDHandles();
    events().endProgram();
}

void frmStartup::Timer1_Timer() {
    Shpstatus[2].setVisible(true);
    Shpstatus[2].blinkGood();
}

void frmStartup::OptLM73_Click(int index) {
    uses_.state.lm73Enabled = index == 0;
}

void frmStartup::chkTRDetail_Click() {
    uses_.trace.setDetail(chkTRDetail.value() == 1);
}

void frmStartup::Command3_Click() {
    if (PanelSlotBase* calibration = uses_.panelOfRow(kCalibrate))
        calibration->show();
}

void frmStartup::cmdShow4410_Click() {
    uses_.showInstructions();
}

void frmStartup::mnuAboutShow_Click() {
    uses_.showAbout();
}

void frmStartup::Picture1_DblClick() {
    uses_.state.showConsoles = true;
}

void frmStartup::loadConsoles() {
    // The first hiding loads: discovery runs in it, and a missing board is asked for once.
    std::optional<modHID::QuietStart> quiet;
    if (!uses_.console.loaded())
        quiet.emplace(uses_.link);
    uses_.board.hide();
    uses_.console.hide();
}

void frmStartup::cboVRKSelect_Click() {
    // The loads let events run; a second selection inside a load that is half done would undo it.
    const DisabledWhile opening({&cboVRKSelect});
    // A load that faults leaves nothing half open: the choice falls back to the head, and the panel waits on.
    OnScopeExit failed([this] {
        cboVRKSelect.showListIndex(kHead);
        Timer1.setRunning(true);
    });
    uses_.link.activePanel = this;
    uses_.state.returningToMenu = false;
    if (cboVRKSelect.listIndex() != kHead) {
        Timer1.setRunning(false);
        Shpstatus[2].setVisible(false);
        loadConsoles();
        events().letEventsRun();
        if (!uses_.link.BoardConnected) {
            context().say("Evaluation Board is not connected, or another application is using it.");
            cboVRKSelect.setListIndex(kHead);
            events().letEventsRun();
        }
    }
    // Whatever was found: the warning is given once, and a second selection goes ahead.
    uses_.link.BoardConnected = true;
    events().letEventsRun();
    uses_.link.activePanel = this;

    const int row = cboVRKSelect.listIndex();
    PanelSlotBase* panel = row == kHead ? nullptr : uses_.panelOfRow(row);
    if (panel == nullptr) {
        failed.dismiss();
        return;
    }
    if (row != kCalibrate)
        uses_.board->setPin(frmMotherboardDAQ2::kPinMotherboardSwitch, row == kSPI ? 1 : 0);
    if (row == kI2C)
        uses_.console->setI2Coptions(0);
    if (uses_.state.showConsoles && row != kPushButton) {
        uses_.board.show();
        uses_.console.show();
    }
    panel->show();
    uses_.self().hide();
    failed.dismiss();
}

} // namespace vrk
