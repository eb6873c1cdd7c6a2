#include "panels/discrete/UPDN_Runin.h"

#include "platform/controls/longValues.h"
#include "platform/controls/recording.h"
#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {

enum Bit : int { kCs = 0, kInc = 1, kUpDown = 2 };
constexpr int kWiperRow = 6; ///< VIN0 on the channel list
constexpr Milliseconds kStoreTime{3};
// The port bytes of the fast way: the other lines as the up/down panel leaves them.
constexpr std::uint8_t kCsHigh = 192, kCsLow = 130;
constexpr std::uint8_t kIncBit = 2, kUpDownBit = 4;

constexpr std::array<const char*, UPDN_Runin::kStages> kStimuli = {
    "Run UP Increments", "Run Down  Increments", "Run Up and Store Initial", "Run Up  && Store",
    "Run Down && Store", "Run Up && Store",      "Run Down && Store"};
constexpr std::array<const char*, UPDN_Runin::kStages> kSteps = {"102", "102", "63", "1", "1", "1", "1"};

} // namespace

void publish(SharedValues& values, RunInState& state, const std::string& panel) {
    values.scalar("TestStage", state.TestStage, panel);
    publishLong(values, "LoopCount", state.LoopCount, panel);
    publishLong(values, "TestCount", state.TestCount, panel);
    publishLong(values, "FailCount", state.FailCount, panel);
    publishLong(values, "PassCount", state.PassCount, panel);
    values.scalar("LogSteps", state.LogSteps, panel);
    publishLong(values, "TestQty", state.TestQty, panel);
    values.scalar("PosMax", state.PosMax, panel);
    values.scalar("WiperPos", state.WiperPos, panel);
    values.scalar("ADVoltsPerCount", state.ADVoltsPerCount, panel);
    values.scalar("WiperV", state.WiperV, panel);
    values.scalar("MaxWiperV", state.MaxWiperV, panel);
    values.scalar("MinWiperV", state.MinWiperV, panel);
    values.scalar("VoltsPerStep", state.VoltsPerStep, panel);
    values.scalar("TestLimit", state.TestLimit, panel);
    values.scalar("WiperError", state.WiperError, panel);
}

