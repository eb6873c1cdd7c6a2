#include "panels/WiperPanel.h"
#include "panels/instruction/frm_q4410.h"
#include "panels/instruction/frm_q4420.h"

namespace vrk {

frm_q4410::frm_q4410(PanelContext& panelContext, const Uses& uses)
    : InstructionPanel(
          panelContext, "frm_q4410", kTitle, uses,
          {.frame = "Q4410/1 Instruction Set",
           .resultLamp = "I2C ACK",
           .failure = "Write VRK Error, Check Device Address, VCC & AVDD Power and I2C Connections ",
           .failureTitle = " Error during Write to VRK "},
          std::make_unique<I2cInstructionBus>(uses.services, panelContext, [device = uses.companion] {
              return device().devicePanel().txtDeviceAdr.text();
          })) {}

frm_q4420::frm_q4420(PanelContext& panelContext, const Uses& uses)
    : InstructionPanel(
          panelContext, "frm_q4420", kTitle, uses,
          {.frame = "q4420/1 Instruction Set",
           .resultLamp = "USB Comm.",
           .failure = "USB Communications Error, VCC & AVDD Power and USB Connections ",
           .failureTitle = " Restart App if problem continues "},
          std::make_unique<SpiInstructionBus>(uses.services, panelContext, [device = uses.companion] {
              InstructionCompanion& panel = device();
              return SpiInstructionBus::Frame{panel.devicePanel().txtDeviceAdr.text(),
                                              panel.readFrameLength()};
          })) {}

} // namespace vrk
