#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using report::Command;

class WiperTest : public TestBench {};

TEST_F(WiperTest, TypedHexValueIsWrittenReadBackAndMeasured) {
    openI2c();
    i2c().ChkAutoRead[0].userClick();
    wire.clear();
    type(i2c().txtHexDataWrt[0], "3F");
    i2c().txtHexDataWrt[0].userEnter();
    EXPECT_THAT(sent(Command::I2cTransfer), ElementsAre("01 06 50 01 01 00 3F 00", "01 06 51 01 01 00 00 00"));
    EXPECT_EQ(i2c().lblPotReadhex[0].caption(), "3F");
    EXPECT_EQ(i2c().lblPotRead[0].caption(), "63");
    EXPECT_EQ(i2c().Shape1[1].colour(), Colour::LightGreen);
    const double volts = leadingNumber(i2c().lblWiperVolts[0].caption());
    EXPECT_NEAR(volts, bus.state().vcc * 63 / 128, 2 * 3.3 / 1023);
    i2c().txtHexDataWrt[0].userEnter();
    EXPECT_EQ(i2c().Shape1[1].colour(), Colour::Green);
}

} // namespace
} // namespace vrk
