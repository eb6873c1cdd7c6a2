#include "benchmarks/BenchRig.h"
#include "benchmarks/SelfAnsweringHost.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vrk {
namespace {

using Steady = std::chrono::steady_clock;

/// One transfer of the host, or the wait behind a store.
struct Transfer {
    enum class Kind { Write, Read, Wait };
    Kind kind;
    Milliseconds timeout{0};
};

/// A board on a full-speed bus, in real time: a frame takes 1 ms, a request goes out in the next one, its
/// reply comes in the one behind it. Whoever is late for a frame waits for the next. Its replies are those of
/// a wiper at mid scale.
class FullSpeedHost final : public SelfAnsweringHost {
  public:
    explicit FullSpeedHost(hid::HidHost& under, bool frames = true)
        : SelfAnsweringHost(under), frames_(frames) {}

    void record(std::vector<Transfer>* into) { record_ = into; }

  private:
    void take(const hid::Report& request) override {
        note({Transfer::Kind::Write});
        const bool stored = request[1] == 18 && request[3] == report::sfr::P0 && request[4] == 192;
        toNextFrame();
        replies_.push_back(frame_ + 1);
        if (stored)
            note({Transfer::Kind::Wait, Milliseconds{3}});
    }
    hid::ReadResult answer(hid::Report& report, Milliseconds timeout) override {
        note({Transfer::Kind::Read, timeout});
        if (replies_.empty()) {
            if (frames_)
                std::this_thread::sleep_for(timeout);
            return hid::ReadResult::TimedOut;
        }
        const auto due = replies_.front();
        if (frames_ && began_ + std::chrono::milliseconds(due) > Steady::now() + timeout) {
            std::this_thread::sleep_for(timeout);
            return hid::ReadResult::TimedOut;
        }
        replies_.erase(replies_.begin());
        if (frames_)
            std::this_thread::sleep_until(began_ + std::chrono::milliseconds(due));
        report = {1, 17, 2, 0};
        return hid::ReadResult::Arrived;
    }

    void note(Transfer transfer) {
        if (record_ != nullptr)
            record_->push_back(transfer);
    }
    void toNextFrame() {
        if (!frames_)
            return;
        frame_ = (Steady::now() - began_) / std::chrono::milliseconds(1) + 1;
        std::this_thread::sleep_until(began_ + std::chrono::milliseconds(frame_));
    }

    bool frames_;
    Steady::time_point began_ = Steady::now();
    long long frame_ = 0;
    std::vector<long long> replies_; ///< frames in which they come
    std::vector<Transfer>* record_ = nullptr;
};

/// The run-in page over a board that costs nothing but its frames.
template <class TheClock>
struct RunInRig {
    TheClock clock;
    EventLoop events{clock};
    ScriptedDialogs dialogs;
    MemoryClipboard clipboard;
    VirtualClock boardClock;
    sim::SimulatedBus bus{boardClock, {.zeroLatency = true}};
    FullSpeedHost host;
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("vrk-bench-runs-" + std::to_string(::getpid()));
    Bench bench;

    explicit RunInRig(bool frames)
        : host(bus, frames),
          bench({events, dialogs, clipboard, host, std::filesystem::temp_directory_path(),
                 std::filesystem::temp_directory_path()}) {
        bus.socket("UPDN100");
        bench.start();
        bench.frmStartup->cboVRKSelect.userSelect(frmStartup::kUpDown);
        bench.frmVRK_UD1->OptVCC[0].userClick();
        bench.UPDN_Runin.show();
        bench.runInHome().folder = folder;
        host.answerByItself();
    }
    ~RunInRig() { std::filesystem::remove_all(folder); }
    RunInRig(const RunInRig&) = delete;
    RunInRig& operator=(const RunInRig&) = delete;

    void run(int steps) {
        UPDN_Runin& panel = *bench.UPDN_Runin;
        panel.txtTestQty.setText(std::to_string(steps));
        panel.txtLogSteps.setText("500");
        if (!panel.cmdRunInitial.userClick().done())
            std::abort();
    }
};

/// Steps of a run, journal included, against the same transfers and waits with no program above them.
void RunInAgainstItsReports(benchmark::State& state) {
    constexpr int kSteps = 500;
    RunInRig<RealClock> rig(true);
    rig.bench.UPDN_Runin->chkJournal.setValue(1);
    double limit = 0;
    double run = 0;
    for ([[maybe_unused]] auto _ : state) {
        std::vector<Transfer> all;
        Steady::time_point first;
        const Subscription stages = rig.bench.UPDN_Runin->observeStages([&](const RunInStage& stage) {
            if (stage.loop == 0) { // the loop begins behind the initial test
                first = Steady::now();
                all.clear();
                rig.host.record(&all);
            }
        });
        rig.run(kSteps);
        run += std::chrono::duration<double>(Steady::now() - first).count();
        rig.host.record(nullptr);
        hid::Report report{};
        first = Steady::now();
        for (const Transfer& transfer : all) {
            if (transfer.kind == Transfer::Kind::Write)
                rig.host.write(0, report);
            else if (transfer.kind == Transfer::Kind::Read)
                rig.host.read(0, report, transfer.timeout);
            else
                std::this_thread::sleep_for(transfer.timeout);
        }
        limit += std::chrono::duration<double>(Steady::now() - first).count();
    }
    state.counters["steps_per_s"] = kSteps * static_cast<double>(state.iterations()) / run;
    state.counters["of_limit"] = limit / run;
}
BENCHMARK(RunInAgainstItsReports)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();

double residentMegabytes() {
    long long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

/// Work and memory of a step late in a run against one early in it.
/// \param state 0: with "Log All"
void RunInLateAgainstEarly(benchmark::State& state) {
    constexpr int kEarly = 1'000, kLate = 1'000'000, kWindow = 20'000;
    for ([[maybe_unused]] auto _ : state) {
        RunInRig<VirtualClock> rig(false);
        rig.bench.UPDN_Runin->chkJournal.setValue(1);
        rig.bench.UPDN_Runin->ChkLogAll.setValue(state.range(0) != 0 ? 1 : 0);
        double early = 0, late = 0, memory = 0;
        const Subscription stages = rig.bench.UPDN_Runin->observeStages([&](const RunInStage& stage) {
            const double cpu = cpuSeconds();
            if (stage.loop == kEarly)
                early = -cpu;
            else if (stage.loop == kEarly + kWindow)
                early += cpu;
            else if (stage.loop == kEarly + 3 * kWindow) // the log has reached what it keeps in memory
                memory = -residentMegabytes();
            else if (stage.loop == kLate - kWindow)
                late = -cpu;
            else if (stage.loop == kLate)
                late += cpu;
        });
        rig.run(kLate);
        state.counters["cpu_late_to_early"] = late / early;
        state.counters["us_per_step"] = early / kWindow * 1e6;
        state.counters["memory_growth_MB"] = memory + residentMegabytes();
    }
}
BENCHMARK(RunInLateAgainstEarly)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
} // namespace vrk
