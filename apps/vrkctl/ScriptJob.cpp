#include "apps/vrkctl/ScriptJob.h"

#include "apps/rehearsal/SimulatedRehearsal.h"
#include "apps/vrkctl/CommandLine.h"
#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/PanelBench.h"
#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/entries.h"
#include "platform/files/files.h"
#include "script/ScriptFile.h"
#include "sim/PartCatalogue.h"

#include <algorithm>
#include <charconv>

namespace vrk {

namespace {

PartBus partBus(ScriptedBus bus) {
    return bus == ScriptedBus::SPI ? PartBus::SPI : PartBus::I2C;
}

/// The part that the entries name, by itself or through the simulated socket.
std::string partOf(const Options& options, const ScriptOptions& script, ScriptedBus bus) {
    if (script.part.empty())
        return options.simulate.empty() ? std::string() : simulatedPart(options.simulate);
    auto names = sim::SimulatedBus::partNames();
    std::erase_if(names,
                  [bus](const std::string& name) { return busOf(sim::partFacts(name)) != partBus(bus); });
    if (const std::string* name = nameInAnyCase(script.part, names))
        return *name;
    throw usage("--part: '" + script.part + "' is no part on this bus" + didYouMean(script.part, names) +
                "; parts: " + listed(names));
}

ScriptedBus scriptedBus(const std::string& name) {
    return name == "spi" ? ScriptedBus::SPI : ScriptedBus::I2C;
}

void requireLines(const ScriptOptions& script, int lines) {
    const int first = script.from.value_or(1);
    const int last = script.to.value_or(lines);
    const std::string range = "; the script has the lines 1 to " + std::to_string(lines);
    if (first < 1 || first > lines)
        throw usage("--from: there is no line " + std::to_string(first) + range);
    if (last < 1 || last > lines)
        throw usage("--to: there is no line " + std::to_string(last) + range);
    if (first > last)
        throw usage("--from is behind --to");
}

} // namespace

std::uint8_t scriptAddress(const std::string& text) {
    constexpr int kFirstRefused = 255;
    int value = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || end != text.data() + text.size() || value < 0 || value >= kFirstRefused)
        throw usage("--address: '" + text + "' is no hexadecimal address from 00 to FE");
    return static_cast<std::uint8_t>(value);
}

std::string readScript(const std::filesystem::path& file) {
    std::string bytes = readFile(file);
    if (bytes.empty())
        throw Fault(file.string() + " is empty");
    return bytes;
}

ScriptJob::ScriptJob(const Options& given, const ScriptOptions& wanted)
    : options(given),
      script(wanted),
      bus(scriptedBus(wanted.bus)),
      mode(busModeOf(bus)),
      base(scriptAddress(wanted.address)),
      part(partOf(given, wanted, bus)),
      name(wanted.file.filename().string()) {
    if (options.json && script.csv)
        throw usage("--json and --csv exclude each other");
    if (script.vcc)
        requireLevel(*script.vcc);
    requireDistinct(
        {{"the script", script.file}, {"--junit", script.junit}, {"--wire-log", options.wireLog}});
    requireDistinct({{"--save", script.save}, {"--junit", script.junit}, {"--wire-log", options.wireLog}});
    bytes = readScript(script.file);
    ScriptState state;
    try {
        lines = scriptLines(bytes);
        requireLines(script, static_cast<int>(lines.size()));
        // A line that stops a load stops the command: half a script is not what was asked for.
        PlainFields fields;
        loadScript(state, fields, lines, mode);
    } catch (const Fault& fault) {
        throw Fault(script.file.string() + ": " + fault.what());
    }
    if (const int first = script.from.value_or(1), last = script.to.value_or(state.EndMainStep - 1);
        script.from && first > last)
        throw usage("--from: line " + std::to_string(first) +
                    " is behind the main part; --to says how far to go from there");
}

Rehearsal ScriptJob::rehearsed(int passes) const {
    return rehearse(bytes,
                    {.name = name,
                     .mode = mode,
                     .base = base,
                     .passes = passes,
                     .stopOnFail = script.stopOnFail,
                     .from = script.from,
                     .to = script.to,
                     .started = RealClock().wallTime(),
                     .goOn = [] { return !interrupt::requested().has_value(); }},
                    [this] {
                        return makeRehearsalBench(
                            {.bus = bus, .part = part, .folder = programFolder(options.folder)});
                    });
}

} // namespace vrk
