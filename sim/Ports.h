#pragma once

#include "sim/Part.h"

#include <array>
#include <cstdint>

namespace vrk::sim {

/// Registers of the converter, which the firmware keeps in the register file like any other.
namespace sfr {
inline constexpr std::uint8_t AMX0N = 0xBA, AMX0P = 0xBB, ADC0CF = 0xBC, REF0CN = 0xD1, ADC0CN = 0xE8;
}

/// How the SPI port clocks.
struct SpiMode {
    bool clockIdle = false;  ///< level of the clock between transfers
    bool secondEdge = false; ///< data is taken at the second edge of a clock, not at the first
    bool selectIdle = true;  ///< level of the select between transfers
};

/// The controller's special function registers, and the port pins as these drive them.
///
/// A digital pin shows its latch: driven, or left to its pull-up (a floating one keeps its charge), unless
/// something outside pulls an open-drain pin low. A pin in analog mode has its digital input switched off
/// and reads 0. Pins that the crossbar has given to SPI (P0.0 to P0.3) or SMBus (P0.4, P0.5) read as their
/// latches too, since hosts compare what they wrote with what they read; lines() tells where they stand.
class Ports {
  public:
    Ports() { reset(); }

    /// As the firmware leaves the controller at start: ports open-drain and high, but both supplies
    /// switched off and the address pins low; SPI and SMBus on their pins.
    void reset();

    /// Addresses below 80 are plain memory, not registers: see isRegister().
    static bool isRegister(std::uint8_t address) { return address >= 0x80; }
    /// A port's data register reads as the levels of its pins, any other as it was written.
    /// \param pulledLow pins of P0 that something outside pulls to ground.
    std::uint8_t read(std::uint8_t address, std::uint8_t pulledLow = 0) const;
    void write(std::uint8_t address, std::uint8_t value);
    /// The register's own content: of a port, the latch.
    std::uint8_t latch(std::uint8_t address) const { return file_[address]; }

    std::uint8_t level(int port) const;
    /// What reaches the socket: bus lines held by a bus port of the controller stand idle.
    PinLevels lines() const;

    SpiMode spiMode() const;
    bool spiConnected() const;
    bool smbusConnected() const;

  private:
    std::array<std::uint8_t, 256> file_{};
};

} // namespace vrk::sim
