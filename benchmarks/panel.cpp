#include "benchmarks/BenchRig.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
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

} // namespace
} // namespace vrk
