#include "panels/discrete/RunInReport.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/Terminal.h"
#include "platform/files/JsonObject.h"
#include "platform/files/files.h"
#include "platform/files/markup.h"
#include "platform/runtime/text.h"

#include <array>

namespace vrk {

namespace {

/// The keys of a stage's line in the journal.
void putRow(const RunInStage& stage) {
    static constexpr std::array<const char*, 3> kVerdicts = {"measured", "pass", "fail"};
    put(decimalText(stage.loop) + "," + decimalText(stage.stage) + "," + decimalText(stage.tally) + "," +
        decimalText(stage.counts) + "," + jsonNumber(stage.volts) + "," + jsonNumber(stage.error) + "," +
        kVerdicts.at(static_cast<std::size_t>(stage.verdict)) + "," +
        (stage.band ? *stage.band ? "pass" : "fail" : "") + "," + decimalText(stage.ms.count()) + "\n");
}

void putJson(const RunInReport& report) {
    const RunInCount& counted = report.counted;
    put("{\"run\":" + jsonText(report.history.header.run) + ",\"count\":" + decimalText(counted.count) +
        ",\"judgements\":" + decimalText(counted.judgements) + ",\"fails\":" + decimalText(counted.fails) +
        ",\"tolerance\":" + jsonNumber(report.tolerance) +
        ",\"derived\":" + (report.derived ? "true" : "false") + ",\"ended\":" + jsonText(report.ended()) +
        ",\"resumed\":" + decimalText(report.history.resumed) + ",\"voltsPerStep\":" +
        jsonNumber(counted.voltsPerStep) + ",\"limit\":" + jsonNumber(counted.limit) + "}\n");
}

void putText(const RunInReport& report) {
    const RunInHeader& header = report.history.header;
    const RunInCount& counted = report.counted;
    const int resumed = report.history.resumed;
    put(header.settings.id + ", " + header.part + ", run " + header.run + "\nstarted " + header.started +
        ", " + report.ended() + (resumed > 0 ? ", resumed" + numberToText(resumed) + " times" : "") + "\n" +
        decimalText(counted.count) + " steps," + numberToText(counted.fails) + " fails in" +
        numberToText(counted.judgements) + " judgements\ntolerance " + doubleText(report.tolerance) +
        (report.derived ? " (derived: the run had " + doubleText(header.settings.tolerance) + ")" : "") +
        ", limit " + formatNumber(counted.limit, "0.0000") + " V, " +
        formatNumber(counted.voltsPerStep, "0.000000") + " V a step\n");
}

} // namespace

ExitCode reportRunIn(const Options& options, const RunInReportOptions& report) {
    if (options.json && report.csv)
        throw CommandError(ExitCode::Usage, "--json and --csv exclude each other");
    if (!report.junit.empty() && (report.junit == report.journal || sameFile(report.junit, report.journal)))
        throw CommandError(ExitCode::Usage, "--junit would overwrite the journal");
    if (report.csv)
        put("loop,stage,tally,counts,volts,error,verdict,band,ms\n");
    std::optional<RunInSuite> suite;
    const RunInReport counted =
        recountRunIn(report.journal, report.tolerance,
                     report.csv ? std::function<void(const RunInStage&)>(putRow) : nullptr, &suite);
    const auto line = [&counted] { return std::to_string(counted.history.extent.line); };
    if (counted.history.extent.damaged)
        tell(report.journal.string() + " is damaged behind line " + line() + ": counted up to there");
    else if (counted.history.extent.torn)
        tell("the last line of " + report.journal.string() + " was torn and is dropped");
    if (counted.counted.still)
        tell(kWiperStill);
    if (options.json)
        putJson(counted);
    else if (!report.csv)
        putText(counted);
    if (!report.junit.empty()) {
        suite->ended(counted.history.ended.value_or("incomplete"));
        replaceFile(report.junit, junitText(suite->suite(true)));
    }
    return counted.counted.passed() ? ExitCode::Done : ExitCode::CheckFailed;
}

} // namespace vrk
