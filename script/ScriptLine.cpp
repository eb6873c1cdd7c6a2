#include "script/ScriptLine.h"

#include "panels/blocks/ShellControl.h"
#include "platform/runtime/text.h"

#include <algorithm>

namespace vrk {

namespace {

std::string withoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

/// Half of the length, halves to the even number: five digits make two bytes, seven make four.
int byteCount(const std::string& digits) {
    return digits.size() < 2 ? 0 : toInt16(roundHalfEven(static_cast<double>(digits.size()) / 2));
}

std::string padded(const std::string& digits) {
    return upperCase(digits.size() == 1 || digits.size() == 3 ? "0" + digits : digits);
}

/// True if the first of such letters stands right behind the backtick.
bool second(const std::string& code, const char* letter) {
    return code.find(letter) == 1;
}

} // namespace

CleanLine::CleanLine(const std::string& raw)
    : code(raw), blank(raw.empty()), isCommand(startsWith(raw, "`")) {
    for (char& c : code)
        if (c == '\t' || c == '\x0F')
            c = ' ';
    const auto mark = code.find('#');
    if (mark == std::string::npos)
        return;
    comment = code.substr(mark);
    code = withoutBlanks(code.substr(0, mark));
}

DataFields CleanLine::fields() const {
    const std::string text = withoutBlanks(code);
    DataFields fields;
    std::size_t from = 0;
    for (std::string* field : {&fields.reg, &fields.write, &fields.read}) {
        const std::size_t to = std::min(text.find(',', from), text.size());
        *field = text.substr(from, to - from);
        from = std::min(to + 1, text.size());
    }
    return fields;
}

bool readDataLine(const CleanLine& line, const BusMode& mode, ScriptRow& row, StepSizes& sizes) {
    row[ScriptColumn::Comment] = line.comment;
    if (line.code.empty())
        return false;
    const DataFields fields = line.fields();
    const std::string reg = upperCase(fields.reg.size() == 1 ? "0" + fields.reg : fields.reg);
    std::string& text = row[ScriptColumn::Operation];
    row[ScriptColumn::Register] = reg;
    sizes.RegCount = byteCount(reg);
    text = reg.size() >= 2 ? " Reg:" + decimalText(sizes.RegCount) : "";
    if (reg.size() < 2 && !mode.SPIBusMode)
        row[ScriptColumn::Comment].insert(0, "No Internal Register");

    row[ScriptColumn::Write] = padded(fields.write);
    sizes.WrCount = byteCount(row[ScriptColumn::Write]);
    if (sizes.WrCount > 0)
        text += " W:" + decimalText(sizes.WrCount);

    row[ScriptColumn::Expected] = padded(fields.read);
    const bool expected = !row[ScriptColumn::Expected].empty();
    row[ScriptColumn::Actual] = expected ? "--" : "";
    row.colour(ScriptColumn::Operation) = CellColour::Green;
    sizes.RdCount = byteCount(row[ScriptColumn::Expected]);
    if (sizes.RdCount > 0)
        text += " R:" + decimalText(sizes.RdCount);
    // " Reg:" begins so too: a register field is as wrong on SPI as a read without a write.
    if (mode.SPIBusMode && sizes.RdCount > 0 && startsWith(text, " R")) {
        text = operation::kReadOnlySpi;
        row.colour(ScriptColumn::Operation) = CellColour::Red;
    }
    return expected;
}

void readCommandLine(const CleanLine& line, int step, ScriptState& script, ScriptRow& row, StepSizes& sizes) {
    const std::string& code = line.code;
    std::string& text = row[ScriptColumn::Operation];
    row[ScriptColumn::Comment] = line.comment;
    text = operation::kCommand;
    if (second(code, "A")) {
        if (code.size() == 4) {
            script.I2CAdrText = upperCase(code.substr(2));
            row[ScriptColumn::Address] = script.I2CAdrText;
        } else {
            script.I2CAdrText = upperCase("0" + code.substr(code.size() - 1));
        }
        text = "Cmd:Set I2C Adr";
    }
    if (second(code, "SPI")) {
        row[ScriptColumn::Address] = "SPI";
        text = "Cmd:Set SPI Comm";
    }
    if (second(code, "w")) {
        const std::string delay = code.substr(2);
        if (delay.empty()) {
            sizes.DelayMs = -1;
            text = "Cmd: Delay Keypress";
        } else if (isNumeric(delay)) {
            sizes.DelayMs = toInt16(roundHalfEven(leadingNumber(delay)));
            text = "Cmd:Delay :" + delay + ": mSec";
        } else {
            text = operation::kBadDelay;
            row[ScriptColumn::Comment] += "Delay Error: Time not numeric";
            row.colour(ScriptColumn::Operation) = CellColour::Red;
            row.colour(ScriptColumn::Comment) = CellColour::Red;
        }
    }
    if (second(code, "S") && code.size() == 2)
        text = operation::kSave;
    if (second(code, "G")) {
        row[ScriptColumn::Write] = row[ScriptColumn::Expected] = code.substr(2);
        sizes.WrCount = sizes.RdCount = 2; // whatever the length of the text
        row[ScriptColumn::Address] = kGpioAddress;
        text = "Cmd: GPIO:" + code.substr(2);
    }
    if (code == "`IE")
        text = operation::kEnable;
    if (code == "`ID")
        text = operation::kDisable;
    if (code == "`ENDM") {
        script.EndMainStep = step;
        text = "Cmd: End Main";
    }
    if (code == "`EISTART") {
        script.IntStartStep = step;
        text = "Cmd: Int Start";
    }
    if (code == "`EIEND") {
        script.IntEndStep = step;
        text = "Cmd: Int End";
    }
}

} // namespace vrk
