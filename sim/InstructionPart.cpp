#include "sim/InstructionPart.h"

namespace vrk::sim {

namespace {

constexpr DataRegisterLayout layoutOf(Instructions kind) {
    return kind == Instructions::Quad
               ? DataRegisterLayout{.pots = 4, .registers = 4, .most = 0xFF, .span = 0x100}
               : DataRegisterLayout{.pots = 1, .registers = 4, .most = 0x3FF, .span = 0x400};
}

std::unique_ptr<InstructionSet> instructionsOf(Instructions kind, DataRegisterMemory& registers) {
    if (kind == Instructions::Quad) {
        return std::make_unique<QuadInstructions>(registers);
    }
    return std::make_unique<TenBitInstructions>(registers);
}

} // namespace

bool InstructionAddress::matches(std::uint8_t byte, const PinLevels& pins) const {
    const unsigned own = addressPins(pins);
    return kind == Instructions::Quad ? byte == static_cast<std::uint8_t>(base + own)
                                      : (byte & 0xFE) == static_cast<std::uint8_t>(base + (own << 1));
}

InstructionPart::InstructionPart(std::string name, const InstructionAddress& address)
    : Part(std::move(name), layoutOf(address.kind).cells()),
      address_(address),
      registers_(layoutOf(address.kind), memory()),
      instructions_(instructionsOf(address.kind, registers_)) {}

bool I2cInstructionPart::i2cWrite(std::uint8_t byte) {
    switch (phase_) {
    case Phase::SlaveByte:
        reading_ = address().reading(byte);
        phase_ = address().matches(byte, pins()) ? Phase::Instruction : Phase::Idle;
        break;
    case Phase::Instruction:
        place_ = 0;
        phase_ = instructions().begin(byte, reading_) ? Phase::Data : Phase::Idle;
        break;
    case Phase::Data:
        instructions().take(byte);
        break;
    case Phase::Idle:
        break;
    }
    return phase_ != Phase::Idle;
}

void I2cInstructionPart::i2cStop() {
    if (phase_ == Phase::Data) {
        instructions().end();
    }
    phase_ = Phase::Idle;
}

void I2cInstructionPart::onPowerUp() {
    recall();
    phase_ = Phase::Idle;
}

void SpiInstructionPart::spiSelect(bool low) {
    if (!low && phase_ == Phase::Data) {
        instructions().end();
    }
    phase_ = low ? Phase::Id : Phase::Idle;
    out_ = 0;
}

void SpiInstructionPart::spiTake(std::uint8_t in) {
    out_ = in;
    switch (phase_) {
    case Phase::Id:
        reading_ = address().reading(in);
        phase_ = address().matches(in, pins()) ? Phase::Instruction : Phase::Idle;
        return;
    case Phase::Instruction:
        place_ = 0;
        phase_ = instructions().begin(in, reading_) ? Phase::Data : Phase::Unknown;
        break;
    case Phase::Data:
        instructions().take(in);
        break;
    case Phase::Unknown:
    case Phase::Idle:
        return;
    }
    if (phase_ == Phase::Data && instructions().answers()) {
        out_ = instructions().answer(place_++).value_or(in);
    }
}

void SpiInstructionPart::onPowerUp() {
    recall();
    phase_ = Phase::Idle;
}

} // namespace vrk::sim
