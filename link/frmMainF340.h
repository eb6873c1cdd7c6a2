#pragma once

#include "link/AnalogState.h"
#include "link/modHID.h"
#include "platform/controls/Panel.h"

#include <array>
#include <functional>
#include <span>
#include <string>

namespace vrk {

/// The controller console: one handler for each firmware operation. Other panels write a service's parameters
/// into its fields, call its handler and read the results from its fields.
class frmMainF340 final : public Panel {
  public:
    static constexpr int kPorts = 5;
    static constexpr int kSfrRows = 26;
    static constexpr int kByteBoxes = 64;

    struct Uses {
        modHID& link;
        Trace& trace;
        AnalogState& analog;
        std::function<void()> showMotherboardConsole;
    };

    frmMainF340(PanelContext& context, Uses uses);

    void Form_Load() override;
    void Form_Unload() override;

    // Board, LEDs, firmware
    ComboBox SSTab1{*this, "SSTab1"}; ///< tab in front, by number
    ComboBox cboEVBinstance{*this, "cboEVBinstance"};
    ControlArray<CheckBox> chkLED{*this, "chkLED", 0, 1};
    Label lblFirmwareVersion{*this, "lblFirmwareVersion"};
    TextBox txtFirmwareVersion{*this, "txtFirmwareVersion"};
    Button cmdFirmwareVersion{*this, "cmdFirmwareVersion"};
    Button cmdReconnect{*this, "cmdReconnect"};
    Button cmdQuit{*this, "cmdQuit"};
    MenuEntry mnuExit{*this, "mnuExit"};
    Button cmdHoswMother{*this, "cmdHoswMother"};

    void cboEVB_init();
    void cboEVBinstance_Click();
    void chkLED_Click(int index);
    void getLEDstate();
    void cmdFirmwareVersion_Click();
    void cmdReconnect_Click();
    void cmdQuit_Click();
    void mnuExit_Click();
    void cmdHoswMother_Click();
    /// Key filters of the entry fields.
    int checkValidEntryHex(int key);
    int checkValidEntryDecInt(int key);
    /// Ctrl+A selects all, Ctrl+C copies the selection, Ctrl+V replaces the whole text, past the key filter.
    void clipboardKeys(TextBox& field, int keyCode, int shift);

    // I2C
    TextBox txtI2Caddress{*this, "txtI2Caddress"};
    ControlArray<CheckBox> chkADDRbit{*this, "chkADDRbit", 0, 6};
    TextBox txtSlaveAddress{*this, "txtSlaveAddress"};
    TextBox txtNumToRead{*this, "txtNumToRead"};
    TextBox txtNumToWrite{*this, "txtNumToWrite"};
    TextBox txtStartRegRD{*this, "txtStartRegRD"};
    TextBox txtStartRegWr{*this, "txtStartRegWr"};
    ControlArray<TextBox> txtWriteVal{*this, "txtWriteVal", 0, kByteBoxes - 1};
    ControlArray<TextBox> txtReadVal{*this, "txtReadVal", 0, kByteBoxes - 1};
    ControlArray<Label> lblRegAddr{*this, "lblRegAddr", 0, kByteBoxes - 1};
    ControlArray<TextBox> TXTI2C{*this, "TXTI2C", 0, 7};
    CheckBox chkRandom{*this, "chkRandom"};
    CheckBox ChK2WireCommand{*this, "ChK2WireCommand"};
    CheckBox chk2WireRead{*this, "chk2WireRead"};
    CheckBox chkRepeatedStart{*this, "chkRepeatedStart"};
    CheckBox chkStoppedWrite{*this, "chkStoppedWrite"};
    CheckBox chkExtendHold{*this, "chkExtendHold"};
    CheckBox chkFileWriteData{*this, "chkFileWriteData"};
    ControlArray<OptionButton> obFillData{*this, "obFillData", 0, 5};
    TextBox txtRegister{*this, "txtRegister"};
    ControlArray<TextBox> txtWriteIndividual{*this, "txtWriteIndividual", 0, 1};
    TextBox txtReadIndividual{*this, "txtReadIndividual"};
    ComboBox cboSMBusFrequency{*this, "cboSMBusFrequency"};
    Button cmdRead{*this, "cmdRead"};
    Button cmdWrite{*this, "cmdWrite"};
    Button cmdSimpleI2cRd{*this, "cmdSimpleI2cRd"};
    Button cmdSimpleI2cWr{*this, "cmdSimpleI2cWr"};
    Button cmdReadIndividual{*this, "cmdReadIndividual"};
    ControlArray<Button> cmdWriteIndividual{*this, "cmdWriteIndividual", 0, 1};
    Button cmdScanI2Caddress{*this, "cmdScanI2Caddress"};
    Button cmdStopScan{*this, "cmdStopScan"}; ///< available while the scan runs
    Button cmdToggleSCL{*this, "cmdToggleSCL"};
    Button cmdFillWriteTextBoxes{*this, "cmdFillWriteTextBoxes"};
    Button cmdClearReadTextBoxes{*this, "cmdClearReadTextBoxes"};

