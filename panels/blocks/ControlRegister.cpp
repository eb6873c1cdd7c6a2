#include "panels/blocks/ControlRegister.h"

#include "link/readings.h"
#include "platform/runtime/text.h"

namespace vrk {

namespace {
constexpr int kVolatile = 0x80; ///< wiper writes go to the volatile register
constexpr int kRunning = 0x40;  ///< not shut down
} // namespace

ControlRegister::ControlRegister(Panel& panel, int& image) : PanelBlock(panel), image_(image) {
    cmdACRRead.setCaption("Read");
    cmdACRWrite.setCaption("Write");
    txtACR[0].setText("00");
    txtACR[1].setText("--");
    txtACR[1].markUnread();
    Option1.setCaptions({"IVR EEPROM", "WR Register"});
    for (auto& option : Option1)
        option->join(optionGroup_);
    chkShutdown.setCaption("/ShutDown");
    chkShutdown.setToolTip("Uncheck to enable shutdown (Shut Down is Active Low)");
    chkShutdown.showValue(1);
    lblShutDown.setCaption("Shutdown is ACTIVE!");
    lblShutDown.setVisible(false);
    txtGPWrite.setText("00");
    lblGPRead.setCaption("--");
    lblGDRs.setCaption("None Available");
    cmdGPRead.setCaption("Read");
    cmdWriteGP.setCaption("Write");
    FrmShutdown.setCaption("Shutdown");
    Shape2[0].setCaption("ACR write");
    Shape2[1].setCaption("ACR read");
    Shape2[2].setCaption("Register write");
    Shape2[3].setCaption("Register read");
    for (Control* control : std::initializer_list<Control*>{&cmdACRRead, &cmdACRWrite, &txtACR[0], &txtACR[1],
                                                            &Option1[0], &Option1[1], &Shape2[0], &Shape2[1]})
        control->setContainer(SSFrame2);
    for (Control* control : std::initializer_list<Control*>{&chkShutdown, &lblShutDown})
        control->setContainer(FrmShutdown);
    for (Control* control : std::initializer_list<Control*>{&txtGPWrite, &lblGPRead, &cmdGPRead, &cmdWriteGP,
                                                            &Shape2[2], &Shape2[3], &lblGDRs})
        control->setContainer(frmRegisterWrite);
    bindClick(Option1, &ControlRegister::Option1_Click);
    bindClick(chkShutdown, &ControlRegister::chkShutdown_Click);
    bindClick(cmdACRRead, &ControlRegister::cmdACRRead_Click);
    bindClick(cmdACRWrite, &ControlRegister::cmdACRWrite_Click);
    bindClick(cmdGPRead, &ControlRegister::cmdGPRead_Click);
    bindClick(cmdWriteGP, &ControlRegister::cmdWriteGP_Click);
}

void ControlRegister::Option1_Click(int index) {
    image_ = (index == 1 ? kVolatile : 0) + (chkShutdown.checked() ? kRunning : 0);
    txtACR[0].setText(hexText(image_));
}

void ControlRegister::chkShutdown_Click() {
    if (chkShutdown.checked())
        image_ |= kRunning;
    else
        image_ &= 0xFF & ~kRunning;
    lblShutDown.setVisible(!chkShutdown.checked());
    txtACR[0].setText(hexText(image_));
}

std::vector<Control*> ControlRegister::registerButtons(RegisterAction action) {
    if (isControl(action))
        return {&cmdACRRead, &cmdACRWrite};
    return {&cmdGPRead, &cmdWriteGP};
}

bool ControlRegister::hasRegister(RegisterAction action) {
    if (registerAddress(action).text() != "NA")
        return true;
    noRegister(action);
    host().context().say(isControl(action) ? "This device has no ACR Register"
                                           : "This device has no GP Register");
    return false;
}

void ControlRegister::exchange(RegisterAction action) {
    const Pace pace = registerPace(action);
    if (pace.before > Milliseconds{0})
        host().wait(pace.before);
    if (!hasRegister(action))
        return;
    if (action == RegisterAction::ControlWrite && txtACR[0].text() == "NA") {
        // A product table's word for no byte: taken for 0 it would shut the part down.
        host().tell(false, "Write of register " + registerAddress(action).text() + " refused",
                    "the field holds no byte to write", &txtACR[0]);
        return;
    }
    DisabledWhile busy(registerButtons(action));
    host().pump();
    showOutcome(action, exchangeRegister(action));
    afterRegister(action);
    host().pump();
    if (pace.after > Milliseconds{0})
        host().wait(pace.after);
    busy.release();
    host().pump();
}

void ControlRegister::showOutcome(RegisterAction action, const RegisterOutcome& outcome) {
    const Control* field = isControl(action) ? &txtACR[0] : static_cast<Control*>(&txtGPWrite);
    if (action == RegisterAction::ControlRead) {
        field = &txtACR[1];
        txtACR[1].setText(outcome.read);
        markReading(txtACR[1], outcome.trusted);
    } else if (action == RegisterAction::GeneralRead) {
        field = &lblGPRead;
        lblGPRead.setCaption(outcome.read);
        markReading(lblGPRead, outcome.trusted);
    }
    const Colour colour = outcome.lamp ? Colour::LightGreen : Colour::LightRed;
    Shape2[static_cast<int>(action)].setColour(colour);
    showTransfer(isRead(action), colour);
    host().tell(outcome.trusted,
                (isRead(action) ? "Read of register " : "Write of register ") +
                    registerAddress(action).text() + (outcome.trusted ? "" : " failed"),
                outcome.trusted ? "" : outcome.detail, field);
}

void ControlRegister::watchRegisterAddress(TextBox& address, Control& reading) {
    address.onChange([&reading] { reading.markStale("the register's address changed since"); });
}

void ControlRegister::markRegistersStale(const std::string& cause) {
    txtACR[1].markStale(cause);
    lblGPRead.markStale(cause);
}

} // namespace vrk
