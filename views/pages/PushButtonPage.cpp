#include "panels/discrete/frmVRK_PB1.h"
#include "platform/qt/theme.h"
#include "views/blocks/blocks.h"
#include "views/blocks/lastEdges.h"
#include "views/blocks/pinLines.h"
#include "views/blocks/rows.h"
#include "views/pages/boxes.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Band.h"
#include "views/workspace/Page.h"

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

constexpr int kVoltsDigits = 38;
constexpr int kPress = 56;
constexpr int kStore = 40;
constexpr int kPinCount = 5; ///< of the part; the lanes of the timing picture are in the same order

QString pinPlace(const OutputPin& pin) {
    return QString("P%1.%2").arg(pin.pin / 8).arg(pin.pin % 8);
}

/// One analog input: its volts, the factor, and the button that measures it.
QLayout* inputCell(PageUi& page, frmVRK_PB1& p, int input) {
    PanelUi& ui = page.ui();
    const QString name = plainCaption(p.lblADChan[input]);
    auto* title = ui(p.lblADChan[input]);
    title->setFont(textFont(1.0, true));
    auto* age = ui.age(p.lblWiperVolts[input]);
    age->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    age->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* factor = ui(p.txtFactor[input], 4);
    factor->setAlignment(Qt::AlignRight);
    auto* words = smallCaption(plainCaption(p.txtFactor[input]), factor);
    factor->setAccessibleName("AD Factor of " + name);
    auto* sample = ui(p.cmdSampleWiper[input]);
    sample->setAccessibleName("Sample " + name);
    sample->setMinimumWidth(dp(64));
    for (QWidget* twin : std::initializer_list<QWidget*>{words, sample})
        keepWithoutMnemonic(*twin);
    auto* head = row({title, age});
    head->setStretch(1, 1);
    return tightColumn({head, right(largeVolts(page, p.lblWiperVolts[input], name + " volts", kVoltsDigits)),
                        row({words, factor, stretch, sample})});
}

QWidget* inputsBox(PageUi& page, frmVRK_PB1& p) {
    std::vector<Item> cells;
    for (int input = 0; input < p.lblADChan.count(); ++input) {
        if (input > 0)
            cells.emplace_back(separator(Qt::Vertical));
        cells.emplace_back(inputCell(page, p, input));
    }
    auto* all = row(cells);
    for (int at = 0; at < all->count(); at += 2)
        all->setStretch(at, 1);
    return box("Vin0-Vin3 Analog Inputs Sample", all, BoxFrame::Ground::Base);
}

QWidget* pressButtons(PageUi& page, frmVRK_PB1& p) {
    PanelUi& ui = page.ui();
    auto* lines = new QGridLayout;
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(kUnit);
    for (const int way : {0, 1}) {
        const QString name = plainCaption(p.cmdIncr[way]);
        auto* count = ui(p.txtIncr[way], 4);
        count->setFixedWidth(dp(48));
        count->setAlignment(Qt::AlignRight);
        count->setAccessibleName("Presses " + name.toLower());
        auto* unit = quietText("presses");
        unit->setFont(textFont(kSmall));
        QWidget* button = largeButton(ui(p.cmdIncr[way]), kPress);
        button->setAccessibleName(name + ", as often as counted");
        button->setMinimumWidth(dp(88));
        lines->addWidget(block(tightColumn({stretch, count, unit, stretch})), way, 0);
        lines->addWidget(button, way, 1);
    }
    lines->setColumnStretch(1, 1);
    return block(lines);
}

QWidget* pulsesBox(PageUi& page, frmVRK_PB1& p) {
    PanelUi& ui = page.ui();
    std::vector<PinLine> pins;
    for (int bit = 0; bit < kPinCount; ++bit) {
        const OutputPin& pin = p.pins().at(static_cast<std::size_t>(bit));
        pins.push_back({p.ChOut[bit], p.ShpOut[bit], pinPlace(pin), pin.name});
    }
    auto* delay = ui(p.txtDelay, 5);
    delay->setAlignment(Qt::AlignRight);
    delay->setToolTip("How long a press and the pause behind it take, ms");
    auto* upper = row({pinLines(page, pins), pressButtons(page, p)});
    upper->setStretch(0, 5);
    upper->setStretch(1, 4);
    auto* store = ui(p.blAutoStore);
    makeQuiet(*store);
    auto* abort = ui(p.cmdAbortIncr);
    abort->setMinimumWidth(dp(88));
    return box("Pulses",
               column({upper, tightColumn({ui(p.ChlAutoCS[0]), row({ui(p.ChlAutoCS[1]), stretch, store})}),
                       row({ui(p.cmdAlloutsHigh), stretch, abort}), stretch}),
               BoxFrame::Ground::Base, block(row({caption(plainCaption(p.txtDelay), delay), delay})));
}

