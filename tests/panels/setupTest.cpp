#include "tests/panels/I2cPanelTest.h"

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SetupTest : public I2cPanelTest {};

TEST_F(SetupTest, PartEntriesConfigureThePanelForTheirPart) {
    openI2c();
    struct Case {
        const char* name;
        Entry entry;
        const char* acr;
        const char* address;
        int taps;
        int channels;
        int chans;
        int tapsRow;
        const char* product;
    };
    const Case cases[] = {
        {"KV4071", &frmVRK_User1::mnu_KV4071, "02", "50", 128, 1, 0, 4,
         "KV4071, I2C, Single Channel, 128 Tap ZQM"},
        {"KV4074", &frmVRK_User1::mnu_KV4074, "08", "A0", 128, 4, 2, 4,
         "KV4074, I2C, Four Channel, 128 Tap ZQM"},
        {"KV4078", &frmVRK_User1::mnuKV4078, "10", "A0", 256, 4, 2, 5,
         "KV4078, I2C, Four Channel, 256 Tap ZQM"},
        {"KV6021", &frmVRK_User1::mnuKV6021, "02", "50", 128, 1, 0, 4,
         "KV6021, I2C, Single Channel, 128 Tap ZQM"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        bus.socket(c.name);
        wire.clear();
        (i2c().*c.entry).userClick();
        EXPECT_THAT(sent(Command::I2cTransfer), IsEmpty());
        EXPECT_EQ(i2c().txtDeviceAdr.text(), c.address);
        EXPECT_EQ(i2c().txtCalcAddr.text(), c.address);
        EXPECT_EQ(i2c().wipers.I2CReadAddress, hexToInt(c.address) + 1);
        EXPECT_EQ(i2c().wipers.TapCount, c.taps);
        EXPECT_EQ(i2c().wipers.channelCount, c.channels);
        EXPECT_TRUE(i2c().OptChans[c.chans].value());
        EXPECT_TRUE(i2c().OptTaps[c.tapsRow].value());
        EXPECT_EQ(i2c().Slider1[0].maximum(), c.taps);
        EXPECT_EQ(i2c().SSFrame4[3].visible(), c.channels == 4);
        EXPECT_EQ(i2c().lblProduct.caption(), c.product);
        // The text is what the part is addressed by, and the part in the socket answers to all of it.
        const int last = c.channels - 1;
        enter(i2c().txtHexDataWrt[last], "1F");
        i2c().cmdI2Read[last].userClick();
        i2c().cmdACRRead.userClick();
        const std::string write = std::string("01 06 ") + c.address;
        const std::string read = "01 06 " + hexText(hexToInt(c.address) + 1, 2);
        EXPECT_THAT(transfers(),
                    ElementsAre(write + " 01 01 0" + decimalText(last) + " 1F",
                                read + " 01 01 0" + decimalText(last), read + " 01 01 " + c.acr));
        EXPECT_EQ(i2c().lblPotRead[last].caption(), "31");
        EXPECT_EQ(i2c().txtACR[1].text(), "40");
    }
}

TEST_F(SetupTest, AddressPinsMoveThePartAndTheCopyFollowsIt) {
    openI2c();
    // Of P0 the bits 7 and 6, of P1 the bits 1 and 0.
    using Case = std::tuple<std::vector<int>, const char*, int, int>;
    for (const auto& [pins, address, p0, p1] : {Case{{0}, "52", 0x40, 0},
                                                {{1}, "54", 0x80, 0},
                                                {{2}, "58", 0, 1},
                                                {{3}, "60", 0, 2},
                                                {{0, 3}, "62", 0x40, 2},
                                                {{0, 1, 2, 3}, "6E", 0xC0, 3}}) {
        SCOPED_TRACE(address);
        for (int pin = 0; pin < 4; ++pin)
            if (i2c().chkI2CAdr[pin].checked() != (std::count(pins.begin(), pins.end(), pin) > 0))
                i2c().chkI2CAdr[pin].userClick();
        EXPECT_EQ(i2c().txtCalcAddr.text(), address);
        EXPECT_EQ(i2c().txtDeviceAdr.text(), "50");
        EXPECT_EQ(bus.state().sfr.at("80") & 0xC0, p0);
        EXPECT_EQ(bus.state().sfr.at("90") & 0x03, p1);
        i2c().cmdCopyAdr.userClick();
        EXPECT_EQ(i2c().txtDeviceAdr.text(), address);
        wire.clear();
        enter(i2c().txtHexDataWrt[0], "2A");
        EXPECT_THAT(transfers(), ElementsAre(std::string("01 06 ") + address + " 01 01 00 2A"));
        i2c().cmdSlave.userClick();
        EXPECT_EQ(i2c().txtDeviceAdr.text(), "50");
        answer(Choice::Retry);
        i2c().CMDxMIT[0].userClick(); // the part has left its old address
        EXPECT_THAT(boxes(), ElementsAre(kInvalidAddress, kWriteError));
    }
    // Bit 0 is the bus's own read mark, whatever stands in the field.
    i2c().txtDeviceAdr.setText("6F");
    wire.clear();
    i2c().CMDxMIT[0].userClick();
    EXPECT_EQ(transfers().front().substr(0, 8), "01 06 6E");
}

TEST_F(SetupTest, AddressEntryKeepsItsRange) {
    openI2c(false);
    for (const auto& [typed, text] :
         {std::pair{"6a", "6A"}, {"0", "50"}, {"101", "50"}, {"100", "100"}, {"xyz", "50"}, {"7", "7"}}) {
        for (const bool withEnter : {true, false}) {
            i2c().cmdSlave.userClick();
            type(i2c().txtDeviceAdr, typed);
            withEnter ? i2c().txtDeviceAdr.userEnter() : i2c().txtDeviceAdr.userLeave();
            EXPECT_EQ(i2c().txtDeviceAdr.text(), text) << typed;
        }
    }
}

TEST_F(SetupTest, TapsSetEveryRangeAndBlankTheValues) {
    openI2c();
    const std::pair<int, int> cases[] = {{16, 1},  {32, 2},   {64, 4},   {100, 5},
                                         {128, 8}, {256, 16}, {512, 32}, {1024, 64}};
    for (int index = 0; index < 8; ++index) {
        const auto& [taps, tick] = cases[index];
        SCOPED_TRACE(taps);
        i2c().OptTaps[4].setValue(false);
        enter(i2c().txtHexDataWrt[0], "9");
        i2c().cmdI2Read[0].userClick();
        wire.clear();
        act([&] { i2c().OptTaps_Click(index); });
        EXPECT_THAT(sent(), IsEmpty());
        EXPECT_EQ(i2c().wipers.TapCount, taps);
        for (const int channel : {0, 3}) {
            EXPECT_EQ(i2c().Slider1[channel].maximum(), taps);
            EXPECT_EQ(i2c().Slider1[channel].value(), 1);
            EXPECT_EQ(i2c().Slider1[channel].tickFrequency(), tick);
            EXPECT_EQ(i2c().ProgressBar1[channel].maximum(), taps);
            EXPECT_EQ(i2c().ProgressBar1[channel].value(), 1);
            EXPECT_EQ(i2c().List1[channel].rowCount(), taps + 1);
            EXPECT_EQ(i2c().List1[channel].row(taps).text, decimalText(taps));
            EXPECT_EQ(i2c().txtDECDataWrt[channel].text(), taps > 256 ? "0000" : "000");
            EXPECT_EQ(i2c().txtHexDataWrt[channel].text(), taps > 256 ? "000" : "00");
            EXPECT_EQ(i2c().lblPotRead[channel].caption(), taps > 256 ? "----" : "---");
            EXPECT_EQ(i2c().lblPotReadhex[channel].caption(), taps > 256 ? "---" : "--");
        }
    }
    for (const auto& [index, shown] : {std::pair{1, 2}, {2, 4}, {0, 1}}) {
        i2c().OptChans[index].userClick();
        for (int channel = 0; channel < 4; ++channel) {
            EXPECT_EQ(i2c().SSFrame3[channel].visible(), channel < shown) << index;
            EXPECT_EQ(i2c().SSFrame4[channel].visible(), channel < shown) << index;
        }
    }
}

TEST_F(SetupTest, ClockListIsTheConsolesAndAChoiceSendsItsDivisor) {
    openI2c(false);
    const auto& source = console().cboSMBusFrequency;
    EXPECT_EQ(i2c().cboI2CClock.rows(), source.rows());
    EXPECT_EQ(i2c().cboI2CClock.listIndex(), source.listIndex());
    const int row = source.listIndex() == 3 ? 4 : 3;
    i2c().cboI2CClock.userSelect(row);
    const std::string report = "01 05 00 " + hexText(source.row(row).itemData, 2);
    EXPECT_THAT(sent(Command::I2cClock, 4),
                ElementsAre(report, report)); // by the list's click, then by the call
    EXPECT_EQ(source.listIndex(), row);
    // Read from the board again, the choice is found in both, and nothing goes back to the board.
    act([this] { console().cboSMBusFrequency_init(); });
    EXPECT_EQ(source.listIndex(), row);
    EXPECT_EQ(i2c().cboI2CClock.listIndex(), row);
    EXPECT_THAT(sent(Command::I2cClock, 3), ElementsAre("01 05 01"));
}

} // namespace
} // namespace vrk
