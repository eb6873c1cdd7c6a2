#include "panels/discrete/UPDN_Runin.h"
#include "platform/qt/logFailures.h"
#include "platform/qt/theme.h"
#include "platform/runtime/text.h"
#include "views/blocks/pinLines.h"
#include "views/blocks/rows.h"
#include "views/pages/boxes.h"
#include "views/pages/consoleWords.h"
#include "views/pages/pageMakers.h"
#include "views/pages/plainPage.h"
#include "views/pages/runInPicture.h"
#include "views/plot/Plot.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include <array>
#include <memory>

namespace vrk {

using namespace qt;

namespace {

constexpr double kDigits = 38.0 / 13;
constexpr int kRowHeight = 25;

/// One figure of the run, to be read from a metre away. Red and with a sign once it tells a failure.
class FigureBox final : public QWidget {
  public:
    /// \param words under the figure
    FigureBox(const QString& title, QLabel* value, QWidget* words) {
        setObjectName("figure." + title);
        setAccessibleName(title);
        title_->setText(title);
        title_->setTone(Tone::Quiet);
        lamp_->setColour(Colour::LightRed);
        lamp_->hide();
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        value->setAccessibleName(title);
        auto* all = tightColumn({row({lamp_, title_, stretch}), right(value), right(words)});
        all->setContentsMargins(12, kUnit - 2, 12, kUnit - 2);
        setLayout(all);
    }
    void setFailed(bool failed) {
        failed_ = failed;
        setShown(*lamp_, failed);
        title_->setTone(failed ? Tone::Failed : Tone::Quiet);
        update();
    }
    bool failed() const { return failed_; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(failed_ ? toneColour(Tone::Failed) : palette().color(QPalette::Mid));
        painter.setBrush(failed_ ? colours().failureGround : palette().color(QPalette::Base));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    }

