#pragma once

#include "script/ScriptTable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vrk {

class SharedValues;

/// A script and how far its run is, under the names that users' scripts know. Outlives the panel that shows
/// it.
struct ScriptState {
    ScriptTable table;

    // The file as it was loaded
    std::vector<std::string> ScriptRaw; ///< every line as read, the first at 0
    std::string StepNo;                 ///< of the line being read, then of the row that runs
    std::string I2CAdrText;             ///< address of the rows that follow
    int IntStartStep = 0;               ///< steps of the three markers; 0: absent
    int IntEndStep = 0;
    int EndMainStep = 0;
    int ExpectedReads = 0;
    int TotalLines = 0;
    bool ScriptLoaded = false; ///< a file was chosen
    std::uint8_t ScriptI2CBase = 0x50;
    std::uint8_t ScriptI2CBase1 = 0x51;

    // The run
    int RunStep = 0; ///< of the main part; a service block moves it
    int IntRunStep = 0;
    int IntSavedStep = 0; ///< one copy alone: after a nested entry the inner step is the one resumed behind
    bool ScriptRunning = false;
    int FailsAtStep = 0;
    int FailsNow = 0;
    int AdrBytes = 0;
    int WrTotal = 0;
    int RdTotal = 0;
    std::vector<std::uint8_t> ByteBuffer;
    std::string GPWrText;
    std::string GPRdText; ///< nothing assigns it: the pins are not read back

    /// Index of the next free entry of ScriptRaw, counted from 1.
    int ScriptRawNext() const { return static_cast<int>(ScriptRaw.size()) + 1; }
    void setBase(std::uint8_t address) {
        ScriptI2CBase = address;
        ScriptI2CBase1 = static_cast<std::uint8_t>(address + 1);
    }
    /// Entries that no row filled are 0, and so is what lies behind the end.
    std::uint8_t buffered(std::size_t index) const {
        return index < ByteBuffer.size() ? ByteBuffer[index] : std::uint8_t{0};
    }
};

void publish(SharedValues& values, ScriptState& state);

} // namespace vrk