UPDN_Runin::UPDN_Runin(PanelContext& panelContext, BenchServices& panelServices, RunInState& state,
                       Trace& trace)
    : Panel(panelContext, "UPDN_Runin", "VRK Run In Test"),
      services_(panelServices),
      state_(state),
      trace_(trace) {
    txtTestQty.setText("100000");
    txtTestQty.setCaption("End Test after");
    txtLogSteps.setText("500");
    txtLogSteps.setCaption("Log Progress every");
    ChkLogAll.setCaption("Log All");
    ChkFast.setCaption("Double Purge");
    txtRunInID.setText("User Test ID");
    txtWipPositions.setText("100");
    txtWipPositions.setCaption("Positions");
    txtLimitDiv.setText("0.33");
    txtLimitDiv.setCaption("Tolerance");
    cmdRunInitial.setCaption("Run Test");
    cmdAbortRun.setCaption("Abort Run In");
    cmdAbortRun.setEnabled(false);
    resetShown();
    lblWiperVolts[0].setCaption("0.000");
    lblCalcPosbyVolts[0].setCaption("-----");
    for (int stage = 0; stage < kStages; ++stage) {
        lblInitialSet[stage].setCaption(kStimuli.at(static_cast<std::size_t>(stage)));
        txtInitialIncr[stage].setText(kSteps.at(static_cast<std::size_t>(stage)));
        Shp_Test_Status[stage].setCaption("Stage " + decimalText(stage));
        txtInitialIncr[stage].setContainer(Frame2);
    }
    for (Control* entry : std::initializer_list<Control*>{&ChkLogAll, &ChkFast, &txtRunInID, &txtLimitDiv})
        entry->setContainer(Frame2);
    ChOut.setCaptions({"/CS1", "/INC", "U/D", "RSVD", "/CS2", "/INC", "U/D", "RSVD"});
    for (int bit = 0; bit < ChOut.count(); ++bit) {
        ShpOut[bit].setCaption(ChOut[bit].caption());
        ChOut[bit].setContainer(FrmStaticIO);
        ShpOut[bit].setContainer(FrmStaticIO);
    }
    cmdIncr.setCaptions({"Up", "Down"});
    for (auto& count : txtIncr)
        count->setText("10");
    cmdSequence.setCaption("Store");
    cmdAlloutsHigh.setCaptions({"Set All High", "Set All High"});
    cmdSampleWiper[0].setCaption("Rd Volts");
    cmdBrowse.setCaption("Browse");
    cmdStartRec.setCaption("Save");
    cndTclear.setCaption("Clear");
    chkAppend.setCaption("Append");
    wireClick(cmdRunInitial, &UPDN_Runin::cmdRunInitial_Click);
    wireClick(cmdAbortRun, &UPDN_Runin::cmdAbortRun_Click);
    chkJournal.setCaption("Keep a journal");
    chkJournal.setToolTip("A line a step in a file, so that a run that was stopped can be gone on with");
    chkJournal.showValue(state.home.keepJournal ? 1 : 0);
    chkJournal.setContainer(Frame2);
    FrmUnfinished.setCaption("Unfinished run");
    FrmUnfinished.setVisible(false);
    lblUnfinished.setContainer(FrmUnfinished);
    cmdResumeRun.setCaption("Resume");
    cmdResumeRun.setToolTip("Switches the supplies on and goes on at the exact step");
    cmdNewRun.setCaption("New");
    cmdNewRun.setToolTip("Leaves that run as it is");
    cmdShowRun.setCaption("Show");
    cmdShowRun.setToolTip("Fills the log with what the journal tells");
    for (Button* button : {&cmdResumeRun, &cmdNewRun, &cmdShowRun})
        button->setContainer(FrmUnfinished);
    wireClick(cmdResumeRun, &UPDN_Runin::cmdResumeRun_Click);
    wireClick(cmdNewRun, &UPDN_Runin::cmdNewRun_Click);
    wireClick(cmdShowRun, &UPDN_Runin::cmdShowRun_Click);
    wireClick(ChOut, &UPDN_Runin::ChOut_Click);
    wireClick(cmdIncr, &UPDN_Runin::cmdIncr_Click);
    wireClick(cmdSequence, &UPDN_Runin::cmdSequence_Click);
    wireClick(cmdAlloutsHigh, &UPDN_Runin::cmdAlloutsHigh_Click);
    wireClick(cmdSampleWiper, &UPDN_Runin::cmdSampleWiper_Click);
    wireClick(cmdBrowse, &UPDN_Runin::cmdBrowse_Click);
    wireClick(cmdStartRec, &UPDN_Runin::cmdStartRec_Click);
    wireClick(cndTclear, &UPDN_Runin::cndTclear_Click);
    for (TextBox* entry : {&txtTestQty, &txtLogSteps})
        entry->onChange([this] { showEndStep(); });
    showEndStep();
}

void UPDN_Runin::resetShown() {
    lblTestLimit.setCaption("-.-----");
    lblVoltsPer.setCaption("-.---");
    for (auto& volts : lblWIPRange)
        volts->showUnread("-.---");
    lblPosition.setCaption("-----");
    for (Label* label : {&lblElapsed, &lblTimeLeft})
        label->setCaption("-----");
    for (auto& count : lblRUnCount)
        count->setCaption("-----");
    for (int stage = 0; stage < kStages; ++stage) {
        lvlWipV[stage].showUnread("-.---");
        lvlWipError[stage].setCaption("-.---");
        txtWiperLoc[stage].setText("-----");
        txtWiperVolts[stage].setText("-----");
        Shp_Test_Status[stage].setColour(Colour::Black);
    }
}