    void cmdRead_Click();
    void cmdWrite_Click();
    void cmdSimpleI2cRd_Click();
    void cmdSimpleI2cWr_Click();
    void cmdReadIndividual_Click();
    /// \return link status of the read
    int readIndividualRegister();
    void cmdWriteIndividual_Click(int index);
    void cmdScanI2Caddress_Click();
    void cmdStopScan_Click();
    /// Ends the address scan after the address under way, as if nothing had answered, but without its
    /// question.
    void stopAddressScan() { stopScan_ = true; }
    void cmdToggleSCL_Click();
    /// \return link status of the write
    int setI2Coptions(int toggleRequest);
    void getI2Coptions();
    void cboSMBusFrequency_init();
    void cboSMBusFrequency_Click();
    void cmdFillWriteTextBoxes_Click();
    void cmdClearReadTextBoxes_Click();
    void txtI2Caddress_Change();
    void chkADDRbit_Click(int index);
    void i2cOption_Click();
    /// The clock list has been read from the board: lists that mirror it follow.
    [[nodiscard]] Subscription observeI2cClocks(std::function<void()> observer) {
        return i2cClocksListed_.connect(std::move(observer));
    }

    // SPI
    ComboBox cboSPIClock{*this, "cboSPIClock"};
    CheckBox chkSPIckpol{*this, "chkSPIckpol"};
    CheckBox chkSPIckpha{*this, "chkSPIckpha"};
    CheckBox chkSPIss{*this, "chkSPIss"};
    CheckBox chkSPIread{*this, "chkSPIread"};
    CheckBox chkSPIClockPhaseChange{*this, "chkSPIClockPhaseChange"};
    TextBox txtClockPhaseChangeByte{*this, "txtClockPhaseChangeByte"};
    Label lblSPI{*this, "lblSPI"};
    Button cmdSPIWrite{*this, "cmdSPIWrite"};

    void cmdSPIWrite_Click();
    void cboSPIClock_Click();
    void cboSPIclock_init();
    void setSPIconfig();
    /// The click of each of the three configuration boxes.
    void spiOption_Click();
    void getSPIconfig();
    [[nodiscard]] Subscription observeSpiClocks(std::function<void()> observer) {
        return spiClocksListed_.connect(std::move(observer));
    }

