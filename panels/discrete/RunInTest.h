#pragma once

#include "platform/runtime/Clock.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vrk {

/// What a run is started with. Texts stand in the log as the user wrote them.
struct RunInSettings {
    static constexpr int kStages = 7;

    int testQty = 100000;    ///< steps; the end is tested at log points alone
    int logSteps = 500;      ///< 16-bit
    int positions = 100;     ///< of the part, 16-bit
    double tolerance = 0.33; ///< fraction of one step
    std::string positionsText = "100";
    std::string toleranceText = "0.33";
    std::string id = "User Test ID";
    bool logAll = false;
    bool doublePurge = false; ///< one more drain ahead of each sample's first exchange
    /// Steps of each stage: up to the stop, down to the stop, the initial position, then the loop's four.
    std::array<int, kStages> stimulus{102, 102, 63, 1, 1, 1, 1};
    double reference = 3.3; ///< converter reference, volts
    /// What an abort is called: a signal that ends the program is no decision about the test.
    enum class Abort { Terminates, Interrupts };
    Abort abort = Abort::Terminates;
};

/// What the stops told of the part.
struct RunInRange {
    double max = 0; ///< volts
    double min = 0;
    double voltsPerStep = 0; ///< over the positions, not over the positions less one
    double limit = 0;        ///< volts either way
};

enum class RunInVerdict { Measured, Pass, Fail };

/// One stage done.
struct RunInStage {
    int loop = 0;        ///< steps so far; 0 before the loop
    int stage = 0;       ///< 0 to 6
    int shown = 0;       ///< tally before it is held to the part's ends
    int tally = 0;       ///< where the wiper should be
    int counts = 0;      ///< of the converter
    double volts = 0;    ///< measured
    double expected = 0; ///< as its four decimals say; the measured value on stages 0 and 1
    double error = 0;    ///< expected less measured, as its four decimals say
    RunInVerdict verdict = RunInVerdict::Measured;
    std::optional<bool> band{}; ///< stage 2: whether the value lies within the initial band
    Milliseconds ms{0};         ///< since the run began
};

/// How far an earlier run came, for one that goes on with it.
struct RunInProgress {
    std::optional<RunInRange> range{}; ///< none: the part was not measured, and the run begins anew
    std::optional<RunInStage> last{}; ///< the last stage that stored; none: the initial test is still to come
    int loopCount = 0;
    int testCount = 0;
    int failCount = 0;
    int passCount = 0;
    bool roundServed = true; ///< what follows a round (log point, end) has been done for the last one
    Milliseconds spent{0};
};

/// The part's pins and the way to its voltage. Reports go straight out, one an edge.
class RunInBoard {
  public:
    enum class Pin { Cs, Inc, UpDown };
    RunInBoard() = default;
    RunInBoard(const RunInBoard&) = delete;
    RunInBoard& operator=(const RunInBoard&) = delete;
    virtual ~RunInBoard() = default;
    /// Chooses the wiper's input and starts the converter.
    virtual void prepare() = 0;
    /// Every line high: the part is deselected.
    virtual void setAllHigh() = 0;
    /// Drives a pin; one that has the level already sends nothing.
    virtual void setPin(Pin pin, bool high) = 0;
    /// Two conversions, the first discarded. Lets events run between them. \return the converter's count;
    /// nothing if the part lost its supply on the way, because the board was unplugged. The board is there
    /// again then, without its supplies and settings.
    virtual std::optional<int> sample(bool doublePurge) = 0;
    /// Supplies off and on again, converter and lines as prepare() and setAllHigh() leave them: the part is
    /// where it stored last.
    virtual void recall() = 0;
    virtual void wait(Milliseconds duration) = 0;
    virtual Milliseconds now() const = 0;
    virtual WallTime wallTime() const = 0;
};

/// How a run ended.
enum class RunInEnd { Completed, Terminated, LinkLost, Interrupted, Mismatch };
/// "completed", "terminated", "link lost", "interrupted", "mismatch"
const char* runInEndName(RunInEnd how);

/// What happens to a run that is no step of it.
enum class RunInEvent { Resumed, Mismatch, LinkLost, LinkBack, UnknownRound };
/// "resumed", "mismatch", "link lost", "link back", "unknown round"
const char* runInEventName(RunInEvent what);

/// Hears what a run does, in the order in which it does it.
class RunInObserver {
  public:
    virtual ~RunInObserver() = default;
    /// A piece of the log, line ends included.
    virtual void logText(std::string_view /*text*/) {}
    virtual void stageBegan(int /*stage*/) {}
    /// Steps about to be clocked. \param direction 0 up, 1 down
    virtual void stepping(int /*direction*/, int /*count*/) {}
    virtual void sampled(int /*stage*/, double /*volts*/) {}
    virtual void rangeFound(const RunInRange& /*range*/) {}
    virtual void stageDone(const RunInStage& /*stage*/) {}
    /// Four stages are done. \param count steps so far
    virtual void roundDone(int /*count*/, int /*fails*/) {}
    virtual void logPoint(int /*count*/, int /*fails*/) {}
    virtual void event(RunInEvent /*what*/, const std::string& /*text*/) {}
    virtual void ended(RunInEnd /*how*/, int /*count*/, int /*fails*/) {}
    /// The part is not where the run left it. \return true to go on all the same; the tally stays.
    virtual bool goOn(const std::string& /*text*/) { return true; }
};

