#include "script/ScriptFile.h"

#include "panels/blocks/ShellControl.h"
#include "platform/files/files.h"
#include "platform/runtime/text.h"
#include "script/ScriptLine.h"

#include <algorithm>

namespace vrk {

using Text = ScriptFields::Text;

ScriptLoadFault::ScriptLoadFault(int line, const std::string& reason)
    : Fault("Line " + decimalText(line) + ": " + reason), line_(line) {}

std::vector<std::string> scriptLines(std::string_view bytes) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    constexpr std::size_t kLongestLine = 65535;
    if (bytes.find('\0') != std::string_view::npos)
        throw Fault("The file is no script: it holds NUL bytes");
    while (startsWith(bytes, kMark))
        bytes.remove_prefix(kMark.size());
    std::vector<std::string> lines;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find_first_of("\r\n"), bytes.size());
        if (end > kLongestLine)
            throw Fault("The file is no script: line " +
                        decimalText(static_cast<long long>(lines.size()) + 1) +
                        " is longer than 65535 bytes");
        lines.emplace_back(bytes.substr(0, end));
        bytes.remove_prefix(std::min(bytes.size(), end + (startsWith(bytes.substr(end), "\r\n") ? 2U : 1U)));
    }
    return lines;
}

void clearLoadFields(ScriptFields& fields) {
    for (const Text field :
         {Text::LastRead, Text::IEnableStep, Text::IDisableStep, Text::Istart, Text::Iend, Text::Iexec})
        fields.setText(field, "----");
    for (const Text field : {Text::TotReads, Text::RdPass, Text::RdFails})
        fields.setText(field, "0");
}

namespace {

void loadLine(ScriptState& script, ScriptFields& fields, const std::string& raw, const BusMode& mode,
              ScriptRow& row) {
    const int step = script.ScriptRawNext();
    StepSizes& sizes = script.table.sizes(step);
    script.StepNo = decimalText(step);
    sizes.DelayMs = 0; // alone of the sizes: a row that sets no others keeps those of the script before
    row[ScriptColumn::Operation] = operation::kNone;
    if (step == 1)
        script.I2CAdrText = hexText(script.ScriptI2CBase);
    if (mode.I2CBusMode)
        row[ScriptColumn::Address] = script.I2CAdrText;
    script.ScriptRaw.push_back(raw);

    const CleanLine line(raw);
    if (line.blank) {
        row[ScriptColumn::Comment] = "Script File has a blank line";
    } else if (line.isCommand) {
        readCommandLine(line, step, script, row, sizes);
        if (script.IntStartStep == step)
            fields.setText(Text::Istart, script.StepNo);
        if (script.IntEndStep == step)
            fields.setText(Text::Iend, script.StepNo);
    } else if (readDataLine(line, mode, row, sizes)) {
        ++script.ExpectedReads;
        fields.setText(Text::TotReads, decimalText(script.ExpectedReads));
    }
    const std::string number = script.StepNo;
    row[ScriptColumn::Line] = std::string(3 - std::min<std::size_t>(3, number.size()), '0') + number;
}

} // namespace

void loadScript(ScriptState& script, ScriptFields& fields, const std::vector<std::string>& lines,
                const BusMode& mode) {
    clearLoadFields(fields);
    script.IntStartStep = script.IntEndStep = script.EndMainStep = 0;
    script.ExpectedReads = 0;
    script.StepNo = "0";
    script.ScriptRaw.clear();
    script.table.restart();
    for (const std::string& raw : lines) {
        ScriptRow row;
        const int step = script.ScriptRawNext();
        if (step > ScriptTable::kMostLines)
            throw ScriptLoadFault(step, "a script has at most 1000 lines");
        try {
            loadLine(script, fields, raw, mode, row);
        } catch (const Fault&) {
            script.table.add(row);
            throw ScriptLoadFault(step, "a delay is at most 32767 ms, a field at most 65534 digits");
        }
        script.table.add(std::move(row));
    }
    const int last = script.table.rows();
    if (script.EndMainStep == 0)
        script.EndMainStep = last;
    fields.setText(Text::LastRead, "----");
    fields.setText(Text::IdetectStep, "----");
    fields.darkenSampleLamp();
    script.TotalLines = last;
    fields.setText(Text::TotLines, decimalText(last));
}

bool takesReadData(const ScriptRow& row) {
    return !row[ScriptColumn::Actual].empty() &&
           upperCase(row[ScriptColumn::Operation]).find("R:") != std::string::npos;
}

int unreadRows(const ScriptState& script) {
    int unread = 0;
    for (int row = 1; row <= script.table.rows(); ++row)
        if (takesReadData(script.table.row(row)) && script.table.text(row, ScriptColumn::Actual) == "--")
            ++unread;
    return unread;
}

void updateExpected(ScriptState& script) {
    const int lines = std::min(script.table.rows(), static_cast<int>(script.ScriptRaw.size()));
    for (int step = 1; step <= lines; ++step) {
        if (!takesReadData(script.table.row(step)))
            continue;
        const std::string& actual = script.table.text(step, ScriptColumn::Actual);
        std::string& raw = script.ScriptRaw[static_cast<std::size_t>(step) - 1];
        const std::size_t first = raw.find(',');
        const std::size_t comma = first == std::string::npos ? first : raw.find(',', first + 1);
        const std::size_t field = comma == std::string::npos ? 0 : comma + 1;
        // In place: as many characters as the new text has, so that a comment stays where it stands.
        raw = raw.substr(0, field) + actual + raw.substr(std::min(raw.size(), field + actual.size()));
    }
}

std::string scriptToSave(ScriptState& script, const WallTime& now, const std::string& loopCount) {
    const std::string mark = "# AutoUpdated: ";
    std::string none;
    std::string& first = script.ScriptRaw.empty() ? none : script.ScriptRaw.front();
    const auto old = upperCase(first).find(upperCase("# AutoUpdated:"));
    if (old != std::string::npos)
        first.resize(old);
    first += mark + shortDate(now) + " " + shortTime(now) + " Looping: " + loopCount;
    if (script.ScriptRaw.empty())
        return first + "\r\n";
    std::string content;
    for (const std::string& line : script.ScriptRaw)
        content += line + "\r\n";
    // The entry behind the last line goes out as well: each save adds an empty line.
    return content + "\r\n";
}

void saveScript(ScriptState& script, const std::filesystem::path& path, bool append, const WallTime& now,
                const std::string& loopCount) {
    updateExpected(script);
    const std::vector<std::string> before = script.ScriptRaw;
    try {
        const std::string content = scriptToSave(script, now, loopCount);
        append ? appendFile(path, content) : replaceFile(path, content);
    } catch (const Fault&) {
        script.ScriptRaw = before;
        throw;
    }
}

std::string savedScriptPath(const std::string& path) {
    const std::size_t extension = path.size() < 4 ? path.size() : path.size() - 4;
    return path.substr(0, extension) + "_DL" + path.substr(extension);
}

namespace {
std::string two(int value) {
    return (value < 10 ? "0" : "") + decimalText(value);
}
} // namespace

std::string shortDate(const WallTime& time) {
    return decimalText(time.year) + "-" + two(time.month) + "-" + two(time.day);
}

std::string shortTime(const WallTime& time) {
    return two(time.hour) + ":" + two(time.minute);
}

} // namespace vrk