    // Ports and special function registers
    ControlArray<Label> lblWrOC{*this, "lblWrOC", 0, kPorts - 1};
    ControlArray<Label> lblRdOC{*this, "lblRdOC", 0, kPorts - 1};
    ControlArray<Label> lblWrGPData{*this, "lblWrGPData", 0, kPorts - 1};
    ControlArray<Label> lblRdGPData{*this, "lblRdGPData", 0, kPorts - 1};
    ControlArray<Label> lblWrGPAnalog{*this, "lblWrGPAnalog", 0, kPorts - 1};
    ControlArray<Label> lblRdGPAnalog{*this, "lblRdGPAnalog", 0, kPorts - 1};
    ControlArray<CheckBox> chkOpenCollectorP0{*this, "chkOpenCollectorP0", 0, 7};
    ControlArray<CheckBox> chkOpenCollectorP1{*this, "chkOpenCollectorP1", 0, 7};
    ControlArray<CheckBox> chkOpenCollectorP2{*this, "chkOpenCollectorP2", 0, 7};
    ControlArray<CheckBox> chkOpenCollectorP3{*this, "chkOpenCollectorP3", 0, 7};
    ControlArray<CheckBox> chkOpenCollectorP4{*this, "chkOpenCollectorP4", 0, 7};
    ControlArray<CheckBox> chkGPvalueP0{*this, "chkGPvalueP0", 0, 7};
    ControlArray<CheckBox> chkGPvalueP1{*this, "chkGPvalueP1", 0, 7};
    ControlArray<CheckBox> chkGPvalueP2{*this, "chkGPvalueP2", 0, 7};
    ControlArray<CheckBox> chkGPvalueP3{*this, "chkGPvalueP3", 0, 7};
    ControlArray<CheckBox> chkGPvalueP4{*this, "chkGPvalueP4", 0, 7};
    ControlArray<CheckBox> chkDINP0{*this, "chkDINP0", 0, 7};
    ControlArray<CheckBox> chkDINP1{*this, "chkDINP1", 0, 7};
    ControlArray<CheckBox> chkDINP2{*this, "chkDINP2", 0, 7};
    ControlArray<CheckBox> chkDINP3{*this, "chkDINP3", 0, 7};
    ControlArray<CheckBox> chkDINP4{*this, "chkDINP4", 0, 7};
    /// By port, mode first, then data, then analog.
    ControlArray<Lamp> ShpGPIOStat{*this, "ShpGPIOStat", 0, 3 * kPorts - 1};
    Label lblGP{*this, "lblGP"};
    CheckBox chkAutoWriteRead{*this, "chkAutoWriteRead"};
    CheckBox chkWriteEqRead{*this, "chkWriteEqRead"};
    CheckBox chkWeakPullUpDisable{*this, "chkWeakPullUpDisable"};
    CheckBox chkWeakPullUpEnableOnRead{*this, "chkWeakPullUpEnableOnRead"};
    TextBox txtSFRAddress{*this, "txtSFRAddress"};
    TextBox txtSFRWRData{*this, "txtSFRWRData"};
    ControlArray<Label> lblSFRBuf{*this, "lblSFRBuf", 0, 3};
    ControlArray<Label> lblPbuf{*this, "lblPbuf", 0, kSfrRows - 1};
    ControlArray<TextBox> txtPBuf{*this, "txtPBuf", 0, kSfrRows - 1};
    ControlArray<TextBox> txtPBufRd{*this, "txtPBufRd", 0, kSfrRows - 1};
    ControlArray<Lamp> ShpSKFRd{*this, "ShpSKFRd", 0, kSfrRows - 1};
    ControlArray<Button> cmdWrGPData{*this, "cmdWrGPData", 0, kPorts - 1};
    ControlArray<Button> cmdWrOC{*this, "cmdWrOC", 0, kPorts - 1};
    ControlArray<Button> cmdWrGPAnalog{*this, "cmdWrGPAnalog", 0, kPorts - 1};
    ControlArray<Button> cmdRdGPData{*this, "cmdRdGPData", 0, kPorts - 1};
    ControlArray<Button> cmdRdOC{*this, "cmdRdOC", 0, kPorts - 1};
    ControlArray<Button> cmdRdGPAnalog{*this, "cmdRdGPAnalog", 0, kPorts - 1};
    Button cmdGetSDFValue{*this, "cmdGetSDFValue"};
    Button cmdSetSFR{*this, "cmdSetSFR"};
    Button cmdReadSKF{*this, "cmdReadSKF"};
    Button cmdResetGPIO{*this, "cmdResetGPIO"};
    Button cmdClearAnalog{*this, "cmdClearAnalog"};
    Button cmdWriteReadAll{*this, "cmdWriteReadAll"};
    Button cmdSampleGP{*this, "cmdSampleGP"};

    /// The eight boxes of a port. \throws Fault "Subscript out of range"
    ControlArray<CheckBox>& chkOpenCollector(int port);
    ControlArray<CheckBox>& chkGPvalue(int port);
    ControlArray<CheckBox>& chkDIN(int port);

    void cmdGetSDFValue_Click();
    void cmdSetSFR_Click();
    void cmdWrGPData_Click(int port);
    void cmdWrOC_Click(int port);
    void cmdWrGPAnalog_Click(int port);
    void cmdRdGPData_Click(int port);
    void cmdRdOC_Click(int port);
    void cmdRdGPAnalog_Click(int port);
    void chkGPvalue_Click(int port);
    void chkOpenCollector_Click(int port);
    void chkDIN_Click(int port);
    void cmdReadSKF_Click();
    void txtPBufRd_Click(int index);
    void cmdResetGPIO_Click();
    void cmdClearAnalog_Click();
    void cmdWriteReadAll_Click();
    void getGPconf();
    void getGPvalue();
    void cmdSampleGP_Click();
    void setGPconf();
    void setGPvalue();
    void chkWeakPullUpDisable_Click();

