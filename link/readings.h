#pragma once

#include "platform/controls/controls.h"

namespace vrk {

/// Marks what a control shows by how the exchange behind it went.
inline void markReading(Control& control, bool good) {
    if (good)
        control.markRead();
    else
        control.markStale("the last read failed", true);
}

template <class C>
void markReadings(ControlArray<C>& controls, bool good) {
    for (auto& control : controls)
        markReading(*control, good);
}

/// Shows another panel's reading, with what it is worth.
inline void takeReading(TextBox& to, const TextBox& from) {
    to.setText(from.text());
    const auto& worth = from.freshness();
    if (worth && (worth->state == Freshness::State::Fresh || worth->failed))
        markReading(to, worth->state == Freshness::State::Fresh);
    else
        to.markUnread();
}

} // namespace vrk
