#include "panels/instruction/Frm3310.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "shell/Bench.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vrk {

using namespace qt;

namespace {

constexpr double kDigits = 2.3;
constexpr int kButton = 72;
constexpr int kTransferButton = 124;

/// One register a row: what was read, what is to be written, and the transfers between it and the wiper.
void addRegister(PageUi& page, Frm3310& p, int index, QGridLayout& grid) {
    PanelUi& ui = page.ui();
    const QString name = words(p.CMDq331X_Read[index].caption());
    const int row = index + 1;
    int column = 0;
    const auto put = [&](QWidget* widget) { grid.addWidget(widget, row, column++, Qt::AlignVCenter); };
    auto* read = ui(p.CMDq331X_Read[index]);
    read->setAccessibleName("Read " + name);
    auto* value = ui.value(p.lblRdq331x[index], "000", kDigits);
    value->setAccessibleName(name + ", as read");
    auto* age = ui.age(p.lblRdq331x[index]);
    age->setMinimumWidth(dp(170));
    auto* field = ui(p.txtWrQ3319[index], 4);
    field->setFixedWidth(dp(52));
    field->setAlignment(Qt::AlignCenter);
    field->setAccessibleName(name + ", to write");
    tintHexDifference(page, p.txtWrQ3319[index], *field, p.lblRdq331x[index],
                      [&p, index] { return p.lblRdq331x[index].caption(); });
    auto* write = ui(p.CMDq331X_Write[index]);
    write->setAccessibleName("Write " + name);
    put(wideButton(read, kButton));
    put(value);
    put(quietText("hex"));
    put(age);
    put(field);
    put(quietText("hex"));
    put(wideButton(write, kButton));
    if (index == 0)
        return;
    column++;
    put(wideButton(ui(p.cmdQ331xDatatoWiper[index - 1]), kTransferButton));
    put(wideButton(ui(p.cmdQ331xWipertoData[index - 1]), kTransferButton));
}

} // namespace

void makeSingleWiperPage(PageUi& page, Frm3310& p) {
    page.setHelpPage("Single-wiper panel");
    PanelUi& ui = page.ui();
    if (frmVRK_SPI1* beside = page.context().bench.frmVRK_SPI1.loadedPanel()) {
        addSupplySection(page, *beside);
        addStoreSection(page, *beside);
    }
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(kUnit);
    grid->setVerticalSpacing(kUnit);
    const auto head = [&](Label& label, int column, int span) {
        QLabel* words = ui(label);
        makeQuiet(*words);
        grid->addWidget(words, 0, column, 1, span);
    };
    head(p.Label13[1], 0, 4);
    head(p.Label13[0], 4, 3);
    head(p.Label12, 8, 2);
    grid->setColumnMinimumWidth(7, dp(16));
    grid->setColumnStretch(10, 1);
    for (int index = 0; index < Frm3310::kRegisters; ++index)
        addRegister(page, p, index, *grid);
    page.onRead("Read the wiper", [&p] { (void)p.CMDq331X_Read[0].userClick(); });
    page.onWrite("Write the wiper", [&p] { (void)p.CMDq331X_Write[0].userClick(); });
    auto* frame = ui.frame(p.frq331x, {}, grid);
    page.setContent(qt::block(column({frame, stretch})));
    page.setFirstFocus(qobject_cast<QWidget*>(&ui.find(p.txtWrQ3319[0])->target()));
}

} // namespace vrk
