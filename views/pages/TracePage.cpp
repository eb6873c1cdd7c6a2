#include "platform/qt/theme.h"
#include "shell/Doco.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vrk {

using namespace qt;

namespace {

/// The line that Ctrl+F opens under the log.
QWidget* findBar(PageUi& page, LogView& log) {
    auto* text = new QLineEdit;
    text->setObjectName("find");
    text->setAccessibleName("Find");
    auto* outcome = quietText({});
    outcome->setObjectName("find.outcome");
    auto* before = new QPushButton("Previous");
    auto* next = new QPushButton("Next");
    auto* close = new QPushButton("Close");
    QWidget* bar = block(row({caption("Find", text), text, before, next, close, outcome, stretch}));
    const auto look = [text, outcome, &log](bool forward) {
        outcome->setText(text->text().isEmpty() || log.find(text->text(), forward) ? "" : "Not in the trace");
    };
    QObject::connect(text, &QLineEdit::returnPressed, bar, [look] { look(true); });
    QObject::connect(next, &QPushButton::clicked, bar, [look] { look(true); });
    QObject::connect(before, &QPushButton::clicked, bar, [look] { look(false); });
    QObject::connect(close, &QPushButton::clicked, bar, [bar, &log] {
        bar->hide();
        log.setFocus();
    });
    bar->hide();
    const auto open = [bar, text] {
        bar->show();
        text->setFocus(Qt::ShortcutFocusReason);
        text->selectAll();
    };
    page.addKey(QKeySequence::Find, "Find in the trace", open);
    page.addKey(QKeySequence(Qt::Key_F3), "Find the next place", [look] { look(true); });
    page.addKey(QKeySequence(Qt::SHIFT | Qt::Key_F3), "Find the place before", [look] { look(false); });
    page.onAbort("Close the find line", [close] { close->click(); });
    return bar;
}

} // namespace

void makeTracePage(PageUi& page, Doco& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Trace");
    auto* log = ui(p.rtxt1);
    log->setAccessibleName("Trace");
    log->setMinimumSize(log->fontMetrics().averageCharWidth() * 72, log->fontMetrics().lineSpacing() * 24);
    log->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    auto* path = ui(p.txtFilePath, 40);
    path->setPlainText(true);
    path->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    path->setAccessibleName("File");

    auto* options =
        group("Levels", column({ui(p.ChkTrace[2]), ui(p.chkTRDetail), ui(p.ChkBasIO), ui(p.ChkVerbose),
                                ui(p.ChkTrace[1]), ui(p.ChkTrace[0]), gap, ui(p.cndTclear), stretch}));
    auto* content = column({
        row({log, gap, options}),
        findBar(page, *log),
        row({caption("File", path), path, ui(p.cmdBrowse), ui(p.chkAppend), ui(p.cmdStartRec[0])}),
    });
    content->setStretch(0, 1);
    page.setContent(block(content));
    page.setFirstFocus(log);
}

} // namespace vrk
