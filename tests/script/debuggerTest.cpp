#include "tests/script/ScriptBench.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ScriptDebuggerTest : public ScriptBench {
  protected:
    /// Runs until the script has ended; whenever it stands, notes where and does the next thing.
    std::vector<int> standsAt(const std::function<void()>& start, std::vector<std::function<void()>> then) {
        std::vector<int> places;
        std::size_t next = 0;
        const auto watch = panel().debugger().observe([&] {
            if (!panel().debugger().paused())
                return;
            places.push_back(panel().debugger().pausedAt());
            EXPECT_TRUE(panel().cmdGo.enabled());
            // As a user would, a while later.
            at(
                500, next < then.size() ? then[next++] : [this] { (void)panel().cmdGo.userClick(); });
        });
        start();
        EXPECT_FALSE(panel().cmdGo.enabled());
        return places;
    }
    std::function<void()> click(Button& button) {
        return [&button] { (void)button.userClick(); };
    }
};

TEST_F(ScriptDebuggerTest, BreakpointsStepsAndFailsStopTheRunInPlace) {
    load("02,C0,\n00,11,12\n00,22,22\n`IE\n#\n`ENDM\n`EISTART\n00,33,33\n`EIEND");
    panel().debugger().setBreakpoints({3, 8});
    // Anything can be done while it stands; going on goes on in place.
    const auto lookAround = [&] {
        (void)i2c().cmdI2Read[0].userClick();
        (void)panel().cmdStep.userClick();
    };
    EXPECT_THAT(standsAt(click(panel().cmdExecAll), {lookAround}), ElementsAre(3, 4, 8));
    EXPECT_THAT(ranLines(), ElementsAre(1, 2, 3, 4, 7, 8, 9, 5));
    EXPECT_EQ(counts(), "2/1");

    // Aborted while it stands ahead of a row of the service block: that row is not run.
    panel().debugger().setBreakpoints({8});
    EXPECT_THAT(standsAt(click(panel().cmdExecAll), {click(panel().cmdAbort)}), ElementsAre(8));
    EXPECT_THAT(ranLines(), ElementsAre(1, 2, 3, 4, 7));

    panel().debugger().setBreakpoints({});
    ASSERT_TRUE(panel().chkPauseOnFail.userClick().done());
    // Behind the failed row; it is run again, with both results kept, then the next row alone.
    const auto retry = [&] {
        panel().RetryRow(2);
        (void)panel().cmdStep.userClick();
    };
    EXPECT_THAT(standsAt(click(panel().cmdExecAll), {retry}), ElementsAre(2, 4));
    EXPECT_THAT(ranLines(), ElementsAre(1, 2, 2, 3, 4, 7, 8, 9, 5));
    EXPECT_EQ(counts(), "2/2");

    // A first step runs the first row. Abort ends a run that stands.
    EXPECT_THAT(standsAt(click(panel().cmdStep), {click(panel().cmdStep), click(panel().cmdAbort)}),
                ElementsAre(2, 2));
    EXPECT_THAT(ranLines(), ElementsAre(1, 2));
    EXPECT_EQ(panel().results().end, ScriptEnd::Stopped);
    EXPECT_THAT(bench.context().activities.running(), IsEmpty());
}

TEST_F(ScriptDebuggerTest, PartsOfAScriptRunAsAPass) {
    load("02,C0,\n00,11,11\n00,22,22\n00,33,33\n`ENDM\n00,44,44");
    panel().RunFromHere(3);
    EXPECT_THAT(ranLines(), ElementsAre(3, 4));
    panel().RunSelection(2, 6); // exactly those, the end marker and what lies behind it included
    EXPECT_THAT(ranLines(), ElementsAre(2, 3, 4, 5, 6));
    EXPECT_EQ(panel().results().passes.back().rows.back().line, 1); // not reached
    EXPECT_EQ(panel().results().verdict(), "pass");
    // By hand, no pass running: kept beside.
    panel().RetryRow(4);
    EXPECT_EQ(panel().results().byHand.back().verdict, RowVerdict::Pass);
}

TEST_F(ScriptDebuggerTest, ClosingThePanelEndsARunThatStands) {
    load("02,C0,\n00,11,\n`ENDM");
    panel().debugger().setBreakpoints({2});
    at(100, [&] { slot.unload(); });
    (void)panel().cmdExecAll.userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 02 C0"));
    EXPECT_FALSE(script.ScriptRunning);
    EXPECT_EQ(link().activePanel, nullptr);
    EXPECT_EQ(panel().vbalGrid1.rows(), 1);
}

} // namespace
} // namespace vrk
