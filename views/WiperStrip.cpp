#include "views/WiperStrip.h"

#include "panels/WiperPanel.h"
#include "platform/qt/theme.h"
#include "views/workspace/Page.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QPushButton>

namespace vrk {

using namespace qt;

namespace {

constexpr int kListRows = 5;

/// A lamp beside the button that caused the transaction: the panel's lamp tells of any channel, this one of
/// its own.
LampWidget* resultLamp(PanelUi& ui, WiperPanel& panel, int channel, WiperPanel::Transfer kind,
                       const QString& name) {
    auto* lamp = new LampWidget;
    lamp->setObjectName(name);
    lamp->setToolTip("Result of the last transaction of this channel");
    lamp->setAccessibleName(lamp->toolTip());
    Lamp& panelLamp = panel.Shape1[kind == WiperPanel::Transfer::Write ? 1 : 2];
    ui.keep(panel.observeTransfers([lamp, &panelLamp, channel, kind](const WiperPanel::Transferred& done) {
        if (done.channel != channel || done.kind != kind)
            return;
        lamp->setColour(panelLamp.colour());
        lamp->blink();
    }));
    return lamp;
}

template <class Widget>
Widget* withoutMnemonic(Widget* widget) {
    keepWithoutMnemonic(*widget);
    return widget;
}

QPushButton* narrow(QPushButton* button) {
    keepWithoutMnemonic(*button);
    button->setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
    return button;
}

} // namespace

WiperStrip::WiperStrip(PageUi& page, WiperPanel& panel, int channel) {
    PanelUi& ui = page.ui();
    const QString number = QString::number(channel);

    auto* title = heading("Channel " + number, 1.1);
    ui.watch(panel.SSFrame4[channel], [title, number, frame = &panel.SSFrame4[channel]] {
        title->setEnabled(frame->visible());
        title->setText(frame->visible() ? "Channel " + number : "Channel " + number + " unused");
    });

    auto* position = ui.value(panel.lblPotRead[channel], "0000", 3.4);
    position->setAccessibleName("Position read, channel " + number);
    auto* hex = ui.value(panel.lblPotReadhex[channel], "000", 1.7);
    hex->setAccessibleName("Position read, hexadecimal, channel " + number);
    auto* volts = ui.value(panel.lblWiperVolts[channel], "00.000", 1.7);
    volts->setAccessibleName("Wiper volts, channel " + number);
    for (QLabel* value :
         {static_cast<QLabel*>(position), static_cast<QLabel*>(hex), static_cast<QLabel*>(volts)})
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* bar = ui(panel.ProgressBar1[channel]);
    bar->setAccessibleName("Position read as a bar, channel " + number);
    auto* source = ui(panel.lblChanRcvr[channel]);
    makeQuiet(*source);
    auto* readBlock =
        keepsPlace(ui.frame(panel.SSFrame4[channel], {},
                            tightColumn({row({quietText("Read from"), source, stretch}), right(position),
                                         right(block(tightRow({hex, quietText("hex")}))),
                                         right(block(tightRow({volts, quietText("V")}))), gap, bar})));

    auto* target = ui(panel.lblChanSend[channel]);
    makeQuiet(*target);
    auto* decimal = ui(panel.txtDECDataWrt[channel], 5);
    entry_ = ui(panel.txtHexDataWrt[channel], 5);
    decimal->setAccessibleName("Position to write, decimal, channel " + number);
    entry_->setAccessibleName("Position to write, hexadecimal, channel " + number);
    auto* list = ui(panel.List1[channel], kListRows, 5);
    list->setToolTip("Scroll to a position, then click it to write it");
    list->setAccessibleName("Positions, channel " + number);
    auto* slider = ui(panel.Slider1[channel]);
    slider->setAccessibleName("Position, channel " + number);
    auto* factor = ui(panel.txtFactor[channel], 4);
    auto* writeBlock = keepsPlace(ui.frame(
        panel.SSFrame3[channel], {},
        column(
            {row({quietText("Write to"), target, stretch}), slider,
             tightRow({withoutMnemonic(caption("Dec", decimal)), decimal, stretch,
                       withoutMnemonic(caption("Hex", entry_)), entry_}),
             tightRow(
                 {narrow(ui(panel.CMDxMIT[channel])),
                  resultLamp(ui, panel, channel, WiperPanel::Transfer::Write, "written(" + number + ")")}),
             tightRow({narrow(ui(panel.cmdI2Read[channel])),
                       resultLamp(ui, panel, channel, WiperPanel::Transfer::Read, "read(" + number + ")")}),
             row({withoutMnemonic(ui(panel.ChkAutoRead[channel])), stretch}),
             narrow(ui(panel.cmdSampleWiper[channel])), list,
             tightRow({withoutMnemonic(caption("AD factor", factor)), stretch, factor})})));

    setLayout(column({title, readBlock, writeBlock, stretch}));
    layout()->setContentsMargins(0, 0, 0, 0);
}

bool WiperStrip::hasKeyboard() const {
    const QWidget* focus = QApplication::focusWidget();
    return focus != nullptr && isAncestorOf(focus);
}

void WiperStrip::focusEntry() {
    entry_->setFocus(Qt::ShortcutFocusReason);
}

} // namespace vrk
