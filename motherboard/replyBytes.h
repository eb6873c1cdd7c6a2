#pragma once

#include "link/readings.h"

namespace vrk {

/// Shows the controller console's bytes in the boxes of an exchange that it has just made.
/// \param count boxes to fill, more than the exchange read where callers count on the text of the next one.
/// \param asked when the exchange began: what stood there by then answers something else and is no reading.
inline void takeReply(ControlArray<TextBox>& to, const ControlArray<TextBox>& from, int count,
                      Milliseconds asked) {
    for (int k = 0; k < count; ++k) {
        takeReading(to[k], from[k]);
        const auto& worth = from[k].freshness();
        if (worth && worth->state == Freshness::State::Fresh && worth->since <= asked)
            to[k].markUnread();
    }
}

} // namespace vrk
