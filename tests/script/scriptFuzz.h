#pragma once

#include "panels/blocks/ShellControl.h"
#include "script/ScriptCheck.h"
#include "script/ScriptFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace vrk {

/// Takes any bytes for a script: loads, checks, saves and reads it again. \return false if what was saved
/// does not read back as the same lines. Nothing but faults may come out of it, and they are expected.
inline bool scriptSurvives(std::string_view bytes, bool spi) {
    const BusMode mode{!spi, spi};
    ScriptState script;
    PlainFields fields;
    try {
        const std::vector<std::string> lines = scriptLines(bytes);
        (void)checkScriptFile(bytes, mode, 0x50);
        loadScript(script, fields, lines, mode);
        updateExpected(script);
        const std::string content = scriptToSave(script, {}, "0");
        std::vector<std::string> written = script.ScriptRaw;
        written.emplace_back();
        return script.ScriptRaw.empty() || scriptLines(content) == written;
    } catch (const Fault&) {
        return true; // told, and nothing half done
    }
}

} // namespace vrk
