#pragma once

#include "script/ScriptHost.h"
#include "script/ScriptState.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace vrk {

/// What a row came to. A failed comparison outweighs a pass, an error of bus or link outweighs both.
enum class RowVerdict { NotReached, Ran, Pass, Fail, Error };
/// "not reached", "ran", "pass", "fail", "error"
const char* rowVerdictName(RowVerdict verdict);

struct RowResult {
    int line = 0;
    std::string operation;
    std::string address;
    std::string reg;
    std::string write;
    std::string expected;
    std::string read;
    RowVerdict verdict = RowVerdict::NotReached;
    std::string why;       ///< of an error
    Milliseconds began{0}; ///< on the bench's clock: where to look for its bytes
    Milliseconds lasted{0};
};

struct PassResult {
    int pass = 0; ///< from 1
    Milliseconds lasted{0};
    int passed = 0; ///< comparisons, as the fields count them
    int failed = 0;
    int errors = 0; ///< rows in error
    bool ended = false;
    ScriptEnd end = ScriptEnd::Completed;
    /// In the order in which they began, a row as often as it ran; then those of the main part that were not
    /// reached.
    std::vector<RowResult> rows;
};

struct ScriptResults {
    std::string script; ///< name without folder
    std::string bus;    ///< "i2c" or "spi"
    WallTime started;
    bool ended = false;
    ScriptEnd end = ScriptEnd::Completed;
    std::deque<PassResult> passes;
    /// Of the passes that are not listed any more: a script may loop for days.
    struct Before {
        RowVerdict worst = RowVerdict::Pass;
        Milliseconds lasted{0};
    } before;
    /// Rows that the user ran by hand while no pass was running, newest last.
    std::vector<RowResult> byHand;

    /// "pass", "fail" or "error" of all that ran.
    std::string verdict() const;
};

/// Writes down what a run does.
class ResultCollector final : public ScriptObserver {
  public:
    static constexpr std::size_t kMostByHand = 1000;
    static constexpr std::size_t kMostPasses = 10'000; ///< listed, where not all rows are kept

    /// \param keepRows passes whose rows are kept, the newest ones; 0: all
    ResultCollector(const ScriptState& script, const ScriptFields& fields, const ScriptHost& host,
                    std::size_t keepRows = 0)
        : script_(script), fields_(fields), host_(host), keepRows_(keepRows) {}

    const ScriptResults& results() const { return results_; }
    /// The row that rowEnded() told of last; nullptr before the first, or once its pass is over.
    const RowResult* lastEnded() const;
    /// What the row came to when it ran last: in the pass that runs or ran last, or by hand since. nullptr if
    /// it has not run.
    const RowResult* latest(int row) const;
    /// How often the row has run since the last pass began.
    int runs(int row) const;
    /// Another script is in the table: of its rows nothing is known, and no run of it has been.
    void newTable();
    /// A new run: of what, and when.
    void begin(const std::string& script, const std::string& bus, const WallTime& started);
    /// The run is over. \param end as its last pass told, or what a program knows better: a lost link, an
    /// interrupt
    void finish(ScriptEnd end);

    void passBegan(int first, int last) override;
    void passEnded(ScriptEnd end) override;
    void rowBegan(int row) override;
    void rowCompared(int row, bool equal) override;
    void rowInError(int row, const std::string& why) override;
    void rowEnded(int row) override;

  private:
    static constexpr auto kNone = static_cast<std::size_t>(-1);

    RowResult described(int row) const;
    const std::vector<RowResult>& rows() const {
        return inPass_ ? results_.passes.back().rows : results_.byHand;
    }
    std::vector<RowResult>& rows() { return inPass_ ? results_.passes.back().rows : results_.byHand; }
    /// The row under way; nullptr if none is.
    RowResult* current();
    void count();
    void forgetOldest();
    void listNotReached();

    const ScriptState& script_;
    const ScriptFields& fields_;
    const ScriptHost& host_;
    std::size_t keepRows_;
    ScriptResults results_;
    bool inPass_ = false;
    bool anyRow_ = false; ///< the pass has begun one
    Milliseconds passBegan_{0};
    std::size_t lastEnded_ = kNone; ///< its place among the rows
    std::vector<std::size_t> open_; ///< places of the rows that have begun, the innermost last
    struct Ran {
        std::size_t at = 0; ///< place of the last time in the pass
        int runs = 0;
    };
    std::map<int, Ran> last_; ///< rows that have run in the last pass
};

} // namespace vrk
