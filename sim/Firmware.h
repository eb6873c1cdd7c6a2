#pragma once

#include "platform/hid/HidHost.h"
#include "sim/Board.h"
#include "sim/Faults.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace vrk::sim {

/// The program of the board's controller: takes command reports and gives replies, byte by byte. Knows
/// nothing of USB, time or handles, so that it runs behind a simulated bus and behind a USB gadget alike.
class Firmware {
  public:
    /// Both must outlive the firmware. Starts with the board's power-up settings.
    Firmware(Board& board, Faults& faults) : board_(board), faults_(faults) {}

    /// Settings back to those of power-up.
    void reset() { settings_ = {}; }

    /// Runs one command. Reports with another report ID and unknown commands are dropped.
    /// \return nothing for a command that gives no reply.
    std::optional<hid::Report> handle(const hid::Report& command);

    bool greenLed() const { return (settings_.leds & 1) != 0; }
    bool redLed() const { return (settings_.leds & 2) != 0; }

  private:
    struct Settings {
        std::uint8_t leds = 0;        ///< bit 0 green, bit 1 red
        std::uint8_t i2cOptions = 1;  ///< bit 0 repeated start, bit 1 stop between, bit 3 two-wire read
        std::uint8_t extendHold = 0;  ///< bit 0
        std::uint8_t i2cDivisor = 60; ///< of 24 MHz: 400 kHz
        std::uint8_t spiConfig = 4;   ///< bit 0 clock idle high, bit 1 phase, bit 2 select idle high
        std::uint8_t adcContinuous = 0;
        std::uint8_t adcLoopCount = 10;
        std::array<std::uint8_t, 2> adcSampleRate = {0x03, 0xE8}; ///< high, low
    };

    // A reply, or nothing. `read` is the sub-command.
    std::optional<hid::Report> led(const hid::Report& in, bool read);
    std::optional<hid::Report> gpioConfig(const hid::Report& in, bool read);
    std::optional<hid::Report> gpioValue(const hid::Report& in, bool read);
    std::optional<hid::Report> i2cOptions(const hid::Report& in, bool read);
    std::optional<hid::Report> i2cClock(const hid::Report& in, bool read);
    std::optional<hid::Report> spiConfig(const hid::Report& in, bool read);
    std::optional<hid::Report> adcRefcon(const hid::Report& in, bool read);
    std::optional<hid::Report> adcMux(const hid::Report& in, bool read);
    std::optional<hid::Report> adcSampleRate(const hid::Report& in, bool read);
    std::optional<hid::Report> adcEnable(const hid::Report& in, bool read);
    std::optional<hid::Report> sfrAccess(const hid::Report& in, bool read);
    std::optional<hid::Report> clockRegister(const hid::Report& in, bool read, std::uint8_t address);
    static std::optional<hid::Report> plain(const hid::Report& in, bool read, std::uint8_t& setting);

    hid::Report i2cTransfer(const hid::Report& in);
    bool i2cExchange(const hid::Report& in, hid::Report& reply);
    std::optional<hid::Report> spiTransfer(const hid::Report& in);
    hid::Report adcRead();
    hid::Report extAdcAccess(const hid::Report& in, bool read);

    void setSfr(std::uint8_t address, std::uint8_t value) { board_.writeRegister(address, value); }

    Board& board_;
    Faults& faults_;
    Settings settings_;
};

} // namespace vrk::sim
