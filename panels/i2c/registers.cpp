#include "panels/blocks/entries.h"
#include "panels/i2c/frmVRK_User1.h"
#include "panels/i2c/registerByte.h"
#include "platform/runtime/text.h"

namespace vrk {

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

    hexEntry(txtACR[0], {.onEnter = [this] { wipers.ACRImage = hexToInt(txtACR[0].text()); }});
    txtACR[1].onKeyPress(hexKeyFilter); // its "--" is no entry, and stays when the field is left
    hexEntry(txtACRAddress, {.mayBeNone = true});
    hexEntry(txtGPAddress, {.mayBeNone = true});
    hexEntry(txtGPWrite);
    watchRegisterAddress(txtACRAddress, txtACR[1]);
    watchRegisterAddress(txtGPAddress, lblGPRead);
}

ControlRegister::Pace frmVRK_User1::registerPace(RegisterAction action) const {
    constexpr Milliseconds kPause{20};
    if (!isControl(action))
        return {.before = kPause};
    return {.after = isRead(action) ? kPause : Milliseconds{0}};
}

TextBox& frmVRK_User1::registerAddress(RegisterAction action) {
    return isControl(action) ? txtACRAddress : txtGPAddress;
}

void frmVRK_User1::noRegister(RegisterAction action) {
    if (!isControl(action))
        return;
    // The buttons stay off: that is how the panel stands for a part without this register.
    cmdACRRead.setEnabled(false);
    cmdACRWrite.setEnabled(false);
}

RegisterOutcome frmVRK_User1::exchangeRegister(RegisterAction action) {
    (void)requireVcc(); // the exchange runs all the same
    RegisterOutcome outcome;
    if (isRead(action))
        outcome.read = readRegister(action);
    else
        writeRegister(action);
    outcome.lamp = link().i2cStatus == kLinkGood;
    outcome.trusted = isRead(action)
                          ? lastReadGood()
                          : lastTransferGood() && writeNamesRegister(console(), productStarts("Q4410/9"));
    outcome.detail = failureDetail();
    return outcome;
}

std::string frmVRK_User1::readRegister(RegisterAction action) {
    const TextBox& address = registerAddress(action);
    setBusAddress();
    console().txtNumToRead.setText("1");
    console().txtStartRegRD.setText(address.text());
    console().cmdRead_Click();
    const std::string text = console().txtReadVal[hexToInt(address.text())].text();
    return !isControl(action) && text.size() == 1 ? "0" + text : text;
}

void frmVRK_User1::writeRegister(RegisterAction action) {
    const TextBox& value = isControl(action) ? txtACR[0] : txtGPWrite;
    if (isControl(action)) {
        wipers.ACRImage = hexToByte(value.text());
        pump();
    }
    setBusAddress();
    console().txtNumToWrite.setText("1");
    console().txtStartRegWr.setText(registerAddress(action).text());
    console().txtWriteVal[0].setText(value.text());
    console().cmdWrite_Click();
}

void frmVRK_User1::afterRegister(RegisterAction action) {
    if (action == RegisterAction::ControlWrite && productStarts("Q4422"))
        labelBank(); // a bank moves no wiper
    else
        WiperPanel::afterRegister(action);
}

} // namespace vrk
