#pragma once

#include "apps/vrkctl/LinkWait.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/SimulatedWorld.h"
#include "apps/vrkctl/TerminalDialogs.h"
#include "link/SupplyGuard.h"
#include "platform/clipboard/Clipboard.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/hid/HidHost.h"
#include "platform/hid/ReplayHost.h"
#include "platform/hid/WireLog.h"
#include "platform/hid/WireRecorder.h"
#include "platform/runtime/Clock.h"
#include "platform/runtime/EventLoop.h"
#include "shell/Bench.h"
#include "sim/SimulatedBus.h"

#include <memory>
#include <optional>
#include <vector>

namespace vrk {

/// The time that a command uses when the user has not chosen one. A real board takes real time in any case.
enum class DefaultTime { Real, VirtualIfPossible };

/// Time, boards and bench of one command, put together as the options say. What the command has left on at
/// the boards goes off with it.
class Session {
  public:
    /// \throws CommandError for options that do not go together, Fault for a file that cannot be used.
    Session(const Options& options, Dialogs& dialogs, DefaultTime time);
    /// Of a command that works by itself: a board that goes away is waited for.
    Session(const Options& options, TerminalDialogs& dialogs, DefaultTime time);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Bench& bench() { return *bench_; }
    EventLoop& events() { return events_; }
    Clipboard& clipboard() { return clipboard_; }
    hid::WireRecorder& wire() { return recorder_; }
    VirtualClock* virtualClock() const { return virtualClock_; }
    sim::SimulatedBus* simulated() const { return simulated_; }
    const hid::ReplayHost* replay() const { return replay_; }

    /// The evaluation boards that are plugged in, in the order of their instance numbers.
    std::vector<hid::DeviceInfo> boards();
    /// \throws CommandError unless the board that the options name is there.
    void requireBoard(int number);
    /// Supplies that are on stay on when this ends, unless a signal came meanwhile: else they go off, however
    /// that comes about.
    void leaveSupplies() { leaveSupplies_ = true; }
    /// The supplies are another's: they stay as they are whatever happens.
    void touchNoSupplies() { supplies_->leaveAsTheyAre(); }
    /// Set-up is over: the times of a scenario count from here.
    void workBegins();
    /// Delivers all events that are due, as the window's loop would between two gestures.
    void runEvents();

  private:
    static std::unique_ptr<Clock> makeClock(const Options& options, DefaultTime time);
    std::unique_ptr<hid::HidHost> makeHost(const Options& options);

    std::unique_ptr<Clock> clock_;
    VirtualClock* virtualClock_;
    EventLoop events_;
    sim::SimulatedBus* simulated_ = nullptr;
    SimulatedWorld* world_ = nullptr;
    hid::ReplayHost* replay_ = nullptr;
    std::unique_ptr<hid::HidHost> host_;
    hid::WireRecorder recorder_;
    std::optional<hid::WireLog> wireLog_;
    std::optional<SupplyGuard> supplies_; ///< behind the log, which gets its reports, and before the bench
    bool leaveSupplies_ = false;
    MemoryClipboard clipboard_;
    std::unique_ptr<Bench> bench_;
    std::optional<LinkWait> linkWait_;
};

/// The evaluation boards among the devices of a host.
std::vector<hid::DeviceInfo> boardsOf(hid::HidHost& host);

inline constexpr const char* kNoBoardText =
    "no evaluation board is plugged in; try --simulate, or \"vrkctl doctor\", which looks for the cause";

/// "KV4071, KV4074"
std::string listed(const std::vector<std::string>& names);

/// The part's name as the simulator writes it, given in any case. \throws CommandError that lists the parts,
/// unless the simulated socket takes this one.
std::string simulatedPart(const std::string& part);

} // namespace vrk
