#include "motherboard/frmMotherboardDAQ2.h"
#include "platform/qt/theme.h"
#include "views/pages/boxes.h"
#include "views/pages/consoleWords.h"
#include "views/pages/pageMakers.h"
#include "views/pages/pinRows.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>

#include <array>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

constexpr int kPinsAPort = 8;
constexpr int kPorts = 3;
constexpr int kLeastPortWidth = 264;

/// Over the drive boxes of each port.
constexpr std::array<const char*, kPorts> kDriveTitles = {"P0 DRV Enables", "P1 DRV", "P2 DRV "};

bool fresh(const Control& reading) {
    return !reading.freshness() || reading.freshness()->state == Freshness::State::Fresh;
}

/// Data and drive register of a port: the host's image, and what the board said last.
QWidget* portRegisters(PanelUi& ui, frmMotherboardDAQ2& p, int port) {
    auto* lines = new QGridLayout;
    lines->setContentsMargins(0, kUnit / 2, 0, 0);
    lines->setVerticalSpacing(2);
    lines->addWidget(columnTitle("written"), 0, 1);
    lines->addWidget(columnTitle("read"), 0, 2);
    int at = 1;
    for (const int reg : {port, port + kPorts}) {
        const QString name = plainCaption(p.lblPbuf[reg]);
        auto* write = entry(ui, p.txtPBuf[reg], 4, name + " to write");
        auto* read = readBack(ui, p.txtPBufRd[reg], 4, name + " as read");
        auto* title = ui(p.lblPbuf[reg]);
        title->setFont(textFont(kSmall));
        title->setBuddy(write);
        keepWithoutMnemonic(*title);
        auto* pair = new DiffersGround(row({write, read}));
        pair->setObjectName(QString("pair.txtPBuf(%1)").arg(reg));
        const auto show = [pair, &p, reg] {
            pair->setDiffers(fresh(p.txtPBufRd[reg]) &&
                             hexToInt(p.txtPBuf[reg].text()) != hexToInt(p.txtPBufRd[reg].text()));
        };
        ui.watch(p.txtPBuf[reg], show);
        ui.watch(p.txtPBufRd[reg], show);
        lines->addWidget(title, at, 0);
        lines->addWidget(pair, at, 1, 1, 2);
        ++at;
    }
    lines->setColumnStretch(3, 1);
    return block(lines);
}

QWidget* portBox(PanelUi& ui, frmMotherboardDAQ2& p, int port) {
    auto* head = PinRow::makeHead({"HI", "drive"});
    head->setToolTip(kDriveTitles.at(static_cast<std::size_t>(port)));
    std::vector<Item> lines{head};
    for (int pin = kPinsAPort * port; pin < kPinsAPort * (port + 1); ++pin) {
        const QString name = QString("P%1.%2").arg(port).arg(pin % kPinsAPort);
        auto* data = bareBox(ui, p.chkPData[pin], name + " HI");
        auto* drive = bareBox(ui, p.chkP0OutEn[pin], name + " drive");
        data->setToolTip(QString("Data of pin %1; Write Ports sends it").arg(name));
        drive->setToolTip(QString("Pin %1 drives; Write Ports sends it").arg(name));
        auto* line = new PinRow(name, {data, drive});
        line->setUse(QString::fromStdString(p.chkPData[pin].caption()).section(' ', 1).trimmed());
        const auto show = [line, &p, pin] {
            line->setNow(pinNow(p.chkPData[pin].checked(), p.chkP0OutEn[pin].checked(), false));
        };
        ui.watch(p.chkPData[pin], show);
        ui.watch(p.chkP0OutEn[pin], show);
        lines.emplace_back(line);
    }
    lines.emplace_back(separator(Qt::Horizontal));
    lines.emplace_back(portRegisters(ui, p, port));
    lines.push_back(stretch);
    auto* content = column(lines);
    content->setSpacing(0);
    auto* whole = box(QString("Port %1").arg(port), content, BoxFrame::Ground::Base);
    whole->layout()->setContentsMargins(kUnit, kUnit, kUnit, kUnit);
    return whole;
}

