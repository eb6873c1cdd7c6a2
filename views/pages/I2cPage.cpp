#include "panels/i2c/frmVRK_User1.h"
#include "platform/qt/theme.h"
#include "views/blocks/ChannelStrips.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/pages/pageMakers.h"
#include "views/plot/ChannelPlot.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {

QString words(const std::string& text) {
    return QString::fromStdString(text);
}

void addSetUpSection(PageUi& page, frmVRK_User1& p) {
    PanelUi& ui = page.ui();
    auto* addressSize = ui(p.cboRegSize, 7);
    auto* dataSize = ui(p.cboDataSize, 7);
    auto* clock = ui(p.cboI2CClock, 8);
    clock->setFixedWidth(dp(72));
    for (QWidget* size : {addressSize, dataSize})
        size->setFixedWidth(dp(74));
    Section& section =
        page.addSection("Set-up", qt::block(rows({
                                      channelChoice(page, p),
                                      tightRow({smallCaption("Address Size", addressSize), addressSize,
                                                stretch, smallCaption("Data Size", dataSize), dataSize}),
                                      addressRows(page, p),
                                      row({caption(plainCaption(p.cboI2CClock), clock), stretch, clock}),
                                  })));
    auto* part = ui(p.lblProduct);
    makeQuiet(*part);
    part->setFont(textFont(kSmall));
    part->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    part->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    ui.watch(p.lblProduct, [part, &p] { part->setToolTip(words(p.lblProduct.caption())); });
    section.setSummary(part);
}

QWidget* frameOf(PageUi& page, Frame& frame, QLayout* content) {
    auto* group = page.ui().frame(frame, {}, content);
    group->setTitled(false); // the section's heading says it
    return qt::block(rows({group}));
}

/// Four banks of data registers, and the part's pins moved by hand.
void addBankSection(PageUi& page, frmVRK_User1& p) {
    PanelUi& ui = page.ui();
    std::vector<Item> pins;
    for (auto& pin : p.Chq4422)
        pins.emplace_back(ui(*pin));
    pins.emplace_back(stretch);
    std::vector<std::vector<Item>> banks{{}, {}, {}};
    for (auto& bank : p.opt4422)
        banks[static_cast<std::size_t>(bank->index() / 2)].emplace_back(ui(*bank));
    auto* chosen = ui.value(p.lblBank, "XXXX");
    chosen->setAccessibleName("Bank chosen");
    banks.back().emplace_back(row({quietText("bank"), chosen, stretch}));
    page.addSection(
        p.Frq4422, "Q4422",
        frameOf(page, p.Frq4422,
                rows({grid(banks), row(pins), row({ui(p.cmdUp[0]), ui(p.cmdUp[1]), ui(p.cmdUp[2])}),
                      row({ui(p.cmdRdAllq44), ui(p.cmdSampleq44)}),
                      row({ui(p.ChkAutoSample), stretch, ui(p.cdmAuto_Init)})})));
}

/// Ten-bit wiper and four data registers: one line a register, then the transfers between them.
void addTenBitSection(PageUi& page, frmVRK_User1& p) {
    PanelUi& ui = page.ui();
    std::vector<std::vector<Item>> lines{{"To write", {}, "As read", {}}};
    for (int index = 0; index < p.txtWrQ3319.count(); ++index) {
        const QString name = words(p.CMDq331X_Write[index].caption());
        auto* value = ui(p.txtWrQ3319[index], 4);
        value->setAccessibleName(name + ", to write");
        tintHexDifference(page, p.txtWrQ3319[index], *value, p.lblRdq331x[index],
                          [&p, index] { return p.lblRdq331x[index].caption(); });
        auto* write = ui(p.CMDq331X_Write[index]);
        write->setAccessibleName("Write " + name);
        auto* shown = ui.value(p.lblRdq331x[index], "000");
        shown->setAccessibleName(name + ", as read");
        auto* read = ui(p.CMDq331X_Read[index]);
        read->setAccessibleName("Read " + name);
        lines.push_back({value, write, shown, read});
    }
    std::vector<std::vector<Item>> transfers;
    for (int index = 0; index < p.cmdQ331xDatatoWiper.count(); ++index)
        transfers.push_back({ui(p.cmdQ331xDatatoWiper[index]), ui(p.cmdQ331xWipertoData[index])});
    page.addSection(p.frq331x, "Q3318/9", frameOf(page, p.frq331x, rows({grid(lines), grid(transfers)})));
}

