#pragma once

#include "panels/blocks/BenchServices.h"
#include "panels/blocks/SupplyBlock.h"
#include "panels/discrete/RunInJournal.h"
#include "panels/discrete/RunInTest.h"
#include "platform/runtime/Signal.h"
#include "platform/runtime/SleepInhibitor.h"

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vrk {

/// What the program gives its runs, set once at its start.
struct RunInHome {
    std::filesystem::path folder{}; ///< of the journals that the page keeps; made at need
    bool keepJournal = false;       ///< the page's switch as it opens
    std::string program = "vrkbench";
    std::function<std::string()> part{}; ///< in the socket, where the program knows it
    SleepInhibitor* awake = nullptr;
};

/// A run, for whoever starts one.
struct RunInOrder {
    std::filesystem::path journal{}; ///< kept here, or gone on with; empty: no journal
    bool resume = false;
    RunInSettings::Abort abort = RunInSettings::Abort::Terminates;
    /// Whether the user is asked about a part that is elsewhere; the observers are in any case.
    bool asks = true;
    std::vector<RunInObserver*> observers{};
    /// Hears what the run is before its first step.
    std::function<void(const RunInHeader& header)> begun{};
    /// Hears once that the journal ends, the run going on.
    std::function<void(const std::string& why)> journalFailed{};
};

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
    RunInHome home{};
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

    // Journal
    CheckBox chkJournal{*this, "chkJournal"};
    /// Visible while an unfinished run can be gone on with.
    Frame FrmUnfinished{*this, "FrmUnfinished"};
    Label lblUnfinished{*this, "lblUnfinished"};
    Button cmdResumeRun{*this, "cmdResumeRun"};
    Button cmdNewRun{*this, "cmdNewRun"};
    Button cmdShowRun{*this, "cmdShowRun"};

    // Results
    Label lblTestLimit{*this, "lblTestLimit"};
    Label lblVoltsPer{*this, "lblVoltsPer"};
    ControlArray<Reading> lblWIPRange{*this, "lblWIPRange", 0, 1};
    Label lblPosition{*this, "lblPosition"};
    /// Of the run, hours:minutes:seconds
    Label lblElapsed{*this, "lblElapsed"};
    /// By the median of the last rounds
    Label lblTimeLeft{*this, "lblTimeLeft"};
    /// The step at which the run ends, by the entries: the first log point that is not short of what was
    /// asked for. Dashes while the entries make no run
    Label lblEndStep{*this, "lblEndStep"};
    Label lblJournal{*this, "lblJournal"};
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
    /// Goes on with the run that is offered.
    void cmdResumeRun_Click();
    /// Leaves the run that is offered as it is.
    void cmdNewRun_Click();
    /// Fills the log with what the journal tells of the run that is offered.
    void cmdShowRun_Click();

    void Form_Activate() override;

    /// One run from its beginning, or from where its journal ends, to its end. \throws Fault before anything
    /// is sent for entries, or a journal, that cannot be
    RunInEnd run(const RunInOrder& order);
    bool running() const { return test_ != nullptr; }

    /// For the picture of a run: its settings as it begins or goes on, then each stage and event.
    [[nodiscard]] Subscription observeBegun(std::function<void(const RunInSettings&)> observer) {
        return begun_.connect(std::move(observer));
    }
    /// Behind its beginning, of a run that is gone on with: each step of before. \param resumed the first
    /// step behind an interruption of then
    [[nodiscard]] Subscription observeEarlier(std::function<void(const RunInStage&, bool resumed)> observer) {
        return earlier_.connect(std::move(observer));
    }
    [[nodiscard]] Subscription observeRange(std::function<void(const RunInRange&)> observer) {
        return ranges_.connect(std::move(observer));
    }
    [[nodiscard]] Subscription observeStages(std::function<void(const RunInStage&)> observer) {
        return stages_.connect(std::move(observer));
    }
    [[nodiscard]] Subscription observeEvents(std::function<void(RunInEvent, const std::string&)> observer) {
        return events_.connect(std::move(observer));
    }

  private:
    // RunInBoard
    void prepare() override;
    void setAllHigh() override { cmdAlloutsHigh_Click(0); }
    void setPin(Pin pin, bool high) override;
    std::optional<int> sample(bool doublePurge) override;
    void recall() override;
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
    void event(RunInEvent what, const std::string& text) override { events_.emit(what, text); }
    void ended(RunInEnd how, int count, int fails) override;
    bool goOn(const std::string& text) override;

    RunInSettings takeSettings();
    RunInHeader headerOf(const RunInSettings& settings) const;
    std::unique_ptr<RunInJournal> newJournal(const RunInOrder& order, const RunInHeader& header);
    RunInJournal::Trouble journalTrouble(const RunInOrder& order);
    std::filesystem::path journalPath() const;
    void showFields(const RunInHeader& header);
    void showProgress(const RunInProgress& progress);
    void showTime(int count);
    void showEndStep();
    void tellEarlier(const std::filesystem::path& journal);
    void chooseLevel(const std::string& level);
    void switchOn();
    void offerUnfinished();
    SupplyBlock* supply() const;
    void resetShown();
    void sendPort(std::uint8_t address, std::uint8_t value);
    int convert();
    bool exchange();

    BenchServices& services_;
    RunInState& state_;
    Trace& trace_;
    Activity* activity_ = nullptr;
    RunInTest* test_ = nullptr; ///< while it runs
    bool asks_ = true;
    bool lost_ = false;     ///< the link is, as far as the last exchange tells
    bool edgeLost_ = false; ///< the board did not take an edge since the last sample
    bool powered_ = false;  ///< VCC was on when the run began
    bool minusOn_ = false;
    int endStep_ = 0;
    Milliseconds began_{0}; ///< of the run, on the bench's clock; before its start for one gone on with
    Milliseconds roundBegan_{0};
    std::deque<Milliseconds> rounds_; ///< how long the last ones took
    std::string vcc_;                 ///< level of a run that was gone on with
    std::filesystem::path unfinished_;
    std::set<std::filesystem::path> left_; ///< offers that the user has declined
    Signal<const RunInSettings&> begun_;
    Signal<const RunInStage&, bool> earlier_;
    Signal<const RunInRange&> ranges_;
    Signal<const RunInStage&> stages_;
    Signal<RunInEvent, const std::string&> events_;
};

} // namespace vrk
