#include "sim/Part.h"

namespace vrk::sim {

namespace {
constexpr double kLowestSupply = 2.0; // volts
}

void Part::surround(const Surroundings& now) {
    const PinLevels before = surroundings_.pins;
    const bool was = powered_;
    surroundings_ = now;
    powered_ = now.vcc >= kLowestSupply;
    if (powered_ && !was) {
        onPowerUp();
    } else if (was && !powered_) {
        onPowerDown();
    } else if (powered_ && before != now.pins) {
        onPins(before, now.pins);
    }
}

std::uint8_t addressPins(const PinLevels& pins) {
    const unsigned a = (pins[0] >> 6) | ((pins[1] & 3U) << 2);
    return static_cast<std::uint8_t>(a << 1);
}

} // namespace vrk::sim
