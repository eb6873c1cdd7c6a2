#include "link/readings.h"
#include "panels/blocks/entries.h"
#include "panels/i2c/frmVRK_User1.h"
#include "platform/runtime/text.h"

namespace vrk {

namespace {
enum RegisterLamp : int { kAcrWritten = 0, kAcrRead = 1, kGeneralWritten = 2, kGeneralRead = 3 };
enum PanelLamp : int { kWrite = 1, kRead = 2 };
} // namespace

void frmVRK_User1::wireRegisters() {
    txtACRAddress.setText("02");
    txtACRAddress.setContainer(SSFrame2);
    Label2.setContainer(SSFrame2);
    // Bit 7 it is, whatever the tips call it.
    Option1[0].setToolTip("Clears the LSB of the Data byte: writes go to the non-volatile IVR");
    Option1[1].setToolTip("Sets the LSB of the Data byte: writes go to the volatile WR");
    txtGPAddress.setText("00");
    txtGPAddress.setContainer(frmRegisterWrite);
    frmRegisterWrite.setCaption("General Purpose Register");
    cmdReadAllWipers.setCaptions({"Read All", "Set Write = Read"});

    hexEntry(txtACR[0], "00", [this] { wipers.ACRImage = hexToInt(txtACR[0].text()); });
    txtACR[1].onKeyPress(hexKeyFilter); // its "--" is no entry, and stays when the field is left
    hexEntryOrNone(txtACRAddress, "00");
    hexEntryOrNone(txtGPAddress, "00");
    hexEntry(txtGPWrite, "00");
    wireClick(cmdReadAllWipers, &frmVRK_User1::cmdReadAllWipers_Click);
}

bool frmVRK_User1::hasNoControlRegister() {
    if (txtACRAddress.text() != "NA")
        return false;
    // The buttons stay off: that is how the panel stands for a part without this register.
    cmdACRRead.setEnabled(false);
    cmdACRWrite.setEnabled(false);
    context().say("This device has no ACR Register");
    return true;
}

bool frmVRK_User1::hasNoGeneralRegister() {
    if (txtGPAddress.text() != "NA")
        return false;
    context().say("This device has no GP Register");
    return true;
}

void frmVRK_User1::showRegisterOutcome(int registerLamp, int panelLamp, const std::string& what,
                                       const Control& field) {
    const bool good = link().i2cStatus == kLinkGood;
    const Colour colour = good ? Colour::LightGreen : Colour::LightRed;
    Shape2[registerLamp].setColour(colour);
    Shape1[panelLamp].setColour(colour);
    const bool trusted = lastTransferGood();
    tell(trusted, what + (trusted ? "" : " failed"),
         trusted ? "" : "bus status " + decimalText(link().i2cStatus), &field);
}

void frmVRK_User1::cmdACRRead_Click() {
    if (hasNoControlRegister())
        return;
    DisabledWhile busy({&cmdACRRead, &cmdACRWrite});
    pump();
    (void)requireVcc(); // the exchange runs all the same
    setBusAddress();
    console().txtNumToRead.setText("1");
    console().txtStartRegRD.setText(txtACRAddress.text());
    console().cmdRead_Click();
    txtACR[1].setText(console().txtReadVal[hexToInt(txtACRAddress.text())].text());
    markReading(txtACR[1], lastTransferGood());
    showRegisterOutcome(kAcrRead, kRead, "Read of register " + txtACRAddress.text(), txtACR[1]);
    pump();
    wait(Milliseconds{20});
    busy.release();
    pump();
}

void frmVRK_User1::cmdACRWrite_Click() {
    if (hasNoControlRegister())
        return;
    DisabledWhile busy({&cmdACRRead, &cmdACRWrite});
    pump();
    (void)requireVcc(); // the exchange runs all the same
    wipers.ACRImage = hexToByte(txtACR[0].text());
    pump();
    setBusAddress();
    console().txtNumToWrite.setText("1");
    console().txtStartRegWr.setText(txtACRAddress.text());
    console().txtWriteVal[0].setText(txtACR[0].text());
    console().cmdWrite_Click();
    showRegisterOutcome(kAcrWritten, kWrite, "Write of register " + txtACRAddress.text(), txtACR[0]);
    if (productStarts("Q4422"))
        labelBank();
    busy.release();
    pump();
}

void frmVRK_User1::cmdGPRead_Click() {
    wait(Milliseconds{20});
    DisabledWhile busy({&cmdGPRead, &cmdWriteGP});
    if (hasNoGeneralRegister())
        return;
    (void)requireVcc(); // the exchange runs all the same
    setBusAddress();
    console().txtNumToRead.setText("1");
    console().txtStartRegRD.setText(txtGPAddress.text());
    console().cmdRead_Click();
    const std::string text = console().txtReadVal[hexToInt(txtGPAddress.text())].text();
    lblGPRead.setCaption(text.size() == 1 ? "0" + text : text);
    markReading(lblGPRead, lastTransferGood());
    showRegisterOutcome(kGeneralRead, kRead, "Read of register " + txtGPAddress.text(), lblGPRead);
    busy.release();
    pump();
}

void frmVRK_User1::cmdWriteGP_Click() {
    wait(Milliseconds{20});
    DisabledWhile busy({&cmdGPRead, &cmdWriteGP});
    if (hasNoGeneralRegister())
        return;
    (void)requireVcc(); // the exchange runs all the same
    setBusAddress();
    console().txtNumToWrite.setText("1");
    console().txtStartRegWr.setText(txtGPAddress.text());
    console().txtWriteVal[0].setText(txtGPWrite.text());
    console().cmdWrite_Click();
    showRegisterOutcome(kGeneralWritten, kWrite, "Write of register " + txtGPAddress.text(), txtGPWrite);
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
        // The box of channel 1 for every channel: the button's own index is used there, and users read it so.
        txtDECDataWrt[1].setText(decimalText(wipers.WiperWrite[kWiperElement]));
        moveControls(channel, wipers.WiperWrite[kWiperElement] + 1);
        pump();
    }
    pump();
}

} // namespace vrk
