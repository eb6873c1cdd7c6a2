#include "panels/blocks/entries.h"
#include "panels/spi/frmVRK_SPI1.h"
#include "platform/runtime/text.h"

namespace vrk {

void frmVRK_SPI1::wireRegisters() {
    const auto commands = [](ControlArray<TextBox>& boxes, const char* write, const char* read,
                             const std::string& what) {
        boxes[0].setText(write);
        boxes[0].setToolTip("Write Address of " + what);
        boxes[1].setText(read);
        boxes[1].setToolTip("Read Address of " + what);
        for (auto& box : boxes)
            hexEntry(*box, {.highestWhenLeft = 255, .mayBeNone = true});
    };
    commands(txtACRAddress, "40", "60", "ACR Register");
    commands(txtGPAddress, "C4", "84", "General Register");
    watchRegisterAddress(txtACRAddress[1], txtACR[1]);
    watchRegisterAddress(txtGPAddress[1], lblGPRead);
    for (auto& box : txtACRAddress)
        box->setContainer(SSFrame2);
    for (auto& box : txtGPAddress)
        box->setContainer(frmRegisterWrite);
    SSFrame2.setCaption("ACR Register Control");
    frmRegisterWrite.setCaption("General Register Access");
    lblGDRs.setCaption("");
    lblGDRs.setVisible(false); // nothing tells the registers of an SPI part
    // Bit 7 it is, whatever the tips call it.
    Option1[0].setToolTip(
        "Clears the LSB of the Data byte. Writes to the VRK will be to the permanent EEPROM.");
    Option1[1].setToolTip(
        "Sets LSB of the Data byte to a 1. Writes to the VRK will be to the temporary register.");
    ChkShutDown2.setToolTip("Used to set WP pin on those devices with a dedicated protection Pin.");

    const auto take = [this] { wipers.ACRImage = hexToInt(txtACR[0].text()); };
    hexEntry(txtACR[0], {.highestWhenLeft = 255, .onEnter = take, .onLeave = take});
    txtACR[1].onKeyPress(hexKeyFilter); // its "--" is no entry, and stays when the field is left
    hexEntry(txtGPWrite, {.highestWhenLeft = 255});
}

ControlRegister::Pace frmVRK_SPI1::registerPace(RegisterAction action) const {
    constexpr Milliseconds kPause{20};
    return {.before = action == RegisterAction::ControlRead ? kPause : Milliseconds{0}, .after = kPause};
}

TextBox& frmVRK_SPI1::registerAddress(RegisterAction action) {
    return (isControl(action) ? txtACRAddress : txtGPAddress)[isRead(action) ? 1 : 0];
}

const TextBox& frmVRK_SPI1::registerAddress(RegisterAction action) const {
    return const_cast<frmVRK_SPI1&>(*this).registerAddress(action);
}

std::vector<Control*> frmVRK_SPI1::registerButtons(RegisterAction action) {
    if (isControl(action))
        return {&cmdACRRead, &cmdACRWrite};
    return {&cmdGPRead, &cmdWriteGP, &cmdACRRead, &cmdACRWrite};
}

RegisterOutcome frmVRK_SPI1::exchangeRegister(RegisterAction action) {
    if (action == RegisterAction::GeneralRead)
        lblGPRead.showUnread("--"); // while it runs
    RegisterOutcome outcome;
    if (isRead(action)) {
        outcome.lamp = exchangeFrame(registerFrame(action), 1);
        outcome.trusted = answered_;
        const std::string& text = answer(1);
        outcome.read = text.size() == 1 ? "0" + text : text;
    } else {
        outcome.lamp = outcome.trusted = sendFrame(registerFrame(action));
    }
    outcome.detail = failure_;
    return outcome;
}

// The frames as text

namespace {
/// What cannot be sent is told when it is tried.
template <class MakeFrame>
std::string frameText(const TextBox& length, const MakeFrame& make) {
    const int bytes = decimalInt(length.text());
    if (bytes < 1)
        return "no byte is sent";
    if (bytes > kMostSpiBytes)
        return "at most " + decimalText(kMostSpiBytes) + " bytes can be sent";
    try {
        return spiFrameText(make(), bytes);
    } catch (const Fault& fault) {
        return fault.what();
    }
}
} // namespace

void frmVRK_SPI1::wireFrames() {
    for (int channel = 0; channel < kChannels; ++channel)
        frameSources_.push_back(txtHexDataWrt[channel].observe([this, channel](Aspect aspect) {
            if (aspect == Aspect::Value)
                showWriteFrame(channel);
        }));
    for (Control* source : std::initializer_list<Control*>{
             &txtBaseVRKReadAddress, &txtBaseVRKWriteAddress, &txtSPIRDQuantity, &txtSPIWrCount, &chkSendID,
             &txtDeviceAdr, &lblProduct, &txtACRAddress[0], &txtACRAddress[1], &txtGPAddress[0],
             &txtGPAddress[1], &txtACR[0], &txtGPWrite})
        frameSources_.push_back(source->observe([this](Aspect aspect) {
            if (aspect == Aspect::Value || aspect == Aspect::Caption)
                showFrames();
        }));
    showFrames();
}

void frmVRK_SPI1::showWriteFrame(int channel) {
    lblWriteFrame[channel].setCaption(frameText(txtSPIWrCount, [&] { return writeFrame(channel); }));
}

void frmVRK_SPI1::showFrames() {
    for (int channel = 0; channel < kChannels; ++channel) {
        showWriteFrame(channel);
        lblReadFrame[channel].setCaption(frameText(txtSPIRDQuantity, [&] { return readFrame(channel); }));
    }
    for (const RegisterAction action : {RegisterAction::ControlWrite, RegisterAction::ControlRead,
                                        RegisterAction::GeneralWrite, RegisterAction::GeneralRead})
        lblRegisterFrame[static_cast<int>(action)].setCaption(
            registerAddress(action).text() == "NA"
                ? "no such register"
                : frameText(isRead(action) ? txtSPIRDQuantity : txtSPIWrCount,
                            [&] { return registerFrame(action); }));
}

} // namespace vrk
