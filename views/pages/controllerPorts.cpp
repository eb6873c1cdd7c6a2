#include "link/frmMainF340.h"
#include "platform/qt/theme.h"
#include "views/pages/controllerTabs.h"
#include "views/pages/consoleWords.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include <array>

namespace vrk {

using namespace qt;

namespace {

/// Motherboard ports, whose pins have names; the others belong to the controller alone.
constexpr int kNamedPorts = 3;

/// One line a pin: data beside its name, drive mode, analog.
QGridLayout* pinMap(PanelUi& ui, frmMainF340& p, int port) {
    std::vector<std::vector<Item>> lines{
        {row({heading(QString("Port %1").arg(port)), columnTitle("HI"), stretch}),
         centred(columnTitle("Push-pull")), centred(columnTitle("Analog"))}};
    for (int bit = 0; bit < 8; ++bit) {
        const QString pin = QString("P%1.%2").arg(port).arg(bit);
        auto* data = plainBox(ui, p.chkGPvalue(port)[bit], pin);
        lines.push_back({data, centred(bareBox(ui, p.chkOpenCollector(port)[bit], pin + " push-pull")),
                         centred(bareBox(ui, p.chkDIN(port)[bit], pin + " analog"))});
    }
    return dense(grid(lines), 0);
}

/// One line a register of the port: what was written, what the board says, and whether they agree.
QGridLayout* portRegisters(PanelUi& ui, frmMainF340& p, int port) {
    struct Register {
        const char* name;
        Label& written;
        Label& read;
        Lamp& lamp;
        Button& write;
        Button& readBack;
    };
    const int ports = frmMainF340::kPorts;
    const std::array<Register, 3> registers = {{
        {"Data", p.lblWrGPData[port], p.lblRdGPData[port], p.ShpGPIOStat[port + ports], p.cmdWrGPData[port],
         p.cmdRdGPData[port]},
        {"Mode", p.lblWrOC[port], p.lblRdOC[port], p.ShpGPIOStat[port], p.cmdWrOC[port], p.cmdRdOC[port]},
        {"Analog", p.lblWrGPAnalog[port], p.lblRdGPAnalog[port], p.ShpGPIOStat[port + 2 * ports],
         p.cmdWrGPAnalog[port], p.cmdRdGPAnalog[port]},
    }};
    std::vector<std::vector<Item>> lines{{{}, columnTitle("Written"), columnTitle("Read")}};
    for (const Register& r : registers) {
        const QString name = QString("P%1 %2").arg(port).arg(QString(r.name).toLower());
        auto* written = ui.value(r.written, "00");
        written->setAccessibleName(name + " written");
        auto* read = ui.value(r.read, "00");
        read->setAccessibleName(name + " read");
        auto* write = plainButton(ui, r.write);
        write->setToolTip("Write the " + name + " register");
        auto* again = plainButton(ui, r.readBack);
        again->setToolTip("Read the " + name + " register");
        lines.push_back({r.name, centred(written), centred(read), ui(r.lamp, name + ": read equals written"),
                         write, again, stretch});
    }
    return dense(grid(lines));
}

QWidget* portBlock(PanelUi& ui, frmMainF340& p, int port) {
    QGridLayout* pins = pinMap(ui, p, port);
    QGridLayout* registers = portRegisters(ui, p, port);
    QWidget* whole = port < kNamedPorts
                         ? block(column({pins, registers, stretch}))
                         : block(row({column({pins, stretch}), gap, column({registers, stretch})}));
    whole->setAccessibleName(QString("Port %1").arg(port));
    return whole;
}

/// What concerns all five ports, in one line over them.
QBoxLayout* allPorts(PanelUi& ui, frmMainF340& p) {
    auto* automatic = ui(p.chkAutoWriteRead);
    automatic->setToolTip("Each click on a pin writes its port and reads it back");
    auto* actions =
        row({automatic, ui(p.cmdWriteReadAll), ui(p.cmdSampleGP), ui(p.cmdResetGPIO), ui(p.cmdClearAnalog),
             gap, ui(p.chkWeakPullUpDisable), ui(p.chkWeakPullUpEnableOnRead)});
    auto* highImpedance = wrapped(ui(p.lblGP), 26);
    makeQuiet(*highImpedance);
    return row({actions, gap, highImpedance, stretch});
}

/// Rows `from` to `to` of the register table.
QGridLayout* sfrRows(PanelUi& ui, frmMainF340& p, int from, int to) {
    std::vector<std::vector<Item>> lines{{{}, columnTitle("To write"), columnTitle("As read")}};
    for (int index = from; index < to; ++index) {
        const QString name = plainCaption(p.lblPbuf[index]);
        auto* title = ui(p.lblPbuf[index]);
        title->setFont(valueFont());
        auto* write = entry(ui, p.txtPBuf[index], 4, name + " to write");
        auto* read = readBack(ui, p.txtPBufRd[index], 4, name + " as read");
        read->setToolTip("A click reads this register");
        lines.push_back({title, write, read, ui(p.ShpSKFRd[index], name + " read")});
    }
    return dense(grid(lines));
}

} // namespace

QWidget* makeGpioPage(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    auto* actions = allPorts(ui, p);
    auto* p0 = portBlock(ui, p, 0);
    auto* p1 = portBlock(ui, p, 1);
    auto* p2 = portBlock(ui, p, 2);
    auto* p3 = portBlock(ui, p, 3);
    auto* p4 = portBlock(ui, p, 4);
    return block(column({
        actions,
        gap,
        row({p0, gap, gap, p1, gap, gap, p2, stretch}),
        gap,
        row({p3, gap, gap, gap, p4, stretch}),
        stretch,
    }));
}

QWidget* makeSfrPage(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    constexpr int kHalf = frmMainF340::kSfrRows / 2;
    auto* left = sfrRows(ui, p, 0, kHalf);
    auto* rightHalf = sfrRows(ui, p, kHalf, frmMainF340::kSfrRows);
    auto* address = entry(ui, p.txtSFRAddress, 3, "Register address");
    auto* data = entry(ui, p.txtSFRWRData, 3, "Value to write");
    static constexpr std::array<const char*, 4> kReply = {"RID", "Error", "Error flag", "Data"};
    std::vector<std::vector<Item>> reply;
    for (auto& label : p.lblSFRBuf) {
        const char* name = kReply.at(static_cast<std::size_t>(label->index()));
        auto* value = ui.value(*label, "00");
        value->setAccessibleName(name);
        reply.push_back({name, value, stretch});
    }
    auto* single =
        group("SFR Case 18",
              column({
                  grid({{caption("Address", address), address, quietText("hex"), ui(p.cmdGetSDFValue)},
                        {caption("Value", data), data, quietText("hex"), ui(p.cmdSetSFR), stretch}}),
                  gap,
                  heading("Reply"),
                  dense(grid(reply)),
              }));
    auto* all = group("All registers",
                      column({row({ui(p.cmdReadSKF), stretch}), row({ui(p.chkWriteEqRead), stretch})}));
    auto* registers =
        group("Registers (hex)", row({column({left, stretch}), gap, gap, column({rightHalf, stretch})}));
    return block(
        row({registers, gap, separator(Qt::Vertical), gap, column({all, gap, single, stretch}), stretch}));
}

} // namespace vrk
