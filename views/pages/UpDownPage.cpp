#include "panels/discrete/frmVRK_UD1.h"
#include "platform/qt/theme.h"
#include "views/blocks/blocks.h"
#include "views/blocks/lastEdges.h"
#include "views/blocks/pinLines.h"
#include "views/pages/boxes.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Band.h"
#include "views/workspace/Page.h"

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

#include <array>
#include <memory>

namespace vrk {

using namespace qt;

namespace {

constexpr int kVoltsDigits = 60;
constexpr int kStep = 56;
constexpr int kStore = 40;
constexpr int kLeastPart = 390;

/// Lanes of the timing picture.
enum Lane : std::size_t { kCs1, kCs2, kInc, kUpDown };

QString ofPart(const QString& what, int part) {
    return what + QString(" of part #%1").arg(part + 1);
}

std::vector<PinLine> linesOf(frmVRK_UD1& p, int part) {
    static constexpr std::array<const char*, frmVRK_UD1::kBitsOfPart> kShared = {"", " shared", " shared",
                                                                                 ""};
    std::vector<PinLine> lines;
    for (int bit = 0; bit < frmVRK_UD1::kBitsOfPart; ++bit) {
        const int index = frmVRK_UD1::kBitsOfPart * part + bit;
        const OutputPin& pin = p.pins().at(static_cast<std::size_t>(index));
        const QString place = pin.pin == OutputPin::kNoPin
                                  ? QString()
                                  : QString("P%1.%2").arg(pin.pin / 8).arg(pin.pin % 8) +
                                        kShared.at(static_cast<std::size_t>(bit));
        lines.push_back({p.ChOut[index], p.ShpOut[index], place, ofPart(pin.name, part)});
    }
    return lines;
}

QWidget* stepButtons(PageUi& page, frmVRK_UD1& p, int part) {
    PanelUi& ui = page.ui();
    auto* lines = new QGridLayout;
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(kUnit);
    for (const int way : {0, 1}) {
        const int index = 2 * part + way;
        const QString name = plainCaption(p.cmdIncr[index]);
        auto* count = ui(p.txtIncr[index], 4);
        count->setFixedWidth(dp(48));
        count->setAlignment(Qt::AlignRight);
        count->setAccessibleName(ofPart("Steps " + name.toLower(), part));
        auto* unit = quietText("steps");
        unit->setFont(textFont(kSmall));
        QWidget* step = largeButton(ui(p.cmdIncr[index]), kStep);
        step->setAccessibleName(ofPart(name, part));
        step->setMinimumWidth(dp(88));
        lines->addWidget(block(tightColumn({stretch, count, unit, stretch})), way, 0);
        lines->addWidget(step, way, 1);
    }
    lines->setColumnStretch(1, 1);
    return block(lines);
}

BoxFrame* partBox(PageUi& page, frmVRK_UD1& p, int part) {
    PanelUi& ui = page.ui();
    auto* delay = ui(p.txtDelay[part], 5);
    delay->setAlignment(Qt::AlignRight);
    auto* delayWords = caption(plainCaption(p.txtDelay[part]), delay);
    keepWithoutMnemonic(*delayWords);
    delay->setAccessibleName(ofPart("Delay in mSec", part));
    delay->setToolTip("Half period of the pulses, ms");
    auto* pins = ui.frame(p.FrmStaticIO[part], {}, column({pinLines(page, linesOf(p, part))}));
    std::vector<Item> boxes;
    for (const int when : {0, 1}) {
        auto* box = ui(p.ChlAutoCS[2 * part + when]);
        keepWithoutMnemonic(*box);
        boxes.emplace_back(box);
    }
    // The box of part #1 rules both.
    if (part == 1)
        ui.watch(p.ChlAutoCS[0], [box = boxes.front().widget, &its = p.ChlAutoCS[0]] {
            box->setToolTip(its.checked() ? "The box of part #1 rules both parts: it is checked"
                                          : "The box of part #1 rules both parts: it is clear");
        });
    auto* steps = ui.frame(p.FrmIncr[part], {}, column({stepButtons(page, p, part)}));
    auto* upper = row({pins, steps});
    upper->setStretch(0, 5);
    upper->setStretch(1, 4);
    QWidget* store = largeButton(ui(p.cmdSequence[2 * part]), kStore);
    auto* noStore = ui(p.cmdSequence[2 * part + 1]);
    noStore->setFixedHeight(dp(kStore));
    noStore->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    store->setToolTip("/INC high, then /CS rises: the part stores the wiper's position");
    noStore->setToolTip("/INC low, then /CS rises: the part is left without a store");
    auto* ends = row({store, noStore});
    ends->setStretch(0, 4);
    ends->setStretch(1, 3);
    auto* high = ui(p.cmdAlloutsHigh[part]);
    auto* abort = ui(p.cmdAbortIncr[part]);
    for (QPushButton* button : {noStore, high, abort}) {
        button->setAccessibleName(ofPart(button->text().remove('&').trimmed(), part));
        keepWithoutMnemonic(*button);
    }
    store->setAccessibleName(ofPart("Store", part));
    abort->setMinimumWidth(dp(88));
    auto* content = column({upper, tightColumn(boxes), ui.frame(p.FrmExit[part], {}, ends),
                            row({high, stretch, abort}), stretch});
    auto* framed = box(QString("Part #%1").arg(part + 1), content, BoxFrame::Ground::Base,
                       block(row({delayWords, delay})));
    framed->setObjectName(QString("part(%1)").arg(part));
    framed->setMinimumWidth(dp(kLeastPart));
    return framed;
}

QWidget* wiperBox(PageUi& page, frmVRK_UD1& p) {
    PanelUi& ui = page.ui();
    auto* sample = ui(p.cmdSampleWiper);
    sample->setMinimumWidth(dp(80));
    sample->setAccessibleName("Sample the wiper");
    auto* factor = ui(p.txtFactor, 4);
    factor->setAlignment(Qt::AlignRight);
    std::vector<Item> chans;
    for (auto& option : p.OptChans)
        chans.emplace_back(ui(*option));
    chans.emplace_back(stretch);
    std::vector<Item> taps{"Taps"};
    for (auto& option : p.OptTaps) {
        auto* widget = ui(*option);
        widget->setAccessibleName(plainCaption(*option) + " taps");
        keepWithoutMnemonic(*widget);
        taps.emplace_back(widget);
    }
    taps.emplace_back(stretch);
    auto* halves = row({
        tightColumn({row({heading("Wiper Volts", kStripScale), stretch, ui.age(p.lblWiperVolts)}),
                     right(largeVolts(page, p.lblWiperVolts, "Wiper volts", kVoltsDigits)), stretch}),
        separator(Qt::Vertical),
        column(
            {row(chans), row(taps),
             row({sample, caption(plainCaption(p.txtFactor), factor), factor, stretch, ui(p.cmdSampleBits)}),
             stretch}),
    });
    halves->setStretch(0, 1);
    halves->setSpacing(2 * kUnit);
    auto* framed = new BoxFrame(halves, BoxFrame::Ground::Base);
    framed->setAccessibleName("Wiper Volts");
    return framed;
}

/// "10 falling edges of /INC, U/D high; /CS1 rose with /INC high: stored"
QString edgeWords(const PinTimeline& timeline) {
    QStringList words;
    bool inc = timeline.before(kInc).value_or(false);
    bool up = timeline.before(kUpDown).value_or(false);
    int falls = 0;
    bool lastUp = up;
    for (const PinTimeline::Edge& edge : timeline.edges()) {
        if (edge.pin == kUpDown)
            up = edge.high;
        if (edge.pin == kInc) {
            inc = edge.high;
            if (!edge.high) {
                ++falls;
                lastUp = up;
            }
        }
        if ((edge.pin == kCs1 || edge.pin == kCs2) && edge.high)
            words += timeline.pins()[edge.pin].name +
                     (inc ? " rose with /INC high: stored" : " rose with /INC low: not stored");
    }
    words.removeDuplicates();
    if (falls > 0)
        words.prepend(QString("%1 falling edge%2 of /INC, U/D %3")
                          .arg(falls)
                          .arg(falls == 1 ? "" : "s")
                          .arg(lastUp ? "high (up)" : "low (down)"));
    return words.join("; ");
}

void setBandOf(PageUi& page, frmVRK_UD1& p) {
    BandSource band = bandOf(p);
    band.about = [&p] {
        const bool two = p.OptChans[1].value();
        QString taps;
        for (auto& option : p.OptTaps)
            if (option->value())
                taps = plainCaption(*option);
        return QString("up/down · %1 · %2 taps").arg(two ? "2 parts" : "1 part", taps);
    };
    band.part = [&page] { return page.context().socket != nullptr ? "UPDN100" : "up/down part"; };
    for (auto& option : p.OptChans)
        band.watched.push_back(option.get());
    for (auto& option : p.OptTaps)
        band.watched.push_back(option.get());
    page.setBand(std::move(band));
}

/// The part whose box has the keyboard, or had it last.
class PartInHand final : public QObject {
  public:
    explicit PartInHand(const std::vector<QWidget*>& boxes) : QObject(boxes.front()), boxes_(boxes) {
        connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, const QWidget* now) {
            for (std::size_t part = 0; part < boxes_.size(); ++part)
                if (now != nullptr && boxes_[part]->isAncestorOf(now))
                    part_ = static_cast<int>(part);
        });
    }
    int part() const { return boxes_[static_cast<std::size_t>(part_)]->isHidden() ? 0 : part_; }

