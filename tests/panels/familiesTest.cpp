#include "tests/panels/I2cPanelTest.h"

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Parts that need more than registers. Their socket is empty here: what counts is what goes over the wire.
class FamiliesTest : public I2cPanelTest {
  protected:
    void openFamily(const std::string& fields) {
        openI2c();
        bus.socket(std::nullopt);
        EXPECT_THAT(chooseRow(fields), IsEmpty());
        answerTransfers({0x2A});
        wire.clear();
    }
    /// The next transfers succeed with these bytes.
    void answerTransfers(std::vector<std::uint8_t> data) {
        bus.clear();
        data.insert(data.begin(), {0x01, 0x00});
        bus.reply(static_cast<int>(Command::I2cTransfer), data, 1000);
    }
    static constexpr const char* kTenBit = "Q3318/9,1,1024,50,NA,NA,NA,r,s,t,u,1,2";
    static constexpr const char* kBanks = "Q4422,4,64,50,05,00,NA,r,s,t,u,1,1";
};

TEST_F(FamiliesTest, TenBitRegistersTravelInTwoBytes) {
    openFamily(kTenBit);
    const char* const registers[][2] = {{"80", "A0"}, {"A0", "C0"}, {"A4", "C4"}, {"A8", "C8"}, {"AC", "CC"}};
    for (int index = 0; index < 5; ++index) {
        SCOPED_TRACE(index);
        answerTransfers({0xFD, static_cast<std::uint8_t>(0xA0 + index)}); // ones above bit 9 are no value
        i2c().CMDq331X_Read[index].userClick();
        EXPECT_EQ(stateOf(i2c().lblRdq331x[index]), Freshness::State::Fresh);
        type(i2c().txtWrQ3319[index], "3x2" + decimalText(index));
        i2c().CMDq331X_Write[index].userClick();
        EXPECT_THAT(transfers(), ElementsAre(std::string("01 06 51 02 01 ") + registers[index][0],
                                             std::string("01 06 50 02 01 ") + registers[index][1] + " 03 2" +
                                                 decimalText(index)));
        EXPECT_EQ(i2c().lblRdq331x[index].caption(), "1A" + decimalText(index));
        EXPECT_NE(stateOf(i2c().lblRdq331x[index]), Freshness::State::Fresh); // written since
        for (const int lamp : {1, 2, 4})
            EXPECT_NE(i2c().Shape1[lamp].colour(), Colour::LightRed);
    }
    i2c().CMDq331X_Read[3].userClick();
    // Either failure shows as the read's.
    for (Button* button : {&i2c().CMDq331X_Read[2], &i2c().CMDq331X_Write[2]}) {
        bus.clear();
        answer(Choice::Retry);
        button->userClick();
        EXPECT_THAT(boxes(), ElementsAre(kInvalidAddress, kReadError));
        EXPECT_EQ(i2c().Shape1[2].colour(), Colour::LightRed);
        EXPECT_EQ(stateOf(i2c().lblRdq331x[2]), Freshness::State::Stale);
        EXPECT_EQ(i2c().lblRdq331x[2].freshness()->failed, button == &i2c().CMDq331X_Read[2]);
    }
    EXPECT_EQ(stateOf(i2c().lblRdq331x[3]), Freshness::State::Fresh);
    i2c().OptVCC[1].userClick();
    EXPECT_EQ(stateOf(i2c().lblRdq331x[3]), Freshness::State::Stale);
}

TEST_F(FamiliesTest, TransferInstructionIsOneCommandAndReadsGoOnAsBefore) {
    openFamily(kTenBit);
    const char* const codes[] = {"C0", "C4", "C8", "CC", "E0", "E4", "E8", "EC"};
    for (int index = 0; index < 8; ++index) {
        SCOPED_TRACE(codes[index]);
        (index < 4 ? i2c().cmdQ331xDatatoWiper[index] : i2c().cmdQ331xWipertoData[index - 4]).userClick();
        EXPECT_THAT(transfers(), ElementsAre(std::string("01 06 51 01 01 ") + codes[index]));
        EXPECT_TRUE(console().chk2WireRead.checked() && console().chkRandom.checked());
        EXPECT_FALSE(console().ChK2WireCommand.checked());
        EXPECT_EQ(console().txtNumToRead.text(), " 2");
    }
    for (const int row : {-1, 4}) {
        act([&] { i2c().cmdQ331xWipertoData_Click(row); });
        EXPECT_THAT(boxes(), ElementsAre("Subscript out of range [OK]"));
    }
}

