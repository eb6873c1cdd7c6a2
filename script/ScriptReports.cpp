#include "script/ScriptReports.h"

#include "platform/files/SequentialInput.h"
#include "platform/runtime/text.h"
#include "script/ScriptFile.h"

#include <map>

namespace vrk {

namespace {

/// Length of the UTF-8 character at `at`; 0 if the bytes there are none: a script's comments may be in any
/// code, a report may not.
std::size_t characterLength(const std::string& text, std::size_t at) {
    const auto byte = [&text](std::size_t i) {
        return static_cast<unsigned char>(i < text.size() ? text[i] : 0);
    };
    const unsigned char lead = byte(at);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(at + i) & 0xC0U) != 0x80)
            return 0;
    // Overlong forms and surrogates.
    if ((lead == 0xE0 && byte(at + 1) < 0xA0) || (lead == 0xED && byte(at + 1) >= 0xA0) ||
        (lead == 0xF0 && byte(at + 1) < 0x90) || (lead == 0xF4 && byte(at + 1) >= 0x90))
        return 0;
    return length;
}

/// \param escape what stands for an ASCII character; empty: itself
template <class Escape>
std::string escaped(const std::string& text, const Escape& escape) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = characterLength(text, at);
        if (length == 0) {
            out += "\xEF\xBF\xBD";
            ++at;
            continue;
        }
        const std::string other = length == 1 ? escape(text[at]) : std::string();
        out += other.empty() ? text.substr(at, length) : other;
        at += length;
    }
    return out;
}

std::string xml(const std::string& text) {
    return escaped(text, [](char c) -> std::string {
        switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        default:
            // XML has no place for control characters.
            return static_cast<unsigned char>(c) < ' ' || c == '\x7F' ? " " : "";
        }
    });
}

std::string json(const std::string& text) {
    return '"' +
           escaped(text,
                   [](char c) -> std::string {
                       if (c == '"' || c == '\\')
                           return std::string("\\") + c;
                       if (static_cast<unsigned char>(c) < ' ')
                           return "\\u" + std::string(2, '0') + byteToHex2(static_cast<std::uint8_t>(c));
                       return "";
                   }) +
           '"';
}

std::string seconds(Milliseconds duration) {
    return doubleText(static_cast<double>(duration.count()) / 1000.0);
}

std::string padded3(int line) {
    const std::string number = decimalText(line);
    return std::string(number.size() < 3 ? 3 - number.size() : 0, '0') + number;
}

struct Tally {
    int tests = 0;
    int failures = 0;
    int errors = 0;
    int skipped = 0;
};

std::string outcome(const RowResult& row, Tally& tally) {
    const std::string where = "line " + padded3(row.line) + ": ";
    switch (row.verdict) {
    case RowVerdict::Fail: {
        ++tally.failures;
        const std::string text =
            where + "expected " + row.expected + ", read " + (row.read.empty() ? "nothing" : row.read);
        return "<failure message=\"" + xml(text) + "\" type=\"mismatch\"/>";
    }
    case RowVerdict::Error:
        ++tally.errors;
        return "<error message=\"" + xml(where + row.why) + "\" type=\"transaction\"/>";
    case RowVerdict::NotReached:
    case RowVerdict::Ran:
        ++tally.skipped;
        return "<skipped message=\"" + xml(where + rowVerdictName(row.verdict)) + "\"/>";
    case RowVerdict::Pass:
        break;
    }
    return "";
}

} // namespace

