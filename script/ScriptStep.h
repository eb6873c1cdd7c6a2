#pragma once

#include "script/ScriptRun.h"
#include "script/ScriptTable.h"

#include <string>

namespace vrk {

/// The texts of a row as they stood when it began.
struct ScriptRun::Step {
    Step(const ScriptRow& texts, int number, unsigned table)
        : row(number),
          generation(table),
          line(texts[ScriptColumn::Line]),
          address(texts[ScriptColumn::Address]),
          reg(texts[ScriptColumn::Register]),
          write(texts[ScriptColumn::Write]),
          expected(texts[ScriptColumn::Expected]),
          operation(texts[ScriptColumn::Operation]) {}

    int row;
    unsigned generation; ///< of the table that the row is of
    std::string line;
    std::string address;
    std::string reg;
    std::string write;
    std::string expected;
    std::string operation;
    bool failed = false; ///< its comparison did
};

} // namespace vrk
