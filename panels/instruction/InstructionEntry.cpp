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
    prepareInstructions(loadInstructions());
    slot_.show();
}

void InstructionEntry::cmdStoreWCRs_Click() {
    InstructionPanel& panel = loadInstructions();
    if (panel.busy()) {
        // Its choice would change under a loop's next instruction: each of the others would store as well.
        host().tell(false, "Store refused", "an instruction of the part's own panel is under way");
        return;
    }
    for (OptionButton* option : std::initializer_list<OptionButton*>{
             &panel.OptInstruction[static_cast<int>(InstructionKind::AllWiperToData)], &panel.OptWiper[0],
             &panel.OptRegSel[0]}) {
        option->setValue(false);
        option->setValue(true);
    }
    panel.cmdDoInstruction_Click();
}

void InstructionEntry::hideInstructions() {
    if (slot_.visible())
        slot_.hide();
}

void InstructionEntry::markInstructionsStale(const std::string& cause) {
    if (InstructionPanel* panel = instructionPanel())
        panel->markRegistersStale(cause);
}

} // namespace vrk
