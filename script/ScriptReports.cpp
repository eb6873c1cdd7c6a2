#include "script/ScriptReports.h"

#include "platform/files/JUnit.h"
#include "platform/files/SequentialInput.h"
#include "platform/files/markup.h"
#include "platform/runtime/text.h"

#include <map>
#include <utility>

namespace vrk {

namespace {

std::string seconds(Milliseconds duration) {
    return doubleText(static_cast<double>(duration.count()) / 1000.0);
}

std::string padded3(int line) {
    const std::string number = decimalText(line);
    return std::string(number.size() < 3 ? 3 - number.size() : 0, '0') + number;
}

JUnitCase caseOf(const RowResult& row) {
    const std::string where = "line " + padded3(row.line) + ": ";
    JUnitCase one;
    one.lasted = row.lasted;
    switch (row.verdict) {
    case RowVerdict::Fail:
        one.outcome = JUnitCase::Outcome::Failure;
        one.message =
            where + "expected " + row.expected + ", read " + (row.read.empty() ? "nothing" : row.read);
        one.type = "mismatch";
        break;
    case RowVerdict::Error:
        one.outcome = JUnitCase::Outcome::Error;
        one.message = where + row.why;
        one.type = "transaction";
        break;
    case RowVerdict::NotReached:
    case RowVerdict::Ran:
        one.outcome = JUnitCase::Outcome::Skipped;
        one.message = where + rowVerdictName(row.verdict);
        one.type = rowVerdictName(row.verdict);
        break;
    case RowVerdict::Pass:
        break;
    }
    return one;
}

} // namespace

std::string junitReport(const ScriptResults& results) {
    JUnitSuite suite;
    suite.name = results.script;
    suite.started = results.started;
    suite.properties = {{"bus", results.bus},
                        {"state", results.ended ? scriptEndName(results.end) : "incomplete"}};
    suite.lasted = results.before.lasted;
    for (const PassResult& pass : results.passes) {
        suite.lasted += pass.lasted;
        std::map<int, int> runs;
        for (const RowResult& row : pass.rows) {
            if (row.expected.empty() && row.verdict != RowVerdict::Error)
                continue;
            JUnitCase one = caseOf(row);
            one.name = "pass " + decimalText(pass.pass) + " line " + padded3(row.line);
            if (const int run = ++runs[row.line]; run > 1)
                one.name += " run " + decimalText(run);
            suite.cases.push_back(std::move(one));
        }
    }
    return junitText(suite);
}

std::string jsonReport(const ScriptResults& results, const Rehearsal* rehearsal) {
    std::string passes;
    for (const PassResult& pass : results.passes) {
        std::string rows;
        for (const RowResult& row : pass.rows)
            rows += std::string(rows.empty() ? "" : ",") + "{\"line\":" + decimalText(row.line) +
                    ",\"operation\":" + jsonText(row.operation) + ",\"address\":" + jsonText(row.address) +
                    ",\"register\":" + jsonText(row.reg) + ",\"write\":" + jsonText(row.write) +
                    ",\"expected\":" + jsonText(row.expected) + ",\"read\":" + jsonText(row.read) +
                    ",\"verdict\":" + jsonText(rowVerdictName(row.verdict)) +
                    ",\"ms\":" + decimalText(row.lasted.count()) + "}";
        passes += std::string(passes.empty() ? "" : ",") + "{\"pass\":" + decimalText(pass.pass) +
                  ",\"seconds\":" + seconds(pass.lasted) + ",\"passed\":" + decimalText(pass.passed) +
                  ",\"failed\":" + decimalText(pass.failed) + ",\"rows\":[" + rows + "]}";
    }
    std::string text = "{\"script\":" + jsonText(results.script) + ",\"bus\":" + jsonText(results.bus) +
                       ",\"verdict\":" + jsonText(results.verdict()) +
                       ",\"ended\":" + jsonText(scriptEndName(results.end)) + ",\"passes\":[" + passes + "]";
    if (rehearsal != nullptr) {
        std::string writes;
        for (const auto& [reg, count] : rehearsal->nonvolatileWrites)
            writes += (writes.empty() ? "" : ",") + jsonText(reg) + ":" + decimalText(count);
        std::string never;
        for (const int line : rehearsal->neverPass)
            never += (never.empty() ? "" : ",") + decimalText(line);
        text += ",\"rehearsal\":{\"seconds\":" + seconds(rehearsal->lasted) +
                ",\"reports\":" + decimalText(rehearsal->reports) + ",\"nonvolatileWrites\":{" + writes +
                "},\"neverPass\":[" + never + "]}";
    }
    return text + "}\n";
}

const char* csvHeading() {
    return "pass,line,operation,address,register,write,expected,read,verdict,ms\n";
}

std::string csvRows(const PassResult& pass) {
    std::string text;
    for (const RowResult& row : pass.rows) {
        text += decimalText(pass.pass) + "," + decimalText(row.line);
        for (const std::string& field :
             {row.operation, row.address, row.reg, row.write, row.expected, row.read})
            text += "," + sequentialField(field);
        text += std::string(",") + rowVerdictName(row.verdict) + "," + decimalText(row.lasted.count()) + "\n";
    }
    return text;
}

std::string csvReport(const ScriptResults& results) {
    std::string text = csvHeading();
    for (const PassResult& pass : results.passes)
        text += csvRows(pass);
    return text;
}

} // namespace vrk
