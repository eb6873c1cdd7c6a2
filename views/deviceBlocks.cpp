#include "views/deviceBlocks.h"

#include "panels/DevicePanel.h"
#include "platform/qt/theme.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace vrk {

using namespace qt;

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
