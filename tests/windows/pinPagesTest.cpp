#include "platform/files/files.h"
#include "tests/windows/WindowTest.h"

#include "views/blocks/PinTimeline.h"
#include "views/pages.h"
#include "views/pages/runInPicture.h"
#include "views/plot/Plot.h"

#include <QApplication>
#include <QClipboard>
#include <QImage>
#include <QLabel>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace vrk {
namespace {

constexpr const char* kUpDown = "frmVRK_UD1";
constexpr const char* kButtons = "frmVRK_PB1";
constexpr const char* kRunIn = "UPDN_Runin";

/// The pages of parts without a bus, opened from the rail, VCC on.
class PinPagesTest : public WindowTest {
  protected:
    explicit PinPagesTest(const char* panel = kUpDown, const char* part = "UPDN100")
        : WindowTest(part), panel_(panel) {
        workspace.resize(1600, 1000);
        workspace.show();
        workspace.open(*findPageRow(panel));
        bringToFront(panel);
        click(panel, "OptVCC(0)");
    }
    using WindowTest::click;
    void click(const std::string& path) { click(panel_, path); }
    void enter(const std::string& path, const char* text) { WindowTest::enter(panel_, path, text); }
    QString text(const std::string& path) { return widget<QLabel>(panel_, path).text(); }
    int position(int part = 1) const {
        const auto state = w.bus.state();
        return (part == 1 ? state.part : state.part2)->wipers.at(0);
    }
    const PinTimeline& timeline() { return widget<TimingPicture>(panel_, "timing").timeline(); }
    struct Twin {
        const char* path;
        const char* name;
        const char* place;
    };
    void expectPlaces(std::initializer_list<Twin> rows) {
        for (const Twin& row : rows) {
            SCOPED_TRACE(row.path);
            const QWidget& found = widget(panel_, row.path);
            EXPECT_TRUE(found.accessibleName().startsWith(row.name)) << found.accessibleName().toStdString();
            EXPECT_EQ(place(found), QString(row.place));
        }
    }

