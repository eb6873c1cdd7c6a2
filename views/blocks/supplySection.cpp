#include "panels/blocks/SupplyBlock.h"
#include "platform/qt/theme.h"
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

constexpr int kButtons = 98; ///< Update and Sample under one another
constexpr int kSwitchLamp = 20;
constexpr double kVoltsScale = 1.38;

LampWidget* switchLamp(PanelUi& ui, Lamp& lamp, const QString& name) {
    LampWidget* widget = ui.supplyLamp(lamp, name);
    widget->setSide(kSwitchLamp);
    return widget;
}

} // namespace

Section& addSupplySection(PageUi& page, SupplyBlock& block) {
    PanelUi& ui = page.ui();
    auto* volts = ui.value(block.lblVCCVolts, "00.000", kVoltsScale);
    volts->setAccessibleName("VCC measured");
    auto* level = ui(block.CboVCC, 6);
    level->setFixedWidth(dp(72));
    auto* user = ui(block.txtUserVCC, 3);
    user->setFixedWidth(dp(36));
    user->setAccessibleName("User code");
    auto* userCaption = ui(block.lblUserVCC);
    userCaption->setBuddy(user);
    makeQuiet(*userCaption);
    auto* code = ui.value(block.lblSPICode, "00");
    code->setAccessibleName("Code of the level");
    // Where the user gives the code himself, his field stands in the place of these words.
    auto* byLevel = quietText("set by the level");
    ui.watch(block.txtUserVCC, [byLevel, &block] { setShown(*byLevel, !block.txtUserVCC.visible()); });
    auto* offset = ui(block.txtADOffset, 4);
    auto* gain = ui(block.txtADGain, 3);
    offset->setFixedWidth(dp(44));
    gain->setFixedWidth(dp(36));
    const auto switches = [&](const char* name, Lamp& lamp, ControlArray<OptionButton>& options) {
        std::vector<Item> items{columnLabel(name), switchLamp(ui, lamp, QString::fromUtf8(name))};
        for (int index = 0; index < 2; ++index) {
            auto* option = ui(options[index]);
            option->setAccessibleName(QString::fromUtf8(name) + " " + option->text().remove('&').toLower());
            items.emplace_back(option);
        }
        items.emplace_back(stretch);
        return items;
    };
    std::vector<Item> minus = switches("V−", block.ShVM, block.OptVM);
    auto vcc = switches("VCC", block.ShpVCCon, block.OptVCC);
    minus.emplace_back(ui(block.ChkTrack));
    Section& section = page.addSection(
        "Supply", qt::block(rows({
                      tightRow(vcc),
                      tightRow(minus),
                      row({columnLabel("Level", level), level, quietText("V"), stretch,
                           wideButton(ui(block.cmdUpdateVCC), kButtons)}),
                      row({columnLabel("Measured"), volts, quietText("V"), stretch,
                           wideButton(ui(block.cmdReadVCC), kButtons)}),
                      row({columnLabel("Code"), code, quietText("hex"), stretch, userCaption, user, byLevel}),
                      tightRow({quietText("AD Calibration"), stretch, smallCaption("Offset", offset), offset,
                                quietText("V"), gap, smallCaption("Gain", gain), gain}),
                  })));
    section.setFoldsLast(true);
    const auto measured = [&block, &page]() -> QString {
        const auto& worth = block.lblVCCVolts.freshness();
        QString words = ageWords(*worth, page.panel().context().clock().now()).first;
        return words.replace("last read", "last measurement")
            .replace("not read", "not measured")
            .replace("read ", "measured ");
    };
    summarise(page, section,
              [&block] {
                  return block.ShpVCCon.colour() == Colour::Black
                             ? QString("VCC off")
                             : "VCC on, " + QString::fromStdString(block.lblVCCVolts.caption()) + " V";
              },
              measured, {&block.lblVCCVolts, &block.ShpVCCon});
    return section;
}

} // namespace vrk
