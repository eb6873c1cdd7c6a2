#include "platform/hid/ReplayHost.h"

#include "platform/files/files.h"
#include "platform/runtime/Fault.h"

#include <algorithm>

namespace vrk::hid {

namespace {

constexpr Milliseconds kReplyWait{1000};

std::string pathOf(int board) {
    return "replay:" + std::to_string(board);
}

/// Both reports and the numbers of the bytes that differ.
std::string differenceText(int request, const WireEvent* recorded, int board, const Report& sent) {
    const std::string which = "Request " + std::to_string(request);
    const std::string sentLine = "\n  sent     board " + std::to_string(board) + ": " + reportText(sent);
    if (!recorded)
        return which + " is not in the recording, which ends before it" + sentLine;
    std::string bytes;
    for (std::size_t i = 0; i < sent.size(); ++i)
        if (sent[i] != recorded->report[i])
            bytes += (bytes.empty() ? "byte " : ", ") + std::to_string(i);
    if (recorded->board != board)
        bytes = "another board" + (bytes.empty() ? "" : ", " + bytes);
    return which + " differs from the recording: " + bytes + "\n  recorded board " +
           std::to_string(recorded->board) + ": " + reportText(recorded->report) + sentLine;
}

std::vector<WireEvent> eventsOf(const std::filesystem::path& log) {
    try {
        return parseWireLog(readFile(log));
    } catch (const Fault& fault) {
        throw Fault("Cannot replay " + log.string() + ": " + fault.what());
    }
}

} // namespace

ReplayHost::ReplayHost(const std::filesystem::path& log, Clock& clock, std::uint16_t vendor,
                       std::uint16_t product)
    : clock_(clock), vendor_(vendor), product_(product), events_(eventsOf(log)) {
    for (const WireEvent& event : events_)
        boards_ = std::max(boards_, event.board + 1);
}

bool ReplayHost::finished() const {
    return std::none_of(events_.begin() + static_cast<std::ptrdiff_t>(next_), events_.end(),
                        [](const WireEvent& event) { return event.direction == WireEvent::Direction::Out; });
}

std::vector<DeviceInfo> ReplayHost::list() {
    std::vector<DeviceInfo> devices;
    devices.reserve(static_cast<std::size_t>(boards_));
    for (int board = 0; board < boards_; ++board)
        devices.push_back({vendor_, product_, pathOf(board)});
    return devices;
}

Handle ReplayHost::open(const std::string& path) {
    for (int board = 0; board < boards_; ++board) {
        if (path == pathOf(board)) {
            open_.emplace(++lastHandle_, board);
            return lastHandle_;
        }
    }
    lastError_ = "The recording has no board \"" + path + "\"";
    return kNoHandle;
}

void ReplayHost::diverge(const WireEvent* recorded, const Report& sent, const std::string& text) {
    diverged_ = true;
    Difference difference;
    difference.request = requests_;
    if (recorded)
        difference.recorded = recorded->report;
    difference.sent = sent;
    difference.text = text;
    lastError_ = difference.text;
    if (onDifference_)
        onDifference_(difference);
}

bool ReplayHost::write(Handle handle, const Report& report) {
    const auto board = open_.find(handle);
    if (board == open_.end()) {
        lastError_ = "The board is not open";
        return false;
    }
    if (diverged_)
        return false;
    ++requests_;
    const auto request =
        std::find_if(events_.begin() + static_cast<std::ptrdiff_t>(next_), events_.end(),
                     [](const WireEvent& event) { return event.direction == WireEvent::Direction::Out; });
    const WireEvent* recorded = request == events_.end() ? nullptr : &*request;
    if (!recorded || recorded->board != board->second || recorded->report != report) {
        diverge(recorded, report, differenceText(requests_, recorded, board->second, report));
        return false;
    }
    sent_ = report;
    next_ = static_cast<std::size_t>(request - events_.begin()) + 1;
    offset_ = clock_.now() - recorded->at;
    if (recorded->failed)
        lastError_ = "The board did not take the report when it was recorded";
    return !recorded->failed;
}

ReadResult ReplayHost::read(Handle handle, Report& report, std::chrono::milliseconds timeout) {
    const auto board = open_.find(handle);
    if (board == open_.end()) {
        lastError_ = "The board is not open";
        return ReadResult::Failed;
    }
    timeout = std::max(timeout, Milliseconds{0});
    const WireEvent* next = next_ < events_.size() ? &events_[next_] : nullptr;
    if (!diverged_ && next && next->direction == WireEvent::Direction::In && next->board == board->second) {
        // What waited before the first request was there when the recording began.
        const Milliseconds wait =
            requests_ == 0 ? Milliseconds{0} : std::max(next->at + offset_ - clock_.now(), Milliseconds{0});
        if (wait <= timeout) {
            clock_.sleep(wait);
            report = next->report;
            ++next_;
            return ReadResult::Arrived;
        }
    }
    clock_.sleep(timeout);
    // A drain looks for what may be there; so long a wait is for a reply.
    if (!diverged_ && next == nullptr && requests_ > 0 && timeout >= kReplyWait)
        diverge(nullptr, sent_,
                "The recording ends before the reply to request " + std::to_string(requests_) +
                    "\n  sent     board " + std::to_string(board->second) + ": " + reportText(sent_));
    return ReadResult::TimedOut;
}

void ReplayHost::close(Handle handle) noexcept {
    open_.erase(handle);
}

} // namespace vrk::hid
