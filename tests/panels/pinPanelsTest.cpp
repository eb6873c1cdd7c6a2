#include "panels/discrete/UPDN_Runin.h"
#include "panels/discrete/frmVRK_PB1.h"
#include "panels/discrete/frmVRK_UD1.h"
#include "tests/support/TestBench.h"

#include <memory>
#include <string>
#include <vector>

namespace vrk {

namespace {

/// The panels of parts without a bus, with such a part in the socket and VCC on.
class PinPanels : public TestBench {
  public:
    PinPanelState upDownState;
    PinPanelState buttonState;
    RunInState runInState;
    Trace trace;
    PanelSlot<frmVRK_UD1> upDown{bench.context(), "frmVRK_UD1", "Up/Down", [this] {
                                     return std::make_shared<frmVRK_UD1>(bench.context(), bench.services(),
                                                                         upDownState,
                                                                         std::function<void()>{});
                                 }};
    PanelSlot<frmVRK_PB1> buttons{
        bench.context(), "frmVRK_PB1", "Push Button",
        [this] { return std::make_shared<frmVRK_PB1>(bench.context(), bench.services(), buttonState); }};
    PanelSlot<UPDN_Runin> runIn{bench.context(), "UPDN_Runin", "Run In", [this] {
                                    return std::make_shared<UPDN_Runin>(bench.context(), bench.services(),
                                                                        runInState, trace);
                                }};

