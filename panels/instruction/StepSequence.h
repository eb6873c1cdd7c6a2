#pragma once

#include "panels/blocks/PortLines.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace vrk {

/// The bus lines by hand: the quad parts are stepped by clocks that the firmware has no command for. The
/// crossbar takes the bus function off the pins, and port P0 moves them, a report a change, as fast as the
/// link goes. Behind the slave byte and the instruction each clock is a step, up while the data line is high.
class StepSequence {
  public:
    /// Which lines the bus has on P0.
    struct Wiring {
        std::uint8_t data = 0;
        std::uint8_t clock = 0;
        std::uint8_t select = 0;   ///< 0 on I2C, which is framed by START and STOP
        std::uint8_t crossbar = 0; ///< XBR0 while the lines are moved by hand
    };
    static constexpr Wiring kI2c{.data = 0x10, .clock = 0x20, .select = 0, .crossbar = 0x02};
    static constexpr Wiring kSpi{.data = 0x04, .clock = 0x01, .select = 0x08, .crossbar = 0x00};

    StepSequence(const PortLines& port, const Wiring& wiring) : port_(port), wiring_(wiring) {}

    /// \return false if the board did not take it: the bus may still hold the lines
    bool takePins();
    void givePinsBack();
    /// Reads the port for the edges to come. \return false if the board did not say how it stands
    bool readPort();
    /// The lines at rest, to begin from.
    void prepare();
    /// START or select, slave byte 50, instruction 20 and the pot. \return false if the board did not take
    /// every edge: the part has heard something else then
    bool begin(int pot);
    /// \return as begin()
    bool step(bool up);
    /// STOP, or select high. \param between runs behind the edges that need no haste.
    void end(const std::function<void()>& between = [] {});

  private:
    bool framedBySelect() const { return wiring_.select != 0; }
    void sendLines();
    void move(std::uint8_t mask, bool high);
    void change(std::uint8_t mask, bool high);
    void clockByte(std::uint8_t byte);
    void clockBit(bool bit);

    const PortLines& port_;
    Wiring wiring_;
    std::uint8_t lines_ = 0xFF; ///< P0 as written last; its other pins as read
    bool taken_ = true;         ///< every edge of the sequence so far
};

} // namespace vrk
