#pragma once

#include "sim/Part.h"

#include <vector>

namespace vrk::sim {

/// How many of what a part with data registers has.
struct DataRegisterLayout {
    int pots = 1;
    int registers = 4; ///< non-volatile, of each pot
    int most = 0xFF;   ///< highest position
    int span = 0x100;  ///< position at which the wiper would stand on its high terminal

    /// The data registers pot by pot, each at mid-scale.
    std::vector<NonvolatileMemory::Cell> cells() const;
};

/// Wipers with non-volatile data registers behind each: positions of any width, moved by a write, by a
/// transfer or by steps. Power recalls register 0.
class DataRegisterMemory {
  public:
    /// \param stored the layout's cells. Must outlive the registers.
    DataRegisterMemory(const DataRegisterLayout& layout, NonvolatileMemory& stored)
        : layout_(layout), stored_(stored), wipers_(static_cast<std::size_t>(layout.pots), 0) {}

    int wiper(int pot) const { return wipers_.at(static_cast<std::size_t>(pot)); }
    /// Bits above the width are dropped.
    void setWiper(int pot, int position);
    /// One tap; at an end it holds.
    void step(int pot, bool up);

    int data(int pot, int reg) const { return stored_.read(cell(pot, reg)); }
    void store(int pot, int reg, int position);
    void dataToWiper(int pot, int reg) { wipers_.at(static_cast<std::size_t>(pot)) = data(pot, reg); }
    /// Stores the wiper's position; after a missed store the wiper falls back to the register.
    void wiperToData(int pot, int reg);

    void powerUp();
    void powerDown();

    /// 0 for a pot that does not exist. Looks at no power.
    double ratio(int pot) const;
    /// Where a pot has several registers they are named "DR", the pot if there are more, the register:
    /// "DR10".
    void describe(PartState& state) const;

  private:
    int cell(int pot, int reg) const { return pot * layout_.registers + reg; }

    DataRegisterLayout layout_;
    NonvolatileMemory& stored_;
    std::vector<int> wipers_;
};

} // namespace vrk::sim
