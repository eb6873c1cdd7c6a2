#pragma once

#include "platform/runtime/EventLoop.h"
#include "script/ScriptHost.h"

#include <functional>

namespace vrk {

/// Time and user of a script that runs in a terminal. A signal aborts the run behind the row under way, whose
/// wait ends at once.
class TerminalScriptHost final : public ScriptHost {
  public:
    enum class Pauses { Continue, Ask, Stop };

    /// \param save writes the script beside its file.
    TerminalScriptHost(EventLoop& events, bool& ScriptAbort, Pauses pauses, std::function<void()> save)
        : events_(events), abort_(ScriptAbort), pauses_(pauses), save_(std::move(save)) {}

    Milliseconds now() const override { return events_.clock().now(); }
    void letEventsRun() override;
    void hold(Milliseconds duration) override { events_.clock().sleep(duration); }
    void wait(Milliseconds duration) override;
    void waitForEvents() override;
    /// Enter goes on, "q" and Enter stops, and so does the end of the input.
    bool confirm(const std::string& text) override;
    void say(const std::string& text) override;
    void saveScript() override { save_(); }

    /// Ends the run behind the row under way, as a signal does.
    void stop() { stopped_ = true; }

  private:
    bool stopping() const;

    EventLoop& events_;
    bool& abort_;
    Pauses pauses_;
    std::function<void()> save_;
    bool stopped_ = false;
};

} // namespace vrk
