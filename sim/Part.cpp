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

void Part::passTime(Milliseconds now) {
    now_ = now;
    if (powered_) {
        onTime();
    }
}

PartState Part::state() const {
    PartState state;
    state.name = name_;
    state.nonvolatileWrites = memory_.writes();
    state.writes = memory_.writesByCell();
    describe(state);
    return state;
}

std::uint8_t addressPins(const PinLevels& pins) {
    return static_cast<std::uint8_t>((pins[0] >> 6) | ((pins[1] & 3U) << 2));
}

} // namespace vrk::sim
