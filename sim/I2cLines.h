#pragma once

#include <cstdint>
#include <optional>

namespace vrk::sim {

class Part;

/// A part's end of the two I2C lines: turns their edges into start, bytes, acknowledges, steps and stop,
/// whether the controller's bus port or the host's own port writes moved them.
class I2cLines {
  public:
    /// New levels as the host drives them; the part hears of what they mean. A bit counts when its clock
    /// falls: until then the same edges may still be a START or a STOP.
    void follow(bool sda, bool scl, Part& part);
    /// As power leaves it: listening for a START, from these levels on.
    void reset(bool sda, bool scl);
    void restart() { reset(sda_, scl_); }
    /// Whether the part holds SDA low, for an acknowledge or a bit of its own.
    bool pullsLow() const { return pullsLow_; }

  private:
    enum class Phase { Idle, Receiving, Acknowledging, Sending, Acknowledged, Stepping };

    void clockFell(bool bit, Part& part);
    void receive(bool bit, Part& part);
    void sendBit();
    void sendByte(Part& part);

    bool sda_ = true;
    bool scl_ = true;
    Phase phase_ = Phase::Idle;
    std::optional<bool> sampled_; ///< SDA at the clock's rise
    std::uint8_t byte_ = 0;
    int bits_ = 0;
    bool pullsLow_ = false;
};

} // namespace vrk::sim
