#include "link/frmMainF340.h"

#include "link/readings.h"
#include "platform/files/SequentialInput.h"
#include "platform/files/files.h"

#include <algorithm>
#include <random>
#include <utility>

namespace vrk {

using report::Command;

void frmMainF340::wireI2c() {
    for (int i = 0; i < chkADDRbit.count(); ++i)
        chkADDRbit[i].setCaption("ADDR" + decimalText(i));
    txtI2Caddress.setText("00");
    txtI2Caddress.setMaxLength(2);
    txtSlaveAddress.setText("--");
    txtNumToRead.setText("1");
    txtNumToWrite.setText("1");
    txtStartRegRD.setText("00");
    txtStartRegWr.setText("00");
    txtRegister.setMaxLength(2);
    for (auto& field : TXTI2C)
        field->setText("--");
    chkRandom.setCaption("Random Read/Write");
    ChK2WireCommand.setCaption("Two wire Read Command");
    chk2WireRead.setCaption("Two Wire Read");
    chkRepeatedStart.setCaption("Repeated Start");
    chkStoppedWrite.setCaption("Stop between Write and Read");
    chkExtendHold.setCaption("Extended Hold (EXTHOLD)");
    chkFileWriteData.setCaption("Load Write Data from File");
    obFillData.setCaptions({"File", "0xFF", "0x00", "0xAA", "0x55", "random"});
    for (auto& option : obFillData)
        option->join(fillGroup_);
    obFillData[1].setValue(true);
    txtRegister.setText("00");
    txtReadIndividual.setText("00");
    cboSMBusFrequency.setCaption("I2C Clock (kHz)");
    cmdRead.setCaption("Read");
    cmdWrite.setCaption("Write");
    cmdSimpleI2cRd.setCaption("Simple Read");
    cmdSimpleI2cWr.setCaption("Simple Write");
    cmdReadIndividual.setCaption("Read");
    cmdWriteIndividual.setCaptions({"Write", "Write"});
    for (auto& button : cmdWriteIndividual)
        button->setToolTip("Individual Register Read/Write with Toggle");
    cmdScanI2Caddress.setCaption("Scan I2C Address");
    cmdStopScan.setCaption("Stop");
    cmdStopScan.setEnabled(false);
    cmdToggleSCL.setCaption("Toggle SCL");
    cmdFillWriteTextBoxes.setCaption("Fill");
    cmdClearReadTextBoxes.setCaption("Clear");

    wireClick(cmdRead, &frmMainF340::cmdRead_Click);
    wireClick(cmdWrite, &frmMainF340::cmdWrite_Click);
    wireClick(cmdSimpleI2cRd, &frmMainF340::cmdSimpleI2cRd_Click);
    wireClick(cmdSimpleI2cWr, &frmMainF340::cmdSimpleI2cWr_Click);
    wireClick(cmdReadIndividual, &frmMainF340::cmdReadIndividual_Click);
    wireClick(cmdWriteIndividual, &frmMainF340::cmdWriteIndividual_Click);
    wireClick(cmdScanI2Caddress, &frmMainF340::cmdScanI2Caddress_Click);
    wireClick(cmdStopScan, &frmMainF340::cmdStopScan_Click);
    wireClick(cmdToggleSCL, &frmMainF340::cmdToggleSCL_Click);
    wireClick(cmdFillWriteTextBoxes, &frmMainF340::cmdFillWriteTextBoxes_Click);
    wireClick(cmdClearReadTextBoxes, &frmMainF340::cmdClearReadTextBoxes_Click);
    wireClick(cboSMBusFrequency, &frmMainF340::cboSMBusFrequency_Click);
    wireClick(chkADDRbit, &frmMainF340::chkADDRbit_Click);
    for (CheckBox* option : {&chkRepeatedStart, &chkStoppedWrite, &chkExtendHold, &chk2WireRead})
        wireClick(*option, &frmMainF340::i2cOption_Click);
    txtI2Caddress.onChange([this] { txtI2Caddress_Change(); });
    action("stopAddressScan", &frmMainF340::stopAddressScan);
    action("txtI2Caddress_Change", &frmMainF340::txtI2Caddress_Change);
    action("readIndividualRegister", &frmMainF340::readIndividualRegister);
    action("setI2Coptions", &frmMainF340::setI2Coptions);
    action("getI2Coptions", &frmMainF340::getI2Coptions);
    action("cboSMBusFrequency_init", &frmMainF340::cboSMBusFrequency_init);
    // Gives the bytes as hexadecimal text, empty if the file was refused.
    addAction("loadRegisterFile", [this](const ActionArgs& args) -> ActionValue {
        requireArguments(args, 1);
        std::vector<std::uint8_t> data(toByte(wholeArgument(args, 0)));
        std::array<bool, 256> given{};
        std::string hex;
        if (loadRegisterFile(data, given))
            for (const std::uint8_t byte : data)
                hex += byteToHex2(byte);
        return hex;
    });

    for (TextBox* field : {&txtI2Caddress, &txtRegister})
        hexField(*field, true);
    for (TextBox* field : {&txtStartRegRD, &txtStartRegWr})
        hexField(*field, false);
    for (auto& field : txtWriteIndividual) {
        field->setText("00");
        field->setMaxLength(2);
        hexField(*field, true);
    }
    for (auto& field : txtWriteVal)
        hexField(*field, true);
    decimalField(txtNumToRead, 32, true);
    decimalField(txtNumToWrite, 32, true);
}

namespace {

/// The register bytes of a transaction: one or none.
struct Registers {
    std::array<std::uint8_t, 1> bytes{};
    std::size_t count = 0;
    std::span<const std::uint8_t> span() const { return {bytes.data(), count}; }
};

Registers registersIf(bool send, const TextBox& field) {
    Registers registers;
    if (send) {
        registers.bytes[0] = hexToByte(field.text());
        registers.count = 1;
    }
    return registers;
}

} // namespace

bool frmMainF340::collectWriteData(std::span<std::uint8_t> data) {
    if (chkFileWriteData.checked()) {
        std::array<bool, 256> given{};
        return loadRegisterFile(data, given);
    }
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = hexToByte(txtWriteVal[static_cast<int>(i)].text());
    return true;
}

void frmMainF340::showReadData(std::span<const std::uint8_t> data, std::uint8_t startRegister, bool good) {
    for (std::size_t i = 0; i < data.size() && startRegister + i < kByteBoxes; ++i) {
        TextBox& box = txtReadVal[startRegister + static_cast<int>(i)];
        box.setText(byteToHex2(data[i]));
        markReading(box, good);
    }
}

void frmMainF340::showIndividual(std::uint8_t value, bool good) {
    txtReadIndividual.setText(byteToHex2(value));
    markReading(txtReadIndividual, good);
}

void frmMainF340::cmdRead_Click() {
    txtSlaveAddress.setText(byteToHex2(address()));
    link().purgeInputReports();
    std::vector<std::uint8_t> data(decimalByte(txtNumToRead.text()));
    const Registers registers = registersIf(
        chkRandom.checked() || ChK2WireCommand.checked() || chk2WireRead.checked(), txtStartRegRD);
    const int status = link().readI2C(address(), data, registers.span(), 0);
    if (status == kLinkError) {
        markReadings(TXTI2C, false);
        for (std::size_t i = 0; i < data.size() && registers.bytes[0] + i < kByteBoxes; ++i)
            markReading(txtReadVal[registers.bytes[0] + static_cast<int>(i)], false);
        return;
    }
    showReadData(data, registers.bytes[0], status == kLinkGood);
    for (auto& box : TXTI2C) {
        const auto i = static_cast<std::size_t>(box->index());
        if (i >= data.size()) {
            box->markStale("the last read was shorter");
            continue;
        }
        box->setText(byteToHex2(data[i]));
        markReading(*box, status == kLinkGood);
    }
}

void frmMainF340::cmdWrite_Click() {
    txtSlaveAddress.setText(byteToHex2(address()));
    link().purgeInputReports();
    std::vector<std::uint8_t> data(decimalByte(txtNumToWrite.text()));
    if (!collectWriteData(data)) {
        link().i2cStatus = kLinkError; // callers judge by it, and nothing was written
        return;
    }
    link().writeI2C(address(), data, registersIf(chkRandom.checked(), txtStartRegWr).span(), 0);
}

void frmMainF340::cmdSimpleI2cRd_Click() {
    txtSlaveAddress.setText(byteToHex2(address()));
    std::vector<std::uint8_t> data(decimalByte(txtNumToRead.text()));
    const Registers registers = registersIf(chkRandom.checked() && !chk2WireRead.checked(), txtStartRegRD);
    const int status = link().readI2COnce(address(), data, registers.span());
    link().linkOk = status > 0;
    events().letEventsRun();
    showReadData(data, registers.bytes[0], status == kLinkGood);
}

void frmMainF340::cmdSimpleI2cWr_Click() {
    txtSlaveAddress.setText(byteToHex2(address()));
    link().purgeInputReports();
    std::vector<std::uint8_t> data(decimalByte(txtNumToWrite.text()));
    if (!collectWriteData(data)) {
        link().linkOk = false;
        return;
    }
    const Registers registers = registersIf(chkRandom.checked(), txtStartRegWr);
    link().linkOk = link().writeI2COnce(address(), data, registers.span()) > 0;
    events().letEventsRun();
}

int frmMainF340::readIndividualRegister() {
    link().purgeInputReports();
    txtRegister.setText(byteToHex2(hexToByte(txtRegister.text())));
    std::array<std::uint8_t, 1> data{};
    const Registers registers = registersIf(chkRandom.checked() && !chk2WireRead.checked(), txtRegister);
    const int status = link().readI2C(address(), data, registers.span(), 0);
    if (status == kLinkError)
        markReading(txtReadIndividual, false);
    else
        showIndividual(data[0], status == kLinkGood);
    return status;
}

void frmMainF340::cmdReadIndividual_Click() {
    readIndividualRegister();
}

void frmMainF340::cmdWriteIndividual_Click(int index) {
    (void)txtWriteIndividual[index]; // a button that is none must send nothing
    if (readIndividualRegister() == kLinkError)
        return;
    const std::array<std::uint8_t, 2> values = {hexToByte(txtWriteIndividual[0].text()),
                                                hexToByte(txtWriteIndividual[1].text())};
    // The button always changes the register: its own value, or the other one if it is there already.
    const auto own = static_cast<std::size_t>(index);
    const bool there = hexToByte(txtReadIndividual.text()) == values.at(own);
    const std::array<std::uint8_t, 1> data = {values.at(there ? 1 - own : own)};
    const Registers registers = registersIf(chkRandom.checked(), txtRegister);
    link().writeI2C(address(), data, registers.span(), 0);
    std::array<std::uint8_t, 1> back{}; // its own, so that a lost reply does not show what was written
    const int status = link().readI2COnce(address(), back, registers.span());
    txtWriteIndividual[index].setText(byteToHex2(values.at(own)));
    showIndividual(back[0], status == kLinkGood);
}

void frmMainF340::cmdScanI2Caddress_Click() {
    DisabledWhile scanning({&cmdScanI2Caddress});
    cmdStopScan.setEnabled(true);
    const OnScopeExit noStop([this] { cmdStopScan.setEnabled(false); });
    stopScan_ = false;
    Activity activity(context().activities, cmdScanI2Caddress.caption(), [this] { stopAddressScan(); });
    link().purgeInputReports();
    const Registers registers = registersIf(chkRandom.checked(), txtStartRegRD);
    for (int slave = 0; slave <= 254; slave += 2) {
        std::array<std::uint8_t, 1> data{};
        const int status = link().readI2C(static_cast<std::uint8_t>(slave), data, registers.span(), -1);
        delaySeconds(events(), 0.1);
        showAddress(static_cast<std::uint8_t>(slave));
        txtSlaveAddress.setText(txtI2Caddress.text());
        activity.progress(slave / 2 + 1, 128);
        if (status != kLinkError || stopScan_)
            return;
    }
    const Choice choice =
        context().dialogs.show({"VRK_HID I2C address not found. Close GUI?", {}, {Choice::Yes, Choice::No}});
    link().msgResult = static_cast<int>(choice);
    if (choice == Choice::Yes)
        Form_Unload();
}

void frmMainF340::cmdStopScan_Click() {
    stopAddressScan();
}

void frmMainF340::showAddress(std::uint8_t address) {
    const bool before = std::exchange(programChange_, true);
    const OnScopeExit restore([this, before] { programChange_ = before; });
    txtI2Caddress.setText(byteToHex2(address));
    txtI2Caddress_Change();
}

void frmMainF340::txtI2Caddress_Change() {
    if (rewriting_)
        return;
    // Typing: the second digit usually arrives within the wait, and one look at the text is enough then.
    if (!programChange_)
        delaySeconds(events(), 0.5);
    const auto address = static_cast<std::uint8_t>(hexToByte(txtI2Caddress.text()) & 0xFEU);
    rewriting_ = true;
    const OnScopeExit done([this] { rewriting_ = false; });
    txtI2Caddress.setText(byteToHex2(address));
    if (std::exchange(link().i2cAddress, address) != address)
        markBusReadingsStale("the address changed since");
    const bool before = std::exchange(link().suppressControlEvents, true);
    const OnScopeExit restore([this, before] { link().suppressControlEvents = before; });
    for (int i = 0; i < chkADDRbit.count(); ++i)
        chkADDRbit[i].setValue((address >> (i + 1)) & 1);
}

void frmMainF340::chkADDRbit_Click(int /*index*/) {
    if (link().suppressControlEvents)
        return;
    int address = 0;
    for (int i = 0; i < chkADDRbit.count(); ++i)
        if (chkADDRbit[i].checked())
            address |= 2 << i;
    showAddress(static_cast<std::uint8_t>(address));
}

void frmMainF340::cmdToggleSCL_Click() {
    link().purgeInputReports();
    if (setI2Coptions(1) != kLinkGood)
        return;
    link().fillReportBuffer(0);
    replied_ = link().readReply();
    if ((byteAt(2) & 1U) != 0)
        context().say("SDA error");
}

void frmMainF340::i2cOption_Click() {
    if (!link().suppressControlEvents)
        setI2Coptions(0);
}

int frmMainF340::setI2Coptions(int toggleRequest) {
    const unsigned options = (chkRepeatedStart.checked() ? 1U : 0U) | (chkStoppedWrite.checked() ? 2U : 0U) |
                             (chk2WireRead.checked() ? 8U : 0U);
    return writeCommand(Command::I2cOptions,
                        {report::kWrite, static_cast<std::uint8_t>(options),
                         static_cast<std::uint8_t>(chkExtendHold.checked() ? 1 : 0), toByte(toggleRequest)});
}

void frmMainF340::getI2Coptions() {
    uses_.trace.line({"getI2Coptions: Verify I2C Comm"});
    if (readState(Command::I2cOptions, Lost::Stop)) {
        const bool before = std::exchange(link().suppressControlEvents, true);
        const OnScopeExit restore([this, before] { link().suppressControlEvents = before; });
        chkRepeatedStart.setValue(byteAt(2) & 1);
        chkStoppedWrite.setValue((byteAt(2) >> 1) & 1);
        chkExtendHold.setValue(byteAt(3) & 1);
    }
    uses_.trace.line({"getI2Coptions: Completed"});
    uses_.trace.blankLine();
}

void frmMainF340::cboSMBusFrequency_init() {
    if (!readState(Command::I2cClock, Lost::Stop))
        return;
    const int kHz = toInt16(byteAt(2) * 1000);
    const int current = byteAt(3);
    std::vector<RowControl::Row> rows;
    int selected = -1;
    for (int divisor = 256; divisor >= 1; --divisor) {
        const int frequency = kHz / divisor;
        if (frequency <= 99)
            continue;
        if (divisor == current)
            selected = static_cast<int>(rows.size());
        rows.push_back({decimalText(frequency), divisor});
    }
    // The board is the master: its setting is shown, nothing is sent back.
    const bool before = std::exchange(link().suppressControlEvents, true);
    const OnScopeExit restore([this, before] { link().suppressControlEvents = before; });
    cboSMBusFrequency.setRows(std::move(rows));
    cboSMBusFrequency.setListIndex(selected);
    i2cClocksListed_.emit();
}

void frmMainF340::cboSMBusFrequency_Click() {
    if (link().suppressControlEvents)
        return;
    uses_.trace.line({"Write I2C/SMB Clock :", cboSMBusFrequency.text(), " kHz"});
    writeCommand(Command::I2cClock, {report::kWrite, toByte(cboSMBusFrequency.itemData())});
}

void frmMainF340::cmdFillWriteTextBoxes_Click() {
    const int count = decimalByte(txtNumToWrite.text());
    if (count > kByteBoxes)
        throw subscriptOutOfRange();
    if (obFillData[0].value()) {
        std::vector<std::uint8_t> data(static_cast<std::size_t>(count));
        std::array<bool, 256> given{};
        if (!loadRegisterFile(data, given))
            return;
        for (int i = 0; i < count; ++i)
            if (given.at(static_cast<std::size_t>(i)))
                txtWriteVal[i].setText(byteToHex2(data[static_cast<std::size_t>(i)]));
        return;
    }
    std::mt19937 random(static_cast<std::mt19937::result_type>(context().clock().secondsOfDay() * 1000.0));
    std::uniform_int_distribution<int> byte(0, 255);
    static constexpr std::array<const char*, 5> kPatterns = {"", "FF", "00", "AA", "55"};
    for (int i = 0; i < count; ++i) {
        if (obFillData[5].value())
            txtWriteVal[i].setText(byteToHex2(static_cast<std::uint8_t>(byte(random))));
        for (int pattern = 1; pattern <= 4; ++pattern)
            if (obFillData[pattern].value())
                txtWriteVal[i].setText(kPatterns.at(static_cast<std::size_t>(pattern)));
    }
}

void frmMainF340::cmdClearReadTextBoxes_Click() {
    for (int i = 0; i < 32; ++i) {
        txtReadVal[i].setText("");
        txtReadVal[i].markUnread();
    }
}

bool frmMainF340::loadRegisterFile(std::span<std::uint8_t> data, std::span<bool> given) {
    try {
        const std::string content = readFile(context().workingFolder / "registers.txt");
        SequentialInput input(content);
        const auto kind = input.next();
        bool good = kind && *kind == "generic";
        for (std::size_t i = 0; good && i < data.size(); ++i) {
            const auto field = input.next();
            good = field.has_value();
            // A field in another form uses up its place and leaves the element as it was.
            if (good && startsWith(*field, "0x")) {
                data[i] = hexToByte(field->substr(2));
                given[i] = true;
            }
        }
        if (good)
            return true;
    } catch (const Fault&) {
        // A file that cannot be read and a byte that is none take the same way out.
    }
    context().say("Register file does not exist or is invalid", "Error");
    return false;
}

} // namespace vrk
