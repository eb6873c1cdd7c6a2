#include "panels/DevicePanel.h"

#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {
constexpr int kUserRow = 10;
/// VIN4 on the lists of the 320 board; the reading keeps the number on any other board.
constexpr int kVccSampleRow = 10;
constexpr Milliseconds kVccSettle{80};
} // namespace

DevicePanel::DevicePanel(PanelContext& context, std::string name, std::string title, Uses uses)
    : Panel(context, std::move(name), std::move(title)), uses_(std::move(uses)) {
    wireSupply();
    wireStatus();
}

DevicePanel::~DevicePanel() {
    if (uses_.link.activePanel == this)
        uses_.link.activePanel = nullptr;
}

void DevicePanel::wireSupply() {
    OptVCC.setCaptions({"On", "Off"});
    OptVM.setCaptions({"On", "Off"});
    for (const int index : {0, 1}) {
        OptVCC[index].join(vccGroup_);
        OptVM[index].join(minusGroup_);
        OptVM[index].setEnabled(!uses_.supply.TrackOn);
    }
    OptVCC[1].showSelected();
    OptVM[1].showSelected();
    ChkTrack.setCaption("Track V+");
    ChkTrack.showValue(uses_.supply.TrackOn ? 1 : 0);
    ShpVCCon.setCaption("VCC");
    ShVM.setCaption("V-");
    CboVCC.setCaption("VCC");
    cmdUpdateVCC.setCaption("Update VCC");
    cmdReadVCC.setCaption("Sample VCC");
    lblVCCVolts.setCaption("0.00");
    lblSPICode.setCaption("5F");
    lblUserVCC.setCaption("User");
    txtUserVCC.setText("5F");
    txtUserVCC.setToolTip("Hex Programming Code (20-7F) Hex");
    txtADOffset.setText("0.00");
    txtADOffset.setCaption("Offset");
    txtADGain.setText("2.0");
    txtADGain.setCaption("Gain");
    ChkShutDown2.setCaption("/ShutDown /Wp");
    ChkShutDown2.showValue(1);

    wireClick(OptVCC, &DevicePanel::OptVCC_Click);
    wireClick(OptVM, &DevicePanel::OptVM_Click);
    wireClick(ChkTrack, &DevicePanel::ChkTrack_Click);
    wireClick(CboVCC, &DevicePanel::CboVCC_Click);
    wireClick(cmdUpdateVCC, &DevicePanel::cmdUpdateVCC_Click);
    wireClick(cmdReadVCC, &DevicePanel::cmdReadVCC_Click);
    wireClick(ChkShutDown2, &DevicePanel::ChkShutDown2_Click);
    CboVCC.onLostFocus([this] {
        showUserCode();
        txtUserVCC.setText(upperCase(txtUserVCC.text()));
    });
    // The range in its tool tip is not enforced.
    txtUserVCC.onLostFocus([this] { txtUserVCC.setText(upperCase(txtUserVCC.text())); });
    txtADOffset.onLostFocus([this] {
        if (!isNumeric(txtADOffset.text()))
            txtADOffset.setText("0.00");
    });
    txtADGain.onLostFocus([this] {
        if (!isNumeric(txtADGain.text()))
            txtADGain.setText("2.00");
    });
}

void DevicePanel::wireStatus() {
    lblUSBChk.setCaptions({"USB Attach", "Write VRK", "Read VRK", "Timer Status", "VRK COMM", "USB Comm"});
    ShpAttach.setCaption(lblUSBChk[0].caption());
    for (auto& lamp : Shape1)
        lamp->setCaption(lblUSBChk[lamp->index()].caption());
    Shp_USB_Transfer.setCaption(lblUSBChk[5].caption());
    cmdMMenu.setCaption("Main Menu");
    wireClick(cmdMMenu, &DevicePanel::cmdMMenu_Click);
    if (uses_.link.attached())
        ShpAttach.setColour(Colour::LightGreen);
    attached_ = uses_.link.observeAttached([this] { ShpAttach.setColour(Colour::LightGreen); });
}

void DevicePanel::Form_Activate() {
    becomeActive();
    if (!OptVCC[1].value())
        return;
    OptVCC_Click(1);
    pump();
    uses_.motherboard.initSupplyDefaults();
}

void DevicePanel::Form_QueryUnload() {
    if (!uses_.state.returningToMenu)
        uses_.shell.endProgram();
}

