#include "platform/qt/theme.h"
#include "shell/ProductExec.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

namespace vrk {

using namespace qt;

void makeProductTablePage(PageUi& page, ProductExec& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Product table");
    auto* table = ui(p.tGrid);
    table->setAccessibleName("Parts");
    table->setFont(valueFont());
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->setMinimumSize(table->fontMetrics().averageCharWidth() * 120,
                          table->fontMetrics().lineSpacing() * 18);

    // What the row chosen will set, field by field, three fields a line.
    constexpr int kFieldsALine = 3;
    std::vector<std::vector<Item>> lines;
    for (int field = 0; field < ProductExec::kFields; ++field) {
        if (field % kFieldsALine == 0)
            lines.emplace_back();
        auto* name = ui(p.lblField[field]);
        makeQuiet(*name);
        auto* value = ui(p.lblDeviceSel[field]);
        value->setFont(valueFont());
        value->setMinimumWidth(value->fontMetrics().horizontalAdvance('0') * 24);
        lines.back().emplace_back(name);
        lines.back().emplace_back(value);
    }

    page.setContent(block(column({
        ui.frame(p.Frame1, {}, column({table})),
        group("Row chosen", grid(lines)),
        row({ui(p.cmdLoadParam), ui(p.cmdSaveParam), stretch, ui(p.cmdReturn)}),
    })));
    page.setFirstFocus(table);
}

} // namespace vrk
