#include "platform/hid/PatientHost.h"
#include "tests/windows/WindowTest.h"
#include "views/HelpWindow.h"
#include "views/WiperPlot.h"

#include <QAction>
#include <QCheckBox>
#include <QMenu>
#include <QMenuBar>
#include <QTextBlock>
#include <QTextBrowser>

namespace vrk {
namespace {

constexpr const char* kI2c = "frmVRK_User1";
constexpr double kConverterStep = 2 * 3.3 / 1023; ///< volts at the socket; the board halves its inputs

class I2cWindowTest : public WindowTest {
  protected:
    explicit I2cWindowTest(const char* part = "KV4071") : WindowTest(part) {}
    QString text(const std::string& path) { return widget<QLabel>(kI2c, path).text(); }
    Colour lamp(const std::string& path) { return widget<qt::LampWidget>(kI2c, path).colour(); }
    double vcc() { return w.bus.state().vcc; }
    void chooseFromMenu(const char* entry) { window(kI2c).findChild<QAction*>(entry)->trigger(); }
};

TEST_F(I2cWindowTest, FirstWiperFromStartToVolts) {
    openI2c();
    EXPECT_EQ(lamp("ShpVCCon"), Colour::LightRed);
    EXPECT_EQ(text("band.VCC"), "on");
    EXPECT_NEAR(text("band.volts").toDouble(), vcc(), kConverterStep);
    enter(kI2c, "txtHexDataWrt(0)", "3f");
    EXPECT_EQ(lamp("Shape1(1)"), Colour::LightGreen);
    EXPECT_EQ(lamp("Shape1(4)"), Colour::LightGreen);
    EXPECT_EQ(lamp("written(0)"), Colour::LightGreen); // beside the button that caused it
    EXPECT_EQ(lamp("written(1)"), Colour::Black);
    QTest::keyClick(&widget(kI2c, "txtHexDataWrt(0)"), Qt::Key_Return);
    EXPECT_EQ(lamp("Shape1(1)"), Colour::Green); // a repeat shows
    click(kI2c, "cmdI2Read(0)");
    EXPECT_EQ(text("lblPotRead(0)"), "63");
    EXPECT_EQ(text("lblPotReadhex(0)"), "3F");
    EXPECT_EQ(widget<qt::LevelBar>(kI2c, "ProgressBar1(0)").value(), 63);
    EXPECT_NEAR(text("lblWiperVolts(0)").toDouble(), vcc() * 63 / 128, kConverterStep);
    EXPECT_EQ(w.bus.state().part->wipers.at(0), 63);
    settle();
    EXPECT_TRUE(text("status.board").contains("Simulated board with KV4071 attached"));
    EXPECT_EQ(text("status.last"), "Last exchange: good");
}

TEST_F(I2cWindowTest, BoxesAreAnsweredWithTheMouse) {
    openI2c(false);
    boxes.expect("VCC is not turned on.", "OK");
    boxes.expect("Invalid I2C address", "Retry"); // the link's word for a part that does not answer
    boxes.expect("Write VRK Error", "OK");
    click(kI2c, "CMDxMIT(0)");
    EXPECT_EQ(lamp("written(0)"), Colour::LightRed);
    EXPECT_EQ(widget<qt::LampWidget>(kI2c, "written(0)").word(), "failed");
}

TEST_F(I2cWindowTest, RetryFindsTheBoardAgainAndCancelEndsTheProgram) {
    openI2c();
    w.bus.unplug(0);
    boxes.expect("", "Retry", [this] { w.bus.plug(0); });
    click(kI2c, "cmdReadVCC");
    EXPECT_FALSE(w.events.ended());
    w.bus.unplug(0);
    boxes.expect("", "Cancel");
    QTimer::singleShot(0, [this] { click(kI2c, "cmdReadVCC"); });
    EXPECT_EQ(w.host.run(), 0); // ends by itself, from deep inside the action
    EXPECT_TRUE(w.events.ended());
    EXPECT_EQ(w.bus.state().handles, 0);
}

TEST_F(I2cWindowTest, ClosingTheDeviceWindowEndsTheProgram) {
    openI2c();
    QTimer::singleShot(0, [this] { window(kI2c).close(); });
    EXPECT_EQ(w.host.run(), 0);
    EXPECT_TRUE(w.events.ended());
}

TEST_F(I2cWindowTest, KeysReadWriteAndShowTheirList) {
    openI2c();
    PanelWindow& i2c = window(kI2c);
    bringToFront(kI2c);
    auto& entry = widget<qt::KeyLineEdit>(kI2c, "txtHexDataWrt(0)");
    QTest::keyClick(&i2c, Qt::Key_1, Qt::ControlModifier);
    EXPECT_TRUE(entry.hasFocus());
    QTest::keyClick(&entry, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(lamp("Shape1(1)"), Colour::LightGreen);
    QTest::keyClick(&entry, Qt::Key_F5);
    EXPECT_EQ(lamp("Shape1(2)"), Colour::LightGreen);
    EXPECT_EQ(text("lblPotReadhex(0)"), "00");
    QTest::keyClick(&entry, Qt::Key_Question, Qt::ShiftModifier);
    EXPECT_EQ(entry.text(), "000");
    auto* keys = i2c.findChild<QWidget*>("keys");
    ASSERT_NE(keys, nullptr);
    EXPECT_TRUE(keys->isVisible());
    QTest::keyClick(keys, Qt::Key_Escape);
    QTest::keyClick(&entry, Qt::Key_F1);
    HelpWindow& help = HelpWindow::showPage(i2c, i2c.helpPage());
    EXPECT_EQ(help.browser().textCursor().block().text(), "I2C panel"); // this panel's page
    help.close();
}

class FourChannelWindowTest : public I2cWindowTest {
  protected:
    FourChannelWindowTest() : I2cWindowTest("KV4074") {}
};

TEST_F(FourChannelWindowTest, ChannelsKeepTheirPlacesWhenOthersComeAndGo) {
    openI2c(false);
    PanelWindow& i2c = window(kI2c);
    i2c.resize(i2c.wantedSize());
    QTest::qWait(1);
    const auto place = [&](const char* path) {
        QWidget& found = widget(kI2c, path);
        return QRect(found.mapTo(&i2c, QPoint()), found.size());
    };
    const QRect first = place("CMDxMIT(0)");
    const QRect supply = place("cmdReadVCC");
    EXPECT_FALSE(widget(kI2c, "CMDxMIT(3)").isVisible());
    chooseFromMenu("mnu_KV4074");
    QTest::qWait(1);
    EXPECT_TRUE(widget(kI2c, "CMDxMIT(3)").isVisible());
    EXPECT_EQ(text("band.bus"), "I2C A0");
    EXPECT_EQ(place("CMDxMIT(0)"), first);
    EXPECT_EQ(place("cmdReadVCC"), supply);
}

TEST_F(FourChannelWindowTest, PictureGathersWhatIsReadAndCanBeKept) {
    openI2c();
    chooseFromMenu("mnu_KV4074");
    auto& plotWindow = dynamic_cast<WiperPlotWindow&>(*window(kI2c).findChild<QWidget*>("wiperPlotWindow"));
    for (const char* value : {"10", "20", "7F"})
        for (const char* channel : {"(0)", "(2)"}) {
            enter(kI2c, std::string("txtHexDataWrt") + channel, value);
            click(kI2c, std::string("cmdI2Read") + channel);
        }
    click(kI2c, "voltsOverPosition");
    EXPECT_TRUE(plotWindow.isVisible());
    EXPECT_EQ(plotWindow.plot().pointCount(), 6);
    EXPECT_TRUE(plotWindow.plot().csv().startsWith("channel,position,volts\n0,16,0.6"));
    const QString picture = QString::fromStdString((folder.path() / "volts.png").string());
    EXPECT_TRUE(plotWindow.save(picture));
    EXPECT_FALSE(QPixmap(picture).isNull());
    EXPECT_FALSE(plotWindow.save("/no/such/folder/volts.png"));
    chooseFromMenu("mnu_KV4071");
    EXPECT_EQ(plotWindow.plot().pointCount(), 0); // another part's points do not belong to this one's
}

class TraceWindowTest : public WindowTest {
  protected:
    void openTrace() {
        (void)bench.events().deliver([this] { bench.Doco.show(); });
        bringToFront("Doco");
    }
};

TEST_F(TraceWindowTest, GathersSearchesAndSaves) {
    openTrace();
    click("Doco", "ChkTrace(2)");
    click("Doco", "chkTRDetail");
    openI2c();
    auto& log = widget<qt::LogView>("Doco", "rtxt1");
    EXPECT_TRUE(log.find("Processor Form Load Completed", true));
    bringToFront("Doco");
    QTest::keyClick(&window("Doco"), Qt::Key_F, Qt::ControlModifier);
    QWidget& find = widget("Doco", "find");
    EXPECT_TRUE(find.isVisible());
    QTest::keyClicks(&find, "no such line");
    QTest::keyClick(&find, Qt::Key_Return);
    EXPECT_EQ(widget<QLabel>("Doco", "find.outcome").text(), "Not in the trace");
    QTest::keyClick(&find, Qt::Key_Escape);
    EXPECT_FALSE(find.isVisible());

    const auto file = folder.path() / "trace.txt";
    boxes.expectFile(file.string());
    click("Doco", "cmdBrowse");
    EXPECT_EQ(widget<qt::KeyLineEdit>("Doco", "txtFilePath").text().toStdString(), file.string());
    click("Doco", "cmdStartRec(0)");
    EXPECT_TRUE(std::filesystem::exists(file));
}

class StartWindowTest : public WindowTest {};

TEST_F(StartWindowTest, SaysWhatIsAtTheOtherEnd) {
    EXPECT_TRUE(widget<QLabel>("frmStartup", "status.board").text().startsWith("Simulated board"));
    w.bus.setBoards(0);
    boxes.expect("", "Cancel");
    boxes.expect("Evaluation Board is not connected", "OK");
    (void)bench.frmStartup->cboVRKSelect.userSelect(frmStartup::kI2C);
    QTest::qWait(200);
    EXPECT_TRUE(widget<QLabel>("frmStartup", "status.board").text().contains("not attached"));
}

TEST_F(StartWindowTest, MenusAreOnEveryWindowAndSwitchTheTrace) {
    openI2c(false);
    for (PanelWindow* shown : w.windows.windows()) {
        QStringList titles;
        for (QAction* menu : shown->menuBar()->actions())
            titles += menu->text().remove('&');
        for (const char* title : {"Panels", "Board", "Trace", "Help"})
            EXPECT_TRUE(titles.contains(title)) << title;
    }
    bench.frmStartup->chkTRDetail.setValue(1); // the trace panel is not there yet, its switch is
    for (QAction* menu : window(kI2c).menuBar()->actions())
        if (menu->text().remove('&') == "Trace") {
            Q_EMIT menu->menu()->aboutToShow();
            for (QAction* entry : menu->menu()->actions()) {
                if (entry->text().remove('&') == "Detailed") {
                    EXPECT_TRUE(entry->isChecked());
                }
                if (entry->text().remove('&') == "Trace On")
                    entry->trigger();
            }
        }
    EXPECT_TRUE(bench.Doco->ChkTrace[2].checked());
}

/// Counts the paint events of a window.
class PaintCount final : public QObject {
  public:
    explicit PaintCount(QWidget& window) { window.installEventFilter(this); }
    int paints = 0;

  private:
    bool eventFilter(QObject* /*object*/, QEvent* event) override {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

/// The whole stack of the program in real time, with a board that answers just before the time-out.
TEST(SilentBoard, LeavesTheWindowPaintingAndHoldsEveryGestureBack) {
    TemporaryFolder folder;
    BoxWatcher boxes;
    RealClock clock;
    EventLoop events(clock);
    qt::QtHost host(events);
    qt::QtDialogs dialogs(events);
    qt::QtClipboard clipboard;
    sim::SimulatedBus bus(clock);
    hid::PatientHost patient(bus, events, [] { qt::QtHost::paintOnly(); });
    Bench bench({.events = events,
                 .dialogs = dialogs,
                 .clipboard = clipboard,
                 .host = patient,
                 .programFolder = folder.path(),
                 .workingFolder = folder.path()});
    WindowManager windows({bench, BoardKind::Simulated, "KV4071", nullptr});
    (void)bench.start();
    (void)bench.frmStartup->cboVRKSelect.userSelect(frmStartup::kI2C);
    PanelWindow& i2c = *windows.window(kI2c);

    bus.fault({.kind = sim::FaultKind::LateReply, .ms = 5800});
    const PaintCount painted(i2c);
    int paintsBefore = 0;
    int paintsMeanwhile = 0;
    int ticks = 0;
    bool refusedMeanwhile = false;
    auto& track = *i2c.findChild<QCheckBox*>("ChkTrack");
    QTimer heart;
    QObject::connect(&heart, &QTimer::timeout, &heart, [&] {
        if (!events.held())
            return;
        if (++ticks == 1)
            paintsBefore = painted.paints;
        paintsMeanwhile = painted.paints - paintsBefore;
        i2c.update();
        if (ticks == 10) {
            clickOn(track);
            refusedMeanwhile = bench.frmVRK_User1->ChkTrack.checked() && track.isChecked();
        }
    });
    heart.start(10);
    ASSERT_TRUE(bench.frmVRK_User1->ChkTrack.checked());
    (void)bench.frmVRK_User1->cmdReadVCC.userClick();
    EXPECT_GT(ticks, 100); // of some 500 in the part of the wait that paints
    EXPECT_GT(paintsMeanwhile, 50);
    EXPECT_TRUE(refusedMeanwhile); // the click waits, it does not run inside the exchange
    EXPECT_TRUE(QTest::qWaitFor([&] { return !bench.frmVRK_User1->ChkTrack.checked(); }, 2000));
}

} // namespace
} // namespace vrk
