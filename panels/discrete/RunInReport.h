#pragma once

#include "panels/discrete/RunInJournal.h"
#include "platform/files/JUnit.h"

#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// What is said of a run whose wiper did not follow the steps from stop to stop.
inline constexpr const char* kWiperStill =
    "the wiper reads no more at its upper stop than at its lower one: the judgements say nothing";
/// Of such a run, by the volts of its step.
inline bool wiperStill(double voltsPerStep) {
    return !(voltsPerStep > 0);
}

/// Counts the judgements of a run, as they were made or again with another tolerance.
class RunInCount {
  public:
    /// \param tolerance fraction of one step; none: as judged
    explicit RunInCount(std::optional<double> tolerance = std::nullopt) : tolerance_(tolerance) {}

    void range(const RunInRange& range);
    void stage(const RunInStage& stage);
    /// The stage with the verdicts that this count gives it.
    RunInStage judged(const RunInStage& stage) const;

    /// No fail, of a wiper that followed the steps.
    bool passed() const { return fails == 0 && !still; }

    int count = 0; ///< steps
    int judgements = 0;
    int fails = 0;
    double voltsPerStep = 0;
    double limit = 0; ///< volts either way
    /// The upper stop was not above the lower one, as with an empty socket: with a step of 0 V each position
    /// is the expected one.
    bool still = false;

  private:
    std::optional<double> tolerance_;
};

/// What a journal tells of its run.
struct RunInReport {
    RunInHistory history;
    RunInCount counted;
    double tolerance = 0; ///< that the counts go by
    bool derived = false; ///< another than the run was judged with

    /// "unfinished" without an end.
    std::string ended() const { return history.ended.value_or("unfinished"); }
};

/// The run as a suite of tests: the initial test, then one for each log interval. Feed it with what an
/// observer hears or a reader reads.
class RunInSuite {
  public:
    RunInSuite(const RunInHeader& header, std::optional<double> tolerance);

    void range(const RunInRange& range) { counted_.range(range); }
    void stage(const RunInStage& stage);
    void event(const std::string& what, const std::string& text);
    void ended(const std::string& how) { state_ = how; }

    /// All so far. \param partly the interval under way too
    JUnitSuite suite(bool partly) const;

  private:
    struct Interval {
        int first = 0; ///< steps, from 1
        int last = 0;
        int fails = 0;
        std::string why{}; ///< of the first fail
        std::string error{};
        std::string elsewhere{}; ///< the part was, and the run stopped
        Milliseconds began{0};
        Milliseconds ended{0};
    };
    static JUnitCase caseOf(const Interval& interval);
    static void judge(Interval& interval, const RunInStage& stage);

    RunInHeader header_;
    std::optional<double> tolerance_;
    RunInCount counted_;
    std::vector<JUnitCase> cases_;
    std::optional<Interval> open_;
    std::string lost_;     ///< the link is: what was said
    std::string mismatch_; ///< the part is elsewhere, and no step has followed
    std::string resumed_;  ///< "1235, 4002": the steps at which the run was gone on with
    int loop_ = 0;
    Milliseconds spent_{0};
    std::string state_ = "incomplete";
    WallTime started_;
};

/// Reads a journal for its report. \param suite also filled, where there is one; it needs the header first
RunInReport recountRunIn(const std::filesystem::path& path, std::optional<double> tolerance,
                         const std::function<void(const RunInStage& judged)>& stage = {},
                         std::optional<RunInSuite>* suite = nullptr);

/// "2020-01-01 12:00:00"
std::string runInStamp(const WallTime& time);

} // namespace vrk