QWidget* allPorts(PanelUi& ui, frmMotherboardDAQ2& p) {
    auto* words = wrapped(quietText("Boxes change the image alone; Write Ports sends all six registers, data "
                                    "before drive. Tally GPIO has no effect."),
                          20);
    return box("All ports", column({row({ui(p.cmdWrtPipe1), ui(p.cmdReadPipe1), ui(p.cmdTallyGPIO), stretch}),
                                    words, stretch}));
}

QWidget* supplyBox(PanelUi& ui, frmMotherboardDAQ2& p) {
    auto* volts = ui.value(p.lblVCCVoltsRDBK, "0.000", 1.7);
    volts->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    volts->setAccessibleName("VCC read back, volts");
    auto* target = entry(ui, p.txtVCCVolts, 6, "VCC volts");
    auto* age = ui.age(p.lblVCCVoltsRDBK);
    auto* calibration = ui(p.lblCal_header);
    const auto lamp = [&ui](Lamp& control, const QString& name) {
        auto* widget = ui.supplyLamp(control, name);
        widget->setSide(20);
        return widget;
    };
    auto* sample = ui(p.cmdSampleVCC);
    sample->setMinimumWidth(sample->sizeHint().width());
    auto* track = ui(p.ChkTrack);
    track->setMinimumWidth(track->sizeHint().width());
    const auto line = [](const char* name, std::vector<Item> items) {
        auto* words = quietText(name);
        words->setMinimumWidth(dp(64));
        items.insert(items.begin(), words);
        return row(items);
    };
    return box("Supply",
               column({
                   line("VCC", {lamp(p.ShpVCCon, "VCC"), ui(p.OptVCC[0]), ui(p.OptVCC[1]), stretch}),
                   line("V−", {lamp(p.ShpVCCMinusOn, "V−"), ui(p.OptVCCMinus[0]), ui(p.OptVCCMinus[1]),
                               stretch, track}),
                   line("Measured", {volts, quietText("V"), stretch, sample}),
                   line("", {age, stretch}),
                   line("Level", {target, quietText("V"), stretch, ui(p.cmdSetVCCVolts)}),
                   line("Calibration", {calibration, stretch}),
                   stretch,
               }));
}

/// The supply DAC's four frames. The first cell of each row is not sent.
QWidget* dacBox(PanelUi& ui, frmMotherboardDAQ2& p) {
    const std::array<Button*, 4> actions = {&p.cmdSPIWrite, &p.cmdSPIWrite2, &p.cmdSPRRdReg,
                                            &p.cmdSPIReadData};
    std::vector<std::vector<Item>> lines{
        {columnTitle("not sent"), columnTitle("device"), columnTitle("frame"), columnTitle("value")}};
    constexpr int kCells = 4;
    for (int line = 0; line < 4; ++line) {
        Button& action = *actions.at(static_cast<std::size_t>(line));
        const QString name = plainCaption(action);
        lines.emplace_back();
        for (int cell = 0; cell < kCells; ++cell)
            lines.back().emplace_back(
                entry(ui, p.txtSPIwr[kCells * line + cell], 4, QString("%1, cell %2").arg(name).arg(cell)));
        lines.back().emplace_back(plainButton(ui, action));
        lines.back().push_back(stretch);
    }
    std::vector<Item> read = readBacks(ui, p.txtSPIRd, 4, "Supply DAC byte read");
    read.emplace_back("as read");
    lines.push_back(read);
    return box("Supply DAC U5 (hex)", column({dense(grid(lines)), stretch}));
}

QWidget* samplingBox(PanelUi& ui, frmMotherboardDAQ2& p) {
    auto* channel = ui(p.Combo1, 11);
    auto* reading = readBack(ui, p.txtRdgs[0], 7, "Last reading, volts");
    reading->setFont(valueFont(2.4));
    auto* code = readBack(ui, p.txtADDec, 5, "Code of the last reading");
    code->setFont(valueFont(1.7));
    auto* more = readBack(ui, p.txtRdgs[1], 7, "Second reading, volts");
    auto* evenMore = readBack(ui, p.txtRdgs[2], 7, "Third reading, volts");
    auto* delay = ui(p.CboIntTime, 6);
    auto* delayCaption = ui(p.Label9);
    delayCaption->setBuddy(delay);
    makeQuiet(*delayCaption);
    auto* sampling = keepsPlace(ui(p.shpSample, "Sampling"));
    return box("Analog input", column({
                                   row({captionOf(p.Combo1, channel), channel, ui(p.cmdSetMode), stretch}),
                                   row({reading, quietText("V"), gap, caption("Code", code), code, stretch}),
                                   row({ui(p.cmdSample), ui(p.cmdEndSampling), sampling, stretch}),
                                   row({caption("Further", more), more, evenMore, quietText("V"), stretch}),
                                   row({delayCaption, delay, stretch}),
                                   stretch,
                               }));
}

