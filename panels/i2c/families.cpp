#include "link/readings.h"
#include "panels/i2c/frmVRK_User1.h"
#include "panels/i2c/registerByte.h"
#include "panels/instruction/tenBitInstructions.h"
#include "platform/runtime/text.h"

#include <array>

namespace vrk {

using tenBit::commandOf;

namespace {
constexpr std::array<const char*, 5> kBankBytes = {"00", "01", "03", "05", "07"};

/// Pins of the parts with banks, by index of their boxes.
enum DirectPin : int { kScl = 2, kCs = 3, kUpDown = 4 };
} // namespace

void frmVRK_User1::wireFamilies() {
    frq331x.setCaption("Q3318/9 Table 3 Instruction Set");
    for (int index = 0; index < txtWrQ3319.count(); ++index) {
        const std::string name = index == 0 ? "Wiper" : "Data " + decimalText(index - 1);
        CMDq331X_Read[index].setCaption(name);
        CMDq331X_Write[index].setCaption(name);
        txtWrQ3319[index].setText("000");
        txtWrQ3319[index].setMaxLength(4);
        txtWrQ3319[index].onKeyPress(hexKeyFilter);
        lblRdq331x[index].setCaption("000");
        for (Control* control : std::initializer_list<Control*>{
                 &txtWrQ3319[index], &lblRdq331x[index], &CMDq331X_Read[index], &CMDq331X_Write[index]})
            control->setContainer(frq331x);
    }
    for (int index = 0; index < 4; ++index) {
        cmdQ331xDatatoWiper[index].setCaption("Data " + decimalText(index) + " > Wiper");
        cmdQ331xWipertoData[index].setCaption("Wiper > Data " + decimalText(index));
        cmdQ331xDatatoWiper[index].setContainer(frq331x);
        cmdQ331xWipertoData[index].setContainer(frq331x);
    }
    Frq4422.setCaption("Q4422");
    Chq4422.setCaptions({"DS0", "DS1", "SCL", "CS", "U/D"});
    Chq4422[kScl].setToolTip("SCL Pin, To use jumper to A2(J2.5) to SCL(J2.1)");
    opt4422.setCaptions({"Wr / Rd WCR", "Wr DR0", "Wr DR1", "Wr DR2", "Wr DR3"});
    opt4422[0].showSelected();
    cmdUp.setCaptions({"Up", "Down", "Store"});
    cmdRdAllq44.setCaption("Rd All I2C");
    cmdSampleq44.setCaption("Rd All Volts");
    ChkAutoSample.setCaption("Auto Rd Volts");
    cdmAuto_Init.setCaption("Wr All DR Locations");
    lblBank.setCaption("----");
    for (int index = 0; index < 5; ++index) {
        opt4422[index].join(bankGroup_);
        opt4422[index].setContainer(Frq4422);
        Chq4422[index].setContainer(Frq4422);
    }
    for (Control* control :
         std::initializer_list<Control*>{&cmdUp[0], &cmdUp[1], &cmdUp[2], &cmdRdAllq44, &cmdSampleq44,
                                         &ChkAutoSample, &cdmAuto_Init, &lblBank})
        control->setContainer(Frq4422);
    wireClick(CMDq331X_Read, &frmVRK_User1::CMDq331X_Read_Click);
    wireClick(CMDq331X_Write, &frmVRK_User1::CMDq331X_Write_Click);
    wireClick(cmdQ331xDatatoWiper, &frmVRK_User1::cmdQ331xDatatoWiper_Click);
    wireClick(cmdQ331xWipertoData, &frmVRK_User1::cmdQ331xWipertoData_Click);
    wireClick(Chq4422, &frmVRK_User1::Chq4422_Click);
    wireClick(opt4422, &frmVRK_User1::opt4422_Click);
    wireClick(cmdUp, &frmVRK_User1::cmdUp_Click);
    wireClick(cmdRdAllq44, &frmVRK_User1::cmdRdAllq44_Click);
    wireClick(cmdSampleq44, &frmVRK_User1::cmdSampleq44_Click);
    wireClick(cdmAuto_Init, &frmVRK_User1::cdmAuto_Init_Click);
}

// Ten-bit parts: value bits 9 and 8 in the first byte, 7 to 0 in the second

void frmVRK_User1::CMDq331X_Read_Click(int index) {
    (void)requireVcc(); // the exchange runs all the same
    setBusAddress();
    console().txtNumToRead.setText(" 2");
    console().txtStartRegRD.setText(commandOf(tenBit::kRead, index));
    console().cmdRead_Click();
    lblRdq331x[index].setCaption(hexText(twoByteReading()));
    const bool good = lastReadGood();
    markReading(lblRdq331x[index], good);
    readOutcome();
    const std::string& name = CMDq331X_Read[index].caption();
    tell(good, good ? "Read " + lblRdq331x[index].caption() + " from " + name : "Read of " + name + " failed",
         good ? "" : failureDetail(), &lblRdq331x[index]);
}

void frmVRK_User1::CMDq331X_Write_Click(int index) {
    (void)requireVcc(); // the exchange runs all the same
    setBusAddress();
    console().txtNumToWrite.setText(" 2");
    console().txtStartRegWr.setText(commandOf(tenBit::kWrite, index));
    splitTwoBytes(txtWrQ3319[index].text());
    console().cmdWrite_Click();
    lblRdq331x[index].markStale(lastTransferGood() ? "written since" : "a write failed since");
    if (index == 0)
        wipersMoved();
    // A write that fails shows on the read's lamps and with its message too, as users of these parts know it.
    if (link().i2cStatus == kLinkGood)
        goodWrite();
    else
        readOutcome();
    const bool good = lastTransferGood() && writeNamesRegister(console(), false);
    const std::string& name = CMDq331X_Write[index].caption();
    tell(good, good ? "Wrote " + txtWrQ3319[index].text() + " to " + name : "Write of " + name + " failed",
         good ? "" : failureDetail(), &txtWrQ3319[index]);
}

void frmVRK_User1::transferInstruction(const Button& button, const char* instruction, Reading& recipient) {
    (void)requireVcc(); // the exchange runs all the same
    setBusAddress();
    class frmMainF340& f340 = console();
    const auto setOptions = [this, &f340](int twoWireCommand, int random) {
        f340.chk2WireRead.setValue(1);
        f340.ChK2WireCommand.setValue(twoWireCommand);
        f340.chkRandom.setValue(random);
        f340.setI2Coptions(0);
        pump();
    };
    setOptions(1, 0);
    f340.txtNumToRead.setText(" 1");
    f340.txtStartRegRD.setText(instruction);
    pump();
    f340.cmdRead_Click();
    recipient.markStale("transferred since");
    setOptions(0, 1);
    f340.txtNumToRead.setText(" 2");
    readOutcome();
    const bool good = lastTransferGood();
    tell(good, "Transfer " + button.caption() + (good ? "" : " failed"), good ? "" : failureDetail(),
         &button);
}

void frmVRK_User1::cmdQ331xDatatoWiper_Click(int index) {
    transferInstruction(cmdQ331xDatatoWiper[index], commandOf(tenBit::kDataToWiper, index), lblRdq331x[0]);
    wipersMoved();
}

void frmVRK_User1::cmdQ331xWipertoData_Click(int index) {
    transferInstruction(cmdQ331xWipertoData[index], commandOf(tenBit::kWiperToData, index),
                        lblRdq331x[index + 1]);
}

// Parts with banks

void frmVRK_User1::beforeRead(int /*index*/) {
    // The status register must point at the wiper before a read.
    if (!productStarts("Q4422") || txtACR[0].text() == "00")
        return;
    opt4422[0].setValue(true);
    opt4422_Click(0);
}

void frmVRK_User1::labelBank() {
    const int value = decimalInt(txtACR[0].text()); // decimal, although the field is hexadecimal
    const bool odd = value == 1 || value == 3 || value == 5 || value == 7;
    const std::string kind = value == 0 ? "WCR" : odd ? "DR" : "XXX";
    const std::string bank = odd ? decimalText(value / 2) : "";
    if (kind != "WCR")
        lblBank.setCaption(kind + bank);
    for (int channel = 0; channel < kChannels; ++channel) {
        lblChanSend[channel].setCaption(kind + decimalText(channel) + bank);
        lblChanRcvr[channel].setCaption("WCR" + decimalText(channel));
    }
    SSFrame2.setCaption("Status Register Control");
    Label2.setCaption("Status Address");
    txtCalcAddr.setVisible(true);
    cmdCopyAdr.setVisible(true);
    Chq4422_Click(kCs);
}

void frmVRK_User1::placePins() {
    if (Frq4422.visible())
        placeDirectPins();
    else
        WiperPanel::placePins();
}

void frmVRK_User1::placeDirectPins() {
    constexpr int kFirstPin = 6;
    for (int pin = 0; pin < Chq4422.count(); ++pin)
        board().chkPData[kFirstPin + pin].setValue(0);
    for (int pin = 0; pin < Chq4422.count(); ++pin)
        if (Chq4422[pin].checked())
            board().chkPData[kFirstPin + pin].setValue(1);
}

void frmVRK_User1::Chq4422_Click(int /*index*/) {
    placeDirectPins();
    pump();
    board().cmdWrtPipe1_Click();
    pump();
    pump();
}

void frmVRK_User1::setDirectPin(int index, int value) {
    Chq4422[index].setValue(value);
    Chq4422_Click(index);
}

void frmVRK_User1::opt4422_Click(int index) {
    cmdACRRead.setEnabled(false);
    txtACR[1].setEnabled(false);
    Shape2[1].setVisible(false);
    txtACR[0].setText(commandOf(kBankBytes, index));
    if (index == 0) {
        cmdACRRead.setEnabled(true);
        txtACR[1].setEnabled(true);
        Shape2[1].setVisible(true);
    }
    cmdACRWrite_Click();
    if (index == 0)
        cmdACRRead_Click();
    if (ChkAutoSample.checked())
        cmdSampleq44_Click();
}

void frmVRK_User1::cmdUp_Click(int index) {
    if (index == 2) {
        setDirectPin(kCs, 1);
        return;
    }
    markChannelsStale("a step has moved a wiper since");
    setDirectPin(kUpDown, index == 0 ? 1 : 0);
    setDirectPin(kCs, 0);
    pump();
    pump();
    setDirectPin(kScl, 0);
    wait(Milliseconds{20});
    pump();
    pump();
    setDirectPin(kScl, 1);
    pump();
    pump();
}

void frmVRK_User1::cmdRdAllq44_Click() {
    setDirectPin(kCs, 1);
    setDirectPin(kScl, 1);
    for (int channel = 0; channel < kChannels; ++channel)
        cmdI2Read_Click(channel);
}

void frmVRK_User1::cmdSampleq44_Click() {
    for (int channel = 0; channel < kChannels; ++channel)
        cmdSampleWiper_Click(channel);
}

void frmVRK_User1::cdmAuto_Init_Click() {
    constexpr int kDataRegisters = 16;
    if (context().dialogs.show(
            {"All DR Register contents are about to be over written.  Click OK to Continue, "
             "Cancel to Abort",
             {},
             {Choice::Ok, Choice::Cancel}}) == Choice::Cancel ||
        !mayStore(kDataRegisters))
        return;
    constexpr int kBanks = 4;
    struct Ended {
        std::string text;
        std::string detail;
        const Control* field = nullptr;
    } ended;
    bool stopped = false;
    Activity activity(context().activities, cdmAuto_Init.caption(), [&stopped] { stopped = true; });
    setDirectPin(kCs, 1);
    for (int bank = 1; bank <= kBanks && !stopped; ++bank) {
        opt4422[bank].setValue(true);
        opt4422_Click(bank);
        for (int channel = 0; channel < kChannels && !stopped; ++channel) {
            opt4422[bank].setValue(true); // a channel that was read back has left the bank for its wiper
            // In a bank that was not taken the value would land in another register.
            const bool taken = lastTransferGood();
            if (taken) {
                // Each register gets the number of its own place.
                txtHexDataWrt[channel].setText(hexText(channel * 16 + bank - 1, 2));
                txtHexDataWrt_KeyPress(channel, kEnterKey);
            }
            if (!lastTransferGood()) {
                ended = {"Filling ended at DR" + decimalText(channel) + decimalText(bank - 1),
                         failureDetail(), taken ? &txtHexDataWrt[channel] : &txtACR[0]};
                stopped = true;
            } else {
                activity.progress((bank - 1) * kChannels + channel + 1, kBanks * kChannels);
            }
        }
    }
    // Stopped or not, the part is left with its wipers in reach.
    opt4422[0].setValue(true);
    opt4422_Click(0);
    // Behind it, as that tells of its own exchange.
    if (!ended.text.empty())
        tell(false, ended.text, ended.detail, ended.field);
    else
        tell(!stopped, stopped ? "Filling aborted" : "Filled the data registers",
             decimalText(activity.done()) + " of " + decimalText(kDataRegisters), &cdmAuto_Init);
}

} // namespace vrk
