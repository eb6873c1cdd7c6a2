#include "link/reportLayout.h"
#include "platform/files/files.h"
#include "platform/hid/HidapiHost.h"
#include "platform/hid/HotPlugMonitor.h"
#include "platform/hid/PatientHost.h"
#include "platform/hid/ReplayHost.h"
#include "platform/hid/WireLog.h"
#include "platform/hid/WireRecorder.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtHost.h"
#include "platform/qt/theme.h"
#include "platform/runtime/Clock.h"
#include "shell/Bench.h"
#include "sim/SimulatedBus.h"
#include "views/workspace/Workspace.h"
#include "views/replayDifference.h"

#include <CLI/CLI.hpp>
#include <QApplication>
#include <QIcon>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

using namespace vrk;

namespace {

/// As in the manual; the terminal program has the same.
enum ExitCode : int { kDone = 0, kUsage = 2, kFile = 5 };

struct Options {
    std::string simulate; ///< part on the simulated board; empty: a real board if there is one
    std::string replay;
    std::string wireLog;
    std::string folder;
};

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

bool isBoard(const hid::DeviceInfo& device) {
    return device.vendor == report::kVendorId && device.product == report::kProductId;
}

std::unique_ptr<hid::HidHost> simulatedHost(Clock& clock, const std::string& part) {
    const auto parts = sim::SimulatedBus::partNames();
    if (std::find(parts.begin(), parts.end(), part) == parts.end()) {
        std::string text = "--simulate: there is no part \"" + part + "\"; parts:";
        for (const std::string& name : parts)
            text += " " + name;
        throw UsageError(text);
    }
    auto bus = std::make_unique<sim::SimulatedBus>(clock);
    bus->socket(part);
    return bus;
}

/// The board that the options name; without one a real board where one is plugged in, else the simulated one.
std::unique_ptr<hid::HidHost> chooseHost(const Options& options, Clock& clock, BoardKind& kind,
                                         std::string& name) {
    if (!options.replay.empty()) {
        kind = BoardKind::Replayed;
        name = std::filesystem::path(options.replay).filename().string();
        auto replay =
            std::make_unique<hid::ReplayHost>(options.replay, clock, report::kVendorId, report::kProductId);
        replay->onDifference([](const auto& difference) {
            std::fprintf(stderr, "vrkbench: the replay differs: %s\n", difference.text.c_str());
            // The device's thread is on its way here, with an exchange in flight.
            QMetaObject::invokeMethod(
                qApp, [difference] { showReplayDifference(difference); }, Qt::QueuedConnection);
        });
        return replay;
    }
    if (options.simulate.empty()) {
        auto host = std::make_unique<hid::HidapiHost>(report::kVendorId, report::kProductId);
        const auto devices = host->list();
        if (std::any_of(devices.begin(), devices.end(), isBoard)) {
            kind = BoardKind::Real;
            return host;
        }
    }
    kind = BoardKind::Simulated;
    name = options.simulate.empty() ? "KV4071" : options.simulate;
    return simulatedHost(clock, name);
}

/// Keeps count of the boards that are plugged in, where the system tells when that changes.
class PlugWatch {
  public:
    PlugWatch(hid::HidHost& host, EventLoop& events) : host_(host), events_(events) {
        retry_.setSingleShot(true);
        QObject::connect(&retry_, &QTimer::timeout, &retry_, [this] { count(); });
        if (monitor_.fileDescriptor() < 0)
            return;
        notifier_.emplace(monitor_.fileDescriptor(), QSocketNotifier::Read);
        QObject::connect(&*notifier_, &QSocketNotifier::activated, &retry_, [this] {
            if (monitor_.drain())
                count();
        });
    }
    std::shared_ptr<const std::optional<int>> plugged() const { return plugged_; }

