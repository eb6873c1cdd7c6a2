#include "sim/SimulatedBus.h"

#include "link/reportLayout.h"
#include "sim/PartCatalogue.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace vrk::sim {

namespace {

constexpr Milliseconds kStep{1};       // of a full-speed device: one report a frame
constexpr std::size_t kQueueSize = 63; // as the operating system keeps for each handle

constexpr char kDefaultPart[] = "KV4071";

std::string foreignPath(int number) {
    return "sim-other-" + std::to_string(number);
}

/// Half of the others differ from the board by the vendor alone, half by the product alone.
hid::DeviceInfo foreignInfo(int number) {
    if (number % 2 == 0) {
        return {0x1209, report::kProductId, foreignPath(number)};
    }
    return {report::kVendorId, report::kProductId + 1, foreignPath(number)};
}

void requireRange(int value, int most, const char* what) {
    if (value < 0 || value > most) {
        throw std::invalid_argument(std::string(what) + " must be 0 to " + std::to_string(most));
    }
}

std::string hexKey(unsigned value) {
    char key[8];
    std::snprintf(key, sizeof key, "%02X", value & 0xFFU);
    return key;
}

} // namespace

struct SimulatedBus::InFlight {
    Milliseconds ready;
    hid::Report report;
    bool behind = false; ///< comes a moment behind `ready`: a read that ends then has just missed it

    bool arrivesBy(Milliseconds end) const { return ready < end || (ready == end && !behind); }
};

struct SimulatedBus::Slot {
    Slot(std::uint32_t seed, Faults& faults) : board(seed, faults), firmware(board, faults) {}

    Board board;
    Firmware firmware;
    std::string path;
    bool plugged = false;
    std::deque<InFlight> inFlight; ///< by the time they are ready
};

SimulatedBus::SimulatedBus(Clock& clock, const Options& options)
    : clock_(clock), options_(options), latency_(options.zeroLatency ? Milliseconds{0} : kStep) {
    setBoards(1);
}

SimulatedBus::~SimulatedBus() = default;

std::unique_ptr<SimulatedBus::Slot> SimulatedBus::makeSlot(int number) {
    auto slot = std::make_unique<Slot>(options_.seed + static_cast<std::uint32_t>(number), faults_);
    slot->board.socket(makePart(kDefaultPart));
    slot->board.onStore([this, number](int socket) {
        if (storeListener_) {
            storeListener_(number, socket);
        }
    });
    for (const auto& [code, volts] : heldVolts_) {
        slot->board.holdInput(code, volts);
    }
    return slot;
}

SimulatedBus::Slot& SimulatedBus::slotAt(int board) const {
    if (boards_.empty()) {
        throw std::invalid_argument("there is no board on the bus");
    }
    requireRange(board, boards() - 1, "board");
    return *boards_[static_cast<std::size_t>(board)];
}

// ---- the host's side

std::vector<hid::DeviceInfo> SimulatedBus::list() {
    std::vector<hid::DeviceInfo> devices;
    const int places = std::max(1, boards());
    for (int place = 0; place < places; ++place) {
        for (int other = place; other < foreign_; other += places) {
            devices.push_back(foreignInfo(other));
        }
        if (place < boards() && slotAt(place).plugged) {
            devices.push_back({report::kVendorId, report::kProductId, slotAt(place).path});
        }
    }
    return devices;
}

hid::Handle SimulatedBus::open(const std::string& path) {
    Reader reader;
    for (const auto& slot : boards_) {
        if (slot->plugged && slot->path == path) {
            reader.slot = slot.get();
            deliver(*slot); // what came before this handle is not for it
        }
    }
    for (int other = 0; other < foreign_; ++other) {
        if (foreignPath(other) == path) {
            reader.foreign = other;
        }
    }
    if (reader.slot == nullptr && reader.foreign < 0) {
        lastError_ = "There is no device at " + path;
        return hid::kNoHandle;
    }
    readers_.emplace(++lastHandle_, std::move(reader));
    return lastHandle_;
}

SimulatedBus::Reader* SimulatedBus::aliveReader(hid::Handle handle) {
    const auto found = readers_.find(handle);
    if (found == readers_.end()) {
        lastError_ = "The handle is not open";
        return nullptr;
    }
    if (found->second.dead) {
        lastError_ = "The device was unplugged";
        return nullptr;
    }
    return &found->second;
}

