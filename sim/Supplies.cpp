#include "sim/Supplies.h"

namespace vrk::sim {

namespace {
constexpr std::uint8_t kU5Id = 0x50;
constexpr RegisterLayout kU5 = {.wipers = 1, .taps = 128, .acr = 2};
constexpr double kLogicSupply = 3.3; // volts
} // namespace

Supplies::Supplies() : u5_("U5", kU5, kU5Id) {}

void Supplies::powerUp() {
    powered_ = true;
    u5_.surround({.vcc = kLogicSupply, .vminus = 0.0, .pins = {}}); // its address pins are strapped low
}

void Supplies::powerDown() {
    powered_ = vccOn_ = vminusOn_ = selected_ = false;
    u5_.surround({});
}

void Supplies::follow(const PinLevels& pins) {
    selected_ = powered_ && !pinHigh(pins, 2, 4);
    vccOn_ = powered_ && pinHigh(pins, 2, 5);
    vminusOn_ = powered_ && pinHigh(pins, 2, 6);
}

double Supplies::level() const {
    // A straight line through 2.7 V at code 2C and 5.0 V at code 72.
    return 2.7 + (code() - 0x2C) * (5.0 - 2.7) / (0x72 - 0x2C);
}

} // namespace vrk::sim
