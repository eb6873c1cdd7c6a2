#include "motherboard/frmMotherboardDAQ2.h"

#include "link/overtaken.h"
#include "link/pinNames.h"
#include "motherboard/consoleMirror.h"
#include "motherboard/replyBytes.h"

#include <array>
#include <utility>

namespace vrk {

frmMotherboardDAQ2::frmMotherboardDAQ2(PanelContext& context, Uses uses)
    : Panel(context, "frmMotherboardDAQ2", "VRK Motherboard Control"), uses_(std::move(uses)) {
    wirePorts();
    wireAnalog();
    wireSupplies();
    wireBoxes();
}

void frmMotherboardDAQ2::Form_Load() {
    uses_.trace.line({"Motherboard Form Load"});
    OptVCCMinus[0].setValue(false);
    OptVCCMinus[1].setValue(false);
    console().cmdResetGPIO_Click();
    for (int pin = 0; pin < kPins; ++pin) {
        chkP0OutEn[pin].setValue(0);
        chkPData[pin].setValue(0);
    }
    for (int reg = 0; reg < kRegisters; ++reg) {
        uses_.ports.PBuf[reg] = 0;
        txtPBuf[reg].setText("00");
    }
    for (const int pin : {23, 22, 21, 20, 19, 11, 0, 2})
        setDrive(pin, 1);
    setDrive(1, 0);
    for (const int pin : {20, 1, 11})
        setPin(pin, 1);
    for (const int pin : {21, 22, 0})
        setPin(pin, 0);
    console().cmdWriteReadAll_Click();
    fillChannels();
    events().letEventsRun();
    console().cmdWriteReadAll_Click();
    OptVCC[1].showSelected();
    OptVCCMinus[1].showSelected();
    // Closed and opened again under a device panel: its supplies are off now, and On must switch them on.
    if (SupplyPanel* panel = activeSupply()) {
        panel->suppliesMoved();
        showSuppliesOn(*panel);
    }
    uses_.trace.line({"Motherboard Form Load Completed"});
    uses_.trace.blankLine();
}

void frmMotherboardDAQ2::Form_Unload() {
    // A sampling loop that is still on the stack must find its end.
    uses_.analog.EndSampling = -1;
    // The next load resets all pins: the panel in front must put its part's in again.
    uses_.ports.pinsOf.clear();
}

SupplyPanel* frmMotherboardDAQ2::activeSupply() const {
    return dynamic_cast<SupplyPanel*>(uses_.link.activePanel);
}

// Ports

void frmMotherboardDAQ2::wirePorts() {
    for (int pin = 0; pin < kPins; ++pin) {
        chkPData[pin].setCaption(kPinCaptions.at(static_cast<std::size_t>(pin)));
        chkP0OutEn[pin].setCaption("P" + decimalText(pin / 8) + "." + decimalText(pin % 8));
    }
    lblPbuf.setCaptions({"P0 Data", "P1 Data", "P2 Data", "P0 Enable", "P1Enable", "P2 Enable"});
    for (int reg = 0; reg < kRegisters; ++reg) {
        txtPBuf[reg].setText("00");
        txtPBufRd[reg].setText("00");
        txtPBufRd[reg].markUnread();
        hexBox(txtPBuf[reg]);
    }
    cmdWrtPipe1.setCaption("Write Ports");
    cmdReadPipe1.setCaption("Read Ports");
    cmdTallyGPIO.setCaption("Tally GPIO");
    wireClick(chkPData, &frmMotherboardDAQ2::chkPData_Click);
    wireClick(chkP0OutEn, &frmMotherboardDAQ2::chkP0OutEn_Click);
    wireClick(cmdWrtPipe1, &frmMotherboardDAQ2::cmdWrtPipe1_Click);
    wireClick(cmdReadPipe1, &frmMotherboardDAQ2::cmdReadPipe1_Click);
    wireClick(cmdTallyGPIO, &frmMotherboardDAQ2::cmdTallyGPIO_Click);
    action("Reverse_Tally_GPIO", &frmMotherboardDAQ2::Reverse_Tally_GPIO);
}

void frmMotherboardDAQ2::hexBox(TextBox& box) {
    box.setMaxLength(3);
    const auto check = [&box] {
        box.setText(upperCase(box.text()));
        const int value = hexToInt(box.text());
        // 256, not 255: "100" stays.
        if (value <= 0 || value > 256)
            box.setText("00");
    };
    box.onKeyPress([check](int key) {
        const int passed = hexKeyFilter(key);
        if (passed == kEnterKey)
            check();
        return passed;
    });
    box.onLostFocus(check);
}

void frmMotherboardDAQ2::setImageBit(int reg, int bit, bool set) {
    std::uint8_t& image = uses_.ports.PBuf[reg];
    const auto mask = static_cast<std::uint8_t>(1U << static_cast<unsigned>(bit));
    image = static_cast<std::uint8_t>(set ? image | mask : image & ~mask);
    txtPBuf[reg].setText(byteToHex2(image));
}

void frmMotherboardDAQ2::chkPData_Click(int index) {
    const int value = chkPData[index].value();
    const int port = index / 8;
    const int bit = index % 8;
    console().chkGPvalue(port)[bit].setValue(value);
    setImageBit(port, bit, value == 1);
}

void frmMotherboardDAQ2::chkP0OutEn_Click(int index) {
    const int value = chkP0OutEn[index].value();
    const int port = index / 8;
    const int bit = index % 8;
    console().chkOpenCollector(port)[bit].setValue(value);
    setImageBit(port + 3, bit, value == 1);
}

void frmMotherboardDAQ2::setPin(int index, int value) {
    chkPData[index].setValue(value);
    chkPData_Click(index);
}

void frmMotherboardDAQ2::setDrive(int index, int value) {
    chkP0OutEn[index].setValue(value);
    chkP0OutEn_Click(index);
}

void frmMotherboardDAQ2::cmdWrtPipe1_Click() {
    constexpr int kMostPasses = 3000;
    for (int pass = 0; uses_.ports.pipeWriteBusy && pass <= kMostPasses; ++pass)
        events().letEventsRun();
    uses_.ports.pipeWriteBusy = true;
    OnScopeExit afterFault([this] {
        uses_.ports.pipeWriteBusy = false;
        setButtonsEnabled(true);
    });
    if (cmdWrtPipe1.enabled())
        cmdDisableButtons_Click();
    // By what P2 was read as last: writing makes that old.
    const auto before = toldSupplyPins();
    const bool switchesOn = OptVCC[1].value() && chkPData[kPinVcc].checked() && before && !before->vcc;
    static constexpr std::array<const char*, kRegisters> kAddresses = {"80", "90", "A0", "A4", "A5", "A6"};
    for (int reg = 0; reg < kRegisters; ++reg) {
        console().txtSFRAddress.setText(kAddresses.at(static_cast<std::size_t>(reg)));
        txtPBuf[reg].setText(byteToHex2(uses_.ports.PBuf[reg]));
        console().txtSFRWRData.setText(txtPBuf[reg].text());
        console().cmdSetSFR_Click();
        overtake(txtPBufRd[reg], txtPBufRd[reg].text(), uses_.ports.PBuf[reg]);
    }
    events().letEventsRun();
    cmdEnableBUttons_Click();
    events().letEventsRun();
    uses_.ports.pipeWriteBusy = false;
    afterFault.dismiss();
    if (switchesOn) {
        supplySwitched();
        SupplyPanel* panel = activeSupply();
        if (panel != nullptr)
            panel->suppliesMoved();
        if (panel == nullptr || !panel->switchesVcc()) // which takes it off again with the DAC's select
            tellVccOn(*this);
    }
    events().letEventsRun();
}

void frmMotherboardDAQ2::resendImage() {
    alignConsole(*this, uses_.link);
    cmdWrtPipe1_Click();
}

void frmMotherboardDAQ2::cmdReadPipe1_Click() {
    OnScopeExit afterFault([this] { setButtonsEnabled(true); });
    cmdDisableButtons_Click();
    console().cmdReadSKF_Click();
    static constexpr std::array<int, kRegisters> kRows = {0, 1, 2, 6, 7, 8};
    for (int reg = 0; reg < kRegisters; ++reg)
        takeReading(txtPBufRd[reg], console().txtPBufRd[kRows.at(static_cast<std::size_t>(reg))]);
    afterFault.dismiss();
    cmdEnableBUttons_Click();
}

void frmMotherboardDAQ2::Reverse_Tally_GPIO() {
    // The read-back is converted, so that a text that is no byte is told; no box is changed by it.
    for (const auto& field : txtPBufRd)
        (void)hexToInt(field->text());
    events().letEventsRun();
}

void frmMotherboardDAQ2::cmdTallyGPIO_Click() {
    Reverse_Tally_GPIO();
}

// Button lock

void frmMotherboardDAQ2::setButtonsEnabled(bool enabled) {
    for (Button* button :
         {&cmdWrtPipe1, &cmdReadPipe1, &cmdSPIOWrite2, &cmdSPIOWrite3, &cmdSPIWrite, &cmdSPIWrite2,
          &cmdSPRRdReg, &cmdSPIReadData, &CMDI2CWrite, &cmdI2CRead, &cmdSetMode, &cmdSample, &cmdSampleVCC})
        button->setEnabled(enabled);
}

void frmMotherboardDAQ2::cmdDisableButtons_Click() {
    setButtonsEnabled(false);
    events().letEventsRun();
}

void frmMotherboardDAQ2::cmdEnableBUttons_Click() {
    setButtonsEnabled(true);
    events().letEventsRun();
}

// I2C and SPI boxes

void frmMotherboardDAQ2::wireBoxes() {
    fraI2C.setCaption("I2C I/O");
    Frmspio.setCaption("SPI I/O");
    const auto fill = [](ControlArray<TextBox>& boxes, std::initializer_list<const char*> texts) {
        int index = boxes.first();
        for (const char* text : texts)
            boxes[index++].setText(text);
    };
    fill(txtI2COut, {"", "50", "02", "C0"});
    fill(txtI2CIN, {"", "51", ""});
    fill(txtSPIWrite2Data, {"00", "C0", "00", "00", "00", "00"});
    fill(txtSPIWrite3Data, {"00", "80", "00", "00", "00", "00"});
    for (auto* boxes : {&txtI2CRead, &txtSPIORead, &txtSPIORead3})
        for (auto& box : *boxes) {
            box->setText("--");
            box->markUnread();
        }
    for (TextBox* box : {&txtI2CWriteStatus, &txtI2CReadStatus, &txtSPIReadCnt2, &txtSPIReadCnt3})
        box->setText("--");
    for (auto* boxes : {&txtI2COut, &txtI2CIN, &txtSPIWrite2Data, &txtSPIWrite3Data})
        for (auto& box : *boxes)
            hexBox(*box);
    for (TextBox* quantity : {&txtSPIWrQty2, &txtSPIWrQty3}) {
        quantity->onKeyPress(decimalKeyFilter);
        quantity->onLostFocus([quantity] {
            const double value = leadingNumber(quantity->text());
            if (value < 1)
                quantity->setText("1");
            else if (value > 5)
                quantity->setText("5");
        });
    }
    for (auto& lamp : ShpI2CNAK)
        lamp->setCaption("I2C NAK");
    CMDI2CWrite.setCaption("I2C Write");
    cmdI2CRead.setCaption("I2C Read");
    cmdSPIOWrite2.setCaption("SPI Write");
    cmdSPIOWrite3.setCaption("SPI Write");
    cmdShowMian.setCaption("Show Controller");
    cmdexit.setCaption("Exit");
    mnuGeneral_I2C.setCaption("General I2C");
    wireClick(CMDI2CWrite, &frmMotherboardDAQ2::CMDI2CWrite_Click);
    wireClick(cmdI2CRead, &frmMotherboardDAQ2::cmdI2CRead_Click);
    wireClick(cmdSPIOWrite2, &frmMotherboardDAQ2::cmdSPIOWrite2_Click);
    wireClick(cmdSPIOWrite3, &frmMotherboardDAQ2::cmdSPIOWrite3_Click);
    wireClick(cmdShowMian, &frmMotherboardDAQ2::cmdShowMian_Click);
    wireClick(cmdexit, &frmMotherboardDAQ2::cmdexit_Click);
    action("cmdDisableButtons_Click", &frmMotherboardDAQ2::cmdDisableButtons_Click);
    action("cmdEnableBUttons_Click", &frmMotherboardDAQ2::cmdEnableBUttons_Click);
}

void frmMotherboardDAQ2::cmdI2CRead_Click() {
    OnScopeExit afterFault([this] { setButtonsEnabled(true); });
    cmdDisableButtons_Click();
    txtI2CReadStatus.setText("--");
    uses_.link.i2cAddress = static_cast<std::uint8_t>(hexToByte(txtI2CIN[1].text()) & 0xFEU);
    console().txtNumToRead.setText(txtI2CIN[0].text());
    // The write's register field it is: the read sends what its own has kept.
    console().txtStartRegWr.setText(txtI2CIN[2].text());
    const Milliseconds asked = context().clock().now();
    console().cmdRead_Click();
    const int count = decimalByte(txtI2CIN[0].text());
    takeReply(txtI2CRead, console().txtReadVal, count + 1, asked); // one more box than the count
    ShpI2CNAK[1].setColour(uses_.link.i2cStatus == kLinkGood ? Colour::LightGreen : Colour::LightRed);
    afterFault.dismiss();
    cmdEnableBUttons_Click();
}

void frmMotherboardDAQ2::CMDI2CWrite_Click() {
    OnScopeExit afterFault([this] { setButtonsEnabled(true); });
    cmdDisableButtons_Click();
    txtI2CWriteStatus.setText("--");
    uses_.link.i2cAddress = static_cast<std::uint8_t>(hexToByte(txtI2COut[1].text()) & 0xFEU);
    console().txtNumToWrite.setText(txtI2COut[0].text());
    console().txtStartRegWr.setText(txtI2COut[2].text());
    console().txtWriteVal[0].setText(txtI2COut[2].text());
    console().txtWriteVal[1].setText(txtI2COut[3].text());
    console().cmdWrite_Click();
    ShpI2CNAK[0].setColour(uses_.link.i2cStatus == kLinkGood ? Colour::LightGreen : Colour::LightRed);
    afterFault.dismiss();
    cmdEnableBUttons_Click();
}

void frmMotherboardDAQ2::cmdSPIOWrite2_Click() {
    spiExchange({txtSPIWrQty2, txtSPIWrite2Data, txtSPIReadCnt2, txtSPIORead});
}

void frmMotherboardDAQ2::cmdSPIOWrite3_Click() {
    events().letEventsRun();
    spiExchange({txtSPIWrQty3, txtSPIWrite3Data, txtSPIReadCnt3, txtSPIORead3});
}

void frmMotherboardDAQ2::spiExchange(const SpiRow& row) {
    OnScopeExit afterFault([this] { setButtonsEnabled(true); });
    selectDac(false);
    console().chkSPIread.setValue(1);
    console().txtNumToWrite.setText(row.quantity.text());
    for (int k = 0; k < 6; ++k)
        uses_.ports.SPIBuf[k] = hexToByte(row.data[k].text());
    // The field of index 0 never reaches the wire: the callers count from position 1.
    for (int k = 0; k < 5; ++k)
        console().txtWriteVal[k].setText(row.data[k + 1].text());
    const Milliseconds asked = context().clock().now();
    console().cmdSPIWrite_Click();
    row.count.setText("--");
    for (auto& box : row.read) {
        box->setText("--");
        box->markUnread();
    }
    row.count.setText(row.quantity.text());
    const int count = decimalByte(row.quantity.text());
    takeReply(row.read, console().txtReadVal, count + 1, asked);
    events().letEventsRun();
    afterFault.dismiss();
    cmdEnableBUttons_Click();
}

void frmMotherboardDAQ2::cmdShowMian_Click() {
    uses_.console.show();
}

void frmMotherboardDAQ2::cmdexit_Click() {
    uses_.unloadSelf();
}

} // namespace vrk
