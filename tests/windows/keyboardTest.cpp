/// The README's tour and a walk over every page with the keyboard alone: no mouse is touched, and whatever is
/// used was reached by Tab.

#include "tests/windows/WindowTest.h"
#include "views/pages.h"

#include <QApplication>
#include <QLabel>

namespace vrk {
namespace {

constexpr int kStops = 400; ///< more than any page with its band, rail and inspector has

class KeyboardTest : public WindowTest {
  protected:
    void SetUp() override {
        workspace.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&workspace));
        workspace.open(page("frmStartup").row());
        QTest::qWait(1);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
        // What a window manager does once a box or the palette has gone.
        if (QApplication::activeWindow() == nullptr) {
            workspace.activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(&workspace));
        }
        QWidget* at = QApplication::focusWidget();
        QTest::keyClick(at != nullptr ? at : &workspace, key, with);
        QTest::qWait(1); // what the key asked for later
    }
    /// Tab until the widget has the keyboard.
    void tabTo(QWidget& target) {
        for (int stop = 0; stop < kStops && !target.hasFocus(); ++stop)
            press(Qt::Key_Tab);
        ASSERT_TRUE(target.hasFocus()) << target.objectName().toStdString() << " is reached by no Tab";
    }
    void tabTo(const char* panel, const std::string& path) { tabTo(widget(panel, path)); }
    /// A page by the palette, as somebody goes who knows its name.
    void goTo(const QString& name) {
        press(Qt::Key_K, Qt::ControlModifier);
        auto* filter = workspace.findChild<QWidget*>("palette.filter");
        ASSERT_TRUE(filter != nullptr && filter->hasFocus());
        QTest::keyClicks(filter, "Go to " + name);
        press(Qt::Key_Return);
        (void)QTest::qWaitFor(
            [&] { return workspace.front() != nullptr && workspace.front()->name() == name; });
    }
    QString text(const std::string& path) { return widget<QLabel>(kI2c, path).text(); }
};

TEST_F(KeyboardTest, TheTourIsWalkedWithKeysAlone) {
    tabTo("frmStartup", "open.I2C");
    press(Qt::Key_Space);
    ASSERT_EQ(workspace.front(), &page(kI2c));
    tabTo(kI2c, "band.switch");
    press(Qt::Key_Space);
    EXPECT_GT(w.bus.state().vcc, 4.5);
    tabTo(kI2c, "ChkAutoRead(0)");
    press(Qt::Key_Space);
    tabTo(kI2c, "txtHexDataWrt(0)");
    press(Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), "3F");
    press(Qt::Key_Return);
    EXPECT_EQ(text("lblPotRead(0)"), "63");
    EXPECT_EQ(w.bus.state().part->wipers.at(0), 63);
    press(Qt::Key_F5);
    EXPECT_EQ(text("lblPotReadhex(0)"), "3F");
    // Esc at every box that a failing link shows: none of them ends the program.
    boxes.useKeys();
    w.bus.fault({.kind = sim::FaultKind::Nak, .times = 1});
    boxes.expect("Invalid I2C address", "Retry");
    press(Qt::Key_F5);
    w.bus.unplug(0);
    boxes.expect("", "Retry", [this] { w.bus.plug(0); });
    boxes.expect("Invalid I2C address", "Retry"); // the part came back without its supply
    press(Qt::Key_F5);
    EXPECT_FALSE(w.events.ended());
    goTo("Home");
    EXPECT_EQ(workspace.front(), &page("frmStartup"));
}

TEST_F(KeyboardTest, EveryPageIsReachedTakenOutAndPutBack) {
    for (const PageRow& row : pageRows()) {
        if (*row.slot == '\0' || row.place != PagePlace::Page)
            continue;
        SCOPED_TRACE(row.name);
        goTo(row.name);
        PageUi* front = workspace.front();
        ASSERT_EQ(front == nullptr ? "none" : front->row().name, std::string(row.name));
        tabTo(*front->find("takeOut"));
        press(Qt::Key_Space);
        ASSERT_TRUE(workspace.isOut(*front));
        EXPECT_TRUE(front->page()->isVisible());
        tabTo(*front->find("takeOut"));
        press(Qt::Key_Space);
        EXPECT_FALSE(workspace.isOut(*front));
        EXPECT_EQ(workspace.front(), front);
    }
}

} // namespace
} // namespace vrk