  private:
    std::vector<QWidget*> boxes_;
    int part_ = 0;
};

void addKeys(PageUi& page, frmVRK_UD1& p, const PartInHand& hand) {
    page.onRead("Sample the wiper", [&p] { (void)p.cmdSampleWiper.userClick(); });
    page.onWrite("Step up the part that has the keyboard",
                 [&p, &hand] { (void)p.cmdIncr[2 * hand.part()].userClick(); });
    page.addKey(QKeySequence(Qt::CTRL | Qt::Key_Up), "Step up",
                [&p, &hand] { (void)p.cmdIncr[2 * hand.part()].userClick(); });
    page.addKey(QKeySequence(Qt::CTRL | Qt::Key_Down), "Step down",
                [&p, &hand] { (void)p.cmdIncr[2 * hand.part() + 1].userClick(); });
    page.addKey(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S), "Store",
                [&p, &hand] { (void)p.cmdSequence[2 * hand.part()].userClick(); });
    page.addKey(QKeySequence(Qt::SHIFT | Qt::Key_F5), "Read the pins back",
                [&p] { (void)p.cmdSampleBits.userClick(); });
}

} // namespace

void makeUpDownPage(PageUi& page, frmVRK_UD1& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Up/Down");
    page.withoutDock();
    page.setSubtitle(quietText("/CS, /INC, U/D"));
    page.addHeadItem(ui(p.cmdRunin));
    page.addHeadItem(ui(p.cmdMMenu));
    QWidget* wiper = wiperBox(page, p);
    std::vector<QWidget*> parts{partBox(page, p, 0), partBox(page, p, 1)};
    auto* hand = new PartInHand(parts);
    ui.watch(p.FrmStaticIO[1],
             [second = parts[1], &frame = p.FrmStaticIO[1]] { setShown(*second, frame.visible()); });
    auto* picture = new TimingPicture(
        std::make_unique<PinTimeline>(
            page.context().wire, p.events(),
            std::vector<PinTimeline::Pin>{{"/CS1", 0, 6}, {"/CS2", 0, 7}, {"/INC", 1, 1}, {"U/D", 1, 2}}),
        std::vector<std::size_t>{kInc});
    picture->drawing().tellOn(page);
    ui.watch(p.FrmStaticIO[1], [picture, &second = p.FrmStaticIO[1]] {
        picture->setLanes(second.visible() ? std::vector<std::size_t>{kCs1, kCs2, kInc, kUpDown}
                                           : std::vector<std::size_t>{kCs1, kInc, kUpDown});
    });
    addSupplySection(page, p);
    std::vector<Item> chosen;
    for (auto& option : p.OptCS)
        chosen.emplace_back(ui(*option));
    chosen.emplace_back(stretch);
    chosen.emplace_back(quietText("follows the choice"));
    page.addSection("/CS in use", block(row(chosen)));
    addStoreSection(page, p);
    addStatusSection(page, p);
    setBandOf(page, p);
    addKeys(page, p, *hand);
    auto* both = row({parts[0], parts[1]});
    auto* all = column({wiper, both, lastEdges(*picture, edgeWords)});
    all->setStretch(2, 1);
    page.setFirstFocus(qobject_cast<QWidget*>(&ui.find(p.cmdIncr[0])->target()));
    page.setContent(block(all));
}

} // namespace vrk
