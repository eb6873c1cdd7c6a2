#pragma once

#include "panels/WiperPanel.h"
#include "panels/blocks/BenchServices.h"
#include "panels/instruction/InstructionPanel.h"
#include "platform/controls/PanelBlock.h"

#include <string>

namespace vrk {

/// The way from a device panel to the instruction panel beside it, shown for the quad parts.
class InstructionEntry : public PanelBlock {
  public:
    void cmdShowq4410_Click();
    /// Has every wiper stored in its data register 0, from which the part recalls it.
    void cmdStoreWCRs_Click();

  protected:
    /// \param slot of the instruction panel.
    InstructionEntry(WiperPanel& panel, BenchServices& services, PanelSlotBase& slot, const char* family);

    /// What the instruction panel has read no longer holds.
    void markInstructionsStale(const std::string& cause);
    void unloadInstructions() { slot_.unload(); }
    /// A part without such instructions was chosen. What the panel was set to stays.
    void hideInstructions();
    InstructionPanel& loadInstructions() const { return static_cast<InstructionPanel&>(slot_.load()); }
    /// Ahead of the panel's being shown.
    virtual void prepareInstructions(InstructionPanel& /*panel*/) {}

    /// nullptr while it is not loaded.
    InstructionPanel* instructionPanel() const;

  private:
    BenchServices& services_;
    PanelSlotBase& slot_;
};

} // namespace vrk
