#include "panels/blocks/tableRows.h"
#include "panels/i2c/frmVRK_User1.h"
#include "platform/runtime/text.h"

namespace vrk {

namespace {
/// Columns of the product table that are this bus's own.
enum Column : int { kAcrAddress = 5, kAcr = 6, kGeneralRegister = 7, kRegisterSize = 12, kDataSize = 13 };
} // namespace

std::string frmVRK_User1::tableRowFault(const ProductTable& table) const {
    if (std::string fault = sizesFault(table); !fault.empty())
        return fault;
    if (!isHexByte(table.field(kTableAddress)))
        return cellFault(table, kTableAddress, "a bus address of two hexadecimal digits");
    for (const int column : {kAcrAddress, kAcr})
        if (table.field(column) != "NA" && !isHexByte(table.field(column)))
            return cellFault(table, column, "a byte of two hexadecimal digits or NA");
    const std::string general = table.field(kGeneralRegister);
    if (general != "NA" && !isHexByte(general.substr(0, 1)))
        return cellFault(table, kGeneralRegister, "a register's hexadecimal digit or NA");
    for (const int column : {kRegisterSize, kDataSize})
        if (isNumeric(table.field(column)) && !isWholeBetween(table.field(column), 0, 2))
            return cellFault(table, column, "a size of 0, 1 or 2 bytes");
    return {};
}

void frmVRK_User1::mnu_I2cList_Click() {
    chooseFromTable();
}

void frmVRK_User1::Form_Activate() {
    WiperPanel::Form_Activate();
    // Disabled, it stands under the table still, which has its own way back.
    if (familyAway_ && enabled())
        afterTable();
}

void frmVRK_User1::beforeTable() {
    familyAway_ = true;
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
    unloadInstructions();
    clearAddressPins();
    board().chkPData[frmMotherboardDAQ2::kPinShutdown].setValue(1);
    board().cmdWrtPipe1_Click();
}

void frmVRK_User1::afterTable() {
    familyAway_ = false;
    numberChannels();
    SSFrame2.setCaption("ACR Register Control");
    Label2.setCaption("ACR Address");
    fraADDRSelect.setVisible(true);
    applyFamily();
}

void frmVRK_User1::takeTableRow(const ProductTable& table) {
    txtACRAddress.setText(twoDigits(table.field(kAcrAddress)));
    txtACR[0].setText(twoDigits(table.field(kAcr)));
    const std::string general = table.field(kGeneralRegister);
    const bool none = general == "NA";
    lblGDRs.setCaption(none ? "None Available" : general);
    txtGPAddress.setText(none ? "NA" : "0" + general.substr(0, 1));
    txtDeviceAdr.setText(table.field(kTableAddress));
    wipers.TapCount = toInt16(decimalInt(table.field(kTableTaps)));
    wipers.channelCount = toInt16(decimalInt(table.field(kTableChannels)));
    lblProduct.setCaption(table.field(kTableProduct));
    const auto selectSize = [](ComboBox& list, const std::string& text) {
        list.setListIndex(isNumeric(text) ? decimalInt(text) : 1);
    };
    selectSize(cboRegSize, table.field(kRegisterSize));
    selectSize(cboDataSize, table.field(kDataSize));
    // 512 taps select nothing here: no I2C part has them, and the panel keeps the option that it had.
    constexpr int kNotOnI2c = 512;
    selectSizes(kNotOnI2c);
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
        for (const int pin : {0, 1, 3, 3}) // DS0, DS1 and CS; the second CS finds it set and sends nothing
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
