#include "panels/i2c/frmVRK_User1.h"
#include "link/readings.h"

#include "panels/blocks/PortLines.h"
#include "panels/blocks/choices.h"
#include "panels/blocks/entries.h"
#include "panels/i2c/registerByte.h"
#include "platform/runtime/text.h"

#include <algorithm>

namespace vrk {

frmVRK_User1::frmVRK_User1(PanelContext& panelContext, BenchServices& panelServices, WiperState& state,
                           PanelSlotBase& instructions)
    : WiperPanel(panelContext, "frmVRK_User1", "VRK I2C Evaluation", panelServices, state, "/ShutDown /Wp"),
      InstructionEntry(*this, panelServices, instructions, "Q4410/9") {
    wireSetup();
    wireRegisters();
    wireFamilies();
    clocks_ = console().observeI2cClocks([this] { mirrorClocks(); });
}

void frmVRK_User1::wireSetup() {
    mnu_I2cList.setCaption("I2C Parameter File");
    OptChans.setCaptions({"1", "2", "4"});
    cboI2CClock.setCaption("I2C Clock  (kHz)");
    cmdSampleWiper.setCaptions({"Rd Volts", "Rd Volts", "Rd Volts", "Rd Volts"});
    for (auto& button : cmdI2Read)
        button->setToolTip("Executes an I2C read of the VRK's wiper position.");
    hexEntry(txtDeviceAdr, {.fallback = "50"});
    wireClick(mnu_I2cList, &frmVRK_User1::mnu_I2cList_Click);
    wireClick(mnu_KV4071, &frmVRK_User1::mnu_KV4071_Click);
    wireClick(mnu_KV4074, &frmVRK_User1::mnu_KV4074_Click);
    wireClick(mnuKV4078, &frmVRK_User1::mnuKV4078_Click);
    wireClick(mnuKV6021, &frmVRK_User1::mnuKV6021_Click);
    wireClick(cboI2CClock, &frmVRK_User1::cboI2CClock_Click);
    action("Wrt_VRK", &frmVRK_User1::Wrt_VRK);
    action("Read_VRK", &frmVRK_User1::Read_VRK);
    const auto entries = partEntries();
    for (std::size_t part = 0; part < kI2cParts.size(); ++part)
        entries.at(part + 1)->setCaption(std::string(kI2cParts.at(part).name));
}

std::vector<MenuEntry*> frmVRK_User1::partEntries() {
    return {&mnu_I2cList, &mnu_KV4071, &mnu_KV4074, &mnuKV4078, &mnuKV6021};
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
    txtACRAddress.setText("02");
    txtDeviceAdr.setText("50");
    wipers.TapCount = 128;
    loadChannels();
    pump();
    services().motherboard.initSupplyDefaults();
    lblUserVCC.setVisible(false);
    txtUserVCC.setVisible(false);
    fillSizes();
    Option1[1].setValue(true);
    mirrorClocks();
    board().setPin(frmMotherboardDAQ2::kPinMotherboardSwitch, 0);
    pump();
}

StoreRules frmVRK_User1::storeRules() const {
    StoreRules rules{.bus = PartBus::I2C,
                     .protocol = PartProtocol::Registers,
                     .address = hexToInt(txtDeviceAdr.text()) & 0xFE,
                     .wipers = shownChannels()};
    if (productStarts("Q4410"))
        rules.protocol = PartProtocol::Quad;
    else if (productStarts("Q3318"))
        rules.protocol = PartProtocol::TenBit;
    else if (productStarts("Q4422"))
        rules.protocol = PartProtocol::Banks;
    else if (txtACRAddress.text() != "NA")
        rules.control = hexToInt(txtACRAddress.text());
    return rules;
}

void frmVRK_User1::choosePart(const I2cPartFacts& part) {
    dropPending();
    countAnew();
    leaveFamily();
    hideInstructions();
    txtACRAddress.setText(std::string(part.acrAddress));
    if (txtACR[0].text() == "NA")
        txtACR[0].setText(hexText(wipers.ACRImage)); // this part has the register
    txtDeviceAdr.setText(hexText(part.address, 2));
    wipers.TapCount = part.taps;
    wipers.channelCount = part.channels;
    resetChannelRegisters();
    lblProduct.setCaption(std::string(part.product));
    const int taps = tapOption(part.taps).value();
    OptChans[channelOption(part.channels).value()].setValue(true);
    OptTaps[taps].setValue(true);
    OptTaps_Click(taps);
    pump();
    cboRegSize.setListIndex(1);
    cboDataSize.setListIndex(1);
    lastAddressText_ = txtDeviceAdr.text();
    txtCalcAddr.setText(lastAddressText_);
    setAddressBytes();
    tell(true, std::string(part.name) + " chosen",
         "address " + txtDeviceAdr.text() + " hex, " + decimalText(part.taps) + " taps", &lblProduct);
}

void frmVRK_User1::mnu_KV4071_Click() {
    choosePart(kI2cParts[0]);
}

void frmVRK_User1::mnu_KV4074_Click() {
    choosePart(kI2cParts[1]);
}

void frmVRK_User1::mnuKV4078_Click() {
    choosePart(kI2cParts[2]);
}

void frmVRK_User1::mnuKV6021_Click() {
    choosePart(kI2cParts[3]);
}

void frmVRK_User1::partChanged() {
    WiperPanel::partChanged();
    markDataRegistersStale("the part was chosen since");
    markInstructionsStale("the part was chosen since");
}

void frmVRK_User1::addressChanged() {
    WiperPanel::addressChanged();
    markDataRegistersStale("the address changed since");
    markInstructionsStale("the address changed since");
}

void frmVRK_User1::supplyChanged() {
    WiperPanel::supplyChanged();
    markDataRegistersStale("the supply changed since");
    markInstructionsStale("the supply changed since");
}

void frmVRK_User1::markDataRegistersStale(const std::string& cause) {
    for (auto& shown : lblRdq331x)
        shown->markStale(cause);
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
    (void)requireVcc(); // the exchange runs all the same
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
        lblRdq331x[0].markStale("the wiper was written since");
    }
    if (instructionPart) {
        // This part's data byte is the instruction itself.
        const std::string instruction = hexText(0xA0 + reg, 2);
        f340.txtStartRegWr.setText(instruction);
        f340.txtWriteVal[0].setText(instruction);
    }
    f340.cmdWrite_Click();
    if (instructionPart)
        markInstructionsStale("the I2C panel has written since");
    writeOutcome();
}

