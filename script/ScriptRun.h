#pragma once

#include "script/ScriptHost.h"
#include "script/ScriptState.h"

#include <optional>
#include <string>
#include <vector>

namespace vrk {

struct BusMode;

/// Executes a script: row by row, with its pauses, transfers, comparisons and its service block.
class ScriptRun {
  public:
    /// A service block that enables itself again and again is stopped here.
    static constexpr int kDeepestService = 100;

    struct Uses {
        ScriptState& script;
        const BusMode& mode;
        bool& ScriptAbort; ///< looked at between rows alone
        ScriptFields& fields;
        ScriptBus& bus;
        ScriptHost& host;
        ScriptGate* gate = nullptr;
    };
    /// Rows of a pass, both ends included.
    struct Range {
        int first = 1;
        int last = 0;
    };

    explicit ScriptRun(const Uses& uses) : uses_(uses) {}
    ScriptRun(const ScriptRun&) = delete;
    ScriptRun& operator=(const ScriptRun&) = delete;

    /// Observers must outlive the run.
    void observe(ScriptObserver& observer) { observers_.push_back(&observer); }

    /// The main part, which ends ahead of its end marker: in a script without one the last line is the
    /// marker's place, so that it is never run.
    Range mainPart() const { return {1, uses_.script.EndMainStep - 1}; }
    /// One pass. The counters start over.
    ScriptEnd runPass(std::optional<Range> range = std::nullopt);
    /// Passes until one is aborted. \param passes 0: without end
    ScriptEnd runPasses(int passes = 0, std::optional<Range> range = std::nullopt);

    /// Selects a row and runs it. Faults are shown and end the row alone. \throws ProgramEnded
    void runRow(int row);
    /// Runs a row that stands selected; another one is left alone.
    void execStep(int row);
    /// Compares the sampled value and runs the service block if it is not the expected one.
    void sample();
    /// The row under way finishes.
    void abort() { uses_.ScriptAbort = true; }

  private:
    struct Step;

    void runStep(Step& step);
    void dispatch(Step& step);
    void pauseForUser(Step& step);
    void transfer(Step& step);
    void transferI2c(Step& step);
    void transferSpi(Step& step);
    void writeI2c(Step& step);
    void readI2c(Step& step);
    void setPorts(Step& step);
    void compare(Step& step);
    void serve();
    void letEventsRun(unsigned generation);
    void setActual(Step& step, const std::string& text);
    void inError(int row, const std::string& why);
    bool gone(unsigned generation) const { return uses_.script.table.generation() != generation; }

    template <class... Parameters, class... Arguments>
    void tell(void (ScriptObserver::*what)(Parameters...), const Arguments&... arguments) {
        for (ScriptObserver* observer : observers_)
            (observer->*what)(arguments...);
    }

    Uses uses_;
    std::vector<ScriptObserver*> observers_;
    int serviceDepth_ = 0;
    bool stoppedOnFail_ = false;
};

} // namespace vrk
