#pragma once

#include "link/frmMainF340.h"

namespace vrk {

/// True if a write names its register. Where the console's options leave that byte out, the part takes the
/// value for the register and acknowledges it all the same. \param instructionPart whose instruction is the
/// value.
inline bool writeNamesRegister(const frmMainF340& console, bool instructionPart) {
    return console.chkRandom.checked() || instructionPart;
}

} // namespace vrk
