#include "tests/fuzz/targets.h"

#include "motherboard/CalibrationFile.h"
#include "platform/clipboard/Clipboard.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/files/RegisterMapFile.h"
#include "platform/files/files.h"
#include "platform/hid/WireLog.h"
#include "platform/runtime/text.h"
#include "shell/Bench.h"
#include "sim/SimulatedBus.h"
#include "tests/script/scriptFuzz.h"

#include <fstream>
#include <memory>
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

std::string wireLog(std::string_view bytes) {
    return decimalText(static_cast<long long>(hid::parseWireLog(bytes).size()));
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
        {"wirelog",
         wireLog,
         {wireLogLines()},
         {"out", "in ", " failed", "board 0 ", "board 99999999999", "# ", "vrkbench wire log 2", "\r\n", "\n",
          "FF", "-1", "99999999999999999999"}},
    };
}

} // namespace vrk::fuzz
