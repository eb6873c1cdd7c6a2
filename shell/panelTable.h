#pragma once

#include "platform/controls/Panel.h"

#include <vector>

namespace vrk {

class Bench;

/// What the shell knows of one panel.
struct PanelRow {
    static constexpr int kNoRow = -1;

    PanelSlotBase* slot = nullptr;
    /// Row of the start panel's list that opens it.
    int startRow = kNoRow;
    /// Panels that work for this one alone and go with it.
    std::vector<PanelSlotBase*> companions{};
    /// Heading of its page in the manual.
    const char* manualPage = "";
};

/// One row a panel, in the order in which panels load. A new panel is added here.
std::vector<PanelRow> makePanelTable(Bench& bench);

} // namespace vrk
