#pragma once

#include "motherboard/frmMotherboardDAQ2.h"

#include <utility>

namespace vrk {

/// Makes the controller console's pin boxes those of the image; nothing is sent. What it has read of a board
/// behind that one's power-up would go out with the next chip select.
inline void alignConsole(frmMotherboardDAQ2& board, modHID& link) {
    const bool before = std::exchange(link.suppressControlEvents, true);
    const OnScopeExit restore([&link, before] { link.suppressControlEvents = before; });
    for (int pin = 0; pin < frmMotherboardDAQ2::kPins; ++pin) {
        board.chkPData_Click(pin);
        board.chkP0OutEn_Click(pin);
    }
}

/// Without Track the switch leaves VCC's bit in the image, and it goes out with every write of the ports.
inline void tellVccOn(frmMotherboardDAQ2& board) {
    const CheckBox& pin = board.chkPData[frmMotherboardDAQ2::kPinVcc];
    board.tell(false, "VCC is on, though switched off",
               "without Track its pin stays set and goes out with the others; clear P2.5 and write the ports",
               &pin);
}

} // namespace vrk
