#pragma once

#include "apps/rehearsal/SimulatedRehearsal.h"
#include "apps/vrkbench/SimulatedSocket.h"
#include "platform/hid/WireRecorder.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtHost.h"
#include "shell/Bench.h"
#include "sim/SimulatedBus.h"
#include "views/workspace/Workspace.h"

#include <QApplication>
#include <QWidget>

#include <filesystem>

namespace vrk {

/// A bench with windows on a simulated board. Its clock jumps, so that no wait takes real time.
struct WindowBench {
    explicit WindowBench(const std::filesystem::path& folder, const char* part = "KV4074")
        : bench({.events = events,
                 .dialogs = dialogs,
                 .clipboard = clipboard,
                 .host = recorder,
                 .programFolder = folder,
                 .workingFolder = folder,
                 .rehearsalBench = [this, folder] { return makeRehearsalBenchOf(bench, folder); }}),
          workspace({bench, BoardKind::Simulated, part, nullptr, std::make_shared<SimulatedSocket>(bus),
                     &recorder}) {
        bus.socket(part);
        dialogs.offerAbortOf(bench.context().activities);
        dialogs.onFurther = [this](const std::string& text) { further.push_back(text); };
        (void)bench.start();
    }

    VirtualClock clock;
    EventLoop events{clock};
    qt::QtHost host{events};
    qt::QtDialogs dialogs{events};
    qt::QtClipboard clipboard;
    sim::SimulatedBus bus{clock};
    hid::WireRecorder recorder{bus, clock, report::kVendorId, report::kProductId};
    Bench bench;
    std::vector<std::string> further; ///< told in the band instead of a box
    Workspace workspace;
};

} // namespace vrk
