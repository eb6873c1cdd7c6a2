#include "sim/NonvolatileMemory.h"

#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace vrk::sim {

void NonvolatileMemory::store(int cell, int value) {
    Cell& written = cells_.at(static_cast<std::size_t>(cell));
    written.value = value;
    ++written.writes;
    ++writes_;
    if (listener_) {
        listener_();
    }
}

bool NonvolatileMemory::storePosition(int cell, int position) {
    if (guard_ != nullptr && guard_->missNextStore()) {
        return false;
    }
    store(cell, position);
    return true;
}

std::map<std::string, int> NonvolatileMemory::writesByCell() const {
    std::map<std::string, int> writes;
    for (const Cell& cell : cells_) {
        if (cell.writes > 0) {
            writes[cell.name] += cell.writes;
        }
    }
    return writes;
}

std::string NonvolatileMemory::text() const {
    std::string text;
    for (const Cell& cell : cells_) {
        char number[16];
        std::snprintf(number, sizeof number, "%s%02X", text.empty() ? "" : " ",
                      static_cast<unsigned>(cell.value));
        text += number;
    }
    return text;
}

void NonvolatileMemory::load(const std::string& text) {
    std::vector<Cell> cells = cells_;
    std::istringstream in(text);
    for (Cell& cell : cells) {
        if (!(in >> std::hex >> cell.value) || cell.value < 0 || cell.value > cell.most) {
            throw std::invalid_argument("the memory must be " + std::to_string(cells.size()) +
                                        " hexadecimal numbers that the part's cells can hold");
        }
    }
    if (std::string more; in >> more) {
        throw std::invalid_argument("the memory has only " + std::to_string(cells.size()) +
                                    " cells: behind them stands \"" + more + "\"");
    }
    cells_ = std::move(cells);
}

} // namespace vrk::sim
