#pragma once

#include "script/frmScriptOps.h"
#include "tests/panels/I2cPanelTest.h"

#include <memory>
#include <string>
#include <vector>

namespace vrk {

/// The script panel on a bench with a powered part.
class ScriptBench : public I2cPanelTest {
  public:
    BusMode mode;
    RunState run;
    ScriptState script;
    PortState& ports = bench.services().ports;
    RehearsalFactory rehearsals;
    BreakpointStore* breakpoints = nullptr;

    void SetUp() override { openI2c(); }
    frmScriptOps& panel() { return *slot; }
    void useSpi(const std::string& part = "KV4184") {
        mode = {false, true};
        bus.socket(part);
    }
    /// Loads a script by the menu.
    void load(const std::string& content) {
        dialogs.answerFile(folder.write("s.txt", content).string());
        ASSERT_TRUE(panel().mnuScript_Read.userClick().done());
        (void)boxes();
        wire.clear();
    }
    void loadAndRun(const std::string& content) {
        load(content);
        ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    }
    std::string cell(int row, ScriptColumn column) {
        return panel().vbalGrid1.cell(row, static_cast<int>(column));
    }
    Colour colour(int row, ScriptColumn column) {
        return panel().vbalGrid1.cellColour(row, static_cast<int>(column));
    }
    std::string counts() { return panel().txtRdPass.text() + "/" + panel().txtRdFails.text(); }
    /// Lines that have run since the last run began, in their order.
    std::vector<int> ranLines() {
        std::vector<int> lines;
        for (const RowResult& row : panel().results().passes.back().rows)
            if (row.verdict != RowVerdict::NotReached)
                lines.push_back(row.line);
        return lines;
    }

    PanelSlot<frmScriptOps> slot{bench.context(), "frmScriptOps", "Script IC Send / Receive", [this] {
                                     return std::make_shared<frmScriptOps>(
                                         bench.context(),
                                         frmScriptOps::Uses{bench.services(), mode, run, script,
                                                            [this] { return i2c().txtDeviceAdr.text(); },
                                                            rehearsals, breakpoints});
                                 }};

    ConsoleBus scriptBus{bench.services()};
};

} // namespace vrk
