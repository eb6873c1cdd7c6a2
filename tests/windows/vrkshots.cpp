/// Writes a picture of every window of a bench at work: `vrkshots FOLDER [--light | --dark]`. The device
/// pixel ratio comes from QT_SCALE_FACTOR.

#include "platform/qt/theme.h"
#include "tests/windows/WindowBench.h"
#include "views/HelpWindow.h"
#include "views/WiperPlot.h"

#include <QDir>
#include <QFontDatabase>
#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace vrk;

namespace {

constexpr int kSettleMs = 250; ///< longer than any state that the windows show with a delay

int shoot(QWidget& window, const QString& folder, const QString& name) {
    // The offscreen platform's screen is small; the picture is to show the whole window.
    if (auto* panel = dynamic_cast<PanelWindow*>(&window))
        panel->resize(panel->wantedSize());
    QTest::qWait(kSettleMs);
    const QString path = folder + "/" + name + ".png";
    if (!window.grab().save(path)) {
        std::fprintf(stderr, "vrkshots: cannot write %s\n", qPrintable(path));
        return 1;
    }
    std::printf("%s\n", qPrintable(path));
    return 0;
}

/// Sets every channel and reads it back, then sweeps channel 0 and 1 for the picture of volts over position.
void workThePart(frmVRK_User1& panel) {
    (void)panel.mnu_KV4074.userClick();
    (void)panel.OptVCC[0].userClick();
    for (int channel = 0; channel < WiperPanel::kChannels; ++channel) {
        panel.txtDECDataWrt[channel].userSelect(0, 9);
        for (const char digit : std::to_string(24 + 29 * channel))
            (void)panel.txtDECDataWrt[channel].userKey(digit);
        (void)panel.txtDECDataWrt[channel].userEnter();
        (void)panel.cmdI2Read[channel].userClick();
    }
    (void)panel.cmdACRRead.userClick();
}

void sweep(frmVRK_User1& panel) {
    for (const int channel : {0, 1})
        for (int position = 1; position <= 128; position += channel == 0 ? 8 : 13) {
            (void)panel.Slider1[channel].userDrag(position);
            (void)panel.cmdI2Read[channel].userClick();
        }
}

int shootAll(const QString& folder, const QString& shade) {
    const auto name = [&shade](const char* window) { return QString(window) + "-" + shade; };
    int failures = 0;
    WindowBench bench(folder.toStdString());
    Bench& b = bench.bench;
    failures += shoot(*bench.windows.window("frmStartup"), folder, name("start"));

    (void)b.events().deliver([&b] { b.Doco.load(); });
    (void)b.Doco->ChkTrace[2].userClick();
    (void)b.Doco->chkTRDetail.userClick();
    (void)b.frmStartup->cboVRKSelect.userSelect(2);
    PanelWindow& i2c = *bench.windows.window("frmVRK_User1");
    failures += shoot(i2c, folder, name("i2c-manual"));
    workThePart(*b.frmVRK_User1);
    failures += shoot(i2c, folder, name("i2c"));
    sweep(*b.frmVRK_User1);
    if (auto* plot = i2c.findChild<QWidget*>("wiperPlotWindow")) {
        plot->show();
        failures += shoot(*plot, folder, name("i2c-volts"));
        plot->hide();
    }
    for (PanelSlotBase* slot : b.panels()) {
        if (slot->visible() || slot->name() == "frmStartup")
            continue;
        (void)b.events().deliver([slot] { slot->show(); });
        if (slot == &b.ProductExec)
            (void)b.events().deliver([&b] {
                b.ProductExec->ReadParameters(std::string(VRK_EXAMPLES) + "/parts-I2C.csv");
                b.ProductExec->Frame1.setVisible(true);
                (void)b.ProductExec->tGrid.userSelect(2, 0);
            });
        if (auto* window = bench.windows.window(slot->name()))
            failures += shoot(*window, folder, name(slot->name().c_str()));
    }
    i2c.showKeys();
    if (auto* keys = i2c.findChild<QWidget*>("keys"))
        failures += shoot(*keys, folder, name("keys"));
    HelpWindow& help = HelpWindow::showPage(i2c, i2c.helpPage());
    failures += shoot(help, folder, name("help"));
    help.close();
    return failures;
}

} // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 2 || arguments[1].startsWith('-')) {
        std::fputs("usage: vrkshots FOLDER [--light | --dark]\n", stderr);
        return 2;
    }
    QApplication::setApplicationDisplayName("VRK Bench");
    QApplication::setQuitOnLastWindowClosed(false);
    // One family on every machine, so that pictures can be compared.
    QApplication::setFont(QFont("DejaVu Sans", 10));
    const QString& folder = arguments[1];
    QDir().mkpath(folder);
    int failures = 0;
    if (!arguments.contains("--dark")) {
        qt::applyTheme(application, qt::Shade::Light);
        failures += shootAll(folder, "light");
    }
    if (!arguments.contains("--light")) {
        qt::applyTheme(application, qt::Shade::Dark);
        failures += shootAll(folder, "dark");
    }
    return failures == 0 ? 0 : 1;
}