    template <class P>
    P& open(PanelSlot<P>& slot, const char* part, bool vcc = true) {
        bus.socket(part);
        loadConsoles();
        EXPECT_TRUE(act([&slot] { slot.show(); }).done());
        if (vcc) {
            EXPECT_TRUE(slot->OptVCC[0].userClick().done());
        }
        wire.clear();
        return *slot;
    }
    int position(int part = 1) {
        const auto state = bus.state();
        return (part == 1 ? state.part : state.part2)->wipers.at(0);
    }
    int stored() { return bus.state().part->nonvolatile.at(0); }
    /// The pins' reports as address and value: "80 C0".
    std::vector<std::string> edges() {
        std::vector<std::string> all;
        for (const std::string& report : sent(report::Command::SfrAccess, 5))
            if (report.rfind("01 12 00 ", 0) == 0)
                all.push_back(report.substr(9));
        return all;
    }
};

TEST_F(PinPanels, UpDownStepsStoreAndEndAtTheStops) {
    frmVRK_UD1& panel = open(upDown, "UPDN100");
    const int start = position();
    panel.ChlAutoCS[0].setValue(1);
    panel.txtIncr[0].setText("5");
    panel.txtIncr[1].setText("2");
    panel.txtDelay[0].setText("0");
    ASSERT_TRUE(panel.cmdIncr[0].userClick().done());
    EXPECT_EQ(position(), start + 5);
    ASSERT_TRUE(panel.cmdIncr[1].userClick().done());
    EXPECT_EQ(position(), start + 3);
    EXPECT_EQ(panel.lblWiperVolts.freshness()->state, Freshness::State::Fresh);
    ASSERT_TRUE(panel.cmdSequence[0].userClick().done()); // store
    EXPECT_EQ(stored(), start + 3);
    EXPECT_FALSE(panel.cmdSequence[1].enabled());
    // An entry that is no number is repaired to one edge, 0 gives one edge and stays.
    panel.txtIncr[0].setText("x");
    panel.txtDelay[0].setText("y");
    ASSERT_TRUE(panel.cmdIncr[0].userClick().done());
    EXPECT_EQ(panel.txtIncr[0].text() + panel.txtDelay[0].text(), "10");
    EXPECT_EQ(position(), start + 4);
    panel.txtIncr[0].setText("0");
    ASSERT_TRUE(panel.cmdIncr[0].userClick().done());
    EXPECT_EQ(panel.txtIncr[0].text(), "0");
    EXPECT_EQ(position(), start + 5);
    panel.txtIncr[1].setText("300");
    ASSERT_TRUE(panel.cmdIncr[1].userClick().done());
    EXPECT_EQ(position(), 0);
    ASSERT_TRUE(panel.cmdSequence[1].userClick().done()); // deselected without a store
    EXPECT_EQ(stored(), start + 3);
    EXPECT_TRUE(panel.ChOut[frmVRK_UD1::kCs].checked());
}

TEST_F(PinPanels, AbortStillGivesTheLastEdgeAndTheButtonsBack) {
    frmVRK_UD1& panel = open(upDown, "UPDN100");
    panel.ChlAutoCS[0].setValue(1);
    panel.txtIncr[0].setText("50");
    panel.txtDelay[0].setText("100");
    const int start = position();
    at(1000, [&panel] { (void)panel.cmdAbortIncr[0].userClick(); });
    ASSERT_TRUE(panel.cmdIncr[0].userClick().done());
    EXPECT_GT(position(), start + 1);
    EXPECT_LT(position(), start + 49);
    EXPECT_TRUE(panel.cmdIncr[3].enabled());
    EXPECT_FALSE(panel.cmdAbortIncr[0].enabled());
    // Without VCC pulses are refused, a sequence runs all the same.
    (void)panel.OptVCC[1].userClick();
    wire.clear();
    (void)panel.cmdIncr[0].userClick();
    EXPECT_TRUE(edges().empty());
    (void)panel.cmdSequence[1].userClick();
    EXPECT_FALSE(edges().empty());
    EXPECT_EQ(boxes(), std::vector<std::string>(2, "VCC is not turned on. [OK]"));
}

TEST_F(PinPanels, NoSupplyActionMovesTheDirectionPin) {
    frmVRK_UD1& panel = open(upDown, "UPDN100", false);
    for (const int level : {0, 1}) {
        panel.ChOut[frmVRK_UD1::kUpDown].setValue(level);
        (void)panel.OptVCC[0].userClick();
        (void)panel.OptVCC[1].userClick();
        EXPECT_EQ(board().chkPData[10].value(), level);
    }
}

TEST_F(PinPanels, PushButtonsPressHoldAndStore) {
    frmVRK_PB1& panel = open(buttons, "PB64");
    const int start = position();
    panel.txtDelay.setText("30");
    panel.txtIncr[0].setText("4");
    panel.ChlAutoCS[1].setValue(1);
    EXPECT_EQ(panel.blAutoStore.caption(), "Store after Inc / Dec");
    ASSERT_TRUE(panel.cmdIncr[0].userClick().done());
    EXPECT_EQ(position(), start + 4);
    EXPECT_EQ(stored(), start + 4);
    panel.txtPressAndHold[1].setText("z");
    const Milliseconds began = clock.now();
    ASSERT_TRUE(panel.cmdSequence[1].userClick().done());
    EXPECT_EQ(panel.txtPressAndHold[1].text(), "1100");
    EXPECT_GE(clock.now() - began, Milliseconds{2200});
    EXPECT_EQ(position(), start + 3);
    // Both buttons of the shutdown command reach the part in one write of the ports.
    wire.clear();
    ASSERT_TRUE(panel.cmdSequence[3].userClick().done());
    EXPECT_EQ(sent(report::Command::SfrAccess, 4).size(), 6U);
    EXPECT_FALSE(panel.ChOut[frmVRK_PB1::kUp].checked() || panel.ChOut[frmVRK_PB1::kDown].checked());
}

TEST_F(PinPanels, RunInSendsAReportAnEdgeAndLogsWhatItJudged) {
    (void)open(upDown, "UPDN100");
    UPDN_Runin& panel = *runIn;
    panel.txtTestQty.setText("8");
    panel.txtLogSteps.setText("4");
    panel.ChkLogAll.setValue(1);
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    EXPECT_EQ(panel.lblRUnCount[0].caption(), "8");
    EXPECT_EQ(panel.lblRUnCount[1].caption(), "-----");
    EXPECT_EQ(stored(), 63);
    const std::vector<std::string> starts = {
        "",
        "",
        "10.0.0 VRK EEPROM Run In Test  User Test ID 2020-01-01 12:00:",
        "Positions100 V Tolerence 0.33",
        "Max Wiper V:[",
        " Calculated Limit +-:[0.0165]  ",
        "",
        " Wiper Position 63 Check Expected 3.1500   Read 3.1",
        "Initial Test :   Wiper Position 63 Check Recorded value [03.1",
        "",
        "Beginning Loop  User Test ID Test",
        "",
        " Wiper Position 64 Check Expected 3.2000   Read 3.2",
    };
    for (std::size_t line = 0; line < starts.size(); ++line)
        EXPECT_EQ(panel.rtxt1.line(line).substr(0, starts[line].size()), starts[line]) << line;
    EXPECT_NE(panel.rtxt1.text().find("Activity Log : Test Count:[ 4] Fail Count:[ 0] Time Stamp: 12:00:"),
              std::string::npos);
    EXPECT_NE(panel.rtxt1.text().find("Test Completed : Test Count:[ 8] Fail Count:[ 0]"), std::string::npos);
    // One step up and its store: select, /INC high with U/D, the edge, /INC and /CS up.
    const std::vector<std::string> all = edges();
    const std::vector<std::string> last(all.end() - 4, all.end());
    EXPECT_EQ(last, (std::vector<std::string>{"90 02", "90 00", "90 02", "80 C0"}));
}

TEST_F(PinPanels, AMissedStoreFailsEveryLaterStepAndAbortEndsARound) {
    (void)open(upDown, "UPDN100");
    UPDN_Runin& panel = *runIn;
    panel.txtTestQty.setText("400");
    panel.txtLogSteps.setText("100");
    at(2000, [this] { fault(sim::FaultKind::MissedStore); });
    at(4000, [&panel] { (void)panel.cmdAbortRun.userClick(); });
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    EXPECT_EQ(runInState.LoopCount % 4, 0);
    EXPECT_GT(runInState.FailCount, 1);
    EXPECT_EQ(panel.lblRUnCount[1].caption(), decimalText(runInState.FailCount));
    EXPECT_TRUE(panel.cmdRunInitial.enabled());
    EXPECT_FALSE(panel.cmdAbortRun.enabled());
    // Entries that cannot be: told, and nothing is sent.
    wire.clear();
    panel.txtLogSteps.setText("0");
    EXPECT_EQ(panel.cmdRunInitial.userClick().kind, Outcome::Kind::Faulted);
    panel.txtLogSteps.setText("4");
    panel.txtWipPositions.setText("0");
    EXPECT_EQ(panel.cmdRunInitial.userClick().kind, Outcome::Kind::Faulted);
    EXPECT_EQ(boxes().size(), 2U);
    EXPECT_TRUE(wire.empty());
}

} // namespace

} // namespace vrk
