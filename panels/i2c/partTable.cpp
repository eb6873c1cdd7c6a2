#include "panels/blocks/choices.h"
#include "panels/i2c/frmVRK_User1.h"
#include "platform/runtime/text.h"

namespace vrk {

namespace {

/// Columns of the product table.
enum Column : int {
    kProduct = 1,
    kChannelCount = 2,
    kTaps = 3,
    kAddress = 4,
    kAcrAddress = 5,
    kAcr = 6,
    kGeneralRegister = 7,
    kRegisterSize = 12,
    kDataSize = 13
};

std::string twoDigits(const std::string& text) {
    return text.size() == 1 ? "0" + text : text;
}

int selectedOption(const ControlArray<OptionButton>& options) {
    for (const auto& option : options)
        if (option->value())
            return option->index();
    return -1;
}

bool isHexByte(const std::string& text) {
    return !text.empty() && text.size() <= 2 &&
           text.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
}

bool isWholeUpTo(const std::string& text, int most) {
    if (!isNumeric(text))
        return false;
    const double value = leadingNumber(text);
    return value >= 0 && value <= most && value == static_cast<int>(value);
}

/// What is wrong with a row of the table; empty if the panel can take it.
std::string rowFault(const ProductTable& table) {
    constexpr int kMostTaps = 1024;
    const auto complaint = [&table](int column, const char* wanted) {
        return "column " + decimalText(column) + " holds \"" + table.field(column) + "\", not " + wanted;
    };
    if (!isWholeUpTo(table.field(kChannelCount), WiperPanel::kChannels) ||
        decimalInt(table.field(kChannelCount)) < 1)
        return complaint(kChannelCount, "a number of channels from 1 to 4");
    if (!isWholeUpTo(table.field(kTaps), kMostTaps) || decimalInt(table.field(kTaps)) < 1)
        return complaint(kTaps, "a number of taps up to 1024");
    if (!isHexByte(table.field(kAddress)))
        return complaint(kAddress, "a bus address of two hexadecimal digits");
    for (const int column : {kAcrAddress, kAcr})
        if (table.field(column) != "NA" && !isHexByte(table.field(column)))
            return complaint(column, "a byte of two hexadecimal digits or NA");
    const std::string general = table.field(kGeneralRegister);
    if (general != "NA" && !isHexByte(general.substr(0, 1)))
        return complaint(kGeneralRegister, "a register's hexadecimal digit or NA");
    for (const int column : {kRegisterSize, kDataSize})
        if (isNumeric(table.field(column)) && !isWholeUpTo(table.field(column), 2))
            return complaint(column, "a size of 0, 1 or 2 bytes");
    return {};
}

} // namespace

void frmVRK_User1::mnu_I2cList_Click() {
    ProductTable& table = services().products;
    if (choosing_) {
        table.open(ProductTable::Bus::I2C, *this); // once more to the front; who waits for it goes on waiting
        return;
    }
    choosing_ = true;
    const OnScopeExit chosen([this] { choosing_ = false; });
    pump();
    dropPending();
    for (Frame* frame : {&fraADDRSelect, &SSFrame2, &FrmShutdown, &frmRegisterWrite})
        frame->setVisible(true);
    Frq4410Show.setVisible(false);
    txtCalcAddr.setVisible(false);
    cmdCopyAdr.setVisible(false);
    console().chk2WireRead.setValue(0);
    console().chkRandom.setValue(1);
    console().setI2Coptions(0);
    pump();
    familyOptions_ = false; // the bus options have just gone out
    leaveFamily();
    clearAddressPins();
    board().chkPData[frmMotherboardDAQ2::kPinShutdown].setValue(1);
    board().cmdWrtPipe1_Click();
    {
        // What stands under the table waits with the action that opened it.
        const OnScopeExit usable([this] { setEnabled(true); });
        setEnabled(false);
        table.open(ProductTable::Bus::I2C, *this);
        while (!table.returned())
            events().waitForEvents();
    }
    if (link().activePanel != this)
        return; // the panel was left meanwhile: nothing is taken
    if (table.selected())
        takeTableRow();
    else
        context().say("No Device was selected from the list");
    numberChannels();
    SSFrame2.setCaption("ACR Register Control");
    Label2.setCaption("ACR Address");
    fraADDRSelect.setVisible(true);
    applyFamily();
}

void frmVRK_User1::takeTableRow() {
    const ProductTable& table = services().products;
    if (const std::string fault = rowFault(table); !fault.empty()) {
        context().say("This row cannot be taken: " + fault + ".");
        return;
    }
    dropPending();
    countAnew();
    txtACRAddress.setText(twoDigits(table.field(kAcrAddress)));
    txtACR[0].setText(twoDigits(table.field(kAcr)));
    const std::string general = table.field(kGeneralRegister);
    const bool none = general == "NA";
    lblGDRs.setCaption(none ? "None Available" : general);
    txtGPAddress.setText(none ? "NA" : "0" + general.substr(0, 1));
    txtDeviceAdr.setText(table.field(kAddress));
    wipers.TapCount = toInt16(decimalInt(table.field(kTaps)));
    wipers.channelCount = toInt16(decimalInt(table.field(kChannelCount)));
    lblProduct.setCaption(table.field(kProduct));
    const auto selectSize = [](ComboBox& list, const std::string& text) {
        list.setListIndex(isNumeric(text) ? decimalInt(text) : 1);
    };
    selectSize(cboRegSize, table.field(kRegisterSize));
    selectSize(cboDataSize, table.field(kDataSize));
    resetChannelRegisters();
    if (const auto option = channelOption(wipers.channelCount))
        OptChans[*option].setValue(true); // else the panel keeps the option that it had
    // 512 taps select nothing here: no I2C part has them, and the panel keeps the option that it had.
    constexpr int kNotOnI2c = 512;
    if (const auto option = tapOption(wipers.TapCount); option && wipers.TapCount != kNotOnI2c)
        OptTaps[*option].setValue(true);
    if (const int option = selectedOption(OptChans); option >= 0)
        OptChans_Click(option);
    if (const int option = selectedOption(OptTaps); option >= 0)
        OptTaps_Click(option);
    setAddressBytes();
    lastAddressText_ = txtDeviceAdr.text();
    txtCalcAddr.setText(lastAddressText_);
    tell(true, lblProduct.caption() + " chosen from the table", "address " + txtDeviceAdr.text() + " hex",
         &lblProduct);
}

void frmVRK_User1::leaveFamily() {
    if (Frq4422.visible()) {
        // Its pins were that family's lines; the boxes of the ordinary parts say what they are now.
        for (auto& pin : Chq4422)
            pin->showValue(0);
        clearAddressPins();
        raiseAddressPins();
        ChkShutDown2_Click(); // P1.2 as well, and the write of all ports
    }
    Frq4422.setVisible(false);
    frq331x.setVisible(false);
    Frq4410Show.setVisible(false);
    for (Frame* frame : {&fraADDRSelect, &SSFrame2, &FrmShutdown, &frmRegisterWrite})
        frame->setVisible(true);
    for (auto& box : chkI2CAdr)
        box->setVisible(true);
    txtCalcAddr.setVisible(true);
    cmdCopyAdr.setVisible(true);
    txtACRAddress.setEnabled(true);
    cmdACRRead.setEnabled(true);
    cmdACRWrite.setEnabled(true);
    txtACR[1].setEnabled(true);
    Shape2[1].setVisible(true);
    if (!familyOptions_)
        return;
    familyOptions_ = false;
    numberChannels();
    SSFrame2.setCaption("ACR Register Control");
    Label2.setCaption("ACR Address");
    console().chk2WireRead.setValue(0);
    console().chkRandom.setValue(1);
    console().setI2Coptions(0);
}

void frmVRK_User1::applyFamily() {
    if (productStarts("Q4422")) {
        familyOptions_ = true;
        txtACRAddress.setEnabled(false);
        for (int channel = 0; channel < kChannels; ++channel) {
            lblChanSend[channel].setCaption("WCR" + decimalText(channel));
            lblChanRcvr[channel].setCaption("WCR" + decimalText(channel));
        }
        SSFrame2.setCaption("Status Register Control");
        Label2.setCaption("Status Address");
        Frq4422.setVisible(true);
        for (auto& box : chkI2CAdr)
            box->setVisible(false);
        txtCalcAddr.setVisible(false);
        cmdCopyAdr.setVisible(false);
        for (const int pin : {0, 1, 3, 3}) // CS twice: harmless, and seen on the wire
            Chq4422[pin].setValue(1);
        fraADDRSelect.setVisible(false);
    } else if (productStarts("Q4410/9")) {
        familyOptions_ = true;
        Frq4410Show.setVisible(true);
        for (Frame* frame : {&frmRegisterWrite, &fraADDRSelect, &SSFrame2, &FrmShutdown})
            frame->setVisible(false);
        lblChanSend[0].setCaption("A0");
        lblChanRcvr[0].setCaption("90");
        console().chk2WireRead.setValue(1);
        console().chkRandom.setValue(0);
        console().setI2Coptions(0);
    } else if (productStarts("Q3318/9")) {
        familyOptions_ = true;
        frq331x.setVisible(true);
        frq331x.setCaption("Q3318/9 Table 3 Instruction Set");
        lblChanSend[0].setCaption("A0");
        lblChanRcvr[0].setCaption("80");
        console().chk2WireRead.setValue(1);
        console().setI2Coptions(0);
    }
}

} // namespace vrk
