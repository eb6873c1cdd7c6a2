#pragma once

#include "panels/WiperPanel.h"

#include <array>

namespace vrk {

/// The I2C panel: one panel for all parts that are controlled over I2C. The part selected fixes bus address,
/// control register, taps, channels, and the sizes of address and data.
class frmVRK_User1 final : public WiperPanel {
  public:
    frmVRK_User1(PanelContext& context, Uses uses, WiperState& state);

    void Form_Load() override;

    // Set-up
    MenuEntry mnuDeviceSelect{*this, "mnuDeviceSelect"};
    MenuEntry mnu_I2cList{*this, "mnu_I2cList"};
    MenuEntry mnu_KV4071{*this, "mnu_KV4071"};
    MenuEntry mnu_KV4074{*this, "mnu_KV4074"};
    MenuEntry mnuKV4078{*this, "mnuKV4078"};
    MenuEntry mnuKV6021{*this, "mnuKV6021"};
    Frame fraADDRSelect{*this, "fraADDRSelect"};
    ControlArray<CheckBox> chkI2CAdr{*this, "chkI2CAdr", 0, 3};
    TextBox txtCalcAddr{*this, "txtCalcAddr"};
    Button cmdCopyAdr{*this, "cmdCopyAdr"};
    TextBox txtDeviceAdr{*this, "txtDeviceAdr"};
    Button cmdSlave{*this, "cmdSlave"};
    ComboBox cboRegSize{*this, "cboRegSize"};
    ComboBox cboDataSize{*this, "cboDataSize"};
    ComboBox cboI2CClock{*this, "cboI2CClock"};

    /// Selection from the product table; stands until the user has returned from it.
    void mnu_I2cList_Click();
    void mnu_KV4071_Click();
    void mnu_KV4074_Click();
    void mnuKV4078_Click();
    void mnuKV6021_Click();
    void chkI2CAdr_Click(int index);
    void cmdCopyAdr_Click();
    void cmdSlave_Click();
    void cboI2CClock_Click();

    // Registers
    Label Label2{*this, "Label2"};
    TextBox txtACRAddress{*this, "txtACRAddress"};
    /// 0 to write, 1 read
    ControlArray<TextBox> txtACR{*this, "txtACR", 0, 1};
    ControlArray<OptionButton> Option1{*this, "Option1", 0, 1};
    Frame FrmShutdown{*this, "FrmShutdown"};
    CheckBox chkShutdown{*this, "chkShutdown"};
    Label lblShutDown{*this, "lblShutDown"};
    Frame frmRegisterWrite{*this, "frmRegisterWrite"};
    TextBox txtGPAddress{*this, "txtGPAddress"};
    TextBox txtGPWrite{*this, "txtGPWrite"};
    Label lblGPRead{*this, "lblGPRead"};
    Label lblGDRs{*this, "lblGDRs"};
    Button cmdGPRead{*this, "cmdGPRead"};
    Button cmdWriteGP{*this, "cmdWriteGP"};
    /// 0 ACR write, 1 ACR read, 2 general register write, 3 its read
    ControlArray<Lamp> Shape2{*this, "Shape2", 0, 3};
    ControlArray<Button> cmdReadAllWipers{*this, "cmdReadAllWipers", 0, 1};

    void cmdACRRead_Click();
    void cmdACRWrite_Click();
    void Option1_Click(int index);
    void chkShutdown_Click();
    void cmdGPRead_Click();
    void cmdWriteGP_Click();
    /// 0 reads every channel, 1 takes what was read as the values to write
    void cmdReadAllWipers_Click(int index);

    // Groups that one family shows
    Frame Frq4410Show{*this, "Frq4410Show"};
    Frame Frq4422{*this, "Frq4422"};
    Frame frq331x{*this, "frq331x"};
    ControlArray<TextBox> txtWrQ3319{*this, "txtWrQ3319", 0, 4};
    ControlArray<Label> lblRdq331x{*this, "lblRdq331x", 0, 4};

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

    void Wrt_VRK(int reg) override;
    void Read_VRK(int reg) override;

    /// Options of the I2C service, as a load or a selection leaves them.
    std::array<int, 4> I2COptionValues{3, 1, -1, 0};

    std::string busText() const override { return "I2C " + txtDeviceAdr.text(); }

  private:
    /// What the menu knows of a part. The ACR byte and its text may differ; the text is what actions use.
    struct PartEntry {
        int acrByte;
        const char* acrText;
        int address;
        int taps;
        int channels;
        int chansOption;
        int tapsOption;
        const char* product;
    };

    void wireSetup();
    void wireRegisters();
    void wireFamilies();
    void leaveFamily();
    void takeTableRow();
    void applyFamily();
    void beforeRead(int index) override;
    void labelBank();
    void transferInstruction(const char* instruction);
    void setDirectPin(int index, int value);
    void choosePart(const PartEntry& part);
    void resetI2cOptions() { I2COptionValues = {3, 1, -1, 0}; }
    void setAddressBytes() override;
    void setBusAddress();
    void mirrorClocks();
    void clearAddressPins();
    /// Drives the pins whose boxes are checked.
    void raiseAddressPins();
    /// Spreads a value of two bytes over the console's write fields.
    void splitTwoBytes(const std::string& hex);
    int twoByteReading();
    void readThroughInstruction(int reg);
    void writeOutcome();
    void readOutcome();
    /// True if the part has no such register; then the user has been told.
    bool hasNone(const TextBox& address, const char* message);

    std::uint8_t acrAddressByte_ = 2;
    std::uint8_t deviceAddressByte_ = 0x50;
    std::string lastAddressText_ = "50";
    OptionGroup optionGroup_;
    OptionGroup bankGroup_;
    bool familyOptions_ = false; ///< a family has changed captions and bus options
    Subscription clocks_;
};

} // namespace vrk