QWidget* inputsBox(PanelUi& ui, frmMotherboardDAQ2& p) {
    std::vector<std::vector<Item>> inputs;
    for (int input = 0; input < p.lblVINP.count(); ++input) {
        const QString name = plainCaption(p.lblVINP[input]);
        inputs.push_back({ui(p.lblVINP[input]), entry(ui, p.txtGPIOUserName[input], 9, name + ", volts"),
                          quietText("V"), ui(p.ShpADSample[input], name), stretch});
    }
    return box("Inputs",
               column({dense(grid(inputs), 4),
                       row({ui(p.cmdReadAllAD), quietText("reads Vin0, twice the pin's volts"), stretch}),
                       stretch}));
}

QWidget* i2cBox(PanelUi& ui, frmMotherboardDAQ2& p) {
    static constexpr std::array<const char*, 4> kOut = {"count", "address", "byte 1", "byte 2"};
    static constexpr std::array<const char*, 3> kIn = {"count", "address", "register"};
    const auto cells = [&ui](ControlArray<TextBox>& array, const QString& action, const auto& names) {
        std::vector<Item> items;
        for (auto& field : array)
            items.emplace_back(
                entry(ui, *field, 4,
                      QString("I2C %1, %2").arg(action, names.at(static_cast<std::size_t>(field->index())))));
        return items;
    };
    const std::vector<Item> out = cells(p.txtI2COut, "write", kOut);
    const std::vector<Item> in = cells(p.txtI2CIN, "read", kIn);
    auto* written = readBack(ui, p.txtI2CWriteStatus, 4, "I2C bytes written");
    auto* read = readBack(ui, p.txtI2CReadStatus, 4, "I2C bytes read");
    auto* lampOut = ui(p.ShpI2CNAK[0], "I2C write");
    auto* lampIn = ui(p.ShpI2CNAK[1], "I2C read");
    auto* content = column({
        dense(grid({{{},
                     columnTitle("count"),
                     columnTitle("address"),
                     columnTitle("byte 1"),
                     columnTitle("byte 2")},
                    {"Write", out[0], out[1], out[2], out[3], ui(p.CMDI2CWrite), lampOut, written, stretch},
                    {{}, columnTitle("count"), columnTitle("address"), columnTitle("register")},
                    {"Read", in[0], in[1], in[2], {}, ui(p.cmdI2CRead), lampIn, read}}),
              4),
        row({quietText("As read"), tightRow(readBacks(ui, p.txtI2CRead, 3, "I2C byte read")),
             quietText("hex"), stretch}),
        stretch,
    });
    return new BoxFrame(column({ui.frame(p.fraI2C, "I2C", content)}), BoxFrame::Ground::Window);
}

/// One exchange: the bytes sent over the bytes that came back. Position 0 does not go on the wire.
void addSpiRow(std::vector<std::vector<Item>>& lines, PanelUi& ui, const QString& name, TextBox& count,
               ControlArray<TextBox>& data, Button& send, TextBox& readCount, ControlArray<TextBox>& read) {
    auto* quantity = entry(ui, count, 3, name + " bytes to send, 1 to 5");
    std::vector<Item> out{caption(name, quantity), quantity};
    keepWithoutMnemonic(*out.front().widget);
    for (const Item& item : entries(ui, data, 4, name + " byte"))
        out.push_back(item);
    out.emplace_back(plainButton(ui, send));
    out.push_back(stretch);
    lines.push_back(out);
    std::vector<Item> in{right("read"), readBack(ui, readCount, 3, name + " count read")};
    for (const Item& item : readBacks(ui, read, 4, name + " byte read"))
        in.push_back(item);
    lines.push_back(in);
}

