#pragma once

#include "platform/hid/WireRecorder.h"
#include "platform/runtime/EventLoop.h"

#include <cstdint>
#include <optional>

namespace vrk {

class Bench;

/// What a command does when its board goes away: it waits for it, within a limit, and goes on on the same
/// board with VCC as it was.
class LinkWait {
  public:
    struct Uses {
        Bench& bench;
        hid::WireRecorder& wire;
        EventLoop& events;
        int board = 0;         ///< instance that the command works on
        Milliseconds limit{0}; ///< for one loss, from the first request that failed; 0: no wait
    };

    explicit LinkWait(const Uses& uses);
    LinkWait(const LinkWait&) = delete;
    LinkWait& operator=(const LinkWait&) = delete;

    /// The board did not take a request or did not answer it. Returns when it is worth another try.
    /// \return false to give the link up: the limit is over, or a signal came. \throws ProgramEnded
    bool waitForBoard();

  private:
    void look(const hid::WireEvent& event);
    void boardRead();

    Uses uses_;
    std::optional<Milliseconds> lostAt_; ///< while a loss lasts
    Milliseconds triedAt_{0};            ///< end of the last wait
    std::uint8_t command_ = 0;           ///< of the last report sent
    std::uint8_t lost_ = 0;              ///< the command that the loss began with
    bool vccWasOn_ = false;              ///< as it began
    Subscription replies_;
    Subscription readings_;
};

} // namespace vrk
