#include "tests/motherboard/MotherboardBench.h"

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AnalogTest : public MotherboardBench {};

constexpr int kVin0 = 0x06;
constexpr int kVin4 = 0x0A;

TEST_F(AnalogTest, ReadingAndItsTexts) {
    loadConsoles();
    for (const auto& [count, volts, pin] :
         {std::tuple{1023, "3.3", 3.3}, {0, ".", 0.0}, {31, ".1", 0.1}, {341, "1.1", 1.1}}) {
        SCOPED_TRACE(count);
        bus.input(kVin4, std::nullopt, count);
        board().READ_AD();
        EXPECT_EQ(board().txtADDec.text(), decimalText(count));
        EXPECT_EQ(board().txtRdgs[0].text(), volts);
        EXPECT_EQ(byteOf("ADHigh", kNoIndex) * 256 + byteOf("ADLow", kNoIndex), count);
        EXPECT_EQ(number("ADVolts"), pin);
        EXPECT_EQ(number("ADVolts2"), 2 * pin);
    }
    EXPECT_EQ(console().chkADCEnable.value(), 1);
    EXPECT_EQ(sent(4).at(0), "01 10 00 01");
    const auto worth = [this] {
        return std::pair(board().txtADDec.freshness()->state, board().txtRdgs[0].freshness()->state);
    };
    EXPECT_EQ(worth(), std::pair(Freshness::State::Fresh, Freshness::State::Fresh));
    fault(sim::FaultKind::NoReply, 1, 17);
    answer(Choice::Retry);
    board().READ_AD();
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_EQ(worth(), std::pair(Freshness::State::Stale, Freshness::State::Stale));
}

TEST_F(AnalogTest, ChannelChangesThroughTheMultiplexer) {
    loadConsoles();
    bus.input(kVin0, std::nullopt, 100);
    board().Combo1.setListIndex(6);
    EXPECT_THAT(sent(Command::AdcMux, 5), ElementsAre("01 0C 00 06 1F"));
    EXPECT_EQ(console().cboAnamux[0].listIndex(), 6);
    EXPECT_EQ(board().Combo1.text(), "06 - P1.6 VIN0");
    board().READ_AD();
    EXPECT_EQ(board().txtADDec.text(), "100");
    sent();
    board().Combo1.setListIndex(6); // already there
    EXPECT_THAT(sent(), IsEmpty());

    console().cboAnamux[1].setListIndex(0);
    board().cmdSetMode.userClick(); // the one action that sets the negative input
    EXPECT_THAT(sent(Command::AdcMux, 5), ElementsAre("01 0C 00 06 1F"));

    // Refused twice: what stood there is no reading of this channel. The next reading asks for it again.
    bus.input(kVin4, std::nullopt, 300);
    fault(sim::FaultKind::WriteFails, 2, 12);
    board().Combo1.setListIndex(10);
    EXPECT_EQ(board().txtADDec.freshness()->state, Freshness::State::Stale);
    for (int conversion = 0; conversion < 2; ++conversion)
        board().READ_AD();
    EXPECT_EQ(board().txtADDec.text(), "300");
    EXPECT_EQ(board().txtADDec.freshness()->state, Freshness::State::Fresh);
    sent();
    board().cmdReadAllAD.userClick();
    EXPECT_EQ(board().Combo1.listIndex(), 6);
    EXPECT_EQ(board().txtGPIOUserName[0].text(), "0.6452"); // twice 100 counts
    EXPECT_EQ(board().txtGPIOUserName[1].text(), "");
    EXPECT_EQ(sent(Command::AdcRead).size(), 3U); // the channel's own, then two
}

TEST_F(AnalogTest, SamplingLoopRunsUntilItIsStopped) {
    loadConsoles();
    std::vector<Colour> colours;
    Subscription lamp =
        board().shpSample.observeAssignments([&] { colours.push_back(board().shpSample.colour()); });
    at(450, [this] {
        EXPECT_TRUE(board().cmdSample.userClick().refused());
        EXPECT_EQ(unlocked(), 0);
        EXPECT_TRUE(board().shpSample.visible());
    });
    at(1000, [this] { board().cmdEndSampling.userClick(); });
    const auto before = clock.now();
    EXPECT_TRUE(board().cmdSample.userClick().done());
    EXPECT_GE(clock.now() - before, Milliseconds(1000));
    EXPECT_LT(clock.now() - before, Milliseconds(1200));
    const auto readings = sent(Command::AdcRead).size();
    EXPECT_GE(readings, 8U);
    EXPECT_LE(readings, 10U);
    EXPECT_EQ(colours.size(), readings);
    lamp.reset();
    EXPECT_EQ(colours.at(0), Colour::LightGreen);
    EXPECT_EQ(colours.at(1), Colour::Black);
    EXPECT_EQ(unlocked(), 13);
    EXPECT_FALSE(board().cmdEndSampling.enabled());

    // Another action's unlocking reaches the running loop's own button.
    at(250, [this] {
        board().cmdEnableBUttons_Click();
        EXPECT_TRUE(board().cmdSample.enabled());
        EXPECT_TRUE(bench.context().activities.abort()); // as Esc and the band's Abort do
    });
    board().cmdSample.userClick();
    at(0, [this] { board().cmdEndSampling.userClick(); }); // before the first turn
    board().cmdSample.userClick();
    // The console closes under its loop, or before its first turn: the loop ends.
    for (const int closed : {250, 0}) {
        loadConsoles();
        at(closed, [this] { board().cmdexit.userClick(); });
        EXPECT_TRUE(board().cmdSample.userClick().done());
        EXPECT_FALSE(bench.frmMotherboardDAQ2.loaded());
    }
}

} // namespace
} // namespace vrk
