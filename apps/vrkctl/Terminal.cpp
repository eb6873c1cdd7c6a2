#include "apps/vrkctl/Terminal.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace vrk {

void tell(const std::string& text) {
    std::fprintf(stderr, "vrkctl: %s\n", text.c_str());
}

bool colouredOutput() {
    const char* noColour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && (noColour == nullptr || *noColour == '\0');
}

ProgressBarLine::ProgressBarLine(std::string what, int steps)
    : what_(std::move(what)), steps_(std::max(1, steps)), shown_(isatty(STDERR_FILENO) != 0) {}

ProgressBarLine::~ProgressBarLine() {
    clear();
}

void ProgressBarLine::done(int steps) {
    constexpr std::chrono::milliseconds kInterval{50};
    constexpr int kWidth = 30;
    const Time now = std::chrono::steady_clock::now();
    if (!shown_ || (now - last_ < kInterval && steps < steps_))
        return;
    last_ = now;
    drawn_ = true;
    const int full = kWidth * steps / steps_;
    const auto spent = std::chrono::duration<double>(now - began_).count();
    const int left = static_cast<int>(spent / std::max(1, steps) * (steps_ - steps) + 0.5);
    std::fprintf(stderr, "\r%s [%s%s] %d/%d, %d:%02d left ", what_.c_str(), std::string(full, '#').c_str(),
                 std::string(kWidth - full, '.').c_str(), steps, steps_, left / 60, left % 60);
    std::fflush(stderr);
}

void ProgressBarLine::clear() {
    constexpr const char* kEraseLine = "\r\033[K";
    if (drawn_)
        std::fputs(kEraseLine, stderr);
    drawn_ = false;
}

} // namespace vrk
