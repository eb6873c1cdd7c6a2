#include "sim/RegisterMemory.h"

#include <algorithm>
#include <cstdio>

namespace vrk::sim {

namespace {
constexpr std::uint8_t kVolatileOnly = 0x80;
constexpr std::uint8_t kAcrAtPowerUp = 0x40;
} // namespace

RegisterMemory::RegisterMemory(const RegisterLayout& layout)
    : layout_(layout), wipers_(static_cast<std::size_t>(layout.wipers), 0), stored_(layout.acr, 0) {
    std::fill_n(stored_.begin(), layout.wipers, static_cast<std::uint8_t>(layout.taps / 2));
}

std::uint8_t RegisterMemory::read(std::uint8_t reg) const {
    if (reg == layout_.acr) {
        return acr_;
    }
    if (!exists(reg)) {
        return 0xFF;
    }
    return isWiper(reg) && (acr_ & kVolatileOnly) != 0 ? wipers_[reg] : stored_[reg];
}

bool RegisterMemory::write(std::uint8_t reg, std::uint8_t value, StoreGuard* guard) {
    if (!exists(reg)) {
        return false;
    }
    if (reg == layout_.acr) {
        acr_ = value;
        return true;
    }
    if (!isWiper(reg)) {
        stored_[reg] = value;
        ++nonvolatileWrites_;
        return true;
    }
    const auto position = static_cast<std::uint8_t>(value & (layout_.taps - 1));
    if ((acr_ & kVolatileOnly) != 0) {
        wipers_[reg] = position;
        return true;
    }
    if (guard == nullptr || !guard->missNextStore()) {
        stored_[reg] = position;
        ++nonvolatileWrites_;
    }
    wipers_[reg] = stored_[reg];
    return true;
}

void RegisterMemory::powerUp() {
    acr_ = kAcrAtPowerUp;
    std::copy_n(stored_.begin(), wipers_.size(), wipers_.begin());
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

PartState RegisterMemory::state(const std::string& name) const {
    PartState state;
    state.name = name;
    state.wipers.assign(wipers_.begin(), wipers_.end());
    state.nonvolatile.assign(stored_.begin(), stored_.begin() + layout_.wipers);
    const auto add = [&state](unsigned reg, int value) {
        char key[8];
        std::snprintf(key, sizeof key, "%02X", reg);
        state.registers[key] = value;
    };
    for (std::size_t reg = wipers_.size(); reg < stored_.size(); ++reg) {
        add(static_cast<unsigned>(reg), stored_[reg]);
    }
    add(layout_.acr, acr_);
    state.nonvolatileWrites = nonvolatileWrites_;
    return state;
}

} // namespace vrk::sim
