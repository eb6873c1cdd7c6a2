#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using sim::FaultKind;
using ::testing::ElementsAre;

class AdcServicesTest : public TestBench {};

TEST_F(AdcServicesTest, MultiplexerTurnsItsPinsAnalog) {
    loadConsoles();
    const auto connect = [this](int positive, int negative) {
        console().cboAnamux[0].setListIndex(positive);
        console().cboAnamux[1].setListIndex(negative);
        console().cmdMuxWrite.userClick();
        auto reports = sent(5);
        EXPECT_EQ(reports.at(4), "01 12 00 F5 FF"); // all inputs digital first
        reports.erase(reports.begin(), reports.begin() + 5);
        return reports;
    };
    // Row 10 takes P2.3 along, row 11, which names it, takes none.
    EXPECT_THAT(connect(10, 17), ElementsAre("01 12 00 F3 FB", "01 12 00 F3 F3", "01 0C 00 0A 1F"));
    EXPECT_EQ(console().txtModeByte[0].text() + " " + console().txtModeByte[1].text(), "10 31");
    EXPECT_THAT(connect(11, 16), ElementsAre("01 0C 00 0B 1E"));
    EXPECT_EQ(bus.state().sfr.at("F3"), 0xFF);
    EXPECT_THAT(connect(7, 0), ElementsAre("01 12 00 F2 7F", "01 12 00 F2 7E", "01 0C 00 07 00"));
}

TEST_F(AdcServicesTest, ExternalConvertersSignedCount) {
    loadConsoles();
    using Row = std::tuple<std::vector<std::uint8_t>, const char*, const char*>;
    console().externalGain = 0;
    for (const auto& [reply, count, millivolts] :
         {Row{{1, 0, 9, 0x7F, 0xFF, 0xFF}, "8388607", "2500.00"},
          Row{{1, 0, 9, 0x80, 0x00, 0x00}, "-8388608", "-2500.00"},
          Row{{1, 0, 9, 0xFF, 0xFF, 0xFF}, "-1", "0.00"}, Row{{1, 0, 9, 0x00, 0x00, 0x00}, "0", "0.00"},
          Row{{1, 0, 9, 0x01, 0x02, 0x03}, "66051", "19.68"},
          Row{{1, 0, 9, 0xC0, 0x00, 0x00}, "-4194304", "-1250.00"}}) {
        bus.reply(19, reply);
        console().cmdRD7150.userClick();
        EXPECT_EQ(console().lblADDecimal[1].caption(), count);
        EXPECT_EQ(console().lbl_ADReal.caption(), millivolts);
    }
    EXPECT_EQ(console().externalGain, 1);
}

TEST_F(AdcServicesTest, ExternalConvertersRegisterBitsArriveOnePlaceLate) {
    loadConsoles();
    using Row = std::tuple<std::uint8_t, std::uint8_t, const char*>;
    for (const auto& [first, second, value] : {Row{1, 4, "82"}, Row{0, 4, "02"}, Row{2, 0xFE, "7F"},
                                               Row{0, 5, "02"}, Row{0, 7, "04"}, Row{1, 0xFF, "80"}}) {
        bus.reply(19, {1, 0x10, first, second, 0x44});
        console().cmdWrtADReg.userClick();
        EXPECT_EQ(console().lblADRegRead.caption(), value) << int{second};
    }
    EXPECT_EQ(console().lblAdRcv[0].caption() + console().lblAdRcv[2].caption() +
                  console().lblAdRcv[3].caption(),
              "10FF44");
    EXPECT_TRUE(link().linkOk);
    fault(FaultKind::WriteFails, 1, 19);
    answer(Choice::Retry);
    console().cmdWrtADReg.userClick();
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_FALSE(link().linkOk);
    EXPECT_EQ(console().lblAdRcv[3].caption(), "44");
}

} // namespace
} // namespace vrk
