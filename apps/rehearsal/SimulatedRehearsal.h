#pragma once

#include "apps/rehearsal/benchSteps.h"
#include "script/ScriptRehearsal.h"

#include <filesystem>

namespace vrk {

/// What a script is to be rehearsed on.
struct RehearsalSetUp {
    ScriptedBus bus = ScriptedBus::I2C;
    std::string part; ///< simulated; empty, or none that can be simulated: the bus's simplest part
    std::filesystem::path folder; ///< of the calibration file
};

/// A bench of its own with a simulated part in virtual time, brought up as a run brings up the real one.
std::unique_ptr<RehearsalBench> makeRehearsalBench(const RehearsalSetUp& setUp);

/// The same for the script panel of a bench: its bus, and the part that its panel is set up for.
std::unique_ptr<RehearsalBench> makeRehearsalBenchOf(Bench& bench, const std::filesystem::path& folder);

/// The part that a rehearsal takes if nothing better is known.
const char* rehearsalPart(ScriptedBus bus);

} // namespace vrk
