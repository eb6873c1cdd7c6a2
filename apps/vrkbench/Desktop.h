#pragma once

#include "apps/vrkbench/BreakpointSettings.h"
#include "apps/vrkbench/PlugWatch.h"
#include "link/SupplyGuard.h"
#include "platform/hid/PatientHost.h"
#include "platform/hid/WireLog.h"
#include "platform/hid/WireRecorder.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtHost.h"
#include "platform/runtime/Clock.h"
#include "platform/system/DesktopInformationTool.h"
#include "platform/system/LogindInhibitor.h"
#include "shell/Bench.h"
#include "sim/SimulatedBus.h"
#include "views/workspace/Workspace.h"

#include <QSettings>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace vrk {

struct DesktopOptions {
    /// Part on the simulated board; empty: a real board if there is one, else the simulated one.
    std::string simulate{};
    bool openPart = false; ///< the user named the part: its panel opens, set up for it
    std::string replay{};
    std::string wireLog{};
    std::string folder{};
    bool settings = true; ///< the window remembers its size and docks
};

/// Options that do not fit.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The whole desktop program but its command line: board, what lies between it and the link, bench, window.
///
/// Between the board and the link lie, from below: the host that keeps the window painting through a stall,
/// and the recorder, which tells the log, the dock and the guard of every report.
class Desktop {
  public:
    /// \throws UsageError for a part that nobody knows, Fault for a file that cannot be used.
    explicit Desktop(const DesktopOptions& options);
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// Shows the window and runs until the program ends. \return 0
    int run();
    /// Shows the start panel, and the panel of the part that was asked for.
    void open();
    /// Ends the program as its menu does, whatever stands in the way.
    void end() { dialogs_.endProgram(); }

    Bench& bench() { return *bench_; }
    Workspace& workspace() { return *workspace_; }
    EventLoop& events() { return events_; }
    /// nullptr with a real board or a replay.
    sim::SimulatedBus* simulated() const { return simulated_; }

  private:
    std::unique_ptr<hid::HidHost> chooseHost(const DesktopOptions& options);
    std::unique_ptr<hid::HidHost> replayHost(const std::string& file);
    std::unique_ptr<hid::HidHost> simulatedHost(const std::string& part);
    void makeSettings(bool wanted);
    std::string socketedPart() const;
    ViewContext viewContext();
    void openPart();

    RealClock clock_;
    EventLoop events_{clock_};
    qt::QtHost qtHost_{events_};
    qt::QtDialogs dialogs_{events_};
    qt::QtClipboard clipboard_;

    BoardKind kind_ = BoardKind::Real;
    std::string name_; ///< of the simulated part or the replayed file
    std::string partToOpen_;
    sim::SimulatedBus* simulated_ = nullptr;
    std::unique_ptr<hid::HidHost> board_;
    hid::PatientHost patient_;
    hid::WireRecorder recorder_;
    std::optional<hid::WireLog> log_;
    std::unique_ptr<QSettings> settings_;
    std::optional<BreakpointSettings> breakpoints_;
    SupplyGuard supplies_; ///< after the bench at the end, when the link has closed its handles
    LogindInhibitor awake_{"vrkbench"};
    DesktopInformationTool informationTool_;
    std::unique_ptr<Bench> bench_;
    std::optional<PlugWatch> plugs_;
    std::unique_ptr<Workspace> workspace_;
};

} // namespace vrk
