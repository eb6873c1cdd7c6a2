#include "sim/Board.h"
#include "sim/Firmware.h"
#include "tests/sim/WireBench.h"

#include <algorithm>
#include <array>
#include <string>

namespace vrk::sim {
namespace {

/// The same with the time that a report takes.
class BusTest : public BoardTest {
  protected:
    BusTest() : BoardTest(false) {}
    hid::ReadResult read(int ms) {
        hid::Report last{};
        return bus.read(handle, last, Milliseconds{ms});
    }
    long long now() const { return clock.now().count(); }
};

TEST_F(BusTest, KeepsTheTimeOfAFullSpeedDevice) {
    EXPECT_TRUE(send("00"));
    EXPECT_EQ(now(), 1);
    EXPECT_EQ(read(0), hid::ReadResult::TimedOut);
    EXPECT_EQ(read(6000), hid::ReadResult::Arrived);
    EXPECT_EQ(now(), 2);
    EXPECT_EQ(read(1), hid::ReadResult::TimedOut);
    EXPECT_EQ(now(), 3);
    // A drain's step of 1 ms takes the reply that is due at its end; a late one comes just behind its time.
    EXPECT_TRUE(send("00"));
    EXPECT_EQ(read(1), hid::ReadResult::Arrived);
    for (const int late : {5999, 6000}) {
        bus.fault({.kind = FaultKind::LateReply, .ms = late});
        EXPECT_TRUE(send("00"));
        EXPECT_EQ(read(6000), late < 6000 ? hid::ReadResult::Arrived : hid::ReadResult::TimedOut) << late;
    }
    EXPECT_EQ(read(1), hid::ReadResult::Arrived);
    // Stale reports are as many as asked for, whatever a handle's queue holds of replies.
    bus.stale({1}, 0, 300);
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(read(0), hid::ReadResult::Arrived) << i;
    }
    // A reply that came while nobody read is taken at once, also without a time-out.
    send("00");
    clock.sleep(Milliseconds{5});
    EXPECT_EQ(read(0), hid::ReadResult::Arrived);
    // Reports arrive in the order in which they are ready.
    bus.fault({.kind = FaultKind::LateReply, .ms = 50});
    send("00");
    bus.stale({1, 2, 3});
    EXPECT_EQ(reply(5), "01 02 03 00 00");
    EXPECT_EQ(reply(4), "01 00 01 02");
}

TEST_F(BusTest, FaultsWaitForTheCommandsThatCanMeetThem) {
    bus.fault({.kind = FaultKind::NoReply, .times = 2});
    bus.fault({.kind = FaultKind::ErrorByte, .command = 5, .value = 0xEE});
    bus.fault({.kind = FaultKind::Nak});
    bus.fault({.kind = FaultKind::StuckSda});
    bus.fault({.kind = FaultKind::WriteFails, .command = 7});
    powerPart(); // no replies: consumes nothing
    EXPECT_EQ(ask("00", 3), "");
    EXPECT_EQ(ask("01 01", 3), "");
    run({{"01 01", "01 00 00"},
         {"05 01", "01 EE 18"},
         {"05 01", "01 00 18"},
         {"06 51 01 01 00", "01 01 00"},
         {"06 51 01 01 00", "01 01 00"}, // no transfer while the line is stuck
         {"04 00 01 00 01", "01 00 01"},
         {"04 00 01 00 01", "01 00 00"},
         {"06 51 01 01 00", "01 00 40"}});
    EXPECT_FALSE(send("07 00 07"));
    EXPECT_EQ(ask("07 01", 3), "01 00 04") << "the refused write changed nothing";

    bus.fault({.kind = FaultKind::WriteFails, .times = 3});
    bus.reply(0, {9, 9});
    bus.input(6, 1.0, {});
    bus.clear();
    EXPECT_EQ(ask("00", 3), "01 00 01");
    EXPECT_EQ(count("06"), 388) << "the part's own wiper";
    bus.setBoards(0);
    bus.setBoards(1);
    replug();
    powerPart();
    EXPECT_EQ(count("06"), 388) << "nor is an input of a later board held";
}

TEST_F(BoardTest, SettingsReadBackWhatWasWrittenAndWritesGiveNoReply) {
    // The reply before anything is written, the write, the read, and its reply then.
    const std::array<std::string, 4> cases[] = {
        {"01 00 00", "01 00 02", "01 01", "01 00 02"},
        {"01 00 00 00 00", "02 00 A5 06 01", "02 01", "01 00 A5 06 01"},
        {"01 00 FC 0F", "03 00 5A 09", "03 01", "01 00 5A 09"},
        {"01 00 01 00", "04 00 0A 01 00", "04 01", "01 00 0A 01"},
        {"01 00 18 3C", "05 00 F0", "05 01", "01 00 18 F0"},
        {"01 00 04", "07 00 03", "07 01", "01 00 03"},
        {"01 00 18 0B", "08 00 17", "08 01", "01 00 18 17"},
        {"01 00 18 38", "0A 00 3F", "0A 01", "01 00 18 3F"},
        {"01 00 0E", "0B 00 0A", "0B 01", "01 00 0A"},
        {"01 00 00", "0D 00 01", "0D 01", "01 00 01"},
        {"01 00 0A", "0E 00 FF", "0E 01", "01 00 FF"},
        {"01 00 18 03 E8", "0F 00 12 34", "0F 01", "01 00 18 12 34"},
        {"01 00 00", "10 00 01", "10 01", "01 00 01"},
        {"01 00 00 3F", "12 00 80 AA", "12 01 80", "01 00 00 AA"},
        {"01 00 00 06", "12 00 E1 02", "12 01 E1", "01 00 00 02"},
    };
    for (const auto& [atStart, write, read, reply] : cases) {
        SCOPED_TRACE(write);
        EXPECT_EQ(ask(read, bytes(atStart).size()), atStart);
        EXPECT_TRUE(send(write));
        hid::Report none{};
        EXPECT_EQ(bus.read(handle, none, Milliseconds{1}), hid::ReadResult::TimedOut);
        EXPECT_EQ(ask(read, bytes(reply).size()), reply);
    }
    replug();
    for (const auto& [atStart, write, read, reply] : cases) {
        EXPECT_EQ(ask(read, bytes(atStart).size()), atStart) << "after a replug: " << read;
    }
}

TEST_F(BoardTest, CommandsLeaveTheBitsThatAreNotTheirs) {
    // A register is given a value, a command writes its own bits of it, the others stay.
    const std::array<std::string, 4> cases[] = {
        {"A6", "F8", "02 00 A5 06 01", "F6"}, // drive of P2.4 to P2.7: the supplies' lines
        {"E2", "41", "02 00 A5 06 01", "C1"}, // crossbar enable
        {"E2", "C1", "02 00 A5 06 00", "41"},
        {"A0", "3F", "03 00 5A 89", "39"}, // P2.4 to P2.7: both supplies and U5's select
        {"A1", "43", "07 00 03", "73"},    // polarity and phase are bits 4 and 5
        {"A1", "73", "07 00 00", "43"},
        {"F8", "09", "07 00 04", "0D"}, // the select's idle level is bit 2
        {"E8", "41", "10 00 01", "C1"},
    };
    for (const auto& [address, before, command, after] : cases) {
        send("12 00 " + address + " " + before);
        send(command);
        EXPECT_EQ(ask("12 01 " + address, 4), "01 00 00 " + after) << command;
    }
}

TEST_F(BoardTest, LongestRequestsFitAndLongerOnesAreRefused) {
    powerPart();
    bus.socket("KV4078", 0x50);
    run({{"06 51 3E 01 00", "01 00 80 80"},
         {"06 51 3F 01 00", "01 02 00"},
         {"06 50 3B 01 00", "01 02"},
         {"09 00 01 00 00 FF 50 B0", "01 00"}});
}

TEST_F(BoardTest, OptionsFormTheI2cFrame) {
    // A part that writes down what the bus does.
    struct Scribe final : Part {
        Scribe(std::string& out) : Part("scribe"), log(out) {}
        void i2cStart() override {
            log += "S ";
            bytesIn = 0;
        }
        bool i2cWrite(std::uint8_t byte) override {
            reading = bytesIn++ == 0 ? (byte & 1) != 0 : reading;
            return note(byte), true;
        }
        // A two-wire read turns round behind its register byte, as parts with instructions do.
        bool i2cSends() const override { return reading && bytesIn > (twoWire ? 1 : 0); }
        std::uint8_t i2cRead() override {
            log += "r";
            return 0x5A;
        }
        void i2cAcknowledged(bool more) override { log += more ? "+ " : "- "; }
        void i2cStop() override { log += "P"; }
        double wiperRatio(int) const override { return 0.0; }
        void onPowerUp() override {}
        void onPowerDown() override {}
        void note(std::uint8_t byte) {
            char two[8];
            std::snprintf(two, sizeof two, "%02X ", byte);
            log += two;
        }
        std::string& log;
        bool twoWire = false, reading = false;
        int bytesIn = 0;
    };
    std::string log;
    Faults faults;
    Board board(1, faults);
    Firmware firmware(board, faults);
    board.powerUp();
    auto part = std::make_unique<Scribe>(log);
    Scribe& scribe = *part;
    board.socket(std::move(part));
    const auto frameOf = [&](const std::string& command) {
        log.clear();
        firmware.handle(zeroFilled(bytes("01 " + command)));
        return log;
    };
    frameOf("12 00 A0 30");
    const struct {
        const char *options, *command, *frame;
    } cases[] = {
        {"01", "06 51 02 01 03", "S 50 03 S 51 r+ r- P"},
        {"02", "06 51 01 01 03", "S 50 03 PS 51 r- P"},
        {"09", "06 51 01 01 92", "S 51 92 r- P"},
        {"01", "06 51 01 00", "S 51 r- P"},
        {"01", "06 50 02 01 03 AA 55", "S 50 03 AA 55 P"},
        {"01", "06 50 01 00 AA", "S 50 AA P"},
        {"01", "06 50 00 00", "S 50 P"},
    };
    for (const auto& c : cases) {
        frameOf(std::string("04 00 ") + c.options);
        scribe.twoWire = std::string(c.options) == "09";
        EXPECT_EQ(frameOf(c.command), c.frame) << c.options << ": " << c.command;
    }
}

TEST_F(BoardTest, PinsFollowLatchAndMode) {
    // Everything that is written comes back while the pins are digital, whatever drives them.
    const std::array<std::string, 3> ports[] = {
        {"80", "A4", "F1"}, {"90", "A5", "F2"}, {"A0", "A6", "F3"}, {"B0", "A7", "F4"}, {"C7", "AE", "F5"}};
    for (const auto& [data, mode, input] : ports) {
        for (const char* drive : {" 00", " FF"}) {
            send("12 00 " + mode + drive);
            for (const char* value : {" AA", " 55", " FF"}) {
                send("12 00 " + data + value);
                EXPECT_EQ(ask("12 01 " + data, 4), std::string("01 00 00") + value);
            }
        }
        send("12 00 " + input + " 7E");
        EXPECT_EQ(ask("12 01 " + data, 4), "01 00 00 7E") << "analog pins read 0";
    }
}

TEST_F(BoardTest, ConversionsLagOneBehindTheChannel) {
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

TEST_F(BoardTest, NoiseStaysWithinItsCountsAndTheScaleAndRunsOut) {
    const struct { int held, least, most; } cases[] = {{500, 497, 503}, {1, 0, 4}, {1022, 1019, 1023}};
    for (const auto& c : cases) {
        bus.input(0x06, std::nullopt, c.held);
        EXPECT_EQ(count("06"), c.held);
        bus.fault({.kind = FaultKind::Noise, .times = 60, .counts = 3});
        int least = 1023, most = 0;
        for (int i = 0; i < 60; ++i) {
            const int now = convert();
            least = std::min(least, now);
            most = std::max(most, now);
        }
        EXPECT_EQ(least, c.least);
        EXPECT_EQ(most, c.most);
        EXPECT_EQ(convert(), c.held);
    }
}

TEST_F(BoardTest, AcrChoosesVolatileOrStoredPositions) {
    powerPart();
    run({{"06 50 01 01 00 10", "01 00"}, // IVR: stored, and the wiper follows
         {"06 50 01 01 02 C0", "01 00"}, // WR alone from here
         {"06 51 01 01 00", "01 00 10"},
         {"06 50 02 01 00 20 33", "01 00"}, // wiper, then the general-purpose byte behind it
         {"06 51 02 01 00", "01 00 20 33"},
         {"06 51 01 00", "01 00 C0"}, // no register byte: where the pointer stands
         {"06 50 01 01 02 40", "01 00"},
         {"06 50 01 01 01 33", "01 00"},
         {"06 51 01 01 00", "01 00 10"}}); // the IVR, while the wiper stays at 20
    auto part = *bus.state().part;
    EXPECT_EQ(part.wipers, std::vector<int>{0x20});
    EXPECT_EQ(part.nonvolatile, std::vector<int>{0x10});
    EXPECT_EQ(part.registers, (std::map<std::string, int>{{"01", 0x33}, {"02", 0x40}}));
    EXPECT_EQ(part.nonvolatileWrites, 3);
    EXPECT_EQ(part.writes, (std::map<std::string, int>{{"00", 1}, {"01", 2}}));

    send("12 00 A0 10"); // VCC off, and on again
    send("12 00 A0 30");
    EXPECT_EQ(bus.state().part->wipers, std::vector<int>{0x10}) << "recalled";
    run({{"06 51 03 01 00", "01 00 10 33 40"}});

    replug();
    EXPECT_EQ(bus.state().code, 0x40) << "72 was a volatile code";
    powerPart();
    run({{"06 51 03 01 00", "01 00 10 33 40"}});
}

TEST_F(BoardTest, ShutdownBitPutsTheWiperLow) {
    powerPart();
    EXPECT_EQ(count("06"), 388); // 64/128 of 5.0 V, halved: 1.25 V
    run({{"06 50 01 01 02 80", "01 00"}});
    EXPECT_EQ(count("06"), 0);
    run({{"06 50 01 01 02 C0", "01 00"}});
    EXPECT_EQ(count("06"), 388);
}

TEST_F(BoardTest, MissedStoreFallsBackToTheStoredPosition) {
    powerPart();
    bus.fault({.kind = FaultKind::MissedStore});
    run({{"06 50 01 01 02 C0", "01 00"},
         {"06 50 01 01 00 11", "01 00"}, // no store yet
         {"06 50 01 01 02 40", "01 00"},
         {"06 50 01 01 00 22", "01 00"}}); // missed
    EXPECT_EQ(bus.state().part->wipers, std::vector<int>{0x40});
    EXPECT_EQ(bus.state().part->nonvolatile, std::vector<int>{0x40});
    EXPECT_EQ(bus.state().part->nonvolatileWrites, 0);
    send("06 50 01 01 00 22");
    EXPECT_EQ(bus.state().part->nonvolatile, std::vector<int>{0x22}) << "the next one holds";
}

} // namespace
} // namespace vrk::sim
