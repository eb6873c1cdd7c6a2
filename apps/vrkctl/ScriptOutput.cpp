#include "apps/vrkctl/ScriptOutput.h"

#include "apps/vrkctl/Terminal.h"
#include "platform/runtime/text.h"
#include "script/ScriptReports.h"

#include <algorithm>
#include <cstdio>

namespace vrk {

namespace {

constexpr int kVerdictWidth = 11;

std::string lines(const std::vector<int>& numbers) {
    std::string text;
    for (const int line : numbers)
        text += (text.empty() ? "line " : ", ") + std::to_string(line);
    return text.empty() ? "none" : text;
}

std::string seconds(Milliseconds duration) {
    return formatNumber(static_cast<double>(duration.count()) / 1000.0, "#0.000") + " s";
}

int notReached(const PassResult& pass) {
    return static_cast<int>(std::count_if(pass.rows.begin(), pass.rows.end(), [](const RowResult& row) {
        return row.verdict == RowVerdict::NotReached;
    }));
}

void printRehearsal(const Rehearsal& rehearsal) {
    std::string writes;
    for (const auto& [reg, count] : rehearsal.nonvolatileWrites)
        writes += (writes.empty() ? " (" : ", ") + reg + ": " + std::to_string(count);
    putf("time                 %s\n", seconds(rehearsal.lasted).c_str());
    putf("reports              %lld\n", rehearsal.reports);
    putf("non-volatile writes  %d%s%s\n", rehearsal.totalWrites(), writes.c_str(), writes.empty() ? "" : ")");
    putf("would fail           %s\n", lines(rehearsal.wouldFail).c_str());
    putf("can never pass       %s\n", lines(rehearsal.neverPass).c_str());
}

} // namespace

ScriptOutput::ScriptOutput(const Options& options, const ScriptOptions& script, const ScriptResults& results)
    : json_(options.json), csv_(script.csv), results_(results) {}

void ScriptOutput::begin() const {
    if (csv_)
        put(csvHeading());
    else if (!json_)
        putf("line  %-*s  %-20s  addr  reg   write       expected    read\n", kVerdictWidth, "verdict",
             "operation");
}

void ScriptOutput::row(const RowResult& row) const {
    if (!forPeople())
        return;
    const bool red = row.verdict >= RowVerdict::Fail && colouredOutput();
    std::string line(256, '\0');
    line.resize(static_cast<std::size_t>(std::snprintf(
        line.data(), line.size(), "%4d  %-*s  %-20.40s  %-4.8s  %-4.8s  %-10.60s  %-10.60s  %.60s", row.line,
        kVerdictWidth, rowVerdictName(row.verdict), trimmed(row.operation).c_str(), row.address.c_str(),
        row.reg.c_str(), row.write.c_str(), row.expected.c_str(), row.read.c_str())));
    line.resize(line.find_last_not_of(' ') + 1);
    put((red ? "\033[31m" : "") + printable(line) + (red ? "\033[0m" : "") + "\n");
}

void ScriptOutput::pass(const PassResult& pass) const {
    if (csv_)
        put(csvRows(pass));
    else if (!json_)
        putf("pass %d: %d passed, %d failed, %d in error, %d not reached, %s, %s\n", pass.pass, pass.passed,
             pass.failed, pass.errors, notReached(pass), seconds(pass.lasted).c_str(),
             scriptEndName(pass.end));
}

void ScriptOutput::end(const Rehearsal* rehearsal) const {
    if (json_)
        put(jsonReport(results_, rehearsal));
    else if (rehearsal != nullptr && !csv_)
        printRehearsal(*rehearsal);
}

} // namespace vrk