TEST_F(FamiliesTest, BankIsChosenByTheStatusRegisterAndReadsComeFromTheWiper) {
    openFamily(kBanks);
    EXPECT_EQ(bus.state().sfr.at("80") & 0xC0, 0xC0); // DS0, DS1
    EXPECT_EQ(bus.state().sfr.at("90") & 0x07, 0x02); // CS alone
    EXPECT_EQ(i2c().lblChanSend[1].caption(), "WCR1");
    const std::tuple<int, const char*, const char*, const char*> banks[] = {{1, "01", "DR00", "DR30"},
                                                                            {2, "03", "DR01", "DR31"},
                                                                            {3, "05", "DR02", "DR32"},
                                                                            {4, "07", "DR03", "DR33"}};
    for (const auto& [bank, code, first, last] : banks) {
        i2c().opt4422[bank].userClick();
        EXPECT_THAT(transfers(), ElementsAre(std::string("01 06 50 01 01 05 ") + code));
        EXPECT_EQ(i2c().lblChanSend[0].caption(), first);
        EXPECT_EQ(i2c().lblChanSend[3].caption(), last);
        EXPECT_EQ(i2c().lblChanRcvr[3].caption(), "WCR3");
        EXPECT_EQ(i2c().lblBank.caption(), "DR" + decimalText(bank - 1));
        EXPECT_FALSE(i2c().txtACR[1].enabled() || i2c().Shape2[1].visible());
    }
    i2c().cmdI2Read[2].userClick();
    // The option's own click, then the call: the part sees its bank twice.
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 05 00", "01 06 51 01 01 05", "01 06 50 01 01 05 00",
                                         "01 06 51 01 01 05", "01 06 51 01 01 02"));
    EXPECT_TRUE(i2c().txtACR[1].enabled() && i2c().Shape2[1].visible() && i2c().opt4422[0].value());
    EXPECT_EQ(i2c().lblBank.caption(), "DR3"); // the last bank, not the wiper
    i2c().cmdRdAllq44.userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 51 01 01 00", "01 06 51 01 01 01", "01 06 51 01 01 02",
                                         "01 06 51 01 01 03"));
    EXPECT_EQ(bus.state().sfr.at("90") & 0x07, 0x03); // CS and SCL
    i2c().ChkAutoSample.userClick();
    for (const bool automatic : {true, false}) {
        wire.clear();
        i2c().opt4422[automatic ? 2 : 3].userClick();
        EXPECT_EQ(sent(Command::AdcMux, 5),
                  automatic ? (std::vector<std::string>{"01 0C 00 06 1F", "01 0C 00 07 1F", "01 0C 00 08 1F",
                                                        "01 0C 00 09 1F"})
                            : std::vector<std::string>{});
        i2c().ChkAutoSample.userClick();
    }
    enter(i2c().txtACR[0], "10"); // decimal ten to the labels: no bank
    i2c().cmdACRWrite.userClick();
    EXPECT_EQ(i2c().lblChanSend[2].caption(), "XXX2");
}

TEST_F(FamiliesTest, StepsAreClockedByHand) {
    openFamily(kBanks);
    // U/D 4, CS 2, SCL 1. The direction and the select stand before the clock's edge.
    for (const auto& [button, steps] : {std::pair{0, std::vector{6, 4, 5}}, {1, {1, 0, 1}}, {2, {3}}}) {
        SCOPED_TRACE(button);
        std::vector<Milliseconds> edges;
        int before = -1;
        i2c().cmdUp[button].userClick();
        for (const auto& event : wire)
            if (event.direction == hid::WireEvent::Direction::Out && event.report[1] == 0x12 &&
                event.report[2] == 0 && event.report[3] == 0x90 && event.report[4] % 2 != before) {
                before = event.report[4] % 2;
                edges.push_back(event.at);
            }
        EXPECT_EQ(latch("90", 0x07), steps);
        if (button < 2) {
            EXPECT_GE(edges.back() - edges[edges.size() - 2], Milliseconds{20});
        }
    }
}

