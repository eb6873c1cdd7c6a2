#pragma once

#include "script/ScriptState.h"

#include <array>
#include <string>

namespace vrk {

struct BusMode;

/// The fields of a data line as the user wrote them, blanks gone; comment cut off.
struct DataFields {
    std::string reg;
    std::string write;
    std::string read;
};

/// A line with tabs as blanks, split at its first "#". The "#" belongs to the comment; blanks leave a line
/// that has one.
struct CleanLine {
    explicit CleanLine(const std::string& raw);
    DataFields fields() const;

    std::string code;
    std::string comment;
    bool blank;     ///< nothing at all on the line
    bool isCommand; ///< the backtick is the line's very first character: behind blanks it is data
};

/// Fills the row and the sizes of a data line. \return true if it has expected data. \throws Fault
/// "Overflow"
bool readDataLine(const CleanLine& line, const BusMode& mode, ScriptRow& row, StepSizes& sizes);

/// Fills the row, the sizes and the script's markers of a command line. \throws Fault "Overflow"
void readCommandLine(const CleanLine& line, int step, ScriptState& script, ScriptRow& row, StepSizes& sizes);

/// How a row that is run by its text is told from the others.
namespace operation {
inline constexpr const char* kNone = "NOP";
inline constexpr const char* kCommand = "Cmd:"; ///< alone: a command that is none
inline constexpr const char* kSetAddressStart = "Cmd:Set I2C";
inline constexpr const char* kSave = "Cmd: Save File";
inline constexpr const char* kEnable = "Cmd: Int Enable";
inline constexpr const char* kDisable = "Cmd: Int Disable";
inline constexpr const char* kBadDelay = "Error Delay_Time";
inline constexpr const char* kReadOnlySpi = "Read Only SPI Not Allowed";
} // namespace operation

inline constexpr const char* kGpioAddress = "GPIO";

} // namespace vrk
