#include "tests/panels/I2cPanelTest.h"

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using State = Freshness::State;

/// What readings are worth, what a plot gets of them, and sweeps.
class ReadingsTest : public I2cPanelTest {
  protected:
    void SetUp() override {
        watches_.push_back(i2c().observePoints(
            [this](const auto& point) { points.emplace_back(point.channel, point.position); }));
        watches_.push_back(i2c().observePointsGone([this] { points.clear(); }));
        openI2c();
        choose("KV4074", &frmVRK_User1::mnu_KV4074);
    }
    /// Positions that went to channel 1.
    std::vector<int> positions() {
        std::vector<int> all;
        for (const std::string& report : transfers())
            if (report.substr(0, 18) == "01 06 A0 01 01 01 ")
                all.push_back(hexToInt(report.substr(18)));
        return all;
    }
    std::string lastResult() {
        const auto& kept = bench.context().results.kept();
        return kept.empty() ? "" : kept.back().text;
    }
    std::vector<std::pair<int, int>> points;

  private:
    std::vector<Subscription> watches_;
};

TEST_F(ReadingsTest, ReadingGrowsStaleWithWhatItDependsOn) {
    const auto states = [this] {
        return std::vector{stateOf(i2c().lblPotRead[0]), stateOf(i2c().lblPotReadhex[0]),
                           stateOf(i2c().lblWiperVolts[0]), stateOf(i2c().txtACR[1]),
                           stateOf(i2c().lblGPRead)};
    };
    const auto readAll = [this, states] {
        i2c().cmdI2Read[0].userClick();
        i2c().cmdACRRead.userClick();
        i2c().cmdGPRead.userClick();
        EXPECT_THAT(states(), ::testing::Each(State::Fresh));
    };
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"VCC off and on",
         [this] {
             i2c().OptVCC[1].userClick();
             i2c().OptVCC[0].userClick();
         }},
        {"level",
         [this] {
             i2c().CboVCC.userSelect(5);
             i2c().cmdUpdateVCC.userClick();
         }},
        {"address", [this] { i2c().cmdSlave.userClick(); }},
    };
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        readAll();
        change();
        EXPECT_THAT(states(), ::testing::Each(State::Stale));
    }
    i2c().txtDeviceAdr.setText("A0");
    readAll();
    i2c().cmdUpdateVCC.userClick(); // the same level again changes nothing
    EXPECT_THAT(states(), ::testing::Each(State::Fresh));
    EXPECT_FALSE(points.empty());
    i2c().mnuKV4078.userClick();
    // Of another part: a position is none at all, the others are those of the part before.
    EXPECT_THAT(states(), ElementsAre(State::Never, State::Never, State::Stale, State::Stale, State::Stale));
    EXPECT_THAT(points, IsEmpty());
}

TEST_F(ReadingsTest, FailedReadIsNoReading) {
    enter(i2c().txtHexDataWrt[2], "11");
    i2c().cmdI2Read[2].userClick();
    EXPECT_THAT(points, ElementsAre(std::pair(2, 0x11)));
    EXPECT_EQ(lastResult(), "Read 11 from wiper 2");
    points.clear();
    console().chkRandom.setValue(0); // without the register byte the part takes the value for it
    i2c().CMDxMIT[2].userClick();
    EXPECT_EQ(lastResult(), "Write of channel 2 failed");
    console().chkRandom.setValue(1);
    fault(sim::FaultKind::Nak);
    answer(Choice::Retry);
    i2c().cmdI2Read[2].userClick();
    EXPECT_THAT(boxes(), ElementsAre(kInvalidAddress, kReadError));
    EXPECT_THAT(points, IsEmpty());
    for (const Reading* shown : {&i2c().lblPotRead[2], &i2c().lblPotReadhex[2]}) {
        EXPECT_EQ(stateOf(*shown), State::Stale);
        EXPECT_TRUE(shown->freshness()->failed);
    }
    EXPECT_EQ(lastResult(), "Read of channel 2 failed");
    // A reply that comes after all is one.
    fault(sim::FaultKind::NoReply, 1, static_cast<int>(Command::I2cTransfer));
    answer(Choice::Retry, [this] { EXPECT_EQ(i2c().Shp_USB_Transfer.colour(), Colour::LightRed); });
    i2c().cmdI2Read[2].userClick();
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_THAT(points, ElementsAre(std::pair(2, 0x11)));
    EXPECT_EQ(stateOf(i2c().lblPotRead[2]), State::Fresh);
    // The registers alike.
    for (auto [button, reading] : {std::pair<Button*, Control*>{&i2c().cmdACRRead, &i2c().txtACR[1]},
                                   {&i2c().cmdGPRead, &i2c().lblGPRead}}) {
        button->userClick();
        EXPECT_EQ(stateOf(*reading), State::Fresh);
        fault(sim::FaultKind::Nak);
        answer(Choice::Retry);
        button->userClick();
        EXPECT_THAT(boxes(), ElementsAre(kInvalidAddress));
        EXPECT_EQ(stateOf(*reading), State::Stale);
    }
}