/// Several observers as one.
class RunInAudience final : public RunInObserver {
  public:
    void add(RunInObserver& observer) { all_.push_back(&observer); }

    void logText(std::string_view text) override;
    void stageBegan(int stage) override;
    void stepping(int direction, int count) override;
    void sampled(int stage, double volts) override;
    void rangeFound(const RunInRange& range) override;
    void stageDone(const RunInStage& stage) override;
    void roundDone(int count, int fails) override;
    void logPoint(int count, int fails) override;
    void event(RunInEvent what, const std::string& text) override;
    void ended(RunInEnd how, int count, int fails) override;
    /// Only if nobody refuses.
    bool goOn(const std::string& text) override;

  private:
    std::vector<RunInObserver*> all_;
};

/// The endurance test of an up/down part's stored position: clocks the wiper, stores, measures after every
/// step and counts how many stores left the wiper outside a limit derived from the part's own volts per step.
/// A failed judgement never stops it, and the tally is never corrected to what was measured.
class RunInTest {
  public:
    RunInTest(RunInBoard& board, RunInObserver& observer, RunInSettings settings);

    /// A run from its beginning to its end. \param abort looked at once in four stages.
    /// \throws Fault "Division by zero" for no log steps
    RunInEnd run(const bool& abort);
    /// Goes on where an earlier run stopped, at the exact step: range and limit are those of that run. The
    /// part is recalled by its supply and compared with the last tally; a store whose line was not written
    /// any more may have been done or not, and both places are accepted.
    RunInEnd resume(const RunInProgress& progress, const bool& abort);

    /// The board does not answer, or answers again: for the log and the observers.
    void linkLost(const std::string& why);
    void linkBack(const std::string& text);

    const RunInSettings& settings() const { return settings_; }
    const RunInRange& range() const { return range_; }
    int loopCount() const { return loopCount_; }
    int testCount() const { return testCount_; }
    int failCount() const { return failCount_; }
    int passCount() const { return passCount_; }
    int wiperPos() const { return wiperPos_; }

  private:
    /// What a look at the part's place gave, after its supply was away.
    enum class Place { AtTally, OneStoreOn, Elsewhere };

    void header();
    RunInEnd begin(const bool& abort);
    bool findRange();
    bool measureStop(int stage, double& volts);
    void initialTest();
    RunInEnd loop(int stage, const bool& abort);
    /// \return how the run ended, if it did
    std::optional<RunInEnd> endOfRound(const bool& abort);
    /// \return false if the user ended the run, the part being elsewhere
    bool stageOfLoop(int stage);
    void judgeStage(int increment);
    int incrementOf(int stage) const;
    void clock(int direction, int count);
    /// Steps to both stops without a measurement, as the range was found.
    void clockRange();
    void store();
    /// \return false if the part has lost its supply
    bool sample();
    /// Recalls the part and samples it, as often as the link breaks on the way.
    void recall();
    Place locate(int stage);
    /// \param attended somebody has just asked for the run: a part off its tally is always asked about
    bool accept(Place place, int stage, bool attended);
    /// Whether the last sample agrees with the tally.
    bool atTally() const;
    void note(RunInEvent what, const std::string& text);
    std::string counts() const;
    std::string dateAndTime() const;
    /// The tally after `increment` steps; logs and judges the stage. \return what the wiper's place should be
    int tally(int increment, RunInStage& stage);
    void judge(const std::string& name, double expected, RunInStage& stage);
    void judgeInitial(double high, double low, RunInStage& stage);
    RunInEnd finish(RunInEnd how);
    void log(std::string_view text) const { observer_.logText(text); }

    RunInBoard& board_;
    RunInObserver& observer_;
    RunInSettings settings_;
    double voltsPerCount_;
    RunInRange range_;
    std::optional<RunInStage> last_; ///< the last stage that stored
    int stage_ = 0;
    int loopCount_ = 0;
    int testCount_ = 0;
    int failCount_ = 0;
    int passCount_ = 0;
    int wiperPos_ = 0;
    int counts_ = 0;
    double wiperVolts_ = 0;
    Milliseconds began_{0};
    bool sampled_ = false; ///< the stage to come has been stored and sampled already
};

/// "2020-01-01" and "12:00:00".
std::string runInDate(const WallTime& time);
std::string runInTime(const WallTime& time);

} // namespace vrk
