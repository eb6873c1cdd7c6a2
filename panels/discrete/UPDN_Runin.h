#pragma once

#include "panels/blocks/BenchServices.h"
#include "panels/discrete/RunInTest.h"

#include <array>
#include <string>

namespace vrk {

/// Working values of the run-in test; outlive the panel.
struct RunInState {
    int TestStage = 0;
    int LoopCount = 0;
    int TestCount = 0;
    int FailCount = 0;
    int PassCount = 0;
    int LogSteps = 0;
    int TestQty = 0;
    int PosMax = 0;
    int WiperPos = 0;
    double ADVoltsPerCount = 0;
    double WiperV = 0;
    double MaxWiperV = 0;
    double MinWiperV = 0;
    double VoltsPerStep = 0;
    double TestLimit = 0;
    double WiperError = 0;
};

void publish(SharedValues& values, RunInState& state, const std::string& panel);

/// The run-in test's panel: the entries of a run, its seven stages, its log. Has pin controls of its own, and
/// for the rate of a run writes their reports straight out, without the motherboard's image: one report an
/// edge. Never becomes the active panel: the supplies stay those of the up/down panel that opened it.
class UPDN_Runin final : public Panel, private RunInBoard, private RunInObserver {
  public:
    static constexpr int kStages = RunInSettings::kStages;

    UPDN_Runin(PanelContext& context, BenchServices& services, RunInState& state, Trace& trace);

    bool closeHides() const override { return true; }

    // Entries
    Frame Frame2{*this, "Frame2"};
    TextBox txtTestQty{*this, "txtTestQty"};
    TextBox txtLogSteps{*this, "txtLogSteps"};
    CheckBox ChkLogAll{*this, "ChkLogAll"};
    CheckBox ChkFast{*this, "ChkFast"};
    TextBox txtRunInID{*this, "txtRunInID"};
    TextBox txtWipPositions{*this, "txtWipPositions"};
    TextBox txtLimitDiv{*this, "txtLimitDiv"};
    Button cmdRunInitial{*this, "cmdRunInitial"};
    Button cmdAbortRun{*this, "cmdAbortRun"};

    // Results
    Label lblTestLimit{*this, "lblTestLimit"};
    Label lblVoltsPer{*this, "lblVoltsPer"};
    ControlArray<Reading> lblWIPRange{*this, "lblWIPRange", 0, 1};
    Label lblPosition{*this, "lblPosition"};
    /// 0 steps, 1 fails
    ControlArray<Label> lblRUnCount{*this, "lblRUnCount", 0, 1};
    ControlArray<Reading> lblWiperVolts{*this, "lblWiperVolts", 0, 0};
    ControlArray<Label> lblCalcPosbyVolts{*this, "lblCalcPosbyVolts", 0, 0};

    // Stages
    ControlArray<Label> lblInitialSet{*this, "lblInitialSet", 0, kStages - 1};
    ControlArray<TextBox> txtInitialIncr{*this, "txtInitialIncr", 0, kStages - 1};
    ControlArray<TextBox> txtWiperLoc{*this, "txtWiperLoc", 0, kStages - 1};
    ControlArray<TextBox> txtWiperVolts{*this, "txtWiperVolts", 0, kStages - 1};
    ControlArray<Reading> lvlWipV{*this, "lvlWipV", 0, kStages - 1};
    ControlArray<Label> lvlWipError{*this, "lvlWipError", 0, kStages - 1};
    ControlArray<Lamp> Shp_Test_Status{*this, "Shp_Test_Status", 0, kStages - 1};

    // Pins: 0 /CS1, 1 /INC, 2 U/D, 3 reserved; 4 to 7, of part #2, send nothing here
    Frame FrmStaticIO{*this, "FrmStaticIO"};
    ControlArray<CheckBox> ChOut{*this, "ChOut", 0, 7};
    ControlArray<Lamp> ShpOut{*this, "ShpOut", 0, 7};
    ControlArray<Button> cmdIncr{*this, "cmdIncr", 0, 1};
    ControlArray<TextBox> txtIncr{*this, "txtIncr", 0, 1};
    Button cmdSequence{*this, "cmdSequence"};
    ControlArray<Button> cmdAlloutsHigh{*this, "cmdAlloutsHigh", 0, 1};
    ControlArray<Button> cmdSampleWiper{*this, "cmdSampleWiper", 0, 0};

    // Log
    TextLog rtxt1{*this, "rtxt1"};
    TextBox txtFilePath{*this, "txtFilePath"};
    CheckBox chkAppend{*this, "chkAppend"};
    Button cmdBrowse{*this, "cmdBrowse"};
    Button cmdStartRec{*this, "cmdStartRec"};
    Button cndTclear{*this, "cndTclear"};

    void cmdRunInitial_Click();
    void cmdAbortRun_Click();
    void ChOut_Click(int index);
    void cmdIncr_Click(int index);
    /// Stores: /INC rises, then /CS.
    void cmdSequence_Click();
    void cmdAlloutsHigh_Click(int index);
    void cmdSampleWiper_Click(int index);
    void cmdBrowse_Click();
    void cmdStartRec_Click();
    void cndTclear_Click();

  private:
    // RunInBoard
    void prepare() override;
    void setAllHigh() override { cmdAlloutsHigh_Click(0); }
    void setPin(Pin pin, bool high) override;
    int sample(bool doublePurge) override;
    void wait(Milliseconds duration) override { Panel::wait(duration); }
    Milliseconds now() const override { return context().clock().now(); }
    WallTime wallTime() const override { return context().clock().wallTime(); }
    // RunInObserver
    void logText(std::string_view text) override { rtxt1.append(text); }
    void stageBegan(int stage) override;
    void stepping(int direction, int count) override;
    void sampled(int stage, double volts) override;
    void rangeFound(const RunInRange& range) override;
    void stageDone(const RunInStage& stage) override;
    void roundDone(int count, int fails) override;
    void ended(RunInEnd how, int count, int fails) override;

    RunInSettings takeSettings();
    void resetShown();
    void sendPort(std::uint8_t address, std::uint8_t value);
    bool convert();

    BenchServices& services_;
    RunInState& state_;
    Trace& trace_;
    Activity* activity_ = nullptr;
};

} // namespace vrk
