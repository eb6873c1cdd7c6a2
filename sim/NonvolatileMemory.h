#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vrk::sim {

/// Lets a store go wrong on purpose.
class StoreGuard {
  public:
    virtual ~StoreGuard() = default;
    /// \return true when the store now under way must fail: the cell keeps what it held.
    virtual bool missNextStore() = 0;
};

/// The cells of a part that outlast VCC. A store is done or not done: what breaks it off leaves the value of
/// before or the new one, never a third.
class NonvolatileMemory {
  public:
    struct Cell {
        int value = 0;      ///< as the factory leaves it
        int most = 0;       ///< largest value, the least being 0
        std::string name{}; ///< of the register: "0A", "DR1.3"
        int writes = 0;     ///< since the part was made
    };

    explicit NonvolatileMemory(std::vector<Cell> cells) : cells_(std::move(cells)) {}

    int read(int cell) const { return cells_.at(static_cast<std::size_t>(cell)).value; }
    /// Counts as a write, also where the value stays: the cell wears all the same.
    void store(int cell, int value);
    /// Store of a wiper's position, the one that a fault on demand can make fail.
    /// \return false: missed, the cell keeps what it held.
    bool storePosition(int cell, int position);
    /// Stores since the part was made.
    int writes() const { return writes_; }
    /// The same by the cell's name, without the cells that were never written: each wears by itself.
    std::map<std::string, int> writesByCell() const;

    /// All cells as hexadecimal numbers with blanks between.
    std::string text() const;
    /// Takes what text() gave; no store is counted or reported, and a wiper follows at the next power-up.
    /// \throws std::invalid_argument for another count of cells or a value above a cell's most; nothing is
    /// taken then.
    void load(const std::string& text);

    /// Who may make stores fail. Must outlive the memory; null: nobody.
    void setGuard(StoreGuard* guard) { guard_ = guard; }
    /// Called behind each store.
    void onStore(std::function<void()> listener) { listener_ = std::move(listener); }

  private:
    std::vector<Cell> cells_;
    int writes_ = 0;
    StoreGuard* guard_ = nullptr;
    std::function<void()> listener_;
};

} // namespace vrk::sim
