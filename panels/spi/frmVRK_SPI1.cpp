#include "panels/spi/frmVRK_SPI1.h"

#include "panels/blocks/choices.h"
#include "panels/blocks/entries.h"
#include "panels/instruction/frm_q4420.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {
/// All of them where there are no more: the field is empty until a first byte has come.
std::string lastDigits(const std::string& hex, std::size_t digits) {
    return hex.size() > digits ? hex.substr(hex.size() - digits) : hex;
}
} // namespace

frmVRK_SPI1::frmVRK_SPI1(PanelContext& panelContext, BenchServices& panelServices, WiperState& state,
                         const Companions& companions)
    : WiperPanel(panelContext, "frmVRK_SPI1", "VRK SPI Evaluation", panelServices, state, "/ShutDown"),
      InstructionEntry(*this, panelServices, companions.quad, "Q4420/1"),
      companions_(companions) {
    wireSetup();
    wireRegisters();
    wireFrames();
    clocks_ = console().observeSpiClocks([this] { mirrorClocks(); });
    boardRead_ = link().observeBoardRead([this] { readClock(); });
}

void frmVRK_SPI1::wireSetup() {
    mnu_SPI_List.setCaption("SPI Parameter File");
    OptChans.setCaptions({"Sngle Channel VRK", "Dual Channel VRK", "Quad Channel VRK"});
    const auto command = [](TextBox& box, const char* text, const char* caption, const char* tip) {
        box.setText(text);
        box.setCaption(caption);
        box.setToolTip(tip);
        box.setMaxLength(2);
        box.onKeyPress(hexKeyFilter);
        box.onLostFocus([&box] { box.setText(upperCase(box.text())); });
    };
    command(txtBaseVRKReadAddress, "80", "Read", "Read Address of first DA Channel");
    command(txtBaseVRKWriteAddress, "C0", "Write", "Write Address of first DA Channel");
    txtBaseVRKReadAddress.onChange([this] { markChannelsStale("the read command changed since"); });
    txtSPIRDQuantity.setText("4");
    txtSPIRDQuantity.setToolTip("Number of SPI bytes during Read Operation");
    txtSPIWrCount.setText("2");
    txtSPIWrCount.setToolTip("Number of SPI bytes during Write Operation");
    for (TextBox* count : {&txtSPIRDQuantity, &txtSPIWrCount}) {
        count->setMaxLength(1);
        count->onKeyPress(decimalKeyFilter);
    }
    chkSendID.setCaption("ID Enabled");
    chkSendID.setToolTip("Check to add ID Byte during SPI Operation");
    txtDeviceAdr.setText("NA");
    txtDeviceAdr.setToolTip("VRK SPI Address (If used)");
    hexEntry(txtDeviceAdr, {.fallback = "50", .mayBeNone = true});
    for (auto& pin : chkI2CAdr)
        pin->setToolTip("Sets Device ID Value");
    txtCalcAddr.setToolTip("Device ID computed from the pins");
    cboSPIClock.setCaption("SPI clock frequency (MHz)");
    cboSPIClock.setToolTip("Selects the SPI Clock Frequency");
    cmdSetSPICLock.setCaption("Update");
    for (int channel = 0; channel < kChannels; ++channel) {
        cmdI2Read[channel].setToolTip("Executes an SPI read of the VRK's wiper position.");
        cmdSampleWiper[channel].setCaption("RW Volts");
        cmdSampleWiper[channel].setToolTip("Click to sample Wiper Voltage");
    }
    txtADOffset.setToolTip("VCC Offset of Motherboard");
    txtADGain.setToolTip("VCC Gain needed by Motherboard");
    wireClick(mnu_SPI_List, &frmVRK_SPI1::mnu_SPI_List_Click);
    wireClick(mnuKV4180, &frmVRK_SPI1::mnuKV4180_Click);
    wireClick(mnuKV4184, &frmVRK_SPI1::mnuKV4184_Click);
    wireClick(chkSendID, &frmVRK_SPI1::chkSendID_Click);
    wireClick(cboSPIClock, &frmVRK_SPI1::cboSPIClock_Click);
    wireClick(cmdSetSPICLock, &frmVRK_SPI1::cmdSetSPICLock_Click);
    const auto entries = partEntries();
    for (std::size_t part = 0; part < kSpiParts.size(); ++part)
        entries.at(part + 1)->setCaption(std::string(kSpiParts.at(part).name));
}

std::vector<MenuEntry*> frmVRK_SPI1::partEntries() {
    return {&mnu_SPI_List, &mnuKV4180, &mnuKV4184};
}

void frmVRK_SPI1::Form_Load() {
    becomeActive();
    txtACRAddress[0].setText("02");
    txtDeviceAdr.setText("50");
    wipers.TapCount = 128;
    numberChannels();
    loadChannels();
    fillSizes();
    listClocks();
    services().motherboard.initSupplyDefaults();
    lblUserVCC.setVisible(false);
    txtUserVCC.setVisible(false);
    Option1[1].setValue(true);
    pump();
    board().setPin(frmMotherboardDAQ2::kPinMotherboardSwitch, 1);
    board().cmdWrtPipe1_Click();
}

