#include "views/pages/scriptParts.h"

#include "platform/qt/keyboard.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "script/frmScriptOps.h"
#include "views/blocks/rows.h"
#include "views/pages/boxes.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPointer>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

QString count(long long number, const QString& noun) {
    return QString("%1 %2%3").arg(number).arg(noun, number == 1 ? "" : "s");
}

/// "003, 010, 011, ..."
QString rowList(const std::vector<int>& rows) {
    constexpr std::size_t kShown = 12;
    QStringList texts;
    for (std::size_t at = 0; at < std::min(kShown, rows.size()); ++at)
        texts += rowNumber(rows[at]);
    if (rows.size() > kShown)
        texts += "…";
    return texts.join(", ");
}

QString findingsSummary(const std::vector<ScriptFinding>& findings) {
    const auto errors = std::count_if(findings.begin(), findings.end(), [](const ScriptFinding& finding) {
        return finding.severity == ScriptFinding::Severity::Error;
    });
    const auto warnings = static_cast<long long>(findings.size()) - errors;
    QStringList parts;
    if (errors > 0)
        parts += count(errors, "error");
    if (warnings > 0)
        parts += count(warnings, "warning");
    return parts.isEmpty() ? QString("nothing found") : parts.join(", ");
}

/// What the check found, a line a finding; a click marks its row.
std::function<void()> addCheckSection(PageUi& page, frmScriptOps& p, const std::function<void(int)>& mark) {
    auto* list = new QListWidget;
    list->setObjectName("script.findings");
    list->setAccessibleName("Findings of the check");
    list->setFrameShape(QFrame::NoFrame);
    list->setWordWrap(true);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    list->viewport()->setAutoFillBackground(false);
    QObject::connect(list, &QListWidget::itemActivated, list,
                     [mark](const QListWidgetItem* item) { mark(item->data(Qt::UserRole).toInt()); });
    QObject::connect(list, &QListWidget::itemClicked, list,
                     [mark](const QListWidgetItem* item) { mark(item->data(Qt::UserRole).toInt()); });
    Section& section = page.addSection("Check", qt::block(rows({list})));
    section.setSummary(
        [&p] { return p.vbalGrid1.rows() < 2 ? QString("no script") : findingsSummary(p.findings()); });
    return [list, &section, &p] {
        list->clear();
        for (const ScriptFinding& finding : p.findings()) {
            const bool error = finding.severity == ScriptFinding::Severity::Error;
            auto* item = new QListWidgetItem(
                QString("%1, row %2: %3")
                    .arg(error ? "Error" : "Warning", rowNumber(finding.line), words(finding.text)));
            item->setData(Qt::UserRole, finding.line);
            list->addItem(item);
        }
        constexpr int kMostShown = 3;
        constexpr int kLinesEach = 3;
        const int lines = std::min(kMostShown, std::max(1, list->count()));
        list->setFixedHeight(lines * kLinesEach * list->fontMetrics().lineSpacing() + kUnit);
        setShown(*list, list->count() > 0);
        section.refresh();
    };
}

void addInterruptSection(PageUi& page, frmScriptOps& p) {
    PanelUi& ui = page.ui();
    std::vector<std::vector<Item>> lines;
    TextBox* const boxes[] = {&p.txtIstart,      &p.txtIend,         &p.txtIexec,    &p.txtIdetectStep,
                              &p.txtIEnableStep, &p.txtIDisableStep, &p.txtLastRead, &p.txtIDefault};
    for (TextBox* box : boxes) {
        if (lines.empty() || lines.back().size() == 4)
            lines.emplace_back();
        auto* field = ui(*box, 5);
        field->setAccessibleName(plainCaption(*box));
        lines.back().emplace_back(smallCaption(plainCaption(*box), field));
        lines.back().emplace_back(field);
    }
    auto* group =
        ui.frame(p.frameInterrupt, {},
                 rows({row({ui(p.chkISample), stretch, ui(p.cmdISample), ui(p.shpISample[0], "Sampled")}),
                       grid(lines)}));
    group->setTitled(false); // the section's heading says it
    page.addSection(p.frameInterrupt, "Interrupt Status", qt::block(rows({group})),
                    [&p] { return p.chkISample.checked() ? QString("sampling") : QString("off"); },
                    {&p.chkISample});
}

QString rehearsalWords(const Rehearsal& rehearsal) {
    QStringList lines;
    const auto line = [&lines](const char* what, const QString& value) {
        lines += QString(what) + ": " + value;
    };
    QStringList writes;
    for (const auto& [reg, number] : rehearsal.nonvolatileWrites)
        writes += QString("%1 × register %2").arg(number).arg(words(reg));
    line("Non-volatile writes", writes.isEmpty() ? "none" : writes.join(", "));
    if (!rehearsal.wouldFail.empty())
        line("Would fail", "row " + rowList(rehearsal.wouldFail));
    if (!rehearsal.neverPass.empty())
        line("Can never pass", "row " + rowList(rehearsal.neverPass));
    for (const std::string& message : rehearsal.messages)
        line("Would say", words(message));
    return lines.join('\n');
}

