#include "link/frmMainF340.h"
#include "platform/qt/theme.h"
#include "views/pages/boxes.h"
#include "views/pages/consoleWords.h"
#include "views/pages/controllerTabs.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace vrk {

using namespace qt;

namespace {

/// One line a setting: its value, the command that sends it, the command that reads it, the reply.
QWidget* settingsBlock(PanelUi& ui, frmMainF340& p) {
    auto* positive = ui(p.cboAnamux[0], 15);
    auto* negative = ui(p.cboAnamux[1], 15);
    auto* positiveCode = readBack(ui, p.txtModeByte[0], 3, "Code of the positive input sent last");
    auto* negativeCode = readBack(ui, p.txtModeByte[1], 3, "Code of the negative input sent last");
    auto* clock = entry(ui, p.txtADOSC, 3, "Clock divider");
    auto* loops = entry(ui, p.txtADCLoopCount, 4, "Loop count");
    auto* high = entry(ui, p.txtADSAMP[0], 3, "Sample rate, first byte");
    auto* low = entry(ui, p.txtADSAMP[1], 3, "Sample rate, second byte");
    auto* lamp = ui.supplyLamp(p.ShpADCEn[0], "Converter enabled");
    return box(
        "On-chip converter",
        grid({
            {{}, columnTitle("Value"), {}, {}, columnTitle("Reply bytes (hex)")},
            {captionOf(p.cboAnamux[0], positive), row({positive, positiveCode, stretch}), ui(p.cmdMuxWrite),
             ui(p.cmdRdADMux),
             byteRow(ui, p.lblADMuxData, "Multiplexer reply",
                     {"RID", "Error", "AMXOP", "AMSON", "P0MDIN", "P0SKIP", "P1MDIN", "P1SKIP", "P2MDIN",
                      "P2SKIP", "P3MDIN", "P3SKIP", "P4MDIN"})},
            {captionOf(p.cboAnamux[1], negative), row({negative, negativeCode, stretch})},
            {"Converter", row({plainBox(ui, p.chkADCEnable), lamp, stretch}), ui(p.cmdADCWrEn),
             ui(p.cmdADCRDEnable), byteRow(ui, p.lblADCEnable, "Enable reply", {"RID", "Error", "AD0EN"})},
            {caption("Clock", clock), row({clock, quietText("hex"), stretch}), ui(p.cmdWriteADCClock),
             ui(p.cmdReadADCClock),
             byteRow(ui, p.lblADCClockDaa, "Clock reply", {"RID", "Error", "SysClock", "ADOSC"})},
            {"Mode", row({ui(p.OptiADCSamples[0]), ui(p.OptiADCSamples[1]), stretch}), ui(p.cmdADCWrmode1),
             ui(p.cmdADCRDMode16), byteRow(ui, p.lblADCMode1Data, "Mode reply", {"RID", "Error", "Mode"})},
            {caption("Loop count", loops), row({loops, quietText("1 to 255"), stretch}),
             ui(p.cmdWrtLoopCount), ui(p.cmdRdADCAvg),
             byteRow(ui, p.lblADCLoopData, "Loop count reply", {"RID", "Error", "Count"})},
            {caption("Sample rate", high), row({high, low, quietText("hex"), stretch}),
             ui(p.cmdADCWriteSampleRate), ui(p.cmdADCRdSampleRate),
             byteRow(ui, p.lblADCSampleData, "Sample rate reply",
                     {"RID", "Error", "Clock", "MSB Count", "LSB Count"})},
            {"REFCON",
             {},
             ui(p.cmdWrADCMode),
             ui(p.cmdRdADCMode),
             byteRow(ui, p.lblADCRefcon, "REFCON reply", {"RID", "Error", "REFCON"}),
             stretch},
        }));
}

QWidget* readingBlock(PanelUi& ui, frmMainF340& p) {
    auto* count = readBack(ui, p.txtADDec, 5, "Last count");
    count->setFont(valueFont(1.7));
    auto* readMode = ui(p.cboADCReadMode[0], 14);
    auto* sampleMode = ui(p.cboADCReadMode[1], 14);
    auto* written = ui.value(p.lblBytesSucceded, "000");
    written->setAccessibleName("Bytes written at the last read");
    return box("Reading", column({
                              grid({{captionOf(p.cboADCReadMode[0], readMode), readMode, stretch},
                                    {captionOf(p.cboADCReadMode[1], sampleMode), sampleMode}}),
                              row({ui(p.cmdADCRDData), stretch}),
                              row({caption("Count", count), count, stretch}),
                              row({"Bytes written", written, stretch}),
                              stretch,
                          }));
}

QWidget* externalBlock(PanelUi& ui, frmMainF340& p) {
    auto* first = entry(ui, p.txtADCReg[0], 3, "Register byte 1");
    auto* second = entry(ui, p.txtADCReg[1], 3, "Register byte 2");
    auto* wait = entry(ui, p.txtADCDelay[0], 3, "Delay byte");
    auto* count = ui.value(p.lblADDecimal[1], "-8388608");
    count->setAccessibleName("Count of the external converter");
    auto* millivolts = ui.value(p.lbl_ADReal, "-2500.00", 1.7);
    millivolts->setAccessibleName("Millivolts of the external converter");
    auto* decoded = ui.value(p.lblADRegRead, "00");
    decoded->setAccessibleName("Register of the external converter as read");
    for (QLabel* value : {static_cast<QLabel*>(count), static_cast<QLabel*>(millivolts)})
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return box(
        "External 24-bit converter (KV7150)",
        row({
            column({row({ui(p.cmdInitADCIO), quietText("sets port 1 up for it"), stretch}),
                    row({caption("Register bytes", first), first, second, caption("Delay", wait), wait,
                         quietText("hex"), stretch}),
                    row({ui(p.cmdWrtADReg), gap, "Reply",
                         block(byteRow(ui, p.lblAdRcv, "External converter reply",
                                       {"byte 1", "byte 2", "byte 3", "byte 4"})),
                         gap, "Register", decoded, stretch}),
                    stretch}),
            gap,
            gap,
            column({row({ui(p.cmdRD7150), stretch}),
                    grid({{"Input", right(millivolts), quietText("mV"), stretch}, {"Count", right(count)}}),
                    stretch}),
            stretch,
        }));
}

} // namespace

QWidget* makeAdcPage(PageUi& page, frmMainF340& p) {
    PanelUi& ui = page.ui();
    auto* settings = settingsBlock(ui, p);
    auto* reading = readingBlock(ui, p);
    auto* external = externalBlock(ui, p);
    auto* lower = row({reading, external});
    lower->setStretch(0, 1);
    lower->setStretch(1, 2);
    return block(column({settings, lower, stretch}));
}

} // namespace vrk
