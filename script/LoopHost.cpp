#include "script/LoopHost.h"

#include <algorithm>

namespace vrk {

void LoopHost::wait(Milliseconds duration) {
    // Short enough for a window to feel alive.
    constexpr Milliseconds kSlice{4};
    const Milliseconds end = now() + duration;
    while (now() < end) {
        events_.letEventsRun();
        events_.clock().sleep(std::clamp(end - now(), Milliseconds{0}, kSlice));
    }
}

void LoopHost::waitForEvents() {
    events_.waitForEvents();
}

bool LoopHost::confirm(const std::string& text) {
    return dialogs_.show({text, {}, {Choice::Ok, Choice::Cancel}}) == Choice::Ok;
}

} // namespace vrk
