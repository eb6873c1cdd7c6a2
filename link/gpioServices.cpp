#include "link/frmMainF340.h"

#include "link/overtaken.h"
#include "link/readings.h"

#include <array>
#include <utility>

namespace vrk {

using report::Command;

namespace {

constexpr std::array<std::array<const char*, frmMainF340::kPorts>, 3> kPortAddresses = {{
    {"A4", "A5", "A6", "A7", "AE"}, // output mode
    {"80", "90", "A0", "B0", "C7"}, // data
    {"F1", "F2", "F3", "F4", "F5"}, // input mode
}};

constexpr std::array<const char*, frmMainF340::kSfrRows> kSfrLabels = {
    "80: P0 DATA", "90: P1 DATA", "A0: P2 DATA", "A1: SPI0CFG", "A2: SPI0CKR", "A3: SPI0DAT", "A4: P0MDOUT",
    "A5: P1MDOUT", "A6: P2MDOUT", "D4: P0SKIP",  "F5: P4MDIN",  "D5: P1SKIP",  "D6: P2SKIP",  "F1: P0MDIN",
    "F2: P1MDIN",  "F3: P2MDIN",  "B0: P3 DATA", "C7: P4 DATA", "F4: P3MDIN",  "A7: P3MDOUT", "AE: P4MDOUT",
    "DF: P3SKIP",  "E1: XBAR0",   "E2: XBAR1",   "E3: XBAR2",   "F8: SPI0CN"};

/// Rows of the register table that hold each port's mode and data.
constexpr std::array<int, frmMainF340::kPorts> kModeRows = {6, 7, 8, 19, 20};
constexpr std::array<int, frmMainF340::kPorts> kDataRows = {0, 1, 2, 16, 17};

void overtakeReadings(frmMainF340& console, std::uint8_t address, std::uint8_t written) {
    const std::array<ControlArray<Label>*, 3> read = {&console.lblRdOC, &console.lblRdGPData,
                                                      &console.lblRdGPAnalog};
    for (std::size_t role = 0; role < read.size(); ++role)
        for (auto& label : *read.at(role))
            if (hexToByte(kPortAddresses.at(role).at(static_cast<std::size_t>(label->index()))) == address)
                overtake(*label, label->caption(), written);
    for (auto& box : console.txtPBufRd)
        if (hexToByte(kSfrLabels.at(static_cast<std::size_t>(box->index()))) == address)
            overtake(*box, box->text(), written);
}

} // namespace

/// Everything that one register of a port has on the panel.
struct frmMainF340::PortRole {
    const char* address;
    ControlArray<CheckBox>& boxes;
    Label& written;
    Label& read;
    Lamp& indicator;
    std::string_view traceWrite;
    std::string_view traceRead;
    std::string_view traceBetween;
};

ControlArray<CheckBox>& frmMainF340::chkOpenCollector(int port) {
    const std::array<ControlArray<CheckBox>*, kPorts> boxes = {&chkOpenCollectorP0, &chkOpenCollectorP1,
                                                               &chkOpenCollectorP2, &chkOpenCollectorP3,
                                                               &chkOpenCollectorP4};
    if (port < 0 || port >= kPorts)
        throw subscriptOutOfRange();
    return *boxes.at(static_cast<std::size_t>(port));
}

ControlArray<CheckBox>& frmMainF340::chkGPvalue(int port) {
    const std::array<ControlArray<CheckBox>*, kPorts> boxes = {&chkGPvalueP0, &chkGPvalueP1, &chkGPvalueP2,
                                                               &chkGPvalueP3, &chkGPvalueP4};
    if (port < 0 || port >= kPorts)
        throw subscriptOutOfRange();
    return *boxes.at(static_cast<std::size_t>(port));
}

ControlArray<CheckBox>& frmMainF340::chkDIN(int port) {
    const std::array<ControlArray<CheckBox>*, kPorts> boxes = {&chkDINP0, &chkDINP1, &chkDINP2, &chkDINP3,
                                                               &chkDINP4};
    if (port < 0 || port >= kPorts)
        throw subscriptOutOfRange();
    return *boxes.at(static_cast<std::size_t>(port));
}

frmMainF340::PortRole frmMainF340::portRole(Role role, int port) {
    if (port < 0 || port >= kPorts)
        throw subscriptOutOfRange();
    const char* address =
        kPortAddresses.at(static_cast<std::size_t>(role)).at(static_cast<std::size_t>(port));
    switch (role) {
    case Role::Mode:
        return {address,
                chkOpenCollector(port),
                lblWrOC[port],
                lblRdOC[port],
                ShpGPIOStat[port],
                "Write F340 GPIO Mode Register ",
                "Read F340 GPIO Mode Register ",
                " to "};
    case Role::Data:
        return {address,
                chkGPvalue(port),
                lblWrGPData[port],
                lblRdGPData[port],
                ShpGPIOStat[port + kPorts],
                "Write F340 GPIO Data Port:",
                "Read F340 GPIO Data Port:",
                " = "};
    case Role::Analog:
        break;
    }
    return {address,
            chkDIN(port),
            lblWrGPAnalog[port],
            lblRdGPAnalog[port],
            ShpGPIOStat[port + 2 * kPorts],
            "Write F340 GPIO Analog Port:",
            "Read F340 GPIO Analog Port:",
            " = "};
}

void frmMainF340::wireGpio() {
    for (int port = 0; port < kPorts; ++port) {
        for (const Role role : {Role::Mode, Role::Data, Role::Analog}) {
            const PortRole fields = portRole(role, port);
            fields.written.setCaption("--");
            fields.read.setCaption("--");
            for (auto& box : fields.boxes)
                box->onClick([this, role, port] { portClick(role, port); });
            // Whichever box of the port is named by the argument, the whole byte is rebuilt.
            addAction(fields.boxes.name() + "_Click", [this, role, port](const ActionArgs&) {
                portClick(role, port);
                return ActionValue{};
            });
        }
        for (int bit = 0; bit < 8; ++bit) {
            const std::string pin = "P" + decimalText(port) + "." + decimalText(bit);
            chkOpenCollector(port)[bit].setCaption(pin);
            chkOpenCollector(port)[bit].setToolTip(pin +
                                                   " output: unchecked open collector, checked push-pull");
            chkGPvalue(port)[bit].setCaption(pin);
            chkGPvalue(port)[bit].setToolTip(pin + " data: unchecked LO, checked HI");
            chkDIN(port)[bit].setCaption(pin);
            chkDIN(port)[bit].setToolTip(pin + " input: checked analog");
        }
    }
    for (int row = 0; row < kSfrRows; ++row) {
        lblPbuf[row].setCaption(kSfrLabels.at(static_cast<std::size_t>(row)));
        txtPBuf[row].setText("00");
        hexField(txtPBuf[row], false);
        txtPBufRd[row].setText("00");
        txtPBufRd[row].onClick([this, row] { txtPBufRd_Click(row); });
    }
    action("txtPBufRd_Click", &frmMainF340::txtPBufRd_Click);
    for (auto& label : lblSFRBuf)
        label->setCaption("--");
    txtSFRAddress.setText("80");
    txtSFRAddress.setMaxLength(2);
    hexField(txtSFRAddress, false);
    txtSFRWRData.setText("AA");
    txtSFRWRData.setMaxLength(2);
    hexField(txtSFRWRData, false);
    lblGP.setCaption("A port is high impedance if open collector and HI");
    chkAutoWriteRead.setCaption("Write and read at each click");
    chkWriteEqRead.setCaption("Set Write = Read");
    chkWeakPullUpDisable.setCaption("Weak pull-up disable");
    chkWeakPullUpEnableOnRead.setCaption("Temporarily enable weak-pullups on read");
    for (auto* buttons : {&cmdWrGPData, &cmdWrOC, &cmdWrGPAnalog})
        for (auto& button : *buttons)
            button->setCaption("Write");
    for (auto* buttons : {&cmdRdGPData, &cmdRdOC, &cmdRdGPAnalog})
        for (auto& button : *buttons)
            button->setCaption("Read");
    cmdGetSDFValue.setCaption("Read");
    cmdSetSFR.setCaption("Write");
    cmdReadSKF.setCaption("Read All SFRs");
    cmdResetGPIO.setCaption("Clear all boxes");
    cmdClearAnalog.setCaption("Clear analog");
    cmdWriteReadAll.setCaption("Write and read all");
    cmdSampleGP.setCaption("Read pins");

    wireClick(cmdGetSDFValue, &frmMainF340::cmdGetSDFValue_Click);
    wireClick(cmdSetSFR, &frmMainF340::cmdSetSFR_Click);
    wireClick(cmdWrGPData, &frmMainF340::cmdWrGPData_Click);
    wireClick(cmdWrOC, &frmMainF340::cmdWrOC_Click);
    wireClick(cmdWrGPAnalog, &frmMainF340::cmdWrGPAnalog_Click);
    wireClick(cmdRdGPData, &frmMainF340::cmdRdGPData_Click);
    wireClick(cmdRdOC, &frmMainF340::cmdRdOC_Click);
    wireClick(cmdRdGPAnalog, &frmMainF340::cmdRdGPAnalog_Click);
    wireClick(cmdReadSKF, &frmMainF340::cmdReadSKF_Click);
    wireClick(cmdResetGPIO, &frmMainF340::cmdResetGPIO_Click);
    wireClick(cmdClearAnalog, &frmMainF340::cmdClearAnalog_Click);
    wireClick(cmdWriteReadAll, &frmMainF340::cmdWriteReadAll_Click);
    wireClick(cmdSampleGP, &frmMainF340::cmdSampleGP_Click);
    wireClick(chkWeakPullUpDisable, &frmMainF340::chkWeakPullUpDisable_Click);
    action("getGPconf", &frmMainF340::getGPconf);
    action("getGPvalue", &frmMainF340::getGPvalue);
    action("setGPconf", &frmMainF340::setGPconf);
    action("setGPvalue", &frmMainF340::setGPvalue);
}

void frmMainF340::cmdGetSDFValue_Click() {
    readSfr();
}

bool frmMainF340::readSfr() {
    uses_.trace.detail({"Read F340 SFR Register ", txtSFRAddress.text()});
    if (readCommand(Command::SfrAccess, kPurgeFill, {report::kRead, hexToByte(txtSFRAddress.text())}))
        showReply(lblSFRBuf);
    else // nothing was asked, so nothing may look like an answer
        for (auto& label : lblSFRBuf) {
            label->setCaption("--");
            markReading(*label, false);
        }
    return replied_;
}

void frmMainF340::cmdSetSFR_Click() {
    const std::uint8_t address = hexToByte(txtSFRAddress.text());
    const std::uint8_t value = hexToByte(txtSFRWRData.text());
    uses_.trace.detail({"Write F340 SFR Register ", txtSFRAddress.text(), " = ", txtSFRWRData.text()});
    if (sendCommand(Command::SfrAccess, kFill, {report::kWrite, address, value}))
        overtakeReadings(*this, address, value);
}

void frmMainF340::writePort(Role role, int port) {
    const PortRole fields = portRole(role, port);
    txtSFRAddress.setText(fields.address);
    uses_.trace.detail({fields.traceWrite, fields.address, fields.traceBetween, fields.written.caption()});
    const std::uint8_t address = hexToByte(fields.address);
    const std::uint8_t value = hexToByte(fields.written.caption());
    if (sendCommand(Command::SfrAccess, kFill, {report::kWrite, address, value}))
        overtakeReadings(*this, address, value);
}

void frmMainF340::readPort(Role role, int port) {
    const PortRole fields = portRole(role, port);
    txtSFRAddress.setText(fields.address);
    if (role == Role::Mode) { // this one drains stale replies before its trace line, the others after
        link().purgeInputReports();
        uses_.trace.detail({fields.traceRead, fields.address});
    } else {
        uses_.trace.detail({fields.traceRead, fields.address});
        link().purgeInputReports();
    }
    if (!readCommand(Command::SfrAccess, kFill, {report::kRead, hexToByte(fields.address)})) {
        fields.indicator.setColour(Colour::LightRed);
        markReading(fields.read, false);
        return;
    }
    fields.read.setCaption(byteToHex2(byteAt(3)));
    markReading(fields.read, replied_);
    // What the search behind a lost reply has left in the buffer may happen to fit.
    if (replied_ && fields.read.caption() == fields.written.caption())
        fields.indicator.blinkGood();
    else
        fields.indicator.setColour(Colour::LightRed);
}

void frmMainF340::portClick(Role role, int port) {
    const PortRole fields = portRole(role, port);
    int byte = 0;
    for (int bit = 0; bit < 8; ++bit)
        if (fields.boxes[bit].checked())
            byte |= 1 << bit;
    if (role == Role::Analog)
        byte = 255 - byte; // the register has 0 for an analog pin
    fields.written.setCaption(byteToHex2(static_cast<std::uint8_t>(byte)));
    if (!chkAutoWriteRead.checked() || link().suppressControlEvents)
        return;
    writePort(role, port);
    readPort(role, port);
}

void frmMainF340::cmdWrGPData_Click(int port) {
    writePort(Role::Data, port);
}
void frmMainF340::cmdWrOC_Click(int port) {
    writePort(Role::Mode, port);
}
void frmMainF340::cmdWrGPAnalog_Click(int port) {
    writePort(Role::Analog, port);
}
void frmMainF340::cmdRdGPData_Click(int port) {
    readPort(Role::Data, port);
}
void frmMainF340::cmdRdOC_Click(int port) {
    readPort(Role::Mode, port);
}
void frmMainF340::cmdRdGPAnalog_Click(int port) {
    readPort(Role::Analog, port);
}
void frmMainF340::chkGPvalue_Click(int port) {
    portClick(Role::Data, port);
}
void frmMainF340::chkOpenCollector_Click(int port) {
    portClick(Role::Mode, port);
}
void frmMainF340::chkDIN_Click(int port) {
    portClick(Role::Analog, port);
}

bool frmMainF340::readSfrRow(int row, bool intoWriteColumn) {
    const std::string address = lblPbuf[row].caption().substr(0, 2);
    txtSFRAddress.setText(address);
    events().letEventsRun();
    // What ran meanwhile may have worked through the same fields: the address is set once more, and the
    // answer is taken before anything else runs.
    txtSFRAddress.setText(address);
    const bool replied = readSfr();
    const bool good = replied && lblSFRBuf[2].caption() == "00";
    const std::string value = lblSFRBuf[3].caption();
    events().letEventsRun();
    txtPBufRd[row].setText(value);
    markReading(txtPBufRd[row], replied);
    if (intoWriteColumn && chkWriteEqRead.checked())
        txtPBuf[row].setText(value);
    if (good)
        ShpSKFRd[row].blinkGood();
    else
        ShpSKFRd[row].setColour(Colour::LightRed);
    return replied;
}

void frmMainF340::cmdReadSKF_Click() {
    for (int row = 0; row < kSfrRows; ++row)
        readSfrRow(row, true);
}

bool frmMainF340::readSfrTable() {
    for (int row = 0; row < kSfrRows; ++row)
        if (!readSfrRow(row, true))
            return false;
    return true;
}

void frmMainF340::txtPBufRd_Click(int index) {
    readSfrRow(index, false);
}

void frmMainF340::cmdWriteReadAll_Click() {
    uses_.trace.line({kTraceIndent, "Read all GPIO Ports 0 to 4"});
    const int before = chkAutoWriteRead.value();
    const OnScopeExit restore([this, before] { chkAutoWriteRead.setValue(before); });
    chkAutoWriteRead.setValue(1);
    events().letEventsRun();
    for (int port = 0; port < kPorts; ++port)
        chkOpenCollector_Click(port);
    // Port 4's data keeps what the firmware has put there.
    for (int port = 0; port < kPorts - 1; ++port)
        chkGPvalue_Click(port);
    for (int port = 0; port < kPorts; ++port)
        chkDIN_Click(port);
}

void frmMainF340::cmdResetGPIO_Click() {
    uses_.trace.line({kTraceIndent, "Clear GPIO Bits Ports 0 to 4"});
    for (int bit = 0; bit < 8; ++bit)
        for (const Role role : {Role::Mode, Role::Data, Role::Analog})
            for (int port = 0; port < kPorts; ++port)
                portRole(role, port).boxes[bit].setValue(0);
    events().letEventsRun();
}

void frmMainF340::cmdClearAnalog_Click() {
    uses_.trace.detail({kTraceIndent, "Clear Proc ADC Analog Connections Ports 0 to 4"});
    for (int port = 0; port < kPorts; ++port)
        for (auto& box : chkDIN(port))
            box->setValue(0);
    for (int port = 0; port < kPorts; ++port) {
        lblWrGPAnalog[port].setCaption("FF");
        cmdWrGPAnalog_Click(port);
    }
}

void frmMainF340::setBoxes(ControlArray<CheckBox>& boxes, std::uint8_t bits) {
    for (auto& box : boxes)
        box->setValue((bits >> box->index()) & 1);
}

void frmMainF340::getGPconf() {
    uses_.trace.blankLine();
    uses_.trace.line({"getGPconf: Read F340 Registers, update GPIO check boxes"});
    if (readSfrTable()) {
        // The board's state goes into the boxes; no port is written meanwhile. Clicks count again after it,
        // whatever was before.
        link().suppressControlEvents = true;
        const OnScopeExit clicksCount([this] { link().suppressControlEvents = false; });
        for (int port = 0; port < kPorts; ++port)
            setBoxes(chkOpenCollector(port),
                     hexToByte(txtPBufRd[kModeRows.at(static_cast<std::size_t>(port))].text()));
        for (int port = 0; port < kPorts; ++port)
            chkOpenCollector_Click(port);
    }
    uses_.trace.line({"getGPconf: completed"});
    uses_.trace.blankLine();
}

void frmMainF340::getGPvalue() {
    uses_.trace.line({"getGPvalue: Read F340 GPIO, update check boxes."});
    if (readSfrTable()) {
        const bool before = std::exchange(link().suppressControlEvents, true);
        const OnScopeExit restore([this, before] { link().suppressControlEvents = before; });
        for (int port = 0; port < kPorts; ++port)
            setBoxes(chkGPvalue(port),
                     hexToByte(txtPBufRd[kDataRows.at(static_cast<std::size_t>(port))].text()));
        for (int port = 0; port < kPorts; ++port)
            chkGPvalue_Click(port);
    }
    uses_.trace.line({"getGPvalue: Completed"});
    uses_.trace.blankLine();
}

void frmMainF340::cmdSampleGP_Click() {
    getGPvalue();
}

void frmMainF340::setGPconf() {
    int port1 = 0;
    int port2 = 0;
    for (int bit = 0; bit < 8; ++bit)
        port1 |= chkOpenCollectorP1[bit].checked() ? 1 << bit : 0;
    for (int bit = 0; bit < 4; ++bit)
        port2 |= chkOpenCollectorP2[bit].checked() ? 1 << bit : 0;
    writeCommand(Command::GpioConfig,
                 {report::kWrite, static_cast<std::uint8_t>(port1), static_cast<std::uint8_t>(port2),
                  static_cast<std::uint8_t>(chkWeakPullUpDisable.checked() ? 1 : 0)});
}

void frmMainF340::setGPvalue() {
    int port1 = 0;
    int port2 = 0;
    for (int bit = 0; bit < 8; ++bit)
        port1 |= chkGPvalueP1[bit].checked() ? 1 << bit : 0;
    for (int bit = 0; bit < 4; ++bit)
        port2 |= chkGPvalueP2[bit].checked() ? 1 << bit : 0;
    writeCommand(Command::GpioValue,
                 {report::kWrite, static_cast<std::uint8_t>(port1), static_cast<std::uint8_t>(port2)});
}

void frmMainF340::chkWeakPullUpDisable_Click() {
    if (!link().suppressControlEvents)
        setGPconf();
}

} // namespace vrk
