#include "tests/sim/WireBench.h"

#include <algorithm>

namespace vrk::sim {
namespace {

/// "wipers / stored / registers / writes", all hexadecimal: what a debugger inside the part would show.
std::string text(const PartState& part) {
    std::string out;
    const auto add = [&out](int value) {
        char number[8];
        std::snprintf(number, sizeof number, "%02X ", static_cast<unsigned>(value));
        out += number;
    };
    for (const int wiper : part.wipers) {
        add(wiper);
    }
    out += "/ ";
    for (const int stored : part.nonvolatile) {
        add(stored);
    }
    out += "/ ";
    for (const auto& [name, value] : part.registers) {
        out += name + "=";
        add(value);
    }
    return out + "/ " + std::to_string(part.nonvolatileWrites);
}

class PartsTest : public BoardTest {
  protected:
    void socket(const char* part) {
        bus.socket(part);
        powerPart();
    }
    std::string state() { return text(*bus.state().part); }
    std::vector<int> wipers() { return bus.state().part->wipers; }
    /// P0 bit by bit, as a host moves its lines by hand.
    void pins(const std::vector<int>& levels) {
        for (const int level : levels) {
            char command[32];
            std::snprintf(command, sizeof command, "12 00 80 %02X", static_cast<unsigned>(level));
            send(command);
        }
    }
    /// Bits with the data line set ahead of a clock pulse; all other lines stay low.
    void clockOut(const std::string& bits, int data, int pulse) {
        for (const char bit : bits) {
            const int level = bit == '1' ? data : 0;
            pins({level, level | pulse, level});
        }
    }
};

TEST_F(PartsTest, EachFamilyAnswersItsFramesAndKeepsWhatItStored) {
    const struct {
        const char* part;
        std::vector<Step> steps;
        const char *state, *recalled;
    } cases[] = {
        {"KV4074", // address A0; a value beyond the taps loses its upper bits
         {{"06 A0 01 01 08 C0", "01 00"},
          {"06 A0 02 01 02 FF 11", "01 00"},
          {"06 A1 02 01 02", "01 00 7F 11"},
          {"06 A0 01 01 04 E5", "01 00"},
          {"06 A0 01 01 09 00", "01 01"}, // no such register
          {"06 50 01 01 00 00", "01 01"}},
         "40 40 7F 11 / 40 40 40 40 / 04=E5 05=00 06=00 07=00 08=C0 / 1",
         "40 40 40 40"},
        {"KV4180", // frames of two, the answer in the frame behind
         {{"09 00 00 00 00 02 C3 44"},
          {"09 00 01 00 00 04 83 00 00 00", "01 00 00 83 83 44"},
          {"09 00 00 00 00 02 60 C0"},
          {"09 00 00 00 00 02 C0 12"},
          {"09 00 01 00 00 04 20 00 80 00", "01 00 00 20 20 C0"},
          {"09 00 01 00 00 02 C4 99", "01 00 00 C4"}},
         "12 80 80 44 / 80 80 80 44 / 04=99 05=00 06=00 07=00 08=00 09=00 0A=00 0B=00 0C=00 0D=00 0E=00 "
         "0F=00 10=C0 / 2",
         "80 80 80 44"},
        {"KV4184", // ID first; another one is left alone
         {{"09 00 01 00 00 03 50 C2 33", "01 00 00 50 C2"},
          {"12 00 A0 20"}, // the same ID, but U5 has the bus
          {"09 00 01 00 00 03 50 C0 70", "01 00 00 50 C0"},
          {"12 00 A0 30"},
          {"09 00 01 00 00 03 50 B2 00", "01 00 00 50 33"},
          {"09 00 01 00 00 03 52 C2 44", "01 00 00 00 00"},
          {"12 00 80 42"}, // A0 high: it answers to 52
          {"09 00 01 00 00 03 52 B2 00", "01 00 00 52 33"}},
         "40 40 33 40 / 40 40 33 40 / 04=00 05=00 06=00 07=00 08=40 / 1",
         "40 40 33 40"},
        {"Q4422",          // wipers, or the bank that the status register names
         {{"12 00 90 02"}, // CS high
          {"06 50 02 01 01 10 20", "01 00"},
          {"06 50 01 01 07 05", "01 00"},
          {"06 50 01 01 02 5A", "01 00"},
          {"06 51 02 01 01", "01 00 80 5A"},
          {"06 50 01 01 07 00", "01 00"},
          {"06 51 02 01 01", "01 00 10 20"},
          {"06 51 01 01 07", "01 00 00"},
          {"12 00 80 40"}, // DS0: pot 1
          {"12 00 90 04"}, // CS low, up
          {"06 51 01 01 00", "01 01"},
          {"12 00 90 05"}, // a step at the clock's rise
          {"12 00 90 04"},
          {"12 00 90 05"},
          {"12 00 90 01"}, // down
          {"12 00 90 00"},
          {"12 00 90 01"},
          {"12 00 90 03"}}, // CS rises with the clock high: stored
         "80 11 20 80 / 80 11 80 80 / DR00=80 DR01=80 DR02=80 DR03=80 DR10=11 DR11=80 DR12=80 DR13=80 "
         "DR20=80 "
         "DR21=80 DR22=5A DR23=80 DR30=80 DR31=80 DR32=80 DR33=80 status=00 / 2",
         "80 11 80 80"},
        {"Q4410", // no read mark: A0 must be high when the slave byte's lowest bit is
         {{"04 00 09 00 00"},
          {"06 50 02 00 A2 5A", "01 00"},
          {"06 51 01 01 92", "01 01"},
          {"12 00 80 42"},
          {"06 51 01 01 92", "01 00 5A"},
          {"06 50 01 00 A2", "01 01"},
          {"12 00 80 02"},
          {"06 50 01 00 EE", "01 00"},    // wiper 2 to its register 3
          {"06 50 02 00 C9 77", "01 00"}, // register 2 of pot 1
          {"06 50 01 00 18", "01 00"},    // registers 2 to all wipers
          {"06 50 01 00 D2", "01 00"},    // register 0 to wiper 2
          {"06 50 03 00 A3 07 55", "01 00"},
          {"06 50 01 00 84", "01 00"},     // all wipers to registers 1
          {"06 50 01 00 A0", "01 00"},     // an instruction without its data
          {"06 50 01 00 30", "01 01"},     // none of its instructions
          {"06 50 02 00 20 FF", "01 01"}}, // nine clocks behind an increment, no acknowledge
         "89 77 80 07 / 80 80 80 80 / DR00=80 DR01=80 DR02=80 DR03=80 DR10=80 DR11=77 DR12=77 DR13=80 "
         "DR20=80 "
         "DR21=80 DR22=80 DR23=5A DR30=80 DR31=07 DR32=80 DR33=80 / 6",
         "80 80 80 80"},
        {"Q4420",
         {{"09 00 01 00 00 03 50 A1 5A", "01 00 00 50 A1"},
          {"09 00 01 00 00 04 50 91 77 00", "01 00 00 50 5A 77"},
          {"09 00 01 00 00 03 51 91 00", "01 00 00 00 00"},
          {"09 00 01 00 00 02 50 E1", "01 00 00 50"}, // wiper 1 to its register 0
          {"09 00 01 00 00 03 50 C7 33", "01 00 00 50 C7"},
          {"09 00 01 00 00 03 50 B7 00", "01 00 00 50 33"},
          {"09 00 01 00 00 02 50 14", "01 00 00 50"}},
         "80 80 80 33 / 80 5A 80 80 / DR00=80 DR01=80 DR02=80 DR03=80 DR10=5A DR11=80 DR12=80 DR13=80 "
         "DR20=80 "
         "DR21=80 DR22=80 DR23=80 DR30=80 DR31=33 DR32=80 DR33=80 / 2",
         "80 5A 80 80"},
        {"Q3318", // the read mark tells a read from a write, the missing data a transfer
         {{"04 00 09 00 00"},
          {"06 50 02 01 A0 FD FF", "01 00"},
          {"06 51 02 01 80", "01 00 01 FF"},
          {"06 50 02 01 C8 03 21", "01 00"},
          {"06 51 02 01 A8", "01 00 03 21"},
          {"06 51 01 01 E4", "01 00 FF"}, // wiper to data 1
          {"06 51 01 01 C8", "01 00 FF"}, // data 2 to wiper
          {"06 51 02 01 84", "01 01"}},
         "321 / 200 / DR0=200 DR1=1FF DR2=321 DR3=200 / 2",
         "200"},
        {"Q3310",
         {{"09 00 01 00 00 04 50 A0 01 FF", "01 00 00 50 A0 01"},
          {"09 00 01 00 00 04 51 80 00 00", "01 00 00 51 01 FF"},
          {"09 00 01 00 00 04 50 C0 02 34", "01 00 00 50 C0 02"},
          {"09 00 01 00 00 02 51 EC", "01 00 00 51"}, // wiper to data 3
          {"09 00 01 00 00 02 51 C0", "01 00 00 51"}, // data 0 to wiper: the length tells
          {"09 00 01 00 00 05 51 AC 00 00 00", "01 00 00 51 01 FF 00"}},
         "234 / 234 / DR0=234 DR1=200 DR2=200 DR3=1FF / 2",
         "234"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.part);
        replug();
        socket(c.part);
        run(c.steps);
        EXPECT_EQ(state(), c.state);
        switchVcc(false);
        const auto answered = std::find_if(c.steps.begin(), c.steps.end(),
                                           [](const Step& step) { return *step.reply != '\0'; });
        const bool i2c = answered->command[1] == '6';
        EXPECT_EQ(ask(answered->command, 5), i2c ? "01 01 00 00 00" : "01 00 00 00 00") << "VCC is off";
        switchVcc(true);
        EXPECT_EQ(state().substr(0, std::string(c.recalled).size()), c.recalled);
    }
}

TEST_F(PartsTest, QuadPartsAreSteppedByHand) {
    // The I2C lines from the port: START, 50, acknowledge, 22, acknowledge, steps at the clock's fall, STOP.
    socket("Q4410");
    send("12 00 E1 02");
    pins({0x30, 0x20, 0x00});
    clockOut("01010000", 0x10, 0x20);
    send("12 00 80 30");
    EXPECT_EQ(ask("12 01 80", 4), "01 00 00 20") << "acknowledged";
    pins({0x10, 0x00});
    clockOut("00100010", 0x10, 0x20);
    clockOut("1", 0x10, 0x20);
    EXPECT_EQ(wipers()[2], 0x80);
    pins({0x10, 0x30});
    EXPECT_EQ(wipers()[2], 0x80) << "not at the rise";
    pins({0x10, 0x00});
    clockOut("100", 0x10, 0x20);
    EXPECT_EQ(wipers(), (std::vector<int>{0x80, 0x80, 0x80, 0x80}));
    for (int step = 0; step < 130; ++step) {
        clockOut("1", 0x10, 0x20);
    }
    EXPECT_EQ(wipers()[2], 0xFF) << "the end holds";
    clockOut("000", 0x10, 0x20);
    pins({0x00, 0x20, 0x30}); // STOP: its clock does not fall
    send("12 00 E1 06");
    send("12 00 80 42");
    run({{"04 00 09 00 00"}, {"06 51 01 01 92", "01 00 FC"}});

    send("12 00 80 02");
    send("12 00 E1 02"); // behind another address it hears nothing
    pins({0x30, 0x20, 0x00});
    clockOut("010100101", 0x10, 0x20);
    clockOut("001000101", 0x10, 0x20);
    clockOut("000", 0x10, 0x20);
    pins({0x00, 0x20, 0x30});
    EXPECT_EQ(wipers()[2], 0xFC);
    send("12 00 E1 06");

    // The SPI lines: select falls, 16 clocks, then steps until it rises.
    socket("Q4420");
    send("12 00 80 08");
    send("12 00 E1 00");
    pins({0x00});
    clockOut("0101000000100001", 0x04, 0x01);
    EXPECT_EQ(wipers()[1], 0x80);
    clockOut("00001", 0x04, 0x01);
    pins({0x08});
    clockOut("11", 0x04 | 0x08, 0x01);
    send("12 00 E1 06");
    run({{"09 00 01 00 00 03 50 91 00", "01 00 00 50 7D"}});
}

TEST_F(PartsTest, SpiClocksAndSelectsAsItIsSet) {
    socket("KV4184");
    const struct {
        const char *config, *reply;
    } cases[] = {
        {"04", "01 00 00 50 40"}, // as parts want it
        {"07", "01 00 00 50 40"}, // the other way that clocks data in at the rise
        {"06", "01 00 00 00 00"}, // data a clock too late: another ID
        {"00", "01 00 00 00 00"}, // not selected during a transfer
    };
    for (const auto& c : cases) {
        send(std::string("07 00 ") + c.config);
        EXPECT_EQ(ask("09 00 01 00 00 03 50 B0 00", 5), c.reply) << c.config;
    }
    send("07 00 04");
    EXPECT_EQ(ask("09 00 01 01 01 03 50 B0 00", 5).substr(0, 8), "01 00 00");
    EXPECT_NE(ask("09 00 01 01 01 03 50 B0 00", 5), "01 00 00 50 40") << "the phase changes at byte 1";
}

TEST_F(PartsTest, UpDownPartsStepAtTheFallAndStoreWithIncHigh) {
    // P0.6 and P0.7 are the two selects, P1.1 /INC, P1.2 U/D.
    socket("UPDN100");
    const auto both = [this] {
        const BoardState now = bus.state();
        return std::to_string(now.part->wipers[0]) + " " + std::to_string(now.part->nonvolatile[0]) + " " +
               std::to_string(now.part2->wipers[0]) + " " + std::to_string(now.part2->nonvolatile[0]) + " " +
               std::to_string(now.part->nonvolatileWrites + now.part2->nonvolatileWrites);
    };
    const struct {
        const char *command, *state;
    } steps[] = {
        {"12 00 80 C0", "50 50 50 50 0"}, {"12 00 90 06", "50 50 50 50 0"},
        {"12 00 80 80", "50 50 50 50 0"}, {"12 00 90 04", "51 50 50 50 0"}, // part 1, up
        {"12 00 90 06", "51 50 50 50 0"}, {"12 00 90 04", "52 50 50 50 0"},
        {"12 00 80 C0", "52 50 50 50 0"}, // selects rise with /INC low: not stored
        {"12 00 80 40", "52 50 50 50 0"}, {"12 00 90 02", "52 50 50 50 0"},
        {"12 00 90 00", "52 50 49 50 0"}, {"12 00 90 02", "52 50 49 50 0"}, // part 2, down
        {"12 00 80 C0", "52 50 49 49 1"},                                   // stored
        {"12 00 A0 10", "0 50 0 49 1"},   {"12 00 A0 30", "50 50 49 49 1"}, // VCC off and on
    };
    for (const auto& step : steps) {
        send(step.command);
        EXPECT_EQ(both(), step.state) << step.command;
    }
    // The ends hold, and each part's wiper is at its own input.
    send("12 00 80 80");
    for (int i = 0; i < 60; ++i) {
        send("12 00 90 06");
        send("12 00 90 04");
    }
    EXPECT_EQ(both(), "100 50 49 49 1");
    EXPECT_EQ(count("06"), 775); // 5.0 V, halved
    EXPECT_EQ(count("07"), 380);
    send("12 00 90 06");
    bus.fault({.kind = FaultKind::MissedStore});
    send("12 00 80 C0");
    EXPECT_EQ(both(), "50 50 49 49 1") << "the wiper falls back";
    for (int i = 0; i < 60; ++i) {
        run({{"12 00 80 80"}, {"12 00 90 02"}, {"12 00 90 00"}});
    }
    EXPECT_EQ(wipers()[0], 0);
}

TEST_F(PartsTest, PushButtonsStepStoreAndShutDown) {
    // P1.1 /UP, P1.2 /DOWN, P0.7 /STORE, all pressed low.
    socket("PB64");
    send("12 00 80 C0");
    send("12 00 90 06");
    const struct {
        const char* command;
        int waitMs;
        const char* state;
        int count; ///< at VIN0
    } steps[] = {
        {"12 00 90 04", 50, "21 / 20 / / 0", 406},
        {"12 00 90 06", 50, "21 / 20 / / 0", 406},
        {"12 00 90 02", 1100, "20 / 20 / / 0", 394},
        {"12 00 90 06", 5000, "20 / 20 / / 0", 394},
        {"12 00 90 04", 2100, "25 / 20 / / 0", 455}, // held: from 1.25 s on four a second
        {"12 00 90 06", 1000, "25 / 20 / / 0", 455},
        {"12 00 80 40", 5, "25 / 25 / / 1", 455},
        {"12 00 80 C0", 5, "25 / 25 / / 1", 455},
        {"12 00 90 00", 2000, "25 / 25 / / 1", 0}, // shut down
        {"12 00 90 06", 0, "25 / 25 / / 1", 455},
        {"12 00 E1 04", 0, "25 / 25 / / 1", 0}, // SPI off its pins: P0.2 is low, /MUTE
        {"12 00 80 C4", 0, "25 / 25 / / 1", 455},
    };
    for (const auto& step : steps) {
        send(step.command);
        clock.sleep(Milliseconds{step.waitMs});
        EXPECT_EQ(state(), step.state) << step.command;
        EXPECT_EQ(count("06"), step.count) << step.command;
    }
}

TEST_F(PartsTest, MemoryIsReadAndFilledAsText) {
    std::string stores;
    bus.onStore([&](int board, int socket) {
        stores += std::to_string(board) + std::to_string(socket) + " " + bus.memory(board);
    });
    socket("KV4071");
    run({{"06 50 02 01 00 12 34", "01 00"}});
    EXPECT_EQ(stores, "00 KV4071: 12 00\n00 KV4071: 12 34\n");
    switchVcc(false);
    bus.setMemory("KV4071: 7F AA\n");
    for (const char* wrong : {"KV4071: 80 00", "KV4071: 7F", "KV4071: 7F AA 01", "", "KV4071: xy",
                              "KV6021: 7F AA", "KV4071: 01 02\nKV4071: 01 02"}) {
        EXPECT_THROW(bus.setMemory(wrong), std::invalid_argument) << wrong;
    }
    switchVcc(true);
    EXPECT_EQ(state(), "7F / 7F / 01=AA 02=40 / 2");

    bus.socket("UPDN100");
    EXPECT_THROW(bus.setMemory("UPDN100: 01\nUPDN100: 65\n"), std::invalid_argument);
    EXPECT_EQ(bus.memory(), "UPDN100: 32\nUPDN100: 32\n") << "refused whole";
    bus.setMemory("UPDN100: 01\nUPDN100: 64\n");
    EXPECT_EQ(bus.memory(), "UPDN100: 01\nUPDN100: 64\n");
    bus.socket({});
    EXPECT_EQ(bus.memory(), "");
}

} // namespace
} // namespace vrk::sim
