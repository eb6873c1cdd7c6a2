#pragma once

#include "link/frmMainF340.h"
#include "motherboard/SupplyPanel.h"
#include "motherboard/boardState.h"
#include "platform/controls/Panel.h"

#include <functional>
#include <optional>

namespace vrk {

/// The motherboard console: the host's image of the 24 pins, the analog inputs, the supplies, and the I2C and
/// SPI boxes. Device panels change pins through its image only: they set `chkPData(i)`, run
/// `chkPData_Click(i)`, then `cmdWrtPipe1_Click`.
class frmMotherboardDAQ2 final : public Panel {
  public:
    static constexpr int kPins = 24;
    static constexpr int kRegisters = 6;
    /// Pins that others name.
    enum Pin : int {
        kPinMotherboardSwitch = 11,
        kPinShutdown = 10,
        kPinSupplySelect = 20,
        kPinVcc = 21,
        kPinMinus = 22
    };

    struct Uses {
        PanelSlot<class frmMainF340>& console;
        modHID& link;
        Trace& trace;
        AnalogState& analog;
        PortState& ports;
        SupplyState& supply;
        std::function<void()> unloadSelf;
    };

    frmMotherboardDAQ2(PanelContext& context, Uses uses);

    void Form_Load() override;
    void Form_Unload() override;

    // Ports
    ControlArray<CheckBox> chkPData{*this, "chkPData", 0, kPins - 1};
    ControlArray<CheckBox> chkP0OutEn{*this, "chkP0OutEn", 0, kPins - 1};
    ControlArray<Label> lblPbuf{*this, "lblPbuf", 0, kRegisters - 1};
    ControlArray<TextBox> txtPBuf{*this, "txtPBuf", 0, kRegisters - 1};
    ControlArray<TextBox> txtPBufRd{*this, "txtPBufRd", 0, kRegisters - 1};
    Button cmdWrtPipe1{*this, "cmdWrtPipe1"};
    Button cmdReadPipe1{*this, "cmdReadPipe1"};
    Button cmdTallyGPIO{*this, "cmdTallyGPIO"};

    void chkPData_Click(int index);
    void chkP0OutEn_Click(int index);
    /// Sends all six registers, data before drive. Waits for a write that is under way.
    void cmdWrtPipe1_Click();
    void cmdReadPipe1_Click();
    void cmdTallyGPIO_Click();
    void Reverse_Tally_GPIO();
    /// Sets a pin's data and runs its click, as every device panel does.
    void setPin(int index, int value);
    /// Image, options and lamps of both supplies as the controller console has read their pins. Nothing is
    /// sent. \return true if they stand otherwise than shown until now
    bool followSupplyPins();
    struct SupplyPins {
        bool vcc;
        bool minus;
    };
    /// What the board says of the pins that switch the supplies, read anew if their port was written since.
    /// nullopt if it does not say.
    std::optional<SupplyPins> supplyPins();
    /// Makes image, options and lamps of both supplies, and the controller console's boxes, those of the
    /// pins.
    void takeSupplyPins(const SupplyPins& pins);
    /// Makes pins and drive modes of the board those of the boxes again, the controller console's mirror too:
    /// what that has read of a board behind its power-up would go out with the next chip select.
    void resendImage();
    /// Another board is in use: nothing that is shown was read from it.
    void boardChosen();
    /// Lamps and options of the panel become this console's, without a click.
    void showSuppliesOn(SupplyPanel& panel);

    // Analog inputs
    ComboBox Combo1{*this, "Combo1"};
    TextBox txtADDec{*this, "txtADDec"};
    ControlArray<TextBox> txtRdgs{*this, "txtRdgs", 0, 2};
    ControlArray<Label> lblVINP{*this, "lblVINP", 0, 6};
    ControlArray<TextBox> txtGPIOUserName{*this, "txtGPIOUserName", 0, 6};
    ControlArray<Lamp> ShpADSample{*this, "ShpADSample", 0, 6};
    Lamp shpSample{*this, "shpSample"};
    Button cmdSetMode{*this, "cmdSetMode"};
    Button cmdSample{*this, "cmdSample"};
    Button cmdEndSampling{*this, "cmdEndSampling"};
    Button cmdReadAllAD{*this, "cmdReadAllAD"};
    Label Label9{*this, "Label9"};
    ComboBox CboIntTime{*this, "CboIntTime"};

    /// One conversion of the channel chosen: the one measurement of the whole system. After a channel change
    /// the first conversion is of the channel before, so callers read twice.
    void READ_AD();
    /// The last conversion is one of the channel that was chosen.
    bool measured() const;
    void Combo1_Click();
    void cmdSetMode_Click();
    void cmdReadAllAD_Click();
    void cmdSample_Click();
    void cmdEndSampling_Click();

