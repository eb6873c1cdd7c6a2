#pragma once

#include "sim/Part.h"
#include "sim/RegisterMemory.h"

namespace vrk::sim {

/// A potentiometer with registers on I2C. After the slave byte the first byte written is the register
/// pointer; data bytes, both ways, count it up. Answers at its base address plus the address pins. Pin P1.2
/// is its /SHDN: low puts the wipers on their low terminals, as ACR bit 6 does.
class RegisterPart final : public Part {
  public:
    /// \param baseAddress 8-bit form, bit 0 clear.
    RegisterPart(std::string name, const RegisterLayout& layout, std::uint8_t baseAddress)
        : Part(std::move(name)), memory_(layout), baseAddress_(baseAddress) {}

    void i2cStart() override { phase_ = Phase::SlaveByte; }
    bool i2cWrite(std::uint8_t byte) override;
    std::uint8_t i2cRead(bool acknowledged) override;
    void i2cStop() override { phase_ = Phase::Idle; }

    double wiperRatio(int channel) const override;
    PartState state() const override { return memory_.state(name()); }

  protected:
    void onPowerUp() override;
    void onPowerDown() override;

  private:
    enum class Phase { Idle, SlaveByte, Pointer, Data, Reading };

    RegisterMemory memory_;
    std::uint8_t baseAddress_;
    Phase phase_ = Phase::Idle;
    std::uint8_t pointer_ = 0;
};

/// Whether the pin P1.2, the /SHDN of the parts that have one, is low.
bool shutdownPinLow(const PinLevels& pins);

} // namespace vrk::sim
