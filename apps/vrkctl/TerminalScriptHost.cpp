#include "apps/vrkctl/TerminalScriptHost.h"

#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Terminal.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace vrk {

namespace {

enum class Answer { GoOn, Stop };

/// A line from the user, however many pieces it comes in. What stands behind its end is left for the next.
Answer readAnswer() {
    bool stop = false;
    for (bool first = true;; first = false) {
        std::array<pollfd, 2> ready = {{{STDIN_FILENO, POLLIN, 0}, {interrupt::descriptor(), POLLIN, 0}}};
        if (poll(ready.data(), ready.size(), -1) < 0 && errno == EINTR)
            continue;
        char letter = 0;
        if (ready[1].revents != 0 || ::read(STDIN_FILENO, &letter, 1) != 1)
            return Answer::Stop;
        if (letter == '\n')
            return stop ? Answer::Stop : Answer::GoOn;
        stop = stop || (first && (letter == 'q' || letter == 'Q'));
    }
}

} // namespace

bool TerminalScriptHost::stopping() const {
    return stopped_ || interrupt::requested().has_value();
}

void TerminalScriptHost::letEventsRun() {
    events_.letEventsRun();
    if (stopping())
        abort_ = true;
}

void TerminalScriptHost::wait(Milliseconds duration) {
    constexpr Milliseconds kSlice{20};
    const Milliseconds end = now() + duration;
    while (now() < end && !stopping()) {
        events_.letEventsRun();
        events_.clock().sleep(std::clamp(end - now(), Milliseconds{0}, kSlice));
    }
}

void TerminalScriptHost::waitForEvents() {
    wait(Milliseconds{50});
}

bool TerminalScriptHost::confirm(const std::string& text) {
    // The panel's words name buttons, which a terminal has not.
    const std::string where = trimmed(text.substr(0, text.find("Click OK")));
    if (pauses_ == Pauses::Ask) {
        tell(where + " - Enter goes on, q and Enter stops");
        return readAnswer() == Answer::GoOn;
    }
    const bool goOn = pauses_ == Pauses::Continue;
    tell(where + (goOn ? " - passed over" : " - stopped; --pauses continue goes on"));
    return goOn;
}

void TerminalScriptHost::say(const std::string& text) {
    tell(trimmed(text));
}

} // namespace vrk
