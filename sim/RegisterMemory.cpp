#include "sim/RegisterMemory.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace vrk::sim {

namespace {
constexpr std::uint8_t kVolatileOnly = 0x80;
constexpr std::uint8_t kAcrAtPowerUp = 0x40;

std::string numberOf(int reg) {
    char number[8];
    std::snprintf(number, sizeof number, "%02X", static_cast<unsigned>(reg));
    return number;
}
} // namespace

std::vector<NonvolatileMemory::Cell> RegisterLayout::cells() const {
    std::vector<NonvolatileMemory::Cell> cells;
    for (int reg = 0; reg < acr; ++reg) {
        const bool wiper = reg < wipers;
        cells.push_back({wiper ? taps / 2 : 0, wiper ? taps - 1 : 0xFF, numberOf(reg)});
    }
    return cells;
}

std::uint8_t RegisterMemory::read(std::uint8_t reg) const {
    if (reg == layout_.acr) {
        return acr_;
    }
    if (!exists(reg)) {
        return 0xFF;
    }
    return isWiper(reg) && (acr_ & kVolatileOnly) != 0 ? wipers_[reg] : stored(reg);
}

bool RegisterMemory::write(std::uint8_t reg, std::uint8_t value) {
    if (!exists(reg)) {
        return false;
    }
    if (reg == layout_.acr) {
        acr_ = value;
    } else if (!isWiper(reg)) {
        stored_.store(reg, value);
    } else {
        const auto position = static_cast<std::uint8_t>(value & (layout_.taps - 1));
        if ((acr_ & kVolatileOnly) != 0) {
            wipers_[reg] = position;
        } else {
            stored_.storePosition(reg, position);
            wipers_[reg] = stored(reg);
        }
    }
    return true;
}

void RegisterMemory::powerUp() {
    acr_ = kAcrAtPowerUp;
    for (std::uint8_t reg = 0; isWiper(reg); ++reg) {
        wipers_[reg] = stored(reg);
    }
}

void RegisterMemory::powerDown() {
    acr_ = 0;
    std::fill(wipers_.begin(), wipers_.end(), std::uint8_t{0});
}

double RegisterMemory::ratio(int channel) const {
    if (channel < 0 || channel >= layout_.wipers) {
        return 0.0;
    }
    return static_cast<double>(wiper(channel)) / layout_.taps;
}

void RegisterMemory::describe(PartState& state) const {
    state.wipers.assign(wipers_.begin(), wipers_.end());
    const auto add = [&state](int reg, int value) { state.registers[numberOf(reg)] = value; };
    for (std::uint8_t reg = 0; reg < layout_.acr; ++reg) {
        if (isWiper(reg)) {
            state.nonvolatile.push_back(stored(reg));
        } else {
            add(reg, stored(reg));
        }
    }
    add(layout_.acr, acr_);
}

} // namespace vrk::sim
