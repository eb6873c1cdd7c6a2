#include "link/modHID.h"
#include "motherboard/FrmVCCCal.h"
#include "platform/qt/theme.h"
#include "platform/runtime/text.h"
#include "shell/Bench.h"
#include "views/blocks/rows.h"
#include "views/pages/boxes.h"
#include "views/pages/calibrationPicture.h"
#include "views/pages/consoleWords.h"
#include "views/pages/pageMakers.h"
#include "views/plot/Plot.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include <array>
#include <cmath>
#include <memory>

namespace vrk {

using namespace qt;

namespace {

constexpr double kCodeDigits = 2.2;
constexpr double kVoltsDigits = 1.5;
constexpr int kTallButton = 40;
constexpr std::size_t kMostFindings = 7;

QString text(const std::string& bytes) {
    return QString::fromStdString(bytes);
}

/// One of the four steps that lead to a file: its number until it is done, then a tick or a cross.
class StepBox {
  public:
    enum class State { Ahead, Now, Done, Failed };

    StepBox(int number, const char* name) {
        number_->setText(QString::number(number));
        number_->setFont(textFont(kNameScale, true));
        words_ = elidedText({});
        words_->setFont(textFont(kSmall));
        words_->setForegroundRole(QPalette::PlaceholderText);
        words_->setObjectName(QString("step.") + name);
        lamp_->setName(name);
        lamp_->hide();
        auto* both = tightColumn({heading(name), words_});
        auto* all = row({lamp_, number_, both});
        all->setStretch(2, 1);
        all->setContentsMargins(12, 4, kUnit, 4);
        box_ = new BoxFrame(all, BoxFrame::Ground::Base);
        box_->setAccessibleName(name);
    }
    void show(State state, const QString& words) {
        box_->setMarked(state == State::Now);
        lamp_->setColour(state == State::Failed ? Colour::LightRed : Colour::LightGreen);
        const bool ended = state == State::Done || state == State::Failed;
        setShown(*lamp_, ended);
        setShown(*number_, !ended);
        words_->setText(words);
        words_->setToolTip(words);
    }
    BoxFrame* box() const { return box_; }

