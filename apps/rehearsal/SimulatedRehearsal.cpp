#include "apps/rehearsal/SimulatedRehearsal.h"

#include "link/reportLayout.h"
#include "panels/WiperPanel.h"
#include "platform/clipboard/Clipboard.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/hid/WireRecorder.h"
#include "script/ConsoleBus.h"
#include "sim/SimulatedBus.h"

#include <algorithm>

namespace vrk {

namespace {

/// A part that does not answer is what the rehearsal is to show: back to the script, as a user would.
class RehearsalDialogs final : public Dialogs {
  public:
    Choice show(const MessageBox& box) override {
        for (const Choice choice : {Choice::Retry, Choice::Ok, Choice::No})
            if (std::find(box.buttons.begin(), box.buttons.end(), choice) != box.buttons.end())
                return choice;
        return Choice::Cancel;
    }
    std::optional<std::string> chooseFile(const FileRequest& /*request*/) override { return std::nullopt; }
};

class SimulatedRehearsal final : public RehearsalBench {
  public:
    explicit SimulatedRehearsal(const RehearsalSetUp& setUp)
        : recorder_(board_, clock_, report::kVendorId, report::kProductId),
          counting_(recorder_.observe([this](const hid::WireEvent& event) {
              if (event.direction == hid::WireEvent::Direction::Out && !event.failed)
                  ++reports_;
          })),
          bench_({.events = events_,
                  .dialogs = dialogs_,
                  .clipboard = clipboard_,
                  .host = recorder_,
                  .programFolder = setUp.folder,
                  .workingFolder = setUp.folder}),
          bus_(bench_.services()) {
        const auto names = sim::SimulatedBus::partNames();
        const bool known = std::find(names.begin(), names.end(), setUp.part) != names.end();
        const std::string part = known ? setUp.part : rehearsalPart(setUp.bus);
        board_.socket(part);
        bench_.start();
        bringUp(bench_, setUp.bus, part, [this](const auto& gesture, const auto& /*what*/) {
            (void)gesture();
            settle();
        });
    }

    ScriptBus& bus() override { return bus_; }
    Milliseconds now() const override { return clock_.now(); }
    void pass(Milliseconds duration) override { clock_.sleep(duration); }
    long long reports() const override { return reports_; }
    std::map<std::string, int> nonvolatileWrites() const override {
        const auto part = board_.state().part;
        return part ? part->writes : std::map<std::string, int>();
    }

  private:
    /// Delivers what a gesture has queued.
    void settle() {
        for (auto next = events_.untilNextDue(); next && next->count() == 0 && !events_.ended();
             next = events_.untilNextDue())
            events_.runDue();
    }

    VirtualClock clock_;
    EventLoop events_{clock_};
    RehearsalDialogs dialogs_;
    MemoryClipboard clipboard_;
    sim::SimulatedBus board_{clock_};
    hid::WireRecorder recorder_;
    long long reports_ = 0;
    Subscription counting_;
    Bench bench_;
    ConsoleBus bus_;
};

} // namespace

const char* rehearsalPart(ScriptedBus bus) {
    return bus == ScriptedBus::I2C ? "KV4071" : "KV4184";
}

std::unique_ptr<RehearsalBench> makeRehearsalBench(const RehearsalSetUp& setUp) {
    return std::make_unique<SimulatedRehearsal>(setUp);
}

std::unique_ptr<RehearsalBench> makeRehearsalBenchOf(Bench& bench, const std::filesystem::path& folder) {
    RehearsalSetUp setUp{.bus = bench.busMode().SPIBusMode ? ScriptedBus::SPI : ScriptedBus::I2C,
                         .part = {},
                         .folder = folder};
    // "KV4071, I2C, Single Channel, 128 Tap ZQM"
    if (const auto* panel = dynamic_cast<const WiperPanel*>(bench.devicePanel())) {
        const std::string& product = panel->lblProduct.caption();
        setUp.part = product.substr(0, product.find(','));
    }
    return makeRehearsalBench(setUp);
}

} // namespace vrk
