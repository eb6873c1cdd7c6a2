#pragma once

#include "sim/InstructionSet.h"

#include <memory>

namespace vrk::sim {

enum class Instructions { Quad, TenBit };

/// How a part with instructions is addressed on its bus: an upper half of its own and the address pins.
struct InstructionAddress {
    std::uint8_t base = 0x50;
    /// A quad part has its four pins in bits 0 to 3 and no read mark: a host that raises the lowest address
    /// bit for a read must raise pin A0 with it. A ten-bit part has them in bits 1 to 4, the mark in bit 0.
    Instructions kind = Instructions::Quad;

    bool matches(std::uint8_t byte, const PinLevels& pins) const;
    bool reading(std::uint8_t byte) const { return kind == Instructions::TenBit && (byte & 1) != 0; }
};

/// A part with data registers that is told by instructions; a bus form leads to it.
class InstructionPart : public Part {
  public:
    InstructionPart(std::string name, const InstructionAddress& address);

    double wiperRatio(int channel) const override { return powered() ? registers_.ratio(channel) : 0.0; }

  protected:
    void onPowerDown() override { registers_.powerDown(); }
    void describe(PartState& state) const override { registers_.describe(state); }
    void recall() { registers_.powerUp(); }

    const InstructionAddress& address() const { return address_; }
    InstructionSet& instructions() { return *instructions_; }
    const InstructionSet& instructions() const { return *instructions_; }

  private:
    InstructionAddress address_;
    DataRegisterMemory registers_;
    std::unique_ptr<InstructionSet> instructions_;
};

/// On I2C: slave byte, instruction, data.
class I2cInstructionPart final : public InstructionPart {
  public:
    using InstructionPart::InstructionPart;

    void i2cStart() override { phase_ = Phase::SlaveByte; }
    bool i2cWrite(std::uint8_t byte) override;
    bool i2cSends() const override { return phase_ == Phase::Data && instructions().answers(); }
    std::uint8_t i2cRead() override { return instructions().answer(place_++).value_or(0xFF); }
    void i2cStop() override;
    bool takesSteps() const override { return phase_ == Phase::Data && instructions().takesSteps(); }
    void step(bool up) override { instructions().step(up); }

  protected:
    void onPowerUp() override;

  private:
    enum class Phase { Idle, SlaveByte, Instruction, Data };

    Phase phase_ = Phase::Idle;
    bool reading_ = false;
    int place_ = 0; ///< of the next byte of the answer
};

/// On SPI: ID, instruction, data. The output is the tail of the input shift register unless an answer is due.
class SpiInstructionPart final : public InstructionPart {
  public:
    using InstructionPart::InstructionPart;

    void spiSelect(bool low) override;
    std::uint8_t spiNext() const override { return phase_ == Phase::Idle ? 0 : out_; }
    void spiTake(std::uint8_t in) override;
    bool takesSteps() const override { return phase_ == Phase::Data && instructions().takesSteps(); }
    void step(bool up) override { instructions().step(up); }

  protected:
    void onPowerUp() override;

  private:
    enum class Phase { Idle, Id, Instruction, Unknown, Data };

    Phase phase_ = Phase::Idle;
    bool reading_ = false;
    int place_ = 0; ///< of the next byte of the answer
    std::uint8_t out_ = 0;
};

} // namespace vrk::sim
