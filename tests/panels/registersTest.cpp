#include "tests/panels/I2cPanelTest.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RegistersTest : public I2cPanelTest {};

TEST_F(RegistersTest, ControlByteIsComposedFromItsOptionsAndNotSent) {
    openI2c();
    for (const auto& [option, shutdownBit, byte] :
         {std::tuple{0, true, "40"}, {1, true, "C0"}, {1, false, "80"}, {0, false, "0"}, {0, true, "40"}}) {
        if (i2c().chkShutdown.checked() != shutdownBit)
            i2c().chkShutdown.userClick();
        i2c().Option1[option].userClick();
        EXPECT_EQ(i2c().txtACR[0].text(), byte);
        EXPECT_EQ(i2c().wipers.ACRImage, hexToInt(byte));
        EXPECT_EQ(i2c().lblShutDown.visible(), !shutdownBit);
    }
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(RegistersTest, NonVolatileValueSurvivesAVccCycleAndAVolatileOneDoesNot) {
    openI2c();
    enter(i2c().txtHexDataWrt[0], "20"); // the part powers up writing to its EEPROM
    i2c().Option1[1].userClick();
    transfers();
    i2c().cmdACRWrite.userClick();
    i2c().cmdACRRead.userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 02 C0", "01 06 51 01 01 02"));
    EXPECT_EQ(i2c().txtACR[1].text(), "C0");
    for (const int lamp : {0, 1})
        EXPECT_EQ(i2c().Shape2[lamp].colour(), Colour::LightGreen);
    enter(i2c().txtHexDataWrt[0], "60");
    EXPECT_EQ(bus.state().part->nonvolatileWrites, 1);
    i2c().cmdI2Read[0].userClick();
    EXPECT_EQ(i2c().lblPotReadhex[0].caption(), "60");
    EXPECT_NEAR(leadingNumber(i2c().lblWiperVolts[0].caption()), bus.state().vcc * 0x60 / 128, kStep);
    i2c().OptVCC[1].userClick();
    i2c().OptVCC[0].userClick();
    i2c().cmdI2Read[0].userClick();
    EXPECT_EQ(i2c().lblPotReadhex[0].caption(), "20");
    EXPECT_NEAR(leadingNumber(i2c().lblWiperVolts[0].caption()), bus.state().vcc * 0x20 / 128, kStep);
}

TEST_F(RegistersTest, GeneralRegisterIsWrittenAndRead) {
    openI2c();
    enter(i2c().txtGPAddress, "1");
    enter(i2c().txtGPWrite, "5a");
    i2c().cmdWriteGP.userClick();
    i2c().cmdGPRead.userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 01 5A", "01 06 51 01 01 01"));
    EXPECT_EQ(i2c().lblGPRead.caption(), "5A");
    for (const Lamp* lamp : {&i2c().Shape2[2], &i2c().Shape2[3], &i2c().Shape1[1], &i2c().Shape1[2]})
        EXPECT_EQ(lamp->colour(), Colour::LightGreen) << lamp->path();
}

TEST_F(RegistersTest, PartWithoutARegisterIsSaidSoAndNothingIsSent) {
    openI2c();
    i2c().txtACRAddress.setText("NA");
    i2c().txtGPAddress.setText("NA");
    for (TextBox* box : {&i2c().txtACRAddress, &i2c().txtGPAddress}) {
        box->userFocus();
        box->userLeave();
        EXPECT_EQ(box->text(), "NA");
    }
    for (Button* button : {&i2c().cmdACRRead, &i2c().cmdACRWrite}) {
        button->userClick();
        EXPECT_THAT(boxes(), ElementsAre("This device has no ACR Register [OK]"));
        EXPECT_TRUE(i2c().cmdACRRead.userClick().refused());
        EXPECT_TRUE(i2c().cmdACRWrite.userClick().refused());
        EXPECT_THAT(sent(), IsEmpty());
        i2c().CMDxMIT[0].userClick(); // the next action brings them back
        wire.clear();
    }
    for (Button* button : {&i2c().cmdGPRead, &i2c().cmdWriteGP}) {
        button->userClick();
        EXPECT_THAT(boxes(), ElementsAre("This device has no GP Register [OK]"));
        EXPECT_TRUE(i2c().cmdGPRead.enabled() && i2c().cmdWriteGP.enabled());
    }
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(RegistersTest, SilentPartTurnsTheRegisterLampsRed) {
    openI2c();
    for (const auto& [button, lamp, status] : {std::tuple{&i2c().cmdACRWrite, 0, 1},
                                               {&i2c().cmdACRRead, 1, 2},
                                               {&i2c().cmdWriteGP, 2, 1},
                                               {&i2c().cmdGPRead, 3, 2}}) {
        fault(sim::FaultKind::Nak);
        answer(Choice::Retry);
        button->userClick();
        EXPECT_THAT(boxes(), ElementsAre(kInvalidAddress)); // no message of the panel's own
        EXPECT_EQ(i2c().Shape2[lamp].colour(), Colour::LightRed);
        EXPECT_EQ(i2c().Shape1[status].colour(), Colour::LightRed);
        EXPECT_TRUE(button->enabled());
    }
    // A register that no field shows, and a byte that is none: faults, and the buttons are back.
    i2c().txtACRAddress.setText("40");
    bus.reply(6, {0x01, 0x00});
    i2c().cmdACRRead.userClick();
    EXPECT_THAT(boxes(), ElementsAre("Subscript out of range [OK]"));
    enter(i2c().txtACR[0], "100");
    wire.clear();
    i2c().cmdACRWrite.userClick();
    EXPECT_THAT(boxes(), ElementsAre("Overflow [OK]"));
    EXPECT_THAT(transfers(), IsEmpty());
    EXPECT_TRUE(i2c().cmdACRRead.enabled() && i2c().cmdACRWrite.enabled());
}

TEST_F(RegistersTest, ShutdownPinTakesTheWiperToItsLowTerminal) {
    openI2c();
    enter(i2c().txtHexDataWrt[0], "40");
    i2c().cmdSampleWiper[0].userClick();
    EXPECT_NEAR(leadingNumber(i2c().lblWiperVolts[0].caption()), bus.state().vcc / 2, kStep);
    i2c().ChkShutDown2.userClick();
    EXPECT_EQ(bus.state().sfr.at("90") & 0x04, 0);
    i2c().cmdSampleWiper[0].userClick();
    EXPECT_EQ(i2c().lblWiperVolts[0].caption(), "0.000");
    i2c().ChkShutDown2.userClick();
    EXPECT_EQ(bus.state().sfr.at("90") & 0x04, 4);
}

TEST_F(RegistersTest, ReadAllVisitsEveryChannelAndItsTwinTakesTheReadingsOver) {
    openI2c();
    choose("KV4074", &frmVRK_User1::mnu_KV4074);
    for (int channel = 0; channel < 4; ++channel)
        enter(i2c().txtHexDataWrt[channel], decimalText(channel + 1) + "1");
    transfers();
    i2c().cmdReadAllWipers[0].userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 A1 01 01 00", "01 06 A1 01 01 01", "01 06 A1 01 01 02",
                                         "01 06 A1 01 01 03"));
    EXPECT_EQ(i2c().lblPotReadhex[3].caption(), "41");
    act([this] { i2c().OptTaps_Click(5); }); // blanks the readings
    i2c().cmdReadAllWipers[0].userClick();
    wire.clear();
    i2c().cmdReadAllWipers[1].userClick();
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(i2c().txtDECDataWrt[1].text(), "65"); // the last channel's value, in the box of channel 1
    EXPECT_EQ(i2c().txtDECDataWrt[0].text(), "000");
    for (int channel = 0; channel < 4; ++channel) {
        EXPECT_EQ(i2c().Slider1[channel].value(), 16 * (channel + 1) + 2);
        EXPECT_EQ(i2c().List1[channel].listIndex(), 16 * (channel + 1) + 1);
    }
}

} // namespace
} // namespace vrk
