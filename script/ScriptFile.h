#pragma once

#include "platform/runtime/Clock.h"
#include "platform/runtime/Fault.h"
#include "script/ScriptHost.h"
#include "script/ScriptState.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vrk {

struct BusMode;

/// A load came to a line that it cannot take. The lines before it are loaded.
class ScriptLoadFault : public Fault {
  public:
    ScriptLoadFault(int line, const std::string& reason);
    int line() const { return line_; }

  private:
    int line_;
};

/// Cuts a file into lines: CR LF, LF and CR end one, a UTF-8 byte order mark is skipped.
/// \throws Fault if it is no text: NUL bytes, or a line above 65535 bytes, which no script has.
std::vector<std::string> scriptLines(std::string_view bytes);

/// Turns lines into steps: the whole table, markers and counts anew, the fields of the run cleared.
/// \throws ScriptLoadFault at line 1001, and at a delay or a field that does not fit 16 bits
void loadScript(ScriptState& script, ScriptFields& fields, const std::vector<std::string>& lines,
                const BusMode& mode);

/// What a load does to the fields before its first line.
void clearLoadFields(ScriptFields& fields);

/// Whether a save writes what column 6 holds into the row's line.
bool takesReadData(const ScriptRow& row);

/// Rows that hold expected data and have never been read: a save would write "--" there.
int unreadRows(const ScriptState& script);

/// Overwrites the read fields of the file's lines by what was really read, character for character.
void updateExpected(ScriptState& script);

/// The file to be written: the first line gets the stamp, in the script itself too, so that a later save
/// replaces it. Ends with one empty line more than was loaded.
std::string scriptToSave(ScriptState& script, const WallTime& now, const std::string& loopCount);

/// Writes the script with what was really read, as scriptToSave() gives it, anew or behind what the file
/// holds. \throws Fault with the system's description; the script then bears no stamp of a save that was
/// none.
void saveScript(ScriptState& script, const std::filesystem::path& path, bool append, const WallTime& now,
                const std::string& loopCount);

/// Where a row that saves writes to: "_DL" ahead of the last four characters, which are the extension.
std::string savedScriptPath(const std::string& path);

/// "2020-01-01" and "12:00", the same on every bench.
std::string shortDate(const WallTime& time);
std::string shortTime(const WallTime& time);

} // namespace vrk