    // Converters
    ControlArray<ComboBox> cboAnamux{*this, "cboAnamux", 0, 1};
    ControlArray<TextBox> txtModeByte{*this, "txtModeByte", 0, 1};
    ControlArray<ComboBox> cboADCReadMode{*this, "cboADCReadMode", 0, 1};
    Label lblBytesSucceded{*this, "lblBytesSucceded"};
    TextBox txtADDec{*this, "txtADDec"};
    CheckBox chkADCEnable{*this, "chkADCEnable"};
    ControlArray<OptionButton> OptiADCSamples{*this, "OptiADCSamples", 0, 1};
    TextBox txtADCLoopCount{*this, "txtADCLoopCount"};
    ControlArray<TextBox> txtADSAMP{*this, "txtADSAMP", 0, 1};
    TextBox txtADOSC{*this, "txtADOSC"};
    ControlArray<Label> lblADMuxData{*this, "lblADMuxData", 0, 12};
    ControlArray<Label> lblADCRefcon{*this, "lblADCRefcon", 0, 2};
    ControlArray<Label> lblADCClockDaa{*this, "lblADCClockDaa", 0, 3};
    ControlArray<Label> lblADCMode1Data{*this, "lblADCMode1Data", 0, 2};
    ControlArray<Label> lblADCLoopData{*this, "lblADCLoopData", 0, 2};
    ControlArray<Label> lblADCSampleData{*this, "lblADCSampleData", 0, 4};
    ControlArray<Label> lblADCEnable{*this, "lblADCEnable", 0, 2};
    ControlArray<Lamp> ShpADCEn{*this, "ShpADCEn", 0, 0};
    ControlArray<TextBox> txtADCReg{*this, "txtADCReg", 0, 1};
    ControlArray<TextBox> txtADCDelay{*this, "txtADCDelay", 0, 0};
    ControlArray<Label> lblAdRcv{*this, "lblAdRcv", 0, 3};
    Label lblADRegRead{*this, "lblADRegRead"};
    ControlArray<Label> lblADDecimal{*this, "lblADDecimal", 1, 1};
    Label lbl_ADReal{*this, "lbl_ADReal"};
    Button cmdMuxWrite{*this, "cmdMuxWrite"};
    Button cmdRdADMux{*this, "cmdRdADMux"};
    Button cmdADCWrEn{*this, "cmdADCWrEn"};
    Button cmdADCRDEnable{*this, "cmdADCRDEnable"};
    Button cmdADCRDData{*this, "cmdADCRDData"};
    Button cmdWriteADCClock{*this, "cmdWriteADCClock"};
    Button cmdReadADCClock{*this, "cmdReadADCClock"};
    Button cmdADCWrmode1{*this, "cmdADCWrmode1"};
    Button cmdADCRDMode16{*this, "cmdADCRDMode16"};
    Button cmdWrtLoopCount{*this, "cmdWrtLoopCount"};
    Button cmdRdADCAvg{*this, "cmdRdADCAvg"};
    Button cmdADCWriteSampleRate{*this, "cmdADCWriteSampleRate"};
    Button cmdADCRdSampleRate{*this, "cmdADCRdSampleRate"};
    Button cmdRdADCMode{*this, "cmdRdADCMode"};
    Button cmdWrADCMode{*this, "cmdWrADCMode"};
    Button cmdInitADCIO{*this, "cmdInitADCIO"};
    Button cmdWrtADReg{*this, "cmdWrtADReg"};
    Button cmdRD7150{*this, "cmdRD7150"};

    void cmdMuxWrite_Click();
    void cmdRdADMux_Click();
    void cmdADCWrEn_Click();
    void cmdADCRDEnable_Click();
    void cmdADCRDData_Click();
    void cmdWriteADCClock_Click();
    void cmdReadADCClock_Click();
    void cmdADCWrmode1_Click();
    void cmdADCRDMode16_Click();
    void cmdWrtLoopCount_Click();
    void cmdRdADCAvg_Click();
    void cmdADCWriteSampleRate_Click();
    void cmdADCRdSampleRate_Click();
    void cmdRdADCMode_Click();
    void cmdWrADCMode_Click();
    void cmdInitADCIO_Click();
    void cmdWrtADReg_Click();
    void cmdRD7150_Click();

