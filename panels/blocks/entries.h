#pragma once

#include "platform/controls/controls.h"

#include <functional>
#include <string>

namespace vrk {

/// What a box for a hexadecimal byte does with its text.
struct HexEntry {
    /// Takes the place of a value outside 1 to the highest.
    std::string fallback = "00";
    /// Highest value that stays when the box is left; on Enter it is always 256.
    int highestWhenLeft = 256;
    /// True where "NA" stands for a register or address that the part does not have, and stays.
    bool mayBeNone = false;
    /// Run after the text has been tidied.
    std::function<void()> onEnter{};
    std::function<void()> onLeave{};
};

/// Makes a box one for a hexadecimal byte: only hexadecimal keys pass; on Enter and when it is left the text
/// is upper-cased and a value out of range becomes the fallback.
void hexEntry(TextBox& box, HexEntry entry = {});

/// A box for a hexadecimal byte that may be 0: only hexadecimal keys pass, and when it is left the text is
/// upper-cased and a value that is 0 or no byte becomes "00". \param digits that the box takes.
void hexByteEntry(TextBox& box, int digits);

} // namespace vrk