std::function<void()> addRehearsalSection(PageUi& page, frmScriptOps& p) {
    PanelUi& ui = page.ui();
    auto* told = ui(p.lblRehearsal);
    told->setWordWrap(true);
    auto* details = quietText({});
    details->setWordWrap(true);
    for (QLabel* label : {told, details})
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* rehearse = ui(p.cmdRehearse);
    rehearse->setToolTip("Runs the script on the simulated part first: nothing is sent to the board");
    Section& section =
        page.addSection("Rehearsal", qt::block(rows({row({rehearse, stretch}), told, details})));
    section.setSummary([&p] {
        return p.rehearsal() ? count(p.rehearsal()->totalWrites(), "non-volatile write") : QString("not yet");
    });
    return [details, &section, &p] {
        details->setText(p.rehearsal() ? rehearsalWords(*p.rehearsal()) : QString());
        setShown(*details, p.rehearsal().has_value());
        section.refresh();
    };
}

void addRecordSections(PageUi& page, frmScriptOps& p) {
    PanelUi& ui = page.ui();
    page.addSection(
        "Recorder",
        qt::block(rows({row({ui(p.cmdRecord), ui(p.cmdRecordStop), ui(p.cmdRecordSave), stretch})})),
        [&p] { return p.recording() ? QString("recording") : QString("off"); },
        {&p.cmdRecord, &p.cmdRecordStop});
    page.addSection(
        "Report",
        qt::block(rows({row({ui(p.cmdReport[0]), ui(p.cmdReport[1]), ui(p.cmdReport[2]), stretch})})));
}

void addSaveSection(PageUi& page, frmScriptOps& p) {
    PanelUi& ui = page.ui();
    auto* path = ui(p.txtFilePath, 20);
    path->setPlainText(true);
    path->setAccessibleName("File to write");
    path->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* title = quietText(captionText(p.frmDataRecord).replace("&&", "&"));
    title->setFont(textFont(kSmall));
    auto* told = ui(p.Label18);
    makeQuiet(*told);
    told->setFont(textFont(kSmall));
    auto* group = ui.frame(p.frmDataRecord, {},
                           rows({title, row({path, ui(p.cmdBrowse)}),
                                 row({ui(p.chkAppend), stretch, ui(p.cmdStartRec[0])}), told}));
    group->setTitled(false);
    page.addSection("Save", qt::block(rows({group})),
                    [&p] { return p.frmDataRecord.enabled() ? QString() : QString("when a run has ended"); },
                    {&p.frmDataRecord});
}

/// A question over the table with its two answers.
class QuestionBar final : public QWidget {
  public:
    QuestionBar(PageUi& page, frmScriptOps& panel)
        : panel_(panel), text_(new QLabel), agree_(new QPushButton), cancel_(new QPushButton("Cancel")) {
        setObjectName("script.question");
        text_->setWordWrap(true);
        text_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        agree_->setObjectName("script.agree");
        cancel_->setObjectName("script.cancel");
        for (QPushButton* button : {agree_, cancel_}) {
            button->setAutoDefault(true); // no field is asked about: Enter answers, as it does in a box
            keepWithoutMnemonic(*button);
        }
        auto* all = row({text_, agree_, cancel_});
        all->setStretch(0, 1);
        all->setContentsMargins(kUnit, kUnit / 2, kUnit, kUnit / 2);
        setLayout(all);
        QObject::connect(cancel_, &QPushButton::clicked, this, [this] { close(); });
        QObject::connect(agree_, &QPushButton::clicked, this, [this] {
            const auto goOn = std::exchange(goOn_, {});
            close();
            if (goOn)
                (void)panel_.events().deliver(goOn);
        });
        panel.ask = [bar = QPointer<QuestionBar>(this)](frmScriptOps::Question question,
                                                        std::function<void()> goOn) {
            if (bar != nullptr)
                bar->put(question, std::move(goOn));
            else
                goOn();
        };
        page.onAbort("Answer the question over the table with Cancel", [this] { close(); });
        // Of another script, or of another result, the answer is not known.
        page.ui().keep(panel.observeScript([this] { close(); }));
        hide();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), colours().supplyGround);
    }

  private:
    void put(frmScriptOps::Question question, std::function<void()> goOn) {
        goOn_ = std::move(goOn);
        text_->setText(words(panel_.questionText(question)));
        QPalette shown;
        shown.setColor(QPalette::WindowText, colours().supplyText);
        text_->setPalette(shown);
        agree_->setText(question == frmScriptOps::Question::SaveUnread ? "Save" : "Run");
        if (isHidden())
            before_ = keyboardHolder(*this);
        setShown(*this, true);
        cancel_->setFocus(Qt::OtherFocusReason);
    }
    void close() {
        goOn_ = {};
        const bool answered = isAncestorOf(window()->focusWidget());
        hide();
        if (answered && before_ != nullptr)
            giveKeyboard(*before_);
    }

    frmScriptOps& panel_;
    QLabel* text_;
    QPushButton* agree_;
    QPushButton* cancel_;
    QPointer<QWidget> before_;
    std::function<void()> goOn_;
};

} // namespace

QWidget* makeScriptQuestions(PageUi& page, frmScriptOps& panel) {
    return new QuestionBar(page, panel);
}

std::function<void()> addScriptSections(PageUi& page, frmScriptOps& p,
                                        const std::function<void(int row)>& mark) {
    const auto check = addCheckSection(page, p, mark);
    addInterruptSection(page, p);
    const auto rehearsal = addRehearsalSection(page, p);
    addRecordSections(page, p);
    addSaveSection(page, p);
    return [check, rehearsal] {
        check();
        rehearsal();
    };
}

} // namespace vrk
