#include "benchmarks/BenchRig.h"
#include "benchmarks/FrameHost.h"
#include "platform/files/files.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

namespace vrk {
namespace {

constexpr int kRows = 1000;

/// The script panel with a script of the most lines that there may be, on a board at frame timing.
struct ScriptRig {
    VirtualClock clock;
    EventLoop events{clock};
    ScriptedDialogs dialogs;
    MemoryClipboard clipboard;
    sim::SimulatedBus bus{clock, {.zeroLatency = true}};
    FrameHost host{bus, clock};
    std::filesystem::path folder = std::filesystem::temp_directory_path();
    std::filesystem::path file = folder / ("vrk-bench-" + std::to_string(getpid()) + ".txt");
    Bench bench{{events, dialogs, clipboard, host, folder, folder}};
    frmScriptOps& panel() { return *bench.frmScriptOps; }

    ScriptRig() {
        std::string lines;
        for (int row = 1; row < kRows; ++row)
            lines += "00,11,00   # write, read back, compare\n";
        replaceFile(file, lines + "`ENDM\n");
        bench.start();
        bench.frmStartup->cboVRKSelect.userSelect(frmStartup::kI2C);
        bench.frmVRK_User1->OptVCC[0].userClick();
        dialogs.answerFile(file.string());
        panel().ReadScriptFile();
        host.answerByItself();
    }
    ~ScriptRig() { std::filesystem::remove(file); }
};

/// What the run takes beyond the bus's own time: the share must stay at or below 2%.
void ScriptRunBeyondTheBus(benchmark::State& state) {
    constexpr double kMostPercent = 2;
    ScriptRig rig;
    double busy = 0;
    double bus = 0;
    for ([[maybe_unused]] auto _ : state) {
        const Milliseconds began = rig.clock.now();
        const double cpu = cpuSeconds();
        rig.panel().cmdExecAll_Click();
        busy += cpuSeconds() - cpu;
        bus += std::chrono::duration<double>(rig.clock.now() - began).count();
    }
    const double percent = 100 * busy / bus;
    state.counters["percent"] = percent;
    state.counters["busSeconds"] = bus / static_cast<double>(state.iterations());
    if (rig.panel().txtRdPass.text() != std::to_string(kRows - 1))
        state.SkipWithError("the rows do not pass");
    if (percent > kMostPercent)
        state.SkipWithError("the run takes more than 2% beyond the bus");
}
BENCHMARK(ScriptRunBeyondTheBus)->Unit(benchmark::kMillisecond);

/// From the file to the rows on the panel, with the check: 50 ms of processor time at most.
void ScriptLoad(benchmark::State& state) {
    ScriptRig rig;
    double busy = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double cpu = cpuSeconds();
        rig.panel().LoadScriptFile();
        busy += cpuSeconds() - cpu;
    }
    constexpr double kMost = 0.05;
    if (busy / static_cast<double>(state.iterations()) > kMost)
        state.SkipWithError("loading takes more than 50 ms of processor time");
}
BENCHMARK(ScriptLoad)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vrk
