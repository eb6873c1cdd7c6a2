#include "platform/runtime/EventLoop.h"

#include <exception>
#include <utility>

namespace vrk {

EventLoop::EventLoop(Clock& clock) : clock_(clock) {}

EventLoop::EventId EventLoop::postAfter(Milliseconds delay, Action action) {
    const EventId id = nextId_++;
    queue_.emplace(Key{clock_.now() + delay, id}, std::move(action));
    if (queueChanged_)
        queueChanged_();
    return id;
}

void EventLoop::cancel(EventId id) {
    std::erase_if(queue_, [id](const auto& entry) { return entry.first.second == id; });
}

std::optional<Milliseconds> EventLoop::untilNextDue() const {
    if (queue_.empty())
        return std::nullopt;
    return std::max(Milliseconds{0}, queue_.begin()->first.first - clock_.now());
}

void EventLoop::runQueue() noexcept {
    // Only what is queued now: an event that posts itself again must not keep the loop here for ever.
    const EventId limit = nextId_;
    while (!ended_ && !held() && !full()) {
        auto next = queue_.begin();
        while (next != queue_.end() && next->first.first <= clock_.now() && next->first.second >= limit)
            ++next;
        if (next == queue_.end() || next->first.first > clock_.now())
            return;
        auto event = queue_.extract(next);
        deliver(event.mapped());
    }
}

void EventLoop::letEventsRun() {
    if (ended_)
        throw ProgramEnded{};
    if (held())
        return;
    runQueue();
    if (hostPump_ && !ended_)
        hostPump_();
    if (ended_)
        throw ProgramEnded{};
}

void EventLoop::waitForEvents() {
    // Nothing is delivered ahead of the wait: the caller would sleep over what it waits for.
    constexpr Milliseconds kIdleStep{4};
    const auto wait = full() ? kIdleStep : untilNextDue();
    if (!ended_ && !(wait && wait->count() == 0)) {
        if (hostWait_)
            hostWait_(wait);
        else
            clock_.sleep(wait.value_or(kIdleStep));
    }
    letEventsRun();
}

void EventLoop::runDue() noexcept {
    runQueue();
}

Outcome EventLoop::deliver(const Action& action) noexcept {
    if (ended_)
        return {Outcome::Kind::Ended, {}};
    if (held()) {
        post(action);
        return {Outcome::Kind::Held, {}};
    }
    Outcome outcome;
    ++depth_;
    try {
        action();
    } catch (const ProgramEnded&) {
        ended_ = true;
        outcome.kind = Outcome::Kind::Ended;
    } catch (const std::exception& fault) {
        outcome = {Outcome::Kind::Faulted, fault.what()};
    }
    if (outcome.kind == Outcome::Kind::Faulted && onFault_) {
        try {
            onFault_(outcome.fault);
        } catch (...) {
            // The box itself could not be shown or the program ended under it; the outcome tells the caller.
        }
    }
    if (--depth_ == 0)
        std::exchange(retired_, {}).clear();
    if (ended_)
        outcome.kind = Outcome::Kind::Ended;
    return outcome;
}

void EventLoop::endProgram() {
    if (!std::exchange(ended_, true) && onEnd_)
        onEnd_();
    throw ProgramEnded{};
}

void EventLoop::retire(std::shared_ptr<void> object) {
    if (depth_ > 0)
        retired_.push_back(std::move(object));
}

void advance(EventLoop& loop, VirtualClock& clock, Milliseconds duration) {
    const Milliseconds end = clock.now() + duration;
    while (!loop.ended()) {
        const auto wait = loop.untilNextDue();
        if (!wait || clock.now() + *wait > end)
            break;
        clock.jumpTo(clock.now() + *wait);
        loop.runDue();
    }
    clock.jumpTo(end);
}

void delaySeconds(EventLoop& loop, double seconds) {
    constexpr double kSecondsPerDay = 86400.0;
    constexpr Milliseconds kStep{4};
    const double start = loop.clock().secondsOfDay();
    double end = start + seconds;
    double last = start;
    while (last < end) {
        loop.clock().sleep(kStep);
        loop.letEventsRun();
        const double now = loop.clock().secondsOfDay();
        if (now < last)
            end -= kSecondsPerDay;
        last = now;
    }
}

} // namespace vrk
