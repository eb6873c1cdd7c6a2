#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/ScriptJob.h"
#include "apps/vrkctl/ScriptOutput.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/entries.h"
#include "platform/files/files.h"
#include "script/JUnitFile.h"
#include "script/ScriptCheck.h"
#include "script/ScriptFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace vrk {

namespace {

const char* word(ScriptFinding::Severity severity) {
    return severity == ScriptFinding::Severity::Error ? "error" : "warning";
}

void print(const std::string& file, const std::vector<ScriptFinding>& findings) {
    for (const ScriptFinding& finding : findings)
        put(file + ":" + std::to_string(finding.line) + ": " + word(finding.severity) + ": " +
            printable(finding.text) + "\n");
}

void printJson(const std::vector<ScriptFinding>& findings) {
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const ScriptFinding& finding : findings)
        all.push_back({{"line", finding.line}, {"severity", word(finding.severity)}, {"text", finding.text}});
    // A comment or a field may be in any code; JSON may not.
    put(all.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

} // namespace

ExitCode checkScript(const Options& options, const ScriptOptions& script) {
    const std::uint8_t base = scriptAddress(script.address);
    const std::string bytes = readFile(script.file);
    std::vector<ScriptFinding> findings;
    try {
        findings = checkScriptFile(
            bytes, busModeOf(script.bus == "spi" ? ScriptedBus::SPI : ScriptedBus::I2C), base);
    } catch (const Fault& fault) {
        throw Fault(script.file.string() + ": " + fault.what());
    }
    if (options.json)
        printJson(findings);
    else
        print(script.file.string(), findings);
    if (scriptLines(bytes).size() > ScriptTable::kMostLines) {
        tell(script.file.string() + " has more than 1000 lines: it cannot be run");
        return ExitCode::File;
    }
    const bool good = std::none_of(findings.begin(), findings.end(), [](const ScriptFinding& finding) {
        return finding.severity == ScriptFinding::Severity::Error;
    });
    return good ? ExitCode::Done : ExitCode::CheckFailed;
}

ExitCode rehearseScript(const Options& options, const ScriptOptions& script) {
    if (!options.wireLog.empty() || !options.replay.empty())
        throw CommandError(ExitCode::Usage,
                           "a rehearsal has no wire: --wire-log and --replay go with \"run\"");
    const ScriptJob job(options, script);
    ReportFile junit(script.junit, tellFileFailed);
    if (!script.junit.empty()) {
        ScriptResults none;
        none.script = job.name;
        none.bus = busName(job.bus);
        junit.write(junitReport(none));
    }
    const Rehearsal rehearsal = job.rehearsed(script.loop);
    for (const std::string& message : rehearsal.messages)
        tell(message);
    if (!script.save.empty())
        tell("a rehearsal writes no script: " + script.save.string() + " is left alone");
    if (!script.junit.empty())
        junit.tryWrite(junitReport(rehearsal.results));
    const ScriptOutput output(options, script, rehearsal.results);
    output.begin();
    for (const PassResult& pass : rehearsal.results.passes) {
        for (const RowResult& row : pass.rows)
            output.row(row);
        output.pass(pass);
    }
    output.end(&rehearsal);
    if (const auto signalled = interrupt::requested()) {
        tell("interrupted; the rehearsal is not whole");
        return *signalled;
    }
    return rehearsal.wouldFail.empty() ? ExitCode::Done : ExitCode::CheckFailed;
}

} // namespace vrk
