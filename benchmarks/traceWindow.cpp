#include "benchmarks/BenchRig.h"
#include "platform/qt/LogView.h"
#include "platform/qt/QtHost.h"
#include "views/workspace/Workspace.h"

#include <benchmark/benchmark.h>

#include <QApplication>

/// The trace window on a log of so many lines: what a frame costs while the link goes on writing.
namespace vrk {
namespace {

constexpr int kMillion = 1'000'000;
constexpr int kBatch = 100;

/// A trace window on the screen.
struct TraceRig {
    explicit TraceRig(int lines) {
        rig.bench.start();
        appendLines(rig.bench.Doco->rtxt1, lines);
        rig.bench.Doco.show();
        view = dynamic_cast<qt::LogView*>(workspace.findChild<QWidget*>("rtxt1"));
        view->logReplaced();
        view->viewport()->repaint();
    }
    /// A burst of lines, then the frame that shows them.
    void frame() {
        appendLines(rig.bench.Doco->rtxt1, kBatch);
        view->logGrew();
        view->scrollToEnd();
        view->viewport()->repaint();
    }

    BenchRig rig;
    qt::QtHost host{rig.events};
    Workspace workspace{{rig.bench, BoardKind::Simulated, QStringLiteral("KV4071")}};
    qt::LogView* view = nullptr;
};

void TraceWindowFrame(benchmark::State& state) {
    TraceRig rig(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state)
        rig.frame();
}
BENCHMARK(TraceWindowFrame)->Arg(0)->Arg(kMillion)->Iterations(kBatch)->Unit(benchmark::kMicrosecond);

/// From the last line round the whole log to a text that it does not hold.
void TraceWindowSearch(benchmark::State& state) {
    TraceRig rig(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(rig.view->find("not there", true));
}
BENCHMARK(TraceWindowSearch)->Arg(kMillion)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vrk
