#include "sim/InstructionSet.h"

namespace vrk::sim {

namespace {

constexpr int kPots = 4;

/// High half of a quad part's instruction.
namespace quad {
constexpr std::uint8_t kAllDataToWiper = 0x1, kIncrement = 0x2, kAllWiperToData = 0x8, kReadWiper = 0x9,
                       kWriteWiper = 0xA, kReadData = 0xB, kWriteData = 0xC, kDataToWiper = 0xD,
                       kWiperToData = 0xE;
}

/// A ten-bit part's instruction but for the register in bits 3 and 2.
namespace tenBit {
constexpr std::uint8_t kReadWiper = 0x80;
constexpr std::uint8_t kReadDataOrWriteWiper = 0xA0; // with and without the read mark
constexpr std::uint8_t kWriteDataOrRecall = 0xC0;    // with and without data
constexpr std::uint8_t kWiperToData = 0xE0;
} // namespace tenBit

} // namespace

bool QuadInstructions::begin(std::uint8_t instruction, bool /*reading*/) {
    operation_ = instruction >> 4;
    reg_ = (instruction >> 2) & 3;
    pot_ = instruction & 3;
    data_.reset();
    return operation_ == quad::kAllDataToWiper || operation_ == quad::kIncrement ||
           (operation_ >= quad::kAllWiperToData && operation_ <= quad::kWiperToData);
}

void QuadInstructions::take(std::uint8_t data) {
    if (data_) {
        return;
    }
    data_ = data;
    if (operation_ == quad::kWriteWiper) {
        registers().setWiper(pot_, data);
    }
}

bool QuadInstructions::answers() const {
    return operation_ == quad::kReadWiper || operation_ == quad::kReadData;
}

std::optional<std::uint8_t> QuadInstructions::answer(int place) const {
    if (place > 0) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>(operation_ == quad::kReadWiper ? registers().wiper(pot_)
                                                                    : registers().data(pot_, reg_));
}

void QuadInstructions::end() {
    switch (operation_) {
    case quad::kWriteData:
        if (data_) {
            registers().store(pot_, reg_, *data_);
        }
        break;
    case quad::kDataToWiper:
        registers().dataToWiper(pot_, reg_);
        break;
    case quad::kWiperToData:
        registers().wiperToData(pot_, reg_);
        break;
    case quad::kAllDataToWiper:
    case quad::kAllWiperToData:
        for (int pot = 0; pot < kPots; ++pot) {
            if (operation_ == quad::kAllDataToWiper) {
                registers().dataToWiper(pot, reg_);
            } else {
                registers().wiperToData(pot, reg_);
            }
        }
        break;
    default:
        break;
    }
}

bool QuadInstructions::takesSteps() const {
    return operation_ == quad::kIncrement;
}

bool TenBitInstructions::begin(std::uint8_t instruction, bool reading) {
    operation_ = instruction & 0xF0;
    reg_ = (instruction >> 2) & 3;
    reading_ = reading;
    taken_ = value_ = 0;
    if ((instruction & 3) != 0) {
        return false;
    }
    switch (operation_) {
    case tenBit::kReadWiper:
        return reading && reg_ == 0;
    case tenBit::kReadDataOrWriteWiper:
        return reading || reg_ == 0;
    case tenBit::kWriteDataOrRecall:
    case tenBit::kWiperToData:
        return true;
    default:
        return false;
    }
}

void TenBitInstructions::take(std::uint8_t data) {
    if (reading_) {
        return; // clocks of a read that the part does not answer
    }
    value_ = (value_ << 8 | data) & 0xFFFF;
    if (++taken_ == 2 && operation_ == tenBit::kReadDataOrWriteWiper) {
        registers().setWiper(0, value_);
    }
}

bool TenBitInstructions::answers() const {
    return reading_ && (operation_ == tenBit::kReadWiper || operation_ == tenBit::kReadDataOrWriteWiper);
}

std::optional<std::uint8_t> TenBitInstructions::answer(int place) const {
    if (place > 1) {
        return std::nullopt;
    }
    const int value = operation_ == tenBit::kReadWiper ? registers().wiper(0) : registers().data(0, reg_);
    return static_cast<std::uint8_t>(place == 0 ? value >> 8 : value);
}

void TenBitInstructions::end() {
    if (operation_ == tenBit::kWriteDataOrRecall && taken_ == 0) {
        registers().dataToWiper(0, reg_);
    } else if (operation_ == tenBit::kWriteDataOrRecall && taken_ == 2) {
        registers().store(0, reg_, value_);
    } else if (operation_ == tenBit::kWiperToData && taken_ == 0) {
        registers().wiperToData(0, reg_);
    }
}

} // namespace vrk::sim
