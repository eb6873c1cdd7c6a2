#include "tests/sim/Bench.h"

#include "sim/Firmware.h"

#include <algorithm>

namespace vrk::sim {
namespace {

class FirmwareTest : public Bench {};

TEST_F(FirmwareTest, SettingsReadBackWhatWasWrittenAndWritesGiveNoReply) {
    struct Case {
        std::string atStart; ///< reply before anything is written
        std::string write, read, reply;
    };
    const Case cases[] = {
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
    for (const Case& c : cases) {
        SCOPED_TRACE(c.write);
        EXPECT_EQ(ask(c.read, bytes(c.atStart).size()), c.atStart);
        EXPECT_TRUE(send(c.write));
        hid::Report none{};
        EXPECT_EQ(bus.read(handle, none, Milliseconds{1}), hid::ReadResult::TimedOut);
        EXPECT_EQ(ask(c.read, bytes(c.reply).size()), c.reply);
    }
    bus.unplug(0);
    bus.plug(0);
    handle = bus.open(bus.list().at(0).path);
    for (const Case& c : cases) {
        EXPECT_EQ(ask(c.read, bytes(c.atStart).size()), c.atStart) << "after a replug: " << c.read;
    }
}

TEST_F(FirmwareTest, FixedReplies) {
    EXPECT_EQ(ask("00", 9), "01 00 01 02 07 D8 06 0C 00"); // 1.2 of 12 June 2008
    EXPECT_EQ(ask("12 01 7F", 4), "01 00 01 00") << "no register below 80";
    EXPECT_EQ(ask("04 00 03 00 01", 3), "01 00 00") << "SCL toggle, SDA free";
    send("12 00 D5 C0");
    send("12 00 F3 FB");
    send("0C 00 0A 1F");
    EXPECT_EQ(ask("0C 01", 13), "01 00 0A 1F FF 00 FF C0 FB 00 FF 00 FF");
    // The byte of the external converter comes one bit to the left in two bytes.
    EXPECT_EQ(ask("13 00 84 C1 01", 5), "01 00 01 82 00");
    bus.input(0x06, -1.25, std::nullopt);
    EXPECT_EQ(ask("13 01 84 02 01", 6), "01 00 00 C0 00 00");
    bus.input(0x06, 2.6, std::nullopt);
    EXPECT_EQ(ask("13 01 84 02 01", 6), "01 00 00 7F FF FF");
}

TEST_F(FirmwareTest, DropsWhatIsNoCommand) {
    for (const char* command : {"14", "FF", "01 02", "12 05 80"}) {
        EXPECT_EQ(ask(command, 2), "") << command;
    }
    EXPECT_TRUE(bus.write(handle, zeroFilled(bytes("00 00"))));
    EXPECT_EQ(reply(), "") << "another report ID";
}

TEST_F(FirmwareTest, LongestRequestsFitAndLongerOnesAreRefused) {
    powerPart();
    bus.socket("KV4078", 0x50);
    EXPECT_EQ(ask("06 51 3E 01 00", 4), "01 00 80 80");
    EXPECT_EQ(ask("06 51 3F 01 00", 3), "01 02 00");
    EXPECT_EQ(ask("06 50 3B 01 00", 2), "01 02");
    EXPECT_EQ(ask("09 00 01 00 00 FF 50 B0", 64).substr(0, 5), "01 00");
}

TEST_F(FirmwareTest, OptionsFormTheI2cFrame) {
    // A part that writes down what the bus does.
    struct Scribe final : Part {
        Scribe(std::string& out) : Part("scribe"), log(out) {}
        void i2cStart() override { log += "S "; }
        bool i2cWrite(std::uint8_t byte) override { return note(byte), true; }
        std::uint8_t i2cRead(bool acknowledged) override {
            log += acknowledged ? "r+ " : "r- ";
            return 0x5A;
        }
        void i2cStop() override { log += "P"; }
        double wiperRatio(int) const override { return 0.0; }
        PartState state() const override { return {}; }
        void onPowerUp() override {}
        void onPowerDown() override {}
        void note(std::uint8_t byte) {
            char two[8];
            std::snprintf(two, sizeof two, "%02X ", byte);
            log += two;
        }
        std::string& log;
    };
    std::string log;
    Faults faults;
    Board board(1, faults);
    Firmware firmware(board, faults);
    board.powerUp();
    board.socket(std::make_unique<Scribe>(log));
    const auto run = [&](const std::string& command) {
        log.clear();
        firmware.handle(zeroFilled(bytes("01 " + command)));
        return log;
    };
    run("12 00 A0 30");
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
        run(std::string("04 00 ") + c.options);
        EXPECT_EQ(run(c.command), c.frame) << c.options << ": " << c.command;
    }
}

TEST_F(FirmwareTest, PinsFollowLatchModeAndOutside) {
    // Everything that is written comes back while the pins are digital, whatever drives them.
    const struct {
        const char *data, *mode, *input;
    } ports[] = {
        {"80", "A4", "F1"}, {"90", "A5", "F2"}, {"A0", "A6", "F3"}, {"B0", "A7", "F4"}, {"C7", "AE", "F5"}};
    for (const auto& port : ports) {
        for (const char* mode : {"00", "FF"}) {
            send(std::string("12 00 ") + port.mode + " " + mode);
            for (const char* value : {"AA", "55", "FF"}) {
                send(std::string("12 00 ") + port.data + " " + value);
                EXPECT_EQ(ask(std::string("12 01 ") + port.data, 4), std::string("01 00 00 ") + value);
            }
        }
        send(std::string("12 00 ") + port.input + " 7E");
        EXPECT_EQ(ask(std::string("12 01 ") + port.data, 4), "01 00 00 7E") << "analog pins read 0";
    }
    EXPECT_EQ(bus.state().sfr.at("80"), 0xFF);
    EXPECT_EQ(bus.state().pins.at("P0"), 0x7E);

    send("12 00 F1 FF");
    bus.fault({.kind = FaultKind::StuckSda});
    EXPECT_EQ(ask("12 01 80", 4), "01 00 00 FF") << "push-pull pins hold against a stuck SDA";
    send("12 00 A4 00");
    EXPECT_EQ(ask("12 01 80", 4), "01 00 00 EF");
    EXPECT_EQ(ask("04 00 03 00 01", 3), "01 00 01");
    EXPECT_EQ(ask("12 01 80", 4), "01 00 00 FF");
}

TEST_F(FirmwareTest, CrossbarHidesTheBusLinesFromTheSocket) {
    struct Watcher final : Part {
        explicit Watcher(std::vector<std::uint8_t>& out) : Part("watcher"), p0(out) {}
        double wiperRatio(int) const override { return 0.0; }
        PartState state() const override { return {}; }
        void onPowerUp() override {}
        void onPowerDown() override {}
        void onPins(const PinLevels&, const PinLevels& now) override { p0.push_back(now[0]); }
        std::vector<std::uint8_t>& p0;
    };
    std::vector<std::uint8_t> seen;
    Faults faults;
    Board board(1, faults);
    board.powerUp();
    board.socket(std::make_unique<Watcher>(seen));
    board.writeRegister(0xA0, 0x30);
    board.writeRegister(0x80, 0x00); // bus lines idle: nothing to see
    board.writeRegister(0x80, 0x40);
    board.writeRegister(0xE1, 0x02); // SMBus off its pins: SDA and SCL fall to their latches
    board.writeRegister(0x80, 0x70);
    board.writeRegister(0x80, 0x60);
    board.writeRegister(0xE1, 0x00);
    board.writeRegister(0x80, 0x65);
    EXPECT_EQ(seen, (std::vector<std::uint8_t>{0x78, 0x48, 0x78, 0x68, 0x60, 0x65}));
}

} // namespace
} // namespace vrk::sim
