#include "tests/panels/I2cPanelTest.h"

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class WiperTest : public I2cPanelTest {
  protected:
    /// When the reports of the command went out, on the bench's clock.
    std::vector<Milliseconds> times(Command command) const {
        std::vector<Milliseconds> at;
        for (const auto& event : wire)
            if (event.direction == hid::WireEvent::Direction::Out &&
                event.report[report::kCommandByte] == static_cast<std::uint8_t>(command))
                at.push_back(event.at);
        return at;
    }
};

TEST_F(WiperTest, TypedHexValueIsWrittenReadBackAndMeasured) {
    openI2c();
    i2c().ChkAutoRead[0].userClick();
    wire.clear();
    enter(i2c().txtHexDataWrt[0], "3F");
    const auto at = times(Command::I2cTransfer);
    ASSERT_EQ(at.size(), 2U);
    EXPECT_GE(at[1] - at[0], Milliseconds{50}); // the part gets its time before the auto read
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 00 3F", "01 06 51 01 01 00"));
    EXPECT_EQ(i2c().lblPotReadhex[0].caption(), "3F");
    EXPECT_EQ(i2c().lblPotRead[0].caption(), "63");
    EXPECT_EQ(i2c().ProgressBar1[0].value(), 63);
    EXPECT_NEAR(leadingNumber(i2c().lblWiperVolts[0].caption()), bus.state().vcc * 63 / 128, kStep);
    for (const Colour colour : {Colour::LightGreen, Colour::Green, Colour::LightGreen}) {
        EXPECT_EQ(i2c().Shape1[1].colour(), colour); // alternates, so that a repeat shows
        EXPECT_EQ(i2c().Shape1[4].colour(), Colour::LightGreen);
        i2c().txtHexDataWrt[0].userEnter();
    }
}

TEST_F(WiperTest, TypedValuesAreTidiedAgainstTheTaps) {
    openI2c();
    struct Case {
        int taps; // row of OptTaps
        bool decimal;
        const char* typed;
        const char* hex;
        const char* dec;
        const char* sent; // nothing: refused as too large for the byte
        int slider;
    };
    const Case cases[] = {
        {4, false, "FF", "00", "0", "00", 1},       {4, false, "7F", "7F", "127", "7F", 128},
        {4, false, "80", "80", "128", "80", 128},   {4, false, "5", "05", "5", "05", 6},
        {4, false, "3f", "3F", "63", "3F", 64},     {4, false, "QZ", "00", "0", "00", 1},
        {4, false, "07F", "07F", "127", "7F", 128}, // three digits, yet the value fits: not sent as 07
        {4, false, "FFFF", "00", "0", "00", 1},     {4, true, "127", "7F", "127", "7F", 128},
        {4, true, "128", "80", "128", "80", 128},   {4, true, "129", "00", "0", "00", 1},
        {4, true, "-1", "00", "0", "00", 1},        {4, true, "9", "09", "9", "09", 10},
        {5, false, "FF", "FF", "255", "FF", 256},   {5, false, "100", "100", "256", nullptr, 256},
        {7, false, "5", "005", "5", "05", 6},       {7, false, "AB", "0AB", "171", "AB", 172},
        {7, false, "401", "000", "0", "00", 1},     {7, false, "3FF", "3FF", "1023", nullptr, 1024},
        {7, true, "12", "0C", "12", "0C", 13},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.decimal ? "decimal " : "hex ") + c.typed);
        i2c().OptTaps[c.taps].userClick();
        wire.clear();
        enter(c.decimal ? i2c().txtDECDataWrt[0] : i2c().txtHexDataWrt[0], c.typed);
        if (c.sent != nullptr) {
            EXPECT_THAT(transfers(), ElementsAre(std::string("01 06 50 01 01 00 ") + c.sent));
        } else {
            EXPECT_THAT(transfers(), IsEmpty());
            EXPECT_THAT(boxes(), ElementsAre("Overflow [OK]"));
        }
        EXPECT_EQ(i2c().txtHexDataWrt[0].text(), c.hex);
        EXPECT_EQ(i2c().txtDECDataWrt[0].text(), c.dec);
        EXPECT_EQ(i2c().Slider1[0].value(), c.slider);
        EXPECT_EQ(i2c().List1[0].listIndex(), c.slider - 1);
        EXPECT_TRUE(i2c().CMDxMIT[0].enabled());
        EXPECT_TRUE(i2c().cmdI2Read[0].enabled());
    }
}

