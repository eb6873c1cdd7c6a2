#include "tests/fuzz/targets.h"

#include "motherboard/CalibrationFile.h"
#include "panels/discrete/RunInReport.h"
#include "platform/clipboard/Clipboard.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/files/RegisterMapFile.h"
#include "platform/files/files.h"
#include "platform/hid/WireLog.h"
#include "platform/runtime/text.h"
#include "platform/system/DesktopEntry.h"
#include "shell/Bench.h"
#include "sim/SimulatedBus.h"
#include "tests/script/scriptFuzz.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>

namespace vrk::fuzz {

namespace {

namespace fs = std::filesystem;

void require(bool holds, const char* what) {
    if (!holds)
        throw std::logic_error(what);
}

/// The folder's files whose names begin and end so.
std::vector<std::string> filesOf(const fs::path& folder, const std::string& begin, const std::string& end) {
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (startsWith(name, begin) && name.ends_with(end))
            files.push_back(readFile(entry.path()));
    }
    return files;
}

fs::path written(const fs::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return file;
}

/// Panels that read files stand on a bench.
struct FuzzBench {
    explicit FuzzBench(const fs::path& folder) : bench({events, dialogs, clipboard, bus, folder, folder}) {
        bench.start();
        bench.frmStartup->cboVRKSelect.userSelect(frmStartup::kI2C);
    }
    VirtualClock clock;
    EventLoop events{clock};
    ScriptedDialogs dialogs;
    MemoryClipboard clipboard;
    sim::SimulatedBus bus{clock, {.zeroLatency = true}};
    Bench bench;
};

std::string script(std::string_view bytes) {
    require(scriptSurvives(bytes, false) && scriptSurvives(bytes, true),
            "a saved script reads back otherwise");
    std::string way;
    for (const auto& finding : checkScriptFile(bytes, BusMode{true, false}, 0x50))
        way += finding.text.substr(0, 8);
    return way.substr(0, 64);
}

std::string table(FuzzBench& on, const fs::path& file, std::string_view bytes) {
    class ProductExec& panel = *on.bench.ProductExec;
    const auto cells = [&panel] {
        std::string all;
        for (int row = 0; row < panel.tGrid.rows(); ++row)
            for (int column = 0; column < panel.tGrid.columns(); ++column)
                all += panel.tGrid.cell(row, column) + '\x1F';
        return all;
    };
    panel.ReadParameters(written(file, bytes).string());
    const int rows = panel.tGrid.rows();
    panel.WriteParameters(file.string());
    panel.ReadParameters(file.string());
    const std::string once = cells();
    panel.WriteParameters(file.string());
    panel.ReadParameters(file.string());
    require(cells() == once, "a table that is saved and loaded changes");
    for (int row = 1; row < panel.tGrid.rows(); ++row) {
        panel.tGrid.setSelection(row, 1);
        panel.tGrid_Click();
    }
    return decimalText(rows);
}

std::string calibration(const fs::path& file, std::string_view bytes) {
    const CalibrationFile read = CalibrationFile::read(written(file, bytes), {});
    require(CalibrationFile::read(written(file, read.text()), {}).text() == read.text(),
            "a calibration that is written reads otherwise");
    return read.header.substr(0, 4) + "/" + read.rows.back().vcc.substr(0, 4);
}

std::string registers(FuzzBench& on, const fs::path& folder, std::string_view bytes) {
    written(folder / "registers.txt", bytes);
    std::string way;
    for (const Panel::NamedAction& action : on.bench.frmMainF340->actions())
        if (action.name == "loadRegisterFile")
            way = std::get<std::string>(action.run({std::int64_t{32}}));
    (void)on.dialogs.takeShown();
    return way;
}

std::string registerMap(std::string_view bytes) {
    const RegisterMap map = parseRegisterMap(std::string(bytes), "map");
    for (const PartRegister& reg : map.registers) {
        require(map.at(reg.address) == &reg && map.named(reg.name) == &reg, "two registers are one");
        require(reg.resetValue <= reg.most(), "a register is reset to what it cannot hold");
    }
    return decimalText(static_cast<long long>(map.registers.size()));
}

/// Lines whose check is right, whatever they say: what a sound disk may hold of another program.
std::string journal(const fs::path& file, std::string_view bytes) {
    std::string lines;
    for (std::size_t at = 0; at < bytes.size();) {
        const auto end = std::min(bytes.find('\n', at), bytes.size());
        const std::string_view record = bytes.substr(at, end - at);
        std::array<char, 10> check{};
        std::snprintf(check.data(), check.size(), "%08x ", crc32(record));
        lines.append(check.data()).append(record).append("\n");
        at = end + 1;
    }
    std::optional<RunInSuite> suite;
    const RunInReport report = recountRunIn(written(file, lines), std::nullopt, {}, &suite);
    const RunInProgress& progress = report.history.progress;
    require(progress.testCount == progress.passCount + progress.failCount, "a judgement has two verdicts");
    require(report.counted.judgements == progress.testCount && report.counted.fails == progress.failCount,
            "the report and the run that is gone on with count otherwise");
    require(recountRunIn(file, 1e-9).counted.judgements == progress.testCount,
            "a judgement is not made again");
    (void)junitText(suite->suite(true));
    return report.ended() + (whyNotResumable(file, report.history).empty() ? "+" : "-") +
           decimalText(progress.testCount);
}

std::string journalRecords() {
    std::string records =
        R"({"kind":"header","version":1,"run":"00AB","started":"2020-01-01 12:00:00",)"
        R"("program":"p","part":"UPDN100","reference":3.3,"fields":{"steps":8,"logEvery":4,)"
        R"("positions":100,"tolerance":0.33,"id":"T","logAll":false,"doublePurge":false,)"
        R"("stimulus":[102,102,63,1,1,1,1],"vcc":"5.0","calibration":"c"}})"
        "\n";
    for (int stage = 0; stage < RunInSettings::kStages; ++stage) {
        RunInStage done{.loop = std::max(0, stage - 2), .stage = stage, .tally = 63, .volts = 1.5};
        done.verdict = static_cast<RunInVerdict>(std::min(stage / 2, 2));
        if (stage == 2)
            done.band = true;
        records += stageRecord(done) + '\n';
    }
    return records + R"({"kind":"range","max":2.5,"min":0,"voltsPerStep":0.025,"limit":0.008})"
                     "\n"
                     R"({"kind":"event","what":"resumed","text":"t"})"
                     "\n"
                     R"({"kind":"end","ended":"completed"})"
                     "\n";
}

std::string wireLog(std::string_view bytes) {
    return decimalText(static_cast<long long>(hid::parseWireLog(bytes).size()));
}

/// A word of a command as such a file holds it: in quotes, with the escapes of quotes and those of values.
std::string quotedWord(const std::string& word) {
    std::string quoted = "\"";
    for (const char letter : word) {
        if (letter == '"' || letter == '\\')
            quoted += R"(\\)";
        quoted += letter == '\n' ? R"(\n)" : letter == '%' ? "%%" : std::string(1, letter);
        if (letter == '\\')
            quoted += letter;
    }
    return quoted + "\" ";
}

std::string desktopEntry(std::string_view bytes) {
    const auto entry = readDesktopEntry(bytes);
    if (!entry)
        return "none";
    require(!entry->name.empty() && !entry->command.empty(), "an entry without a name or a program");
    std::string again = "[Desktop Entry]\nType=Application\nName=n\nExec=";
    for (const std::string& word : entry->command)
        again += quotedWord(word);
    require(readDesktopEntry(again)->command == entry->command, "a command that is quoted reads otherwise");
    return decimalText(static_cast<long long>(entry->command.size())) + (entry->isFor("GNOME") ? "+" : "-");
}

const char* const kWireLog = "vrkbench wire log 1\n# started 2024-05-31 09:15:02.120\nboard 0 /dev/hidraw3\n";

std::string wireLogLines() {
    const std::string bytes = hid::reportText({1, 6, 0xA0});
    return std::string(kWireLog) + "  12 out 0 " + bytes + "\n  14 in  0 " + bytes + "\n20 out 0 " + bytes +
           " failed\n";
}

} // namespace

