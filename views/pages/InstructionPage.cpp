#include "panels/WiperPanel.h"
#include "panels/instruction/frm_q4410.h"
#include "panels/instruction/frm_q4420.h"
#include "platform/qt/keyboard.h"
#include "platform/qt/theme.h"
#include "views/blocks/InstructionComposer.h"
#include "views/blocks/PotMap.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"
#include "views/workspace/intoView.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include <memory>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

constexpr int kStepButton = 88;

LampWidget* legendLamp(PageUi& page, Lamp& lamp, const QString& name) {
    auto* widget = page.ui()(lamp, name);
    widget->setRole(LampWidget::Role::Map);
    return widget;
}

void addLegend(PageUi& page, InstructionPanel& p) {
    auto* content = new QVBoxLayout;
    const auto line = [&](int lamp, QWidget* words) {
        auto* sign = legendLamp(page, p.ShpLegend[lamp], "Legend");
        auto* label = static_cast<QLabel*>(words);
        label->setWordWrap(true);
        label->setFont(textFont(kSmall));
        auto* row = new QHBoxLayout;
        row->setSpacing(kUnit);
        row->addWidget(sign, 0, Qt::AlignTop);
        row->addWidget(words, 1);
        content->addLayout(row);
    };
    line(0, page.ui()(p.Label5[0]));
    line(1, page.ui()(p.Label5[1]));
    line(2, new QLabel("second of the two greens"));
    line(3, page.ui()(p.Label5[2]));
    line(4, page.ui()(p.Label5[3]));
    page.addSection("LED Color Legend", qt::block(content));
}

/// Stands above the map while the increments run: nothing else of the page works then, and the inspector may
/// be folded away.
QWidget* increments(PageUi& page, InstructionPanel& p) {
    PanelUi& ui = page.ui();
    std::vector<Item> line{heading(QString::fromStdString(p.FrIncrDec.caption())), gap};
    std::vector<QWidget*> steps;
    for (auto& button : p.cmdIncrWip)
        steps.push_back(wideButton(ui(*button), kStepButton));
    line.insert(line.end(), steps.begin(), steps.end());
    auto* volts = ui.value(p.lblPotVolts, "00.000", 1.38);
    volts->setAccessibleName("Volts of the pot that is stepped");
    for (const Item& item : {gap, Item(ui(p.lvlPotN)), Item(volts), Item(quietText("V")), stretch})
        line.push_back(item);
    auto* frame = ui.frame(p.FrIncrDec, {}, row(line));
    frame->setTitled(false);
    // Go may stand a page below, and nothing that is in sight there works any more. The keyboard comes along,
    // and goes back unless the user has taken it elsewhere.
    const auto before = std::make_shared<QPointer<QWidget>>();
    const auto begin = [frame, &page, up = steps.front(), before] {
        // It may be with whom Go passed it on to; Up may not work yet, while the pins are taken.
        *before = keyboardHolder(*frame);
        if (*before != nullptr && page.holds(**before))
            giveKeyboard(*up);
        scrollIntoView(*frame);
    };
    const auto end = [frame, before] {
        if (owesKeyboard(*frame) && *before != nullptr)
            giveKeyboard(**before);
    };
    ui.watch(p.FrIncrDec, [frame, begin, end, &p, stood = false]() mutable {
        const bool stands = p.FrIncrDec.visible();
        if (std::exchange(stood, stands) == stands)
            return;
        if (stands)
            QMetaObject::invokeMethod(frame, begin, Qt::QueuedConnection); // once it has its place
        else
            QMetaObject::invokeMethod(frame, end, Qt::QueuedConnection); // once it is out of sight
    });
    return frame;
}

void makePage(PageUi& page, InstructionPanel& p) {
    page.setHelpPage("Instruction panels");
    PanelUi& ui = page.ui();
    for (Button* button : {&p.cmdReadAll, &p.cmdFillRegs, &p.cmdSetWReqRd, &p.cmdResetInstruction})
        page.addHeadItem(ui(*button));
    InstructionCompanion* const beside = p.loadedCompanion();
    if (beside != nullptr)
        addSupplySection(page, beside->devicePanel());
    auto* map = new PotMap(page, p);
    auto* composer = new InstructionComposer(page, p);
    addLegend(page, p);
    if (beside != nullptr)
        addStoreSection(page, beside->devicePanel());
    page.onRead("Read all registers", [&p] { (void)p.cmdReadAll.userClick(); });
    page.onWrite("Send the instruction", [&p] { (void)p.cmdDoInstruction.userClick(); });
    page.setFirstFocus(composer->first());
    page.setContent(qt::block(column({increments(page, p), map, composer, stretch})));
    std::vector<QWidget*> order = map->tabOrder();
    for (QWidget* field : composer->tabOrder())
        order.push_back(field);
    setTabOrder(order);
}

} // namespace

void makeI2cInstructionPage(PageUi& page, frm_q4410& panel) {
    makePage(page, panel);
}

void makeSpiInstructionPage(PageUi& page, frm_q4420& panel) {
    makePage(page, panel);
}

} // namespace vrk