TEST_F(WiperTest, PendingEntryIsCommittedByTheWriteButtonWhichThenWritesAgain) {
    openI2c();
    choose("KV4074", &frmVRK_User1::mnu_KV4074);
    type(i2c().txtHexDataWrt[0], "11");
    i2c().CMDxMIT[0].userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 A0 01 01 00 11", "01 06 A0 01 01 00 11"));
    i2c().CMDxMIT[0].userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 A0 01 01 00 11"));
    // Another channel's button commits the entry where it was typed.
    type(i2c().txtHexDataWrt[2], "22");
    i2c().CMDxMIT[1].userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 A0 01 01 02 22", "01 06 A0 01 01 01 00"));
    // The box typed in last is the pending one.
    type(i2c().txtHexDataWrt[0], "33");
    type(i2c().txtDECDataWrt[0], "10");
    i2c().CMDxMIT[0].userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 A0 01 01 00 0A", "01 06 A0 01 01 00 0A"));
}

TEST_F(WiperTest, SliderDragWritesOnceAndReachesTheLastTap) {
    openI2c();
    for (const auto& [position, hex, dec] :
         {std::tuple{64, "3F", "63"}, {128, "7F", "127"}, {1, "00", "0"}}) {
        i2c().Slider1[0].userDrag(position);
        EXPECT_THAT(transfers(), ElementsAre(std::string("01 06 50 01 01 00 ") + hex));
        EXPECT_EQ(i2c().List1[0].text(), dec);
        EXPECT_EQ(i2c().txtHexDataWrt[0].text(), hex);
        EXPECT_EQ(i2c().txtDECDataWrt[0].text(), dec);
        EXPECT_TRUE(i2c().Slider1[0].enabled());
    }
    i2c().Slider1[0].userMouseDown();
    i2c().Slider1[0].userMouseUp();
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(WiperTest, ListWritesOnlyAfterAScroll) {
    openI2c();
    ListBox& list = i2c().List1[0];
    list.userSelect(5);
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(i2c().txtDECDataWrt[0].text(), "0000");
    // The list has one row more than the slider reaches.
    for (const auto& [row, hex, slider] : {std::tuple{5, "05", 6}, {128, "80", 128}, {0, "00", 1}}) {
        list.userScroll();
        list.userSelect(row);
        EXPECT_THAT(transfers(), ElementsAre(std::string("01 06 50 01 01 00 ") + hex));
        EXPECT_EQ(i2c().txtHexDataWrt[0].text(), hex);
        EXPECT_EQ(i2c().Slider1[0].value(), slider);
        EXPECT_EQ(list.listIndex(), row);
        list.userSelect(7);
        EXPECT_THAT(transfers(), IsEmpty()); // one scroll, one write
    }
    // The panel's own moves are no scroll.
    enter(i2c().txtHexDataWrt[0], "40");
    i2c().OptTaps[5].userClick();
    wire.clear();
    list.userSelect(9);
    EXPECT_THAT(sent(), IsEmpty());
    // A scroll of another list while events run in the action counts.
    at(0, [this] { at(0, [this] { i2c().List1[1].userScroll(); }); });
    i2c().OptChans[1].userClick();
    list.userScroll();
    list.userSelect(3);
    wire.clear();
    bus.reply(6, {0x01, 0x00}); // channel 1 is none of this part's
    i2c().List1[1].userSelect(4);
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 01 04"));
}

TEST_F(WiperTest, WithoutABoardTheFieldsFollowAndNothingIsSent) {
    openI2c();
    link().BoardConnected = false;
    i2c().List1[0].userScroll();
    i2c().List1[0].userSelect(18);
    EXPECT_EQ(i2c().txtHexDataWrt[0].text(), "12");
    EXPECT_EQ(i2c().Slider1[0].value(), 19);
    i2c().Slider1[0].userDrag(101);
    EXPECT_EQ(i2c().txtDECDataWrt[0].text(), "100");
    EXPECT_EQ(i2c().wipers.WiperWriteHex[6], "64");
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_TRUE(i2c().List1[0].enabled());
}

TEST_F(WiperTest, AutoReadOfAChannelSamplesItsOwnInput) {
    openI2c();
    choose("KV4074", &frmVRK_User1::mnu_KV4074);
    i2c().ChkAutoRead[1].userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 A1 01 01 01")); // switching it on reads once
    i2c().cmdSampleWiper[0].userClick();
    wire.clear();
    enter(i2c().txtHexDataWrt[1], "20");
    EXPECT_THAT(sent(Command::AdcMux, 5), ElementsAre("01 0C 00 07 1F")); // VIN1 is P1.7, against ground
    EXPECT_EQ(i2c().lblPotRead[1].caption(), "32");
    EXPECT_NEAR(leadingNumber(i2c().lblWiperVolts[1].caption()), bus.state().vcc / 4, kStep);
    i2c().ChkAutoRead[1].userClick();
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(WiperTest, TwoByteDataGoesOutHighByteFirst) {
    openI2c();
    i2c().cboDataSize.userSelect(2);
    for (const auto& [taps, typed, bytes] :
         {std::tuple{4, "3F", "00 3F"}, {7, "1FF", "01 FF"}, {7, "0200", "02 00"}}) {
        i2c().OptTaps[taps].userClick();
        bus.reply(6, {0x01, 0x00}); // a part with such registers is not in the socket
        wire.clear();
        enter(i2c().txtHexDataWrt[0], typed);
        EXPECT_THAT(transfers(), ElementsAre(std::string("01 06 50 02 01 A0 ") + bytes));
        EXPECT_EQ(i2c().txtWrQ3319[0].text(), typed);
    }
    bus.reply(6, {0x01, 0x00, 0xFD, 0xAB}); // the part answers with ones above bit 9
    i2c().cmdI2Read[0].userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 51 02 01 80"));
    EXPECT_EQ(i2c().lblRdq331x[0].caption(), "1AB");
    EXPECT_EQ(i2c().lblPotRead[0].caption(), "427");
}

TEST_F(WiperTest, DataSizeNoneWritesNoByteAndReadsNotAtAll) {
    openI2c();
    enter(i2c().txtHexDataWrt[0], "22");
    i2c().cboDataSize.userSelect(0);
    wire.clear();
    enter(i2c().txtHexDataWrt[0], "23");
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 00 01 00"));
    i2c().cmdI2Read[0].userClick();
    EXPECT_THAT(transfers(), IsEmpty());
    EXPECT_EQ(bus.state().part->wipers.at(0), 0x22);
}

TEST_F(WiperTest, ReadingAboveTheTapsIsClipped) {
    openI2c();
    bus.reply(6, {0x01, 0x00, 0xC8});
    i2c().cmdI2Read[0].userClick();
    EXPECT_EQ(i2c().ProgressBar1[0].value(), 128);
    EXPECT_EQ(i2c().lblPotRead[0].caption(), "128");
    EXPECT_EQ(i2c().lblPotReadhex[0].caption(), "80");
    EXPECT_EQ(i2c().wipers.WiperRead[6], 200);
    bus.reply(6, {0x01, 0x00, 0x07});
    i2c().cmdI2Read[0].userClick();
    EXPECT_EQ(i2c().lblPotReadhex[0].caption(), "07");
}

TEST_F(WiperTest, WithVccOffThePanelSaysSoAndTriesAllTheSame) {
    openI2c(false);
    answer(Choice::Retry);
    enter(i2c().txtHexDataWrt[0], "11");
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 00 11"));
    EXPECT_THAT(boxes(), ElementsAre("VCC is not turned on. [OK]", kInvalidAddress, kWriteError));
}

TEST_F(WiperTest, PartThatDoesNotAnswerTurnsTheLampsRedAndGivesTheButtonsBack) {
    openI2c();
    enter(i2c().txtHexDataWrt[0], "11");
    i2c().ChkAutoRead[0].userClick();
    wire.clear();
    fault(sim::FaultKind::Nak, 2, static_cast<int>(Command::I2cTransfer));
    answer(Choice::Retry);
    answer(Choice::Retry);
    i2c().CMDxMIT[0].userClick();
    const auto shown = dialogs.takeShown();
    ASSERT_EQ(shown.size(), 4U);
    EXPECT_EQ(shown[1].box.text + " [OK]", kWriteError);
    EXPECT_EQ(shown[1].box.title, " Error during Write to VRK ");
    EXPECT_EQ(shown[3].box.text + " [OK]", kReadError);
    EXPECT_EQ(shown[3].box.title, " Error during VRK Read ");
    EXPECT_THAT(transfers(),
                ElementsAre("01 06 50 01 01 00 11", "01 06 51 01 01 00")); // the auto read goes on
    for (const int lamp : {1, 2, 4})
        EXPECT_EQ(i2c().Shape1[lamp].colour(), Colour::LightRed) << lamp;
    EXPECT_EQ(i2c().lblPotReadhex[0].caption(), "11"); // what the read before left
    for (const Button* button : {&i2c().CMDxMIT[0], &i2c().cmdI2Read[0], &i2c().cmdACRWrite,
                                 &i2c().cmdACRRead, &i2c().cmdSampleWiper[0]})
        EXPECT_TRUE(button->enabled()) << button->path();
    i2c().CMDxMIT[0].userClick();
    EXPECT_EQ(i2c().Shape1[1].colour(), Colour::LightGreen);
}

TEST_F(WiperTest, SecondClickWhileAWriteRunsIsRefused) {
    openI2c();
    std::vector<bool> refused;
    at(0, [&] {
        refused = {i2c().CMDxMIT[0].userClick().refused(), i2c().cmdI2Read[0].userClick().refused(),
                   i2c().cmdACRRead.userClick().refused(), i2c().cmdACRWrite.userClick().refused()};
    });
    i2c().CMDxMIT[0].userClick();
    EXPECT_THAT(refused, ElementsAre(true, true, true, true));
    EXPECT_EQ(transfers().size(), 1U);
    EXPECT_TRUE(i2c().CMDxMIT[1].userClick().refused()); // a hidden channel
}

TEST_F(WiperTest, TwoWirePartsSendTheInstructionAndAreReadWithTheirAddressPinHigh) {
    openI2c();
    EXPECT_THAT(chooseRow("Q4410/9,4,256,50,NA,NA,NA,r,s,t,u,1,1"), IsEmpty());
    bus.reply(6, {0x01, 0x00});
    wire.clear();
    act([this] { i2c().Wrt_VRK(1); });
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 00 A1")); // data byte and instruction are one
    bus.reply(6, {0x01, 0x00, 0x2A});
    const auto start = wire.size();
    act([this] { i2c().Read_VRK(1); });
    ASSERT_GT(wire.size(), start);
    const auto port = [this](std::size_t at) { return wire.at(at).report; };
    // Purges and replies lie between; what goes out is: read P0, set its bit 6, read the part, read P0, clear
    // it.
    std::vector<std::size_t> out;
    for (std::size_t i = 0; i < wire.size(); ++i)
        if (wire[i].direction == hid::WireEvent::Direction::Out)
            out.push_back(i);
    ASSERT_EQ(out.size(), 5U);
    const int before = port(out[0] + 1)[3];
    const int raised = port(out[3] + 1)[3];
    EXPECT_GE(wire[out[2]].at - wire[out[1]].at, Milliseconds{20});
    EXPECT_THAT(sent(5),
                ElementsAre("01 12 01 80 00", "01 12 00 80 " + hexText(before | 0x40, 2), "01 06 51 01 01",
                            "01 12 01 80 00", "01 12 00 80 " + hexText(raised & 0xBF, 2)));
    EXPECT_EQ(i2c().wipers.WiperRead[6], 0x2A);
}

} // namespace
} // namespace vrk
