#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace vrk {

/// The columns of the step table, by their number.
enum class ScriptColumn { Line = 1, Address, Register, Write, Expected, Actual, Operation, Comment };

/// Marks of a cell. Green in the address column says that the row ran, never that it passed.
enum class CellColour { None, White, Red, Green };

/// One line of a script as a row of the table.
struct ScriptRow {
    static constexpr int kColumns = 8;

    std::string& operator[](ScriptColumn column) { return texts[place(column)]; }
    const std::string& operator[](ScriptColumn column) const { return texts[place(column)]; }
    CellColour& colour(ScriptColumn column) { return colours[place(column)]; }
    CellColour colour(ScriptColumn column) const { return colours[place(column)]; }

    std::array<std::string, kColumns> texts;
    std::array<CellColour, kColumns> colours{};

  private:
    static std::size_t place(ScriptColumn column) { return static_cast<std::size_t>(column) - 1; }
};

/// How many bytes a row moves, and how long it waits.
struct StepSizes {
    int RegCount = 0; ///< bytes of the register address
    int WrCount = 0;
    int RdCount = 0;
    int DelayMs = 0; ///< -1: wait for the user
};

/// The steps of a script, rows from 1. The sizes stand beside the rows and outlive a load: a row of the next
/// script that sets none runs with those that the row of its number had before.
class ScriptTable {
  public:
    static constexpr int kMostLines = 1000;

    /// No rows and no selection; the sizes stay.
    void restart();
    void add(ScriptRow row) { rows_.push_back(std::move(row)); }
    int rows() const { return static_cast<int>(rows_.size()); }

    /// \throws Fault "Subscript out of range" for a row that does not exist.
    const ScriptRow& row(int number) const;
    const std::string& text(int row, ScriptColumn column) const { return this->row(row)[column]; }
    void setText(int row, ScriptColumn column, const std::string& text);
    void setColour(int row, ScriptColumn column, CellColour colour);

    /// \param row 0 to 1000. \throws Fault "Subscript out of range"
    StepSizes& sizes(int row);
    /// Those of all rows, as another table has them.
    void takeSizes(const ScriptTable& other) { sizes_ = other.sizes_; }
    const StepSizes& sizes(int row) const { return const_cast<ScriptTable*>(this)->sizes(row); }

    /// 0: none.
    int selected() const { return selected_; }
    /// \throws Fault "Subscript out of range"
    void select(int row);

    /// Another one after each restart(): a step that let events run sees that its row is gone.
    unsigned generation() const { return generation_; }

    /// Called after a change of one cell, and with column 0 after a change of the selected row.
    void setWatcher(std::function<void(int row, int column)> watcher) { watcher_ = std::move(watcher); }

  private:
    ScriptRow& at(int number) { return const_cast<ScriptRow&>(row(number)); }
    void changed(int row, int column) const {
        if (watcher_)
            watcher_(row, column);
    }

    std::vector<ScriptRow> rows_;
    std::array<StepSizes, kMostLines + 1> sizes_{};
    int selected_ = 0;
    unsigned generation_ = 0;
    std::function<void(int, int)> watcher_;
};

} // namespace vrk
