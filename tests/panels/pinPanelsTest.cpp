#include "panels/discrete/UPDN_Runin.h"
#include "panels/discrete/frmVRK_PB1.h"
#include "panels/discrete/frmVRK_UD1.h"
#include "tests/support/TestBench.h"

#include <map>
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
        board().setPin(frmMotherboardDAQ2::kPinMotherboardSwitch, 0); // as the start panel does
        EXPECT_TRUE(act([&slot] { slot.show(); }).done());
        if (vcc) {
            EXPECT_TRUE(slot->OptVCC[0].userClick().done());
        }
        for (const std::string& edge : edges())
            ports_[edge.substr(0, 2)] = edge;
        wire.clear();
        return *slot;
    }
    int position(int part = 1) {
        const auto state = bus.state();
        return (part == 1 ? state.part : state.part2)->wipers.at(0);
    }
    int stored() { return bus.state().part->nonvolatile.at(0); }
    static void click(Control& control) {
        if (auto* button = dynamic_cast<Button*>(&control))
            (void)button->userClick();
        else if (auto* box = dynamic_cast<CheckBox*>(&control))
            (void)box->userClick();
        else if (auto* option = dynamic_cast<OptionButton*>(&control))
            (void)option->userClick();
    }
    /// What an action writes to P0 and P1 other than what stood there: "80 82, 90 04".
    std::string moved(const std::function<void()>& action) {
        wire.clear();
        action();
        std::string all;
        for (const std::string& edge : edges()) {
            std::string& before = ports_[edge.substr(0, 2)];
            if ((edge.front() == '8' || edge.front() == '9') && before != edge)
                all += (all.empty() ? "" : ", ") + edge;
            before = edge;
        }
        return all;
    }
    /// The pins' reports as address and value: "80 C0".
    std::vector<std::string> edges() {
        std::vector<std::string> all;
        for (const std::string& report : sent(report::Command::SfrAccess, 5))
            if (report.rfind("01 12 00 ", 0) == 0)
                all.push_back(report.substr(9));
        return all;
    }

  private:
    std::map<std::string, std::string> ports_; ///< as written last
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

/// What the actions put on the pins, in the order of the table: the port writes that change a port, P0 as 80
/// with /CS1 40 and /CS2 80, P1 as 90 with /INC 02 and U/D 04.
TEST_F(PinPanels, EachUpDownActionMovesItsPins) {
    frmVRK_UD1& p = open(upDown, "UPDN100");
    ASSERT_TRUE(p.OptChans[1].userClick().done());
    for (const int box : {0, 1, 3})
        (void)p.ChlAutoCS[box].userClick();
    for (auto& count : p.txtIncr)
        count->setText("2");
    const struct {
        const char* what;
        Control& control;
        const char* moved;
    } kRows[] = {
        {"/CS1 low", p.ChOut[0], "80 82"},
        {"/CS1 high", p.ChOut[0], "80 C2"},
        {"/CS2 low", p.ChOut[4], "80 42"},
        {"all of part #2 high", p.cmdAlloutsHigh[1], "80 C2"},
        {"U/D low", p.ChOut[2], "90 02"},
        {"reserved", p.ChOut[3], ""},
        {"all high", p.cmdAlloutsHigh[0], "90 06"},
        {"up #1", p.cmdIncr[0], "80 82, 90 04, 90 06, 90 04, 80 C2"},
        {"down #1", p.cmdIncr[1], "90 06, 80 82, 90 02, 90 00, 90 02, 90 00, 80 C2"},
        // The two share /INC and U/D: how part #1 has left them must not spoil the first step of part #2.
        {"up #2", p.cmdIncr[2], "90 02, 80 42, 90 06, 90 04, 90 06, 90 04, 80 C2"},
        {"down #2", p.cmdIncr[3], "90 06, 80 42, 90 02, 90 00, 90 02, 90 00, 80 C2"},
        {"store #1", p.cmdSequence[0], "90 02, 80 82, 80 C2"},
        {"store #2", p.cmdSequence[2], "80 42, 80 C2"},
        {"/CS1 low", p.ChOut[0], "80 82"},
        {"no store #1", p.cmdSequence[1], "90 00, 80 C2"},
        {"down #2, #1 stays selected", p.cmdIncr[3], "90 02, 80 42, 90 00, 90 02, 90 00, 80 C2"},
        {"/CS2 low", p.ChOut[4], "80 42"},
        {"no store #2", p.cmdSequence[3], "80 C2"},
    };
    for (const auto& row : kRows) {
        if (&row.control == &p.cmdSequence[1])
            (void)p.ChlAutoCS[1].userClick(); // it is not refused any more
        if (&row.control == &p.cmdSequence[3])
            (void)p.ChlAutoCS[3].userClick();
        EXPECT_EQ(moved([&row] { click(row.control); }), row.moved) << row.what;
    }
    // A double click stores once.
    const auto once = moved([&p] { click(p.cmdSequence[0]); });
    at(100, [&p] { EXPECT_TRUE(p.cmdSequence[0].userClick().refused()); });
    EXPECT_EQ(moved([&p] { click(p.cmdSequence[0]); }), "80 82, 80 C2");
    EXPECT_FALSE(once.empty());
}

