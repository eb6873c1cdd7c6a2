#pragma once

#include "apps/rehearsal/benchSteps.h"
#include "apps/vrkctl/Options.h"
#include "script/ScriptRehearsal.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vrk {

/// A script as a command was given it: entries judged, file read, nothing sent.
struct ScriptJob {
    /// \throws CommandError (usage) for entries that cannot be; Fault for a file that is no script
    ScriptJob(const Options& given, const ScriptOptions& wanted);

    Options options;
    ScriptOptions script;
    ScriptedBus bus;
    BusMode mode;
    std::uint8_t base;              ///< address of the rows ahead of the first address command
    std::string part;               ///< as the simulator writes it; empty: none was named
    std::string bytes;              ///< of the file
    std::vector<std::string> lines; ///< of the file
    std::string name;               ///< of the file, without its folder

    /// On the simulated part, with the same entries. A signal breaks it off. \param passes in place of those
    /// wanted
    Rehearsal rehearsed(int passes) const;
};

/// The address as a command is given it. \throws CommandError (usage)
std::uint8_t scriptAddress(const std::string& text);

/// Bytes of a script file. \throws Fault also if it is empty
std::string readScript(const std::filesystem::path& file);

} // namespace vrk
