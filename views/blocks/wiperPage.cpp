#include "views/blocks/wiperPage.h"

#include "panels/WiperPanel.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "views/blocks/rows.h"
#include "views/plot/ChannelPlot.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QLabel>
#include <QMenu>
#include <QPushButton>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {

constexpr int kSizes = 74;

/// A button of the view's own.
QPushButton* headButton(const QString& text, const QString& name, std::function<void()> act) {
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setAutoDefault(false);
    QObject::connect(button, &QPushButton::clicked, button, std::move(act));
    return button;
}

} // namespace

void addPartMenu(PageUi& page, WiperPanel& panel) {
    QMenu* menu = page.menu("Device Select");
    PanelUi& ui = page.ui();
    for (MenuEntry* entry : panel.partEntries()) {
        QAction* action = ui(*entry);
        action->setParent(menu);
        menu->addAction(action);
    }
    ui.tieMenu(panel.mnuDeviceSelect, *menu->menuAction());
    menu->setTitle("&Device Select"); // the panel's own caption has no letter
    menu->addSeparator();
    QAction* scripts = ui(panel.mnuScriptShow);
    scripts->setParent(menu);
    menu->addAction(scripts);
}

void addWiperHead(PageUi& page, WiperPanel& panel, ChannelPlot* plot) {
    PanelUi& ui = page.ui();
    page.addHeadItem(ui(panel.cmdReadAllWipers[0]));
    page.addHeadItem(ui(panel.cmdReadAllWipers[1]));
    page.addHeadItem(headButton("Sweep…", "sweepHead", [plot] { plot->prepareSweep(); }));
    page.addHeadItem(
        headButton("Script…", "scriptHead", [&panel] { (void)panel.mnuScriptShow.userClick(); }));
    page.addHeadItem(ui(panel.cmdMMenu));
    page.addKey(QKeySequence(Qt::SHIFT | Qt::Key_F5), "Read all channels",
                [&panel] { (void)panel.cmdReadAllWipers[0].userClick(); });
    page.addKey(QKeySequence(Qt::CTRL | Qt::Key_P), "Plot of the volts over the position",
                [&page] { page.openPlot(); });
}

void showPart(PageUi& page, Section& section, WiperPanel& panel) {
    auto* part = page.ui()(panel.lblProduct);
    makeQuiet(*part);
    part->setFont(textFont(kSmall));
    part->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    part->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    page.ui().watch(panel.lblProduct,
                    [part, &panel] { part->setToolTip(words(panel.lblProduct.caption())); });
    section.setSummary(part);
}

void setWiperBand(PageUi& page, WiperPanel& panel, const std::vector<Control*>& alsoWatched) {
    BandSource band;
    band.about = [&panel] {
        const int used = static_cast<int>(std::count_if(panel.SSFrame4.begin(), panel.SSFrame4.end(),
                                                        [](const auto& frame) { return frame->visible(); }));
        return QString("%1 · %2 channel%3 · %4 taps")
            .arg(words(panel.busName()))
            .arg(used)
            .arg(used == 1 ? "" : "s")
            .arg(panel.Slider1[0].maximum());
    };
    band.part = [&panel] { return words(panel.lblProduct.caption()).section(',', 0, 0).trimmed(); };
    band.address = [&panel] { return words(panel.busAddress()); };
    band.parts = panel.partEntries();
    band.on = &panel.OptVCC[0];
    band.off = &panel.OptVCC[1];
    band.level = &panel.CboVCC;
    band.volts = &panel.lblVCCVolts;
    band.vcc = &panel.ShpVCCon;
    band.minus = &panel.ShVM;
    band.track = &panel.ChkTrack;
    band.watched = {&panel.lblProduct, &panel.txtDeviceAdr, &panel.Slider1[0], &panel.SSFrame4[1],
                    &panel.SSFrame4[2]};
    band.watched.insert(band.watched.end(), alsoWatched.begin(), alsoWatched.end());
    page.setBand(std::move(band));
}

qt::Item sizeRow(PageUi& page, WiperPanel& panel) {
    auto* address = page.ui()(panel.cboRegSize, 7);
    auto* data = page.ui()(panel.cboDataSize, 7);
    for (QWidget* size : {address, data})
        size->setFixedWidth(dp(kSizes));
    return tightRow(
        {smallCaption("Address Size", address), address, stretch, smallCaption("Data Size", data), data});
}

QWidget* untitled(PageUi& page, Frame& frame, QLayout* content) {
    auto* group = page.ui().frame(frame, {}, content);
    group->setTitled(false);
    return qt::block(rows({group}));
}

void addQuadSection(PageUi& page, WiperPanel& panel, const QString& title) {
    PanelUi& ui = page.ui();
    page.addSection(panel.Frq4410Show, title,
                    untitled(page, panel.Frq4410Show,
                             rows({row({quietText("Write and Read send this part's instructions."), stretch}),
                                   row({ui(panel.cmdShowq4410)}), row({ui(panel.cmdStoreWCRs)})})));
}

} // namespace vrk