  private:
    LampWidget* lamp_ = new LampWidget;
    ToneLabel* title_ = new ToneLabel;
    bool failed_ = false;
};

QLabel* smallText(const QString& text) {
    auto* words = quietText(text);
    words->setFont(textFont(kSmall));
    return words;
}

QWidget* figures(PageUi& page, UPDN_Runin& p) {
    PanelUi& ui = page.ui();
    auto* end = ui.value(p.lblEndStep, "0000000", kSmall);
    end->setAccessibleName("Step at which the run ends");
    auto* steps = new FigureBox("Steps done", ui.value(p.lblRUnCount[0], "0000000", kDigits),
                                block(tightRow({smallText("of"), end, smallText("the true end")})));
    auto* fails =
        new FigureBox("Fails", ui.value(p.lblRUnCount[1], "000000", kDigits), smallText("outside the limit"));
    auto* elapsed = new FigureBox("Elapsed", ui.value(p.lblElapsed, "000:00:00", kDigits),
                                  smallText("hours:minutes:seconds"));
    auto* left =
        new FigureBox("Left", ui.value(p.lblTimeLeft, "00:00:00", kDigits), smallText("by the last rounds"));
    auto* position =
        new FigureBox("Position", ui.value(p.lblPosition, "0000", kDigits), smallText("tally of steps"));
    ui.watch(p.lblRUnCount[1], [fails, &p] {
        fails->setFailed(isNumeric(p.lblRUnCount[1].caption()) && decimalInt(p.lblRUnCount[1].caption()) > 0);
    });
    QWidget* abort = largeButton(ui(p.cmdAbortRun), 56);
    auto* run = ui(p.cmdRunInitial);
    run->setFixedHeight(dp(32));
    makeAccent(*run);
    auto* buttons = block(tightColumn({abort, run}));
    buttons->setMinimumWidth(dp(150));
    auto* all = row({steps, fails, elapsed, left, position, buttons});
    const std::array<int, 6> shares = {22, 16, 24, 22, 13, 20};
    for (std::size_t at = 0; at < shares.size(); ++at)
        all->setStretch(static_cast<int>(at), shares.at(at));
    return block(all);
}

/// Fills the picture from what a run tells, also of its steps before an interruption.
void followStages(PageUi& page, UPDN_Runin& p, const std::shared_ptr<RunInPicture>& picture) {
    PanelUi& ui = page.ui();
    const auto add = [picture](const RunInStage& stage) {
        if (stage.loop > 0)
            picture->add(stage.loop, stage.error, stage.verdict == RunInVerdict::Fail);
    };
    ui.keep(p.observeBegun(
        [&p, picture](const RunInSettings&) { picture->begin(decimalInt(p.lblEndStep.caption())); }));
    ui.keep(p.observeRange([picture](const RunInRange& range) { picture->setLimit(range.limit); }));
    ui.keep(p.observeEarlier([picture, add](const RunInStage& stage, bool resumed) {
        if (resumed)
            picture->addResumed(stage.loop);
        add(stage);
    }));
    ui.keep(p.observeStages(add));
    ui.keep(p.observeEvents([&p, picture](RunInEvent what, const std::string&) {
        if (what == RunInEvent::Resumed)
            picture->addResumed(decimalInt(p.lblRUnCount[0].caption()) + 1);
    }));
}

/// A run that can be gone on with, while there is one.
QWidget* unfinishedBar(PageUi& page, UPDN_Runin& p) {
    PanelUi& ui = page.ui();
    QLabel* about = elidedText({}); // its description may be of any length
    about->setAccessibleName("Unfinished run");
    ui.adopt(bind(p.lblUnfinished, *about));
    auto* title = heading(QString::fromStdString(p.FrmUnfinished.caption()));
    auto* content = row({title, about, ui(p.cmdResumeRun), ui(p.cmdNewRun), ui(p.cmdShowRun)});
    content->setStretch(1, 1);
    auto* bar = ui.frame(p.FrmUnfinished, {}, content);
    bar->setTitled(false); // a line of its own would push the end of the page off a small screen
    return bar;
}

QWidget* stageTable(PageUi& page, UPDN_Runin& p, QLabel* progress) {
    PanelUi& ui = page.ui();
    auto* lines = new QGridLayout;
    lines->setContentsMargins(kUnit, 2, kUnit, 2);
    lines->setHorizontalSpacing(kUnit);
    lines->setVerticalSpacing(0);
    static constexpr std::array<const char*, 7> kHeads = {
        "", "Stimulus", "Steps", "Position Tally", "Calculated  Volts", "Measured  Volts", "Error Volts"};
    for (int column = 0; column < static_cast<int>(kHeads.size()); ++column) {
        auto* head = columnTitle(kHeads.at(static_cast<std::size_t>(column)));
        if (column > 1)
            head->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        lines->addWidget(head, 0, column);
    }
    for (int stage = 0; stage < UPDN_Runin::kStages; ++stage) {
        const QString which = QString("stage %1").arg(stage);
        auto* lamp = ui(p.Shp_Test_Status[stage], "Verdict of " + which);
        lamp->setRole(LampWidget::Role::Stage);
        auto* count = entry(ui, p.txtInitialIncr[stage], 5, "Steps of " + which);
        auto* name = ui(p.lblInitialSet[stage]);
        name->setBuddy(count); // and "&&" is one "&"
        keepWithoutMnemonic(*name);
        auto* tally = readBack(ui, p.txtWiperLoc[stage], 6, "Position tally of " + which);
        auto* calculated = readBack(ui, p.txtWiperVolts[stage], 8, "Calculated volts of " + which);
        for (KeyLineEdit* field : {count, tally, calculated})
            field->setAlignment(Qt::AlignRight);
        for (KeyLineEdit* field : {tally, calculated})
            field->setFocusPolicy(Qt::ClickFocus); // the run fills them: not on the keyboard's way
        auto* measured = ui.value(p.lvlWipV[stage], "00.00000");
        measured->setAccessibleName("Measured volts of " + which);
        auto* error = ui.value(p.lvlWipError[stage], "-00.0000");
        error->setAccessibleName("Error volts of " + which);
        for (ValueLabel* value : {measured, error})
            value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        lines->setRowMinimumHeight(stage + 1, dp(kRowHeight));
        int column = 0;
        for (QWidget* each :
             std::initializer_list<QWidget*>{lamp, name, count, tally, calculated, measured, error}) {
            const bool number = column > 1;
            lines->addWidget(each, stage + 1, column,
                             Qt::Alignment(number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
            ++column;
        }
        Lamp& status = p.Shp_Test_Status[stage];
        ui.watch(status, [name, error, progress, stage, &status] {
            const bool now = status.colour() == Colour::LightBlue;
            QFont font = name->font();
            font.setBold(now);
            name->setFont(font);
            error->setTone(status.colour() == Colour::LightRed ? Tone::Failed : Tone::Plain);
            if (now)
                progress->setText(
                    QString("row %1 of %2 in progress").arg(stage + 1).arg(UPDN_Runin::kStages));
        });
    }
    lines->setColumnStretch(1, 1);
    auto* framed = new BoxFrame(lines, BoxFrame::Ground::Base);
    lines->setContentsMargins(kUnit, 4, kUnit, 4);
    framed->setAccessibleName("Stages");
    return framed;
}

QWidget* settingsBox(PageUi& page, UPDN_Runin& p) {
    PanelUi& ui = page.ui();
    const auto count = [&ui](TextBox& box, int characters) {
        auto* field = ui(box, characters);
        field->setAlignment(Qt::AlignRight);
        return field;
    };
    auto* quantity = count(p.txtTestQty, 8);
    auto* log = count(p.txtLogSteps, 6);
    auto* positions = count(p.txtWipPositions, 6);
    auto* tolerance = count(p.txtLimitDiv, 5);
    auto* id = ui(p.txtRunInID, 24);
    id->setPlainText(true);
    id->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    const auto value = [&ui](Label& label, const char* widest, const char* name) {
        auto* shown = ui.value(label, widest);
        shown->setAccessibleName(name);
        return shown;
    };
    auto* entries = tightColumn({
        row({captionOf(p.txtTestQty, quantity), quantity, stretch, captionOf(p.txtLogSteps, log), log}),
        row({captionOf(p.txtWipPositions, positions), positions, stretch, captionOf(p.txtLimitDiv, tolerance),
             tolerance, quietText("of one step")}),
        row({ui(p.ChkLogAll), ui(p.ChkFast), ui(p.chkJournal), stretch}),
        row({caption("Test", id), id}),
    });
    auto* group = ui.frame(p.Frame2, {}, entries);
    auto* results = tightColumn({
        row({"Max V", value(p.lblWIPRange[0], "00.00000", "Max V"), "Min V",
             value(p.lblWIPRange[1], "00.00000", "Min V"), stretch}),
        row({"Calc Volts Per Step", value(p.lblVoltsPer, "0.0000", "Calc volts per step"), stretch,
             "Calc Limit ±", value(p.lblTestLimit, "0.00000", "Calc limit, volts"), "V"}),
        row({"Last sample", value(p.lblWiperVolts[0], "00.00000", "Last sample, volts"), "V", stretch,
             "Position by volts", value(p.lblCalcPosbyVolts[0], "00000", "Position by volts")}),
    });
    auto* content = column({group, separator(Qt::Horizontal), results, stretch});
    auto* framed = new BoxFrame(content, BoxFrame::Ground::Window);
    framed->setAccessibleName("Settings");
    return framed;
}

QWidget* logBox(PageUi& page, UPDN_Runin& p) {
    PanelUi& ui = page.ui();
    auto* log = ui(p.rtxt1);
    log->setAccessibleName("Logged Data");
    new LogFailures(*log, [](const std::string& line) { return line.ends_with("FAIL"); });
    log->setMinimumHeight(log->fontMetrics().lineSpacing() * 3);
    log->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    auto* path = ui(p.txtFilePath, 20);
    path->setPlainText(true);
    path->setAccessibleName("File of the log");
    auto* lines = quietText({});
    lines->setObjectName("log.lines");
    ui.watch(p.rtxt1, [lines, &p] { lines->setText(QString("%1 lines").arg(p.rtxt1.lineCount())); });
    QLabel* journal = elidedText({}); // a path, or why there is none
    journal->setAccessibleName("Journal");
    ui.adopt(bind(p.lblJournal, *journal));
    auto* journalRow = row({"Journal", journal});
    journalRow->setStretch(1, 1);
    auto* all = tightColumn({row({heading("Logged Data"), lines, stretch, path, ui(p.cmdBrowse),
                                  ui(p.chkAppend), ui(p.cmdStartRec), ui(p.cndTclear)}),
                             log, journalRow});
    all->setStretch(1, 1);
    return block(all);
}

/// The panel's own pins: what they drive goes straight out, past the boxes of the up/down panel.
void addPinsSection(PageUi& page, UPDN_Runin& p) {
    PanelUi& ui = page.ui();
    static constexpr std::array<const char*, 8> kPlaces = {"P0.6", "P1.1", "P1.2", "", "", "", "", ""};
    static constexpr int kBitsOfPart = 4;
    std::vector<PinLine> pins;
    for (int bit = 0; bit < p.ChOut.count(); ++bit)
        pins.push_back({p.ChOut[bit], p.ShpOut[bit], kPlaces.at(static_cast<std::size_t>(bit)),
                        plainCaption(p.ChOut[bit]) + QString(" of part #%1").arg(bit / kBitsOfPart + 1)});
    std::vector<Item> steps;
    for (const int way : {0, 1}) {
        const QString name = plainCaption(p.cmdIncr[way]);
        auto* count = ui(p.txtIncr[way], 5);
        count->setAlignment(Qt::AlignRight);
        count->setAccessibleName("Steps " + name.toLower());
        auto* button = plainButton(ui, p.cmdIncr[way]);
        button->setAccessibleName(name);
        steps.emplace_back(count);
        steps.emplace_back(button);
    }
    std::vector<Item> high;
    for (auto& button : p.cmdAlloutsHigh) {
        auto* widget = plainButton(ui, *button);
        widget->setAccessibleName(QString("Set All High of part #%1").arg(button->index() + 1));
        high.emplace_back(widget);
    }
    auto* sample = plainButton(ui, p.cmdSampleWiper[0]);
    page.addSection("Pins by hand",
                    block(rows({ui.frame(p.FrmStaticIO, {}, column({pinLines(page, pins)})), row(high),
                                row(steps), row({ui(p.cmdSequence), sample, stretch})})));
}

} // namespace

void makeRunInPage(PageUi& page, UPDN_Runin& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Run-in");
    page.withoutDock();
    page.startsWithInspectorFolded();
    auto* progress = quietText({});
    progress->setObjectName("run.progress");
    page.addHeadItem(progress);
    const auto picture = std::make_shared<RunInPicture>();
    picture->plot().drawing().tellOn(page);
    QWidget* unfinished = unfinishedBar(page, p);
    QWidget* upper = figures(page, p);
    followStages(page, p, picture);
    auto* middle = row({stageTable(page, p, progress), settingsBox(page, p)});
    middle->setStretch(0, 5);
    middle->setStretch(1, 4);
    QWidget* log = logBox(page, p);
    addPinsSection(page, p);
    if (QWidget* rest = everyControl(page))
        page.addSection("Further", rest);
    ui.watch(p.cmdAbortRun, [progress, &p] {
        if (!p.cmdAbortRun.enabled())
            progress->setText({});
    });
    page.onRead("Sample the wiper", [&p] { (void)p.cmdSampleWiper[0].userClick(); });
    page.onWrite("Run Test", [&p] { (void)p.cmdRunInitial.userClick(); });
    page.addKey(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S), "Save the log",
                [&p] { (void)p.cmdStartRec.userClick(); });
    auto* all = column({unfinished, upper, middle, &picture->plot(), log});
    all->setStretch(3, 3);
    all->setStretch(4, 2);
    page.setFirstFocus(qobject_cast<QWidget*>(&ui.find(p.cmdRunInitial)->target()));
    page.setContent(block(all));
}

} // namespace vrk