TEST_F(FamiliesTest, EveryDataRegisterIsFilledWithItsOwnPlace) {
    openFamily(kBanks);
    answer(Choice::Cancel);
    i2c().cdmAuto_Init.userClick();
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_THAT(sent(), IsEmpty());
    i2c().Chq4422[3].userClick(); // CS low: the filling raises it
    answer(Choice::Ok);
    i2c().cdmAuto_Init.userClick();
    EXPECT_THAT(boxes(), ElementsAre("All DR Register contents are about to be over written.  Click OK to "
                                     "Continue, Cancel to Abort [OK]"));
    std::vector<std::string> wanted;
    for (int bank = 0; bank < 4; ++bank) {
        wanted.insert(wanted.end(), 2, std::string("01 06 50 01 01 05 0") + "1357"[bank]); // twice as above
        for (const char channel : {'0', '1', '2', '3'})
            wanted.push_back(std::string("01 06 50 01 01 0") + channel + " " + channel + decimalText(bank));
    }
    for ([[maybe_unused]] const int click : {1, 2})
        wanted.insert(wanted.end(), {"01 06 50 01 01 05 00", "01 06 51 01 01 05"});
    EXPECT_EQ(transfers(), wanted);
    EXPECT_EQ(bus.state().sfr.at("90") & 0x02, 0x02);
    EXPECT_TRUE(i2c().opt4422[0].value());
    // A channel that is read back leaves the bank, and the next one must not land in its wiper.
    i2c().ChkAutoRead[2].userClick();
    transfers();
    answer(Choice::Ok);
    i2c().cdmAuto_Init.userClick();
    const std::vector<std::string> readBack = transfers();
    const auto last = std::find(readBack.begin(), readBack.end(), "01 06 50 01 01 03 33");
    ASSERT_NE(last, readBack.end());
    EXPECT_EQ(*(last - 1), "01 06 50 01 01 05 07");
    bus.clear(); // nobody answers any more
    answer(Choice::Ok);
    for (int transfer = 0; transfer < 6; ++transfer)
        answer(Choice::Retry);
    i2c().cdmAuto_Init.userClick();
    EXPECT_EQ(transfers().size(), 6U); // the first bank, and back to the wipers
    EXPECT_EQ(boxes().size(), 8U);     // both times the question
    EXPECT_EQ(bench.context().results.kept().back().text, "Filling ended at DR00");
}

/// A family changes groups, captions, pins and bus options; an ordinary part gets them all back at once,
/// before anything is written to it.
TEST_F(FamiliesTest, PartChosenAfterAFamilyInheritsNothing) {
    openI2c();
    i2c().chkI2CAdr[1].userClick();
    i2c().cmdCopyAdr.userClick();
    for (const char* family : {"Q4422", "Q4410/9", "Q3318/9"}) {
        SCOPED_TRACE(family);
        bus.socket("KV4071");
        EXPECT_THAT(chooseRow(std::string(family) + ",4,64,50,02,00,NA,r,s,t,u,1,1"), IsEmpty());
        EXPECT_EQ(i2c().Frq4422.visible(), std::string(family) == "Q4422");
        EXPECT_EQ(i2c().Frq4410Show.visible(), std::string(family) == "Q4410/9");
        EXPECT_EQ(i2c().frq331x.visible(), std::string(family) == "Q3318/9");
        EXPECT_EQ(console().chk2WireRead.checked(), std::string(family) != "Q4422");
        EXPECT_EQ(console().chkRandom.checked(), std::string(family) != "Q4410/9");
        EXPECT_EQ(i2c().lblChanSend[0].caption(), std::string(family) == "Q4422" ? "WCR0" : "A0");
        EXPECT_EQ(i2c().fraADDRSelect.visible(), std::string(family) == "Q3318/9");
        sent();
        console().cmdReconnect.userClick();              // a board that was away has forgotten the options
        std::vector<std::string> options{"01 04 01 00"}; // it tells all but the two-wire read
        if (console().chk2WireRead.checked())
            options.emplace_back("01 04 00 09");
        EXPECT_EQ(sent(report::Command::I2cOptions, 4), options);
        if (i2c().Frq4422.visible())
            i2c().Chq4422[4].userClick();
        i2c().mnu_KV4071.userClick();
        // The family's lines give way to A1, as its box says; the others leave the pins as the table cleared
        // them.
        EXPECT_EQ(bus.state().sfr.at("80") & 0xC0, std::string(family) == "Q4422" ? 0x80 : 0);
        EXPECT_EQ(bus.state().sfr.at("90") & 0x07, 0x04); // not held in shutdown
        EXPECT_FALSE(console().chk2WireRead.checked());
        EXPECT_TRUE(console().chkRandom.checked());
        EXPECT_EQ(i2c().lblChanSend[0].caption(), " 0");
        EXPECT_TRUE(i2c().fraADDRSelect.visible() && i2c().SSFrame2.visible() && i2c().FrmShutdown.visible());
        EXPECT_FALSE(i2c().Frq4422.visible() || i2c().Frq4410Show.visible() || i2c().frq331x.visible());
        for (const auto& pin : i2c().Chq4422)
            EXPECT_FALSE(pin->checked()) << pin->path();
        type(i2c().txtDeviceAdr, std::string(family) == "Q4422" ? "54" : "50");
        enter(i2c().txtHexDataWrt[0], "2A");
        EXPECT_EQ(bus.state().part->wipers.front(), 0x2A);
    }
}

} // namespace
} // namespace vrk