QWidget* holdBox(PageUi& page, frmVRK_PB1& p) {
    PanelUi& ui = page.ui();
    static constexpr std::array<const char*, 3> kPins = {"/UP", "/DOWN", "/STORE"};
    auto* lines = new QGridLayout;
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(kUnit);
    lines->setColumnStretch(0, 1);
    for (int hold = 0; hold < 3; ++hold) {
        const QString pin = kPins.at(static_cast<std::size_t>(hold));
        QWidget* button = largeButton(ui(p.cmdSequence[hold]), kStore);
        button->setAccessibleName(plainCaption(p.cmdSequence[hold]) + ", held");
        auto* time = ui(p.txtPressAndHold[hold], 6);
        time->setAlignment(Qt::AlignRight);
        time->setAccessibleName("Hold time of " + pin);
        lines->addWidget(button, hold, 0);
        lines->addWidget(quietText(pin + " low for"), hold, 1);
        lines->addWidget(time, hold, 2);
        lines->addWidget(quietText("ms"), hold, 3);
    }
    std::vector<Item> shutdown;
    for (const int index : {3, 4}) {
        auto* button = ui(p.cmdSequence[index]);
        button->setFixedHeight(dp(kStore));
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        shutdown.emplace_back(button);
    }
    auto* words = quietText("Both buttons go low, or high, in one write.");
    words->setFont(textFont(kSmall));
    return box("Press and hold", column({lines, row(shutdown), words, stretch}), BoxFrame::Ground::Base);
}

/// "4 presses of /UP; /STORE went low: stored"
QString edgeWords(const PinTimeline& timeline) {
    QStringList words;
    for (const std::size_t pin : {std::size_t{frmVRK_PB1::kUp}, std::size_t{frmVRK_PB1::kDown}})
        if (const int presses = timeline.edgesOf(pin, false); presses > 0)
            words += QString("%1 press%2 of %3")
                         .arg(presses)
                         .arg(presses == 1 ? "" : "es")
                         .arg(timeline.pins()[pin].name);
    if (timeline.edgesOf(frmVRK_PB1::kStore, false) > 0)
        words += "/STORE went low";
    return words.join("; ");
}

void setBandOf(PageUi& page, frmVRK_PB1& p) {
    BandSource band = bandOf(p);
    band.about = [] { return QString("push button · 1 part"); };
    band.part = [&page] { return page.context().socket != nullptr ? "PB64" : "push-button part"; };
    page.setBand(std::move(band));
}

void addKeys(PageUi& page, frmVRK_PB1& p) {
    const auto press = [](Button& button) { return [&button] { (void)button.userClick(); }; };
    page.onRead("Sample Vin0", press(p.cmdSampleWiper[0]));
    page.addKey(QKeySequence(Qt::SHIFT | Qt::Key_F5), "Sample Vin0 to Vin3", [&p] {
        for (auto& sample : p.cmdSampleWiper)
            if (!sample->userClick().done())
                return;
    });
    page.onWrite("Press up, as often as counted", press(p.cmdIncr[0]));
    page.addKey(QKeySequence(Qt::CTRL | Qt::Key_Up), "Press up, as often as counted", press(p.cmdIncr[0]));
    page.addKey(QKeySequence(Qt::CTRL | Qt::Key_Down), "Press down, as often as counted",
                press(p.cmdIncr[1]));
    page.addKey(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S), "Toggle Store", press(p.cmdSequence[2]));
}

} // namespace

void makePushButtonPage(PageUi& page, frmVRK_PB1& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Push Button");
    page.withoutDock();
    page.setSubtitle(quietText("/UP, /DOWN, /STORE, /MUTE"));
    page.addHeadItem(ui(p.cmdMMenu));
    std::vector<PinTimeline::Pin> lanes;
    for (const OutputPin& pin : p.pins())
        lanes.push_back({pin.name, pin.pin / 8, pin.pin % 8});
    auto* picture =
        new TimingPicture(std::make_unique<PinTimeline>(page.context().wire, p.events(), std::move(lanes)),
                          std::vector<std::size_t>{frmVRK_PB1::kUp, frmVRK_PB1::kDown});
    picture->drawing().tellOn(page);
    picture->setLanes(
        {frmVRK_PB1::kCs, frmVRK_PB1::kStore, frmVRK_PB1::kMute, frmVRK_PB1::kUp, frmVRK_PB1::kDown});
    QWidget* inputs = inputsBox(page, p);
    auto* both = row({pulsesBox(page, p), holdBox(page, p)});
    both->setStretch(0, 1);
    both->setStretch(1, 1);
    addSupplySection(page, p);
    std::vector<Item> chosen;
    for (auto& option : p.OptCS)
        chosen.emplace_back(ui(*option));
    chosen.emplace_back(stretch);
    chosen.emplace_back(quietText("Dual: by /STORE"));
    chosen[1].widget->setToolTip("The line of /STORE is the chip select of the second part");
    page.addSection("/CS in use", block(row(chosen)));
    addStoreSection(page, p);
    addStatusSection(page, p);
    setBandOf(page, p);
    addKeys(page, p);
    auto* all = column({inputs, both, lastEdges(*picture, edgeWords)});
    all->setStretch(2, 1);
    page.setFirstFocus(qobject_cast<QWidget*>(&ui.find(p.cmdIncr[0])->target()));
    page.setContent(block(all));
}

} // namespace vrk
