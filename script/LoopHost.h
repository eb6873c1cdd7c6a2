#pragma once

#include "platform/controls/Panel.h"
#include "script/ScriptHost.h"

#include <functional>

namespace vrk {

/// A run in a program with an event loop and boxes.
class LoopHost final : public ScriptHost {
  public:
    LoopHost(EventLoop& events, Dialogs& dialogs, std::function<void()> save)
        : events_(events), dialogs_(dialogs), save_(std::move(save)) {}

    Milliseconds now() const override { return events_.clock().now(); }
    void letEventsRun() override { events_.letEventsRun(); }
    void hold(Milliseconds duration) override { events_.clock().sleep(duration); }
    void wait(Milliseconds duration) override;
    void waitForEvents() override;
    bool confirm(const std::string& text) override;
    void say(const std::string& text) override { dialogs_.show({text, {}, {Choice::Ok}}); }
    void saveScript() override {
        if (save_)
            save_();
    }

  private:
    EventLoop& events_;
    Dialogs& dialogs_;
    std::function<void()> save_;
};

} // namespace vrk
