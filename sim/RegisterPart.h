#pragma once

#include "sim/Part.h"
#include "sim/RegisterMemory.h"

#include <optional>

namespace vrk::sim {

/// A part with byte registers on I2C. After the slave byte the first byte written is the register pointer;
/// data bytes, both ways, count it up.
class I2cRegisterPart : public Part {
  public:
    using Part::Part;

    void i2cStart() override { phase_ = Phase::SlaveByte; }
    bool i2cWrite(std::uint8_t byte) override;
    bool i2cSends() const override { return phase_ == Phase::Reading; }
    std::uint8_t i2cRead() override { return readRegister(pointer_++); }
    void i2cStop() override { phase_ = Phase::Idle; }

  protected:
    void onPowerUp() override;

    /// The even slave byte that the part answers to; none while it hears nothing.
    virtual std::optional<std::uint8_t> slaveAddress() const = 0;
    virtual std::uint8_t readRegister(std::uint8_t reg) const = 0;
    /// \return false: no such register, which is not acknowledged.
    virtual bool writeRegister(std::uint8_t reg, std::uint8_t value) = 0;

  private:
    enum class Phase { Idle, SlaveByte, Pointer, Data, Reading };

    Phase phase_ = Phase::Idle;
    std::uint8_t pointer_ = 0;
};

/// A potentiometer with registers on I2C. Answers at its base address plus the address pins. Pin P1.2 is its
/// /SHDN: low puts the wipers on their low terminals, as ACR bit 6 does.
class RegisterPart final : public I2cRegisterPart {
  public:
    /// \param baseAddress 8-bit form, bit 0 clear.
    RegisterPart(std::string name, const RegisterLayout& layout, std::uint8_t baseAddress)
        : I2cRegisterPart(std::move(name), layout.cells()),
          registers_(layout, memory()),
          base_(baseAddress) {}

    double wiperRatio(int channel) const override;

  protected:
    void onPowerUp() override;
    void onPowerDown() override { registers_.powerDown(); }
    void describe(PartState& state) const override { registers_.describe(state); }
    std::optional<std::uint8_t> slaveAddress() const override;
    std::uint8_t readRegister(std::uint8_t reg) const override { return registers_.read(reg); }
    bool writeRegister(std::uint8_t reg, std::uint8_t value) override { return registers_.write(reg, value); }

  private:
    RegisterMemory registers_;
    std::uint8_t base_;
};

} // namespace vrk::sim
