#include "platform/qt/QtHost.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <limits>

namespace vrk::qt {

namespace {
/// How long a due event waits before it looks again whether the exchange or the box is over.
constexpr int kHeldRetryMs = 10;
} // namespace

QtHost::QtHost(EventLoop& events) : events_(events) {
    due_.setSingleShot(true);
    due_.setTimerType(Qt::PreciseTimer);
    connect(&due_, &QTimer::timeout, this, [this] { runDue(); });
    events_.setQueueChanged([this] { arm(); });
    events_.setHostPump([] { QCoreApplication::processEvents(); });
    events_.setHostWait([this](std::optional<Milliseconds> wait) { waitForHost(wait); });
    // A nested loop of Qt's own may swallow a quit that was asked for once, so the flag is looked at before
    // every sleep.
    if (auto* dispatcher = QAbstractEventDispatcher::instance())
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            if (events_.ended())
                QCoreApplication::exit(0);
        });
    arm();
}

QtHost::~QtHost() {
    events_.setQueueChanged({});
    events_.setHostPump({});
    events_.setHostWait({});
}

int QtHost::run() {
    if (events_.ended())
        return 0;
    return QCoreApplication::exec();
}

void QtHost::arm() {
    const auto wait = events_.untilNextDue();
    if (!wait || events_.ended()) {
        due_.stop();
        return;
    }
    const auto longest = Milliseconds{std::numeric_limits<int>::max()};
    const int milliseconds = static_cast<int>(std::min(*wait, longest).count());
    due_.start(events_.held() ? std::max(milliseconds, kHeldRetryMs) : milliseconds);
}

void QtHost::waitForHost(std::optional<Milliseconds> wait) {
    // A timer of its own: the due timer does not fire again while its own slot is on the stack.
    QTimer wake;
    if (wait)
        wake.start(std::max(1, static_cast<int>(std::min(*wait, Milliseconds{1000}).count())));
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void QtHost::runDue() {
    events_.runDue();
    arm();
}

void QtHost::paintOnly() {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    // Without it a click made meanwhile would lie in the queue until the next one comes.
    if (auto* dispatcher = QAbstractEventDispatcher::instance())
        dispatcher->wakeUp();
}

void QtHost::guarded(const std::function<void()>& code) noexcept {
    try {
        code();
    } catch (const ProgramEnded&) {
        // The loop's flag says it; whoever looks next unwinds.
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vrkbench: %s\n", error.what());
    } catch (...) {
        std::fputs("vrkbench: unknown error\n", stderr);
    }
}

} // namespace vrk::qt