  private:
    LampWidget* lamp_ = new LampWidget;
    QLabel* number_ = new QLabel;
    QLabel* words_ = nullptr;
    BoxFrame* box_ = nullptr;
};

struct Steps {
    StepBox connect{1, "Connect"};
    StepBox measure{2, "Measure"};
    StepBox review{3, "Review"};
    StepBox save{4, "Save"};
    bool saved = false; ///< what was measured last
};

/// Part in the socket; empty also where nobody can tell.
QString socketed(const PageUi& page) {
    return page.context().socket == nullptr ? QString() : page.context().socket->state().part;
}

QString connectWords(const PageUi& page) {
    if (!page.context().bench.link().attached())
        return "no board yet";
    if (page.context().socket == nullptr)
        return "socket empty or part out";
    return socketed(page).isEmpty() ? QString("the socket is empty") : "take out the " + socketed(page);
}

QString measureWords(const FrmVCCCal& p) {
    const FrmVCCCal::Run& run = p.lastRun();
    if (p.running())
        return "code " + text(p.lblCalHex.caption()) + " of 7F";
    if (run.completed())
        return QString("128 codes in %1 s").arg(static_cast<double>(run.took.count()) / 1000.0, 0, 'f', 1);
    return run.points.empty() ? QString("128 codes, a few seconds")
                              : "ended at code " + text(p.lblCalHex.caption());
}

QString reviewWords(const FrmVCCCal& p) {
    if (!p.lastRun().completed())
        return "seven levels and their codes";
    if (!p.sound())
        return "see Findings";
    return QString("all seven within %1 mV").arg(std::lround(worstResidual(p.lastRun().choices) * 1000));
}

void showSteps(const PageUi& page, const FrmVCCCal& p, Steps& steps) {
    using enum StepBox::State;
    const FrmVCCCal::Run& run = p.lastRun();
    const bool done = run.completed();
    const bool failed = !done && !p.running() && !run.points.empty();
    const bool ready = page.context().bench.link().attached() && socketed(page).isEmpty();
    steps.connect.show(ready || done ? Done : Now, connectWords(page));
    steps.measure.show(p.running() ? Now
                       : done      ? Done
                       : failed    ? Failed
                       : ready     ? Now
                                   : Ahead,
                       measureWords(p));
    steps.review.show(!done ? Ahead : !p.sound() ? Failed : steps.saved ? Done : Now, reviewWords(p));
    const QString replaces = run.before ? "replaces the file" : "makes the file";
    steps.save.show(!steps.saved ? Ahead : Done, steps.saved ? "file written"
                                                 : done      ? replaces
                                                             : "for every panel");
}

/// The seven levels: the code that was chosen, what it measured, and how far that is off.
QWidget* levelTable(PageUi& page, FrmVCCCal& p) {
    PanelUi& ui = page.ui();
    auto* lines = new QGridLayout;
    lines->setContentsMargins(12, 4, 12, 4);
    lines->setHorizontalSpacing(kUnit);
    lines->setVerticalSpacing(2);
    const auto put = [lines](QWidget* widget, int row, int column) {
        lines->addWidget(widget, row, column,
                         Qt::AlignVCenter | (column == 4 ? Qt::AlignRight : Qt::AlignLeft));
    };
    int column = 0;
    for (Label* head :
         {&p.blbTargetV[0], &p.lblTargetHex[0], &p.lblTargetV[0], &p.lblTargetV[FrmVCCCal::kDoubled]}) {
        auto* title = ui(*head);
        makeQuiet(*title);
        title->setFont(textFont(kSmall));
        put(title, 0, column++);
    }
    put(columnTitle("Off by"), 0, 4);
    for (int row = 1; row <= FrmVCCCal::kTargets; ++row) {
        Label& target = p.blbTargetV[row];
        Label& real = p.lblTargetV[row + FrmVCCCal::kDoubled];
        const QString level = QString("level %1").arg(row);
        auto* wanted = ui.value(target, "0.00");
        auto* code = ui.value(p.lblTargetHex[row], "000");
        auto* pin = ui.value(p.lblTargetV[row], "0.0000");
        auto* vcc = ui.value(real, "0.0000");
        for (ValueLabel* bold : {wanted, vcc}) {
            QFont font = bold->font();
            font.setBold(true);
            bold->setFont(font);
        }
        wanted->setAccessibleName("Target of " + level + ", volts");
        code->setAccessibleName("Code of " + level);
        pin->setAccessibleName("Pin volts of " + level);
        vcc->setAccessibleName("VCC of " + level + ", volts");
        auto* off = new ValueLabel("+0000 mV", 1.0);
        off->setObjectName(QString("off(%1)").arg(row));
        off->setAccessibleName("Distance of " + level + " from its target");
        off->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* lamp = keepsPlace(new LampWidget);
        lamp->setName("Level " + QString::number(row));
        const auto show = [off, lamp, &target, &real] {
            const bool known =
                isNumeric(target.caption()) && isNumeric(real.caption()) && leadingNumber(real.caption()) > 0;
            const double volts =
                known ? leadingNumber(real.caption()) - leadingNumber(target.caption()) : 0.0;
            const long millivolts = std::lround(volts * 1000);
            off->setText(known ? (millivolts > 0   ? "+"
                                  : millivolts < 0 ? "−"
                                                   : "") +
                                     QString("%1 mV").arg(std::labs(millivolts))
                               : kNeverRead);
            lamp->setColour(std::abs(volts) <= kCalibrationTolerance ? Colour::LightGreen : Colour::LightRed);
            setShown(*lamp, known);
        };
        int at = 0;
        for (QWidget* each : std::initializer_list<QWidget*>{wanted, code, pin, vcc, off, lamp})
            put(each, row, at++);
        ui.watch(target, show);
        ui.watch(real, show);
    }
    for (const int stretched : {0, 1, 2, 3})
        lines->setColumnStretch(stretched, 1);
    auto* framed = new BoxFrame(lines, BoxFrame::Ground::Base);
    framed->setAccessibleName("Levels");
    return framed;
}

QWidget* lastCodeBox(PageUi& page, FrmVCCCal& p) {
    PanelUi& ui = page.ui();
    auto* code = ui.value(p.lblCalHex, "00", kCodeDigits);
    code->setAccessibleName("Code now set");
    auto* volts = ui.value(p.lblCalVolts, "0.000000", kVoltsDigits);
    volts->setAccessibleName("Volts at the pin");
    auto* reference = ui(p.txtVrefCal, 6);
    reference->setAlignment(Qt::AlignRight);
    auto* log = ui(p.rtxt1);
    log->setAccessibleName("Log of the sweep");
    log->setMinimumWidth(dp(148));
    log->setMinimumHeight(dp(60));
    auto* age = ui.age(p.lblCalVolts);
    age->setWordWrap(true);
    auto* left = column({row({heading("Last code"), stretch}), row({code, quietText("hex"), stretch}),
                         row({volts, quietText("V"), stretch}), age, stretch,
                         captionOf(p.txtVrefCal, reference), row({reference, quietText("V"), stretch})});
    auto* both = row({left, log});
    both->setStretch(1, 1);
    both->setContentsMargins(kUnit, kUnit, kUnit, kUnit);
    auto* framed = new BoxFrame(both, BoxFrame::Ground::Window);
    framed->setAccessibleName("Last code");
    return framed;
}

void addSupply(PageUi& page, FrmVCCCal& p) {
    PanelUi& ui = page.ui();
    const auto lamp = [&ui](Lamp& control, const QString& name) {
        auto* widget = ui.supplyLamp(control, name);
        widget->setSide(20);
        return widget;
    };
    auto* word = new QLabel;
    word->setObjectName("vcc.word");
    ui.watch(p.ShpVCCon, [word, &p] { word->setText(p.ShpVCCon.colour() == Colour::Black ? "off" : "on"); });
    std::vector<Item> minus{columnLabel("V−"), lamp(p.ShVM, "V−")};
    for (auto& option : p.OptVM) {
        auto* widget = ui(*option);
        widget->setAccessibleName("V− " + widget->text().remove('&').toLower());
        minus.emplace_back(widget);
    }
    minus.emplace_back(stretch);
    minus.emplace_back(ui(p.ChkTrack));
    auto* frame = ui.frame(p.fraSupply, {}, tightRow(minus));
    page.addSection("Supply", block(rows({tightRow({columnLabel("VCC"), lamp(p.ShpVCCon, "VCC"), word,
                                                    stretch, quietText("the sweep switches it")}),
                                          frame, quietText("V− and Track: on the Motherboard page")})));
}

/// What speaks for and against saving. \return brings it up to date
std::function<void()> addFindings(PageUi& page, FrmVCCCal& p) {
    struct Line {
        QWidget* all;
        LampWidget* lamp;
        QLabel* words;
    };
    std::vector<Line> lines;
    auto* nothing = wrapped(quietText("Nothing has been measured yet."), 36);
    std::vector<Item> items{nothing};
    for (std::size_t at = 0; at < kMostFindings; ++at) {
        Line line{nullptr, new LampWidget, wrapped(new QLabel, 34)};
        line.words->setObjectName(QString("finding(%1)").arg(at));
        auto* both = row({line.lamp, line.words});
        both->setStretch(1, 1);
        line.all = block(both);
        line.all->hide();
        items.emplace_back(line.all);
        lines.push_back(line);
    }
    page.addSection("Findings", block(column(items)));
    return [lines, nothing, &p] {
        const auto findings = p.findings();
        setShown(*nothing, findings.empty());
        for (std::size_t at = 0; at < lines.size(); ++at) {
            const Line& line = lines[at];
            setShown(*line.all, at < findings.size());
            if (at >= findings.size())
                continue;
            line.lamp->setColour(findings[at].good ? Colour::LightGreen : Colour::LightRed);
            line.lamp->setName(findings[at].good ? "In order" : "Against saving");
            line.words->setText(text(findings[at].text));
        }
    };
}

QLabel* statusWords(PageUi& page, FrmVCCCal& p) {
    QLabel* status = elidedText({});
    page.ui().adopt(bind(p.lblCalStatus, *status));
    status->setFont(textFont(1.0, true));
    status->setAccessibleName("State of the calibration");
    status->setFixedWidth(dp(200));
    page.ui().watch(p.lblCalStatus, [status, &p] { status->setToolTip(text(p.lblCalStatus.caption())); });
    return status;
}

} // namespace

void makeCalibrationPage(PageUi& page, FrmVCCCal& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Calibration");
    page.withoutDock();
    page.addHeadItem(statusWords(page, p));
    page.addHeadItem(ui(p.cmdReturn));
    BandSource band;
    band.about = [] { return QString("Calibration of the board"); };
    band.vcc = &p.ShpVCCon;
    band.minus = &p.ShVM;
    band.track = &p.ChkTrack;
    page.setBand(band);
    const auto steps = std::make_shared<Steps>();
    const auto picture = std::make_shared<CalibrationPicture>();
    picture->plot().drawing().tellOn(page);
    auto* progress =
        row({steps->connect.box(), steps->measure.box(), steps->review.box(), steps->save.box()});
    for (int at = 0; at < 4; ++at)
        progress->setStretch(at, 1);
    QPushButton* const run = ui(p.cmdDoVCC_Cal);
    QPushButton* const abort = ui(p.cmdAbort);
    QPushButton* const read = ui(p.cdmRead_Cal_File);
    QPushButton* const write = ui(p.cmdSaveCal);
    for (QPushButton* button : {run, abort, read, write})
        button->setFixedHeight(dp(kTallButton));
    auto* left = column({&picture->plot(),
                         quietText("Lower plot: twice the pin volts less the target, in millivolts."),
                         row({run, abort, stretch})});
    left->setStretch(0, 1);
    QLabel* header = elidedText({});
    ui.adopt(bind(p.lblCal_header, *header));
    header->setAccessibleName("First line of the file");
    auto* file = row({quietText("File"), header});
    file->setStretch(1, 1);
    auto* right = column({levelTable(page, p), lastCodeBox(page, p), file, row({read, write, stretch})});
    right->setStretch(1, 1);
    auto* rightBlock = block(right);
    rightBlock->setFixedWidth(dp(348));
    auto* both = row({left, rightBlock});
    both->setStretch(0, 1);
    addSupply(page, p);
    const auto showFindings = addFindings(page, p);
    page.addSection("After saving",
                    wrapped(quietText("Every panel takes its levels and codes from the file when "
                                      "it is opened next."),
                            38));
    const auto show = [&page, &p, steps, picture, showFindings, run, write] {
        picture->show(p);
        showSteps(page, p, *steps);
        showFindings();
        const bool ready = p.sound() && !steps->saved;
        makeAccent(*run, !ready);
        makeAccent(*write, ready);
    };
    ui.keep(p.observeRuns([steps, show, picture, run, abort, &page, &p](FrmVCCCal::Change change) {
        if (change == FrmVCCCal::Change::Ended && abort->hasFocus()) // it came there as Run was refused
            run->setFocus();
        if (change == FrmVCCCal::Change::Began || change == FrmVCCCal::Change::Saved)
            steps->saved = change == FrmVCCCal::Change::Saved;
        if (change != FrmVCCCal::Change::Measured)
            return show();
        picture->show(p);
        showSteps(page, p, *steps);
    }));
    ui.watch(p.txtVrefCal, show); // what was measured with another reference cannot be saved with this one
    page.onLinkShown([&page, &p, steps](const LinkWords&) {
        if (!p.events().held()) // the simulated bus is at work on another thread
            showSteps(page, p, *steps);
    });
    page.onRead("Read the calibration file", [&p] { (void)p.cdmRead_Cal_File.userClick(); });
    page.onWrite("Run, or write the file once that is right", [&p, steps] {
        (void)(p.sound() && !steps->saved ? p.cmdSaveCal : p.cmdDoVCC_Cal).userClick();
    });
    page.setFirstFocus(run);
    auto* all = column({progress, both});
    all->setStretch(1, 1);
    page.setContent(block(all));
    show();
}

} // namespace vrk
