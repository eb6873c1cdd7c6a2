#include "apps/vrkctl/Session.h"

#include "apps/rehearsal/SimulatedRehearsal.h"
#include "apps/vrkctl/CommandLine.h"
#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Terminal.h"
#include "link/reportLayout.h"
#include "platform/files/files.h"
#include "platform/hid/HidapiHost.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vrk {

namespace fs = std::filesystem;

namespace {
WallTime parseStartTime(const std::string& text) {
    WallTime time{};
    int used = 0;
    const int fields = std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%n", &time.year, &time.month,
                                   &time.day, &time.hour, &time.minute, &time.second, &used);
    const std::chrono::year_month_day day{std::chrono::year(time.year),
                                          std::chrono::month(static_cast<unsigned>(time.month)),
                                          std::chrono::day(static_cast<unsigned>(time.day))};
    const bool timeFits = time.hour >= 0 && time.hour < 24 && time.minute >= 0 && time.minute < 60 &&
                          time.second >= 0 && time.second < 60;
    if (fields != 6 || used != static_cast<int>(text.size()) || !day.ok() || !timeFits)
        throw CommandError(ExitCode::Usage,
                           "--start-time: '" + text + "' is no time like 2020-01-01 12:00:00");
    return time;
}
} // namespace

std::unique_ptr<Clock> Session::makeClock(const Options& options, DefaultTime time) {
    const bool canBeVirtual = !options.simulate.empty() || !options.replay.empty();
    if (options.virtualTime && options.realTime)
        throw CommandError(ExitCode::Usage, "--virtual-time and --real-time exclude each other");
    if (options.virtualTime && !canBeVirtual)
        throw CommandError(ExitCode::Usage,
                           "--virtual-time needs --simulate or --replay: a real board takes real time");
    const bool isVirtual =
        options.virtualTime || (time == DefaultTime::VirtualIfPossible && canBeVirtual && !options.realTime);
    if (!options.startTime.empty() && !isVirtual)
        throw CommandError(ExitCode::Usage, "--start-time needs --virtual-time");
    if (!isVirtual)
        return std::make_unique<RealClock>();
    return std::make_unique<VirtualClock>(options.startTime.empty() ? WallTime{}
                                                                    : parseStartTime(options.startTime));
}

std::unique_ptr<hid::HidHost> Session::makeHost(const Options& options) {
    std::error_code none;
    if (!options.replay.empty() && fs::equivalent(options.replay, options.wireLog, none))
        throw CommandError(ExitCode::Usage, "--wire-log would overwrite the recording that --replay reads");
    if (!options.simulate.empty() && !options.replay.empty())
        throw CommandError(ExitCode::Usage, "--simulate and --replay exclude each other");
    hid::requireOtherFile(options.replay, options.wireLog);
    for (const auto& [name, path] :
         {std::pair{"--sim-memory", options.simMemory}, std::pair{"--scenario", options.scenario}})
        if (!path.empty() && options.simulate.empty())
            throw CommandError(ExitCode::Usage,
                               std::string(name) + " needs --simulate: it is about a simulated board");
    if (!options.replay.empty()) {
        auto replay =
            std::make_unique<hid::ReplayHost>(options.replay, *clock_, report::kVendorId, report::kProductId);
        replay->onDifference([](const auto& difference) { tell("the replay differs: " + difference.text); });
        replay_ = replay.get();
        return replay;
    }
    if (options.simulate.empty())
        return std::make_unique<hid::HidapiHost>(report::kVendorId, report::kProductId);
    const std::string part = simulatedPart(options.simulate);
    auto bus = std::make_unique<sim::SimulatedBus>(*clock_);
    bus->setBoards(std::max(bus->boards(), options.board + 1));
    for (int board = 0; board < bus->boards(); ++board)
        bus->socket(part, std::nullopt, board);
    simulated_ = bus.get();
    auto world = std::make_unique<SimulatedWorld>(
        std::move(bus), *clock_, SimulatedWorld::Files{options.simMemory, options.scenario}, options.board);
    world_ = world.get();
    return world;
}

