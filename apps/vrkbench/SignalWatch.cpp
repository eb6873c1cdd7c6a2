#include "apps/vrkbench/SignalWatch.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace vrk {

namespace {

constexpr std::array<int, 4> kSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr int kSignalled = 128;

// All that a handler may touch.
std::array<int, 2> wakePipe = {-1, -1};
volatile std::sig_atomic_t firstSignal = 0;

extern "C" void noteSignal(int number) {
    if (firstSignal == 0)
        firstSignal = number;
    const int before = errno;
    const char mark = 0;
    [[maybe_unused]] const auto written = write(wakePipe[1], &mark, 1);
    errno = before;
}

} // namespace

SignalWatch::SignalWatch(std::function<void()> came) : came_(std::move(came)) {
    if (pipe2(wakePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    notifier_.emplace(wakePipe[0], QSocketNotifier::Read);
    connect(&*notifier_, &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> marks{};
        while (read(wakePipe[0], marks.data(), marks.size()) > 0) {
        }
        came_();
    });
    for (const int number : kSignals) {
        struct sigaction action {};
        // One that the parent lets be ignored (nohup) stays so.
        if (sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN)
            continue;
        action = {};
        action.sa_handler = noteSignal;
        action.sa_flags = SA_RESTART;
        sigaction(number, &action, nullptr);
    }
}

SignalWatch::~SignalWatch() {
    // A second signal while the program goes down is as the system does it by itself.
    for (const int number : kSignals)
        std::signal(number, SIG_DFL);
    notifier_.reset();
    for (int& end : wakePipe)
        if (end >= 0)
            close(std::exchange(end, -1));
}

std::optional<int> SignalWatch::exitCode() const {
    return firstSignal == 0 ? std::nullopt : std::optional<int>(kSignalled + firstSignal);
}

} // namespace vrk