  private:
    void count() {
        constexpr int kRetryMs = 200;
        if (events_.held()) { // the host is busy with an exchange
            retry_.start(kRetryMs);
            return;
        }
        const auto devices = host_.list();
        *plugged_ = static_cast<int>(std::count_if(devices.begin(), devices.end(), isBoard));
    }

    hid::HidHost& host_;
    EventLoop& events_;
    hid::HotPlugMonitor monitor_{report::kVendorId, report::kProductId};
    std::optional<QSocketNotifier> notifier_;
    QTimer retry_;
    std::shared_ptr<std::optional<int>> plugged_ = std::make_shared<std::optional<int>>();
};

int runBench(const Options& options, QApplication& application) {
    RealClock clock;
    EventLoop events(clock);
    qt::QtHost qtHost(events);
    qt::QtDialogs dialogs(events);
    qt::QtClipboard clipboard;

    hid::requireOtherFile(options.replay, options.wireLog);
    BoardKind kind = BoardKind::Real;
    std::string name;
    const auto board = chooseHost(options, clock, kind, name);
    hid::PatientHost patient(*board, events, [] { qt::QtHost::paintOnly(); });
    hid::WireRecorder recorder(patient, clock, report::kVendorId, report::kProductId);
    std::optional<hid::WireLog> log;
    if (!options.wireLog.empty())
        log.emplace(recorder, clock, options.wireLog,
                    [](const std::string& why) { std::fprintf(stderr, "vrkbench: %s\n", why.c_str()); });

    Bench bench({.events = events,
                 .dialogs = dialogs,
                 .clipboard = clipboard,
                 .host = recorder,
                 .programFolder = programFolder(options.folder),
                 .workingFolder = std::filesystem::current_path()});
    qt::applyTheme(application, qt::desktopShade());
    std::optional<PlugWatch> plugs;
    if (kind == BoardKind::Real)
        plugs.emplace(patient, events);
    Workspace workspace({bench, kind, QString::fromStdString(name), plugs ? plugs->plugged() : nullptr});
    (void)bench.start();
    return qtHost.run();
}

} // namespace

int main(int argc, char** argv) {
    failAtFileSizeLimit();
    Options options;
    CLI::App commandLine("Bench console for digitally controlled potentiometers.", "vrkbench");
    commandLine.set_version_flag("--version", "vrkbench " VRK_VERSION);
    commandLine
        .add_flag("--simulate{KV4071}", options.simulate,
                  "Work on a simulated board; --simulate=PART puts another part in its socket")
        ->type_name("[=PART]");
    commandLine.add_option("--wire-log", options.wireLog, "Record every report, with time and direction")
        ->type_name("FILE");
    commandLine.add_option("--replay", options.replay, "Play a recorded wire log back instead of a board")
        ->type_name("FILE")
        ->excludes("--simulate");
    commandLine.add_option("--folder", options.folder, "Folder of the calibration file")->type_name("DIR");
    // Old shortcuts on the desktop pass it; it has no effect.
    std::string oldSwitch;
    commandLine.add_option("switch", oldSwitch)->check(CLI::IsMember({"/d"}))->group("");
    commandLine.footer(
        "Without --simulate and --replay the bench works on the board that is plugged in, and on a\n"
        "simulated one where there is none. Exit codes: 0 done, 2 usage, 5 file.");
    try {
        commandLine.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool asked = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
        commandLine.exit(error);
        return asked ? kDone : kUsage;
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName("vrkbench");
    QApplication::setApplicationDisplayName("VRK Bench");
    QApplication::setApplicationVersion(VRK_VERSION);
    QApplication::setWindowIcon(QIcon::fromTheme("vrkbench"));
    // Which window is the last one is for the panels to say.
    QApplication::setQuitOnLastWindowClosed(false);
    try {
        return runBench(options, application);
    } catch (const UsageError& error) {
        std::fprintf(stderr, "vrkbench: %s\n", error.what());
        return kUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vrkbench: %s\n", error.what());
        return kFile;
    }
}
