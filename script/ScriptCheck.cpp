#include "script/ScriptCheck.h"

#include "panels/blocks/ShellControl.h"
#include "platform/runtime/text.h"
#include "script/ScriptFile.h"
#include "script/ScriptLine.h"

#include <algorithm>

namespace vrk {

namespace {

bool isHex(std::string_view digits) {
    return digits.find_first_not_of("0123456789ABCDEFabcdef") == std::string_view::npos;
}

/// The digits that are compared: "XX" at a byte's place stands for any byte.
std::string withoutWildcards(const std::string& digits) {
    std::string rest;
    for (std::size_t at = 0; at < digits.size(); at += 2)
        if (digits.compare(at, 2, "XX") != 0)
            rest += digits.substr(at, 2);
    return rest;
}

class Checker {
  public:
    Checker(const ScriptState& script, const BusMode& mode) : script_(script), mode_(mode) {}

    std::vector<ScriptFinding> run() {
        const int rows = script_.table.rows();
        for (step_ = 1; step_ <= rows && step_ <= static_cast<int>(script_.ScriptRaw.size()); ++step_)
            line();
        checkMarkers(rows);
        std::stable_sort(findings_.begin(), findings_.end(),
                         [](const auto& a, const auto& b) { return a.line < b.line; });
        return std::move(findings_);
    }

  private:
    void add(int line, ScriptFinding::Severity severity, const std::string& text) {
        findings_.push_back({line, severity, text});
    }
    void error(const std::string& text) { add(step_, ScriptFinding::Severity::Error, text); }
    void warning(const std::string& text) { add(step_, ScriptFinding::Severity::Warning, text); }

    void line() {
        const CleanLine line(script_.ScriptRaw[static_cast<std::size_t>(step_) - 1]);
        if (line.blank)
            warning("blank line: it is a step that does nothing");
        else if (line.isCommand)
            command(line);
        else if (!line.code.empty())
            data(line.fields());
    }

    void command(const CleanLine& line) {
        const std::string& operation = script_.table.text(step_, ScriptColumn::Operation);
        if (operation == operation::kCommand)
            error("unknown command \"" + line.code + "\"");
        else if (operation == operation::kBadDelay)
            error("the delay \"" + line.code.substr(2) + "\" is no number of milliseconds");
        else if (startsWith(operation, operation::kSetAddressStart))
            address(line.code.size() == 4 ? line.code.substr(2)
                                          : "0" + line.code.substr(line.code.size() - 1));
        else if (startsWith(operation, "Cmd: GPIO:"))
            gpio(line.code.substr(2));
        staleSizes(operation);
    }

    void address(const std::string& text) {
        if (!isHex(text))
            error("the address \"" + text + "\" is not hexadecimal");
        else if (hexToInt(text) >= 255)
            error("the address " + upperCase(text) + " is above FE");
    }

    void gpio(const std::string& text) {
        if (!isHex(text))
            error("the port bytes \"" + text + "\" are not hexadecimal");
        else if (text.size() % 2 != 0)
            warning("the port bytes have an odd number of digits");
        if (!text.empty())
            warning("a GPIO row with data always counts as failed: the pins are not read back");
    }

    /// What the row would move, of a row whose own line moves nothing.
    void staleSizes(const std::string& operation) {
        const StepSizes& sizes = script_.table.sizes(step_);
        const bool runs =
            step_ < script_.EndMainStep || (step_ >= script_.IntStartStep && step_ <= script_.IntEndStep);
        const bool byText = startsWith(operation, operation::kSetAddressStart) ||
                            operation == operation::kSave || operation == operation::kEnable ||
                            operation == operation::kDisable || startsWith(operation, "Cmd: GPIO:");
        if (runs && !byText && sizes.DelayMs != -1 && sizes.DelayMs <= 0 &&
            (sizes.WrCount != 0 || sizes.RdCount != 0))
            warning("the row runs with the sizes that an earlier script left it: " +
                    decimalText(sizes.WrCount) + " bytes out, " + decimalText(sizes.RdCount) + " in");
    }