    // Supplies
    ControlArray<OptionButton> OptVCC{*this, "OptVCC", 0, 1};
    ControlArray<OptionButton> OptVCCMinus{*this, "OptVCCMinus", 0, 1};
    CheckBox ChkTrack{*this, "ChkTrack"};
    Lamp ShpVCCon{*this, "ShpVCCon"};
    Lamp ShpVCCMinusOn{*this, "ShpVCCMinusOn"};
    ControlArray<TextBox> txtSPIwr{*this, "txtSPIwr", 0, 15};
    ControlArray<TextBox> txtSPIRd{*this, "txtSPIRd", 0, 3};
    Label lblVCCVoltsRDBK{*this, "lblVCCVoltsRDBK"};
    Label lblCal_header{*this, "lblCal_header"};
    Button cmdSPIWrite{*this, "cmdSPIWrite"};
    Button cmdSPIWrite2{*this, "cmdSPIWrite2"};
    Button cmdSPRRdReg{*this, "cmdSPRRdReg"};
    Button cmdSPIReadData{*this, "cmdSPIReadData"};
    Button cmdSampleVCC{*this, "cmdSampleVCC"};
    Button cmdSetVCCVolts{*this, "cmdSetVCCVolts"};
    TextBox txtVCCVolts{*this, "txtVCCVolts"};

    void OptVCC_Click(int index);
    void OptVCCMinus_Click(int index);
    void ChkTrack_Click();
    void cmdSPIWrite_Click();
    void cmdSPIWrite2_Click();
    void cmdSPRRdReg_Click();
    void cmdSPIReadData_Click();
    void cmdSampleVCC_Click();

    // I2C and SPI boxes
    Frame fraI2C{*this, "fraI2C"};
    ControlArray<TextBox> txtI2COut{*this, "txtI2COut", 0, 3};
    ControlArray<TextBox> txtI2CIN{*this, "txtI2CIN", 0, 2};
    ControlArray<TextBox> txtI2CRead{*this, "txtI2CRead", 0, 3};
    TextBox txtI2CWriteStatus{*this, "txtI2CWriteStatus"};
    TextBox txtI2CReadStatus{*this, "txtI2CReadStatus"};
    ControlArray<Lamp> ShpI2CNAK{*this, "ShpI2CNAK", 0, 1};
    Button CMDI2CWrite{*this, "CMDI2CWrite"};
    Button cmdI2CRead{*this, "cmdI2CRead"};
    Frame Frmspio{*this, "Frmspio"};
    TextBox txtSPIWrQty2{*this, "txtSPIWrQty2"};
    TextBox txtSPIWrQty3{*this, "txtSPIWrQty3"};
    ControlArray<TextBox> txtSPIWrite2Data{*this, "txtSPIWrite2Data", 0, 5};
    ControlArray<TextBox> txtSPIWrite3Data{*this, "txtSPIWrite3Data", 0, 5};
    TextBox txtSPIReadCnt2{*this, "txtSPIReadCnt2"};
    TextBox txtSPIReadCnt3{*this, "txtSPIReadCnt3"};
    ControlArray<TextBox> txtSPIORead{*this, "txtSPIORead", 0, 5};
    ControlArray<TextBox> txtSPIORead3{*this, "txtSPIORead3", 0, 5};
    Button cmdSPIOWrite2{*this, "cmdSPIOWrite2"};
    Button cmdSPIOWrite3{*this, "cmdSPIOWrite3"};
    Button cmdShowMian{*this, "cmdShowMian"};
    Button cmdexit{*this, "cmdexit"};
    MenuEntry mnuGeneral_I2C{*this, "mnuGeneral_I2C"};

    void cmdI2CRead_Click();
    void CMDI2CWrite_Click();
    void cmdSPIOWrite2_Click();
    void cmdSPIOWrite3_Click();
    void cmdShowMian_Click();
    void cmdexit_Click();
    /// The lock of the thirteen buttons. Not counted: one enable undoes any number of disables.
    void cmdDisableButtons_Click();
    void cmdEnableBUttons_Click();

  private:
    /// Fields of one SPI row.
    struct SpiRow {
        TextBox& quantity;
        ControlArray<TextBox>& data;
        TextBox& count;
        ControlArray<TextBox>& read;
    };
    /// One row of the supply DAC's box.
    enum class DacRow : int { WriteSetup = 0, WriteData = 1, ReadSetup = 2, ReadData = 3 };

    class frmMainF340& console() {
        return *uses_.console;
    }
    void wirePorts();
    void wireAnalog();
    void wireSupplies();
    void wireBoxes();
    void hexBox(TextBox& box);
    void setButtonsEnabled(bool enabled);
    void setImageBit(int reg, int bit, bool set);
    void setDrive(int index, int value);
    void dacExchange(DacRow row);
    void supplySwitched();
    /// The same as long as nothing has been written to their port since.
    std::optional<SupplyPins> toldSupplyPins();
    void markMeasuredStale(const char* cause);
    void selectDac(bool selected);
    void spiExchange(const SpiRow& row);
    void fillChannels();
    SupplyPanel* activeSupply() const;
    void tellPanel(bool minus, int index);

    Uses uses_;
    OptionGroup vccGroup_;
    OptionGroup minusGroup_;
};

} // namespace vrk
