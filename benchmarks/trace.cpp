#include "benchmarks/BenchRig.h"

#include <benchmark/benchmark.h>

namespace vrk {
namespace {

constexpr int kLongLog = 100000;
/// A run appends 10000 lines in all, so that a log which starts empty stays short beside the long one.
/// Neither is cleared in between: memory that was just freed would flatter the short one.
constexpr int kBatch = 100;
constexpr int kBatches = 100;

/// 100 lines to the trace panel's log, which holds `range(0)` lines before.
void TraceAppend(benchmark::State& state) {
    BenchRig rig;
    TextLog& log = rig.bench.Doco->rtxt1;
    appendLines(log, static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state)
        appendLines(log, kBatch);
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(TraceAppend)->Arg(0)->Arg(kLongLog)->Iterations(kBatches)->Unit(benchmark::kMicrosecond);

/// Time of a line in a long log over that in an empty one: 1 when the length does not matter.
void TraceAppendLongOverEmpty(benchmark::State& state) {
    BenchRig emptyRig;
    BenchRig longRig;
    TextLog& empty = emptyRig.bench.Doco->rtxt1;
    TextLog& full = longRig.bench.Doco->rtxt1;
    appendLines(full, kLongLog);
    double emptyTime = 0;
    double fullTime = 0;
    for ([[maybe_unused]] auto _ : state) {
        const double start = cpuSeconds();
        appendLines(empty, kBatch);
        const double middle = cpuSeconds();
        appendLines(full, kBatch);
        emptyTime += middle - start;
        fullTime += cpuSeconds() - middle;
    }
    state.counters["cpu_ratio"] = fullTime / emptyTime;
}
BENCHMARK(TraceAppendLongOverEmpty)->Iterations(kBatches)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace vrk
