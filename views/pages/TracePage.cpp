#include "platform/qt/theme.h"
#include "shell/Doco.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

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

/// Stands in the middle of a trace without a line, and says how lines come.
void sayWhenEmpty(PanelUi& ui, Doco& p, LogView& log) {
    auto* words = quietText({});
    words->setObjectName("trace.empty");
    words->setAlignment(Qt::AlignCenter);
    words->setWordWrap(true);
    words->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* over = new QVBoxLayout(log.viewport());
    over->addWidget(words);
    const auto show = [words, &p] {
        words->setText(p.ChkTrace[2].checked()
                           ? "Trace is on; nothing has happened yet."
                           : "The trace is empty. Switch on Trace to record what the link does, and Detailed "
                             "for every register access.");
        setShown(*words, p.rtxt1.size() == 0);
    };
    ui.watch(p.rtxt1, show);
    ui.watch(p.ChkTrace[2], show);
}

/// Levels that few need, and the file; Save… unfolds them.
QWidget* saveRows(PanelUi& ui, Doco& p) {
    auto* path = ui(p.txtFilePath, 24);
    path->setPlainText(true);
    path->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    path->setAccessibleName("File");
    QWidget* rows = block(column({
        row({caption("File", path), path, ui(p.cmdBrowse), ui(p.chkAppend), ui(p.cmdStartRec[0])}),
        row({"Levels", ui(p.ChkBasIO), ui(p.ChkVerbose), ui(p.ChkTrace[1]), ui(p.ChkTrace[0]), stretch}),
    }));
    rows->setObjectName("save.rows");
    rows->setProperty("folded", true);
    rows->hide();
    return rows;
}

} // namespace

void makeTracePage(PageUi& page, Doco& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Trace");
    auto* log = ui(p.rtxt1);
    log->setAccessibleName("Trace");
    log->setMinimumSize(log->fontMetrics().averageCharWidth() * 40, log->fontMetrics().lineSpacing() * 3);
    log->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    sayWhenEmpty(ui, p, *log);

    QWidget* rows = saveRows(ui, p);
    auto* save = new QPushButton("Save…");
    save->setObjectName("trace.save");
    save->setAccessibleName("Save the trace");
    save->setAutoDefault(false);
    save->setCheckable(true);
    QObject::connect(save, &QPushButton::toggled, rows, [rows, &ui, &p](bool shown) {
        setShown(*rows, shown);
        if (Binding* path = shown ? ui.find(p.txtFilePath) : nullptr)
            qobject_cast<QWidget*>(&path->target())->setFocus(Qt::OtherFocusReason);
    });
    QWidget* bar = findBar(page, *log);
    auto* find = new QPushButton("Find");
    find->setObjectName("trace.find");
    find->setAutoDefault(false);
    find->setToolTip("Ctrl+F");
    QObject::connect(find, &QPushButton::clicked, bar, [bar] {
        bar->show();
        bar->findChild<QWidget*>("find")->setFocus(Qt::OtherFocusReason);
    });
    auto* left = new QWidget; // the dock's row is wider than its items
    left->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    page.addHeadItem(left);
    for (QWidget* item :
         std::initializer_list<QWidget*>{ui(p.ChkTrace[2]), ui(p.chkTRDetail), find, ui(p.cndTclear), save}) {
        item->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        page.addHeadItem(item);
    }

    auto* content = column({log, bar, rows});
    content->setStretch(0, 1);
    page.setContent(block(content));
    page.setFirstFocus(log);
}

} // namespace vrk