bool frmVRK_User1::lastTransferGood() const {
    // A reply that never came leaves the status of the exchange before it.
    return link().lastTransfer() == kLinkGood && link().i2cStatus == kLinkGood;
}

bool frmVRK_User1::lastReadGood() {
    // A read that names no register comes from wherever the part's pointer stands.
    class frmMainF340& f340 = console();
    return lastTransferGood() &&
           (f340.chkRandom.checked() || f340.ChK2WireCommand.checked() || f340.chk2WireRead.checked());
}

std::string frmVRK_User1::sentText(int channel) const {
    if (productStarts("Q4410/9"))
        return "the instruction";
    return cboDataSize.listIndex() == 0 ? "no data" : WiperPanel::sentText(channel);
}

bool frmVRK_User1::writeWiper(int channel) {
    setAddressBytes();
    Wrt_VRK(wipers.ChanReg[channel]);
    return lastTransferGood() && writeNamesRegister(console(), productStarts("Q4410/9"));
}

std::optional<int> frmVRK_User1::readWiper(int channel) {
    setAddressBytes();
    const unsigned before = link().transfers();
    Read_VRK(wipers.ChanReg[channel]);
    // With the data size "None" nothing is sent, and the status is that of an exchange before.
    if (link().transfers() == before || !lastReadGood())
        return std::nullopt;
    return wipers.WiperRead[kWiperElement];
}

std::string frmVRK_User1::failureDetail() const {
    if (!lastTransferGood())
        return "bus status " + decimalText(link().i2cStatus);
    return cboDataSize.listIndex() == 0 ? "nothing is read with the data size None"
                                        : "the console's options leave the register byte out";
}

int frmVRK_User1::shownPosition(int value) const {
    return std::min(value, wipers.TapCount);
}

void frmVRK_User1::writeOutcome() {
    if (link().i2cStatus == kLinkGood) {
        goodWrite();
        return;
    }
    badWrite();
    pump();
    context().say("Write VRK Error, Check Device Address, VCC & AVDD Power and I2C Connections ",
                  " Error during Write to VRK ");
}

int frmVRK_User1::twoByteReading() {
    return (hexToInt(console().TXTI2C[0].text()) & 3) * 256 + hexToInt(console().TXTI2C[1].text());
}

void frmVRK_User1::Read_VRK(int reg) {
    (void)requireVcc(); // the exchange runs all the same
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
            markReading(lblRdq331x[0], lastReadGood());
        }
    }
    readOutcome();
}

void frmVRK_User1::readThroughInstruction(int reg) {
    class frmMainF340& f340 = console();
    setBusAddress();
    f340.txtNumToRead.setText("1");
    const PortLines port(services());
    RaisedA0 raised(port);
    pump();
    wait(Milliseconds{20});
    f340.txtStartRegRD.setText(hexText(0x90 + reg, 2));
    f340.cmdRead_Click();
    wipers.WiperRead[kWiperElement] = hexToInt(f340.TXTI2C[0].text());
    raised.lower();
}

void frmVRK_User1::readOutcome() {
    if (link().i2cStatus == kLinkGood) {
        goodRead();
        return;
    }
    badRead();
    pump();
    context().say("Read VRK Error, Check Device Addreess, VCC & AVDD Power and I2C Connections ",
                  " Error during VRK Read ");
}

} // namespace vrk
