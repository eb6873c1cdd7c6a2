/// Writes pictures of the workspace at work: `vrkshots FOLDER [--light | --dark]`, at 1280 x 720 and
/// 1600 x 1000. The device pixel ratio comes from QT_SCALE_FACTOR; at 2 the workspace also stands on a screen
/// of 1280 x 720, which is half as large.

#include "platform/files/files.h"
#include "platform/qt/theme.h"
#include "tests/windows/WindowBench.h"
#include "views/pages/scriptRows.h"
#include "views/workspace/Dock.h"
#include "views/workspace/Help.h"

#include <QApplication>
#include <QDir>
#include <QFontDatabase>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace vrk;

namespace {

constexpr int kSettleMs = 260; ///< longer than any state that the window shows with a delay

/// One shade of the workspace in its two sizes.
class Shooter {
  public:
    Shooter(WindowBench& bench, QString folder, QString shade)
        : bench_(bench), folder_(std::move(folder)), shade_(std::move(shade)) {}
    int failures() const { return failures_; }

    void shoot(const char* name) {
        std::vector<QSize> sizes = {QSize(1280, 720), QSize(1600, 1000)};
        if (bench_.workspace.devicePixelRatio() > 1) // a screen of 1280 x 720 at 200%
            sizes.emplace_back(640, 360);
        for (const QSize size : sizes) {
            bench_.workspace.resize(size);
            save(bench_.workspace, QString("%1-%2-%3").arg(name, shade_).arg(size.width()));
            if (size.width() == 1280)
                forManual(name, bench_.workspace.grab().toImage());
        }
    }
    /// The manual shows light ones of the ordinary size, in few colours: they are part of the programs.
    void forManual(const QString& name, const QImage& picture) {
        if (shade_ != "light" || picture.devicePixelRatio() != 1.0)
            return;
        QDir().mkpath(folder_ + "/manual");
        write(picture.convertToFormat(QImage::Format_Indexed8, Qt::ThresholdDither),
              folder_ + "/manual/" + name + ".png");
    }
    void save(QWidget& widget, const QString& name) {
        QTest::qWait(kSettleMs);
        QTest::qWait(kSettleMs); // where painting alone has filled the first, layouts follow in the second
        write(widget.grab().toImage(), folder_ + "/" + name + ".png");
    }
    void write(const QImage& picture, const QString& path) {
        if (picture.save(path)) {
            std::printf("%s\n", qPrintable(path));
        } else {
            std::fprintf(stderr, "vrkshots: cannot write %s\n", qPrintable(path));
            ++failures_;
        }
    }
    void popup(const char* name) {
        if (QWidget* shown = QApplication::activePopupWidget()) {
            save(*shown, QString("%1-%2").arg(name, shade_));
            shown->close();
        }
    }

