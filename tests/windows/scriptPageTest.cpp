#include "apps/vrkbench/BreakpointSettings.h"
#include "platform/files/files.h"
#include "platform/qt/theme.h"
#include "tests/windows/WindowTest.h"
#include "views/pages.h"
#include "views/pages/scriptRows.h"
#include "views/workspace/Dock.h"

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTableView>

namespace vrk {
namespace {

constexpr const char* kScript = "frmScriptOps";

class ScriptPageTest : public WindowTest {
  protected:
    ScriptPageTest() {
        workspace.resize(1600, 1000);
        openI2c();
        clickOn(*page("frmVRK_User1").find("scriptHead"));
        QTest::qWait(1);
    }
    frmScriptOps& panel() { return *bench.frmScriptOps; }
    StepTable& table() { return widget<StepTable>(kScript, "vbalGrid1"); }
    void load(const std::string& content) {
        boxes.expectFile(folder.write("s.txt", content).string());
        clickOn(widget(kScript, "script.open"));
        settle();
        reports = 0;
    }
    void clickCell(int row, int column, Qt::KeyboardModifiers keys = {}) {
        const QRect place = table().visualRect(table().model()->index(row - 1, column));
        QTest::mouseClick(table().viewport(), Qt::LeftButton, keys, place.center());
        settle();
    }
    std::string text(int row, int column) {
        return table().model()->index(row - 1, column).data().toString().toStdString();
    }
    std::string verdicts() {
        std::string all;
        for (int row = 1; row <= table().model()->rowCount(); ++row)
            all += text(row, StepTable::kVerdict) + "|";
        return all;
    }
    std::string shown(const char* name) { return widget<QLabel>(kScript, name).text().toStdString(); }
    void press(Qt::Key key) {
        workspace.activateWindow(); // the file dialog took the keyboard
        ASSERT_TRUE(QTest::qWaitForWindowActive(&workspace));
        QTest::keyClick(&workspace, key);
        settle();
    }
    /// Acts once the run stands at the row, and the page has shown it.
    void whenPausedAt(int row, std::function<void()> act) {
        auto* timer = new QTimer(&workspace);
        QObject::connect(timer, &QTimer::timeout, timer, [this, timer, row, act = std::move(act)] {
            if (panel().debugger().pausedAt() != row)
                return;
            timer->stop();
            timer->deleteLater();
            settle();
            act();
        });
        timer->start(20);
    }
    int reports = 0;
    Subscription counting = w.recorder.observe([this](const hid::WireEvent& event) {
        reports += event.direction == hid::WireEvent::Direction::Out && event.report[1] == 6 ? 1 : 0;
    });
};

TEST_F(ScriptPageTest, EachRowShowsItsCellsUnderTheirHeadings) {
    load("02,C0,# out\n01,,2A\n`AFF\n00,11,22 # c\n`ENDM");
    std::string headings;
    for (int column = 0; column <= StepTable::kVerdict; ++column)
        headings += table().model()->headerData(column, Qt::Horizontal).toString().toStdString() + "|";
    EXPECT_EQ(headings, "|Line|I2C Adr|Reg Adr|Data_Wr|Data_Rd|Act_Rd|Operation|Comment|Verdict|");
    EXPECT_EQ(text(4, 2) + text(4, 3) + text(4, 4) + text(4, 5) + text(4, 6) + text(4, 7) + text(4, 8),
              "FF001122-- Reg:1 W:1 R:1# c");
    EXPECT_EQ(text(2, 4) + "/" + text(2, 5), "/2A");
    EXPECT_EQ(verdicts(), "|||||");
    // The finding stands beside its row.
    EXPECT_NE(table().model()->index(2, StepTable::kGutter).data(Qt::ToolTipRole).toString().indexOf("FF"),
              -1);
    EXPECT_TRUE(table().model()->index(3, StepTable::kGutter).data(Qt::ToolTipRole).toString().isEmpty());
    const struct {
        const char* path;
        const char* name;
    } counts[] = {{"txtRdPass", "Passed"}, {"txtRdFails", "Failed"}, {"txttotReads", "Expected reads"},
                  {"txtRunning", "Row"},   {"txtTotLines", "Lines"}, {"txtLoopCount", "Loops"}};
    for (const auto& count : counts)
        EXPECT_EQ(widget(kScript, count.path).accessibleName().toStdString(), count.name);
    EXPECT_EQ(widget<QLineEdit>(kScript, "txttotReads").text(), "2");
}

TEST_F(ScriptPageTest, AClickOnARowRunsItTheGutterAndTheVerdictDoNot) {
    load("02,C0,\n00,11,11\n00,22,23\n`ENDM");
    clickCell(2, StepTable::kGutter);
    EXPECT_EQ(panel().debugger().breakpoints(), std::set<int>{2});
    EXPECT_EQ(table().marked(), 0);
    clickCell(3, StepTable::kVerdict);
    EXPECT_EQ(table().marked(), 3);
    press(Qt::Key_F9);
    EXPECT_EQ(panel().debugger().breakpoints(), (std::set<int>{2, 3}));
    clickCell(2, 4, Qt::ShiftModifier);
    EXPECT_EQ(table().markedRows(), (std::vector<int>{2, 3}));
    table().setFocus();
    QTest::keyClick(&table(), Qt::Key_Up);
    EXPECT_EQ(reports, 0);

    clickCell(2, 5);
    EXPECT_EQ(reports, 2);
    EXPECT_EQ(verdicts(), "|passed|||");
    clickCell(2, StepTable::kGutter);
    EXPECT_EQ(panel().debugger().breakpoints(), std::set<int>{3});
    clickCell(3, StepTable::kVerdict);
    QTest::keyClick(&table(), Qt::Key_Return);
    settle();
    EXPECT_EQ(verdicts(), "|passed|failed||");
    EXPECT_EQ(reports, 4);
}

TEST_F(ScriptPageTest, ACellThatABadTransferTurnedRedIsNotShownSoOnceItsRowRanWell) {
    load("02,C0,\n00,11,11\n00,22,23\n`ENDM");
    press(Qt::Key_F8);
    const auto red = [this](int row) {
        constexpr int kWrite = static_cast<int>(ScriptColumn::Write);
        panel().vbalGrid1.setCellColour(row, kWrite, Colour::PureRed);
        const QRect place = table().visualRect(table().model()->index(row - 1, kWrite));
        const QImage cell = table().viewport()->grab(place).toImage();
        return cell.pixelColor(2, cell.height() / 2) == qt::colours().failureGround;
    };
    EXPECT_EQ(verdicts(), "ran|passed|failed||");
    EXPECT_FALSE(red(2));
    EXPECT_TRUE(red(3));
}

TEST_F(ScriptPageTest, KeysRunStepAndAbortAndAnyPanelWorksMeanwhile) {
    load("02,C0,\n00,11,12\n00,22,22\n00,33,33\n`ENDM");
    clickCell(3, StepTable::kGutter);
    const auto atStep = [this] {
        EXPECT_EQ(shown("script.state"), "Paused before row 004");
        EXPECT_EQ(verdicts(), "ran|failed|passed|paused here||");
        press(Qt::Key_Escape);
    };
    whenPausedAt(3, [this, atStep] {
        EXPECT_EQ(shown("script.state"), "Paused at breakpoint, row 003");
        EXPECT_EQ(verdicts(), "ran|failed|paused here|not reached||");
        EXPECT_TRUE(widget<QPushButton>(kScript, "cmdGo").isVisible());
        EXPECT_FALSE(widget<QPushButton>(kScript, "cmdExecAll").isVisible());
        workspace.open(*findPageRow("frmVRK_User1"));
        click("frmVRK_User1", "cmdI2Read(0)");
        EXPECT_EQ(bench.link().lastTransfer(), kLinkGood);
        workspace.open(*findPageRow(kScript));
        EXPECT_TRUE(panel().debugger().paused());
        whenPausedAt(4, atStep);
        press(Qt::Key_F10);
    });
    press(Qt::Key_F8);
    EXPECT_EQ(panel().results().end, ScriptEnd::Stopped);
    EXPECT_EQ(verdicts(), "ran|failed|passed|not reached||");
    EXPECT_EQ(shown("script.state"), "");
    whenPausedAt(3, [this] { press(Qt::Key_F8); });
    press(Qt::Key_F8);
    EXPECT_EQ(verdicts(), "ran|failed|passed|passed||");
    EXPECT_EQ(widget<QAbstractItemView>(kScript, "script.passes").model()->rowCount(), 1);
}

TEST_F(ScriptPageTest, AFailedRowLeadsToItsBytes) {
    load("02,C0,\n00,11,11\n00,22,A2\n00,33,33\n`ENDM");
    press(Qt::Key_F8);
    auto& wire = widget<QTableView>(kScript, "wire.table");
    clickCell(3, StepTable::kVerdict);
    EXPECT_EQ(workspace.dock().current(), Dock::Wire);
    ASSERT_TRUE(wire.isVisible());
    ASSERT_EQ(wire.model()->rowCount(), 4);
    const auto words = [&](int row) { return wire.model()->index(row, 3).data().toString().toStdString(); };
    EXPECT_EQ(words(0), "I2C write of 1 bytes to 50: 00 22");
    EXPECT_EQ(words(2), "I2C read of 1 bytes from 50, register 00");
    EXPECT_EQ(words(3), "good, data 22");
    const QWidget& head = widget(kScript, "wire.head");
    QStringList said;
    for (const QLabel* label : head.findChildren<QLabel*>())
        said += label->text();
    EXPECT_EQ(said.filter("Row 003, pass 1").size(), 1);
    EXPECT_LT(said.indexOf("A2"), said.indexOf("22"));
    EXPECT_TRUE(said.contains("byte 0: 1000 0000"));
    EXPECT_EQ(wire.model()->index(0, 0).data().toString(), "+0 ms");

    clickOn(widget(kScript, "script.failsOnly"));
    for (int row = 0; row < 5; ++row)
        EXPECT_EQ(table().isRowHidden(row), row != 2);
    clickOn(widget(kScript, "script.failsOnly"));
    EXPECT_FALSE(table().isRowHidden(0));
    clickOn(widget(kScript, "script.retry"));
    settle();
    EXPECT_EQ(text(3, StepTable::kVerdict), "failed, run 2");
    EXPECT_FALSE(head.isVisible()); // the bytes of the last action
}

TEST_F(ScriptPageTest, TheRowInProgressIsInSight) {
    std::string all;
    for (int row = 0; row < 300; ++row)
        all += "#\n";
    load(all + "`w2000\n`ENDM");
    const auto inSight = [this](int row) {
        const QRect place = table().visualRect(table().model()->index(row - 1, 1));
        return table().viewport()->rect().contains(place);
    };
    EXPECT_FALSE(inSight(301));
    panel().debugger().setBreakpoints({301});
    bool stood = false;
    whenPausedAt(301, [&] {
        stood = inSight(301);
        press(Qt::Key_Escape);
    });
    press(Qt::Key_F8);
    EXPECT_TRUE(stood);
}

TEST_F(ScriptPageTest, ASaveOfRowsThatNeverRanAsksFirst) {
    load("02,C0,\n00,11,11\n`ENDM\n00,,44");
    press(Qt::Key_F8);
    enter(kScript, "txtFilePath", (folder.path() / "t.txt").c_str());
    QWidget& bar = widget(kScript, "script.question");
    for (const char* answer : {"script.cancel", "script.agree"}) {
        click(kScript, "cmdStartRec(0)");
        settle();
        EXPECT_TRUE(bar.isVisible());
        EXPECT_FALSE(std::filesystem::exists(folder.path() / "t.txt"));
        click(kScript, answer);
        settle();
        EXPECT_FALSE(bar.isVisible());
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "t.txt"));
}

TEST_F(ScriptPageTest, WhatIsRecordedIsSavedAndRunsAgain) {
    click(kScript, "cmdRecord");
    workspace.open(*findPageRow(kI2c));
    enter(kI2c, "txtHexDataWrt(0)", "2A");
    click(kI2c, "cmdI2Read(0)");
    enter(kI2c, "txtHexDataWrt(0)", "15");
    workspace.open(*findPageRow(kScript));
    click(kScript, "cmdRecordStop");
    const auto file = folder.path() / "r.txt";
    boxes.expectFile(file.string());
    click(kScript, "cmdRecordSave");
    settle();
    std::size_t at = 0;
    const std::string saved = readFile(file);
    for (const char* row : {"\r\n00,2A,\r\n", "\r\n00,,2A\r\n", "\r\n00,15,\r\n", "`ENDM\r\n"}) {
        at = saved.find(row, at);
        EXPECT_NE(at, std::string::npos) << saved;
    }
    bench.frmVRK_User1->txtHexDataWrt[0].setText("00");
    press(Qt::Key_F8);
    EXPECT_EQ(widget<QLineEdit>(kScript, "txtRdPass").text(), "1");
    EXPECT_EQ(w.bus.state().part->wipers.at(0), 0x15);
}

TEST_F(ScriptPageTest, ARehearsalTellsAbortsAndAsksBeforeARunThatWearsThePart) {
    std::string rows = "02,40,# non-volatile\n";
    for (int row = 0; row < 501; ++row)
        rows += "00,1122,\n";
    load(rows + "`ENDM");
    QTimer::singleShot(0, &workspace, [this] { click(kScript, "cmdAbort"); });
    click(kScript, "cmdRehearse");
    EXPECT_EQ(bench.context().results.kept().back().text, "Rehearsal aborted");
    EXPECT_FALSE(panel().rehearsal());
    click(kScript, "cmdRehearse");
    EXPECT_NE(shown("lblRehearsal").find(" 502 reports, 1002 non-volatile writes, 0 rows would fail"),
              std::string::npos)
        << shown("lblRehearsal");
    QWidget& bar = widget(kScript, "script.question");
    for (const char* answer : {"script.cancel", "", "script.agree"}) {
        press(Qt::Key_F8);
        EXPECT_TRUE(bar.isVisible());
        EXPECT_EQ(reports, 0);
        if (*answer == '\0')
            press(Qt::Key_Escape);
        else
            QTest::keyClick(&widget(kScript, answer), Qt::Key_Return);
        EXPECT_FALSE(bar.isVisible());
    }
    EXPECT_EQ(reports, 502);
}

TEST(BreakpointSettingsTest, KeepTheLinesOfEachFile) {
    TemporaryFolder folder;
    const QString file = QString::fromStdString((folder.path() / "w.ini").string());
    {
        QSettings settings(file, QSettings::IniFormat);
        BreakpointSettings store(settings);
        store.keepBreakpoints("/a/b c=%.txt", {12, 3});
        store.keepBreakpoints("/a/b", {7});
        store.keepBreakpoints("/a/b", {});
    }
    QSettings settings(file, QSettings::IniFormat);
    const BreakpointSettings store(settings);
    EXPECT_EQ(store.breakpoints("/a/b c=%.txt"), (std::set<int>{3, 12}));
    EXPECT_TRUE(store.breakpoints("/a/b").empty());
}

} // namespace
} // namespace vrk
