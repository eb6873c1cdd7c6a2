#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vrk {

struct BusMode;
struct ScriptState;

/// What a script holds that will not do what its writer meant.
struct ScriptFinding {
    enum class Severity { Error, Warning };
    int line = 0;
    Severity severity = Severity::Error;
    std::string text;

    bool operator==(const ScriptFinding&) const = default;
};

/// Findings of a script as it stands in the table, by line.
std::vector<ScriptFinding> checkScript(const ScriptState& script, const BusMode& mode);

/// Findings of a file that nothing else is done with. \param base device address of the rows ahead of the
/// first address command. \throws Fault if the bytes are no script at all
std::vector<ScriptFinding> checkScriptFile(std::string_view bytes, const BusMode& mode, std::uint8_t base);

} // namespace vrk
