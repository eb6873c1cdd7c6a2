#pragma once

#include "platform/clipboard/Clipboard.h"
#include "platform/controls/Panel.h"
#include "platform/controls/SharedValues.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/hid/WireRecorder.h"
#include "platform/runtime/EventLoop.h"
#include "sim/SimulatedBus.h"

#include <functional>
#include <string>
#include <vector>

namespace vrk {

/// What the automation serves: a bench by its pieces, so that a few panels make one as well. All must outlive
/// the server.
struct BenchTarget {
    EventLoop& events;
    ScriptedDialogs& dialogs;
    Clipboard& clipboard;
    const std::vector<PanelSlotBase*>& panels;
    const SharedValues& values;
    const std::vector<Panel::NamedAction>& moduleActions;
    const ResultLog& results;
    VirtualClock* virtualClock = nullptr;   ///< nullptr in real time
    sim::SimulatedBus* simulated = nullptr; ///< nullptr with real boards
    hid::WireRecorder* wire = nullptr;
    /// For the person at the terminal.
    std::function<void(const std::string&)> log = [](const std::string&) {};
};

} // namespace vrk
