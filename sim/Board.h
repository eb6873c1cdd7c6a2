#pragma once

#include "sim/Converter.h"
#include "sim/Faults.h"
#include "sim/Part.h"
#include "sim/Ports.h"
#include "sim/Socket.h"
#include "sim/Supplies.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace vrk::sim {

/// The hardware of one motherboard: ports, supplies, converters, the two buses and two sockets, wired
/// together. The firmware works it; a person's hands socket parts and hold inputs.
///
/// What the bus ports of the controller send goes over the same lines that the firmware's port writes move,
/// edge by edge, so a part cannot tell the two apart.
class Board final : private StoreGuard {
  public:
    /// Part #1 and part #2 share all lines; parts with a /CS of their own have it on different pins.
    static constexpr int kSockets = 2;

    /// Off until powerUp(). \param seed of the converter's noise. \param faults must outlive the board.
    Board(std::uint32_t seed, Faults& faults);

    void powerUp();
    void powerDown();
    bool powered() const { return powered_; }

    /// Puts a part in a socket, live if VCC is on; null empties it. \param socket 0 for part #1, 1 for #2.
    void socket(std::unique_ptr<Part> part, int socket = 0);
    const Part* part(int socket = 0) const { return sockets_.at(static_cast<std::size_t>(socket)).part(); }
    Part* part(int socket = 0) { return sockets_.at(static_cast<std::size_t>(socket)).part(); }
    /// Called with the socket behind each store of its part.
    void onStore(std::function<void(int socket)> listener) { storeListener_ = std::move(listener); }

    /// For parts that do something while nobody moves a pin.
    void passTime(Milliseconds now);

    const Ports& ports() const { return ports_; }
    const Supplies& supplies() const { return supplies_; }
    Converter& converter() { return converter_; }
    ExternalConverter& externalConverter() { return external_; }

    std::uint8_t readRegister(std::uint8_t address);
    void writeRegister(std::uint8_t address, std::uint8_t value);

    /// I2C as the bus master sees it. A part without power, or lines that the crossbar has given to the
    /// ports, leave every byte unacknowledged.
    void i2cStart();
    bool i2cWrite(std::uint8_t byte);
    std::uint8_t i2cRead(bool acknowledged);
    void i2cStop();

    /// One SPI transfer, with the clock's polarity and phase of SPI0CFG and the select's idle level of
    /// SPI0CN. The controller's chip select (P0.3) frames it for the sockets, unless U5 is selected: then U5
    /// has the bus. \param phaseChange byte from which on the phase is the other one; none: nowhere.
    /// \return the bytes clocked in, 0 where nothing drives the line.
    std::vector<std::uint8_t> spiTransfer(const std::vector<std::uint8_t>& out,
                                          std::optional<std::size_t> phaseChange = std::nullopt);

    /// Volts at the converter's input with this code.
    double channelVolts(std::uint8_t code) const;
    /// One conversion of the inputs that the multiplexer registers name. \param noise in counts.
    int convert(int noise);

    /// Holds an input at a level, whatever the board would put there; none gives it back.
    void holdInput(std::uint8_t code, std::optional<double> volts);
    void releaseInputs() { heldVolts_.clear(); }

  private:
    bool missNextStore() override;
    /// Lets supplies and parts follow the pins.
    void settle();
    void driveI2c(bool sda, bool scl);
    bool sdaHigh() const;
    /// One I2C clock with SDA driven or released. \return SDA as it stands while the clock is high.
    bool i2cClock(bool sda);
    void driveSpi(const SpiLevels& levels);
    bool spiInput() const;
    double vinVolts(int input) const;

    Faults& faults_;
    Ports ports_;
    Supplies supplies_;
    Converter converter_;
    ExternalConverter external_;
    std::array<Socket, kSockets> sockets_;
    std::function<void(int)> storeListener_;
    std::map<std::uint8_t, double> heldVolts_;
    bool powered_ = false;
    bool masterSda_ = true; ///< as the bus port of the controller drives it
    bool masterScl_ = true;
};

} // namespace vrk::sim
