#pragma once

#include "platform/runtime/EventLoop.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>

namespace vrk::qt {

/// Drives the event loop from Qt: due events by one timer, pending window events for actions that let events
/// run, the end of the program through the loop's own flag.
///
/// Qt is never unwound by one of our exceptions: every call that Qt makes into the bench is a gesture, a due
/// event or guarded(), and each of these catches all.
class QtHost final : public QObject {
  public:
    /// Needs a QCoreApplication. One host for each event loop.
    explicit QtHost(EventLoop& events);
    ~QtHost() override;

    EventLoop& events() const { return events_; }

    /// Runs until the program ends. \return the exit code, 0.
    int run();

    /// Repaints and goes on animating while no action may run: one round of a long wait for the board. Input
    /// stays in Qt's queue until the wait is over.
    static void paintOnly();

    /// Runs code of ours that Qt calls and that is no gesture. Whatever it throws ends here.
    static void guarded(const std::function<void()>& code) noexcept;

  private:
    void arm();
    void runDue();
    void waitForHost(std::optional<Milliseconds> wait);

    EventLoop& events_;
    QTimer due_;
};

} // namespace vrk::qt
