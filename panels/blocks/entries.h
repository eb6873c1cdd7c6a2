#pragma once

#include "platform/controls/controls.h"

#include <functional>
#include <string>

namespace vrk {

/// Makes a box one for a hexadecimal byte: only hexadecimal keys pass; on Enter and when it is left the text
/// is upper-cased and a value outside 1 to 256 becomes `fallback`. \param onEnter runs after Enter has tidied
/// the text.
void hexEntry(TextBox& box, const std::string& fallback, std::function<void()> onEnter = {});

/// The same for a box in which "NA" stands for a register or address that the part does not have, and stays.
void hexEntryOrNone(TextBox& box, const std::string& fallback);

} // namespace vrk
