#include "panels/i2c/frmVRK_User1.h"

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

} // namespace

void frmVRK_User1::mnu_I2cList_Click() {
    pump();
    I2COptionValues[0] = 3;
    I2COptionValues[1] = 1;
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
    ProductTable& table = uses().products;
    table.open(ProductTable::Bus::I2C);
    while (!table.returned())
        events().waitForEvents();
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
    const ProductTable& table = uses().products;
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
    switch (wipers.channelCount) {
    case 1:
        OptChans[0].setValue(true);
        break;
    case 2:
        OptChans[1].setValue(true);
        break;
    case 4:
        OptChans[2].setValue(true);
        break;
    default:
        break; // the panel keeps the option that it had
    }
    switch (wipers.TapCount) {
    case 16:
        OptTaps[0].setValue(true);
        break;
    case 32:
        OptTaps[1].setValue(true);
        break;
    case 64:
        OptTaps[2].setValue(true);
        break;
    case 100:
        OptTaps[3].setValue(true);
        break;
    case 128:
        OptTaps[4].setValue(true);
        break;
    case 256:
        OptTaps[5].setValue(true);
        break;
    case 1024:
        OptTaps[7].setValue(true);
        break;
    default:
        break; // 512 has no case on this panel: deliberate
    }
    if (const int option = selectedOption(OptChans); option >= 0)
        OptChans_Click(option);
    if (const int option = selectedOption(OptTaps); option >= 0)
        OptTaps_Click(option);
    setAddressBytes();
    lastAddressText_ = txtDeviceAdr.text();
    txtCalcAddr.setText(lastAddressText_);
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
        for (const int pin : {0, 1, 3, 3}) // the last one twice, as ever
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