std::vector<Target> makeTargets(const fs::path& examples, const fs::path& scratch) {
    const auto bench = std::make_shared<FuzzBench>(scratch);
    auto scripts = filesOf(examples, "", ".txt");
    scripts.emplace_back("\xEF\xBB\xBF`SPI\r\n,A5,XX\r`w\n`S\n`G1234\n`AFF# AutoUpdated: of old\n");
    return {
        {"script",
         script,
         scripts,
         {"`",   "`A",   "`SPI",  "`w",       "`w32767", "`w-1",           "`S",  "`G",
          "`IE", "`ID",  "`ENDM", "`EISTART", "`EIEND",  "# AutoUpdated:", ",",   ",,",
          "XX",  "\r\n", "\r",    "\n",       "\t",      "\x0F",           "1e9", "\xEF\xBB\xBF"}},
        {"table",
         [bench, scratch](auto bytes) { return table(*bench, scratch / "table.csv", bytes); },
         filesOf(examples, "parts-", ".csv"),
         {",", "\"", "\"\"", "END", "NA", "\r\n", "\n", " ", "128"}},
        {"calibration",
         [scratch](auto bytes) { return calibration(scratch / "cal.txt", bytes); },
         {"Calibration Data 2020-01-01 12:00\r\nVREF, 2.44\r\n2.7, 2C, 1.35, 2.70\r\n3.0, 35, 1.5, 3.0\r\n"},
         {",", "\"", "\r\n", "1e400", "-", "nan", "--"}},
        {"registers",
         [bench, scratch](auto bytes) { return registers(*bench, scratch, bytes); },
         {"generic\n0x00,0x01,0xFF\n", "generic,0x1,0x22,--,0x44"},
         {"generic", "0x", "0xFFF", ",", "\n", "\"", "0x-1", "0x 1"}},
        {"registermap",
         registerMap,
         filesOf(examples / "registers", "", ".toml"),
         {"[[registers]]\n", "[[registers.fields]]\n", "[[registers.fields.enumeratedValues]]\n", "dim = 4\n",
          "dimIncrement = 255\n", "%s", "width = 16\n", "bitOffset = 15\n", "bitWidth = 16\n", "value = -1\n",
          "name = \"A\"\n", "storage = \"selected\"\n", "storageSelect = \".\"\n", "0x", "[", "{", "\"\"\"",
          "9223372036854775808"}},
        {"journal",
         [scratch](auto bytes) { return journal(scratch / "run.journal", bytes); },
         {journalRecords()},
         {"{",       "}",         "[",        "1e308",        "-1",      "1e15",       "2147483647",
          "null",    "\"kind\":", "header",   "range",        "stage",   "event",      "end",
          "resumed", "link lost", "mismatch", "\"version\":", "\"ms\":", "\"tally\":", "\n"}},
        {"desktopentry",
         desktopEntry,
         filesOf(examples.parent_path() / "packaging", "", ".desktop"),
         {"[Desktop Entry]\n", "\nExec=", "\nType=Application", "\nTerminal=", "\nHidden=true",
          "\nOnlyShowIn=GNOME;", "NotShowIn=", "\"", "\\", "\\\\", "\\s", "%", "%%", "%f", "=", "\n"}},
        {"wirelog",
         wireLog,
         {wireLogLines()},
         {"out", "in ", " failed", "board 0 ", "board 99999999999", "# ", "vrkbench wire log 2", "\r\n", "\n",
          "FF", "-1", "99999999999999999999"}},
    };
}

} // namespace vrk::fuzz
