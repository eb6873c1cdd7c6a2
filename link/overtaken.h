#pragma once

#include "platform/controls/Control.h"
#include "platform/runtime/text.h"

#include <cstdint>
#include <string>

namespace vrk {

/// What was read of a register no longer holds once another value has been written to it.
/// \param shown the reading's text
inline void overtake(Control& reading, const std::string& shown, std::uint8_t written) {
    const auto& worth = reading.freshness();
    if (worth && worth->state == Freshness::State::Fresh && shown != byteToHex2(written))
        reading.markStale("the register was written since");
}

} // namespace vrk
