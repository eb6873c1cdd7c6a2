#include "sim/Supplies.h"

namespace vrk::sim {

namespace {
constexpr std::uint8_t kU5Id = 0x50;
constexpr RegisterLayout kU5 = {.wipers = 1, .taps = 128, .acr = 2};
constexpr double kLogicSupply = 3.3; // volts
constexpr Pin kU5Select{2, 4}, kVccSwitch{2, 5}, kVminusSwitch{2, 6};
} // namespace

Supplies::Supplies() {
    auto part = std::make_unique<SpiRegisterPart>("U5", kU5, kU5Id);
    part_ = part.get();
    u5_.put(std::move(part));
}

void Supplies::power(double volts) {
    // Its address pins are strapped low.
    u5_.part()->surround({.vcc = volts, .vminus = 0.0, .pins = {}});
    u5_.driveSpi({});
}

void Supplies::powerUp() {
    powered_ = true;
    power(kLogicSupply);
}

void Supplies::powerDown() {
    powered_ = vccOn_ = vminusOn_ = selected_ = false;
    power(0.0);
}

void Supplies::follow(const PinLevels& pins) {
    selected_ = powered_ && !isHigh(pins, kU5Select);
    vccOn_ = powered_ && isHigh(pins, kVccSwitch);
    vminusOn_ = powered_ && isHigh(pins, kVminusSwitch);
}

double Supplies::level() const {
    // A straight line through 2.7 V at code 2C and 5.0 V at code 72.
    return 2.7 + (code() - 0x2C) * (5.0 - 2.7) / (0x72 - 0x2C);
}

} // namespace vrk::sim
