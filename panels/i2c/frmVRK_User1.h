#pragma once

#include "panels/WiperPanel.h"
#include "panels/i2c/i2cParts.h"
#include "panels/instruction/InstructionCompanion.h"
#include "panels/instruction/InstructionEntry.h"

#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// The I2C panel: one panel for all parts that are controlled over I2C. The part selected fixes bus address,
/// control register, taps, channels, and the sizes of address and data.
class frmVRK_User1 final : public WiperPanel, public InstructionEntry, public InstructionCompanion {
  public:
    /// \param instructions the slot of the instruction panel beside this one.
    frmVRK_User1(PanelContext& context, BenchServices& services, WiperState& state,
                 PanelSlotBase& instructions);

    void Form_Load() override;
    /// Brings back the part's groups and bus options when the panel was left while the table stood.
    void Form_Activate() override;

    // Set-up
    MenuEntry mnu_I2cList{*this, "mnu_I2cList"};
    MenuEntry mnu_KV4071{*this, "mnu_KV4071"};
    MenuEntry mnu_KV4074{*this, "mnu_KV4074"};
    MenuEntry mnuKV4078{*this, "mnuKV4078"};
    MenuEntry mnuKV6021{*this, "mnuKV6021"};
    ComboBox cboI2CClock{*this, "cboI2CClock"};

    /// Selection from the product table; stands until the user has returned from it.
    void mnu_I2cList_Click();
    void mnu_KV4071_Click();
    void mnu_KV4074_Click();
    void mnuKV4078_Click();
    void mnuKV6021_Click();
    void cboI2CClock_Click();

    // Registers
    Label Label2{*this, "Label2"};
    TextBox txtACRAddress{*this, "txtACRAddress"};
    TextBox txtGPAddress{*this, "txtGPAddress"};

    // Groups that one family shows
    Frame Frq4422{*this, "Frq4422"};
    Frame frq331x{*this, "frq331x"};
    ControlArray<TextBox> txtWrQ3319{*this, "txtWrQ3319", 0, 4};
    ControlArray<Reading> lblRdq331x{*this, "lblRdq331x", 0, 4};

    // Parts with a ten-bit wiper and four data registers
    ControlArray<Button> CMDq331X_Read{*this, "CMDq331X_Read", 0, 4};
    ControlArray<Button> CMDq331X_Write{*this, "CMDq331X_Write", 0, 4};
    ControlArray<Button> cmdQ331xDatatoWiper{*this, "cmdQ331xDatatoWiper", 0, 3};
    ControlArray<Button> cmdQ331xWipertoData{*this, "cmdQ331xWipertoData", 0, 3};

    void CMDq331X_Read_Click(int index);
    void CMDq331X_Write_Click(int index);
    void cmdQ331xDatatoWiper_Click(int index);
    void cmdQ331xWipertoData_Click(int index);

    // Parts with four banks of data registers and direct pins
    /// DS0, DS1, SCL, CS, U/D: P0.6, P0.7, P1.0, P1.1, P1.2
    ControlArray<CheckBox> Chq4422{*this, "Chq4422", 0, 4};
    ControlArray<OptionButton> opt4422{*this, "opt4422", 0, 4};
    ControlArray<Button> cmdUp{*this, "cmdUp", 0, 2};
    Button cmdRdAllq44{*this, "cmdRdAllq44"};
    Button cmdSampleq44{*this, "cmdSampleq44"};
    CheckBox ChkAutoSample{*this, "ChkAutoSample"};
    Button cdmAuto_Init{*this, "cdmAuto_Init"};
    Label lblBank{*this, "lblBank"};

    void Chq4422_Click(int index);
    void opt4422_Click(int index);
    void cmdUp_Click(int index);
    void cmdRdAllq44_Click();
    void cmdSampleq44_Click();
    void cdmAuto_Init_Click();

    /// One write or read of the register `reg`, which is the channel's field index too. Lamps and a message
    /// tell the outcome.
    void Wrt_VRK(int reg);
    void Read_VRK(int reg);

    Bus bus() const override { return Bus::I2C; }
    StoreRules storeRules() const override;
    std::string busName() const override { return "I2C"; }
    WiperPanel& devicePanel() override { return *this; }
    void wipersMoved() override { markChannelsStale("an instruction has moved wipers since"); }
    std::vector<MenuEntry*> partEntries() override;

  protected:
    void partChanged() override;
    void placePins() override;
    void addressChanged() override;
    void supplyChanged() override;

  private:
    void wireSetup();
    void wireRegisters();
    void wireFamilies();
    void markDataRegistersStale(const std::string& cause);
    void leaveFamily();
    void beforeTable() override;
    std::string tableRowFault(const ProductTable& table) const override;
    void takeTableRow(const ProductTable& table) override;
    void afterTable() override;
    void applyFamily();
    void beforeRead(int channel) override;
    bool writeWiper(int channel) override;
    std::string sentText(int channel) const override;
    std::optional<int> readWiper(int channel) override;
    std::string failureDetail() const override;
    int shownPosition(int value) const override;
    void labelBank();
    /// \param recipient shows the register that the transfer changes.
    void transferInstruction(const Button& button, const char* instruction, Reading& recipient);
    void placeDirectPins();
    void setDirectPin(int index, int value);
    void choosePart(const I2cPartFacts& part);
    void setAddressBytes();
    void setBusAddress();
    void mirrorClocks();
    /// Spreads a value of two bytes over the console's write fields.
    void splitTwoBytes(const std::string& hex);
    int twoByteReading();
    void readThroughInstruction(int reg);
    bool lastTransferGood() const;
    bool lastReadGood();
    void writeOutcome();
    void readOutcome();
    Pace registerPace(RegisterAction action) const override;
    TextBox& registerAddress(RegisterAction action) override;
    void noRegister(RegisterAction action) override;
    RegisterOutcome exchangeRegister(RegisterAction action) override;
    void afterRegister(RegisterAction action) override;
    std::string readRegister(RegisterAction action);
    void writeRegister(RegisterAction action);

    std::string lastAddressText_ = "50";
    OptionGroup bankGroup_;
    bool familyAway_ = false;    ///< taken back for the table; comes again behind it, or with the panel
    bool familyOptions_ = false; ///< a family has changed captions and bus options
    Subscription clocks_;
};

} // namespace vrk