std::string junitReport(const ScriptResults& results) {
    Tally tally;
    Milliseconds all{0};
    std::string cases;
    for (const PassResult& pass : results.passes) {
        all += pass.lasted;
        std::map<int, int> runs;
        for (const RowResult& row : pass.rows) {
            if (row.expected.empty() && row.verdict != RowVerdict::Error)
                continue;
            ++tally.tests;
            std::string name = "pass " + decimalText(pass.pass) + " line " + padded3(row.line);
            if (const int run = ++runs[row.line]; run > 1)
                name += " run " + decimalText(run);
            const std::string inside = outcome(row, tally);
            cases += "    <testcase classname=\"" + xml(results.script) + "\" name=\"" + name + "\" time=\"" +
                     seconds(row.lasted) + "\"" + (inside.empty() ? "/>\n" : ">" + inside + "</testcase>\n");
        }
    }
    const std::string counts = " tests=\"" + decimalText(tally.tests) + "\" failures=\"" +
                               decimalText(tally.failures) + "\" errors=\"" + decimalText(tally.errors) +
                               "\" skipped=\"" + decimalText(tally.skipped) + "\" time=\"" + seconds(all) +
                               "\"";
    const WallTime& time = results.started;
    const std::string stamp = shortDate(time) + "T" + shortTime(time) + ":" + (time.second < 10 ? "0" : "") +
                              decimalText(time.second);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts + ">\n  <testsuite name=\"" +
           xml(results.script) + "\"" + counts + " timestamp=\"" + stamp +
           "\">\n    <properties><property name=\"bus\" value=\"" + results.bus +
           "\"/><property name=\"state\" value=\"" +
           (results.ended ? scriptEndName(results.end) : "incomplete") + "\"/></properties>\n" + cases +
           "  </testsuite>\n</testsuites>\n";
}

std::string jsonReport(const ScriptResults& results, const Rehearsal* rehearsal) {
    std::string passes;
    for (const PassResult& pass : results.passes) {
        std::string rows;
        for (const RowResult& row : pass.rows)
            rows += std::string(rows.empty() ? "" : ",") + "{\"line\":" + decimalText(row.line) +
                    ",\"operation\":" + json(row.operation) + ",\"address\":" + json(row.address) +
                    ",\"register\":" + json(row.reg) + ",\"write\":" + json(row.write) +
                    ",\"expected\":" + json(row.expected) + ",\"read\":" + json(row.read) +
                    ",\"verdict\":" + json(rowVerdictName(row.verdict)) +
                    ",\"ms\":" + decimalText(row.lasted.count()) + "}";
        passes += std::string(passes.empty() ? "" : ",") + "{\"pass\":" + decimalText(pass.pass) +
                  ",\"seconds\":" + seconds(pass.lasted) + ",\"passed\":" + decimalText(pass.passed) +
                  ",\"failed\":" + decimalText(pass.failed) + ",\"rows\":[" + rows + "]}";
    }
    std::string text = "{\"script\":" + json(results.script) + ",\"bus\":" + json(results.bus) +
                       ",\"verdict\":" + json(results.verdict()) +
                       ",\"ended\":" + json(scriptEndName(results.end)) + ",\"passes\":[" + passes + "]";
    if (rehearsal != nullptr) {
        std::string writes;
        for (const auto& [reg, count] : rehearsal->nonvolatileWrites)
            writes += (writes.empty() ? "" : ",") + json(reg) + ":" + decimalText(count);
        std::string never;
        for (const int line : rehearsal->neverPass)
            never += (never.empty() ? "" : ",") + decimalText(line);
        text += ",\"rehearsal\":{\"seconds\":" + seconds(rehearsal->lasted) +
                ",\"reports\":" + decimalText(rehearsal->reports) + ",\"nonvolatileWrites\":{" + writes +
                "},\"neverPass\":[" + never + "]}";
    }
    return text + "}\n";
}

std::string csvReport(const ScriptResults& results) {
    std::string text = "pass,line,operation,address,register,write,expected,read,verdict,ms\n";
    for (const PassResult& pass : results.passes)
        for (const RowResult& row : pass.rows) {
            text += decimalText(pass.pass) + "," + decimalText(row.line);
            for (const std::string& field :
                 {row.operation, row.address, row.reg, row.write, row.expected, row.read})
                text += "," + sequentialField(field);
            text +=
                std::string(",") + rowVerdictName(row.verdict) + "," + decimalText(row.lasted.count()) + "\n";
        }
    return text;
}

} // namespace vrk
