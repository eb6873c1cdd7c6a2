#include "motherboard/frmMotherboardDAQ2.h"
#include "platform/qt/theme.h"
#include "views/pages/consoleWords.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

#include <array>

namespace vrk {

using namespace qt;

namespace {

constexpr int kPinsAPort = 8;
constexpr int kDeviceKinds = 4;

/// What a pin is to each kind of device in the socket: I2C, SPI, up/down, push-button. One text alone is
/// for all of them.
using Uses = std::array<const char*, kDeviceKinds>;
constexpr std::array<Uses, frmMotherboardDAQ2::kPins> kPinUses = {{
    {"", "Clock", "", ""},
    {"", "Data in", "", ""},
    {"", "Data out", "", "/MUTE"},
    {"", "Chip select", "", ""},
    {"Data", "", "", ""},
    {"Clock", "", "", ""},
    {"A0", "Address line", "/CS1", "/CS1"},
    {"A1", "Address line", "/CS2", "/STORE"},
    {"A2", "Address line", "", ""},
    {"A3", "Address line", "/INC", "/UP"},
    {"/SHDN or /WP", "/SHDN or /WP", "Up / Down", "/DOWN"},
    {"Cleared at load", "Set at load", "", ""},
    {"", "", "", ""},
    {"", "", "", ""},
    {"Analog input VIN0"},
    {"Analog input VIN1"},
    {"Analog input VIN2"},
    {"Analog input VIN3"},
    {"VCC/2 sense, VIN4"},
    {"", "", "", ""},
    {"Chip select of the supply DAC U5, active low"},
    {"VCC supply, HI is on"},
    {"V− supply, HI is on"},
    {"", "", "", ""},
}};

/// Over the drive boxes of each port.
constexpr std::array<const char*, 3> kDriveTitles = {"P0 DRV Enables", "P1 DRV", "P2 DRV "};

/// One line a pin: data beside its name, drive, and what the device panels make of it.
QGridLayout* pinTable(PanelUi& ui, frmMotherboardDAQ2& p) {
    std::vector<std::vector<Item>> lines{{columnTitle("Data: HI"), columnTitle(kDriveTitles[0]),
                                          columnTitle("I2C"), columnTitle("SPI"), columnTitle("Up/down"),
                                          columnTitle("Push-button"), stretch}};
    for (int pin = 0; pin < frmMotherboardDAQ2::kPins; ++pin) {
        if (pin > 0 && pin % kPinsAPort == 0)
            lines.push_back(
                {Item(), columnTitle(kDriveTitles.at(static_cast<std::size_t>(pin / kPinsAPort)))});
        auto* drive = plainBox(ui, p.chkP0OutEn[pin]);
        auto* data = plainBox(ui, p.chkPData[pin]);
        data->setToolTip(QString("Data of pin %1; Write Ports sends it").arg(drive->text()));
        drive->setToolTip(QString("Pin %1 drives; Write Ports sends it").arg(drive->text()));
        drive->setAccessibleName(drive->text() + " drive");
        std::vector<Item> line{data, drive};
        const Uses& uses = kPinUses.at(static_cast<std::size_t>(pin));
        if (uses[1] == nullptr)
            line.push_back(wide(Item(uses[0]), kDeviceKinds));
        else
            for (const char* use : uses)
                line.push_back(*use == '\0' ? Item() : Item(use));
        lines.push_back(line);
    }
    QGridLayout* table = dense(grid(lines), 0);
    table->setHorizontalSpacing(2 * kUnit);
    return table;
}

QWidget* registersBlock(PanelUi& ui, frmMotherboardDAQ2& p) {
    std::vector<std::vector<Item>> lines{{{}, columnTitle("To write"), columnTitle("As read")}};
    for (int reg = 0; reg < frmMotherboardDAQ2::kRegisters; ++reg) {
        const QString name = plainCaption(p.lblPbuf[reg]);
        auto* write = entry(ui, p.txtPBuf[reg], 4, name + " to write");
        auto* title = ui(p.lblPbuf[reg]);
        title->setBuddy(write);
        keepWithoutMnemonic(*title);
        lines.push_back({title, write, readBack(ui, p.txtPBufRd[reg], 4, name + " as read"), stretch});
    }
    return group("Port registers (hex)",
                 column({dense(grid(lines)),
                         row({ui(p.cmdWrtPipe1), ui(p.cmdReadPipe1), ui(p.cmdTallyGPIO), stretch})}));
}

QWidget* supplyBlock(PanelUi& ui, frmMotherboardDAQ2& p) {
    auto* volts = ui.value(p.lblVCCVoltsRDBK, "00.000", 1.7);
    volts->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    volts->setAccessibleName("VCC read back");
    auto* target = entry(ui, p.txtVCCVolts, 6, "VCC volts");
    auto* calibration = ui(p.lblCal_header);
    return group(
        "Supplies",
        grid({
            {"VCC", tightRow({ui.supplyLamp(p.ShpVCCon, "VCC"), ui(p.OptVCC[0]), ui(p.OptVCC[1]), stretch}),
             ui(p.ChkTrack)},
            {"V−", tightRow({ui.supplyLamp(p.ShpVCCMinusOn, "V−"), ui(p.OptVCCMinus[0]), ui(p.OptVCCMinus[1]),
                             stretch})},
            {"Read back", tightRow({volts, quietText("V"), stretch}), ui(p.cmdSampleVCC), stretch},
            {caption("VCC", target), tightRow({target, quietText("V"), stretch}), ui(p.cmdSetVCCVolts)},
            {"Calibration", wide(calibration, 2)},
        }));
}

/// The supply DAC's four frames. The first cell of each row is not sent.
QWidget* dacBlock(PanelUi& ui, frmMotherboardDAQ2& p) {
    const std::array<Button*, 4> actions = {&p.cmdSPIWrite, &p.cmdSPIWrite2, &p.cmdSPRRdReg,
                                            &p.cmdSPIReadData};
    std::vector<std::vector<Item>> lines{
        {columnTitle("Not sent"), columnTitle("Device"), columnTitle("Frame"), columnTitle("Value")}};
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
    read.emplace_back("read back");
    lines.push_back(read);
    return group("Supply DAC U5 (hex)", dense(grid(lines)));
}

QWidget* analogBlock(PanelUi& ui, frmMotherboardDAQ2& p) {
    auto* channel = ui(p.Combo1, 18);
    auto* reading = readBack(ui, p.txtRdgs[0], 7, "Last reading in volts");
    reading->setFont(valueFont(2.4));
    auto* code = readBack(ui, p.txtADDec, 5, "Code of the last reading");
    code->setFont(valueFont(1.7));
    auto* more = readBack(ui, p.txtRdgs[1], 7, "Second reading");
    auto* evenMore = readBack(ui, p.txtRdgs[2], 7, "Third reading");
    auto* delay = ui(p.CboIntTime, 6);
    auto* delayCaption = ui(p.Label9);
    delayCaption->setBuddy(delay);
    makeQuiet(*delayCaption);
    auto* sampling = keepsPlace(ui(p.shpSample, "Sampling"));
    std::vector<std::vector<Item>> inputs{{columnTitle("Input"), columnTitle("Value")}};
    for (int input = 0; input < p.lblVINP.count(); ++input) {
        const QString name = plainCaption(p.lblVINP[input]);
        inputs.push_back({ui(p.lblVINP[input]), entry(ui, p.txtGPIOUserName[input], 9, name),
                          ui(p.ShpADSample[input], name), stretch});
    }
    return group("Analog inputs",
                 row({
                     column({
                         row({captionOf(p.Combo1, channel), channel, ui(p.cmdSetMode), stretch}),
                         gap,
                         row({reading, quietText("V"), gap, caption("Code", code), code, stretch}),
                         gap,
                         row({ui(p.cmdSample), ui(p.cmdEndSampling), sampling, stretch}),
                         gap,
                         row({caption("Further readings", more), more, evenMore, quietText("V"), stretch}),
                         row({delayCaption, delay, stretch}),
                         stretch,
                     }),
                     gap,
                     separator(Qt::Vertical),
                     gap,
                     column({row({ui(p.cmdReadAllAD), quietText("reads Vin0"), stretch}),
                             dense(grid(inputs), 4), stretch}),
                 }));
}

QWidget* i2cBlock(PanelUi& ui, frmMotherboardDAQ2& p) {
    std::vector<Item> out = entries(ui, p.txtI2COut, 4, "I2C write: count, address, byte 1, byte 2; field");
    std::vector<Item> in = entries(ui, p.txtI2CIN, 4, "I2C read: count, address, register; field");
    auto* written = readBack(ui, p.txtI2CWriteStatus, 4, "I2C bytes written");
    auto* read = readBack(ui, p.txtI2CReadStatus, 4, "I2C bytes read");
    auto* lampOut = ui(p.ShpI2CNAK[0], "I2C write");
    auto* lampIn = ui(p.ShpI2CNAK[1], "I2C read");
    return ui.frame(
        p.fraI2C, "I2C",
        column({
            dense(
                grid({{{},
                       columnTitle("Count"),
                       columnTitle("Address"),
                       columnTitle("Byte 1"),
                       columnTitle("Byte 2")},
                      {"Write", out[0], out[1], out[2], out[3], ui(p.CMDI2CWrite), lampOut, written, stretch},
                      {{}, columnTitle("Count"), columnTitle("Address"), columnTitle("Register")},
                      {"Read", in[0], in[1], in[2], {}, ui(p.cmdI2CRead), lampIn, read}}),
                4),
            row({quietText("Bytes read"), tightRow(readBacks(ui, p.txtI2CRead, 3, "I2C byte read")),
                 stretch}),
        }));
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

QWidget* spiBlock(PanelUi& ui, frmMotherboardDAQ2& p) {
    std::vector<std::vector<Item>> lines{{{},
                                          columnTitle("Count"),
                                          columnTitle("Not sent"),
                                          columnTitle("Byte 1"),
                                          columnTitle("Byte 2"),
                                          columnTitle("Byte 3"),
                                          columnTitle("Byte 4"),
                                          columnTitle("Byte 5")}};
    addSpiRow(lines, ui, "Row 2", p.txtSPIWrQty2, p.txtSPIWrite2Data, p.cmdSPIOWrite2, p.txtSPIReadCnt2,
              p.txtSPIORead);
    addSpiRow(lines, ui, "Row 3", p.txtSPIWrQty3, p.txtSPIWrite3Data, p.cmdSPIOWrite3, p.txtSPIReadCnt3,
              p.txtSPIORead3);
    return ui.frame(p.Frmspio, "SPI", dense(grid(lines), 4));
}

} // namespace

void makeMotherboardPage(PageUi& page, frmMotherboardDAQ2& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Motherboard console");
    QMenu* menu = page.menu("&File");
    QAction* general = ui(p.mnuGeneral_I2C);
    general->setParent(menu);
    menu->addAction(general);

    auto* pins = group("Pins", column({pinTable(ui, p), stretch}));
    QWidget* ports = block(row(
        {pins, gap, separator(Qt::Vertical), gap,
         column({registersBlock(ui, p), gap, supplyBlock(ui, p), gap, dacBlock(ui, p), stretch}), stretch}));
    auto* analog = analogBlock(ui, p);
    auto* i2c = i2cBlock(ui, p);
    auto* spi = spiBlock(ui, p);
    QWidget* inputs = block(column({row({analog, stretch}), gap, separator(Qt::Horizontal), gap,
                                    row({i2c, gap, separator(Qt::Vertical), gap, spi, stretch}), stretch}));
    for (QWidget* each : {ports, inputs})
        each->layout()->setContentsMargins(0, kUnit, 0, 0);
    QTabWidget* pages = tabs({{"Pins and supplies", ports}, {"Analog inputs, I2C and SPI", inputs}});
    pages->setObjectName("pages");
    QWidget* corner = block(row({ui(p.cmdShowMian), ui(p.cmdexit)}));
    corner->layout()->setContentsMargins(0, 0, 0, kUnit / 4);
    pages->setCornerWidget(withLetters(corner));
    for (QWidget* each : {ports, inputs})
        withLetters(each, "SE"); // the corner's

    const auto inFront = [pages, inputs] { return pages->currentWidget() == inputs; };
    page.onRead("Read the ports, or the analog channel where its page is in front",
                [&ui, &p, inFront] { press(ui, inFront() ? p.cmdSetMode : p.cmdReadPipe1); });
    page.onWrite("Write the ports", [&ui, &p] { press(ui, p.cmdWrtPipe1); });
    page.onAbort("Stop sampling", [&ui, &p] { press(ui, p.cmdEndSampling); });
    for (int tab = 0; tab < pages->count(); ++tab)
        page.addKey(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + tab)),
                    "Page " + pages->tabText(tab), [pages, tab] { pages->setCurrentIndex(tab); });
    page.setContent(block(column({pages})));
    if (auto* first = ui.find(p.chkPData[0]))
        page.setFirstFocus(qobject_cast<QWidget*>(&first->target()));
}

} // namespace vrk
