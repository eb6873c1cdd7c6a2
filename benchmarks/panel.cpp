#include "benchmarks/BenchRig.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

namespace vrk {
namespace {

/// One guarded write with auto read: write, read back, volts.
void writeAndReadBack(BenchRig& rig) {
    rig.bench.frmVRK_User1->CMDxMIT_Click(0);
}

/// A rig in which each write repeats the last value, and the reports of one such write.
struct WiperRig : BenchRig {
    std::vector<hid::WireEvent> reports;

    WiperRig() {
        reports = record();
        prepare(*this);
    }

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
    static void prepare(BenchRig& rig) {
        rig.openI2c();
        auto& panel = *rig.bench.frmVRK_User1;
        panel.txtHexDataWrt[0].setText("3F");
        panel.txtHexDataWrt[0].userEnter();
        panel.ChkAutoRead[0].userClick();
    }

    static std::vector<hid::WireEvent> record() {
        BenchRig rig(true);
        prepare(rig);
        std::vector<hid::WireEvent> events;
        const Subscription all =
            rig.recorder.observe([&events](const hid::WireEvent& event) { events.push_back(event); });
        writeAndReadBack(rig);
        return events;
    }
};

void PanelWriteAndReadBack(benchmark::State& state) {
    WiperRig rig;
    for ([[maybe_unused]] auto _ : state)
        writeAndReadBack(rig);
    state.counters["reports"] = static_cast<double>(rig.reports.size());
}
BENCHMARK(PanelWriteAndReadBack)->Unit(benchmark::kMicrosecond);

void BareExchanges(benchmark::State& state) {
    WiperRig rig;
    for ([[maybe_unused]] auto _ : state)
        rig.exchange();
    state.counters["reports"] = static_cast<double>(rig.reports.size());
}
BENCHMARK(BareExchanges)->Unit(benchmark::kMicrosecond);

/// Both in turn, so that whatever else the machine does meets both alike.
void PanelAgainstBareExchanges(benchmark::State& state) {
    constexpr int kBatch = 50;
    WiperRig rig;
    double panel = 0;
    double bare = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double start = cpuSeconds();
        for (int i = 0; i < kBatch; ++i)
            writeAndReadBack(rig);
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
BENCHMARK(PanelAgainstBareExchanges)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vrk
