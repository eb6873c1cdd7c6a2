#include "platform/qt/keyboard.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "script/frmScriptOps.h"
#include "views/pages/RowReports.h"
#include "views/pages/pageMakers.h"
#include "views/pages/scriptParts.h"
#include "views/pages/scriptRows.h"
#include "views/workspace/Page.h"
#include "views/workspace/WireView.h"

#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QStackedWidget>

#include <memory>

namespace vrk {

using namespace qt;

namespace {

/// A button of the page's own: it works on the rows that are marked.
QPushButton* rowButton(const QString& text, const QString& name, const QString& tip) {
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setAutoDefault(false);
    button->setToolTip(tip);
    return button;
}

/// What the page says of the run, beside its name.
QString stateWords(const frmScriptOps& p) {
    const ScriptDebugger& debugger = p.debugger();
    if (p.recording())
        return "Recording";
    if (debugger.paused()) {
        const QString row = rowNumber(debugger.pausedAt());
        switch (debugger.reason()) {
        case ScriptDebugger::Reason::Breakpoint:
            return "Paused at breakpoint, row " + row;
        case ScriptDebugger::Reason::Step:
            return "Paused before row " + row;
        case ScriptDebugger::Reason::Fail:
            return "Paused behind failed row " + row;
        }
    }
    if (p.rowInProgress() > 0)
        return "Running row " + rowNumber(p.rowInProgress());
    return {};
}

/// The bytes of a row, for the dock.
WireExcerpt excerptOf(const frmScriptOps& p, const RowReports& reports, int row) {
    WireExcerpt excerpt;
    const RowResult* result = p.latest(row);
    excerpt.title = "Row " + rowNumber(row);
    if (result == nullptr)
        return excerpt;
    if (!p.results().passes.empty())
        excerpt.title += QString(", pass %1").arg(p.results().passes.back().pass);
    excerpt.failed = result->verdict >= RowVerdict::Fail;
    excerpt.expected = words(result->expected);
    excerpt.read = words(result->read);
    excerpt.note = result->why.empty() ? QString() : words(result->why);
    if (const int runs = p.rowRuns(row); runs > 1)
        excerpt.note = QString("run %1 times in this pass%2")
                           .arg(runs)
                           .arg(excerpt.note.isEmpty() ? QString() : "; " + excerpt.note);
    excerpt.reports = reports.of(row);
    return excerpt;
}

class ScriptPage final : public QObject {
  public:
    ScriptPage(PageUi& page, frmScriptOps& panel)
        : QObject(&page), page_(page), p_(panel), table_(new StepTable(page, panel)) {
        if (page.context().wire != nullptr)
            reports_ = std::make_unique<RowReports>(*page.context().wire, panel);
        LivePart counts = makeScriptCounts(page, panel);
        refreshCounts_ = std::move(counts.refresh);
        refreshSections_ = addScriptSections(page, panel, [this](int row) { markAndShow(row); });
        makeHead();
        auto* exec = page.ui().frame(panel.frmScriptExec, {}, column({counts.widget, buttonRow()}));
        exec->setTitled(false);
        auto* all = column({exec, makeScriptQuestions(page, panel), optionRow(), loadStatus(), table_});
        all->setStretch(4, 1);
        makeKeys();
        table_->onMarked = [this] {
            showMarked();
            showBytes();
        };
        table_->onRefreshed = [this] { refresh(); };
        page.ui().keep(panel.debugger().observe([this] { table_->refreshSoon(); }));
        page.ui().keep(panel.observeRows([this](int, bool) { table_->refreshSoon(); }));
        page.ui().keep(panel.observeScript([this] { scriptChanged(); }));
        page.setContent(block(all));
        page.setFirstFocus(table_);
        refreshSections_();
        refresh();
    }

  private:
    void makeHead() {
        auto* caption = page_.ui()(p_.lblCaption);
        makeQuiet(*caption);
        page_.setSubtitle(caption);
        state_ = new ToneLabel;
        state_->setObjectName("script.state");
        state_->setFont(textFont(1.0, true));
        page_.addHeadItem(state_);
        QMenu* menu = page_.menu("&File");
        QAction* open = page_.ui()(p_.mnuScript_Read);
        open->setParent(menu);
        menu->addAction(open);
        open_ = rowButton(plainCaption(p_.mnuScript_Read), "script.open", {});
        connect(open_, &QPushButton::clicked, this, [this] { (void)p_.mnuScript_Read.userClick(); });
        page_.ui().watch(p_.mnuScript_Read, [this] { open_->setEnabled(p_.mnuScript_Read.responsive()); });
    }

