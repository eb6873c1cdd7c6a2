#include "sim/DataRegisterMemory.h"

#include <algorithm>
#include <string>

namespace vrk::sim {

std::vector<NonvolatileMemory::Cell> DataRegisterLayout::cells() const {
    std::vector<NonvolatileMemory::Cell> cells;
    for (int pot = 0; pot < pots; ++pot) {
        for (int reg = 0; reg < registers; ++reg) {
            cells.push_back({(most + 1) / 2, most, "DR" + std::to_string(pot) + "." + std::to_string(reg)});
        }
    }
    return cells;
}

void DataRegisterMemory::setWiper(int pot, int position) {
    wipers_.at(static_cast<std::size_t>(pot)) = position & layout_.most;
}

void DataRegisterMemory::step(int pot, bool up) {
    int& wiper = wipers_.at(static_cast<std::size_t>(pot));
    wiper = std::clamp(wiper + (up ? 1 : -1), 0, layout_.most);
}

void DataRegisterMemory::store(int pot, int reg, int position) {
    stored_.storePosition(cell(pot, reg), position & layout_.most);
}

void DataRegisterMemory::wiperToData(int pot, int reg) {
    if (!stored_.storePosition(cell(pot, reg), wiper(pot))) {
        dataToWiper(pot, reg);
    }
}

void DataRegisterMemory::powerUp() {
    for (int pot = 0; pot < layout_.pots; ++pot) {
        dataToWiper(pot, 0);
    }
}

void DataRegisterMemory::powerDown() {
    std::fill(wipers_.begin(), wipers_.end(), 0);
}

double DataRegisterMemory::ratio(int pot) const {
    return pot >= 0 && pot < layout_.pots ? static_cast<double>(wiper(pot)) / layout_.span : 0.0;
}

void DataRegisterMemory::describe(PartState& state) const {
    state.wipers = wipers_;
    for (int pot = 0; pot < layout_.pots; ++pot) {
        state.nonvolatile.push_back(data(pot, 0));
        const std::string name = "DR" + (layout_.pots > 1 ? std::to_string(pot) : "");
        for (int reg = 0; layout_.registers > 1 && reg < layout_.registers; ++reg) {
            state.registers[name + std::to_string(reg)] = data(pot, reg);
        }
    }
}

} // namespace vrk::sim
