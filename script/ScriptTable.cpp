#include "script/ScriptTable.h"

#include "platform/runtime/Fault.h"

#include <utility>

namespace vrk {

void ScriptTable::restart() {
    rows_.clear();
    selected_ = 0;
    ++generation_;
}

const ScriptRow& ScriptTable::row(int number) const {
    if (number < 1 || number > rows())
        throw subscriptOutOfRange();
    return rows_[static_cast<std::size_t>(number) - 1];
}

void ScriptTable::setText(int row, ScriptColumn column, const std::string& text) {
    if (std::exchange(at(row)[column], text) != text)
        changed(row, static_cast<int>(column));
}

void ScriptTable::setColour(int row, ScriptColumn column, CellColour colour) {
    if (std::exchange(at(row).colour(column), colour) != colour)
        changed(row, static_cast<int>(column));
}

StepSizes& ScriptTable::sizes(int row) {
    if (row < 0 || row > kMostLines)
        throw subscriptOutOfRange();
    return sizes_[static_cast<std::size_t>(row)];
}

void ScriptTable::select(int row) {
    (void)this->row(row);
    if (std::exchange(selected_, row) != row)
        changed(row, 0);
}

} // namespace vrk