QWidget* spiBox(PanelUi& ui, frmMotherboardDAQ2& p) {
    std::vector<std::vector<Item>> lines{{{},
                                          columnTitle("count"),
                                          columnTitle("not sent"),
                                          columnTitle("byte 1"),
                                          columnTitle("byte 2"),
                                          columnTitle("byte 3"),
                                          columnTitle("byte 4"),
                                          columnTitle("byte 5")}};
    addSpiRow(lines, ui, "Row 2", p.txtSPIWrQty2, p.txtSPIWrite2Data, p.cmdSPIOWrite2, p.txtSPIReadCnt2,
              p.txtSPIORead);
    addSpiRow(lines, ui, "Row 3", p.txtSPIWrQty3, p.txtSPIWrite3Data, p.cmdSPIOWrite3, p.txtSPIReadCnt3,
              p.txtSPIORead3);
    return new BoxFrame(column({ui.frame(p.Frmspio, "SPI", column({dense(grid(lines), 4), stretch}))}),
                        BoxFrame::Ground::Window);
}

} // namespace

void makeMotherboardPage(PageUi& page, frmMotherboardDAQ2& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Motherboard");
    page.startsWithInspectorFolded();
    QMenu* menu = page.menu("&File");
    QAction* general = ui(p.mnuGeneral_I2C);
    general->setParent(menu);
    menu->addAction(general);

    std::vector<QWidget*> boxes;
    for (int port = 0; port < kPorts; ++port)
        boxes.push_back(portBox(ui, p, port));
    boxes.push_back(block(column({supplyBox(ui, p), allPorts(ui, p), stretch})));
    QWidget* ports = block(column({new BoxFlow(boxes, dp(kLeastPortWidth)), stretch}));
    auto* sampling = samplingBox(ui, p);
    auto* inputs = inputsBox(ui, p);
    auto* dac = dacBox(ui, p);
    auto* i2c = i2cBox(ui, p);
    auto* spi = spiBox(ui, p);
    QWidget* transfers = block(
        column({new BoxFlow({sampling, inputs, dac}, dp(364)), new BoxFlow({i2c, spi}, dp(480)), stretch}));
    auto* strip = new QTabBar;
    strip->setObjectName("pages");
    strip->setDrawBase(false);
    strip->setDocumentMode(true);
    strip->setExpanding(false);
    auto* stack = new FrontStack;
    for (const auto& [title, each] :
         {std::pair("Pins and supplies", ports), std::pair("Analog inputs, I2C and SPI", transfers)}) {
        strip->addTab(title);
        stack->addWidget(each);
    }
    QObject::connect(strip, &QTabBar::currentChanged, stack, &QStackedWidget::setCurrentIndex);
    auto* console = ui(p.cmdShowMian);
    auto* leave = ui(p.cmdexit);
    leave->setToolTip("Closes the console; its next opening resets all pins and both supplies");
    page.addHeadItem(console);
    page.addHeadItem(leave);
    for (QWidget* each : {ports, transfers})
        withLetters(each, "SE"); // the head's

    const auto inFront = [stack, transfers] { return stack->currentWidget() == transfers; };
    page.onRead("Read the ports, or the analog channel where its tab is in front",
                [&ui, &p, inFront] { press(ui, inFront() ? p.cmdSetMode : p.cmdReadPipe1); });
    page.onWrite("Write the ports", [&ui, &p] { press(ui, p.cmdWrtPipe1); });
    page.onAbort("Stop sampling", [&ui, &p] { press(ui, p.cmdEndSampling); });
    for (int tab = 0; tab < strip->count(); ++tab)
        page.addKey(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + tab)),
                    "Tab " + strip->tabText(tab), [strip, tab] {
                        strip->setCurrentIndex(tab);
                        strip->setFocus(Qt::ShortcutFocusReason);
                    });
    auto* content = column({strip, separator(Qt::Horizontal), gap, stack});
    content->setSpacing(0);
    content->setStretch(3, 1);
    page.setContent(block(content));
    if (auto* first = ui.find(p.chkPData[0]))
        page.setFirstFocus(qobject_cast<QWidget*>(&first->target()));
}

} // namespace vrk