  private:
    WindowBench& bench_;
    QString folder_;
    QString shade_;
    int failures_ = 0;
};

/// Sets every channel and reads it back, then sweeps channel 0 and 1 for the picture of volts over position.
void workChannels(WiperPanel& panel) {
    for (int channel = 0; channel < WiperPanel::kChannels; ++channel) {
        panel.txtDECDataWrt[channel].userSelect(0, 9);
        for (const char digit : std::to_string(24 + 29 * channel))
            (void)panel.txtDECDataWrt[channel].userKey(digit);
        (void)panel.txtDECDataWrt[channel].userEnter();
        (void)panel.cmdI2Read[channel].userClick();
    }
    (void)panel.cmdACRRead.userClick();
}

void workThePart(frmVRK_User1& panel) {
    (void)panel.mnu_KV4074.userClick();
    (void)panel.OptVCC[0].userClick();
    workChannels(panel);
}

void sweep(frmVRK_User1& panel) {
    for (const int channel : {0, 1})
        for (int position = 1; position <= 128; position += channel == 0 ? 8 : 13) {
            (void)panel.Slider1[channel].userDrag(position);
            (void)panel.cmdI2Read[channel].userClick();
        }
}

/// Leaves the journal of a run as a program does that was killed half-way.
void offerTheRun(const std::filesystem::path& runs) {
    for (const auto& entry : std::filesystem::directory_iterator(runs)) {
        const std::string whole = readFile(entry.path());
        replaceFile(entry.path(), whole.substr(0, whole.find("\"loop\":400,")));
    }
}

void shootPinPages(WindowBench& bench, Shooter& shooter, const QString& folder) {
    Bench& b = bench.bench;
    const std::filesystem::path runs = folder.toStdString() + "/runs";
    std::filesystem::remove_all(runs);
    b.runInHome().folder = runs;
    bench.bus.socket("UPDN100");
    (void)b.frmStartup->cboVRKSelect.userSelect(frmStartup::kUpDown);
    frmVRK_UD1& upDown = *b.frmVRK_UD1;
    (void)upDown.OptVCC[0].userClick();
    (void)upDown.OptChans[1].userClick();
    (void)upDown.ChlAutoCS[0].userClick();
    (void)upDown.cmdSequence[0].userClick();
    (void)upDown.cmdIncr[0].userClick();
    shooter.shoot("updown");
    UPDN_Runin& runIn = *b.UPDN_Runin;
    (void)upDown.cmdRunin.userClick();
    runIn.chkJournal.setValue(1);
    runIn.txtTestQty.setText("800");
    runIn.txtLogSteps.setText("200");
    bench.bus.fault({.kind = sim::FaultKind::Noise, .times = 100000, .counts = 3});
    const auto underWay = runIn.observeStages([&shooter](const RunInStage& stage) {
        if (stage.loop == 603) // its row is done, the next one has not begun
            shooter.shoot("runin-running");
    });
    (void)runIn.cmdRunInitial.userClick();
    shooter.shoot("runin");
    offerTheRun(runs);
    runIn.Form_Activate();
    (void)runIn.cmdShowRun.userClick();
    shooter.shoot("runin-offered");
    bench.bus.clear(); // with noise the part might be taken to be elsewhere
    (void)runIn.cmdResumeRun.userClick();
    shooter.shoot("runin-resumed");
    (void)upDown.cmdMMenu.userClick();
    bench.bus.socket("PB64");
    (void)b.frmStartup->cboVRKSelect.userSelect(frmStartup::kPushButton);
    frmVRK_PB1& buttons = *b.frmVRK_PB1;
    (void)buttons.OptVCC[0].userClick();
    (void)buttons.ChlAutoCS[1].userClick();
    (void)buttons.cmdIncr[0].userClick();
    shooter.shoot("pushbutton");
    (void)buttons.cmdMMenu.userClick();
    bench.bus.socket("KV4074");
}

/// Under way with the file of before behind it, ended and reviewed, ended with what speaks against saving.
void shootCalibration(WindowBench& bench, Shooter& shooter, const QString& folder) {
    Bench& b = bench.bench;
    const std::string file = (folder + "/VRK_Cal_Data.txt").toStdString();
    replaceFile(file, "VRK VCC Calibration 2019-06-12 15:40:21\r\nVREF , 3.3\r\n2.7,2A,1.35,2.70\r\n"
                      "3.0,33,1.50,3.00\r\n3.3,3C,1.65,3.30\r\n3.5,42,1.75,3.50\r\n4.0,51,2.00,4.00\r\n"
                      "4.5,60,2.25,4.50\r\n5.0,70,2.50,5.00\r\nEND\r\n");
    bench.bus.clear(); // the run-in test's noise
    bench.bus.socket(std::nullopt);
    (void)b.frmStartup->cboVRKSelect.userSelect(frmStartup::kCalibrate);
    FrmVCCCal& calibration = *b.FrmVCCCal;
    shooter.shoot("calibration");
    bool shot = false;
    const auto watch = calibration.observeRuns([&](FrmVCCCal::Change change) {
        if (change == FrmVCCCal::Change::Measured && calibration.lastRun().points.size() == 77 &&
            !std::exchange(shot, true))
            shooter.shoot("calibration-running");
    });
    (void)calibration.cmdDoVCC_Cal.userClick();
    shooter.shoot("calibration-reviewed");
    bench.bus.fault({.kind = sim::FaultKind::Noise, .times = 30000, .counts = 9});
    (void)calibration.txtVrefCal.userType("3.1");
    b.events().runDue();
    (void)calibration.txtVrefCal.userLeave();
    (void)calibration.cmdDoVCC_Cal.userClick();
    shooter.shoot("calibration-failed");
    bench.bus.clear();
    (void)calibration.txtVrefCal.userType("3.3"); // every panel measures with it
    b.events().runDue();
    (void)calibration.txtVrefCal.userLeave();
    (void)calibration.cmdReturn.userClick();
    std::filesystem::remove(file);
    bench.bus.socket("KV4074");
}

/// A script with every kind of row, one of which fails and one warns.
constexpr const char* kScript =
    "# limits.txt: wiper limits and ACR\n`A50\n02,80, # WR register\n00,3F, # mid scale\n"
    "`w100\n00,,3F # check\n00,7F,7F # top\n00,00,00 # bottom\n00,40,40\n"
    "00,FF,FF # reads back 7F\n00,2A,2A # stored\n`w400\n00,,2A # after the store\n"
    "02,80,80 # WR register again\n00,15,15\n`w # look at the scope\n"
    "03,55,55 # general register\n`G1234\n00,00,00\n`S\n`ENDM\n";

/// Loaded, running, paused at a breakpoint, failed with its bytes in the dock.
void shootScript(WindowBench& bench, Shooter& shooter, const QString& folder) {
    Bench& b = bench.bench;
    bench.bus.socket("KV4071");
    (void)b.frmVRK_User1->mnu_KV4071.userClick();
    (void)b.frmVRK_User1->mnuScriptShow.userClick();
    frmScriptOps& script = *b.frmScriptOps;
    const std::string path = (folder + "/limits.txt").toStdString();
    replaceFile(path, kScript);
    script.openFile(path);
    bench.workspace.dock().setFolded(true);
    shooter.shoot("script-loaded");
    (void)script.cmdRehearse.userClick();
    script.debugger().setBreakpoints({13, 19});
    bool running = false;
    const auto watch = script.observeRows([&](int row, bool began) {
        if (row == 7 && began && !std::exchange(running, true))
            shooter.shoot("script-running");
    });
    QTimer paused;
    QObject::connect(&paused, &QTimer::timeout, [&] {
        if (!script.debugger().paused())
            return;
        paused.stop();
        shooter.shoot("script-paused");
        if (auto* table = dynamic_cast<StepTable*>(bench.workspace.page("frmScriptOps")->find("vbalGrid1")))
            table->mark(10);
        shooter.shoot("script-failed");
        (void)script.cmdAbort.userClick();
    });
    paused.start(50);
    (void)script.cmdExecAll.userClick();
}

/// All registers filled and read, one transferred, one written otherwise, one that was not heard.
void workRegisters(WindowBench& bench, InstructionPanel& panel) {
    (void)panel.cmdFillRegs.userClick();
    (void)panel.cmdReadAll.userClick();
    advance(bench.events, bench.clock, Milliseconds{38000});
    (void)panel.OptInstruction[4].userClick();
    (void)panel.OptWiper[1].userClick();
    (void)panel.OptRegSel[2].userClick();
    (void)panel.cmdDoInstruction.userClick();
    panel.lblRdData[15].markStale("the last read failed", true);
    (void)panel.cmdRDData[9].userClick();
    (void)panel.txtWrData[9].userType("09");
    bench.events.runDue();
    (void)panel.txtWrData[9].userLeave();
}

/// With an increment run under way, which is ended.
void shootIncrements(Shooter& shooter, InstructionPanel& panel, const char* name) {
    (void)panel.OptInstruction[8].userClick();
    (void)panel.OptWiper[2].userClick();
    (void)panel.cmdDoInstruction.userClick();
    for (const int step : {0, 0, 1})
        (void)panel.cmdIncrWip[step].userClick();
    shooter.shoot(name);
    (void)panel.cmdIncrWip[2].userClick();
}

/// The parts on SPI that are told by instructions.
void shootSpiInstructions(WindowBench& bench, Shooter& shooter) {
    Bench& b = bench.bench;
    frmVRK_SPI1& device = *b.frmVRK_SPI1;
    const auto choose = [&](const char* part, const char* product, const char* bytes) {
        bench.bus.socket(part);
        const bool quad = bytes[0] == '3';
        (void)b.events().deliver([&] {
            device.OptChans[quad ? 2 : 0].setValue(true);
            device.OptTaps[quad ? 5 : 7].setValue(true);
            device.lblProduct.setCaption(product);
            device.txtSPIRDQuantity.setText(bytes);
            device.txtSPIWrCount.setText(bytes);
        });
    };
    choose("Q4420", "Q4420/1, SPI, Four Pots", "3");
    device.Frq4410Show.setVisible(true);
    (void)device.cmdShowq4410.userClick();
    workRegisters(bench, *b.frm_q4420);
    (void)device.cmdSampleWiper[0].userClick();
    shooter.shoot("spi-instructions");
    shootIncrements(shooter, *b.frm_q4420, "spi-increments");
    choose("Q3310", "Q3310/1, SPI, One Pot", "4");
    (void)device.cmdI2Read[0].userClick();
    (void)b.events().deliver([&b] { b.Frm3310.show(); });
    Frm3310& single = *b.Frm3310;
    single.frq331x.setCaption("Q3310/0 Table 3 Instruction Set");
    for (int index = 0; index < Frm3310::kRegisters; ++index) {
        (void)single.txtWrQ3319[index].userType("1A" + std::to_string(index));
        b.events().runDue();
        (void)single.CMDq331X_Write[index].userClick();
        if (index != 3)
            (void)single.CMDq331X_Read[index].userClick();
    }
    (void)single.cmdQ331xDatatoWiper[1].userClick();
    shooter.shoot("single-wiper");
}

/// The SPI panel with four channels and with one.
int shootSpi(const QString& folder, const QString& shade) {
    WindowBench bench(folder.toStdString(), "KV4184");
    Shooter shooter(bench, folder, shade);
    Bench& b = bench.bench;
    (void)b.frmStartup->cboVRKSelect.userSelect(frmStartup::kSPI);
    frmVRK_SPI1& panel = *b.frmVRK_SPI1;
    (void)panel.mnuKV4184.userClick();
    (void)panel.OptVCC[0].userClick();
    workChannels(panel);
    panel.txtDeviceAdr.setText("54");
    (void)panel.cmdI2Read[2].userClick(); // no part there
    bench.workspace.openDock(Dock::Plot);
    shooter.shoot("spi-4");
    (void)panel.cmdSlave.userClick();
    (void)panel.OptChans[0].userClick();
    (void)panel.cmdI2Read[0].userClick();
    shooter.shoot("spi-1");
    shootSpiInstructions(bench, shooter);
    return shooter.failures();
}

void workQuadPart(WindowBench& bench) {
    Bench& b = bench.bench;
    bench.bus.socket("Q4410");
    (void)b.events().deliver([&b] {
        b.frmVRK_User1->lblProduct.setCaption("Q4410/9, I2C, Four Pots");
        b.frmVRK_User1->txtDeviceAdr.setText("50");
        b.frmVRK_User1->Frq4410Show.setVisible(true);
        b.frmMainF340->chk2WireRead.setValue(1);
        b.frmMainF340->chkRandom.setValue(0);
    });
    (void)b.frmVRK_User1->cmdShowq4410.userClick();
    workRegisters(bench, *b.frm_q4410);
    (void)b.frmVRK_User1->cmdSampleWiper[0].userClick();
}

int shootAll(const QString& folder, const QString& shade) {
    WindowBench bench(folder.toStdString());
    Shooter shooter(bench, folder, shade);
    Bench& b = bench.bench;
    Workspace& workspace = bench.workspace;
    const auto show = [&b](PanelSlotBase& slot) { (void)b.events().deliver([&slot] { slot.show(); }); };
    shooter.shoot("home");
    (void)b.frmStartup->mnuAboutShow.userClick();
    shooter.shoot("about");
    (void)b.frmAbout2->cmdOK.userClick();
    QTest::qWait(kSettleMs);               // the page under it is in front again when events run
    shootPinPages(bench, shooter, folder); // ahead of what opens the dock
    shootCalibration(bench, shooter, folder);

    (void)b.events().deliver([&b] { b.Doco.load(); });
    (void)b.Doco->ChkTrace[2].userClick();
    (void)b.Doco->chkTRDetail.userClick();
    (void)b.frmStartup->cboVRKSelect.userSelect(2);
    (void)b.frmVRK_User1->mnu_KV4071.userClick();
    (void)b.frmVRK_User1->OptVCC[0].userClick();
    shooter.shoot("i2c-1");
    bench.bus.socket("KV4074");
    workThePart(*b.frmVRK_User1);
    sweep(*b.frmVRK_User1);
    workspace.openDock(Dock::Plot);
    shooter.shoot("i2c-4");
    show(b.frmMainF340);
    shooter.shoot("controller");
    show(b.frmMotherboardDAQ2);
    shooter.shoot("motherboard");
    show(b.frmVRK_User1);
    workspace.showTrace();
    shooter.shoot("trace");
    workspace.openDock(Dock::Wire);
    (void)b.frmVRK_User1->cmdReadVCC.userClick();
    shooter.shoot("wire");
    workspace.showPalette();
    shooter.popup("palette");
    workspace.showHelp("I2C panel");
    shooter.shoot("help");
    workspace.help().hide();
    workQuadPart(bench);
    shooter.shoot("instructions");
    shootIncrements(shooter, *b.frm_q4410, "increments");
    b.frmMainF340->chk2WireRead.setValue(0);
    b.frmMainF340->chkRandom.setValue(1);
    show(b.frmVRK_User1);
    shootScript(bench, shooter, folder);
    show(b.ProductExec);
    (void)b.events().deliver([&b] {
        b.ProductExec->ReadParameters(std::string(VRK_EXAMPLES) + "/parts-I2C.csv");
        b.ProductExec->Frame1.setVisible(true);
        (void)b.ProductExec->tGrid.userSelect(2, 0);
    });
    shooter.shoot("table");
    return shooter.failures();
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
    const QString folder = QDir(arguments[1]).absolutePath(); // the bench has a folder of its own
    QDir().mkpath(folder);
    int failures = 0;
    if (!arguments.contains("--dark")) {
        qt::applyTheme(application, qt::Shade::Light);
        failures += shootAll(folder, "light") + shootSpi(folder, "light");
    }
    if (!arguments.contains("--light")) {
        qt::applyTheme(application, qt::Shade::Dark);
        failures += shootAll(folder, "dark") + shootSpi(folder, "dark");
    }
    return failures == 0 ? 0 : 1;
}
