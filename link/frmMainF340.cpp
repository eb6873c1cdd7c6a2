#include "link/frmMainF340.h"

#include "link/pinNames.h"
#include "link/readings.h"

#include <algorithm>
#include <utility>

namespace vrk {

using report::Command;

frmMainF340::frmMainF340(PanelContext& context, Uses uses)
    : Panel(context, "frmMainF340", "HID Firmware Basic I/O "), uses_(std::move(uses)) {
    wireBoard();
    wireI2c();
    wireSpi();
    wireGpio();
    wireAdc();
    for (Control* reading : readings())
        reading->markUnread();
}

std::vector<Control*> frmMainF340::readings() {
    std::vector<Control*> all{&lblFirmwareVersion, &txtFirmwareVersion, &txtReadIndividual,
                              &txtADDec,           &lblADRegRead,       &lbl_ADReal};
    for (auto* labels :
         {&lblRdOC, &lblRdGPData, &lblRdGPAnalog, &lblSFRBuf, &lblADMuxData, &lblADCRefcon, &lblADCClockDaa,
          &lblADCMode1Data, &lblADCLoopData, &lblADCSampleData, &lblADCEnable, &lblAdRcv, &lblADDecimal})
        for (auto& label : *labels)
            all.push_back(label.get());
    for (auto* boxes : {&txtReadVal, &TXTI2C, &txtPBufRd})
        for (auto& box : *boxes)
            all.push_back(box.get());
    return all;
}

void frmMainF340::markBusReadingsStale(const std::string& cause) {
    for (auto* boxes : {&txtReadVal, &TXTI2C})
        for (auto& box : *boxes)
            box->markStale(cause);
    txtReadIndividual.markStale(cause);
}

void frmMainF340::wireBoard() {
    SSTab1.setCaption("Page");
    SSTab1.setRows({{"Board", 0}, {"I2C", 1}, {"SPI", 2}, {"GPIO", 3}, {"SFR", 4}, {"ADC", 5}});
    cboEVBinstance.setCaption("Board instance");
    chkLED.setCaptions({"LED Green", "LED Red"});
    cmdFirmwareVersion.setCaption("Firmware");
    cmdReconnect.setCaption("Reconnect");
    cmdQuit.setCaption("Quit");
    mnuExit.setCaption("E&xit");
    cmdHoswMother.setCaption("Motherboard");
    lblFirmwareVersion.setCaption("--");

    wireClick(cboEVBinstance, &frmMainF340::cboEVBinstance_Click);
    wireClick(chkLED, &frmMainF340::chkLED_Click);
    wireClick(cmdFirmwareVersion, &frmMainF340::cmdFirmwareVersion_Click);
    wireClick(cmdReconnect, &frmMainF340::cmdReconnect_Click);
    wireClick(cmdQuit, &frmMainF340::cmdQuit_Click);
    wireClick(mnuExit, &frmMainF340::mnuExit_Click);
    wireClick(cmdHoswMother, &frmMainF340::cmdHoswMother_Click);
    action("cboEVB_init", &frmMainF340::cboEVB_init);
    action("getLEDstate", &frmMainF340::getLEDstate);
    action("checkValidEntryHex", &frmMainF340::checkValidEntryHex);
    action("checkValidEntryDecInt", &frmMainF340::checkValidEntryDecInt);
    addAction("clipboardKeys", [this](const ActionArgs& args) -> ActionValue {
        requireArguments(args, 3);
        // The field as scripts name it: "txtWriteVal(3)".
        const std::string path = textArgument(args, 0);
        const auto found = std::find_if(controls().begin(), controls().end(),
                                        [&path](const Control* control) { return control->path() == path; });
        if (found == controls().end() || (*found)->kind() != Control::Kind::TextBox)
            throw ArgumentError("There is no text box " + path);
        clipboardKeys(static_cast<TextBox&>(**found), static_cast<int>(wholeArgument(args, 1)),
                      static_cast<int>(wholeArgument(args, 2)));
        return {};
    });
}

void frmMainF340::Form_Load() {
    uses_.trace.line({"F340 Form Load"});
    chkRandom.setValue(1);    // register parts, the ordinary case, want their register byte
    link().closeHIDHandles(); // a discovery may have run before the panel lived
    link().initHIDConnection();
    for (int i = 0; i < kByteBoxes; ++i) {
        lblRegAddr[i].setCaption(byteToHex2(static_cast<std::uint8_t>(i)));
        txtWriteVal[i].setText("00");
        txtWriteVal[i].setMaxLength(2);
        txtWriteVal[i].setCentred(true);
        txtReadVal[i].setText("");
        txtReadVal[i].setCentred(true);
    }
    SSTab1.setListIndex(1);
    showAddress(address());
    for (const auto& [rows, mode] :
         {std::pair{
              std::vector<RowControl::Row>{{"0: Single", 0}, {"1: Continuous 1", 1}, {"2: Continuous 2", 2}},
              0},
          std::pair{std::vector<RowControl::Row>{{"0: 31 Sample", 0}, {"1:  1 Sample", 1}}, 1}}) {
        cboADCReadMode[mode].setRows(rows);
        cboADCReadMode[mode].setListIndex(0);
    }
    fillMuxLists();
    cmdMuxWrite_Click();
    uses_.trace.line({"Processor Form Load Completed"});
    uses_.trace.blankLine();
}

void frmMainF340::Form_Unload() {
    link().closeHIDHandles();
    events().endProgram();
}

void frmMainF340::cboEVB_init() {
    std::vector<RowControl::Row> rows;
    for (int instance = 0; instance < static_cast<int>(link().hidHandles.size()); ++instance)
        rows.push_back({decimalText(instance), instance});
    cboEVBinstance.setRows(std::move(rows));
    cboEVBinstance.setListIndex(0);
}

void frmMainF340::cboEVBinstance_Click() {
    if (cboEVBinstance.listIndex() < 0)
        return;
    uses_.trace.line({"Perform HID Init cboEVBInstance"});
    link().selectInstance(cboEVBinstance.itemData());
    connectedInput_.clear(); // another board, or one that was without power, has its own
    for (Control* reading : readings())
        reading->markStale("a board was chosen since");
    const unsigned retries = link().retries();
    for (const auto read :
         {&frmMainF340::getLEDstate, &frmMainF340::cboSMBusFrequency_init, &frmMainF340::getI2Coptions,
          &frmMainF340::getSPIconfig, &frmMainF340::getGPconf, &frmMainF340::getGPvalue}) {
        (this->*read)();
        if (link().retries() != retries) // the whole board is read again by Retry
            return;
    }
    // The one option that a board does not tell. Without power it has lost it, and a part that is read by its
    // instruction would not answer any more. Whoever goes on behind Retry finds the last reply in the buffer.
    if (chk2WireRead.checked()) {
        const hid::Report reply = link().reportBuffer;
        setI2Coptions(0);
        link().reportBuffer = reply;
    }
    if (link().retries() == retries)
        link().tellBoardRead();
}

void frmMainF340::chkLED_Click(int /*index*/) {
    if (link().suppressControlEvents)
        return;
    const unsigned bits = (chkLED[0].checked() ? 1U : 0U) | (chkLED[1].checked() ? 2U : 0U);
    writeCommand(Command::Led, {report::kWrite, static_cast<std::uint8_t>(bits)});
}

void frmMainF340::getLEDstate() {
    if (!readState(Command::Led, Lost::Stop))
        return;
    const bool before = std::exchange(link().suppressControlEvents, true);
    const OnScopeExit restore([this, before] { link().suppressControlEvents = before; });
    // The reply's bits go into the boxes as they stand, 1 for the green LED and 2 for the red one.
    chkLED[0].setValue(byteAt(2) & 1);
    chkLED[1].setValue(byteAt(2) & 2);
}

std::string firmwareVersion(const hid::Report& reply) {
    return decimalText(reply[2]) + "." + decimalText(reply[3]) + " - " +
           decimalText(reply[4] * 256 + reply[5]) + "/" + monthName(reply[6]) + "/" + decimalText(reply[7]);
}

void frmMainF340::cmdFirmwareVersion_Click() {
    const bool asked = readState(Command::FirmwareVersion, Lost::GoOn, {});
    markReading(lblFirmwareVersion, replied_);
    markReading(txtFirmwareVersion, replied_);
    if (!asked)
        return;
    lblFirmwareVersion.setCaption("Firmware Version " + firmwareVersion(link().reportBuffer));
    txtFirmwareVersion.setText(lblFirmwareVersion.caption());
    uses_.trace.line({"Read F340 Processor Firmware Revision: ", txtFirmwareVersion.text()});
}

void frmMainF340::cmdReconnect_Click() {
    link().initHIDConnection();
}

void frmMainF340::cmdQuit_Click() {
    Form_Unload();
}

void frmMainF340::mnuExit_Click() {
    Form_Unload();
}

void frmMainF340::cmdHoswMother_Click() {
    uses_.showMotherboardConsole();
}

int frmMainF340::checkValidEntryHex(int key) {
    return hexKeyFilter(key);
}

int frmMainF340::checkValidEntryDecInt(int key) {
    return decimalKeyFilter(key);
}

void frmMainF340::clipboardKeys(TextBox& field, int keyCode, int shift) {
    constexpr int kCtrl = 2;
    if (shift != kCtrl)
        return;
    if (keyCode == 'A')
        field.selectAll();
    else if (keyCode == 'C')
        context().clipboard.setText(field.selectedText());
    else if (keyCode == 'V')
        field.setText(context().clipboard.text());
}

void frmMainF340::hexField(TextBox& field, bool clipboard) {
    field.onKeyPress([this](int key) { return checkValidEntryHex(key); });
    if (clipboard)
        field.onKeyDown([this, &field](int code, int shift) { clipboardKeys(field, code, shift); });
}

void frmMainF340::decimalField(TextBox& field, int maximum, bool clipboard) {
    field.onKeyPress([this](int key) { return checkValidEntryDecInt(key); });
    if (clipboard)
        field.onKeyDown([this, &field](int code, int shift) { clipboardKeys(field, code, shift); });
    field.onLostFocus([&field, maximum] {
        // Read as the services read it: a pasted text that is no number counts as 0.
        const double value = isNumeric(field.text()) ? leadingNumber(field.text()) : 0;
        if (value > maximum)
            field.setText(decimalText(maximum));
        else if (value < 1)
            field.setText("1");
    });
}

bool frmMainF340::sendCommand(Command command, unsigned prepare, std::initializer_list<std::uint8_t> bytes) {
    if ((prepare & kPurge) != 0)
        link().purgeInputReports();
    if ((prepare & kFill) != 0)
        link().fillReportBuffer(0);
    link().setReportID();
    byteAt(report::kCommandByte) = static_cast<std::uint8_t>(command);
    std::copy(bytes.begin(), bytes.end(), link().reportBuffer.begin() + report::kSubCommandByte);
    return link().writeReport();
}

int frmMainF340::writeCommand(Command command, std::initializer_list<std::uint8_t> bytes) {
    return link().checkStatus(sendCommand(command, kFill, bytes));
}

bool frmMainF340::readCommand(Command command, unsigned prepare, std::initializer_list<std::uint8_t> bytes) {
    const bool taken = link().checkStatus(sendCommand(command, prepare, bytes)) == kLinkGood;
    // Not before: behind a refused write Retry reads the whole board, and those replies answer something
    // else.
    replied_ = false;
    if (!taken)
        return false;
    replied_ = link().readReply();
    return true;
}

bool frmMainF340::readState(Command command, Lost lost, std::initializer_list<std::uint8_t> bytes) {
    const bool taken = link().checkStatus(sendCommand(command, kPurgeFill, bytes)) == kLinkGood;
    replied_ = false; // as in readCommand()
    if (!taken)
        return false;
    link().fillReportBuffer(0);
    replied_ = link().readReply();
    return replied_ || lost == Lost::GoOn;
}

void frmMainF340::showReply(ControlArray<Label>& labels) {
    for (auto& label : labels)
        label->setCaption(byteToHex2(byteAt(label->index())));
    markReadings(labels, replied_);
}

} // namespace vrk