void frmVRK_SPI1::Form_Activate() {
    WiperPanel::Form_Activate();
    if (productStarts("Q4420/1"))
        takeBusOptions();
}

void frmVRK_SPI1::beforeMenu() {
    // The console's I2C options are another panel's from here on.
    if (const auto before = std::exchange(optionsBefore_, std::nullopt))
        setBusOptions(*before);
}

std::string frmVRK_SPI1::busAddress() const {
    return chkSendID.checked() || family() == SpiFamily::TenBit ? txtDeviceAdr.text() : "";
}

void frmVRK_SPI1::markCompanionsStale(const std::string& cause) {
    markInstructionsStale(cause);
    if (Frm3310* panel = companions_.tenBit.loadedPanel())
        panel->markRegistersStale(cause);
}

void frmVRK_SPI1::partChanged() {
    WiperPanel::partChanged();
    markCompanionsStale("the part was chosen since");
}

void frmVRK_SPI1::addressChanged() {
    WiperPanel::addressChanged();
    markCompanionsStale("the address changed since");
}

void frmVRK_SPI1::supplyChanged() {
    WiperPanel::supplyChanged();
    markCompanionsStale("the supply changed since");
}

void frmVRK_SPI1::prepareInstructions(InstructionPanel& panel) {
    static_cast<frm_q4420&>(panel).takeFamilyName();
}

void frmVRK_SPI1::chkSendID_Click() {
    // Another frame: it may be another part that answers.
    addressChanged();
}

void frmVRK_SPI1::mirrorClocks() {
    // Row by row the console's list. The board is the master: nothing is sent for it.
    const ComboBox& source = console().cboSPIClock;
    cboSPIClock.setRows(source.rows());
    cboSPIClock.showListIndex(source.listIndex());
}

void frmVRK_SPI1::readClock() {
    if (link().activePanel != this)
        return;
    // A handler that goes on behind Retry must find the console's last reply in the buffer.
    const hid::Report reply = link().reportBuffer;
    listClocks();
    link().reportBuffer = reply;
}

void frmVRK_SPI1::listClocks() {
    do
        console().cboSPIclock_init();
    while (!console().replied() && link().attached());
}

void frmVRK_SPI1::cboSPIClock_Click() {
    console().cboSPIClock.setListIndex(cboSPIClock.listIndex());
    console().cboSPIClock_Click();
}

void frmVRK_SPI1::choosePart(const SpiPartFacts& part) {
    dropPending();
    countAnew();
    leaveFamily();
    hideInstructions();
    txtSPIWrCount.setText(decimalText(part.writeBytes));
    txtSPIRDQuantity.setText(decimalText(part.readBytes));
    txtACRAddress[0].setText(std::string(part.acrWrite));
    txtACRAddress[1].setText(std::string(part.acrRead));
    if (txtACR[0].text() == "NA")
        txtACR[0].setText(hexText(wipers.ACRImage)); // this part has the register
    txtDeviceAdr.setText(std::string(part.id));
    chkSendID.setValue(part.hasId ? 1 : 0);
    txtGPAddress[0].setText(std::string(part.generalWrite));
    txtGPAddress[1].setText(std::string(part.generalRead));
    txtBaseVRKWriteAddress.setText(std::string(part.wiperWrite));
    txtBaseVRKReadAddress.setText(std::string(part.wiperRead));
    wipers.TapCount = part.taps;
    wipers.channelCount = part.channels;
    lblProduct.setCaption(std::string(part.product));
    selectSizes();
    cboRegSize.setListIndex(1);
    cboDataSize.setListIndex(1);
    tell(true, std::string(part.name) + " chosen",
         (part.hasId ? "ID " + txtDeviceAdr.text() + " hex, " : "no ID, ") + decimalText(part.taps) + " taps",
         &lblProduct);
}

StoreRules frmVRK_SPI1::storeRules() const {
    StoreRules rules{.bus = PartBus::SPI,
                     .protocol = PartProtocol::Registers,
                     .wipers = shownChannels(),
                     .firstWrite = hexToInt(txtBaseVRKWriteAddress.text())};
    // The quad parts' instructions are led by the ID whatever the box says.
    if (!busAddress().empty() || productStarts("Q4420"))
        rules.address = hexToInt(txtDeviceAdr.text());
    if (productStarts("Q4420"))
        rules.protocol = PartProtocol::Quad;
    else if (productStarts("Q3310"))
        rules.protocol = PartProtocol::TenBit;
    else if (txtACRAddress[0].text() != "NA")
        rules.control = hexToInt(txtACRAddress[0].text());
    return rules;
}

void frmVRK_SPI1::mnuKV4180_Click() {
    choosePart(kSpiParts[0]);
}

void frmVRK_SPI1::mnuKV4184_Click() {
    choosePart(kSpiParts[1]);
}

// Frames