void DevicePanel::Form_Unload() {
    if (uses_.link.activePanel == this)
        uses_.link.activePanel = nullptr;
    if (!uses_.state.returningToMenu)
        uses_.shell.endProgram();
}

void DevicePanel::OptVCC_Click(int index) {
    uses_.motherboard.showSupplyState(index);
    ChkShutDown2_Click();
    cmdUpdateVCC_Click();
}

void DevicePanel::OptVM_Click(int index) {
    if (index == 0) {
        ShVM.setColour(Colour::LightRed);
        board().OptVCCMinus[0].setValue(true);
    } else if (index == 1) {
        board().OptVCCMinus[1].setValue(true);
        ShVM.setColour(Colour::Black);
    }
    pump();
}

void DevicePanel::ChkTrack_Click() {
    if (ChkTrack.value() == 1) {
        uses_.supply.TrackOn = true;
        board().ChkTrack.setValue(1);
        for (auto& option : OptVM)
            option->setEnabled(false);
        for (const int state : {0, 1})
            if (OptVCC[state].value()) {
                OptVM[state].setValue(true);
                OptVCC_Click(state);
            }
    } else {
        board().ChkTrack.setValue(0);
        uses_.supply.TrackOn = false;
        for (auto& option : OptVM)
            option->setEnabled(true);
    }
    pump();
}

void DevicePanel::CboVCC_Click() {
    showUserCode();
}

void DevicePanel::showUserCode() {
    const bool user = CboVCC.listIndex() == kUserRow;
    txtUserVCC.setVisible(user);
    lblUserVCC.setVisible(user);
}

void DevicePanel::cmdUpdateVCC_Click() {
    DisabledWhile busy({&cmdUpdateVCC});
    pump();
    // No list of today has a row 10; the branch is for one that offers a code of the user's own.
    if (CboVCC.listIndex() != kUserRow) {
        lblSPICode.setCaption(uses_.supply.VCCHex[CboVCC.listIndex()]);
        board().txtSPIwr[7].setText(lblSPICode.caption());
        txtUserVCC.setText(lblSPICode.caption());
    } else {
        lblSPICode.setCaption(txtUserVCC.text());
        board().txtSPIwr[7].setText(txtUserVCC.text());
    }
    board().cmdSPIWrite2_Click();
    pump();
    measureVcc(uses_.analog.MuxVCCIndex);
    busy.release();
    pump();
}

void DevicePanel::cmdReadVCC_Click() {
    DisabledWhile busy({&cmdReadVCC});
    measureVcc(kVccSampleRow);
    busy.release();
    pump();
}

void DevicePanel::measureVcc(int row) {
    board().Combo1.setListIndex(row);
    pump();
    lblVCCVolts.setCaption(measure());
    pump();
    wait(kVccSettle);
}

std::string DevicePanel::measure() {
    board().READ_AD();
    board().READ_AD();
    uses_.analog.ADVolts += leadingNumber(txtADOffset.text());
    return formatNumber(uses_.analog.ADVolts * leadingNumber(txtADGain.text()), "#0.000");
}

void DevicePanel::ChkShutDown2_Click() {
    board().chkPData[frmMotherboardDAQ2::kPinShutdown].setValue(0);
    if (ChkShutDown2.checked())
        board().chkPData[frmMotherboardDAQ2::kPinShutdown].setValue(1);
    board().chkPData_Click(frmMotherboardDAQ2::kPinShutdown);
    pump();
    board().cmdWrtPipe1_Click();
    pump();
}

void DevicePanel::cmdMMenu_Click() {
    OptVCC[1].setValue(true);
    OptVCC_Click(1);
    pump();
    uses_.state.returningToMenu = true;
    uses_.products.unload();
    uses_.hideSelf();
    uses_.shell.showStartPanel();
    pump();
}

void DevicePanel::warnIfVccOff() {
    if (!board().OptVCC[0].value())
        context().say("VCC is not turned on.");
}

void DevicePanel::hexEntry(TextBox& box, const std::string& fallback, std::function<void()> onEnter) {
    const auto check = [&box, fallback] {
        box.setText(upperCase(box.text()));
        const int value = hexToInt(box.text());
        if (value <= 0 || value > 256)
            box.setText(fallback);
    };
    box.setMaxLength(3);
    box.onKeyPress([check, onEnter = std::move(onEnter)](int key) {
        const int passed = hexKeyFilter(key);
        if (passed == kEnterKey) {
            check();
            if (onEnter)
                onEnter();
        }
        return passed;
    });
    box.onLostFocus(check);
}

} // namespace vrk
