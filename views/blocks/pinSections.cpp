#include "panels/blocks/AddressPins.h"
#include "panels/blocks/ChannelBlock.h"
#include "panels/blocks/ShutdownPin.h"
#include "platform/qt/theme.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace vrk {

using namespace qt;

namespace {
constexpr int kButtons = 72;
constexpr int kPinLamp = 20;
} // namespace

Section& addShutdownPinSection(PageUi& page, ShutdownPin& block) {
    PanelUi& ui = page.ui();
    auto* edge = new LampWidget;
    edge->setRole(LampWidget::Role::Pin);
    edge->setSide(kPinLamp);
    edge->setName("P1.2");
    auto* level = quietText({});
    ui.watch(block.ChkShutDown2, [edge, level, &box = block.ChkShutDown2] {
        edge->setColour(box.checked() ? Colour::LightGreen : Colour::Black);
        level->setText(box.checked() ? "P1.2 HI" : "P1.2 LO");
    });
    Section& section =
        page.addSection("Shutdown pin", qt::block(row({ui(block.ChkShutDown2), stretch, edge, level})));
    const auto summary = [&box = block.ChkShutDown2] {
        return QString::fromStdString(box.caption()) + (box.checked() ? " HI" : " LO");
    };
    summarise(page, section, summary, summary, {&block.ChkShutDown2});
    return section;
}

qt::Item channelChoice(PageUi& page, ChannelBlock& block) {
    PanelUi& ui = page.ui();
    std::vector<std::vector<Item>> lines{{columnLabel("Taps")}, {{}}};
    std::vector<QWidget*> channels;
    bool figures = true;
    for (auto& option : block.OptChans) {
        auto* widget = ui(*option);
        figures = figures && option->caption().size() == 1;
        widget->setAccessibleName(figures ? QString::fromStdString(option->caption()) + " channels"
                                          : QString::fromStdString(option->caption()));
        channels.push_back(widget);
    }
    for (auto& option : block.OptTaps) {
        auto* widget = ui(*option);
        widget->setAccessibleName(QString::fromStdString(option->caption()) + " taps");
        lines[option->index() < 4 ? 0 : 1].emplace_back(widget);
    }
    if (figures)
        lines.insert(lines.begin(), {columnLabel("Channels"), channels[0], channels[1], channels[2]});
    QGridLayout* choices = grid(lines);
    choices->setVerticalSpacing(kUnit / 2);
    choices->setHorizontalSpacing(0);
    for (int column = 1; column <= 4; ++column)
        choices->setColumnStretch(column, 1);
    if (figures)
        return choices;
    // Captions in words take lines of their own.
    return rows({row({columnLabel("Channels"), channels[0], stretch}),
                 row({columnLabel({}), channels[1], stretch}), row({columnLabel({}), channels[2], stretch}),
                 choices});
}

qt::Item addressRows(PageUi& page, AddressPins& block, const QString& words) {
    PanelUi& ui = page.ui();
    std::vector<Item> pins{columnLabel("Pins")};
    for (auto& pin : block.chkI2CAdr)
        pins.emplace_back(ui(*pin));
    pins.emplace_back(stretch);
    auto* fromPins = byteField(page, block.txtCalcAddr);
    auto* address = byteField(page, block.txtDeviceAdr);
    address->setAccessibleName(words);
    auto* select =
        ui.frame(block.fraADDRSelect, {},
                 rows({row(pins), row({columnLabel("From pins", fromPins), fromPins, quietText("hex"),
                                       stretch, wideButton(ui(block.cmdCopyAdr), kButtons)})}));
    select->setTitled(false);
    return rows({select, row({columnLabel(words, address), address, quietText("hex"), stretch,
                              wideButton(ui(block.cmdSlave), kButtons)})});
}

} // namespace vrk
