#include "automation/StdioTransport.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace vrk {

namespace {
/// How long an action may go on by itself when its client has closed the input: long enough for every action
/// that ends by itself on a bench, and an end for a sampling loop that nobody can stop any more.
constexpr Milliseconds kAloneLimit{600'000};
} // namespace

LineReader::LineReader(int input) : input_(input) {
    if (pipe(wakePipe_) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    thread_ = std::thread([this] { readAll(); });
}

LineReader::~LineReader() {
    stop_ = true;
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
    std::string pending;
    std::array<char, 65536> block{};
    const auto add = [this](std::string line) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty())
            return;
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
        changed_.notify_all();
    };
    while (!stop_) {
        std::array<pollfd, 2> ready = {{{input_, POLLIN, 0}, {wakePipe_[0], POLLIN, 0}}};
        if (poll(ready.data(), ready.size(), -1) < 0 && errno != EINTR)
            break;
        if (ready[1].revents != 0) {
            char byte = 0;
            [[maybe_unused]] const auto taken = ::read(wakePipe_[0], &byte, 1);
            const std::lock_guard lock(mutex_);
            woken_ = true;
            changed_.notify_all();
        }
        if (ready[0].revents == 0)
            continue;
        const ssize_t count = ::read(input_, block.data(), block.size());
        if (count < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (count <= 0)
            break;
        pending.append(block.data(), static_cast<std::size_t>(count));
        std::size_t from = 0;
        for (std::size_t end; (end = pending.find('\n', from)) != std::string::npos; from = end + 1)
            add(pending.substr(from, end - from));
        pending.erase(0, from);
    }
    add(std::move(pending)); // a last line without its end
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

std::optional<std::string> LineReader::take() {
    const std::lock_guard lock(mutex_);
    if (lines_.empty())
        return std::nullopt;
    std::string line = std::move(lines_.front());
    lines_.pop_front();
    return line;
}

void LineReader::wait(std::optional<std::chrono::milliseconds> most) {
    std::unique_lock lock(mutex_);
    const auto something = [this] { return !lines_.empty() || ended_ || woken_; };
    if (most)
        changed_.wait_for(lock, *most, something);
    else
        changed_.wait(lock, something);
    woken_ = false;
}

bool LineReader::finished() const {
    const std::lock_guard lock(mutex_);
    return ended_ && lines_.empty();
}

StdioTransport::StdioTransport(const BenchTarget& bench, int input, int output)
    : events_(bench.events),
      virtualTime_(bench.virtualClock != nullptr),
      output_(output),
      reader_(input),
      server_(bench, [this](const std::string& line) { write(line); }) {
    events_.setHostPump([this] { pumpInsideAction(); });
    events_.setHostWait([this](std::optional<Milliseconds> untilNext) { waitInsideAction(untilNext); });
}

StdioTransport::~StdioTransport() {
    events_.setHostPump({});
    events_.setHostWait({});
}

void StdioTransport::write(const std::string& line) {
    const std::string whole = line + "\n";
    for (std::size_t done = 0; done < whole.size() && !clientGone_;) {
        const ssize_t count = ::write(output_, whole.data() + done, whole.size() - done);
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else if (errno != EINTR || stop_)
            clientGone_ = true;
    }
}

void StdioTransport::serveQueued() {
    while (!stopping()) {
        const auto line = reader_.take();
        if (!line)
            return;
        server_.handle(*line);
        // What the request has queued (keys, say) comes before the next request, as in a window.
        events_.runDue();
        server_.settle();
    }
}

void StdioTransport::pumpInsideAction() {
    serveQueued();
    if (events_.ended())
        return;
    const Milliseconds now = events_.clock().now();
    if (reader_.finished() && !aloneSince_)
        aloneSince_ = now;
    if (stopping() || (aloneSince_ && now - *aloneSince_ > kAloneLimit))
        events_.endProgram();
}

void StdioTransport::waitInsideAction(std::optional<Milliseconds> untilNext) {
    if (reader_.finished()) {
        // Nobody asks any more: time passes until pumpInsideAction() ends the action.
        constexpr Milliseconds kStep{100};
        events_.clock().sleep(std::min(untilNext.value_or(kStep), kStep));
        return;
    }
    // Virtual time stands still until a request moves it, unless one is to come by itself.
    if (virtualTime_ && untilNext && server_.expectsRequest())
        events_.clock().sleep(*untilNext);
    else
        reader_.wait(virtualTime_ ? std::nullopt : untilNext);
}

void StdioTransport::run() {
    while (true) {
        serveQueued();
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

void StdioTransport::stop() noexcept {
    stop_ = true;
    reader_.wake();
}

} // namespace vrk
