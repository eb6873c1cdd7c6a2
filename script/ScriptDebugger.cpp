#include "script/ScriptDebugger.h"

#include <utility>

namespace vrk {

void ScriptDebugger::setBreakpoints(std::set<int> lines) {
    breakpoints_ = std::move(lines);
    changed_.emit();
}

void ScriptDebugger::toggleBreakpoint(int line) {
    if (breakpoints_.erase(line) == 0)
        breakpoints_.insert(line);
    breakpointsChanged_.emit();
    changed_.emit();
}

void ScriptDebugger::begin(bool stepping) {
    running_ = first_ = true;
    stepping_ = stepping;
}

void ScriptDebugger::resume(bool stepping) {
    stepping_ = stepping;
    if (std::exchange(paused_, false))
        changed_.emit();
}

void ScriptDebugger::beforeRow(int row) {
    const bool first = std::exchange(first_, false);
    if (!running_)
        return;
    if (breakpoints_.contains(row))
        stand(row, Reason::Breakpoint);
    else if (stepping_ && !first)
        stand(row, Reason::Step);
}

void ScriptDebugger::afterFail(int row) {
    // A row that is run again while the run stands has stopped it already.
    if (!running_ || !pauseOnFail || paused_)
        return;
    stand(row, Reason::Fail);
    first_ = stepping_; // standing behind a row, a step runs the next one
}

void ScriptDebugger::stand(int row, Reason reason) {
    if (paused_ || abort_)
        return;
    paused_ = true;
    at_ = row;
    reason_ = reason;
    changed_.emit();
    try {
        while (paused_ && !abort_)
            host_.waitForEvents();
    } catch (...) {
        paused_ = false; // the program ends
        throw;
    }
    if (std::exchange(paused_, false))
        changed_.emit();
}

} // namespace vrk
