#include "platform/files/files.h"
#include "platform/runtime/text.h"
#include "tests/windows/WindowTest.h"
#include "views/pages.h"
#include "views/plot/Plot.h"

#include <QLabel>
#include <cmath>

namespace vrk {
namespace {

constexpr const char* kCal = "FrmVCCCal";

class CalibrationPageTest : public WindowTest {
  protected:
    CalibrationPageTest() {
        w.bus.socket(std::nullopt);
        click("frmStartup", "open.Calibration");
    }
    QString words(const std::string& name) { return widget<QLabel>(kCal, name).text(); }
    /// Presses a button of the page while a sweep is at this code.
    void atCode(std::size_t code, const std::function<void()>& act) {
        const FrmVCCCal& panel = *bench.FrmVCCCal;
        watch_ = bench.FrmVCCCal->observeRuns([&panel, code, act](FrmVCCCal::Change change) {
            if (change == FrmVCCCal::Change::Measured && panel.lastRun().points.size() == code)
                act();
        });
    }

  private:
    Subscription watch_;
};

TEST_F(CalibrationPageTest, FourStepsLeadToAFile) {
    folder.write("VRK_Cal_Data.txt",
                 "VRK VCC Calibration 2019-06-12 15:40:21\r\nVREF , 3.3\r\n2.7,2A,1.35,2.71\r\n");
    EXPECT_EQ(words("step.Connect"), "the socket is empty");
    QString band;
    QString measure;
    atCode(64, [&] {
        band = dynamic_cast<QLabel&>(*workspace.findChild<QLabel*>("band.VCC")).text();
        measure = words("step.Measure");
    });
    widget(kCal, "cmdDoVCC_Cal").setFocus();
    QTest::keyClick(&workspace, Qt::Key_Return, Qt::ControlModifier);
    settle();
    EXPECT_EQ(band, "ON");
    EXPECT_EQ(measure, "code 3F of 7F");
    EXPECT_TRUE(words("step.Measure").startsWith("128 codes in"));
    EXPECT_EQ(words("step.Review"), "all seven within 13 mV");
    EXPECT_EQ(words("step.Save"), "replaces the file");
    const PlotModel& plot = widget<Plot>(kCal, "curve").model();
    ASSERT_EQ(plot.panes[0].series.size(), 2U);
    EXPECT_EQ(plot.panes[0].series[0].points.size(), 128U);
    EXPECT_EQ(plot.panes[0].series[1].name, "file of 2019-06-12");
    EXPECT_EQ(plot.panes[0].series[1].points.at(0), QPointF(0x2A, 2.71));
    // What stands in the table, the plot and the panel is one.
    for (int row = 1; row <= 7; ++row) {
        const auto& target = plot.panes[0].targets.at(static_cast<std::size_t>(row - 1));
        EXPECT_EQ(target.name.toStdString(), bench.FrmVCCCal->blbTargetV[row].caption());
        const double volts = leadingNumber(bench.FrmVCCCal->lblTargetV[row + 8].caption());
        EXPECT_NEAR(target.at.y(), volts, 0.0001);
        const long off = std::lround((volts - target.name.toDouble()) * 1000);
        EXPECT_EQ(words("off(" + std::to_string(row) + ")").remove("+").replace("−", "-"),
                  QString("%1 mV").arg(off));
        EXPECT_EQ(plot.panes[1].series[0].points.at(static_cast<std::size_t>(row - 1)).x(), target.at.x());
    }
    EXPECT_EQ(words("finding(0)"), "the curve rises at every code");
    QTest::keyClick(&workspace, Qt::Key_Return, Qt::ControlModifier);
    settle();
    EXPECT_EQ(words("step.Save"), "file written");
    EXPECT_EQ(words("lblCalStatus"), "Cal File Updated");
    EXPECT_TRUE(fileExists(folder.path() / "VRK_Cal_Data.txt"));
}

TEST_F(CalibrationPageTest, EscEndsASweepAndAnotherPanelLeavesThePage) {
    w.bus.socket("KV4071");
    QString connect;
    atCode(20, [&] {
        connect = words("step.Connect");
        // The rail's other entries leave the page by its own button, which a sweep refuses.
        for (const PageRow& row : pageRows())
            if (row.startRow == frmStartup::kI2C)
                workspace.open(row);
        EXPECT_FALSE(bench.frmVRK_User1.visible());
        QTest::keyClick(&workspace, Qt::Key_Escape);
    });
    click(kCal, "cmdDoVCC_Cal");
    settle();
    EXPECT_EQ(connect, "take out the KV4071");
    EXPECT_EQ(bench.FrmVCCCal->lastRun().points.size(), 20U);
    EXPECT_EQ(words("step.Measure"), "ended at code 13");
    EXPECT_FALSE(widget(kCal, "cmdSaveCal").isEnabled());
    EXPECT_GT(w.bus.state().vcc, 0);
    for (const PageRow& row : pageRows())
        if (row.startRow == frmStartup::kI2C)
            workspace.open(row);
    EXPECT_TRUE(bench.frmVRK_User1.visible());
    EXPECT_FALSE(bench.FrmVCCCal.visible());
    EXPECT_EQ(w.bus.state().vcc, 0);
}

} // namespace
} // namespace vrk
