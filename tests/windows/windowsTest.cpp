#include "apps/vrkbench/Desktop.h"
#include "tests/windows/WindowTest.h"
#include "views/pages.h"
#include "views/workspace/Band.h"
#include "views/workspace/Dock.h"
#include "views/workspace/Help.h"
#include "views/workspace/PageWindow.h"

#include <QAction>
#include <QCheckBox>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QTextBlock>
#include <QTextBrowser>

namespace vrk {
namespace {

constexpr double kConverterStep = 2 * 3.3 / 1023; ///< volts at the socket; the board halves its inputs

class I2cWindowTest : public WindowTest {
  protected:
    explicit I2cWindowTest(const char* part = "KV4071") : WindowTest(part) {}
    QString text(const std::string& path) { return widget<QLabel>(kI2c, path).text(); }
    Colour lamp(const std::string& path) { return widget<qt::LampWidget>(kI2c, path).colour(); }
    double vcc() { return w.bus.state().vcc; }
    void chooseFromMenu(const char* entry) { page(kI2c).findAction(entry)->trigger(); }
};

TEST_F(I2cWindowTest, FirstWiperFromStartToVolts) {
    openI2c();
    EXPECT_EQ(lamp("ShpVCCon"), Colour::LightRed);
    EXPECT_EQ(text("band.VCC"), "ON");
    EXPECT_NEAR(text("band.volts").toDouble(), vcc(), kConverterStep);
    enter(kI2c, "txtHexDataWrt(0)", "3f");
    EXPECT_EQ(lamp("Shape1(1)"), Colour::LightGreen);
    EXPECT_EQ(lamp("Shape1(4)"), Colour::LightGreen);
    EXPECT_EQ(lamp("written(0)"), Colour::LightGreen); // beside the button that caused it
    EXPECT_EQ(lamp("written(1)"), Colour::Black);
    QTest::keyClick(&widget(kI2c, "txtHexDataWrt(0)"), Qt::Key_Return);
    EXPECT_EQ(lamp("Shape1(1)"), Colour::Green); // a repeat shows
    // The tour of the README: with Auto Read an entry shows what came of it.
    click(kI2c, "ChkAutoRead(0)");
    enter(kI2c, "txtHexDataWrt(0)", "3F");
    EXPECT_EQ(text("lblPotRead(0)"), "63");
    EXPECT_EQ(text("lblPotReadhex(0)"), "3F");
    EXPECT_EQ(widget<qt::LevelBar>(kI2c, "ProgressBar1(0)").value(), 63);
    EXPECT_NEAR(text("lblWiperVolts(0)").toDouble(), vcc() * 63 / 128, kConverterStep);
    EXPECT_EQ(w.bus.state().part->wipers.at(0), 63);
    settle();
    EXPECT_TRUE(text("status.board").contains("Simulated board with KV4071 attached"));
    EXPECT_EQ(text("status.socket"), "socket: KV4071 at 50");
    EXPECT_EQ(text("status.last"), "Last I2C transfer: good");
}

TEST_F(I2cWindowTest, BoxesAreAnsweredWithTheMouse) {
    openI2c(false);
    boxes.expect("VCC is not turned on.", "OK");
    boxes.expect("Invalid I2C address", "Retry"); // the link's word for a part that does not answer
    click(kI2c, "CMDxMIT(0)");
    ASSERT_EQ(w.further.size(), 1U); // the rest of the error stands in no way
    EXPECT_NE(w.further.front().find("Write VRK Error"), std::string::npos);
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

TEST_F(I2cWindowTest, ClosingAsksOnceWhileASupplyIsOn) {
    openI2c();
    EXPECT_TRUE(workspace.lossOnClosing().contains("VCC goes off"));
    boxes.expect("End the program?", "Stay");
    workspace.close();
    EXPECT_FALSE(w.events.ended());
    boxes.expect("End the program?", "End");
    QTimer::singleShot(0, [this] { workspace.close(); });
    EXPECT_EQ(w.host.run(), 0);
    EXPECT_TRUE(w.events.ended());
}

TEST_F(I2cWindowTest, BandSwitchesSuppliesAndChoosesParts) {
    openI2c(false);
    auto& band = workspace.band();
    auto& switches = widget<qt::SegmentedSwitch>(kI2c, "band.switch");
    QTest::mouseClick(&switches, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_GT(vcc(), 4.5);
    EXPECT_TRUE(band.supplyOn());
    QTest::mouseClick(&switches, Qt::LeftButton, {}, QPoint(switches.width() - 5, 5));
    EXPECT_EQ(vcc(), 0.0);
    click(kI2c, "band.part");
    auto* filter = band.findChild<QWidget*>("parts.filter");
    ASSERT_NE(filter, nullptr);
    QTest::keyClicks(filter, "4074");
    QTest::keyClick(filter, Qt::Key_Return);
    EXPECT_EQ(text("band.bus"), "A0");
    EXPECT_EQ(widget<CutLabel>(kI2c, "band.about").text(), "the socket holds KV4071");
}

TEST_F(I2cWindowTest, PageGoesOutIntoItsOwnWindowAndBack) {
    openI2c();
    PageUi& i2c = page(kI2c);
    workspace.takeOut(i2c);
    ASSERT_TRUE(workspace.isOut(i2c));
    EXPECT_NE(i2c.page()->window(), &workspace);
    EXPECT_EQ(i2c.inspector()->window(), i2c.page()->window());
    EXPECT_EQ(workspace.front(), nullptr);
    enter(kI2c, "txtHexDataWrt(0)", "11");
    EXPECT_EQ(w.bus.state().part->wipers.at(0), 17);
    QTest::keyClick(i2c.page()->window(), Qt::Key_F5);
    EXPECT_EQ(text("lblPotRead(0)"), "17");
    i2c.page()->window()->close();
    EXPECT_EQ(i2c.page()->window(), &workspace);
    EXPECT_EQ(workspace.front(), &i2c);
}

TEST_F(I2cWindowTest, AboutBoxOverTheProductTableLeavesTheTableInSight) {
    openI2c(false);
    const auto show = [this](PanelSlotBase& slot) { (void)bench.events().deliver([&slot] { slot.show(); }); };
    QWidget& field = widget(kI2c, "txtDECDataWrt(0)");
    field.setFocus();
    show(bench.ProductExec);
    bench.frmVRK_User1->setEnabled(false); // as the action that shows the table does
    show(bench.frmAbout2);
    ASSERT_TRUE(QTest::qWaitFor([&field] { return !field.isEnabled(); }, 3000));
    EXPECT_EQ(workspace.working()->name(), "About");
    QTest::qWait(1); // a sheet is laid out when events run
    click("frmAbout2", "cmdOK");
    QTest::qWait(1);
    EXPECT_EQ(workspace.working()->name(), "Product table");
    EXPECT_TRUE(page("ProductExec").page()->isVisible());
    (void)bench.ProductExec.userClose();
    EXPECT_EQ(workspace.working()->name(), "I2C");
    EXPECT_NE(workspace.focusWidget(), &field);
    bench.frmVRK_User1->setEnabled(true);
    EXPECT_TRUE(QTest::qWaitFor([this, &field] { return workspace.focusWidget() == &field; }, 500));
}

TEST_F(I2cWindowTest, PaletteFindsRefusesAndRuns) {
    openI2c();
    bringToFront(kI2c);
    bench.frmVRK_User1->cmdReadVCC.setEnabled(false);
    QTest::keyClick(&workspace, Qt::Key_K, Qt::ControlModifier);
    auto* filter = workspace.findChild<QWidget*>("palette.filter");
    auto* list = workspace.findChild<QListWidget*>("palette.list");
    ASSERT_NE(filter, nullptr);
    const QString refused = QString::fromStdString(bench.frmVRK_User1->cmdReadVCC.caption());
    QTest::keyClicks(filter, refused);
    EXPECT_TRUE(list->item(0)->toolTip().contains("Not now"));
    QTest::keyClick(filter, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(filter, "VCC on");
    EXPECT_EQ(list->item(0)->text(), "VCC on");
    QTest::keyClick(filter, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(filter, "Go to Motherboard");
    QTest::keyClick(filter, Qt::Key_Return);
    EXPECT_EQ(workspace.front(), &page("frmMotherboardDAQ2"));
    (void)bench.frmMotherboardDAQ2.userClose(); // hides it, and the page before comes back
    EXPECT_EQ(workspace.front(), &page(kI2c));
    // A button that no control of the panel stands behind.
    workspace.activateWindow(); // the palette of before had the keyboard
    ASSERT_TRUE(QTest::qWaitForWindowActive(&workspace));
    QTest::keyClick(&workspace, Qt::Key_K, Qt::ControlModifier);
    filter = workspace.findChildren<QWidget*>("palette.filter").back();
    QTest::keyClicks(filter, "Sweep");
    QTest::keyClick(filter, Qt::Key_Return);
    EXPECT_EQ(workspace.focusWidget(), &widget(kI2c, "sweepFrom"));
}

TEST_F(I2cWindowTest, KeysReadWriteAndShowTheirList) {
    openI2c();
    bringToFront(kI2c);
    auto& entry = widget<qt::KeyLineEdit>(kI2c, "txtHexDataWrt(0)");
    QTest::keyClick(&workspace, Qt::Key_1, Qt::ControlModifier);
    EXPECT_TRUE(entry.hasFocus());
    QTest::keyClick(&entry, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(lamp("Shape1(1)"), Colour::LightGreen);
    QTest::keyClick(&entry, Qt::Key_F5);
    EXPECT_EQ(lamp("Shape1(2)"), Colour::LightGreen);
    EXPECT_EQ(text("lblPotReadhex(0)"), "00");
    QTest::keyClick(&entry, Qt::Key_Question, Qt::ShiftModifier);
    EXPECT_EQ(entry.text(), "000");
    auto* keys = workspace.findChild<QWidget*>("keys");
    ASSERT_NE(keys, nullptr);
    EXPECT_TRUE(keys->isVisible());
    QTest::keyClick(keys, Qt::Key_Escape);
    QTest::keyClick(&entry, Qt::Key_F1);
    EXPECT_TRUE(workspace.help().isVisible());
    EXPECT_EQ(workspace.help().browser().textCursor().block().text(), "I2C panel"); // this panel's page
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
    EXPECT_TRUE(widget<QLabel>("Doco", "trace.empty").text().contains("Switch on Trace"));
    click("Doco", "ChkTrace(2)");
    click("Doco", "chkTRDetail");
    openI2c();
    auto& log = widget<qt::LogView>("Doco", "rtxt1");
    EXPECT_TRUE(log.find("Processor Form Load Completed", true));
    bringToFront("Doco");
    QTest::mouseClick(log.viewport(),
                      Qt::LeftButton); // the dock has keys of its own while it has the keyboard
    QTest::keyClick(&log, Qt::Key_F, Qt::ControlModifier);
    QWidget& find = widget("Doco", "find");
    EXPECT_TRUE(find.isVisible());
    QTest::keyClicks(&find, "no such line");
    QTest::keyClick(&find, Qt::Key_Return);
    EXPECT_EQ(widget<QLabel>("Doco", "find.outcome").text(), "Not in the trace");
    QTest::keyClick(&find, Qt::Key_Escape);
    EXPECT_FALSE(find.isVisible());

    const auto file = folder.path() / "trace.txt";
    EXPECT_FALSE(widget("Doco", "cmdBrowse").isVisible());
    click("Doco", "trace.save"); // unfolds what a save needs
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

TEST_F(StartWindowTest, MenusFollowThePageAndSwitchTheTrace) {
    const auto titles = [this] {
        QStringList all;
        for (QAction* menu : workspace.menuBar()->actions())
            all += menu->text().remove('&');
        return all.join(' ');
    };
    EXPECT_EQ(titles().toStdString(), "File Panels Board Trace View Help");
    workspace.open(*findPageRow("frmMainF340"));
    workspace.open(*findPageRow(kI2c)); // the choice hides the console that is in front
    ASSERT_EQ(workspace.front(), &page(kI2c));
    EXPECT_EQ(titles().toStdString(), "File Device Select Panels Board Trace View Help");
    bench.frmStartup->chkTRDetail.setValue(1); // the trace panel is not there yet, its switch is
    for (QAction* menu : workspace.menuBar()->actions())
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

/// The program but its command line, in real time, with a board that answers just before the time-out.
TEST(SilentBoard, LeavesTheWindowPaintingAndHoldsEveryGestureBack) {
    TemporaryFolder folder;
    BoxWatcher boxes;
    Desktop desktop(
        {.simulate = "kv4074", .openPart = true, .folder = folder.path().string(), .settings = false});
    EventLoop& events = desktop.events();
    Bench& bench = desktop.bench();
    desktop.open();
    ASSERT_TRUE(QTest::qWaitFor([&] { return bench.devicePanel() != nullptr; }, 5000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return events.depth() == 0; }, 5000));
    EXPECT_EQ(bench.frmVRK_User1->wipers.channelCount, 4); // the panel is set up for the part
    QWidget& i2c = *desktop.workspace().page(kI2c)->page();

    desktop.simulated()->fault({.kind = sim::FaultKind::LateReply, .ms = 1800});
    const PaintCount painted(i2c);
    int paintsBefore = 0;
    int paintsMeanwhile = 0;
    int ticks = 0;
    bool refusedMeanwhile = false;
    auto& track = dynamic_cast<QCheckBox&>(*desktop.workspace().page(kI2c)->find("ChkTrack"));
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
    EXPECT_GT(ticks, 30); // of some 170 in the part of the wait that paints
    EXPECT_GT(paintsMeanwhile, 15);
    EXPECT_TRUE(refusedMeanwhile); // the click waits, it does not run inside the exchange
    EXPECT_TRUE(QTest::qWaitFor([&] { return !bench.frmVRK_User1->ChkTrack.checked(); }, 2000));
}

} // namespace
} // namespace vrk
