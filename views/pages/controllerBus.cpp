#include "link/frmMainF340.h"
#include "platform/qt/theme.h"
#include "views/pages/boxes.h"
#include "views/pages/consoleWords.h"
#include "views/pages/controllerTabs.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include <memory>

namespace vrk {

using namespace qt;

namespace {

constexpr int kTableColumns = 8;

/// How the last transaction of these buttons ended. A click that came to none, for a wrong entry or a missing
/// file, leaves the lamp dark.
LampWidget* busLamp(PanelUi& ui, frmMainF340& p, std::initializer_list<Button*> causes, const QString& name) {
    auto* lamp = new LampWidget;
    lamp->setToolTip(name);
    lamp->setAccessibleName(name);
    const auto before = std::make_shared<unsigned>(0);
    for (Button* cause : causes) {
        Binding* tied = ui.find(*cause);
        auto* button = tied == nullptr ? nullptr : qobject_cast<QPushButton*>(&tied->target());
        if (button == nullptr)
            continue;
        QObject::connect(button, &QPushButton::pressed, lamp, [before, tied, &p] {
            if (tied->control() != nullptr)
                *before = p.link().transfers();
        });
        QObject::connect(button, &QPushButton::clicked, lamp, [before, lamp, tied, &p] {
            if (tied->control() == nullptr)
                return; // the transaction has ended the program
            if (p.link().transfers() == *before)
                return lamp->setColour(Colour::Black);
            if (p.link().lastTransfer() != kLinkGood)
                return lamp->setColour(Colour::LightRed);
            lamp->setColour(Colour::LightGreen);
            lamp->blink();
        });
    }
    return lamp;
}

/// What the scan is at: the address on the bus and how far it has come. Nothing while there is no scan.
QWidget* scanProgress(PanelUi& ui, frmMainF340& p) {
    constexpr int kLastAddress = 254;
    constexpr int kAddressesASecond = 10; // with the pause behind each
    auto* bar = new LevelBar;
    bar->setObjectName("scan.bar");
    bar->setAccessibleName("Scan progress");
    bar->setRange(kLastAddress);
    auto* text = new QLabel;
    text->setObjectName("scan.text");
    text->setFont(valueFont());
    text->setMinimumWidth(text->fontMetrics().horizontalAdvance("Scanning 00, 13 s left"));
    QWidget* busy = keepsPlace(block(row({text, bar})));
    busy->setObjectName("scan.busy");
    const auto show = [busy, bar, text, &p] {
        setShown(*busy, p.cmdStopScan.enabled());
        const int addresses = (kLastAddress - p.link().i2cAddress) / 2;
        text->setText(QString("Scanning %1, %2 s left")
                          .arg(QString::fromStdString(p.txtI2Caddress.text()))
                          .arg(addresses / kAddressesASecond + 1));
        bar->setValue(p.link().i2cAddress);
    };
    ui.watch(p.cmdStopScan, show);
    ui.watch(p.txtI2Caddress, show);
    return busy;
}

QWidget* addressBlock(PanelUi& ui, frmMainF340& p) {
    auto* address = entry(ui, p.txtI2Caddress, 3, "Slave address");
    auto* used = readBack(ui, p.txtSlaveAddress, 3, "Address used last");
    auto* clock = ui(p.cboSMBusFrequency, 6);
    // As the address is written: the highest bit first.
    std::vector<Item> bits;
    for (int bit = p.chkADDRbit.last(); bit >= p.chkADDRbit.first(); --bit)
        bits.emplace_back(plainBox(ui, p.chkADDRbit[bit]));
    return box("Address and bus",
               column({
                   row({caption("Slave address", address), address, quietText("hex"), gap,
                        caption("Used last", used), used, stretch}),
                   dense(grid({{bits[0], bits[1], bits[2], bits[3], stretch}, {bits[4], bits[5], bits[6]}})),
                   row({ui(p.cmdScanI2Caddress), ui(p.cmdStopScan), stretch}),
                   scanProgress(ui, p),
                   row({captionOf(p.cboSMBusFrequency, clock), clock, gap, ui(p.cmdToggleSCL), stretch}),
                   stretch,
               }));
}

QWidget* transferBlock(PanelUi& ui, frmMainF340& p) {
    auto* count = entry(ui, p.txtNumToRead, 3, "Number of bytes to read");
    auto* readFrom = entry(ui, p.txtStartRegRD, 3, "Start register of the read");
    auto* writeFrom = entry(ui, p.txtStartRegWr, 3, "Start register of the write");
    auto* toWrite = ui.mirror(p.txtNumToWrite);
    toWrite->setFont(valueFont());
    toWrite->setToolTip("Number of bytes to write, from the table below");
    toWrite->setAccessibleName(toWrite->toolTip());
    toWrite->setIndent(kUnit / 2 + 2); // under the digits of the count to read
    auto* read = ui(p.cmdRead);
    auto* simpleRead = ui(p.cmdSimpleI2cRd);
    auto* write = ui(p.cmdWrite);
    for (QPushButton* button : {read, write})
        button->setFixedWidth(dp(64));
    auto* simpleWrite = ui(p.cmdSimpleI2cWr);
    return box("Read and write",
               column({
                   grid({{{}, columnTitle("Bytes"), columnTitle("Start (hex)")},
                         {caption("Read", count), count, readFrom, read, simpleRead,
                          busLamp(ui, p, {&p.cmdRead, &p.cmdSimpleI2cRd}, "Last read"), stretch},
                         {caption("Write", writeFrom), toWrite, writeFrom, write, simpleWrite,
                          busLamp(ui, p, {&p.cmdWrite, &p.cmdSimpleI2cWr}, "Last write")}}),
                   tightColumn({quietText("First bytes of the last read"),
                                row({tightRow(readBacks(ui, p.TXTI2C, 2, "Byte read")), stretch})}),
                   stretch,
               }));
}

QWidget* individualBlock(PanelUi& ui, frmMainF340& p) {
    auto* address = entry(ui, p.txtRegister, 3, "Individual register");
    auto* value = readBack(ui, p.txtReadIndividual, 3, "Individual register as read");
    const auto toggle = [&](int index) {
        return entry(ui, p.txtWriteIndividual[index], 3, QString("Value %1 of the toggle").arg(index + 1));
    };
    auto* first = toggle(0);
    auto* second = toggle(1);
    auto* readButton = plainButton(ui, p.cmdReadIndividual);
    auto* writeFirst = plainButton(ui, p.cmdWriteIndividual[0]);
    auto* writeSecond = plainButton(ui, p.cmdWriteIndividual[1]);
    return box("Individual register with toggle",
               column({
                   grid({{caption("Register", address), address, quietText("hex")},
                         {caption("As read", value), value, quietText("hex"), readButton,
                          busLamp(ui, p, {&p.cmdReadIndividual}, "Last read of the register"), stretch},
                         {caption("Value 1", first), first, quietText("hex"), writeFirst,
                          busLamp(ui, p, {&p.cmdWriteIndividual[0]}, "Last write, value 1 last")},
                         {caption("Value 2", second), second, quietText("hex"), writeSecond,
                          busLamp(ui, p, {&p.cmdWriteIndividual[1]}, "Last write, value 2 last")}}),
                   wrapped(quietText("Each write changes the register: a value that stands in it already is "
                                     "written after the other one."),
                           32),
                   stretch,
               }));
}

} // namespace

QWidget* makeI2cPage(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    auto* options = box("Options", column({
                                       ui(p.chkRandom),
                                       ui(p.ChK2WireCommand),
                                       ui(p.chk2WireRead),
                                       ui(p.chkRepeatedStart),
                                       ui(p.chkStoppedWrite),
                                       ui(p.chkExtendHold),
                                       stretch,
                                   }));
    auto* address = addressBlock(ui, p);
    auto* transfer = transferBlock(ui, p);
    auto* individual = individualBlock(ui, p);
    return block(column({new BoxFlow({address, options, transfer, individual}, dp(340))}));
}

QWidget* makeSpiPage(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    auto* clock = ui(p.cboSPIClock, 8);
    auto* changeAt = entry(ui, p.txtClockPhaseChangeByte, 3, "Byte at which the clock phase changes");
    auto* count = ui.mirror(p.txtNumToWrite);
    count->setFont(valueFont());
    auto* port = box("SPI port", column({
                                     row({captionOf(p.cboSPIClock, clock), clock, stretch}),
                                     ui(p.chkSPIckpol),
                                     ui(p.chkSPIckpha),
                                     ui(p.chkSPIss),
                                     stretch,
                                 }));
    auto* explanation = wrapped(ui(p.lblSPI), 56);
    makeQuiet(*explanation);
    auto* transfer =
        box("Transfer",
            column({
                row({ui(p.cmdSPIWrite), count, quietText("bytes"), gap, plainBox(ui, p.chkSPIread), stretch}),
                row({ui(p.chkSPIClockPhaseChange), caption("at byte", changeAt), changeAt, stretch}),
                explanation,
                stretch,
            }));
    auto* boxes = row({port, transfer});
    boxes->setStretch(0, 1);
    boxes->setStretch(1, 2);
    return block(boxes);
}

QWidget* makeByteTable(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    std::vector<std::vector<Item>> lines(1);
    std::vector<QWidget*> order;
    std::vector<QWidget*> reads;
    for (int at = 0; at < kTableColumns; ++at)
        for (const char* title : {"", "Write", "Read", ""})
            lines.front().emplace_back(centred(columnTitle(title)));
    for (int index = 0; index < frmMainF340::kByteBoxes; ++index) {
        if (index % kTableColumns == 0)
            lines.emplace_back();
        const QString number = QString("%1").arg(index, 2, 16, QChar('0')).toUpper();
        auto* name = ui.value(p.lblRegAddr[index], "00");
        makeQuiet(*name);
        auto* write = entry(ui, p.txtWriteVal[index], 2, "Byte to write, register " + number);
        auto* read = readBack(ui, p.txtReadVal[index], 2, "Byte read, register " + number);
        order.push_back(write);
        reads.push_back(read);
        for (QWidget* widget : std::initializer_list<QWidget*>{name, write, read})
            lines.back().emplace_back(widget);
        lines.back().emplace_back(gap);
    }
    QGridLayout* cells = dense(grid(lines));
    cells->setHorizontalSpacing(kUnit / 2);
    for (int at = 0; at < kTableColumns; ++at)
        cells->setColumnMinimumWidth(4 * at + 3, kUnit);
    std::vector<Item> fills;
    for (auto& option : p.obFillData) {
        auto* button = ui(*option);
        button->setFont(valueFont());
        fills.emplace_back(button);
    }
    auto* count = entry(ui, p.txtNumToWrite, 3, "Number of Bytes to Write");
    auto* load = ui(p.chkFileWriteData);
    load->setToolTip("Write takes its bytes from registers.txt in the working folder");
    auto* toWrite = block(column({
        row({caption("Number of Bytes to Write", count), count, stretch}),
        row({load, stretch}),
        dense(
            grid({{"Fill with", fills[0], fills[1], fills[2], stretch}, {{}, fills[3], fills[4], fills[5]}})),
        row({ui(p.cmdFillWriteTextBoxes), quietText("from register 00"), stretch}),
    }));
    auto* asRead = block(row({ui(p.cmdClearReadTextBoxes), quietText("bytes read, 00 to 1F"), stretch}));

    // The bytes to write one after the other, then those that were read.
    order.insert(order.end(), reads.begin(), reads.end());
    auto* bytes =
        box("Bytes by register (hex)", row({column({cells, stretch}), stretch}), BoxFrame::Ground::Base);
    auto* fill = box("Bytes to write", column({toWrite, asRead, stretch}));
    auto* boxes = row({bytes, fill});
    boxes->setStretch(0, 1);
    QWidget* whole = block(boxes);
    setTabOrder(order);
    return whole;
}

} // namespace vrk
