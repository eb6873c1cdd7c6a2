#include "tests/sim/Bench.h"

#include <cmath>

namespace vrk::sim {
namespace {

class AnalogTest : public Bench {};

TEST_F(AnalogTest, U5SetsVccOverItsCode) {
    const struct {
        const char* code;
        double volts;
    } rows[] = {{"2C", 2.7}, {"35", 3.0}, {"3E", 3.3}, {"44", 3.5}, {"54", 4.0}, {"63", 4.5}, {"72", 5.0}};
    powerPart();
    for (const auto& row : rows) {
        send("12 00 A0 20");
        EXPECT_EQ(ask(std::string("09 00 01 00 00 03 50 C0 ") + row.code, 5), "01 00 00 50 C0");
        EXPECT_EQ(ask("09 00 01 00 00 03 50 B0 00", 5), std::string("01 00 00 50 ") + row.code);
        send("12 00 A0 30");
        EXPECT_NEAR(bus.state().vcc, row.volts, 0.017) << row.code;
        // VIN4 is half of VCC; within half a step of the converter.
        EXPECT_NEAR(count("0A") * 3.3 / 1023 * 2, bus.state().vcc, 3.3 / 1023) << row.code;
    }
    EXPECT_EQ(count("0A"), 775);

    EXPECT_EQ(ask("09 00 01 00 00 03 50 C0 00", 5), "01 00 00 00 00") << "U5 is not selected";
    send("12 00 A0 20");
    EXPECT_EQ(ask("09 00 01 00 00 03 50 B2 C0", 5), "01 00 00 50 C0");
    EXPECT_EQ(bus.state().code, 0x72);
}

TEST_F(AnalogTest, PinsSwitchBothSupplies) {
    EXPECT_EQ(bus.state().vcc, 0.0);
    powerPart();
    EXPECT_NEAR(bus.state().vcc, 5.0, 1e-9);
    EXPECT_EQ(bus.state().vminus, 0.0);
    send("12 00 A0 50");
    EXPECT_EQ(bus.state().vcc, 0.0);
    EXPECT_NEAR(bus.state().vminus, -5.0, 1e-9);
    EXPECT_EQ(count("0A"), 0);
    bus.unplug(0);
    EXPECT_EQ(bus.state().vminus, 0.0);
}

TEST_F(AnalogTest, ConversionsLagOneBehindTheChannel) {
    bus.input(0x06, 1.0, std::nullopt);
    bus.input(0x09, std::nullopt, 777);
    EXPECT_EQ(convert(), 0) << "disabled";
    send("10 00 01");
    send("0C 00 06 1F");
    EXPECT_EQ(convert(), 0) << "still of channel 00";
    EXPECT_EQ(convert(), 310);
    send("0C 00 09 1F");
    EXPECT_EQ(convert(), 310);
    EXPECT_EQ(convert(), 777);
    send("0C 00 06 1F");
    send("10 00 00");
    EXPECT_EQ(convert(), 777) << "disabled: the last count, and the channel waits";
    send("10 00 01");
    EXPECT_EQ(convert(), 777);
    EXPECT_EQ(convert(), 310);
}

TEST_F(AnalogTest, EveryInputHasItsSource) {
    powerPart();
    bus.socket("KV4074");
    send("06 A0 04 01 00 00 20 40 7F");
    reply();
    send("12 00 90 FC");
    const struct {
        const char* channel;
        int count;
    } cases[] = {{"06", 0},   {"07", 194}, {"08", 388},  {"09", 769},  {"0A", 775}, {"1F", 1023},
                 {"1E", 263}, {"00", 0},   {"05", 1023}, {"0D", 1023}, {"0E", 0},   {"12", 0}};
    for (const auto& c : cases) {
        EXPECT_EQ(count(c.channel), c.count) << c.channel;
    }
    send("0C 00 0A 08"); // against another input
    convert();
    EXPECT_EQ(convert(), 388); // 2.5 V - 1.25 V
    send("0C 00 0A 1E");       // against the reference
    convert();
    EXPECT_EQ(convert(), 0);
    bus.input(0x0A, 7.0, std::nullopt);
    EXPECT_EQ(count("0A"), 1023);
    bus.input(0x0A, std::nullopt, std::nullopt);
    EXPECT_EQ(count("0A"), 775) << "given back";
}

TEST_F(AnalogTest, NoiseStaysWithinItsCountsAndRunsOut) {
    bus.input(0x06, std::nullopt, 500);
    EXPECT_EQ(count("06"), 500);
    bus.fault({.kind = FaultKind::Noise, .times = 40, .counts = 3});
    int most = 0;
    for (int i = 0; i < 40; ++i) {
        most = std::max(most, std::abs(convert() - 500));
    }
    EXPECT_EQ(most, 3);
    EXPECT_EQ(convert(), 500);
}

} // namespace
} // namespace vrk::sim
