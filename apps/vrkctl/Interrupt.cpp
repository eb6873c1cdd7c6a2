#include "apps/vrkctl/Interrupt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace vrk::interrupt {

namespace {
volatile std::sig_atomic_t firstSignal = 0;
int marks[2] = {-1, -1};

void mark(int number) {
    if (firstSignal != 0)
        return;
    firstSignal = number;
    const int kept = errno;
    [[maybe_unused]] const auto written = ::write(marks[1], "", 1);
    errno = kept;
}
} // namespace

void takeSignals() {
    // A descriptor that the parent has closed must not become the pipe's: writing data would be a signal.
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(standard, F_GETFD) < 0) // in the direction that fails as a closed one would
            open("/dev/null", standard == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (pipe(marks) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    struct sigaction action {};
    for (const int number : {SIGPIPE, SIGXFSZ}) {
        action.sa_handler = SIG_IGN;
        sigaction(number, &action, nullptr);
    }
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction before {};
        sigaction(number, nullptr, &before);
        action.sa_handler = mark;
        if (before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

std::optional<ExitCode> requested() {
    constexpr int kSignalled = 128; // what a shell adds to a signal's number
    if (firstSignal == 0)
        return std::nullopt;
    return static_cast<ExitCode>(kSignalled + firstSignal);
}

int descriptor() {
    return marks[0];
}

} // namespace vrk::interrupt
