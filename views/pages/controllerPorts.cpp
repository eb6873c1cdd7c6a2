#include "link/frmMainF340.h"
#include "platform/qt/theme.h"
#include "views/pages/boxes.h"
#include "views/pages/consoleWords.h"
#include "views/pages/controllerTabs.h"
#include "views/pages/pinRows.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include <algorithm>
#include <array>

namespace vrk {

using namespace qt;

namespace {

constexpr int kBits = 8;
constexpr int kLeastPortWidth = 208;
constexpr int kNarrowButton = 46;

/// The button's caption names the port where many stand side by side; in the port's own box the row does.
QPushButton* narrow(QPushButton* button, const QString& what) {
    button->setToolTip(what);
    button->setAccessibleName(what);
    button->setFixedWidth(dp(kNarrowButton));
    return button;
}

/// A byte that is of any worth now: written once, or read and not overtaken by anything since.
bool holds(const Label& byte) {
    const auto& worth = byte.freshness();
    return byte.caption() != "--" && (!worth || worth->state == Freshness::State::Fresh);
}
bool differ(const Label& written, const Label& read) {
    return holds(written) && holds(read) && written.caption() != read.caption();
}

struct PortRegister {
    const char* name;
    Label& written;
    Label& read;
    Lamp& lamp;
    Button& write;
    Button& readBack;
};

/// What was written, what the board says, and whether they agree.
QWidget* portRegisters(PanelUi& ui, frmMainF340& p, int port) {
    const int ports = frmMainF340::kPorts;
    const std::array<PortRegister, 3> registers = {{
        {"Data", p.lblWrGPData[port], p.lblRdGPData[port], p.ShpGPIOStat[port + ports], p.cmdWrGPData[port],
         p.cmdRdGPData[port]},
        {"Mode", p.lblWrOC[port], p.lblRdOC[port], p.ShpGPIOStat[port], p.cmdWrOC[port], p.cmdRdOC[port]},
        {"Analog", p.lblWrGPAnalog[port], p.lblRdGPAnalog[port], p.ShpGPIOStat[port + 2 * ports],
         p.cmdWrGPAnalog[port], p.cmdRdGPAnalog[port]},
    }};
    std::vector<RegisterLine> lines;
    for (const PortRegister& r : registers) {
        const QString name = QString("P%1 %2").arg(port).arg(QString(r.name).toLower());
        auto* written = ui.value(r.written, "00");
        written->setAccessibleName(name + " written");
        auto* read = ui.value(r.read, "00");
        read->setAccessibleName(name + " read");
        lines.push_back(
            {r.name,
             written,
             read,
             {ui(r.lamp, name + ": read equals written"), narrow(plainButton(ui, r.write), "Write " + name),
              narrow(plainButton(ui, r.readBack), "Read " + name)}});
    }
    const RegisterTable table = registerTable(lines);
    for (std::size_t at = 0; at < registers.size(); ++at) {
        const PortRegister& r = registers.at(at);
        auto* read = static_cast<ValueLabel*>(lines.at(at).read);
        const auto show = [pair = table.pairs.at(at), read, &written = r.written, &answer = r.read] {
            pair->setDiffers(differ(written, answer));
            if (pair->differs())
                read->setTone(Tone::Differs);
            else if (read->tone() == Tone::Differs)
                read->setTone(Tone::Plain);
        };
        ui.watch(r.written, show);
        ui.watch(r.read, show);
    }
    return table.widget;
}

/// Keeps the rows of a port up to date with its boxes and bytes.
void followPins(PanelUi& ui, frmMainF340& p, int port, const std::vector<PinRow*>& rows) {
    const auto show = [&p, port, rows] {
        const Label& written = p.lblWrGPData[port];
        const Label& read = p.lblRdGPData[port];
        const int answer = differ(written, read) ? hexToInt(read.caption()) : 0;
        const int other = differ(written, read) ? hexToInt(written.caption()) ^ answer : 0;
        for (int bit = 0; bit < kBits; ++bit) {
            PinNow now = pinNow(p.chkGPvalue(port)[bit].checked(), p.chkOpenCollector(port)[bit].checked(),
                                p.chkDIN(port)[bit].checked());
            if ((other >> bit) & 1)
                now = (answer >> bit) & 1 ? PinNow::ReadsHigh : PinNow::ReadsLow;
            // Its caption is the pin's number, and behind it what the motherboard uses it for.
            const QString caption = QString::fromStdString(p.chkGPvalue(port)[bit].caption());
            PinRow& row = *rows.at(static_cast<std::size_t>(bit));
            row.setUse(caption.section(' ', 1).trimmed());
            row.setNow(now);
        }
    };
    for (int bit = 0; bit < kBits; ++bit)
        for (CheckBox* each :
             {&p.chkGPvalue(port)[bit], &p.chkOpenCollector(port)[bit], &p.chkDIN(port)[bit]})
            ui.watch(*each, show);
    for (Label* each : {&p.lblWrGPData[port], &p.lblRdGPData[port]})
        ui.watch(*each, show);
}

QWidget* portBox(PanelUi& ui, frmMainF340& p, int port) {
    std::vector<Item> lines{PinRow::makeHead({"HI", "push", "analog"})};
    std::vector<PinRow*> rows;
    for (int bit = 0; bit < kBits; ++bit) {
        const QString pin = QString("P%1.%2").arg(port).arg(bit);
        rows.push_back(new PinRow(pin, {bareBox(ui, p.chkGPvalue(port)[bit], pin + " HI"),
                                        bareBox(ui, p.chkOpenCollector(port)[bit], pin + " push-pull"),
                                        bareBox(ui, p.chkDIN(port)[bit], pin + " analog")}));
        lines.emplace_back(rows.back());
    }
    followPins(ui, p, port, rows);
    lines.emplace_back(separator(Qt::Horizontal));
    lines.emplace_back(portRegisters(ui, p, port));
    lines.push_back(stretch);
    auto* content = column(lines);
    content->setSpacing(0);
    auto* whole = box(QString("Port %1").arg(port), content, BoxFrame::Ground::Base);
    whole->layout()->setContentsMargins(6, kUnit, 6, kUnit);
    return whole;
}

/// What concerns all five ports.
QWidget* allPorts(PanelUi& ui, frmMainF340& p) {
    auto* automatic = ui(p.chkAutoWriteRead);
    automatic->setToolTip("Each click on a pin writes its port and reads it back");
    return box("All ports",
               column({
                   row({ui(p.cmdWriteReadAll), ui(p.cmdSampleGP), ui(p.cmdResetGPIO), ui(p.cmdClearAnalog),
                        stretch}),
                   row({ui(p.chkWeakPullUpDisable), ui(p.chkWeakPullUpEnableOnRead), stretch}),
                   stretch,
               }),
               BoxFrame::Ground::Window, automatic);
}

QWidget* howToRead(PanelUi& ui, frmMainF340& p) {
    auto* rule = ui(p.lblGP);
    auto* words = new QLabel("With push the pin drives HI or LO. Without push, LO pulls LO and HI is high "
                             "impedance (Hi-Z). Analog is an input of the converter. A tinted pin reads "
                             "other than it was written.");
    for (QLabel* each : {static_cast<QLabel*>(rule), words}) {
        each->setWordWrap(true);
        each->setFont(textFont(kSmall));
        each->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
        each->setMinimumWidth(dp(230));
        makeQuiet(*each);
    }
    return box("How to read \"now\"", column({words, rule, stretch}));
}

/// Rows `from` to `to` of the register table.
QWidget* sfrRows(PanelUi& ui, frmMainF340& p, int from, int to) {
    auto* cells = new QGridLayout;
    cells->setVerticalSpacing(2);
    cells->addWidget(columnTitle("to write"), 0, 1, Qt::AlignCenter);
    cells->addWidget(columnTitle("as read"), 0, 2, Qt::AlignCenter);
    for (int index = from; index < to; ++index) {
        const QString name = plainCaption(p.lblPbuf[index]);
        auto* title = ui(p.lblPbuf[index]);
        title->setFont(valueFont());
        auto* write = entry(ui, p.txtPBuf[index], 4, name + " to write");
        auto* read = readBack(ui, p.txtPBufRd[index], 4, name + " as read");
        read->setToolTip("A click reads this register");
        const int line = index - from + 1;
        cells->addWidget(title, line, 0);
        cells->addWidget(write, line, 1);
        cells->addWidget(read, line, 2);
        cells->addWidget(ui(p.ShpSKFRd[index], name + " read"), line, 3);
    }
    cells->setColumnStretch(4, 1);
    return block(column({cells, stretch}));
}

} // namespace

QWidget* makeGpioPage(PageUi& page, frmMainF340& p, QWidget* registerPlace) {
    PanelUi& ui = page.ui();
    std::vector<QWidget*> ports;
    for (int port = 0; port < frmMainF340::kPorts; ++port)
        ports.push_back(portBox(ui, p, port));
    auto* all = allPorts(ui, p);
    auto* words = howToRead(ui, p);
    auto* map = new BoxFlow(ports, dp(kLeastPortWidth));
    auto* lower = new BoxFlow({all, registerPlace, words}, dp(450), {490, 486, 260});
    auto* content = column({map, lower, stretch});
    return block(content);
}

QWidget* makeOneRegister(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    auto* address = entry(ui, p.txtSFRAddress, 3, "Register address");
    auto* data = entry(ui, p.txtSFRWRData, 3, "Value to write");
    static constexpr std::array<const char*, 4> kReply = {"report ID", "error", "error flag", "data"};
    std::vector<Item> reply{quietText("Reply")};
    for (auto& label : p.lblSFRBuf) {
        auto* value = ui.value(*label, "00", kStripScale);
        value->setAccessibleName(kReply.at(static_cast<std::size_t>(label->index())));
        value->setToolTip(value->accessibleName());
        reply.emplace_back(value);
    }
    auto* name = quietText({});
    name->setObjectName("sfr.name");
    ui.watch(p.txtSFRAddress, [name, &p] {
        QString known;
        for (const auto& row : p.lblPbuf)
            if (row->caption().substr(0, 2) == p.txtSFRAddress.text())
                known = QString::fromStdString(row->caption()).mid(4);
        name->setText(known);
    });
    reply.push_back(stretch);
    reply.emplace_back(name);
    return box("One register",
               column({row({caption("Address", address), address, quietText("hex"), ui(p.cmdGetSDFValue),
                            stretch, caption("Value", data), data, quietText("hex"), ui(p.cmdSetSFR)}),
                       row(reply), stretch}),
               BoxFrame::Ground::Window, quietText("reply: report ID, error, error flag, data"));
}

QWidget* makeSfrPage(PageUi& page, frmMainF340& p, QWidget* registerPlace) {
    PanelUi& ui = page.ui();
    constexpr int kThird = (frmMainF340::kSfrRows + 2) / 3;
    std::vector<QWidget*> columns;
    for (int from = 0; from < frmMainF340::kSfrRows; from += kThird)
        columns.push_back(sfrRows(ui, p, from, std::min(from + kThird, frmMainF340::kSfrRows)));
    auto* registers = box("Special function registers (hex)", row({new BoxFlow(columns, dp(250))}),
                          BoxFrame::Ground::Base, block(row({ui(p.chkWriteEqRead), ui(p.cmdReadSKF)})));
    auto* lower = row({registerPlace, stretch});
    lower->setStretch(0, 2);
    lower->setStretch(1, 3);
    return block(column({registers, lower, stretch}));
}

} // namespace vrk
