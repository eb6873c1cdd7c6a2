#pragma once

#include "script/ScriptCheck.h"
#include "script/ScriptResults.h"
#include "script/ScriptRun.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vrk {

/// A bench with a simulated part on a clock that jumps, as the one who knows the simulation makes it: set up,
/// the part powered, nothing shared with the real bench.
class RehearsalBench {
  public:
    virtual ~RehearsalBench() = default;
    virtual ScriptBus& bus() = 0;
    virtual Milliseconds now() const = 0;
    /// Lets time pass.
    virtual void pass(Milliseconds duration) = 0;
    /// Reports sent to the board so far.
    virtual long long reports() const = 0;
    /// Non-volatile writes so far, by register.
    virtual std::map<std::string, int> nonvolatileWrites() const = 0;
};

using RehearsalFactory = std::function<std::unique_ptr<RehearsalBench>()>;

struct RehearsalOptions {
    std::string name; ///< of the script, for the results
    const BusMode& mode;
    std::uint8_t base = 0x50; ///< device address ahead of the first address command
    int passes = 1;
    bool stopOnFail = false;
    /// First and last row wanted; each may be left out.
    std::optional<int> from{};
    std::optional<int> to{};
    WallTime started{};
    /// Sizes that rows without their own run with; nullptr: none, as before a first script.
    const ScriptTable* sizes = nullptr;
    /// Asked at each row; false breaks the rehearsal off. Empty: it goes to its end, however long that takes.
    std::function<bool()> goOn{};
};

/// What a script would do to a part: the rows of the service block included, set-up of the bench not.
struct Rehearsal {
    /// Above so many non-volatile writes a run of the real part is worth a question: its cells wear.
    static constexpr int kManyWrites = 1000;

    bool whole = true; ///< false: broken off; what stands here is of the rows until then
    Milliseconds lasted{0};
    long long reports = 0;
    std::map<std::string, int> nonvolatileWrites;
    std::vector<int> wouldFail;        ///< lines whose comparison fails on the simulated part, or that err
    std::vector<int> neverPass;        ///< lines that no part's answer lets pass
    std::vector<std::string> messages; ///< boxes that a run would show, but for the pauses
    ScriptResults results;

    int totalWrites() const;
};

/// Runs a script where it can do no harm. Pauses are answered at once and nothing is written to any file.
/// \throws Fault if the bytes are no script; ScriptLoadFault
Rehearsal rehearse(std::string_view bytes, const RehearsalOptions& options, const RehearsalFactory& factory);

} // namespace vrk