bool SimulatedBus::write(hid::Handle handle, const hid::Report& report) {
    const Reader* reader = aliveReader(handle);
    if (reader == nullptr) {
        return false;
    }
    faults_.begin(report[report::kCommandByte]);
    if (reader->slot != nullptr && faults_.take(FaultKind::WriteFails)) {
        lastError_ = "The device did not take the report";
        return false;
    }
    sleepUntil(clock_.now() + latency_);
    if (reader->slot == nullptr) {
        return true;
    }
    Slot& slot = *reader->slot;
    slot.board.passTime(clock_.now());
    std::optional<hid::Report> reply = slot.firmware.handle(report);
    if (!reply || faults_.take(FaultKind::NoReply)) {
        return true;
    }
    if (const auto prepared = faults_.takeReply()) {
        reply = prepared;
    }
    if (const auto error = faults_.take(FaultKind::ErrorByte)) {
        (*reply)[report::kErrorByte] = static_cast<std::uint8_t>(error->value);
    }
    const auto late = faults_.take(FaultKind::LateReply);
    send(slot, {clock_.now() + (late ? Milliseconds{late->ms} : latency_), *reply, late.has_value()});
    return true;
}

hid::ReadResult SimulatedBus::read(hid::Handle handle, hid::Report& report, Milliseconds timeout) {
    Reader* reader = aliveReader(handle);
    if (reader == nullptr) {
        return hid::ReadResult::Failed;
    }
    const Milliseconds end = clock_.now() + timeout;
    if (reader->slot != nullptr) {
        Slot& slot = *reader->slot;
        deliver(slot);
        if (reader->queue.empty() && !slot.inFlight.empty() && slot.inFlight.front().arrivesBy(end)) {
            sleepUntil(slot.inFlight.front().ready);
            deliver(slot);
        }
    }
    if (reader->queue.empty()) {
        sleepUntil(end);
        return hid::ReadResult::TimedOut;
    }
    report = reader->queue.front();
    reader->queue.pop_front();
    return hid::ReadResult::Arrived;
}

void SimulatedBus::close(hid::Handle handle) noexcept {
    readers_.erase(handle);
}

void SimulatedBus::sleepUntil(Milliseconds time) {
    while (clock_.now() < time) {
        clock_.sleep(time - clock_.now());
    }
}

void SimulatedBus::send(Slot& slot, const InFlight& report) {
    const auto later = std::upper_bound(slot.inFlight.begin(), slot.inFlight.end(), report.ready,
                                        [](Milliseconds t, const InFlight& f) { return t < f.ready; });
    slot.inFlight.insert(later, report);
}

void SimulatedBus::deliver(Slot& slot) {
    while (!slot.inFlight.empty() && slot.inFlight.front().ready <= clock_.now()) {
        for (auto& [handle, reader] : readers_) {
            if (reader.slot == &slot && reader.queue.size() < kQueueSize) {
                reader.queue.push_back(slot.inFlight.front().report);
            }
        }
        slot.inFlight.pop_front();
    }
}

// ---- the hands on the bench

std::vector<std::string> SimulatedBus::partNames() {
    return sim::partNames();
}

void SimulatedBus::socket(const std::optional<std::string>& part, std::optional<int> address, int board) {
    Slot& slot = slotAt(board);
    std::array<std::unique_ptr<Part>, Board::kSockets> parts;
    if (part) {
        for (int socket = 0; socket < partFacts(*part).sockets; ++socket) {
            parts.at(static_cast<std::size_t>(socket)) = makePart(*part, address, socket);
        }
    }
    for (int socket = 0; socket < Board::kSockets; ++socket) {
        slot.board.socket(std::move(parts.at(static_cast<std::size_t>(socket))), socket);
    }
}

std::string SimulatedBus::memory(int board) const {
    std::string text;
    for (int socket = 0; socket < Board::kSockets; ++socket) {
        if (const Part* part = slotAt(board).board.part(socket)) {
            text += part->name() + ": " + part->memory().text() + "\n";
        }
    }
    return text;
}

void SimulatedBus::setMemory(const std::string& text, int board) {
    std::istringstream lines(text);
    std::vector<std::pair<Part*, NonvolatileMemory>> filled; // taken whole or not at all
    for (int socket = 0; socket < Board::kSockets; ++socket) {
        Part* part = slotAt(board).board.part(socket);
        if (part == nullptr) {
            continue;
        }
        std::string line;
        std::getline(lines, line);
        const std::string head = part->name() + ":";
        if (line.compare(0, head.size(), head) != 0) {
            throw std::invalid_argument("the memory is \"" + line + "\", but the part is " + part->name());
        }
        filled.emplace_back(part, part->memory()).second.load(line.substr(head.size()));
    }
    if (std::string more; std::getline(lines, more)) {
        throw std::invalid_argument("no part for the memory \"" + more + "\"");
    }
    for (auto& [part, memory] : filled) {
        part->memory() = std::move(memory);
    }
}

