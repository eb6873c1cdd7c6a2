#pragma once

#include <functional>

namespace vrk {

/// While it exists Ctrl-C and the system's request to end only set a flag, so that a command can leave the
/// board as it should be. A second one ends the program at once.
class Interrupt {
  public:
    /// \param onSignal runs inside the signal handler: it may only do what such a handler may.
    explicit Interrupt(std::function<void()> onSignal = {});
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    bool requested() const;
};

} // namespace vrk