Session::Session(const Options& options, Dialogs& dialogs, DefaultTime time)
    : clock_(makeClock(options, time)),
      virtualClock_(dynamic_cast<VirtualClock*>(clock_.get())),
      events_(*clock_),
      host_(makeHost(options)),
      recorder_(*host_, *clock_, report::kVendorId, report::kProductId) {
    if (!options.wireLog.empty())
        wireLog_.emplace(recorder_, *clock_, options.wireLog, tellFileFailed);
    supplies_.emplace(recorder_, [](const std::string& words) { tell(words); });
    if (replay_ != nullptr) // what is not in the recording would pass for a difference
        supplies_->leaveAsTheyAre();
    const fs::path folder = programFolder(options.folder);
    bench_ = std::make_unique<Bench>(
        Bench::Parts{.events = events_,
                     .dialogs = dialogs,
                     .clipboard = clipboard_,
                     .host = recorder_,
                     .programFolder = folder,
                     .workingFolder = fs::current_path(),
                     .rehearsalBench = [this, folder] { return makeRehearsalBenchOf(*bench_, folder); }});
}

Session::Session(const Options& options, TerminalDialogs& dialogs, DefaultTime time)
    : Session(options, static_cast<Dialogs&>(dialogs), time) {
    // A recording has no other board to come back with.
    const double seconds = replay_ == nullptr ? options.linkWait : 0;
    linkWait_.emplace(LinkWait::Uses{.bench = *bench_,
                                     .wire = recorder_,
                                     .events = events_,
                                     .board = options.board,
                                     .limit = Milliseconds(std::llround(seconds * 1000))});
    dialogs.onLinkLost([this] { return linkWait_->waitForBoard(); });
}

Session::~Session() {
    if (leaveSupplies_ && !interrupt::requested())
        supplies_->leaveAsTheyAre();
}

std::vector<hid::DeviceInfo> Session::boards() {
    return boardsOf(*host_);
}

void Session::requireBoard(int number) {
    const auto boards = this->boards();
    const int count = static_cast<int>(boards.size());
    if (count == 0)
        throw CommandError(ExitCode::NoBoard, kNoBoardText);
    if (number >= count)
        throw CommandError(ExitCode::Usage, "--board: there is no board " + std::to_string(number) +
                                                "; the last is " + std::to_string(count - 1));
    const hid::Handle handle = host_->open(boards[static_cast<std::size_t>(number)].path);
    if (handle == hid::kNoHandle)
        throw CommandError(ExitCode::NoBoard, "the board cannot be used: " + host_->lastError() +
                                                  "; \"vrkctl doctor\" says how to mend it");
    host_->close(handle);
}

void Session::workBegins() {
    if (world_ != nullptr)
        world_->workBegins();
}

void Session::runEvents() {
    for (auto next = events_.untilNextDue(); next && next->count() == 0 && !events_.ended();
         next = events_.untilNextDue())
        events_.runDue();
}

std::vector<hid::DeviceInfo> boardsOf(hid::HidHost& host) {
    auto devices = host.list();
    std::erase_if(devices, [](const hid::DeviceInfo& device) {
        return device.vendor != report::kVendorId || device.product != report::kProductId;
    });
    return devices;
}

std::string listed(const std::vector<std::string>& names) {
    std::string all;
    for (const std::string& name : names)
        all += (all.empty() ? "" : ", ") + name;
    return all;
}

std::string simulatedPart(const std::string& part) {
    const auto names = sim::SimulatedBus::partNames();
    if (const std::string* name = nameInAnyCase(part, names))
        return *name;
    throw CommandError(ExitCode::Usage, "--simulate: unknown part '" + part + "'" + didYouMean(part, names) +
                                            "; parts: " + listed(names));
}

} // namespace vrk