/// This family works with its channel alone; the heading says that it was recognised.
void addInstructionSection(PageUi& page, frmVRK_User1& p) {
    page.addSection(p.Frq4410Show, "Q4410/9",
                    frameOf(page, p.Frq4410Show,
                            row({quietText("Write and Read send this part's instructions."), stretch})));
}

void addPartMenu(PageUi& page, frmVRK_User1& p) {
    QMenu* menu = page.menu("Device Select");
    PanelUi& ui = page.ui();
    for (MenuEntry* entry : p.partEntries()) {
        QAction* action = ui(*entry);
        action->setParent(menu);
        menu->addAction(action);
    }
    ui.tieMenu(p.mnuDeviceSelect, *menu->menuAction());
    menu->addSeparator();
    QAction* scripts = ui(p.mnuScriptShow);
    scripts->setParent(menu);
    menu->addAction(scripts);
}

/// A button of the view's own.
QPushButton* headButton(const QString& text, const QString& name, std::function<void()> act) {
    auto* button = new QPushButton(text);
    button->setObjectName(name);
    button->setAutoDefault(false);
    QObject::connect(button, &QPushButton::clicked, button, std::move(act));
    return button;
}

void addHead(PageUi& page, frmVRK_User1& p, ChannelPlot* plot) {
    PanelUi& ui = page.ui();
    page.addHeadItem(ui(p.cmdReadAllWipers[0]));
    page.addHeadItem(ui(p.cmdReadAllWipers[1]));
    page.addHeadItem(headButton("Sweep…", "sweepHead", [plot] { plot->prepareSweep(); }));
    page.addHeadItem(headButton("Script…", "scriptHead", [&p] { (void)p.mnuScriptShow.userClick(); }));
    page.addHeadItem(ui(p.cmdMMenu));
}

void setBandOf(PageUi& page, frmVRK_User1& p) {
    BandSource band;
    band.about = [&p] {
        const int used = static_cast<int>(std::count_if(p.SSFrame4.begin(), p.SSFrame4.end(),
                                                        [](const auto& frame) { return frame->visible(); }));
        return QString("%1 · %2 channel%3 · %4 taps")
            .arg(words(p.busName()))
            .arg(used)
            .arg(used == 1 ? "" : "s")
            .arg(p.Slider1[0].maximum());
    };
    band.part = [&p] { return words(p.lblProduct.caption()).section(',', 0, 0).trimmed(); };
    band.address = [&p] { return words(p.busAddress()); };
    band.parts = p.partEntries();
    band.on = &p.OptVCC[0];
    band.off = &p.OptVCC[1];
    band.level = &p.CboVCC;
    band.volts = &p.lblVCCVolts;
    band.vcc = &p.ShpVCCon;
    band.minus = &p.ShVM;
    band.track = &p.ChkTrack;
    band.watched = {&p.lblProduct, &p.txtDeviceAdr, &p.Slider1[0], &p.SSFrame4[1], &p.SSFrame4[2]};
    page.setBand(std::move(band));
}

} // namespace

void makeI2cPanelView(PageUi& page, frmVRK_User1& p) {
    page.setHelpPage("I2C panel");
    addPartMenu(page, p);
    auto* strips = new ChannelStrips(page, p);
    addHead(page, p, new ChannelPlot(page, p, [strips] { return strips->inHand(); }));
    page.addKey(QKeySequence(Qt::SHIFT | Qt::Key_F5), "Read all channels",
                [&p] { (void)p.cmdReadAllWipers[0].userClick(); });
    addSupplySection(page, p);
    addSetUpSection(page, p);
    addControlRegisterSection(page, p, {&p.Label2, &p.txtACRAddress, &p.lblProduct});
    addShutdownPinSection(page, p);
    addGeneralRegisterSection(page, p, {nullptr, &p.txtGPAddress, &p.lblProduct});
    addBankSection(page, p);
    addTenBitSection(page, p);
    addInstructionSection(page, p);
    addStoreSection(page, p);
    addStatusSection(page, p);
    page.addKey(QKeySequence(Qt::CTRL | Qt::Key_P), "Plot of the volts over the position",
                [&page] { page.openPlot(); });
    setBandOf(page, p);
    page.setFirstFocus(strips->entry());
    page.setContent(qt::block(column({strips})));
}

} // namespace vrk
