#include "benchmarks/BenchRig.h"
#include "platform/qt/QtHost.h"
#include "platform/qt/theme.h"
#include "views/workspace/Workspace.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QMainWindow>

/// Start of the desktop console to its first paint, beside an empty window's, in one process: what the
/// toolkit itself needs to come up is in neither.
namespace vrk {
namespace {

/// Hears of the first paint of any window.
class PaintWatch final : public QObject {
  public:
    PaintWatch() { QCoreApplication::instance()->installEventFilter(this); }
    void wait() const {
        while (!painted_)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

  private:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Paint && object->isWidgetType() &&
            static_cast<QWidget*>(object)->isWindow())
            painted_ = true;
        return false;
    }

    bool painted_ = false;
};

/// Seconds of processor time to the first paint; taking the window away again is not part of a start.
double startEmptyWindow() {
    const double begun = cpuSeconds();
    const PaintWatch watch;
    QMainWindow window;
    window.show();
    watch.wait();
    return cpuSeconds() - begun;
}

double startConsole() {
    const double begun = cpuSeconds();
    const PaintWatch watch;
    BenchRig rig;
    const qt::QtHost host(rig.events);
    qt::applyTheme(*qApp, qt::desktopShade());
    const Workspace workspace({rig.bench, BoardKind::Simulated, QStringLiteral("KV4071")});
    rig.bench.start();
    watch.wait();
    return cpuSeconds() - begun;
}

/// Both in turn, so that whatever else the machine does meets both alike.
void ConsoleToFirstPaint(benchmark::State& state) {
    constexpr double kMilliseconds = 1e3;
    (void)startConsole(); // the fonts are looked up once a process
    double empty = 0;
    double console = 0;
    for ([[maybe_unused]] auto _ : state) {
        empty += startEmptyWindow();
        console += startConsole();
    }
    const auto starts = static_cast<double>(state.iterations());
    state.counters["empty_cpu_ms"] = kMilliseconds * empty / starts;
    state.counters["console_cpu_ms"] = kMilliseconds * console / starts;
}
BENCHMARK(ConsoleToFirstPaint)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vrk

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The offscreen platform warns at each start that it cannot raise a window.
    qInstallMessageHandler(
        [](QtMsgType /*type*/, const QMessageLogContext& /*where*/, const QString& /*text*/) {});
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
