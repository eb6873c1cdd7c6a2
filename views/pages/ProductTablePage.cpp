#include "platform/qt/theme.h"
#include "shell/ProductExec.h"
#include "views/pages/boxes.h"
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
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setMinimumSize(table->fontMetrics().averageCharWidth() * 60,
                          table->fontMetrics().lineSpacing() * 6);

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
        value->setMinimumWidth(value->fontMetrics().horizontalAdvance('0') * 14);
        lines.back().emplace_back(name);
        lines.back().emplace_back(value);
    }

    auto* goBack = ui(p.cmdReturn);
    makeAccent(*goBack);
    auto* why = quietText("Choose a row first: Return takes it to the panel");
    why->setObjectName("return.why");
    ui.watch(p.cmdReturn, [why, goBack, &p] {
        const bool refused = !p.cmdReturn.enabled();
        setShown(*why, refused);
        goBack->setToolTip(refused ? why->text() : QString());
    });
    auto* cancel = new QPushButton("Cancel");
    cancel->setObjectName("product.cancel");
    cancel->setAutoDefault(false);
    cancel->setToolTip("Returns without a choice");
    QObject::connect(cancel, &QPushButton::clicked, &page, [&page] { (void)page.slot().userClose(); });
    page.onWrite("Return with the row chosen", [goBack] { goBack->click(); });
    page.onAbort("Return without a choice", [cancel] { cancel->click(); });

    auto* all = column({
        ui.frame(p.Frame1, {}, column({table})),
        box("Row chosen", grid(lines), BoxFrame::Ground::Base, why),
    });
    // In the head, so that they are in sight however little room there is.
    for (QWidget* button :
         std::initializer_list<QWidget*>{ui(p.cmdLoadParam), ui(p.cmdSaveParam), goBack, cancel})
        page.addHeadItem(button);
    all->setStretch(0, 1);
    page.setContent(block(all));
    page.setFirstFocus(table);
}

} // namespace vrk
