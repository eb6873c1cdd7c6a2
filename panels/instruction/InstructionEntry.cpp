#include "panels/instruction/InstructionEntry.h"

#include "panels/blocks/vccCheck.h"

namespace vrk {

InstructionEntry::InstructionEntry(WiperPanel& panel, BenchServices& services, PanelSlotBase& slot,
                                   const char* family)
    : PanelBlock(static_cast<Panel&>(panel)), services_(services), slot_(slot) {
    panel.Frq4410Show.setCaption(family);
    bindClick(panel.cmdShowq4410, &InstructionEntry::cmdShowq4410_Click);
    bindClick(panel.cmdStoreWCRs, &InstructionEntry::cmdStoreWCRs_Click);
}

InstructionPanel* InstructionEntry::instructionPanel() const {
    return static_cast<InstructionPanel*>(slot_.panel());
}

void InstructionEntry::cmdShowq4410_Click() {
    if (!requireVcc(services_, host().context()))
        return;
    prepareInstructions(static_cast<InstructionPanel&>(slot_.load()));
    slot_.show();
}

void InstructionEntry::cmdStoreWCRs_Click() {
    auto& panel = static_cast<InstructionPanel&>(slot_.load());
    for (OptionButton* option : std::initializer_list<OptionButton*>{
             &panel.OptInstruction[static_cast<int>(InstructionKind::AllWiperToData)], &panel.OptWiper[0],
             &panel.OptRegSel[0]}) {
        option->setValue(false);
        option->setValue(true);
    }
    panel.cmdDoInstruction_Click();
}

void InstructionEntry::markInstructionsStale(const std::string& cause) {
    if (InstructionPanel* panel = instructionPanel())
        panel->markRegistersStale(cause);
}

} // namespace vrk
