#include "tests/sim/Bench.h"

namespace vrk::sim {
namespace {

class PartTest : public Bench {};

struct Step {
    const char* command;
    const char* reply; ///< as many bytes as are given
};

#define RUN(steps)                                                                                           \
    for (const Step& step : steps) {                                                                         \
        EXPECT_EQ(ask(step.command, bytes(step.reply).size()), step.reply) << step.command;                  \
    }

TEST_F(PartTest, EachI2cPartHasItsAddressWipersAndRegisters) {
    const struct {
        const char* name;
        std::size_t wipers;
        std::vector<Step> steps;
    } cases[] = {
        {"KV4071",
         1,
         {{"06 51 03 01 00", "01 00 40 00 40"},
          {"06 50 01 01 03 00", "01 01"},
          {"06 A1 01 01 00", "01 01"},
          {"06 50 01 01 00 FF", "01 00"},
          {"06 51 01 01 00", "01 00 7F"}}},
        {"KV6021", 1, {{"06 51 03 01 00", "01 00 40 00 40"}, {"06 50 01 01 03 00", "01 01"}}},
        {"KV4074",
         4,
         {{"06 A1 09 01 00", "01 00 40 40 40 40 00 00 00 00 40"},
          {"06 A0 01 01 08 C0", "01 00"},
          {"06 A0 01 01 09 C0", "01 01"},
          {"06 A0 02 01 02 11 92", "01 00"},
          {"06 A1 02 01 02", "01 00 11 12"}}},
        {"KV4078",
         4,
         {{"06 A1 05 01 00", "01 00 80 80 80 80 00"},
          {"06 A1 01 01 10", "01 00 40"},
          {"06 A0 01 01 11 C0", "01 01"},
          {"06 A0 01 01 03 FF", "01 00"},
          {"06 A1 01 01 03", "01 00 FF"}}},
    };
    powerPart();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        bus.socket(c.name);
        RUN(c.steps);
        EXPECT_EQ(bus.state().part->wipers.size(), c.wipers);
    }
}

TEST_F(PartTest, AddressIsTheBasePlusThePins) {
    const struct {
        const char *p0, *p1, *read;
        std::optional<int> base;
    } cases[] = {
        {"40", "04", "53", {}}, {"80", "04", "55", {}}, {"00", "05", "59", {}},   {"00", "06", "61", {}},
        {"40", "06", "63", {}}, {"C0", "07", "6F", {}}, {"00", "04", "2D", 0x2C}, {"C0", "07", "4B", 0x2C},
    };
    powerPart();
    for (const auto& c : cases) {
        bus.socket("KV4071", c.base);
        send(std::string("12 00 80 ") + c.p0);
        send(std::string("12 00 90 ") + c.p1);
        EXPECT_EQ(ask(std::string("06 ") + c.read + " 01 01 00", 3), "01 00 40") << c.read;
        EXPECT_EQ(ask("06 51 01 01 00", 2), "01 01");
    }
}

TEST_F(PartTest, AcrChoosesVolatileOrStoredPositions) {
    powerPart();
    const Step first[] = {
        {"06 50 01 01 00 10", "01 00"}, // IVR: stored, and the wiper follows
        {"06 50 01 01 02 C0", "01 00"}, // WR alone from here
        {"06 51 01 01 00", "01 00 10"},
        {"06 50 02 01 00 20 33", "01 00"}, // wiper, then the general-purpose byte behind it
        {"06 51 02 01 00", "01 00 20 33"},
        {"06 51 01 00", "01 00 C0"}, // no register byte: where the pointer stands
        {"06 50 01 01 02 40", "01 00"},
        {"06 51 01 01 00", "01 00 10"}, // the IVR, while the wiper stays at 20
    };
    RUN(first);
    auto part = *bus.state().part;
    EXPECT_EQ(part.wipers, std::vector<int>{0x20});
    EXPECT_EQ(part.nonvolatile, std::vector<int>{0x10});
    EXPECT_EQ(part.registers, (std::map<std::string, int>{{"01", 0x33}, {"02", 0x40}}));
    EXPECT_EQ(part.nonvolatileWrites, 2);

    cycleVcc();
    EXPECT_EQ(bus.state().part->wipers, std::vector<int>{0x10}) << "recalled";
    const Step after[] = {{"06 51 03 01 00", "01 00 10 33 40"}};
    RUN(after);

    bus.unplug(0);
    bus.plug(0);
    handle = bus.open(bus.list().at(0).path);
    EXPECT_EQ(bus.state().code, 0x40) << "72 was a volatile code";
    powerPart();
    RUN(after);
}

TEST_F(PartTest, ShutdownPutsTheWiperLow) {
    powerPart();
    EXPECT_EQ(count("06"), 388); // 64/128 of 5.0 V, halved: 1.25 V
    send("06 50 01 01 02 80");
    reply();
    EXPECT_EQ(count("06"), 0);
    send("06 50 01 01 02 C0");
    reply();
    EXPECT_EQ(count("06"), 388);
    send("12 00 90 00"); // P1.2 low
    EXPECT_EQ(count("06"), 0);
}

TEST_F(PartTest, DoesNotAnswerWithoutPowerBusOrSocket) {
    const char* read = "06 51 01 01 00";
    EXPECT_EQ(ask(read, 3), "01 01 00") << "VCC is off at start";
    powerPart();
    EXPECT_EQ(ask(read, 3), "01 00 40");
    send("12 00 E1 02");
    EXPECT_EQ(ask(read, 2), "01 01") << "SMBus off its pins";
    send("12 00 E1 06");
    send("12 00 A0 20");
    send("09 00 00 00 00 03 50 C0 00");
    send("12 00 A0 30");
    EXPECT_EQ(ask(read, 2), "01 01") << "1.25 V is too low";
    powerPart();
    EXPECT_EQ(ask(read, 2), "01 00");
    bus.socket(std::nullopt);
    EXPECT_EQ(ask(read, 2), "01 01");
    EXPECT_FALSE(bus.state().part);
    EXPECT_EQ(count("06"), 0);
}

TEST_F(PartTest, MissedStoreFallsBackToTheStoredPosition) {
    powerPart();
    bus.fault({.kind = FaultKind::MissedStore});
    const Step steps[] = {
        {"06 50 01 01 02 C0", "01 00"},
        {"06 50 01 01 00 11", "01 00"}, // no store yet
        {"06 50 01 01 02 40", "01 00"},
        {"06 50 01 01 00 22", "01 00"}, // missed
    };
    RUN(steps);
    EXPECT_EQ(bus.state().part->wipers, std::vector<int>{0x40});
    EXPECT_EQ(bus.state().part->nonvolatile, std::vector<int>{0x40});
    EXPECT_EQ(bus.state().part->nonvolatileWrites, 0);
    send("06 50 01 01 00 22");
    EXPECT_EQ(bus.state().part->nonvolatile, std::vector<int>{0x22}) << "the next one holds";
}

TEST_F(PartTest, SpiPartsAnswerInTheirFrames) {
    powerPart();
    bus.socket("KV4180");
    const Step plain[] = {
        {"09 00 01 00 00 04 82 00 00 00", "01 00 00 82 82 80"}, // factory position of wiper 2
        {"09 00 01 00 00 02 60 C0", "01 00 00 60"},             // ACR
        {"09 00 01 00 00 04 20 00 00 00", "01 00 00 20 20 C0"},
        {"09 00 01 00 00 02 C2 FF", "01 00 00 C2"},
        {"09 00 01 00 00 06 82 00 83 00 00 00", "01 00 00 82 82 FF 83 80"},
        {"09 00 01 00 00 02 C4 A5", "01 00 00 C4"}, // general register
        {"09 00 01 00 00 04 84 00 00 00", "01 00 00 84 84 A5"},
    };
    RUN(plain);
    EXPECT_EQ(bus.state().part->wipers, (std::vector<int>{0x80, 0x80, 0xFF, 0x80}));
    EXPECT_EQ(bus.state().part->nonvolatile, (std::vector<int>{0x80, 0x80, 0x80, 0x80}));
    EXPECT_EQ(count("08"), 772); // 255/256 of 5.0 V, halved

    bus.socket("KV4184");
    const Step withId[] = {
        {"09 00 01 00 00 03 50 B3 00", "01 00 00 50 40"},
        {"09 00 01 00 00 03 50 C3 99", "01 00 00 50 C3"},
        {"09 00 01 00 00 05 50 B3 00 00 00", "01 00 00 50 19 19 19"},
        {"09 00 01 00 00 03 50 C8 C0", "01 00 00 50 C8"},
        {"09 00 01 00 00 03 50 B8 00", "01 00 00 50 C0"},
        {"09 00 01 00 00 03 52 B3 00", "01 00 00 00 00"}, // another ID
        {"06 51 01 01 00", "01 01"},                      // nothing on I2C
    };
    RUN(withId);
    send("12 00 80 40"); // A0 raises the ID
    const Step raised[] = {{"09 00 01 00 00 03 52 B3 00", "01 00 00 52 19"}};
    RUN(raised);
    send("12 00 A0 20"); // U5 selected: the bus is its own
    const Step u5[] = {{"09 00 01 00 00 03 52 B3 00", "01 00 00 00 00"}};
    RUN(u5);
    send("12 00 A0 30");
    send("12 00 E1 04");
    const Step off[] = {{"09 00 01 00 00 03 52 B3 00", "01 00 00 00 00"}};
    RUN(off);
}

TEST_F(PartTest, SocketRefusesWhatDoesNotExist) {
    const struct {
        const char* part;
        std::optional<int> address;
        const char* message;
    } cases[] = {
        {"KV4072", {}, "unknown part \"KV4072\": one of KV4071, KV4074, KV4078, KV6021, KV4180, KV4184"},
        {"KV4071", 0x51, "an address must be even, from 0 to 254 (FE)"},
        {"KV4071", 256, "an address must be even, from 0 to 254 (FE)"},
        {"KV4180", 0x50, "KV4180 has no address to set"},
    };
    for (const auto& c : cases) {
        try {
            bus.socket(c.part, c.address);
            ADD_FAILURE() << c.message;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), c.message);
        }
    }
    EXPECT_EQ(bus.state().part->name, "KV4071");
    for (const std::string& name : SimulatedBus::partNames()) {
        EXPECT_NO_THROW(bus.socket(name)) << name;
        EXPECT_EQ(bus.state().part->name, name);
    }
}

} // namespace
} // namespace vrk::sim
