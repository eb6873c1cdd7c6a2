#include "panels/i2c/frmVRK_User1.h"
#include "platform/qt/theme.h"
#include "views/WiperPlot.h"
#include "views/WiperStrip.h"
#include "views/deviceBlocks.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>

#include <array>

namespace vrk {

using namespace qt;

namespace {

QWidget* partBlock(PanelUi& ui, frmVRK_User1& p) {
    std::vector<Item> taps;
    for (auto& option : p.OptTaps)
        taps.emplace_back(ui(*option));
    auto* addressSize = ui(p.cboRegSize, 8);
    auto* dataSize = ui(p.cboDataSize, 8);
    return group(
        "Part",
        column({
            row({"Channels", ui(p.OptChans[0]), ui(p.OptChans[1]), ui(p.OptChans[2]), stretch}),
            grid({{"Taps", taps[0], taps[1], taps[2], taps[3]}, {{}, taps[4], taps[5], taps[6], taps[7]}}),
            grid({{caption("Address Size", addressSize), addressSize, stretch},
                  {caption("Data Size", dataSize), dataSize}}),
        }));
}

QWidget* addressBlock(PanelUi& ui, frmVRK_User1& p) {
    auto* address = ui(p.txtDeviceAdr, 4);
    auto* computed = ui(p.txtCalcAddr, 4);
    auto* clock = ui(p.cboI2CClock, 8);
    return group(
        "I2C bus",
        column({
            grid({{caption("Address", address), address, quietText("hex"), ui(p.cmdSlave), stretch}}),
            keepsPlace(ui.frame(p.fraADDRSelect, {},
                                column({row({"Pins", ui(p.chkI2CAdr[0]), ui(p.chkI2CAdr[1]),
                                             ui(p.chkI2CAdr[2]), ui(p.chkI2CAdr[3]), stretch}),
                                        row({caption("From pins", computed), computed, quietText("hex"),
                                             ui(p.cmdCopyAdr), stretch})}))),
            row({caption(plainCaption(p.cboI2CClock), clock), clock, stretch}),
        }));
}

QWidget* controlRegisterBlock(PanelUi& ui, frmVRK_User1& p) {
    auto* address = ui(p.txtACRAddress, 3);
    address->setAccessibleName("Control register's address");
    auto* addressCaption = ui(p.Label2);
    addressCaption->setBuddy(address);
    makeQuiet(*addressCaption);
    auto* toWrite = ui(p.txtACR[0], 3);
    auto* asRead = ui(p.txtACR[1], 3);
    return ui.frame(p.SSFrame2, "Control register",
                    grid({{addressCaption, address, quietText("hex")},
                          {caption("To write", toWrite), toWrite, quietText("hex"), ui(p.cmdACRWrite),
                           ui(p.Shape2[0], "ACR write"), stretch},
                          {caption("As read", asRead), asRead, quietText("hex"), ui(p.cmdACRRead),
                           ui(p.Shape2[1], "ACR read")},
                          {"Wiper to", wide(row({ui(p.Option1[0]), ui(p.Option1[1]), stretch}), 5)}}));
}

QWidget* shutdownBlock(PanelUi& ui, frmVRK_User1& p) {
    auto* warning = keepsPlace(ui(p.lblShutDown));
    warning->setFont(textFont(1.0, true));
    // The pin's box stays where the register's goes: every part has the pin.
    return block(column({
        ui.frame(p.FrmShutdown, "Shutdown", row({ui(p.chkShutdown), gap, warning, stretch})),
        ui(p.ChkShutDown2),
    }));
}

QWidget* generalRegisterBlock(PanelUi& ui, frmVRK_User1& p) {
    auto* address = ui(p.txtGPAddress, 3);
    auto* value = ui(p.txtGPWrite, 3);
    return ui.frame(p.frmRegisterWrite, "General purpose register",
                    grid({{caption("Register", address), address, quietText("hex"), wide(ui(p.lblGDRs), 3)},
                          {caption("To write", value), value, quietText("hex"), ui(p.cmdWriteGP),
                           ui(p.Shape2[2], "Register write"), stretch},
                          {"As read", ui.value(p.lblGPRead, "00"), quietText("hex"), ui(p.cmdGPRead),
                           ui(p.Shape2[3], "Register read")}}));
}

/// Ten-bit wiper and four data registers: one line a register.
QWidget* tenBitBlock(PanelUi& ui, frmVRK_User1& p) {
    static constexpr std::array<const char*, 5> kNames = {"Wiper", "Data 0", "Data 1", "Data 2", "Data 3"};
    std::vector<std::vector<Item>> rows{{{}, "To write", {}, "As read", {}, "Transfer"}};
    for (int index = 0; index < p.txtWrQ3319.count(); ++index) {
        auto* value = ui(p.txtWrQ3319[index], 4);
        const QString name = kNames.at(static_cast<std::size_t>(index));
        std::vector<Item> line{caption(name, value), value, ui(p.CMDq331X_Write[index], "Write " + name),
                               ui.value(p.lblRdq331x[index], "000"),
                               ui(p.CMDq331X_Read[index], "Read " + name)};
        if (index > 0) {
            line.emplace_back(ui(p.cmdQ331xDatatoWiper[index - 1]));
            line.emplace_back(ui(p.cmdQ331xWipertoData[index - 1]));
        }
        line.emplace_back(stretch);
        rows.push_back(line);
    }
    return ui.frame(p.frq331x, {}, grid(rows));
}

/// Four banks of data registers, and the part's pins moved by hand.
QWidget* bankBlock(PanelUi& ui, frmVRK_User1& p) {
    std::vector<Item> pins{"Pins"};
    for (auto& pin : p.Chq4422)
        pins.emplace_back(ui(*pin));
    pins.emplace_back(stretch);
    std::vector<Item> banks{"Bank"};
    for (auto& bank : p.opt4422)
        banks.emplace_back(ui(*bank));
    banks.emplace_back(gap);
    banks.emplace_back(ui.value(p.lblBank, "XXXX"));
    banks.emplace_back(stretch);
    return ui.frame(
        p.Frq4422, "Banks and pins",
        column({row(banks), row(pins),
                row({ui(p.cmdUp[0]), ui(p.cmdUp[1]), ui(p.cmdUp[2]), gap, ui(p.cmdRdAllq44),
                     ui(p.cmdSampleq44), ui(p.ChkAutoSample), gap, ui(p.cdmAuto_Init), stretch})}));
}

void addPartMenu(PageUi& page, frmVRK_User1& p) {
    QMenu* menu = page.menu("Device Select");
    PanelUi& ui = page.ui();
    for (MenuEntry* entry : {&p.mnu_I2cList, &p.mnu_KV4071, &p.mnu_KV4074, &p.mnuKV4078, &p.mnuKV6021}) {
        QAction* action = ui(*entry);
        action->setParent(menu);
        menu->addAction(action);
    }
    ui.tieMenu(p.mnuDeviceSelect, *menu->menuAction());
}

} // namespace

void makeI2cPanelView(PageUi& page, frmVRK_User1& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("I2C panel");
    addPartMenu(page, p);

    std::vector<WiperStrip*> strips;
    std::vector<Item> channels;
    for (int channel = 0; channel < WiperPanel::kChannels; ++channel) {
        strips.push_back(new WiperStrip(page, p, channel));
        if (channel > 0)
            channels.emplace_back(separator(Qt::Vertical));
        channels.emplace_back(strips.back());
    }
    // As wide as one in use, so that the others stay where they are when channels come and go.
    const int width = strips.front()->sizeHint().width();
    for (WiperStrip* strip : strips)
        strip->setMinimumWidth(width);
    auto* picture = new QPushButton("Volts over Position…");
    picture->setObjectName("voltsOverPosition");
    new WiperPlotView(page, p);
    QObject::connect(picture, &QPushButton::clicked, picture, [&page] { page.openPlot(); });

    auto* setUp = column({partBlock(ui, p), gap, addressBlock(ui, p), gap, makeStatusBlock(page, p), stretch,
                          row({ui(p.cmdMMenu), stretch})});
    auto* work =
        column({row(channels), row({ui(p.cmdReadAllWipers[0]), ui(p.cmdReadAllWipers[1]), stretch, picture}),
                tenBitBlock(ui, p), bankBlock(ui, p), ui.frame(p.Frq4410Show, {}, row({stretch})), stretch});
    auto* side = column({makeSupplyBlock(page, p), gap, controlRegisterBlock(ui, p), gap,
                         shutdownBlock(ui, p), gap, generalRegisterBlock(ui, p), stretch});
    auto* part = ui(p.lblProduct);
    auto* content = column({row({part, stretch}), row({setUp, gap, separator(Qt::Vertical), gap, work, gap,
                                                       separator(Qt::Vertical), gap, side})});
    const auto channelInHand = [strips] {
        for (std::size_t at = 0; at < strips.size(); ++at)
            if (strips[at]->hasKeyboard())
                return static_cast<int>(at);
        return 0;
    };
    page.onRead("Read the channel that has the keyboard, else channel 0",
                [&p, channelInHand] { (void)p.cmdI2Read[channelInHand()].userClick(); });
    page.onWrite("Write the channel that has the keyboard, else channel 0",
                 [&p, channelInHand] { (void)p.CMDxMIT[channelInHand()].userClick(); });
    page.addKey(QKeySequence(Qt::SHIFT | Qt::Key_F5), "Read all channels",
                [&p] { (void)p.cmdReadAllWipers[0].userClick(); });
    for (int channel = 0; channel < WiperPanel::kChannels; ++channel)
        page.addKey(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + channel)),
                    QString("Go to channel %1").arg(channel),
                    [strip = strips[static_cast<std::size_t>(channel)]] { strip->focusEntry(); });
    page.addKey(QKeySequence(Qt::CTRL | Qt::Key_P), "Picture of the volts over the position",
                [&page] { page.openPlot(); });
    page.setContent(block(content));
    strips.front()->focusEntry();
}

} // namespace vrk
