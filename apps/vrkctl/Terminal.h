#pragma once

#include "apps/vrkctl/Options.h"

#include <chrono>
#include <string>
#include <string_view>

/// What goes to the person at the terminal: messages and progress, on stderr; data alone goes to stdout.
namespace vrk {

/// "vrkctl: text" on a line of its own.
void tell(const std::string& text);

/// Data, on stdout, at once: what is shown has been written. \throws CommandError when it cannot be written,
/// nobody reads any more, or a signal came while nobody read.
void put(std::string_view text);

/// Text of a file that others wrote, for people: control characters, which a terminal would obey, as "?".
std::string printable(std::string text);

/// Formats as printf does. \see put
[[gnu::format(printf, 1, 2)]] void putf(const char* format, ...);

/// What a failed write of the output means for the exit code. \param error of the system, or ECANCELED.
ExitCode outputFailure(int error);

/// Tells that a file which the user asked for is not whole; the work goes on, and the exit code will say it.
void tellFileFailed(const std::string& text);
/// The one of two exit codes that counts: a signal or a reader that left, then the link, a file, a check.
ExitCode heavier(ExitCode one, ExitCode other);
/// The exit code of a command that would end with `code`: with the signal that came and the files that are
/// not whole.
ExitCode finalCode(ExitCode code);

/// True if stdout is a terminal that may be coloured: NO_COLOR is not set.
bool colouredOutput();

/// A bar with the time left, where stderr is a terminal and stdout is not: rows of data show the progress as
/// well. Nothing at all elsewhere.
class ProgressBarLine {
  public:
    ProgressBarLine(std::string what, int steps);
    ~ProgressBarLine();
    ProgressBarLine(const ProgressBarLine&) = delete;
    ProgressBarLine& operator=(const ProgressBarLine&) = delete;

    void done(int steps);
    /// Another number of steps, from now on.
    void restart(int steps);
    /// Takes the bar away, so that a line can be written.
    void clear();

  private:
    using Time = std::chrono::steady_clock::time_point;

    std::string what_;
    int steps_;
    bool shown_;
    bool drawn_ = false;
    Time began_ = std::chrono::steady_clock::now();
    Time last_{};
};

} // namespace vrk
