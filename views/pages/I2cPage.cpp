#include "panels/i2c/frmVRK_User1.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "views/blocks/ChannelStrips.h"
#include "views/blocks/blocks.h"
#include "views/blocks/rows.h"
#include "views/blocks/wiperPage.h"
#include "views/pages/pageMakers.h"
#include "views/plot/ChannelPlot.h"
#include "views/workspace/Page.h"
#include "views/workspace/Section.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace vrk {

using namespace qt;

namespace {

void addSetUpSection(PageUi& page, frmVRK_User1& p) {
    auto* clock = page.ui()(p.cboI2CClock, 8);
    clock->setFixedWidth(dp(72));
    Section& section =
        page.addSection("Set-up", qt::block(rows({
                                      channelChoice(page, p),
                                      sizeRow(page, p),
                                      addressRows(page, p, "Address"),
                                      row({caption(plainCaption(p.cboI2CClock), clock), stretch, clock}),
                                  })));
    showPart(page, section, p);
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
        untitled(page, p.Frq4422,
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
    page.addSection(p.frq331x, "Q3318/9", untitled(page, p.frq331x, rows({grid(lines), grid(transfers)})));
}

} // namespace

void makeI2cPanelView(PageUi& page, frmVRK_User1& p) {
    page.setHelpPage("I2C panel");
    addPartMenu(page, p);
    auto* strips = new ChannelStrips(page, p);
    addWiperHead(page, p, new ChannelPlot(page, p, [strips] { return strips->inHand(); }));
    addSupplySection(page, p);
    addSetUpSection(page, p);
    addControlRegisterSection(page, p, {&p.Label2, &p.txtACRAddress, &p.lblProduct});
    addShutdownPinSection(page, p);
    addGeneralRegisterSection(page, p, {nullptr, &p.txtGPAddress, &p.lblProduct});
    addBankSection(page, p);
    addTenBitSection(page, p);
    addQuadSection(page, p, "Q4410/9");
    addStoreSection(page, p);
    addStatusSection(page, p);
    setWiperBand(page, p);
    page.setFirstFocus(strips->entry());
    page.setContent(qt::block(column({strips})));
}

} // namespace vrk
