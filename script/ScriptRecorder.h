#pragma once

#include "platform/hid/HidHost.h"
#include "platform/runtime/Clock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// One I2C transfer that is over.
struct I2cTransfer {
    bool read = false;
    std::uint8_t address = 0; ///< even
    std::vector<std::uint8_t> registers;
    std::vector<std::uint8_t> data; ///< written, or read where the status is good
    int status = 0;                 ///< kLinkGood or what went wrong

    /// \param reply looked at behind a read that went well
    static I2cTransfer of(const hid::Report& request, const hid::Report& reply, int status);
};

/// Turns what a user does on the I2C bus into lines of a script: address, waits, writes, and reads with what
/// they gave as the expected data.
class ScriptRecorder {
  public:
    /// What follows sooner belongs to the same action of the user's: it gets no line of its own.
    static constexpr Milliseconds kShortestWait{10};

    /// Lines for a transfer that has ended at `now`. One that no row can send, or that failed, becomes a
    /// comment.
    std::vector<std::string> lines(const I2cTransfer& transfer, Milliseconds now);

  private:
    std::optional<Milliseconds> last_; ///< end of the transfer before
    int address_ = -1;
};

} // namespace vrk