void UPDN_Runin::cmdAbortRun_Click() {
    services_.run.ScriptAbort = true;
}

void UPDN_Runin::sendPort(std::uint8_t address, std::uint8_t value) {
    hid::Report& buffer = services_.link.reportBuffer;
    services_.link.setReportID();
    buffer[report::kCommandByte] = static_cast<std::uint8_t>(report::Command::SfrAccess);
    buffer[report::kSubCommandByte] = report::kWrite;
    buffer[report::kSfrAddress] = address;
    buffer[report::kSfrValue] = value;
    // Nobody waits for the reply: the next sample drains it.
    if (!services_.link.writeReport())
        edgeLost_ = true;
}

void UPDN_Runin::ChOut_Click(int index) {
    ShpOut[index].setColour(ChOut[index].checked() ? Colour::LightRed : Colour::Black);
    if (index == kCs) {
        sendPort(report::sfr::P0, ChOut[kCs].checked() ? kCsHigh : kCsLow);
    } else if (index == kInc || index == kUpDown) {
        const int value = (ChOut[kInc].checked() ? kIncBit : 0) + (ChOut[kUpDown].checked() ? kUpDownBit : 0);
        sendPort(report::sfr::P1, static_cast<std::uint8_t>(value));
    } else {
        for (const int bit : {kInc, kUpDown})
            ShpOut[bit].setColour(ChOut[bit].checked() ? Colour::LightRed : Colour::Black);
    }
}

void UPDN_Runin::cmdAlloutsHigh_Click(int index) {
    const bool before = std::exchange(services_.run.PinBatch, true);
    const OnScopeExit restore([this, before] { services_.run.PinBatch = before; });
    if (index != 0)
        return;
    for (const int bit : {kCs, kInc, kUpDown}) {
        ChOut[bit].showValue(1); // two reports tell all three lines
        ShpOut[bit].setColour(Colour::LightRed);
    }
    for (const int pin : {6, 7, 9, 10})
        services_.board().setPin(pin, 1);
    sendPort(report::sfr::P0, kCsHigh);
    sendPort(report::sfr::P1, kIncBit + kUpDownBit);
}

void UPDN_Runin::setPin(Pin pin, bool high) {
    ChOut[static_cast<int>(pin)].setValue(high ? 1 : 0);
}

void UPDN_Runin::cmdIncr_Click(int index) {
    const int count = decimalInt(txtIncr[index].text());
    setPin(Pin::Cs, false);
    setPin(Pin::Inc, true);
    setPin(Pin::UpDown, index == 0);
    for (int step = 1; step < count; ++step) {
        setPin(Pin::Inc, false);
        setPin(Pin::Inc, true);
    }
    setPin(Pin::Inc, false);
}

void UPDN_Runin::cmdSequence_Click() {
    services_.run.PinBatch = false;
    setPin(Pin::Inc, true);
    setPin(Pin::Cs, true);
    wait(kStoreTime);
}

void UPDN_Runin::prepare() {
    services_.board().Combo1.setListIndex(kWiperRow);
    frmMainF340& console = services_.console();
    if (console.connectedInput().empty())
        console.cmdMuxWrite_Click();
    console.chkADCEnable.setValue(1);
    console.cmdADCWrEn_Click();
    console.cmdADCRDData_Click();
}

int UPDN_Runin::convert() {
    modHID& link = services_.link;
    link.setReportID();
    link.reportBuffer[report::kCommandByte] = static_cast<std::uint8_t>(report::Command::AdcRead);
    link.reportBuffer[2] = 0;
    link.reportBuffer[3] = 0;
    return link.writeReport() ? link.awaitInputReport() : static_cast<int>(kLinkWriteFailed);
}