SpiFrame frmVRK_SPI1::writeFrame(int channel) const {
    const std::string& hex = txtHexDataWrt[channel].text();
    const bool tenBit = family() == SpiFamily::TenBit;
    // Register parts have one data byte, which the last two digits fill.
    return spiWriteFrame(lead(), spiCommand(txtBaseVRKWriteAddress.text(), channel),
                         tenBit ? hex : lastDigits(hex, 2), family());
}

SpiFrame frmVRK_SPI1::readFrame(int channel) const {
    return spiReadFrame(lead(), spiCommand(txtBaseVRKReadAddress.text(), channel), family());
}

SpiFrame frmVRK_SPI1::registerFrame(RegisterAction action) const {
    const std::string& command = registerAddress(action).text();
    if (isRead(action))
        return spiReadFrame(lead(), command);
    return spiWriteFrame(lead(), command, isControl(action) ? txtACR[0].text() : txtGPWrite.text());
}

bool frmVRK_SPI1::sendFrame(const SpiFrame& frame) {
    frmMotherboardDAQ2& daq = board();
    const int length = decimalByte(txtSPIWrCount.text());
    requireSendable(frame, length);
    for (std::size_t at = 0; at < frame.size(); ++at)
        daq.txtSPIWrite2Data[static_cast<int>(at) + 1].setText(frame[at].hex);
    daq.txtSPIWrQty2.setText(txtSPIWrCount.text());
    daq.cmdSPIOWrite2_Click();
    return judge(frame, length, spiWriteRow(daq));
}

bool frmVRK_SPI1::exchangeFrame(const SpiFrame& frame, int answerBytes) {
    frmMotherboardDAQ2& daq = board();
    const int length = decimalByte(txtSPIRDQuantity.text());
    if (length < answerBytes)
        throw subscriptOutOfRange(); // the answer is the frame's last bytes
    requireSendable(frame, length);
    answerLength_ = length;
    for (std::size_t at = 0; at < frame.size(); ++at)
        daq.txtSPIWrite3Data[static_cast<int>(at) + 1].setText(frame[at].hex);
    daq.txtSPIWrQty3.setText(txtSPIRDQuantity.text());
    daq.cmdSPIOWrite3_Click();
    const bool good = judge(frame, length, spiReadRow(daq));
    // Behind an ID the check byte is the ID that comes back: no answer, however it looks.
    const bool led = chkSendID.checked() || family() == SpiFamily::TenBit;
    answered_ = good && (!led || length - answerBytes > SpiRowFields::kCheckByte);
    if (good && !answered_)
        failure_ = "a frame of " + decimalText(length) + " bytes ends ahead of the part's answer";
    return good;
}

bool frmVRK_SPI1::judge(const SpiFrame& frame, int length, const SpiRowFields& row) {
    const bool replied = console().replied();
    bool own = true;
    for (int at = 0; at < std::min(length, static_cast<int>(frame.size())); ++at)
        own = own && row.holds(at + 1, frame[static_cast<std::size_t>(at)].hex);
    // Where the frame is too short for the check byte the field shows an exchange of before.
    const bool reaches = length > SpiRowFields::kCheckByte;
    if (!replied)
        failure_ = "no reply from the board";
    else if (!own)
        failure_ = "another frame went out meanwhile";
    else if (!reaches)
        failure_ = "a frame of " + decimalText(length) + " bytes ends ahead of the part's check byte";
    else
        failure_ = "the part's check byte is " + row.came[SpiRowFields::kCheckByte].text();
    return replied && own && reaches && row.checked();
}

const std::string& frmVRK_SPI1::answer(int fromEnd) const {
    return board().txtSPIORead3[answerLength_ - fromEnd].text();
}

std::string frmVRK_SPI1::sentText(int channel) const {
    if (decimalInt(txtSPIWrCount.text()) < static_cast<int>(writeFrame(channel).size()))
        return "a frame without all of its data";
    return lastDigits(txtHexDataWrt[channel].text(), family() == SpiFamily::TenBit ? 3 : 2);
}

bool frmVRK_SPI1::writeWiper(int channel) {
    const bool good = sendFrame(writeFrame(channel));
    const Colour colour = good ? Colour::LightGreen : Colour::LightRed;
    Shape2[static_cast<int>(RegisterAction::ControlWrite)].setColour(colour);
    showTransfer(false, colour);
    markCompanionsStale("the SPI panel has written since");
    return good;
}

std::optional<int> frmVRK_SPI1::readWiper(int channel) {
    const bool tenBit = family() == SpiFamily::TenBit;
    const bool good = exchangeFrame(readFrame(channel), tenBit ? 2 : 1);
    const Colour colour = good ? Colour::LightGreen : Colour::LightRed;
    Shape2[static_cast<int>(RegisterAction::ControlRead)].setColour(colour);
    showTransfer(true, colour);
    int value = hexToInt(answer(1));
    if (tenBit)
        value += 256 * hexToInt(lastDigits(answer(2), 1));
    wipers.WiperRead[kWiperElement] = value;
    return answered_ ? std::optional(value) : std::nullopt;
}

} // namespace vrk