TEST_F(ReadingsTest, LostLinkShowsUntilTheBoardIsBack) {
    enter(i2c().txtHexDataWrt[0], "22");
    i2c().cmdI2Read[0].userClick();
    bus.unplug(0);
    answer(Choice::Retry, [this] {
        EXPECT_EQ(i2c().ShpAttach.colour(), Colour::LightRed);
        bus.plug(0); // without power for its part
    });
    answer(Choice::Retry);
    i2c().cmdI2Read[0].userClick();
    EXPECT_FALSE(boxes().empty());
    EXPECT_EQ(i2c().ShpAttach.colour(), Colour::LightGreen);
    EXPECT_EQ(i2c().Shape1[2].colour(), Colour::LightRed);
    EXPECT_EQ(stateOf(i2c().lblPotRead[0]), State::Stale);
    EXPECT_TRUE(i2c().cmdI2Read[0].enabled() && i2c().CMDxMIT[0].enabled());
}

TEST_F(ReadingsTest, ASwitchThatNoMeasurementConfirmedIsNotToldAsDone) {
    i2c().OptVCC[1].userClick();
    EXPECT_EQ(lastResult(), "VCC off");
    fault(sim::FaultKind::NoReply, 2, static_cast<int>(Command::AdcRead));
    answer(Choice::Retry);
    answer(Choice::Retry);
    i2c().OptVCC[0].userClick();
    EXPECT_EQ(boxes().size(), 2U);
    EXPECT_EQ(lastResult(), "VCC on not confirmed");
    EXPECT_EQ(stateOf(i2c().lblVCCVolts), State::Stale);
    // A board that was away answers to the measurement, without VCC.
    i2c().OptVCC[1].userClick();
    bus.unplug(0);
    answer(Choice::Retry, [this] { bus.plug(0); });
    i2c().OptVCC[0].userClick();
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_EQ(lastResult(), "VCC on did not last");
}

TEST_F(ReadingsTest, EntryOfBeforeIsNotWrittenToAnotherPart) {
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"menu", [this] { i2c().mnu_KV4074.userClick(); }},
        {"taps", [this] { act([this] { i2c().OptTaps_Click(4); }); }},
        {"channels", [this] { act([this] { i2c().OptChans_Click(2); }); }},
        {"table", [this] { EXPECT_THAT(chooseRow("KV4074,4,128,A0,08,C0,1g,r,s,t,u,1,1"), IsEmpty()); }},
    };
    for (const auto& [name, change] : changes)
        for (TextBox* box : {&i2c().txtHexDataWrt[1], &i2c().txtDECDataWrt[1]}) {
            SCOPED_TRACE(name);
            type(*box, "21");
            change();
            wire.clear();
            i2c().CMDxMIT[0].userClick();
            EXPECT_EQ(transfers().size(), 1U); // the button's own write
        }
    // An entry that is out of range stands for 0, and says so.
    for (TextBox* box : {&i2c().txtHexDataWrt[1], &i2c().txtDECDataWrt[1]}) {
        i2c().mnu_KV4074.userClick();
        const auto before = bench.context().results.kept().size();
        enter(*box, "999");
        std::vector<std::string> told;
        for (auto at = before; at < bench.context().results.kept().size(); ++at)
            told.push_back(bench.context().results.kept()[at].text);
        EXPECT_THAT(told, ElementsAre("\"999\" is outside 0 to 128: 0 is written", "Wrote 00 to wiper 1"));
    }
}

