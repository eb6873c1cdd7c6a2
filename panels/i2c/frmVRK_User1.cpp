#include "panels/i2c/frmVRK_User1.h"

#include <utility>

namespace vrk {

namespace {
constexpr int kFirstAddressPin = 6; ///< A0 to A3 are P0.6, P0.7, P1.0, P1.1
constexpr int kBaseAddress = 0x50;
} // namespace

frmVRK_User1::frmVRK_User1(PanelContext& context, Uses panelUses, WiperState& state)
    : WiperPanel(context, "frmVRK_User1", "VRK I2C Evaluation", std::move(panelUses), state) {
    wireSetup();
    wireRegisters();
    wireFamilies();
    clocks_ = console().observeI2cClocks([this] { mirrorClocks(); });
}

void frmVRK_User1::wireSetup() {
    mnuDeviceSelect.setCaption("Device Select");
    mnu_I2cList.setCaption("I2C Parameter File");
    mnu_KV4071.setCaption("KV4071");
    mnu_KV4074.setCaption("KV4074");
    mnuKV4078.setCaption("KV4078");
    mnuKV6021.setCaption("KV6021");
    chkI2CAdr.setCaptions({"A0", "A1", "A2", "A3"});
    txtCalcAddr.setText("50");
    txtCalcAddr.setToolTip("Address computed from the pins");
    cmdCopyAdr.setCaption("Copy");
    txtDeviceAdr.setText("50");
    txtDeviceAdr.setToolTip("Active I2C address");
    cmdSlave.setCaption("Set 50");
    cboRegSize.setCaption("Address Size");
    cboDataSize.setCaption("Data Size");
    cboI2CClock.setCaption("I2C Clock  (kHz)");
    for (Control* control : std::initializer_list<Control*>{&chkI2CAdr[0], &chkI2CAdr[1], &chkI2CAdr[2],
                                                            &chkI2CAdr[3], &txtCalcAddr, &cmdCopyAdr})
        control->setContainer(fraADDRSelect);
    hexEntry(txtDeviceAdr, "50");
    wireClick(mnu_I2cList, &frmVRK_User1::mnu_I2cList_Click);
    wireClick(mnu_KV4071, &frmVRK_User1::mnu_KV4071_Click);
    wireClick(mnu_KV4074, &frmVRK_User1::mnu_KV4074_Click);
    wireClick(mnuKV4078, &frmVRK_User1::mnuKV4078_Click);
    wireClick(mnuKV6021, &frmVRK_User1::mnuKV6021_Click);
    wireClick(chkI2CAdr, &frmVRK_User1::chkI2CAdr_Click);
    wireClick(cmdCopyAdr, &frmVRK_User1::cmdCopyAdr_Click);
    wireClick(cmdSlave, &frmVRK_User1::cmdSlave_Click);
    wireClick(cboI2CClock, &frmVRK_User1::cboI2CClock_Click);
}

void frmVRK_User1::Form_Load() {
    becomeActive();
    txtACRAddress.setEnabled(true);
    numberChannels();
    SSFrame2.setCaption("ACR Register Control");
    Label2.setCaption("ACR Address");
    Frq4422.setVisible(false);
    frq331x.setVisible(false);
    clearAddressPins();
    board().chkPData[frmMotherboardDAQ2::kPinShutdown].setValue(1);
    board().cmdWrtPipe1_Click();
    pump();
    pump();
    for (auto& box : chkI2CAdr)
        box->setVisible(true);
    txtCalcAddr.setVisible(true);
    cmdCopyAdr.setVisible(true);
    resetI2cOptions();
    acrAddressByte_ = 2;
    txtACRAddress.setText("02");
    deviceAddressByte_ = kBaseAddress;
    txtDeviceAdr.setText("50");
    wipers.TapCount = 128;
    loadChannels();
    pump();
    uses().motherboard.initSupplyDefaults();
    lblUserVCC.setVisible(false);
    txtUserVCC.setVisible(false);
    cboRegSize.setRows({{"None", 0}, {"1 Byte", 1}, {"2 Bytes", 2}});
    cboDataSize.setRows({{"None", 0}, {"1-Byte", 1}, {"2-Bytes", 2}});
    cboRegSize.setListIndex(1);
    cboDataSize.setListIndex(1);
    Option1[1].setValue(true);
    mirrorClocks();
    board().setPin(frmMotherboardDAQ2::kPinMotherboardSwitch, 0);
    pump();
}

void frmVRK_User1::choosePart(const PartEntry& part) {
    resetI2cOptions();
    leaveFamily();
    acrAddressByte_ = static_cast<std::uint8_t>(part.acrByte);
    txtACRAddress.setText(part.acrText);
    deviceAddressByte_ = static_cast<std::uint8_t>(part.address);
    txtDeviceAdr.setText(hexText(part.address, 2));
    wipers.TapCount = part.taps;
    wipers.channelCount = part.channels;
    resetChannelRegisters();
    lblProduct.setCaption(part.product);
    OptChans[part.chansOption].setValue(true);
    OptTaps[part.tapsOption].setValue(true);
    OptTaps_Click(part.tapsOption);
    pump();
    cboRegSize.setListIndex(1);
    cboDataSize.setListIndex(1);
    lastAddressText_ = txtDeviceAdr.text();
    txtCalcAddr.setText(lastAddressText_);
    setAddressBytes();
}

void frmVRK_User1::mnu_KV4071_Click() {
    choosePart({2, "02", 0x50, 128, 1, 0, 4, "KV4071, I2C, Single Channel, 128 Tap ZQM"});
}

void frmVRK_User1::mnu_KV4074_Click() {
    choosePart({8, "08", 0xA0, 128, 4, 2, 4, "KV4074, I2C, Four Channel, 128 Tap ZQM"});
}

void frmVRK_User1::mnuKV4078_Click() {
    // The byte says 8, the text 10: deliberate, and the text is right for the part.
    choosePart({8, "10", 0xA0, 256, 4, 2, 5, "KV4078, I2C, Four Channel, 256 Tap ZQM"});
}

void frmVRK_User1::mnuKV6021_Click() {
    choosePart({2, "02", 0x50, 128, 1, 0, 4, "KV6021, I2C, Single Channel, 128 Tap ZQM"});
}

void frmVRK_User1::clearAddressPins() {
    for (int pin = 0; pin < chkI2CAdr.count(); ++pin)
        board().chkPData[kFirstAddressPin + pin].setValue(0);
}

void frmVRK_User1::raiseAddressPins() {
    for (int pin = 0; pin < chkI2CAdr.count(); ++pin)
        if (chkI2CAdr[pin].checked())
            board().chkPData[kFirstAddressPin + pin].setValue(1);
}

void frmVRK_User1::chkI2CAdr_Click(int /*index*/) {
    clearAddressPins();
    raiseAddressPins();
    int address = kBaseAddress;
    for (int pin = 0; pin < chkI2CAdr.count(); ++pin)
        if (chkI2CAdr[pin].checked())
            address += 2 << pin;
    txtCalcAddr.setText(hexText(address));
    board().cmdWrtPipe1_Click();
    pump();
}

void frmVRK_User1::cmdCopyAdr_Click() {
    txtDeviceAdr.setText(txtCalcAddr.text());
}

void frmVRK_User1::cmdSlave_Click() {
    txtDeviceAdr.setText("50");
}

void frmVRK_User1::mirrorClocks() {
    // Row by row the console's list. The board is the master: nothing is sent for it.
    const ComboBox& source = console().cboSMBusFrequency;
    cboI2CClock.setRows(source.rows());
    cboI2CClock.showListIndex(source.listIndex());
}

void frmVRK_User1::cboI2CClock_Click() {
    console().cboSMBusFrequency.setListIndex(cboI2CClock.listIndex());
    console().cboSMBusFrequency_Click();
}

void frmVRK_User1::setAddressBytes() {
    wipers.I2CWriteAddress = hexToByte(txtDeviceAdr.text());
    wipers.I2CReadAddress = static_cast<std::uint8_t>(wipers.I2CWriteAddress + 1);
}

void frmVRK_User1::setBusAddress() {
    link().i2cAddress = static_cast<std::uint8_t>(hexToByte(txtDeviceAdr.text()) & 0xFEU);
}

void frmVRK_User1::splitTwoBytes(const std::string& hex) {
    TextBox& high = console().txtWriteVal[0];
    if (hex.size() == 2)
        high.setText("00");
    else if (hex.size() == 3)
        high.setText("0" + hex.substr(0, 1));
    else if (hex.size() == 4)
        high.setText(hex.substr(0, 2));
    console().txtWriteVal[1].setText(hex.size() < 2 ? hex : hex.substr(hex.size() - 2));
}

void frmVRK_User1::Wrt_VRK(int reg) {
    warnIfVccOff();
    const int size = cboDataSize.listIndex();
    setBusAddress();
    class frmMainF340& f340 = console();
    f340.txtNumToWrite.setText(numberToText(size));
    const std::string hex = txtHexDataWrt[reg].text();
    const bool instructionPart = productStarts("Q4410/9");
    if (size == 1 && !instructionPart) {
        f340.txtStartRegWr.setText(hexText(reg, 2));
        // The console's field takes two digits: a value that needs three must not reach the part cut short.
        f340.txtWriteVal[0].setText(hex.size() > 2 ? byteToHex2(hexToByte(hex)) : hex);
    } else if (size == 2) {
        f340.txtStartRegWr.setText("A0");
        txtWrQ3319[0].setText(hex);
        splitTwoBytes(hex);
    }
    if (instructionPart) {
        // This part's data byte is the instruction itself.
        const std::string instruction = hexText(0xA0 + reg, 2);
        f340.txtStartRegWr.setText(instruction);
        f340.txtWriteVal[0].setText(instruction);
    }
    f340.cmdWrite_Click();
    writeOutcome();
}

void frmVRK_User1::writeOutcome() {
    if (link().i2cStatus == kLinkGood) {
        goodWrite();
        return;
    }
    Shape1[4].setColour(Colour::LightRed);
    Shape1[1].setColour(Colour::LightRed);
    pump();
    context().say("Write VRK Error, Check Device Address, VCC & AVDD Power and I2C Connections ",
                  " Error during Write to VRK ");
}

int frmVRK_User1::twoByteReading() {
    return (hexToInt(console().TXTI2C[0].text()) & 3) * 256 + hexToInt(console().TXTI2C[1].text());
}

void frmVRK_User1::Read_VRK(int reg) {
    warnIfVccOff();
    class frmMainF340& f340 = console();
    if (productStarts("Q4410/9")) {
        readThroughInstruction(reg);
    } else {
        const int size = cboDataSize.listIndex();
        setBusAddress();
        f340.txtNumToRead.setText(numberToText(size));
        if (size == 1) {
            f340.txtStartRegRD.setText(hexText(reg, 2));
            f340.cmdRead_Click();
            wipers.WiperRead[kWiperElement] = hexToInt(f340.txtReadVal[reg].text());
        } else if (size == 2) {
            f340.txtStartRegRD.setText("80");
            f340.cmdRead_Click();
            wipers.WiperRead[kWiperElement] = twoByteReading();
            lblRdq331x[0].setCaption(hexText(wipers.WiperRead[kWiperElement]));
        }
    }
    readOutcome();
}

void frmVRK_User1::readThroughInstruction(int reg) {
    class frmMainF340& f340 = console();
    // P0.6 is the part's A0: it answers a read while the pin is high.
    const auto changePort0 = [&f340](auto change) {
        f340.txtSFRAddress.setText("80");
        f340.cmdGetSDFValue_Click();
        const int value = change(hexToInt(f340.lblSFRBuf[3].caption()));
        f340.txtSFRAddress.setText("80");
        f340.txtSFRWRData.setText(hexText(value, 2));
        f340.cmdSetSFR_Click();
    };
    setBusAddress();
    f340.txtNumToRead.setText("1");
    changePort0([](int value) { return value | 0x40; });
    pump();
    wait(Milliseconds{20});
    f340.txtStartRegRD.setText(hexText(0x90 + reg, 2));
    f340.cmdRead_Click();
    wipers.WiperRead[kWiperElement] = hexToInt(f340.TXTI2C[0].text());
    changePort0([](int value) { return value & 0xBF; });
}

void frmVRK_User1::readOutcome() {
    if (link().i2cStatus == kLinkGood) {
        goodRead();
        return;
    }
    Shape1[2].setColour(Colour::LightRed);
    Shape1[4].setColour(Colour::LightRed);
    pump();
    context().say("Read VRK Error, Check Device Addreess, VCC & AVDD Power and I2C Connections ",
                  " Error during VRK Read ");
}

} // namespace vrk