    const char* panel_;
};

TEST_F(PinPagesTest, EveryTwinOfTheTwoPartsHasItsOwnNameAndPlace) {
    click("OptChans(1)");
    expectPlaces({
        {"ChOut(0)", "/CS1 of part #1", "Part #1"},
        {"ChOut(1)", "/INC of part #1", "Part #1"},
        {"ChOut(2)", "U/D of part #1", "Part #1"},
        {"ChOut(4)", "/CS2 of part #2", "Part #2"},
        {"ChOut(6)", "U/D of part #2", "Part #2"},
        {"ChOut(7)", "RSVD of part #2", "Part #2"},
        {"txtDelay(0)", "Delay in mSec of part #1", "Part #1"},
        {"txtDelay(1)", "Delay in mSec of part #2", "Part #2"},
        {"txtIncr(0)", "Steps up of part #1", "Part #1"},
        {"txtIncr(1)", "Steps down of part #1", "Part #1"},
        {"txtIncr(2)", "Steps up of part #2", "Part #2"},
        {"cmdIncr(1)", "Down of part #1", "Part #1"},
        {"cmdIncr(2)", "Up of part #2", "Part #2"},
        {"cmdIncr(3)", "Down of part #2", "Part #2"},
        {"ChlAutoCS(1)", "/CS1  Set High after Inc/Dec (No Store)", "Part #1"},
        {"ChlAutoCS(2)", "/CS2 Set low before Inc/Dec", "Part #2"},
        {"cmdSequence(0)", "Store of part #1", "Part #1"},
        {"cmdSequence(1)", "No Store of part #1", "Part #1"},
        {"cmdSequence(2)", "Store of part #2", "Part #2"},
        {"cmdAlloutsHigh(1)", "Set All High of part #2", "Part #2"},
        {"cmdAbortIncr(1)", "Abort of part #2", "Part #2"},
        {"lblWiperVolts", "Wiper volts", "Wiper Volts"},
        {"OptTaps(3)", "100 taps", "Wiper Volts"},
        {"OptCS(1)", "Dual", "/CS in use"},
        {"lblNvWrites", "Non-volatile writes since the part was chosen", "Non-volatile writes"},
        {"cmdRunin", "Show Run In", "head"},
    });
    EXPECT_TRUE(widget(kUpDown, "part(1)").isVisible());
    click("OptChans(0)");
    EXPECT_FALSE(widget(kUpDown, "part(1)").isVisible());
}

/// Each count, button and box works its own part, in its own way.
TEST_F(PinPagesTest, TheHandReachesTheRightPart) {
    click("OptChans(1)");
    click("ChlAutoCS(0)");
    click("ChlAutoCS(1)");
    click("ChlAutoCS(3)");
    int at = 0;
    for (const char* count : {"3", "2", "7", "4"})
        enter("txtIncr(" + std::to_string(at++) + ")", count);
    enter("txtDelay(0)", "0");
    enter("txtDelay(1)", "20");
    const int first = position(1);
    const int second = position(2);
    const struct {
        const char* button;
        int one, two; ///< steps from the start
        int falls;
    } kSteps[] = {
        {"cmdIncr(0)", 3, 0, 3}, {"cmdIncr(2)", 3, 7, 7}, {"cmdIncr(1)", 1, 7, 2}, {"cmdIncr(3)", 1, 3, 4}};
    for (const auto& step : kSteps) {
        click(step.button);
        EXPECT_EQ(position(1) - first, step.one) << step.button;
        EXPECT_EQ(position(2) - second, step.two) << step.button;
        EXPECT_EQ(timeline().edgesOf(2, false), step.falls) << step.button; // lane of /INC
    }
    settle();
    EXPECT_EQ(text("lblNvWrites"), "0");
    EXPECT_EQ(text("level.U/D of part #2"), "LO");
    click("cmdSequence(2)");
    EXPECT_EQ(w.bus.state().part2->nonvolatile.at(0), second + 3);
    EXPECT_EQ(w.bus.state().part->nonvolatile.at(0), first);
    EXPECT_EQ(text("lblNvRegisters").simplified(), "part 2 1");
    // The last picture is that of the last action that moved a pin; a sample moves none.
    const std::size_t edges = timeline().edges().size();
    click("cmdSampleWiper");
    EXPECT_EQ(timeline().edges().size(), edges);
    click("pulse./CS1 of part #1");
    EXPECT_EQ(timeline().edgesOf(0, false), 1);
    EXPECT_EQ(timeline().edgesOf(0, true), 1);
    EXPECT_TRUE(bench.frmVRK_UD1->ChOut[0].checked());
    settle();
    auto& timing = widget<TimingPicture>(kUpDown, "timing");
    EXPECT_FALSE(timing.accessibleDescription().isEmpty());
    const auto svg = folder.path() / "edges.svg";
    EXPECT_EQ(timing.drawing().save(QString::fromStdString(svg.string())), "");
    EXPECT_NE(readFile(svg).find("/CS1"), std::string::npos);
    QTest::keyClick(&timing, Qt::Key_C, Qt::ControlModifier);
    EXPECT_FALSE(QApplication::clipboard()->image().isNull());
    // A report that the board did not take is no edge.
    const std::size_t before = timeline().count();
    w.bus.fault(
        {.kind = sim::FaultKind::WriteFails, .command = static_cast<int>(report::Command::SfrAccess)});
    click("ChOut(0)");
    EXPECT_EQ(timeline().count(), before);
}

TEST_F(PinPagesTest, KeysWorkThePartThatHasTheKeyboard) {
    click("OptChans(1)");
    click("ChlAutoCS(0)");
    for (const char* path : {"txtIncr(0)", "txtIncr(2)", "txtIncr(3)"})
        enter(path, "2");
    const int first = position(1);
    const int second = position(2);
    widget(kUpDown, "txtIncr(2)").setFocus();
    QTest::keyClick(&workspace, Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(position(2), second + 2);
    QTest::keyClick(&workspace, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(position(2), second);
    settle();
    widget(kUpDown, "cmdIncr(0)").setFocus();
    QTest::keyClick(&workspace, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(position(1), first + 2);
}

TEST_F(PinPagesTest, TheRunInPageOpensBesideItsPanelAndGoesWithIt) {
    workspace.open(*findPageRow("frmStartup"));
    workspace.open(*findPageRow(kRunIn));
    EXPECT_TRUE(bench.UPDN_Runin.visible() && bench.frmVRK_UD1.visible());
    EXPECT_NE(bench.frmVRK_UD1->lblWiperVolts.freshness()->state, Freshness::State::Fresh);
    EXPECT_EQ(bench.devicePanel(), &*bench.frmVRK_UD1); // the band switches the supplies of this one
    // A run that is under way ends as well, and the supply is off.
    bench.UPDN_Runin->txtLogSteps.setText("4");
    w.events.postAfter(Milliseconds{3000}, [this] { (void)bench.frmVRK_UD1->cmdMMenu.userClick(); });
    click(kRunIn, "cmdRunInitial");
    EXPECT_FALSE(bench.UPDN_Runin.loaded());
    EXPECT_EQ(w.bus.state().vcc, 0.0);
    EXPECT_TRUE(bench.context().activities.running().empty());
}

TEST_F(PinPagesTest, ARunShowsItsFiguresAndItsDrift) {
    click("cmdRunin");
    panel_ = kRunIn;
    bringToFront(kRunIn);
    expectPlaces({
        {"lblRUnCount(0)", "Steps done", "Steps done"},
        {"lblRUnCount(1)", "Fails", "Fails"},
        {"lblPosition", "Position", "Position"},
        {"lblElapsed", "Elapsed", "Elapsed"},
        {"lblTimeLeft", "Left", "Left"},
        {"lblEndStep", "Step at which the run ends", "Steps done"},
        {"chkJournal", "Keep a journal", "Settings"},
        {"txtInitialIncr(2)", "Steps of stage 2", "Stages"},
        {"txtWiperLoc(3)", "Position tally of stage 3", "Stages"},
        {"txtWiperVolts(3)", "Calculated volts of stage 3", "Stages"},
        {"lvlWipV(3)", "Measured volts of stage 3", "Stages"},
        {"lvlWipError(3)", "Error volts of stage 3", "Stages"},
        {"txtTestQty", "End Test after", "Settings"},
        {"txtLogSteps", "Log Progress every", "Settings"},
        {"txtWipPositions", "Positions", "Settings"},
        {"txtLimitDiv", "Tolerance", "Settings"},
        {"lblWIPRange(0)", "Max V", "Settings"},
        {"lblWIPRange(1)", "Min V", "Settings"},
        {"lblTestLimit", "Calc limit, volts", "Settings"},
        {"lblVoltsPer", "Calc volts per step", "Settings"},
        {"txtIncr(1)", "Steps down", "Pins by hand"},
        {"ChOut(2)", "U/D of part #1", "Pins by hand"},
    });
    for (const auto& [quantity, log, end] : {std::tuple{"100000", "500", "100000"},
                                             {"1", "500", "500"},
                                             {"0", "4", "4"},
                                             {"7", "3", "12"},
                                             {"5", "0", "-----"},
                                             {"5", "x", "-----"},
                                             {"90", "6", "96"}}) {
        // Log points that fall on a whole round alone end a run: with 6 every 12 steps.
        enter("txtTestQty", quantity);
        enter("txtLogSteps", log);
        EXPECT_EQ(text("lblEndStep"), end) << quantity << " " << log;
    }
    w.bus.fault({.kind = sim::FaultKind::MissedStore, .times = 4});
    click("cmdRunInitial");
    EXPECT_EQ(text("lblRUnCount(0)"), "96");
    const auto& model = widget<Plot>(kRunIn, "drift").model();
    const PlotPane& pane = model.panes.at(0);
    ASSERT_EQ(pane.series.at(0).points.size(), 96U);
    EXPECT_EQ(pane.series.at(0).points.back().x(), 96);
    EXPECT_EQ(model.x.to, 96);
    EXPECT_NEAR(pane.limits.value().second, 0.0165, 0.0005);
    EXPECT_FALSE(pane.fails.empty());
    for (const QPointF& fail : pane.fails)
        EXPECT_GT(std::abs(fail.y()), pane.limits->second);
    settle();
    EXPECT_EQ(text("lblTimeLeft"), "0:00:00");
    EXPECT_NE(text("lblElapsed"), "-----");
    EXPECT_TRUE(widget(kRunIn, "cmdRunInitial").isEnabled());
    auto& log = widget<qt::LogView>(kRunIn, "rtxt1");
    ASSERT_TRUE(log.find("FAIL", false));
    const QImage shown = log.viewport()->grab().toImage();
    int red = 0;
    for (int y = 0; y < shown.height(); ++y)
        for (int x = 0; x < shown.width(); ++x)
            red += qRed(shown.pixel(x, y)) > qBlue(shown.pixel(x, y)) + 100 ? 1 : 0;
    EXPECT_GT(red, 100);
}

TEST_F(PinPagesTest, AnUnfinishedRunIsOfferedAndEachAnswerDoesItsOwn) {
    const auto runs = folder.path() / "runs";
    bench.runInHome().folder = runs;
    bench.runInHome().keepJournal = true;
    click("cmdRunin");
    panel_ = kRunIn;
    bringToFront(kRunIn);
    enter("txtTestQty", "8");
    enter("txtLogSteps", "4");
    click("cmdRunInitial");
    const auto journal = std::filesystem::directory_iterator(runs)->path();
    const std::string whole = readFile(journal);
    QWidget& bar = *widget(kRunIn, "cmdResumeRun").parentWidget();
    EXPECT_FALSE(bar.isVisible());
    const auto offer = [&](const char* end) {
        replaceFile(journal, whole.substr(0, whole.find(end)));
        workspace.open(*findPageRow("frmStartup"));
        bringToFront(kRunIn);
        settle();
        EXPECT_TRUE(bar.isVisible());
    };
    offer("\"loop\":5,");
    EXPECT_TRUE(text("lblUnfinished").contains("step 4 of 8"));
    click("cmdShowRun");
    EXPECT_NE(bench.UPDN_Runin->rtxt1.text().find("step 4 of 8"), std::string::npos);
    EXPECT_TRUE(bar.isVisible());
    // The part has gone on behind the step that the journal ends with.
    boxes.expect("Position Mismatch before step 5", "Yes");
    click("cmdResumeRun");
    settle();
    EXPECT_EQ(text("lblRUnCount(0)"), "8");
    EXPECT_FALSE(bar.isVisible());
    EXPECT_EQ(widget<Plot>(kRunIn, "drift").model().resumed.size(), 1U);
    offer("\"loop\":3,");
    const std::string left = readFile(journal);
    click("cmdNewRun");
    settle();
    EXPECT_FALSE(bar.isVisible());
    EXPECT_EQ(readFile(journal), left);
}

/// The picture of a run that no test waits for.
TEST(RunInPictureTest, LongRunsKeepTheirPeaksAndResumedStretchesGrow) {
    RunInPicture picture;
    picture.begin(300000);
    picture.setLimit(0.01);
    for (int step = 1; step <= 300000; ++step)
        picture.add(step, step == 77777 ? 0.5 : step == 200001 ? -0.4 : 0.001 * (step % 3), step % 10 == 0);
    const PlotPane& pane = picture.plot().model().panes.at(0);
    const auto& points = pane.series.at(0).points;
    EXPECT_LE(points.size(), 40000U);
    EXPECT_LE(pane.fails.size(), 4000U);
    EXPECT_TRUE(std::is_sorted(points.begin(), points.end(),
                               [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); }));
    const auto [least, greatest] = std::minmax_element(
        points.begin(), points.end(), [](const QPointF& a, const QPointF& b) { return a.y() < b.y(); });
    EXPECT_EQ(*least, QPointF(200001, -0.4));
    EXPECT_EQ(*greatest, QPointF(77777, 0.5));
    picture.addResumed(300001);
    picture.add(300004, 0.001, false);
    EXPECT_THAT(picture.plot().model().resumed, ::testing::ElementsAre(std::pair{300001.0, 300004.0}));
    delete &picture.plot();
}

class ButtonPageTest : public PinPagesTest {
  protected:
    ButtonPageTest() : PinPagesTest(kButtons, "PB64") {}
};

TEST_F(ButtonPageTest, EveryTwinHasItsOwnNameAndPlaceAndWorksItsPin) {
    expectPlaces({
        {"ChOut(0)", "/CS1", "Pulses"},
        {"ChOut(2)", "/MUTE", "Pulses"},
        {"ShpOut(3)", "/UP", "Pulses"},
        {"txtIncr(0)", "Presses up", "Pulses"},
        {"txtIncr(1)", "Presses down", "Pulses"},
        {"cmdIncr(0)", "Up, as often as counted", "Pulses"},
        {"cmdIncr(1)", "Down, as often as counted", "Pulses"},
        {"txtDelay", "Delay in mSec", "Pulses"},
        {"cmdSequence(0)", "Up, held", "Press and hold"},
        {"cmdSequence(1)", "Down, held", "Press and hold"},
        {"cmdSequence(2)", "Toggle Store, held", "Press and hold"},
        {"cmdSequence(4)", "Release Shutdown", "Press and hold"},
        {"txtPressAndHold(0)", "Hold time of /UP", "Press and hold"},
        {"txtPressAndHold(1)", "Hold time of /DOWN", "Press and hold"},
        {"txtPressAndHold(2)", "Hold time of /STORE", "Press and hold"},
        {"lblWiperVolts(1)", "Vin1 volts", "Vin0-Vin3 Analog Inputs Sample"},
        {"cmdSampleWiper(2)", "Sample Vin2", "Vin0-Vin3 Analog Inputs Sample"},
        {"txtFactor(3)", "AD Factor of Vin3", "Vin0-Vin3 Analog Inputs Sample"},
        {"OptCS(1)", "Dual", "/CS in use"},
    });
    enter("txtIncr(0)", "5");
    enter("txtIncr(1)", "3");
    const int start = position();
    click("cmdIncr(0)");
    EXPECT_EQ(position(), start + 5);
    EXPECT_EQ(timeline().edgesOf(frmVRK_PB1::kUp, false), 5);
    click("cmdIncr(1)");
    EXPECT_EQ(position(), start + 2);
    EXPECT_EQ(timeline().edgesOf(frmVRK_PB1::kDown, false), 3);
    click("cmdSequence(2)");
    EXPECT_EQ(w.bus.state().part->nonvolatile.at(0), start + 2);
    EXPECT_EQ(text("lblNvWrites"), "1");
    // A pin that moved makes every reading an old one; each button reads its own input again.
    click("cmdSampleWiper(1)");
    EXPECT_EQ(bench.frmVRK_PB1->lblWiperVolts[1].freshness()->state, Freshness::State::Fresh);
    EXPECT_NE(bench.frmVRK_PB1->lblWiperVolts[0].freshness()->state, Freshness::State::Fresh);
}

} // namespace
} // namespace vrk
