#pragma once

#include "platform/runtime/Clock.h"
#include "platform/runtime/Fault.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// What became of an event that was delivered.
struct Outcome {
    enum class Kind {
        Done,
        Refused, ///< the control is disabled or hidden: nothing happened
        Faulted, ///< a run-time fault ended the action; the user has been told
        Ended,   ///< the program has ended
        Held     ///< an exchange with the board is in flight: runs when events run again
    };
    Kind kind = Kind::Done;
    std::string fault; ///< the fault's text

    bool done() const { return kind == Kind::Done; }
    bool refused() const { return kind == Kind::Refused; }
};

/// Queue and dispatcher of every user event and timer. There is one UI thread; all calls are made on it.
///
/// Actions run inside deliver(), which is the boundary that no exception crosses. An action that wants its
/// abort button to work calls letEventsRun() between its steps.
class EventLoop {
  public:
    using Action = std::function<void()>;
    using EventId = std::uint64_t;

    explicit EventLoop(Clock& clock);
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    Clock& clock() const { return clock_; }

    /// Queues an event. Events of the same due time run in the order of their posting.
    EventId post(Action action) { return postAfter(Milliseconds{0}, std::move(action)); }
    EventId postAfter(Milliseconds delay, Action action);
    void cancel(EventId id);

    /// The one way an action lets others run: delivers what is due, then the host's own events. Does nothing
    /// while an exchange is in flight. \throws ProgramEnded if the program ended meanwhile, so that every
    /// action on the stack unwinds.
    void letEventsRun();

    /// Waits until the next event may be there, then letEventsRun(): for an action that stands until the user
    /// does something, and looks for it between the calls. \throws ProgramEnded
    void waitForEvents();

    /// Delivers what is due now; for the host's loop, outside any action.
    void runDue() noexcept;

    /// Time until the next event is due; 0 if one is due already, nothing if none waits.
    std::optional<Milliseconds> untilNextDue() const;

    /// Runs one action as the user's or a timer's event, and catches whatever it throws: a fault is told by
    /// the fault handler, the program's end is noted. Never throws.
    Outcome deliver(const Action& action) noexcept;

    /// How many actions are on the stack.
    int depth() const { return depth_; }
    /// Queued events run inside one another's actions, at most: each of them stands on the stack until the
    /// one inside it is over. Later ones wait in the queue.
    static constexpr int kDeepest = 128;
    bool full() const { return depth_ >= kDeepest; }

    /// Ends the program: the end handler runs once, then ProgramEnded unwinds the calling action.
    [[noreturn]] void endProgram();
    bool ended() const { return ended_; }

    /// Keeps an object alive until no action is on the stack that might still use it.
    void retire(std::shared_ptr<void> object);

    void setFaultHandler(std::function<void(const std::string&)> handler) { onFault_ = std::move(handler); }
    void setEndHandler(std::function<void()> handler) { onEnd_ = std::move(handler); }

    /// Called by letEventsRun(): processes the host's own pending events, without waiting.
    void setHostPump(std::function<void()> pump) { hostPump_ = std::move(pump); }
    /// Called by waitForEvents() with the time until the next queued event, if one waits: blocks until then
    /// or until the host has events of its own. Without it the clock sleeps.
    void setHostWait(std::function<void(std::optional<Milliseconds>)> wait) { hostWait_ = std::move(wait); }
    /// Called when the next due time may have come closer, so that the host can arm its timer.
    void setQueueChanged(std::function<void()> notify) { queueChanged_ = std::move(notify); }

    /// While one of these exists no action runs: gestures and timers wait. Set around the paint-only part of
    /// a long wait for the board.
    class Hold {
      public:
        explicit Hold(EventLoop& loop) : loop_(loop) { ++loop_.holds_; }
        ~Hold() {
            // What was held back has no due time to come: the host must look at the queue again.
            if (--loop_.holds_ == 0 && loop_.queueChanged_)
                loop_.queueChanged_();
        }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

      private:
        EventLoop& loop_;
    };
    bool held() const { return holds_ > 0; }

  private:
    using Key = std::pair<Milliseconds, EventId>;

    void runQueue() noexcept;

    Clock& clock_;
    std::map<Key, Action> queue_;
    EventId nextId_ = 1;
    int depth_ = 0;
    int holds_ = 0;
    bool ended_ = false;
    std::vector<std::shared_ptr<void>> retired_;
    std::function<void(const std::string&)> onFault_;
    std::function<void()> onEnd_;
    std::function<void()> hostPump_;
    std::function<void(std::optional<Milliseconds>)> hostWait_;
    std::function<void()> queueChanged_;
};

/// Lets virtual time pass: delivers every event that falls due within `duration` at its own time.
void advance(EventLoop& loop, VirtualClock& clock, Milliseconds duration);

/// Waits while the UI stays live: sleeps in steps of 4 ms and lets events run between them. Reads the time of
/// day, as midnight may pass meanwhile.
void delaySeconds(EventLoop& loop, double seconds);

} // namespace vrk
