#pragma once

#include "sim/Converter.h"
#include "sim/Faults.h"
#include "sim/Part.h"
#include "sim/Ports.h"
#include "sim/Supplies.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace vrk::sim {

/// The hardware of one motherboard: ports, supplies, converters, the two buses and a part in the socket,
/// wired together. The firmware works it; a person's hands socket parts and hold inputs.
class Board final : private StoreGuard {
  public:
    /// Off until powerUp(). \param seed of the converter's noise. \param faults must outlive the board.
    Board(std::uint32_t seed, Faults& faults);

    void powerUp();
    void powerDown();
    bool powered() const { return powered_; }

    /// Puts a part in the socket, live if VCC is on; null empties it.
    void socket(std::unique_ptr<Part> part);
    const Part* part() const { return part_.get(); }

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

    /// One SPI transfer. The controller's chip select (P0.3) frames it for the part in the socket, unless
    /// U5 is selected: then U5 has the bus. \return the bytes clocked in, 0 where nothing drives the line.
    std::vector<std::uint8_t> spiTransfer(const std::vector<std::uint8_t>& out);

    /// Volts at the converter's input with this code.
    double channelVolts(std::uint8_t code) const;
    /// One conversion of the inputs that the multiplexer registers name. \param noise in counts.
    int convert(int noise);

    /// Holds an input at a level, whatever the board would put there; none gives it back.
    void holdInput(std::uint8_t code, std::optional<double> volts);
    void releaseInputs() { heldVolts_.clear(); }

  private:
    bool missNextStore() override;
    /// Lets supplies and part follow the pins.
    void settle();
    Part* partOnI2c() const;

    Faults& faults_;
    Ports ports_;
    Supplies supplies_;
    Converter converter_;
    ExternalConverter external_;
    std::unique_ptr<Part> part_;
    std::map<std::uint8_t, double> heldVolts_;
    bool powered_ = false;
};

} // namespace vrk::sim
