#include "benchmarks/BenchRig.h"

#include <benchmark/benchmark.h>

#include <array>

namespace vrk {
namespace {

/// Takes no report, so that a call ends when its report is built.
class ClosedHost final : public hid::HidHost {
  public:
    std::vector<hid::DeviceInfo> list() override { return {}; }
    hid::Handle open(const std::string& /*path*/) override { return hid::kNoHandle; }
    bool write(hid::Handle /*handle*/, const hid::Report& report) override {
        benchmark::DoNotOptimize(report);
        return false;
    }
    hid::ReadResult read(hid::Handle, hid::Report&, std::chrono::milliseconds) override {
        return hid::ReadResult::Failed;
    }
    void close(hid::Handle /*handle*/) noexcept override {}
};

void Purge(benchmark::State& state) {
    BenchRig rig;
    rig.openI2c();
    for ([[maybe_unused]] auto _ : state)
        rig.bench.link().purgeInputReports();
}
BENCHMARK(Purge);

void I2cWriteReport(benchmark::State& state) {
    BenchRig rig;
    ClosedHost closed;
    Trace trace;
    modHID link(rig.bench.context(), closed, trace);
    const std::array<std::uint8_t, 1> reg = {0x00};
    const std::array<std::uint8_t, 2> data = {0x01, 0xFF};
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(link.writeI2COnce(0x50, data, reg));
}
BENCHMARK(I2cWriteReport);

void ByteToHexText(benchmark::State& state) {
    std::uint8_t byte = 0;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(byteToHex2(++byte));
}
BENCHMARK(ByteToHexText);

void HexTextToNumber(benchmark::State& state) {
    const std::string text = "3F";
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(hexToInt(text));
}
BENCHMARK(HexTextToNumber);

void WholeReportAsHexText(benchmark::State& state) {
    BenchRig rig;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(rig.bench.link().bytesToHexString(0, hid::kReportSize));
}
BENCHMARK(WholeReportAsHexText);

} // namespace
} // namespace vrk