void UPDN_Runin::cmdSampleWiper_Click(int index) {
    const double perCount = 2 * services_.analog.ADRef / 1023;
    const auto counts = sample(ChkFast.checked());
    if (!counts)
        return;
    const double volts = *counts * perCount;
    state_.WiperV = volts;
    lblWiperVolts[index].showRead(formatNumber(volts, "#0.00000"));
    lvlWipV[state_.TestStage].showRead(lblWiperVolts[index].caption());
    // A run chooses the wiper's input as it begins; by hand it is whatever was measured last.
    const frmMainF340& console = services_.console();
    const std::string& input = console.connectedInput();
    if (input == console.cboAnamux[0].rows().at(kWiperRow).text)
        return;
    const std::string cause = "measured at " + (input.empty() ? "no chosen input" : input);
    for (Reading* shown : {&lblWiperVolts[index], &lvlWipV[state_.TestStage]})
        shown->markStale(cause);
    tell(false, "These are not the wiper's volts", cause, &cmdSampleWiper[index]);
}

void UPDN_Runin::stageBegan(int stage) {
    state_.TestStage = stage;
    if (stage > 2)
        ++state_.LoopCount;
    Shp_Test_Status[stage].setColour(Colour::LightBlue);
}

void UPDN_Runin::stepping(int direction, int count) {
    txtIncr[direction].setText(decimalText(count));
}

void UPDN_Runin::sampled(int stage, double volts) {
    state_.WiperV = volts;
    lblWiperVolts[0].showRead(formatNumber(volts, "#0.00000"));
    lvlWipV[stage].showRead(lblWiperVolts[0].caption());
    if (stage < lblWIPRange.count())
        lblWIPRange[stage].showRead(lblWiperVolts[0].caption());
}

void UPDN_Runin::rangeFound(const RunInRange& range) {
    state_.MaxWiperV = range.max;
    state_.MinWiperV = range.min;
    state_.VoltsPerStep = range.voltsPerStep;
    state_.TestLimit = range.limit;
    lblVoltsPer.setCaption(formatNumber(range.voltsPerStep, "0.0000"));
    lblTestLimit.setCaption(formatNumber(range.limit, "0.0000"));
    ranges_.emit(range);
}

void UPDN_Runin::stageDone(const RunInStage& stage) {
    state_.WiperPos = stage.tally;
    state_.LoopCount = stage.loop;
    stages_.emit(stage);
    lblPosition.setCaption(decimalText(stage.shown));
    txtWiperLoc[stage.stage].setText(lblPosition.caption());
    if (stage.verdict == RunInVerdict::Measured) {
        txtWiperVolts[stage.stage].setText(lblWiperVolts[0].caption());
        Shp_Test_Status[stage.stage].setColour(Colour::Yellow);
        return;
    }
    ++state_.TestCount;
    const bool pass = stage.verdict == RunInVerdict::Pass;
    ++(pass ? state_.PassCount : state_.FailCount);
    if (stage.band) { // the initial test judges twice
        ++state_.TestCount;
        ++(*stage.band ? state_.PassCount : state_.FailCount);
    }
    state_.WiperError = stage.error;
    if (!pass || stage.band == false)
        lblRUnCount[1].setCaption(decimalText(state_.FailCount));
    txtWiperVolts[stage.stage].setText(formatNumber(stage.expected, "0.0000"));
    lvlWipError[stage.stage].setCaption(formatNumber(stage.error, "0.0000"));
    Shp_Test_Status[stage.stage].setColour(pass ? Colour::LightGreen : Colour::LightRed);
}

void UPDN_Runin::cmdBrowse_Click() {
    chooseRecording(context(), txtFilePath);
}

void UPDN_Runin::cmdStartRec_Click() {
    if (saveRecording(context(), rtxt1, txtFilePath.text(), chkAppend.checked()))
        tell(true, "Saved the log", txtFilePath.text());
}

void UPDN_Runin::cndTclear_Click() {
    rtxt1.clear();
}

} // namespace vrk
