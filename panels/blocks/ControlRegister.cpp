#include "panels/blocks/ControlRegister.h"

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

void ControlRegister::markRegistersStale(const std::string& cause) {
    txtACR[1].markStale(cause);
    lblGPRead.markStale(cause);
}

} // namespace vrk
