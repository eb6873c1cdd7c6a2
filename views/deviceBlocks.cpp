#include "views/deviceBlocks.h"

#include "panels/DevicePanel.h"
#include "platform/qt/theme.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace vrk {

using namespace qt;

namespace {

QString onOff(const Lamp& lamp) {
    return lamp.colour() == Colour::Black ? "off" : "on";
}

/// A label whose width does not follow its text.
QLabel* steadyLabel(const QString& widest, double scale = 1.0) {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setFont(textFont(scale));
    label->setMinimumWidth(QFontMetrics(label->font()).horizontalAdvance(widest));
    return label;
}

/// "VCC ● on 4.996 V"
QBoxLayout* supplyWords(PanelUi& ui, const QString& name, Lamp& lamp, QWidget* value) {
    auto* state = steadyLabel("off", 1.2);
    ui.watch(lamp, [state, &lamp] { state->setText(onOff(lamp)); });
    state->setObjectName("band." + name);
    std::vector<Item> items{quietText(name), ui.mirror(lamp, LampWidget::Role::Supply), state};
    if (value != nullptr) {
        items.emplace_back(value);
        items.emplace_back(quietText("V"));
    }
    return tightRow(items);
}

} // namespace

QWidget* makeBand(PageUi& page, DevicePanel& panel, QLabel* part,
                  std::initializer_list<Control*> addressFields) {
    PanelUi& ui = page.ui();
    part->setFont(textFont(1.35, true));

    auto* bus = new QLabel;
    bus->setObjectName("band.bus");
    bus->setFont(valueFont(1.35));
    for (Control* field : addressFields)
        ui.watch(*field, [bus, &panel] { bus->setText(QString::fromStdString(panel.busName() + " " + panel.busAddress())); });

    auto* volts = new ValueLabel("00.000", 1.35);
    volts->setObjectName("band.volts");
    volts->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    ui.watch(panel.lblVCCVolts,
             [volts, &panel] { volts->setText(QString::fromStdString(panel.lblVCCVolts.caption())); });

    auto* linkLamp = new LampWidget;
    auto* linkText = steadyLabel("not opened", 1.2);
    linkText->setObjectName("band.link");
    page.onLinkShown([linkLamp, linkText](const LinkWords& words) {
        if (linkLamp->colour() != words.colour)
            linkLamp->setColour(words.colour);
        linkText->setText(words.state);
    });

    auto* band = new QFrame;
    band->setObjectName("band");
    band->setAutoFillBackground(true);
    band->setBackgroundRole(QPalette::AlternateBase);
    auto* content = row({part, gap, bus, stretch, supplyWords(ui, "VCC", panel.ShpVCCon, volts), gap, gap,
                         supplyWords(ui, "V−", panel.ShVM, nullptr), gap, gap,
                         tightRow({quietText("Link"), linkLamp, linkText})});
    content->setContentsMargins(kUnit, kUnit, kUnit, kUnit);
    band->setLayout(content);
    return band;
}

QWidget* makeSupplyBlock(PageUi& page, DevicePanel& panel) {
    PanelUi& ui = page.ui();
    auto* volts = ui.value(panel.lblVCCVolts, "00.000", 1.35);
    volts->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* level = ui(panel.CboVCC, 6);
    auto* user = ui(panel.txtUserVCC, 3);
    auto* userCaption = ui(panel.lblUserVCC);
    userCaption->setBuddy(user);
    auto* offset = ui(panel.txtADOffset, 6);
    auto* gain = ui(panel.txtADGain, 6);
    return group(
        "Supply",
        grid({
            {"VCC",
             tightRow(
                 {ui.supplyLamp(panel.ShpVCCon, "VCC"), ui(panel.OptVCC[0]), ui(panel.OptVCC[1]), stretch}),
             ui(panel.ChkTrack)},
            {"V−",
             tightRow({ui.supplyLamp(panel.ShVM, "V−"), ui(panel.OptVM[0]), ui(panel.OptVM[1]), stretch})},
            {caption("Level", level), level, ui(panel.cmdUpdateVCC)},
            {"Measured", tightRow({volts, quietText("V"), stretch}), ui(panel.cmdReadVCC)},
            {"Code", tightRow({ui.value(panel.lblSPICode, "00"), gap, userCaption, user, stretch})},
            {"AD Calibration", tightRow({caption("Offset", offset), offset, quietText("V"), stretch}),
             tightRow({caption("Gain", gain), gain, stretch})},
        }));
}

QWidget* makeStatusBlock(PageUi& page, DevicePanel& panel) {
    PanelUi& ui = page.ui();
    const auto line = [&](Lamp& lamp, int index) -> std::vector<Item> {
        return {ui(lamp, QString::fromStdString(panel.lblUSBChk[index].caption())),
                ui(panel.lblUSBChk[index])};
    };
    const auto pair = [&](std::vector<Item> left, const std::vector<Item>& right) {
        left.emplace_back(gap);
        left.insert(left.end(), right.begin(), right.end());
        return left;
    };
    return group("Status", grid({
                               pair(line(panel.ShpAttach, 0), line(panel.Shp_USB_Transfer, 5)),
                               pair(line(panel.Shape1[1], 1), line(panel.Shape1[2], 2)),
                               pair(line(panel.Shape1[4], 4), line(panel.Shape1[3], 3)),
                           }));
}

} // namespace vrk