    modHID& link() const { return uses_.link; }

    /// The last command that asks for a reply got it. What the fields show is of no worth otherwise.
    bool replied() const { return replied_; }
    /// The input that the multiplexer of the board in use was connected to last, as its list names it; empty
    /// where that board was not told any, or has forgotten it.
    const std::string& connectedInput() const { return connectedInput_; }
    /// What was read of the part over its bus no longer holds. \param cause in words, for the user
    void markBusReadingsStale(const std::string& cause);

    /// Gain of the external converter; 0 becomes 1 at its first use.
    double externalGain = 1;

  private:
    /// What the buffer is made ready with before a command.
    enum Prepare : unsigned { kKeep = 0, kPurge = 1, kFill = 2, kPurgeFill = 3 };
    /// Which of a port's three registers.
    enum class Role { Mode, Data, Analog };
    struct PortRole;

    void wireBoard();
    void wireI2c();
    void wireSpi();
    void wireGpio();
    void wireAdc();
    void hexField(TextBox& field, bool clipboard);
    void decimalField(TextBox& field, int maximum, bool clipboard);
    std::uint8_t& byteAt(int index) { return uses_.link.reportBuffer[static_cast<std::size_t>(index)]; }

    /// Prepares the buffer, puts command and data into it and writes it. \return true if the board took it.
    bool sendCommand(report::Command command, unsigned prepare, std::initializer_list<std::uint8_t> bytes);
    /// A write command with its check. \return link status, 8 or 0.
    int writeCommand(report::Command command, std::initializer_list<std::uint8_t> bytes);
    /// A command with a reply. \return false if the write failed: there is nothing to show then. After a lost
    /// reply the caller goes on with what the link dialog left in the buffer, the last reply of its
    /// discovery; `replied_` tells the two apart.
    bool readCommand(report::Command command, unsigned prepare, std::initializer_list<std::uint8_t> bytes);
    /// What a handler does behind a lost reply.
    enum class Lost { GoOn, Stop };
    /// Reads a setting of the board into a cleared buffer. \param lost Stop where Retry reads this very
    /// setting again, so that nothing older is laid over it. \return false if the buffer is not to be used.
    bool readState(report::Command command, Lost lost,
                   std::initializer_list<std::uint8_t> bytes = {report::kRead});
    void showReply(ControlArray<Label>& labels);
    /// readCommand() into labels, which keep what they show if the write fails.
    bool readLabels(report::Command command, unsigned prepare, ControlArray<Label>& labels);

    bool collectWriteData(std::span<std::uint8_t> data);
    bool loadRegisterFile(std::span<std::uint8_t> data, std::span<bool> given);
    void showReadData(std::span<const std::uint8_t> data, std::uint8_t startRegister, bool good);
    void showIndividual(std::uint8_t value, bool good);
    /// Everything that shows what the board or a part on its bus said.
    std::vector<Control*> readings();
    void showAddress(std::uint8_t address);
    std::uint8_t address() const { return uses_.link.i2cAddress; }

    void setBoxes(ControlArray<CheckBox>& boxes, std::uint8_t bits);
    void writePort(Role role, int port);
    void readPort(Role role, int port);
    void portClick(Role role, int port);
    /// \return false if the write failed or the reply was lost
    bool readSfr();
    bool readSfrRow(int row, bool intoWriteColumn);
    /// All rows, up to the first whose exchange failed. \return true if none did
    bool readSfrTable();
    PortRole portRole(Role role, int port);
    void setPinAnalog(int port, int bit);
    void fillMuxLists();

    Uses uses_;
    OptionGroup fillGroup_;
    OptionGroup sampleGroup_;
    bool programChange_ = false;
    bool rewriting_ = false;
    bool stopScan_ = false;
    bool replied_ = false;
    std::string connectedInput_;
    Signal<> i2cClocksListed_;
    Signal<> spiClocksListed_;
};

/// What a firmware version reply says: "1.2 - 2008/June/12".
std::string firmwareVersion(const hid::Report& reply);

} // namespace vrk
