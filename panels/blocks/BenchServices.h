#pragma once

#include "link/frmMainF340.h"
#include "motherboard/Motherboard.h"
#include "motherboard/frmMotherboardDAQ2.h"
#include "panels/blocks/ShellControl.h"
#include "platform/controls/Panel.h"

namespace vrk {

/// What a device panel works with: the consoles, the link under them and the state that all share. One for
/// each bench; outlives its panels.
struct BenchServices {
    PanelSlot<frmMainF340>& consoleSlot;
    PanelSlot<frmMotherboardDAQ2>& boardSlot;
    Motherboard& motherboard;
    modHID& link;
    AnalogState& analog;
    PortState& ports;
    SupplyState& supply;
    ShellState& state;
    RunState& run;
    ShellControl& shell;
    ProductTable& products;

    /// The consoles load at their first use.
    frmMainF340& console() const { return *consoleSlot; }
    frmMotherboardDAQ2& board() const { return *boardSlot; }
    bool vccOn() const { return board().OptVCC[0].value(); }
};

} // namespace vrk
