#pragma once

#include "panels/blocks/BenchServices.h"
#include "panels/blocks/spiRow.h"
#include "panels/instruction/InstructionCompanion.h"
#include "panels/instruction/tenBitInstructions.h"
#include "platform/controls/Panel.h"

#include <functional>
#include <string>

namespace vrk {

/// The parts with one ten-bit wiper and four data registers on SPI, beside the SPI panel: a button for each
/// read, write and transfer, with its fixed command. Element 0 is the wiper, 1 to 4 are the data registers.
class Frm3310 final : public Panel {
  public:
    static constexpr const char* kTitle = "Q3310/ 1 SPI Register Control";
    static constexpr int kRegisters = tenBit::kRegisters;
    static constexpr int kDataRegisters = tenBit::kDataRegisters;

    struct Uses {
        BenchServices& services;
        /// The SPI panel; loads it unseen if need be.
        std::function<InstructionCompanion&()> companion;
    };
    Frm3310(PanelContext& context, Uses uses);

    bool closeHides() const override { return true; }

    Frame frq331x{*this, "frq331x"};
    Label Label12{*this, "Label12"};
    ControlArray<Label> Label13{*this, "Label13", 0, 1};
    ControlArray<TextBox> txtWrQ3319{*this, "txtWrQ3319", 0, kRegisters - 1};
    ControlArray<Button> CMDq331X_Write{*this, "CMDq331X_Write", 0, kRegisters - 1};
    ControlArray<Reading> lblRdq331x{*this, "lblRdq331x", 0, kRegisters - 1};
    ControlArray<Button> CMDq331X_Read{*this, "CMDq331X_Read", 0, kRegisters - 1};
    ControlArray<Button> cmdQ331xDatatoWiper{*this, "cmdQ331xDatatoWiper", 0, kDataRegisters - 1};
    ControlArray<Button> cmdQ331xWipertoData{*this, "cmdQ331xWipertoData", 0, kDataRegisters - 1};

    void CMDq331X_Write_Click(int index);
    void CMDq331X_Read_Click(int index);
    void cmdQ331xDatatoWiper_Click(int index);
    void cmdQ331xWipertoData_Click(int index);

    /// What was read of the part no longer holds. \param cause in words, for the user
    void markRegistersStale(const std::string& cause);

  private:
    InstructionCompanion& companion() const { return uses_.companion(); }
    /// While it stands the panel takes no gesture: an exchange lets events run, and the frame of a second
    /// click would go out in the place of the first one's.
    [[nodiscard]] OnScopeExit takeNoGesture();
    void transfer(const char* command, const std::string& what, Reading& recipient);
    /// Whether the panel is set up for such a part; else it sends what its fields hold from before.
    bool composes() const;
    std::string readId() const;
    void blink();
    /// Why the part has not done what the frame says, in words; empty if it has.
    std::string failure(bool composed, const std::string& command, const SpiRowFields& row) const;
    void tellOutcome(const std::string& failure, const std::string& what, const std::string& value,
                     const Control& field);

    Uses uses_;
};

} // namespace vrk
