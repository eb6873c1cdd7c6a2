#pragma once

#include "panels/instruction/InstructionPanel.h"

namespace vrk {

/// The instruction panel of the quad parts on SPI, beside the SPI panel.
class frm_q4420 final : public InstructionPanel {
  public:
    static constexpr const char* kTitle = "q4420/1  Instruction Set, Register Controls and Status Detail";
    frm_q4420(PanelContext& context, const Uses& uses);

    /// The heading that the panel has from the device panel on.
    void takeFamilyName() { FrPot.setCaption("Q4420/1 Instruction Set"); }
};

} // namespace vrk
