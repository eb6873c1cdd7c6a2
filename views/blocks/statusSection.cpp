#include "panels/blocks/StatusBlock.h"
#include "platform/qt/theme.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QGridLayout>
#include <QLabel>

namespace vrk {

using namespace qt;

Section& addStatusSection(PageUi& page, StatusBlock& block) {
    PanelUi& ui = page.ui();
    // In the order in which an exchange lights them; the index is that of the lamp's words.
    const std::vector<std::pair<Lamp*, int>> lamps = {{&block.ShpAttach, 0}, {&block.Shp_USB_Transfer, 5},
                                                      {&block.Shape1[1], 1}, {&block.Shape1[2], 2},
                                                      {&block.Shape1[4], 4}, {&block.Shape1[3], 3}};
    std::vector<std::vector<Item>> lines;
    std::vector<Item> small;
    for (const auto& [lamp, words] : lamps) {
        const QString name = QString::fromStdString(block.lblUSBChk[words].caption());
        if (lines.empty() || lines.back().size() == 2)
            lines.emplace_back();
        lines.back().emplace_back(row({ui(*lamp, name), ui(block.lblUSBChk[words]), stretch}));
        LampWidget* copy = ui.mirror(*lamp, LampWidget::Role::Status);
        copy->setName(name);
        copy->setSide(12);
        small.emplace_back(copy);
    }
    QGridLayout* all = grid(lines);
    all->setVerticalSpacing(kUnit + kUnit / 2);
    all->setColumnStretch(0, 1);
    all->setColumnStretch(1, 1);
    Section& section = page.addSection("Status", qt::block(all));
    showWhileFolded(section, qt::block(tightRow(small)));
    return section;
}

} // namespace vrk
