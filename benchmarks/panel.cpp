#include "benchmarks/BenchRig.h"
#include "panels/instruction/InstructionBus.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace vrk {
namespace {

enum class On { I2c, Spi };

WiperPanel& panelOf(BenchRig& rig, On on) {
    if (on == On::Spi)
        return *rig.bench.frmVRK_SPI1;
    return *rig.bench.frmVRK_User1;
}

/// A rig in which each write repeats the last value, and the reports of one such write.
struct WiperRig : BenchRig {
    std::vector<hid::WireEvent> reports;

    explicit WiperRig(On on) : on_(on) {
        reports = record(on);
        prepare(*this, on);
    }

    /// One guarded write with auto read: write, read back, volts.
    void writeAndReadBack() { panelOf(*this, on_).CMDxMIT_Click(0); }

    /// The same reports, straight on the host.
    void exchange() {
        hid::Report reply{};
        for (const hid::WireEvent& event : reports)
            if (event.direction == hid::WireEvent::Direction::Out)
                bus.write(bench.link().hidHandle, event.report);
            else if (bus.read(bench.link().hidOverlappedHandle, reply, modHID::kReplyTimeout) !=
                     hid::ReadResult::Arrived)
                std::abort();
    }

  private:
    static void prepare(BenchRig& rig, On on) {
        on == On::Spi ? rig.openSpi() : rig.openI2c();
        WiperPanel& panel = panelOf(rig, on);
        panel.txtHexDataWrt[0].setText("3F");
        panel.txtHexDataWrt[0].userEnter();
        panel.ChkAutoRead[0].userClick();
    }

    static std::vector<hid::WireEvent> record(On on) {
        BenchRig rig(true);
        prepare(rig, on);
        std::vector<hid::WireEvent> events;
        const Subscription all =
            rig.recorder.observe([&events](const hid::WireEvent& event) { events.push_back(event); });
        panelOf(rig, on).CMDxMIT_Click(0);
        return events;
    }

    On on_;
};

void PanelWriteAndReadBack(benchmark::State& state, On on) {
    WiperRig rig(on);
    for ([[maybe_unused]] auto _ : state)
        rig.writeAndReadBack();
    state.counters["reports"] = static_cast<double>(rig.reports.size());
}
BENCHMARK_CAPTURE(PanelWriteAndReadBack, I2c, On::I2c)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(PanelWriteAndReadBack, Spi, On::Spi)->Unit(benchmark::kMicrosecond);

void BareExchanges(benchmark::State& state, On on) {
    WiperRig rig(on);
    for ([[maybe_unused]] auto _ : state)
        rig.exchange();
    state.counters["reports"] = static_cast<double>(rig.reports.size());
}
BENCHMARK_CAPTURE(BareExchanges, I2c, On::I2c)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BareExchanges, Spi, On::Spi)->Unit(benchmark::kMicrosecond);

/// Both in turn, so that whatever else the machine does meets both alike.
void PanelAgainstBareExchanges(benchmark::State& state, On on) {
    constexpr int kBatch = 50;
    WiperRig rig(on);
    double panel = 0;
    double bare = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double start = cpuSeconds();
        for (int i = 0; i < kBatch; ++i)
            rig.writeAndReadBack();
        const double middle = cpuSeconds();
        for (int i = 0; i < kBatch; ++i)
            rig.exchange();
        panel += middle - start;
        bare += cpuSeconds() - middle;
    }
    state.counters["cpu_ratio"] = panel / bare;
    // The simulated board works in both; this is what the panel costs whatever the board costs.
    constexpr double kMicroseconds = 1e6;
    state.counters["panel_us"] =
        kMicroseconds * (panel - bare) / kBatch / static_cast<double>(state.iterations());
}
BENCHMARK_CAPTURE(PanelAgainstBareExchanges, I2c, On::I2c)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PanelAgainstBareExchanges, Spi, On::Spi)->Unit(benchmark::kMillisecond);

/// The instruction panel of a bus with its quad part, which the device panel has been set up for.
InstructionPanel& openQuad(BenchRig& rig, On on) {
    on == On::Spi ? rig.openSpi() : rig.openI2c();
    rig.bus.socket(on == On::Spi ? "Q4420" : "Q4410");
    WiperPanel& device = panelOf(rig, on);
    device.lblProduct.setCaption(on == On::Spi ? "Q4420/1" : "Q4410/9");
    rig.bench.frmMainF340->chk2WireRead.setValue(1);
    rig.bench.frmMainF340->chkRandom.setValue(0);
    device.OptVCC[0].setValue(false);
    device.OptVCC[0].userClick();
    if (on == On::Spi)
        return *rig.bench.frm_q4420;
    return *rig.bench.frm_q4410;
}

/// Time of a piece of work: the clock's, which devices and waits take, and the processor's.
template <class Work>
double secondsOf(BenchRig& rig, Work work) {
    const Milliseconds clock = rig.clock.now();
    const double cpu = cpuSeconds();
    work();
    return std::chrono::duration<double>(rig.clock.now() - clock).count() + cpuSeconds() - cpu;
}

/// All registers of a quad part, against the same instructions over the bus alone.
void ReadAllAgainstItsExchanges(benchmark::State& state, On on) {
    constexpr int kRegisters = 20;
    constexpr double kBehindEach = 0.030; // the one ahead of each is the bus's own
    BenchRig rig(false, true);
    InstructionPanel& panel = openQuad(rig, on);
    BenchServices& services = rig.bench.services();
    I2cInstructionBus i2c(services, rig.bench.context(), [] { return std::string("50"); });
    SpiInstructionBus spi(services, rig.bench.context(), [] { return SpiInstructionBus::Frame{"50", "3"}; });
    InstructionBus& bus = on == On::Spi ? static_cast<InstructionBus&>(spi) : i2c;
    double panelTime = 0;
    double least = 0;
    for ([[maybe_unused]] auto _ : state) {
        panelTime += secondsOf(rig, [&panel] { panel.cmdReadAll.userClick(); });
        least += kRegisters * kBehindEach + secondsOf(rig, [&bus] {
                     for (int read = 0; read < kRegisters; ++read)
                         if (!bus.read(read < 4 ? "9" + std::to_string(read) : "B0").answered)
                             std::abort();
                 });
    }
    constexpr double kPercent = 100;
    state.counters["beyond_percent"] = kPercent * (panelTime - least) / least;
}
BENCHMARK_CAPTURE(ReadAllAgainstItsExchanges, I2c, On::I2c)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadAllAgainstItsExchanges, Spi, On::Spi)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vrk
