#include "platform/qt/theme.h"
#include "script/frmScriptOps.h"
#include "views/blocks/rows.h"
#include "views/pages/boxes.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTableView>

namespace vrk {

using namespace qt;

namespace {

/// A count in large digits under its name.
QWidget* digits(PageUi& page, TextBox& box, const QString& name) {
    auto* field = page.ui()(box, 4);
    field->setAccessibleName(name);
    field->setFont(valueFont(2.0));
    field->setAlignment(Qt::AlignRight);
    return new BoxFrame(column({quietText(name), field}), BoxFrame::Ground::Base);
}

void addInterruptSection(PageUi& page, frmScriptOps& p) {
    PanelUi& ui = page.ui();
    std::vector<std::vector<Item>> lines;
    const auto step = [&](TextBox& box, int characters) -> QWidget* {
        auto* field = ui(box, characters);
        field->setAccessibleName(plainCaption(box));
        return field;
    };
    std::vector<TextBox*> boxes = {&p.txtIstart,   &p.txtIend,        &p.txtIexec,        &p.txtIdetectStep,
                                   &p.txtLastRead, &p.txtIEnableStep, &p.txtIDisableStep, &p.txtIDefault};
    for (std::size_t at = 0; at < boxes.size(); at += 2) {
        lines.emplace_back();
        for (std::size_t k = at; k < at + 2 && k < boxes.size(); ++k) {
            auto* field = step(*boxes[k], 4);
            lines.back().emplace_back(smallCaption(plainCaption(*boxes[k]), field));
            lines.back().emplace_back(field);
        }
    }
    auto* group =
        ui.frame(p.frameInterrupt, {},
                 rows({row({ui(p.chkISample), stretch, ui(p.cmdISample), ui(p.shpISample[0], "sampling")}),
                       grid(lines)}));
    group->setTitled(false); // the section's heading says it
    page.addSection(p.frameInterrupt, "Interrupt Status", block(rows({group})));
}

void addSaveSection(PageUi& page, frmScriptOps& p) {
    PanelUi& ui = page.ui();
    auto* path = ui(p.txtFilePath, 16);
    path->setPlainText(true);
    path->setAccessibleName("File to write");
    auto* told = ui(p.Label18);
    makeQuiet(*told);
    auto* group = ui.frame(
        p.frmDataRecord, {},
        rows({row({path, ui(p.cmdBrowse)}), row({ui(p.chkAppend), stretch, ui(p.cmdStartRec[0])}), told}));
    group->setTitled(false);
    page.addSection("Save", block(rows({group})));
}

} // namespace

void makeScriptPage(PageUi& page, frmScriptOps& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Script");
    QMenu* menu = page.menu("&File");
    QAction* open = ui(p.mnuScript_Read);
    open->setParent(menu);
    menu->addAction(open);

    auto* table = ui(p.vbalGrid1);
    table->setAccessibleName("Steps");
    table->setFont(valueFont());
    table->setColumnHidden(0, true); // of the grid's own: it holds nothing
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    auto* address = ui(p.txtI2CAdr, 3);
    auto* lastLoad = ui(p.txtScriptLine1, 8);
    lastLoad->setAccessibleName("Last Load");
    auto* status = ui(p.lblLoadStatus);
    auto* rehearsal = ui(p.lblRehearsal);
    makeQuiet(*rehearsal);
    addInterruptSection(page, p);
    page.addSection("Rehearsal", block(rows({row({ui(p.cmdRehearse), stretch}), rehearsal})));
    addSaveSection(page, p);

    auto* exec = ui.frame(
        p.frmScriptExec, {},
        column({row({digits(page, p.txtRdPass, "Passed"), digits(page, p.txtRdFails, "Failed"),
                     digits(page, p.txttotReads, "Expected reads"), digits(page, p.txtRunning, "Row"),
                     digits(page, p.txtTotLines, "Lines"), digits(page, p.txtLoopCount, "Loops")}),
                row({ui(p.cmdExecAll), ui(p.cmdGo), ui(p.cmdStep), ui(p.cmdRunContinuous), ui(p.cmdAbort),
                     ui(p.chkAOF), ui(p.chkPauseOnFail), stretch})}));
    exec->setTitled(false);
    auto* all = column({exec,
                        row({ui(p.cmdReload2), field(plainCaption(p.txtI2CAdr), address, "hex"), stretch,
                             quietText("Last Load"), lastLoad}),
                        status, table});
    all->setStretch(3, 1);
    auto* caption = ui(p.lblCaption);
    makeQuiet(*caption);
    page.setSubtitle(caption);
    page.setContent(block(all));
    page.setFirstFocus(table);
}

} // namespace vrk
