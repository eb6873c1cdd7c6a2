#pragma once

#include <chrono>
#include <string>

/// What goes to the person at the terminal: messages and progress, on stderr; data alone goes to stdout.
namespace vrk {

/// "vrkctl: text" on a line of its own.
void tell(const std::string& text);

/// True if stdout is a terminal that may be coloured: NO_COLOR is not set.
bool colouredOutput();

/// A bar with the time left, where stderr is a terminal; nothing at all elsewhere.
class ProgressBarLine {
  public:
    ProgressBarLine(std::string what, int steps);
    ~ProgressBarLine();
    ProgressBarLine(const ProgressBarLine&) = delete;
    ProgressBarLine& operator=(const ProgressBarLine&) = delete;

    void done(int steps);
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
