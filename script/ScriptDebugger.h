#pragma once

#include "platform/runtime/Signal.h"
#include "script/ScriptRun.h"

#include <set>
#include <string>

namespace vrk {

/// Where breakpoints outlive the program, by the path of their script.
class BreakpointStore {
  public:
    virtual ~BreakpointStore() = default;
    virtual std::set<int> breakpoints(const std::string& path) const = 0;
    virtual void keepBreakpoints(const std::string& path, const std::set<int>& lines) = 0;
};

/// Stops a run between its rows: at breakpoints, behind each row while stepping, behind a failed row if
/// wanted. While it stands everything else of the program works; going on goes on in place.
class ScriptDebugger final : public ScriptGate {
  public:
    ScriptDebugger(ScriptHost& host, const bool& ScriptAbort) : host_(host), abort_(ScriptAbort) {}

    bool pauseOnFail = false;

    /// Lines with a breakpoint; they may lie outside the script that is loaded.
    const std::set<int>& breakpoints() const { return breakpoints_; }
    void setBreakpoints(std::set<int> lines);
    void toggleBreakpoint(int line);

    bool paused() const { return paused_; }
    /// Row that the run stands at: the next to run, or the failed one it stands behind. 0 while none does.
    int pausedAt() const { return paused_ ? at_ : 0; }
    enum class Reason { Breakpoint, Step, Fail };
    /// Why it stands, or stood last.
    Reason reason() const { return reason_; }

    /// Goes on to the next breakpoint or to the end.
    void go() { resume(false); }
    /// Goes on for one row; before a run: the run stands again behind its first row.
    void step() { resume(true); }
    /// A new run: what the last one was to do is forgotten. \param stepping stands behind its first row
    void begin(bool stepping);
    /// The run has ended: rows that the user runs by hand never stop.
    void end() { running_ = false; }

    /// Paused, going on, or the breakpoints have changed.
    [[nodiscard]] Subscription observe(std::function<void()> observer) {
        return changed_.connect(std::move(observer));
    }

    /// The user has set or cleared one.
    [[nodiscard]] Subscription observeBreakpoints(std::function<void()> observer) {
        return breakpointsChanged_.connect(std::move(observer));
    }

    void beforeRow(int row) override;
    void afterFail(int row) override;

  private:
    void resume(bool stepping);
    void stand(int row, Reason reason);

    ScriptHost& host_;
    const bool& abort_;
    std::set<int> breakpoints_;
    bool running_ = false;
    bool paused_ = false;
    bool stepping_ = false;
    bool first_ = false; ///< no row of the run has begun
    int at_ = 0;
    Reason reason_ = Reason::Breakpoint;
    Signal<> changed_;
    Signal<> breakpointsChanged_;
};

} // namespace vrk