TEST_F(PinPanels, EachPushButtonActionMovesItsPins) {
    frmVRK_PB1& p = open(buttons, "PB64");
    for (auto& count : p.txtIncr)
        count->setText("2");
    const struct {
        const char* what;
        Control& control;
        const char* moved;
    } kRows[] = {
        {"/CS1 low", p.ChOut[0], "80 86"},
        {"/STORE low", p.ChOut[1], "80 06"},
        {"/MUTE low", p.ChOut[2], "80 02"},
        {"/UP low", p.ChOut[3], "90 04"},
        {"/DOWN low", p.ChOut[4], "90 00"},
        {"all high", p.cmdAlloutsHigh, "80 C6, 90 06"},
        {"CS before", p.ChlAutoCS[0], ""},
        {"twice up", p.cmdIncr[0], "80 86, 90 04, 90 06, 90 04, 90 06"},
        {"store behind", p.ChlAutoCS[1], ""},
        {"twice down", p.cmdIncr[1], "90 02, 90 06, 90 02, 90 06, 80 06, 80 86"},
        {"held up", p.cmdSequence[0], "90 04, 90 06"},
        {"held down", p.cmdSequence[1], "90 02, 90 06"},
        {"store", p.cmdSequence[2], "80 06, 80 86"},
        {"shutdown", p.cmdSequence[3], "90 00"},
        {"up ends it on its pin alone", p.cmdSequence[0], "90 02"},
        {"release", p.cmdSequence[4], "90 06"},
        {"/DOWN low", p.ChOut[4], "90 02"},
        {"shutdown all the same", p.cmdSequence[3], "90 00"},
        {"release again", p.cmdSequence[4], "90 06"},
        {"dual: part #2", p.OptCS[1], "80 46"},
        {"part #1 again", p.OptCS[0], "80 C6, 80 86"},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(moved([&row] { click(row.control); }), row.moved) << row.what;
    EXPECT_EQ(buttonState.UDDevice, 1);
}

/// After something went wrong or was left half done.
TEST_F(PinPanels, NothingIsLeftBehindByARunThatEndsEarly) {
    frmVRK_UD1& p = open(upDown, "UPDN100");
    (void)p.ChlAutoCS[0].userClick();
    p.txtIncr[0].setText("50");
    const int start = position();
    at(1000, [&p] { (void)p.OptVCC[1].userClick(); });
    click(p.cmdIncr[0]);
    EXPECT_EQ(bench.context().results.kept().back().text, "Up of part #1 stopped: VCC went off");
    EXPECT_FALSE(bench.context().results.kept().back().good);
    EXPECT_LT(position(), start + 40);
    EXPECT_TRUE(p.cmdIncr[0].enabled() && p.cmdAlloutsHigh[1].enabled() && p.cmdSequence[3].enabled());
    EXPECT_FALSE(p.cmdAbortIncr[0].enabled());
    (void)p.OptVCC[0].userClick();
    at(1000, [this] { fault(sim::FaultKind::WriteFails, 1, 18); });
    click(p.cmdIncr[0]);
    EXPECT_THAT(bench.context().results.kept().back().text, ::testing::HasSubstr("edges may be missing"));
    EXPECT_THAT(bench.context().results.kept().back().detail, ::testing::StartsWith("at most 50 edges"));
    // An entry beyond all bounds is told before a pin moves.
    p.txtIncr[0].setText("99999999999");
    (void)p.ChOut[0].userClick();
    EXPECT_EQ(moved([&p] { click(p.cmdIncr[0]); }), "");
    EXPECT_EQ(boxes(), std::vector<std::string>{"Overflow [OK]"});
    EXPECT_TRUE(p.cmdIncr[0].enabled());
    // Pins that could not be read are not shown as read.
    const bool high = p.ChOut[frmVRK_UD1::kUpDown].checked();
    board().txtPBufRd[1].setText(high ? "00" : "06");
    fault(sim::FaultKind::NoReply, 1, static_cast<int>(report::Command::SfrAccess), 1);
    answer(Choice::Retry);
    click(p.cmdSampleBits);
    EXPECT_FALSE(bench.context().results.kept().back().good);
    EXPECT_EQ(p.ChOut[frmVRK_UD1::kUpDown].checked(), high);
    (void)boxes();
    // A hold that is long by mistake can be ended, and the button is let go.
    frmVRK_PB1& b = open(buttons, "PB64");
    b.txtPressAndHold[0].setText("600000");
    const Milliseconds began = clock.now();
    at(2000, [this] { EXPECT_TRUE(bench.context().activities.abort()); });
    click(b.cmdSequence[0]);
    EXPECT_LT(clock.now() - began, Milliseconds{5000});
    EXPECT_TRUE(b.ChOut[frmVRK_PB1::kUp].checked());
    EXPECT_TRUE(b.cmdSequence[0].enabled());
    // Another panel takes the pins under a hold: the button is let go in its box alone.
    b.txtPressAndHold[0].setText("1000");
    p.ChOut[frmVRK_UD1::kInc].showValue(0);
    at(500, [this] { upDown.show(); });
    click(b.cmdSequence[0]);
    EXPECT_TRUE(b.ChOut[frmVRK_PB1::kUp].checked());
    EXPECT_EQ(board().chkPData[9].value(), 0);
    buttons.show();
    // The other part's panel has moved the pins since: they go back to what the boxes say, one by one.
    p.ChOut[4].setValue(0);
    (void)b.cmdAlloutsHigh.userClick();
    (void)p.OptVCC[0].userClick();
    (void)board().OptVCC[0].userClick();
    (void)b.OptVCC[1].userClick(); // VCC goes off under the panel that lies behind
    EXPECT_TRUE(act([this] { upDown.show(); }).done());
    EXPECT_TRUE(p.OptVCC[1].value());
    for (const int bit : {0, 1, 2, 4})
        EXPECT_EQ(board().chkPData[p.pins()[static_cast<std::size_t>(bit)].pin].value(),
                  p.ChOut[bit].value());
}

TEST_F(PinPanels, ABoardThatIsGoneTakesNoEdgeHoweverOftenItIsTold) {
    frmVRK_PB1& panel = open(buttons, "PB64");
    bus.unplug(0);
    for (int times = 0; times < 2; ++times) {
        click(panel.cmdSequence[2]);
        EXPECT_FALSE(bench.context().results.kept().back().good);
        EXPECT_EQ(bench.context().results.kept().back().detail, "edges may be missing");
    }
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
    (void)panel.cmdSampleWiper[0].userClick(); // VCC was measured last
    EXPECT_EQ(panel.lblWiperVolts[0].freshness()->state, Freshness::State::Stale);
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    (void)panel.cmdSampleWiper[0].userClick();
    EXPECT_EQ(panel.lblWiperVolts[0].freshness()->state, Freshness::State::Fresh);
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
