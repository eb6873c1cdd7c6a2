#include "apps/vrkctl/Terminal.h"

#include "apps/vrkctl/Interrupt.h"
#include "automation/descriptors.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <unistd.h>

namespace vrk {

namespace {
bool filesWhole = true;
}

void tell(const std::string& text) {
    writeWhole(STDERR_FILENO, "vrkctl: " + text + "\n", interrupt::descriptor());
}

void put(std::string_view text) {
    const int error = writeWhole(STDOUT_FILENO, text, interrupt::descriptor());
    if (error == 0)
        return;
    const ExitCode code = outputFailure(error);
    throw CommandError(code, code == ExitCode::File ? "the output could not be written: " +
                                                          std::generic_category().message(error)
                                                    : "");
}

std::string printable(std::string text) {
    constexpr char kDelete = 0x7F;
    std::replace_if(
        text.begin(), text.end(),
        [](char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == kDelete; }, '?');
    return text;
}

void putf(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(static_cast<std::size_t>(std::max(0, length)) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, again);
    va_end(again);
    text.pop_back();
    put(text);
}

ExitCode outputFailure(int error) {
    // A closed terminal fails the write as well: the signal says it better.
    if (const auto signalled = interrupt::requested())
        return *signalled;
    return error == EPIPE ? ExitCode::ReaderGone : ExitCode::File;
}

void tellFileFailed(const std::string& text) {
    tell(text);
    filesWhole = false;
}

namespace {
/// Wrong usage and a missing board end a command ahead of all else.
int weight(ExitCode code) {
    switch (code) {
    case ExitCode::Done:
        return 0;
    case ExitCode::CheckFailed:
        return 1;
    case ExitCode::File:
        return 2;
    case ExitCode::LinkLost:
        return 3;
    case ExitCode::NoBoard:
    case ExitCode::Usage:
        return 4;
    case ExitCode::ReaderGone:
        return 5;
    case ExitCode::HungUp:
    case ExitCode::Interrupted:
    case ExitCode::Quit:
    case ExitCode::Terminated:
        break;
    }
    return 6;
}
} // namespace

ExitCode heavier(ExitCode one, ExitCode other) {
    return weight(other) > weight(one) ? other : one;
}

ExitCode finalCode(ExitCode code) {
    code = heavier(code, filesWhole ? ExitCode::Done : ExitCode::File);
    return heavier(code, interrupt::requested().value_or(ExitCode::Done));
}

bool colouredOutput() {
    const char* noColour = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && (noColour == nullptr || *noColour == '\0');
}

ProgressBarLine::ProgressBarLine(std::string what, int steps)
    : what_(std::move(what)),
      steps_(std::max(1, steps)),
      shown_(isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0) {}

ProgressBarLine::~ProgressBarLine() {
    clear();
}

void ProgressBarLine::restart(int steps) {
    steps_ = std::max(1, steps);
    began_ = std::chrono::steady_clock::now();
}

void ProgressBarLine::done(int steps) {
    constexpr std::chrono::milliseconds kInterval{50};
    constexpr int kWidth = 30;
    const Time now = std::chrono::steady_clock::now();
    if (!shown_ || (now - last_ < kInterval && steps < steps_))
        return;
    last_ = now;
    drawn_ = true;
    steps = std::min(steps, steps_); // a service block runs more often than anybody knows
    const int full = static_cast<int>(static_cast<long long>(kWidth) * steps / steps_);
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
