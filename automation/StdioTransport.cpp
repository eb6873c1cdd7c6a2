#include "automation/StdioTransport.h"

#include "automation/descriptors.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vrk {

namespace {
/// How long an action may go on by itself when its client has closed the input: long enough for every action
/// that ends by itself on a bench, and an end for a sampling loop that nobody can stop any more.
constexpr Milliseconds kAloneLimit{600'000};
/// Bytes of lines that wait to be served: the longest line fits, and one more behind it.
constexpr std::size_t kMostWaiting = 2 * LineReader::kLongestLine;
} // namespace

LineReader::LineReader(int input, int stop) : input_(input), stop_(stop) {
    if (pipe(wakePipe_) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    thread_ = std::thread([this] { readAll(); });
}

LineReader::~LineReader() {
    leaving_ = true;
    wake();
    thread_.join();
    close(wakePipe_[0]);
    close(wakePipe_[1]);
}

void LineReader::wake() noexcept {
    const char byte = 0;
    [[maybe_unused]] const auto written = ::write(wakePipe_[1], &byte, 1);
}

void LineReader::readAll() {
    std::array<char, 65536> block{};
    bool stopped = false;
    while (true) {
        // A client that sends faster than it is served waits, as its pipe would make it.
        std::array<pollfd, 3> ready = {
            {{full() ? -1 : input_, POLLIN, 0}, {stop_, POLLIN, 0}, {wakePipe_[0], POLLIN, 0}}};
        if (poll(ready.data(), ready.size(), -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        stopped = ready[1].revents != 0;
        if (ready[2].revents != 0) {
            char byte = 0;
            [[maybe_unused]] const auto taken = ::read(wakePipe_[0], &byte, 1);
        }
        if (stopped || leaving_)
            break;
        if (ready[0].revents == 0)
            continue;
        const ssize_t count = ::read(input_, block.data(), block.size());
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (count <= 0)
            break;
        addText({block.data(), static_cast<std::size_t>(count)});
    }
    if (!stopped)
        addLine(); // a last one without its end
    const std::lock_guard lock(mutex_);
    ended_ = true;
    stopped_ = stopped;
    changed_.notify_all();
}

void LineReader::addText(std::string_view text) {
    while (!text.empty()) {
        const auto end = text.find('\n');
        const auto piece = text.substr(0, end);
        if (pending_.size() + piece.size() > kLongestLine) {
            pendingTooLong_ = true;
            pending_ = {};
        }
        if (!pendingTooLong_)
            pending_ += piece;
        if (end == std::string_view::npos)
            return;
        addLine();
        text.remove_prefix(end + 1);
    }
}

void LineReader::addLine() {
    Line line{std::exchange(pending_, {}), std::exchange(pendingTooLong_, false)};
    if (!line.text.empty() && line.text.back() == '\r')
        line.text.pop_back();
    if (line.text.empty() && !line.tooLong)
        return;
    const std::lock_guard lock(mutex_);
    waitingBytes_ += line.text.size() + sizeof(Line);
    lines_.push_back(std::move(line));
    changed_.notify_all();
}

bool LineReader::full() const {
    const std::lock_guard lock(mutex_);
    return waitingBytes_ >= kMostWaiting;
}

std::optional<LineReader::Line> LineReader::take() {
    const std::lock_guard lock(mutex_);
    if (lines_.empty())
        return std::nullopt;
    Line line = std::move(lines_.front());
    lines_.pop_front();
    const bool wasFull = waitingBytes_ >= kMostWaiting;
    waitingBytes_ -= line.text.size() + sizeof(Line);
    if (wasFull && waitingBytes_ < kMostWaiting)
        wake();
    return line;
}

std::size_t LineReader::waiting() const {
    const std::lock_guard lock(mutex_);
    return lines_.size();
}

void LineReader::wait(std::optional<std::chrono::milliseconds> most) {
    waitUntil([this] { return !lines_.empty() || ended_; }, most);
}

void LineReader::waitForEnd(std::optional<std::chrono::milliseconds> most) {
    waitUntil([this] { return ended_; }, most);
}

void LineReader::waitUntil(const std::function<bool()>& something,
                           std::optional<std::chrono::milliseconds> most) {
    std::unique_lock lock(mutex_);
    if (most)
        changed_.wait_for(lock, *most, something);
    else
        changed_.wait(lock, something);
}

bool LineReader::ended() const {
    const std::lock_guard lock(mutex_);
    return ended_;
}

bool LineReader::finished() const {
    const std::lock_guard lock(mutex_);
    return ended_ && lines_.empty();
}

bool LineReader::stopped() const {
    const std::lock_guard lock(mutex_);
    return stopped_;
}

StdioTransport::StdioTransport(const BenchTarget& bench, int input, int output, int stop)
    : events_(bench.events),
      virtualTime_(bench.virtualClock != nullptr),
      output_(output),
      stop_(stop),
      reader_(input, stop),
      server_(bench, [this](const std::string& line) { write(line); }) {
    events_.setHostPump([this] { pumpInsideAction(); });
    events_.setHostWait([this](std::optional<Milliseconds> untilNext) { waitInsideAction(untilNext); });
}

StdioTransport::~StdioTransport() {
    events_.setHostPump({});
    events_.setHostWait({});
}

void StdioTransport::write(const std::string& line) {
    if (outputError_ == 0)
        outputError_ = writeWhole(output_, line + "\n", stop_);
}

void StdioTransport::serveQueued(std::size_t most) {
    while (most-- > 0 && !stopping() && server_.mayTake()) {
        const auto line = reader_.take();
        if (!line)
            return;
        if (line->tooLong)
            server_.refuseLine("a line is at most " + std::to_string(LineReader::kLongestLine) + " bytes");
        else
            server_.handle(line->text);
        // What the request has queued (keys, say) comes before the next request, as in a window.
        events_.runDue();
        server_.settle();
    }
}

bool StdioTransport::alone() const {
    return reader_.finished() || (reader_.ended() && !server_.mayTake());
}

void StdioTransport::pumpInsideAction() {
    // Only what has come by now: a client that asks again at each answer must not keep the action from going
    // on.
    serveQueued(reader_.waiting());
    if (events_.ended())
        return;
    const Milliseconds now = events_.clock().now();
    if (alone() && (!aloneSince_ || std::exchange(handledAlone_, server_.handled()) != server_.handled()))
        aloneSince_ = now;
    if (stopping() || (aloneSince_ && now - *aloneSince_ > kAloneLimit))
        events_.endProgram();
}

void StdioTransport::waitInsideAction(std::optional<Milliseconds> untilNext) {
    if (server_.mayTake() && reader_.waiting() > 0)
        return; // no time passes ahead of what has come
    if (alone()) {
        // Nobody asks any more: time passes until pumpInsideAction() ends the action.
        constexpr Milliseconds kStep{100};
        events_.clock().sleep(std::min(untilNext.value_or(kStep), kStep));
        return;
    }
    // Virtual time stands still until a request moves it, unless one is to come by itself.
    if (virtualTime_ && untilNext && server_.expectsRequest()) {
        events_.clock().sleep(*untilNext);
        return;
    }
    const auto most = virtualTime_ ? std::nullopt : untilNext;
    if (server_.mayTake())
        reader_.wait(most);
    else
        reader_.waitForEnd(most);
}

void StdioTransport::run() {
    while (true) {
        serveQueued(reader_.waiting());
        events_.runDue();
        server_.settle();
        const auto next = events_.untilNextDue();
        const bool dueNow = next && next->count() == 0 && !events_.ended();
        if (stopping() || (reader_.finished() && !dueNow))
            return;
        // Virtual time stands still between requests, so that nothing happens which the client did not ask
        // for.
        if (!dueNow)
            reader_.wait(virtualTime_ || events_.ended() ? std::nullopt : next);
    }
}

} // namespace vrk
