#pragma once

#include "panels/instruction/InstructionPanel.h"

namespace vrk {

/// The instruction panel of the quad parts on I2C, beside the I2C panel.
class frm_q4410 final : public InstructionPanel {
  public:
    static constexpr const char* kTitle = "q4410/1  Instruction Set, Register Controls and Status Detail";
    frm_q4410(PanelContext& context, const Uses& uses);
};

} // namespace vrk