void SimulatedBus::setBoards(int count) {
    requireRange(count, kMostBoards, "count");
    while (boards() > count) {
        disconnect(*boards_.back());
        boards_.pop_back();
    }
    while (boards() < count) {
        boards_.push_back(makeSlot(boards()));
        plug(boards() - 1);
    }
}

void SimulatedBus::setForeign(int count) {
    requireRange(count, kMostForeign, "count");
    foreign_ = count;
    for (auto& [handle, reader] : readers_) {
        reader.dead = reader.dead || reader.foreign >= foreign_;
    }
}

void SimulatedBus::disconnect(Slot& slot) {
    slot.plugged = false;
    slot.inFlight.clear();
    slot.board.powerDown();
    for (auto& [handle, reader] : readers_) {
        if (reader.slot == &slot) {
            reader = Reader{.slot = nullptr, .foreign = -1, .dead = true, .queue = {}};
        }
    }
}

void SimulatedBus::unplug(int board) {
    disconnect(slotAt(board));
}

void SimulatedBus::plug(int board) {
    Slot& slot = slotAt(board);
    if (slot.plugged) {
        return;
    }
    slot.plugged = true;
    slot.path = "sim-board-" + std::to_string(board) + "-plug-" + std::to_string(++plugs_);
    slot.firmware.reset();
    slot.board.powerUp();
}

void SimulatedBus::stale(const std::vector<std::uint8_t>& bytes, int board, int count) {
    Slot& slot = slotAt(board);
    const hid::Report report = zeroFilled(bytes);
    if (count < 1 || count > kMostStale) {
        throw std::invalid_argument("count must be 1 to " + std::to_string(kMostStale));
    }
    deliver(slot); // in the order of time
    for (auto& [handle, reader] : readers_) {
        if (reader.slot == &slot) {
            reader.queue.insert(reader.queue.end(), static_cast<std::size_t>(count), report);
        }
    }
}

void SimulatedBus::reply(int command, const std::vector<std::uint8_t>& bytes, int times) {
    faults_.addReply(command, bytes, times);
}

void SimulatedBus::input(int channel, std::optional<double> volts, std::optional<int> count) {
    if (channel < 0 ||
        (channel > channel::kLastPin && channel != channel::kTemperature && channel != channel::kVdd)) {
        throw std::invalid_argument("channel must be 0 to 15 (0F), 30 (1E) or 31 (1F)");
    }
    if (volts && count) {
        throw std::invalid_argument("an input is held at volts or at a count, not both");
    }
    if (volts && !std::isfinite(*volts)) {
        throw std::invalid_argument("volts must be a finite number");
    }
    if (count) {
        requireRange(*count, kFullScale, "count");
        volts = *count * kReferenceVolts / kFullScale;
    }
    const auto code = static_cast<std::uint8_t>(channel);
    heldVolts_.erase(code);
    if (volts) {
        heldVolts_[code] = *volts;
    }
    for (const auto& slot : boards_) {
        slot->board.holdInput(code, volts);
    }
}

void SimulatedBus::clear() {
    faults_.clear();
    heldVolts_.clear();
    for (const auto& slot : boards_) {
        slot->board.releaseInputs();
    }
}

BoardState SimulatedBus::state(int board) const {
    Slot& slot = slotAt(board);
    slot.board.passTime(clock_.now());
    BoardState state;
    state.vcc = slot.board.supplies().vcc();
    state.vminus = slot.board.supplies().vminus();
    state.code = slot.board.supplies().code();
    const Ports& ports = slot.board.ports();
    for (unsigned address = 0x80; address <= 0xFF; ++address) {
        state.sfr[hexKey(address)] = ports.latch(static_cast<std::uint8_t>(address));
    }
    for (int port = 0; port < kPortCount; ++port) {
        state.pins[std::string("P") + std::to_string(port)] = slot.plugged ? ports.level(port) : 0;
    }
    state.leds.green = slot.plugged && slot.firmware.greenLed();
    state.leds.red = slot.plugged && slot.firmware.redLed();
    state.plugged = slot.plugged;
    state.handles = static_cast<int>(std::count_if(
        readers_.begin(), readers_.end(), [&slot](const auto& entry) { return entry.second.slot == &slot; }));
    if (const Part* part = slot.board.part(0)) {
        state.part = part->state();
    }
    if (const Part* part = slot.board.part(1)) {
        state.part2 = part->state();
    }
    return state;
}

} // namespace vrk::sim
