#include "panels/i2c/frmVRK_User1.h"

namespace vrk {

void frmVRK_User1::wireRegisters() {
    txtACRAddress.setText("02");
    txtACR[0].setText("00");
    txtACR[1].setText("--");
    Option1.setCaptions({"IVR EEPROM", "WR Register"});
    // Bit 7 it is, whatever the tips call it.
    Option1[0].setToolTip("Clears the LSB of the Data byte: writes go to the non-volatile IVR");
    Option1[1].setToolTip("Sets the LSB of the Data byte: writes go to the volatile WR");
    for (auto& option : Option1)
        option->join(optionGroup_);
    chkShutdown.setCaption("/ShutDown");
    chkShutdown.setToolTip("Uncheck to enable shutdown (Shut Down is Active Low)");
    chkShutdown.showValue(1);
    lblShutDown.setCaption("Shutdown is ACTIVE!");
    lblShutDown.setVisible(false);
    txtGPAddress.setText("00");
    txtGPWrite.setText("00");
    lblGPRead.setCaption("--");
    lblGDRs.setCaption("None Available");
    cmdGPRead.setCaption("Read");
    cmdWriteGP.setCaption("Write");
    FrmShutdown.setCaption("Shutdown");
    frmRegisterWrite.setCaption("General Purpose Register");
    Shape2[0].setCaption("ACR write");
    Shape2[1].setCaption("ACR read");
    Shape2[2].setCaption("Register write");
    Shape2[3].setCaption("Register read");
    cmdReadAllWipers.setCaptions({"Read All", "Set Write = Read"});
    for (Control* control :
         std::initializer_list<Control*>{&txtACRAddress, &txtACR[0], &txtACR[1], &Option1[0], &Option1[1],
                                         &Shape2[0], &Shape2[1], &Label2})
        control->setContainer(SSFrame2);
    for (Control* control : std::initializer_list<Control*>{&chkShutdown, &lblShutDown})
        control->setContainer(FrmShutdown);
    for (Control* control :
         std::initializer_list<Control*>{&txtGPAddress, &txtGPWrite, &lblGPRead, &cmdGPRead, &cmdWriteGP,
                                         &Shape2[2], &Shape2[3], &lblGDRs})
        control->setContainer(frmRegisterWrite);

    hexEntry(txtACR[0], "00", [this] { wipers.ACRImage = hexToInt(txtACR[0].text()); });
    txtACR[1].onKeyPress(hexKeyFilter); // its "--" is no entry, and stays when the field is left
    for (TextBox* box : {&txtACRAddress, &txtGPAddress}) {
        hexEntry(*box, "00");
        box->onLostFocus([box] {
            // "NA" stands for a part that has no such register, and stays.
            if (box->text() == "NA")
                return;
            box->setText(upperCase(box->text()));
            const int value = hexToInt(box->text());
            if (value <= 0 || value > 256)
                box->setText("00");
        });
    }
    hexEntry(txtGPWrite, "00");
    wireClick(Option1, &frmVRK_User1::Option1_Click);
    wireClick(chkShutdown, &frmVRK_User1::chkShutdown_Click);
    wireClick(cmdACRRead, &frmVRK_User1::cmdACRRead_Click);
    wireClick(cmdACRWrite, &frmVRK_User1::cmdACRWrite_Click);
    wireClick(cmdGPRead, &frmVRK_User1::cmdGPRead_Click);
    wireClick(cmdWriteGP, &frmVRK_User1::cmdWriteGP_Click);
    wireClick(cmdReadAllWipers, &frmVRK_User1::cmdReadAllWipers_Click);
}

void frmVRK_User1::Option1_Click(int index) {
    wipers.ACRImage = (index == 1 ? 0x80 : 0) + (chkShutdown.checked() ? 0x40 : 0);
    txtACR[0].setText(hexText(wipers.ACRImage));
}

void frmVRK_User1::chkShutdown_Click() {
    if (chkShutdown.checked())
        wipers.ACRImage |= 0x40;
    else
        wipers.ACRImage &= 0xBF;
    lblShutDown.setVisible(!chkShutdown.checked());
    txtACR[0].setText(hexText(wipers.ACRImage));
}

bool frmVRK_User1::hasNone(const TextBox& address, const char* message) {
    if (address.text() != "NA")
        return false;
    context().say(message);
    return true;
}

void frmVRK_User1::cmdACRRead_Click() {
    if (txtACRAddress.text() == "NA") {
        // The buttons stay off: that is how the panel stands for a part without this register.
        cmdACRRead.setEnabled(false);
        cmdACRWrite.setEnabled(false);
        hasNone(txtACRAddress, "This device has no ACR Register");
        return;
    }
    DisabledWhile busy({&cmdACRRead, &cmdACRWrite});
    pump();
    warnIfVccOff();
    setBusAddress();
    console().txtNumToRead.setText("1");
    console().txtStartRegRD.setText(txtACRAddress.text());
    console().cmdRead_Click();
    txtACR[1].setText(console().txtReadVal[hexToInt(txtACRAddress.text())].text());
    const Colour colour = link().i2cStatus == kLinkGood ? Colour::LightGreen : Colour::LightRed;
    Shape2[1].setColour(colour);
    Shape1[2].setColour(colour);
    pump();
    wait(Milliseconds{20});
    busy.release();
    pump();
}

void frmVRK_User1::cmdACRWrite_Click() {
    if (txtACRAddress.text() == "NA") {
        cmdACRRead.setEnabled(false);
        cmdACRWrite.setEnabled(false);
        hasNone(txtACRAddress, "This device has no ACR Register");
        return;
    }
    DisabledWhile busy({&cmdACRRead, &cmdACRWrite});
    pump();
    warnIfVccOff();
    wipers.ACRImage = hexToByte(txtACR[0].text());
    pump();
    setBusAddress();
    console().txtNumToWrite.setText("1");
    console().txtStartRegWr.setText(txtACRAddress.text());
    console().txtWriteVal[0].setText(txtACR[0].text());
    console().cmdWrite_Click();
    const Colour colour = link().i2cStatus == kLinkGood ? Colour::LightGreen : Colour::LightRed;
    Shape2[0].setColour(colour);
    Shape1[1].setColour(colour);
    if (productStarts("Q4422"))
        labelBank();
    busy.release();
    pump();
}

void frmVRK_User1::cmdGPRead_Click() {
    wait(Milliseconds{20});
    DisabledWhile busy({&cmdGPRead, &cmdWriteGP});
    if (hasNone(txtGPAddress, "This device has no GP Register"))
        return;
    warnIfVccOff();
    setBusAddress();
    console().txtNumToRead.setText("1");
    console().txtStartRegRD.setText(txtGPAddress.text());
    console().cmdRead_Click();
    const std::string text = console().txtReadVal[hexToInt(txtGPAddress.text())].text();
    lblGPRead.setCaption(text.size() == 1 ? "0" + text : text);
    const Colour colour = link().i2cStatus == kLinkGood ? Colour::LightGreen : Colour::LightRed;
    Shape2[3].setColour(colour);
    Shape1[2].setColour(colour);
    busy.release();
    pump();
}

void frmVRK_User1::cmdWriteGP_Click() {
    wait(Milliseconds{20});
    DisabledWhile busy({&cmdGPRead, &cmdWriteGP});
    if (hasNone(txtGPAddress, "This device has no GP Register"))
        return;
    warnIfVccOff();
    setBusAddress();
    console().txtNumToWrite.setText("1");
    console().txtStartRegWr.setText(txtGPAddress.text());
    console().txtWriteVal[0].setText(txtGPWrite.text());
    console().cmdWrite_Click();
    const Colour colour = link().i2cStatus == kLinkGood ? Colour::LightGreen : Colour::LightRed;
    Shape2[2].setColour(colour);
    Shape1[1].setColour(colour);
    busy.release();
    pump();
}

void frmVRK_User1::cmdReadAllWipers_Click(int index) {
    for (int channel = 0; channel < wipers.channelCount; ++channel) {
        if (index == 0) {
            cmdI2Read_Click(channel);
            continue;
        }
        wipers.WiperWrite[kWiperElement] = hexToInt(lblPotReadhex[channel].caption());
        // The box of channel 1 for every channel: the button's own index is used there. Deliberate.
        txtDECDataWrt[1].setText(decimalText(wipers.WiperWrite[kWiperElement]));
        moveControls(channel, wipers.WiperWrite[kWiperElement] + 1);
        pump();
    }
    pump();
}

} // namespace vrk