    void digits(const char* name, const std::string& text, const std::string& checked) {
        if (!isHex(checked))
            error(std::string("the ") + name + " \"" + text + "\" is not hexadecimal");
        else if (text.size() % 2 != 0)
            warning(std::string("the ") + name + " \"" + text + "\" has an odd number of digits");
    }

    void data(const DataFields& fields) {
        const StepSizes& sizes = script_.table.sizes(step_);
        const std::string read = upperCase(fields.read);
        const std::string compared = withoutWildcards(read);
        digits("register", fields.reg, fields.reg);
        digits("data to write", fields.write, fields.write);
        digits("expected data", fields.read, compared);
        if (mode_.SPIBusMode) {
            if (!fields.reg.empty())
                error("an SPI row has no register field: it begins with a comma");
            else if (sizes.RdCount > 0 && sizes.WrCount == 0)
                error("an SPI row reads only what comes back while it writes");
            return;
        }
        if (compared != read)
            warning("\"XX\" is compared as it stands on I2C: it never passes");
        if (sizes.RegCount >= 2)
            warning("of a register of " + decimalText(sizes.RegCount) + " bytes only the first is sent");
        if (sizes.RdCount > 0 && isHex(fields.reg) && hexToByte(fields.reg.substr(0, 2)) >= 0x20)
            warning("a read from register 20 or above copies nothing: it compares the buffer's old content");
    }

    void checkMarkers(int rows) {
        step_ = rows;
        const int start = script_.IntStartStep;
        const int end = script_.IntEndStep;
        if (start != 0 && end == 0)
            add(start, ScriptFinding::Severity::Error, "`EISTART has no `EIEND: there is no service block");
        else if (start == 0 && end != 0)
            add(end, ScriptFinding::Severity::Error, "`EIEND has no `EISTART: there is no service block");
        else if (end < start)
            add(end, ScriptFinding::Severity::Error,
                "`EIEND stands ahead of `EISTART: there is no service block");
        const auto isEnd = [](const std::string& raw) {
            const CleanLine line(raw);
            return line.isCommand && line.code == "`ENDM";
        };
        if (std::none_of(script_.ScriptRaw.begin(), script_.ScriptRaw.end(), isEnd))
            warning("no `ENDM: the last line is never run");
    }

    const ScriptState& script_;
    const BusMode& mode_;
    int step_ = 0;
    std::vector<ScriptFinding> findings_;
};

} // namespace

std::vector<ScriptFinding> checkScript(const ScriptState& script, const BusMode& mode) {
    if (script.ScriptRaw.empty())
        return {{1, ScriptFinding::Severity::Warning, "the script is empty"}};
    return Checker(script, mode).run();
}

std::vector<ScriptFinding> checkScriptFile(std::string_view bytes, const BusMode& mode, std::uint8_t base) {
    ScriptState script;
    PlainFields fields;
    script.setBase(base);
    std::vector<std::string> lines = scriptLines(bytes);
    std::vector<ScriptFinding> faults;
    for (;;) {
        try {
            loadScript(script, fields, lines, mode);
            break;
        } catch (const ScriptLoadFault& fault) {
            faults.push_back({fault.line(), ScriptFinding::Severity::Error,
                              std::string(fault.what()).substr(std::string(fault.what()).find(": ") + 2)});
            // The rest is looked at as well: the line is put away, or the lines that are too many.
            if (fault.line() > ScriptTable::kMostLines)
                lines.resize(ScriptTable::kMostLines);
            else
                lines[static_cast<std::size_t>(fault.line()) - 1] = "#";
        }
    }
    std::vector<ScriptFinding> findings = checkScript(script, mode);
    findings.insert(findings.end(), faults.begin(), faults.end());
    std::stable_sort(findings.begin(), findings.end(),
                     [](const auto& a, const auto& b) { return a.line < b.line; });
    return findings;
}

} // namespace vrk
