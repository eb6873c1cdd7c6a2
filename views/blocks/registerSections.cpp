#include "panels/blocks/ControlRegister.h"
#include "platform/qt/theme.h"
#include "views/blocks/FieldRows.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace vrk {

using namespace qt;

namespace {

constexpr int kButtons = 72;

QString text(const TextBox& box) {
    return QString::fromStdString(box.text());
}

/// "To write [C0] hex [Write] o": \param name of the register, for those who cannot see where it stands.
QBoxLayout* byteLine(PageUi& page, const char* words, QWidget* value, const QString& name, Button& button,
                     Lamp& lamp) {
    auto* widget = page.ui()(button);
    value->setAccessibleName(name + ", " + QString(words).toLower());
    widget->setAccessibleName(QString(words == std::string("As read") ? "Read " : "Write ") + name);
    return row({columnLabel(words), value, quietText("hex"), stretch, wideButton(widget, kButtons),
                page.ui()(lamp, QString::fromStdString(lamp.caption()))});
}

/// The fields of the byte by name, where the panel says of which part it is.
QWidget* fieldsOf(PageUi& page, const RegisterAddress& at, TextBox& toWrite, Control& asRead,
                  std::function<std::string()> readText) {
    if (at.product == nullptr)
        return new QWidget;
    return new FieldRows(page, {*at.product, *at.address, toWrite, asRead, std::move(readText), at.read});
}

/// "Commands [C8] write [B8] read", where a read has a command of its own.
QBoxLayout* commandLine(PageUi& page, const RegisterAddress& at, QWidget* write, const QString& name) {
    auto* read = byteField(page, *at.read);
    write->setAccessibleName(name + ", command to write");
    read->setAccessibleName(name + ", command to read");
    return row({columnLabel("Commands", write), write, quietText("write"), read, quietText("read"), stretch});
}

GroupWidget* plainFrame(PageUi& page, Frame& frame, QLayout* content) {
    GroupWidget* widget = page.ui().frame(frame, {}, content);
    widget->setTitled(false); // the section's heading says it
    return widget;
}

} // namespace

Section& addControlRegisterSection(PageUi& page, ControlRegister& block, const RegisterAddress& at) {
    PanelUi& ui = page.ui();
    auto* address = byteField(page, *at.address);
    address->setAccessibleName("Control register's address");
    auto* toWrite = static_cast<QLineEdit*>(byteField(page, block.txtACR[0]));
    QLineEdit* asRead = readByte(page, block.txtACR[1]);
    tintHexDifference(page, block.txtACR[0], *toWrite, block.txtACR[1],
                      [&block] { return block.txtACR[1].text(); });
    auto* warning = ui(block.lblShutDown);
    warning->setFont(textFont(1.0, true));
    auto* shutdown = plainFrame(page, block.FrmShutdown, row({ui(block.chkShutdown)}));
    std::vector<Item> lines;
    if (at.read != nullptr) {
        lines.emplace_back(commandLine(page, at, address, "Control register"));
    } else {
        QLabel* words = at.caption != nullptr ? ui(*at.caption) : quietText("Register");
        words->setMinimumWidth(dp(69));
        words->setBuddy(address);
        makeQuiet(*words);
        lines.emplace_back(row({words, address, quietText("hex"), stretch, shutdown}));
    }
    lines.emplace_back(
        byteLine(page, "To write", toWrite, "control register", block.cmdACRWrite, block.Shape2[0]));
    lines.emplace_back(
        byteLine(page, "As read", asRead, "control register", block.cmdACRRead, block.Shape2[1]));
    lines.emplace_back(
        fieldsOf(page, at, block.txtACR[0], block.txtACR[1], [&block] { return block.txtACR[1].text(); }));
    lines.emplace_back(row({ui(block.Option1[0]), ui(block.Option1[1]), stretch}));
    if (at.read != nullptr)
        lines.emplace_back(row({shutdown, stretch}));
    lines.emplace_back(warning);
    Section& section = page.addSection(block.SSFrame2, "Control register",
                                       qt::block(rows({plainFrame(page, block.SSFrame2, rows(lines))})));
    const auto summary = [&block, at] {
        return text(*at.address) + " hex, to write " + text(block.txtACR[0]);
    };
    summarise(page, section, summary, summary, {at.address, &block.txtACR[0]});
    return section;
}

Section& addGeneralRegisterSection(PageUi& page, ControlRegister& block, const RegisterAddress& at) {
    PanelUi& ui = page.ui();
    auto* address = byteField(page, *at.address);
    address->setAccessibleName("General purpose register's address");
    auto* toWrite = static_cast<QLineEdit*>(byteField(page, block.txtGPWrite));
    auto* asRead = ui.value(block.lblGPRead, "00");
    asRead->setFixedWidth(dp(36));
    asRead->setAlignment(Qt::AlignCenter);
    tintHexDifference(page, block.txtGPWrite, *toWrite, block.lblGPRead,
                      [&block] { return block.lblGPRead.caption(); });
    auto* name = ui(block.lblGDRs);
    keepWhole(page, block.lblGDRs, *name); // a table's words for it may be wider than the inspector
    makeQuiet(*name);
    auto* first = at.read != nullptr
                      ? row({commandLine(page, at, address, "General register"), name})
                      : row({columnLabel("Register", address), address, quietText("hex"), name});
    if (at.read == nullptr)
        first->setStretch(3, 1);
    QBoxLayout* all = rows(
        {first,
         byteLine(page, "To write", toWrite, "general purpose register", block.cmdWriteGP, block.Shape2[2]),
         byteLine(page, "As read", asRead, "general purpose register", block.cmdGPRead, block.Shape2[3]),
         fieldsOf(page, at, block.txtGPWrite, block.lblGPRead,
                  [&block] { return block.lblGPRead.caption(); })});
    Section& section =
        page.addSection(block.frmRegisterWrite, QString::fromStdString(block.frmRegisterWrite.caption()),
                        qt::block(rows({plainFrame(page, block.frmRegisterWrite, all)})));
    const auto summary = [&block, at] {
        return at.read != nullptr ? text(*at.address) + " hex, to write " + text(block.txtGPWrite)
                                  : QString::fromStdString(block.lblGDRs.caption());
    };
    summarise(page, section, summary, summary, {&block.lblGDRs, at.address, &block.txtGPWrite});
    return section;
}

} // namespace vrk