    QBoxLayout* buttonRow() {
        PanelUi& ui = page_.ui();
        // Run and Go are one button to the user: what stands goes on, what does not run begins.
        auto* run = ui(p_.cmdExecAll);
        auto* go = ui(p_.cmdGo);
        go_ = new QStackedWidget;
        go_->addWidget(block(row({run})));
        go_->addWidget(block(row({go})));
        go_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        for (QPushButton* button : {run, go})
            makeAccent(*button);
        run->setToolTip("F8");
        go->setToolTip("F8: goes on from where it stands");
        auto* step = ui(p_.cmdStep);
        step->setToolTip("F10: runs one row and stands again");
        fromHere_ =
            rowButton("Run from here", "script.fromHere", "Runs the main part from the marked row on");
        selection_ = rowButton("Run selection", "script.selection", "Runs the marked rows as a pass");
        retry_ = rowButton("Retry row", "script.retry", "Runs the marked row again; both results are kept");
        connect(fromHere_, &QPushButton::clicked, this,
                [this] { deliver([this, row = table_->marked()] { p_.userRunFromHere(row); }); });
        connect(selection_, &QPushButton::clicked, this, [this] {
            const std::vector<int> rows = table_->markedRows();
            if (!rows.empty())
                deliver(
                    [this, first = rows.front(), last = rows.back()] { p_.userRunSelection(first, last); });
        });
        connect(retry_, &QPushButton::clicked, this,
                [this] { deliver([this, row = table_->marked()] { p_.RetryRow(row); }); });
        return row(
            {go_, step, fromHere_, selection_, retry_, ui(p_.cmdRunContinuous), ui(p_.cmdAbort), stretch});
    }

    QBoxLayout* optionRow() {
        PanelUi& ui = page_.ui();
        auto* fails = new QCheckBox("Fails only");
        fails->setObjectName("script.failsOnly");
        fails->setToolTip("Shows the rows that failed, and no others");
        connect(fails, &QCheckBox::toggled, this, [this](bool on) { table_->setFailsOnly(on); });
        auto* address = ui(p_.txtI2CAdr, 3);
        auto* lastLoad = ui(p_.txtScriptLine1, 6);
        lastLoad->setFrame(false);
        lastLoad->setAccessibleName("Last Load");
        QPalette clear; // it tells, nobody types here
        clear.setColor(QPalette::Base, Qt::transparent);
        lastLoad->setPalette(clear);
        return row({open_, ui(p_.cmdReload2), gap, caption(plainCaption(p_.txtI2CAdr), address), address,
                    "hex", gap, ui(p_.chkAOF), ui(p_.chkPauseOnFail), fails, stretch,
                    quietText(plainCaption(p_.txtScriptLine1)), lastLoad});
    }

    QWidget* loadStatus() {
        auto* status = dynamic_cast<ToneLabel*>(page_.ui()(p_.lblLoadStatus));
        status->setTone(Tone::Failed);
        status->setWordWrap(true);
        // It takes no room while it says nothing.
        page_.ui().watch(p_.lblLoadStatus, [this, status] {
            status->setMaximumHeight(p_.lblLoadStatus.caption().empty() ? 0 : QWIDGETSIZE_MAX);
        });
        return status;
    }

    void makeKeys() {
        page_.setHelpPage("Script");
        page_.addKey(QKeySequence(Qt::Key_F8), "Run the script, or go on", [this] {
            if (p_.debugger().paused())
                (void)p_.cmdGo.userClick();
            else
                (void)p_.cmdExecAll.userClick();
        });
        page_.addKey(QKeySequence(Qt::Key_F10), "Run one row and stand again",
                     [this] { (void)p_.cmdStep.userClick(); });
        page_.addKey(QKeySequence(Qt::Key_F9), "Set or clear a breakpoint at the marked row", [this] {
            if (const int row = table_->marked(); row > 0)
                p_.debugger().toggleBreakpoint(row);
        });
    }

    template <class Act>
    void deliver(const Act& act) {
        if (!page_.released())
            (void)p_.events().deliver(act);
    }

    void markAndShow(int row) {
        table_->mark(row);
        table_->setFocus(Qt::OtherFocusReason);
    }

    void scriptChanged() {
        if (reports_ != nullptr && p_.results().passes.empty())
            reports_->forget();
        refreshSections_();
        table_->refreshSoon();
    }

    void showMarked() {
        const int row = table_->marked();
        const bool idle = p_.cmdExecAll.responsive();
        setEnabledWithKeyboard(*fromHere_, row > 0 && idle);
        setEnabledWithKeyboard(*selection_, row > 0 && idle);
        setEnabledWithKeyboard(*retry_, row > 0 && !p_.recording() && (idle || p_.debugger().paused()));
    }

    /// A failed row brings its bytes up; any other one only where the bytes are in sight already.
    void showBytes() {
        const int row = table_->marked();
        const RowResult* result = row > 0 ? p_.latest(row) : nullptr;
        if (result != nullptr && reports_ != nullptr && table_->markedRows().size() == 1)
            page_.showWire(excerptOf(p_, *reports_, row), result->verdict >= RowVerdict::Fail);
    }

    void refresh() {
        go_->setCurrentIndex(p_.debugger().paused() ? 1 : 0);
        if (const QString state = stateWords(p_); state != state_->text())
            state_->setText(state);
        showMarked();
        refreshCounts_();
    }

    PageUi& page_;
    frmScriptOps& p_;
    StepTable* table_;
    std::unique_ptr<RowReports> reports_;
    std::function<void()> refreshCounts_;
    std::function<void()> refreshSections_;
    ToneLabel* state_ = nullptr;
    QPushButton* open_ = nullptr;
    QStackedWidget* go_ = nullptr;
    QPushButton* fromHere_ = nullptr;
    QPushButton* selection_ = nullptr;
    QPushButton* retry_ = nullptr;
};

} // namespace

void makeScriptPage(PageUi& page, frmScriptOps& p) {
    new ScriptPage(page, p);
}

} // namespace vrk