TEST_F(ReadingsTest, SweepVisitsEveryPositionAndTheLast) {
    struct Case {
        int from;
        int to;
        int step;
        std::vector<int> positions;
    };
    const Case cases[] = {
        {0, 127, 50, {0, 50, 100, 127}}, {10, 4, 3, {10, 7, 4}}, {5, 5, 9, {5}}, {0, 3, 1000, {0, 3}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.step);
        points.clear();
        wire.clear();
        act([&] { i2c().sweepWiper(1, c.from, c.to, c.step); });
        EXPECT_EQ(positions(), c.positions);
        std::vector<std::pair<int, int>> wanted;
        for (const int position : c.positions)
            wanted.emplace_back(1, position);
        EXPECT_EQ(points, wanted);
        EXPECT_EQ(lastResult(), "Sweep done");
        EXPECT_EQ(i2c().txtDECDataWrt[1].text(), decimalText(c.to));
    }
    for (const auto& [from, to, step] : {std::tuple{0, 129, 1}, {-1, 5, 1}, {0, 5, 0}}) {
        act([&, from = from, to = to, step = step] { i2c().sweepWiper(1, from, to, step); });
        EXPECT_EQ(boxes().size(), 1U);
    }
    wire.clear();
    act([this] { i2c().sweepWiper(4, 0, 5, 1); });
    EXPECT_THAT(boxes(), ElementsAre("Subscript out of range [OK]"));
    act([this] { i2c().sweepWiper(1, 0, 127, 2147483647); }); // a step beyond any distance
    EXPECT_THAT(positions(), ElementsAre(0, 127));
}

TEST_F(ReadingsTest, SweepEndsWhenItIsAbortedOrThePartFallsSilent) {
    at(150, [this] {
        EXPECT_TRUE(i2c().CMDxMIT[1].userClick().refused() && i2c().cmdI2Read[1].userClick().refused());
        EXPECT_TRUE(i2c().Slider1[1].userDrag(3).refused() && i2c().List1[1].userSelect(3).refused());
        act([this] { i2c().sweepWiper(0, 0, 1, 1); }); // one at a time
        EXPECT_EQ(boxes().size(), 1U);
        EXPECT_EQ(bench.context().activities.current()->total(), 129);
        EXPECT_TRUE(bench.context().activities.abort());
    });
    act([this] { i2c().sweepWiper(1, 0, 128, 1); });
    EXPECT_EQ(lastResult(), "Sweep aborted");
    const auto visited = positions();
    EXPECT_GT(visited.size(), 0U);
    EXPECT_LT(visited.size(), 10U);
    EXPECT_EQ(visited.size(), points.size());
    points.clear();
    at(150, [this] {
        fault(sim::FaultKind::Nak, 1, static_cast<int>(Command::I2cTransfer));
        answer(Choice::Retry);
    });
    act([this] { i2c().sweepWiper(1, 0, 128, 1); });
    EXPECT_EQ(boxes().size(), 2U);
    EXPECT_EQ(lastResult().substr(0, 23), "Sweep ended at position");
    EXPECT_LT(points.size(), 10U);
    EXPECT_EQ(bench.context().activities.current(), nullptr);
    for (Control* control : std::initializer_list<Control*>{
             &i2c().CMDxMIT[1], &i2c().cmdI2Read[1], &i2c().Slider1[1], &i2c().List1[1], &i2c().cmdACRWrite})
        EXPECT_TRUE(control->enabled()) << control->path();
    act([this] { i2c().sweepWiper(1, 3, 4, 1); }); // and another one can be started
    EXPECT_EQ(lastResult(), "Sweep done");
    i2c().ChkAutoRead[1].userClick(); // reads once with the write, not twice
    wire.clear();
    act([this] { i2c().sweepWiper(1, 3, 4, 1); });
    EXPECT_EQ(transfers().size(), 4U);
}

TEST_F(ReadingsTest, ActionsKeepTheirWaits) {
    // Milliseconds that a part and the converter are given, beside the exchanges themselves.
    const std::tuple<const char*, std::function<void()>, int> actions[] = {
        {"write", [this] { i2c().CMDxMIT[0].userClick(); }, 20},
        {"volts", [this] { i2c().cmdSampleWiper[0].userClick(); }, 50},
        {"read", [this] { i2c().cmdI2Read[0].userClick(); }, 70},
        {"drag", [this] { i2c().Slider1[0].userDrag(9); }, 60}, // slider, list and write
        {"register", [this] { i2c().cmdACRRead.userClick(); }, 20},
        {"general", [this] { i2c().cmdWriteGP.userClick(); }, 20},
        {"VCC", [this] { i2c().cmdReadVCC.userClick(); }, 80},
    };
    for (const auto& [name, action, waits] : actions) {
        wire.clear();
        const Milliseconds before = clock.now();
        action();
        const auto exchanges = static_cast<int>(wire.size()); // requests and replies, 1 ms each
        const auto lasted = static_cast<int>((clock.now() - before).count());
        EXPECT_GE(lasted, waits + exchanges) << name;
        EXPECT_LT(lasted, waits + 2 * exchanges + 10) << name;
    }
}

} // namespace
} // namespace vrk
