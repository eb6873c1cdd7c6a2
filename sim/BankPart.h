#pragma once

#include "sim/DataRegisterMemory.h"
#include "sim/RegisterPart.h"

namespace vrk::sim {

/// Four pots on I2C with four data registers each, and an up/down interface on pins of its own.
///
/// Registers 0 to 3 are the pots' wipers or, with status bit 0 set, the data registers of the bank in status
/// bits 2 and 1. Any higher register number is the status register, which power clears. The part hears the
/// bus while its CS pin is high, at a fixed address: the address pins are lines of the other interface.
///
/// With CS low each rise of its SCL pin steps the pot that DS1 and DS0 name. CS rising with SCL high stores
/// that pot's position in its data register 0.
class BankPart final : public I2cRegisterPart {
  public:
    BankPart(std::string name, std::uint8_t address)
        : I2cRegisterPart(std::move(name), kLayout.cells()),
          registers_(kLayout, memory()),
          address_(address) {}

    double wiperRatio(int channel) const override { return powered() ? registers_.ratio(channel) : 0.0; }

  protected:
    void onPowerUp() override;
    void onPowerDown() override { registers_.powerDown(); }
    void onPins(const PinLevels& before, const PinLevels& now) override;
    void describe(PartState& state) const override;
    std::optional<std::uint8_t> slaveAddress() const override;
    std::uint8_t readRegister(std::uint8_t reg) const override;
    bool writeRegister(std::uint8_t reg, std::uint8_t value) override;

  private:
    static constexpr DataRegisterLayout kLayout{.pots = 4, .registers = 4, .most = 0xFF, .span = 0x100};

    bool bankSelected() const { return (status_ & 1) != 0; }
    int bank() const { return (status_ >> 1) & 3; }

    DataRegisterMemory registers_;
    std::uint8_t address_;
    std::uint8_t status_ = 0;
};

} // namespace vrk::sim
