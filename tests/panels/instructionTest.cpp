#include "tests/panels/I2cPanelTest.h"

#include <map>
#include <random>

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The instruction panel beside the device panel that its part was chosen on.
class InstructionTest : public I2cPanelTest {
  protected:
    void open() {
        openI2c();
        bus.socket("Q4410");
        EXPECT_THAT(chooseRow("Q4410/9,4,256,50,NA,NA,NA,r,s,t,u,1,1"), IsEmpty());
        EXPECT_TRUE(i2c().cmdShowq4410.userClick().done());
        EXPECT_TRUE(bench.frm_q4410.visible());
        wire.clear();
    }
    frm_q4410& panel() { return *bench.frm_q4410; }
    sim::PartState part() { return *bus.state().part; }
    int stored(int index) {
        return part().registers.at("DR" + decimalText(index / 4) + decimalText(index % 4));
    }
    void compose(int instruction, int pot = -1, int reg = -1) {
        EXPECT_TRUE(panel().OptInstruction[instruction].userClick().done());
        if (pot >= 0) {
            EXPECT_TRUE(panel().OptWiper[pot].userClick().done());
        }
        if (reg >= 0) {
            EXPECT_TRUE(panel().OptRegSel[reg].userClick().done());
        }
    }
    Reading& reading(int cell) { return cell < 4 ? panel().lblRDWcr[cell] : panel().lblRdData[cell - 4]; }
    /// A cell that says it was read just now holds what the part holds.
    void expectTruth() {
        if (!bus.state().part)
            return;
        const sim::PartState now = part();
        std::vector<int> held = now.wipers;
        for (const auto& [name, value] : now.registers) // DR00 to DR33
            held.push_back(value);
        for (int cell = 0; cell < 20; ++cell)
            if (stateOf(reading(cell)) == Freshness::State::Fresh) {
                EXPECT_EQ(hexToInt(reading(cell).caption()), held.at(static_cast<std::size_t>(cell)))
                    << reading(cell).path();
            }
    }
    void dropAnswers() {
        while (dialogs.queued() > 0)
            (void)dialogs.show({"", {}, {Choice::Retry, Choice::Cancel}});
    }
    /// The lines that stood on P0 while the bus had no pins, one report after the other, as bits of the bus;
    /// the port's other pins must rest.
    std::string lines() {
        std::string all;
        const int others = bus.state().sfr.at("80") & 0xCF;
        for (const std::string& report : sent(Command::SfrAccess, 5)) {
            if (report.substr(6) == "00 E1 06")
                return all + " XBR0=06";
            if (report.substr(0, 11) == "01 12 00 80") {
                const int value = hexToInt(report.substr(12));
                EXPECT_EQ(value & 0xCF, others) << report;
                all += (all.empty() ? "" : " ") + hexText(value & 0x30, 2);
            } else if (report.substr(6, 5) == "00 E1") {
                all += "XBR0=" + report.substr(12);
            }
        }
        return all;
    }
    void beginSteps(int pot) {
        panel().OptWiper[pot].setValue(false); // it must be clicked anew
        compose(8, pot);
        wire.clear();
        EXPECT_TRUE(panel().cmdDoInstruction.userClick().done());
    }
    void expectNothingLeftBehind() {
        EXPECT_EQ(bus.state().sfr.at("E1"), 0x06) << "the bus has its pins";
        EXPECT_EQ(bus.state().sfr.at("80") & 0x40, 0) << "A0 is low";
        EXPECT_TRUE(i2c().enabled());
        for (const Control* control : panel().controls())
            if (control->name() != "OptRegSel" && control->name() != "OptWiper" &&
                control->name() != "txtWriteValue" && control->name() != "lblReadValue") {
                EXPECT_TRUE(control->responsive()) << control->path();
            }
        EXPECT_EQ(bench.context().activities.current(), nullptr);
    }
};

TEST_F(InstructionTest, ByteIsComposedOfInstructionRegisterAndPot) {
    open();
    const char* const nibbles = "9ABCDE182";
    for (int instruction = 0; instruction < 9; ++instruction)
        for (int pot = 0; pot < 4; ++pot)
            for (int reg = 0; reg < 4; ++reg) {
                const bool hasPot = instruction != 6 && instruction != 7;
                const bool hasReg = instruction >= 2 && instruction <= 7;
                for (auto* group : {&panel().OptInstruction, &panel().OptWiper, &panel().OptRegSel})
                    for (auto& option : *group)
                        option->setValue(false);
                panel().OptInstruction[instruction].userClick();
                EXPECT_EQ(panel().OptWiper[pot].userClick().done(), hasPot);
                EXPECT_EQ(panel().OptRegSel[reg].userClick().done(), hasReg);
                const std::string merged = hexText((hasReg ? reg * 4 : 0) + (hasPot ? pot : 0));
                EXPECT_EQ(panel().lblSet[3].caption(), merged);
                EXPECT_EQ(panel().lblSet[4].caption(), nibbles[instruction] + merged);
                EXPECT_EQ(panel().Grid1.cellColour(instruction + 1, 9), Colour::Yellow);
                EXPECT_EQ(panel().Grid1.cellColour((instruction + 1) % 9 + 1, 0), Colour::White);
            }
    EXPECT_EQ(panel().Grid1.cell(6, 4), "1"); // the table's bits of E are those of D
    EXPECT_EQ(panel().Grid1.cell(6, 3), "0");
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(instructionWords(0xB6), "read data register 1 of pot 2");
    EXPECT_EQ(instructionWords(0x84), "transfer wiper register of every pot to its data register 1");
    EXPECT_EQ(instructionWords(0x36), "");
}

TEST_F(InstructionTest, ChangeOfInstructionKeepsWhatItsPredecessorShowed) {
    open();
    compose(0, 2);
    EXPECT_EQ(panel().lblSet[1].caption() + panel().lblSet[2].caption(), "02");
    panel().OptInstruction[2].userClick();
    EXPECT_EQ(panel().lblSet[4].caption(), "B2");
    EXPECT_EQ(panel().fields().potField, 2);
    EXPECT_EQ(panel().OptWiper[3].caption(), "Pot 3 Data");
    panel().OptRegSel[3].userClick();
    EXPECT_EQ(panel().lblSet[4].caption(), "BE");
    panel().OptInstruction[6].userClick();
    EXPECT_EQ(panel().lblSet[3].caption(), "E"); // until a register is clicked again
    panel().OptRegSel[1].userClick();
    EXPECT_EQ(panel().lblSet[4].caption(), "14");
    // The pot stays chosen and in the byte, while the field is 0: what comes back is of another register.
    compose(0, 2);
    panel().OptInstruction[1].userClick();
    panel().OptInstruction[0].userClick();
    EXPECT_EQ(panel().lblSet[4].caption(), "92");
    EXPECT_EQ(panel().fields().potField, 0);
    panel().cmdRdWCR[0].userClick();
    panel().OptInstruction[1].userClick();
    panel().OptInstruction[0].userClick();
    type(panel().txtWXWcr[3], "44");
    panel().cmdWrWCR[3].userClick();
    panel().OptInstruction[0].userClick(); // "93", but pot 0 in its field
    panel().cmdDoInstruction.userClick();
    EXPECT_EQ(panel().lblRDWcr[0].caption(), "44");
    EXPECT_NE(stateOf(panel().lblRDWcr[0]), Freshness::State::Fresh);
    expectTruth();
    // A register read under a selection of before.
    panel().cmdResetInstruction.userClick();
    EXPECT_EQ(panel().lblSet[4].caption(), "00");
    EXPECT_TRUE(panel().OptWiper[3].value());
    boxes();
}

TEST_F(InstructionTest, EachInstructionGoesOutAsItsBytes) {
    open();
    const struct {
        int instruction, pot, reg;
        const char* transfer;
    } cases[] = {
        {0, 2, -1, "01 06 51 01 01 92"},   {1, 1, -1, "01 06 50 02 00 A1 5A"}, {2, 2, 1, "01 06 51 01 01 B6"},
        {3, 3, 2, "01 06 50 02 00 CB 5A"}, {4, 1, 2, "01 06 50 01 00 D9"},     {5, 1, 3, "01 06 50 01 00 ED"},
        {6, -1, 0, "01 06 50 01 00 10"},   {7, -1, 1, "01 06 50 01 00 84"},
    };
    Colour lamp = Colour::LightGreen;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.transfer);
        compose(c.instruction, c.pot, c.reg);
        if (panel().txtWriteValue.enabled())
            type(panel().txtWriteValue, "5a");
        wire.clear();
        const Milliseconds before = clock.now();
        panel().cmdDoInstruction.userClick();
        const auto ports = latch("80", 0x40);
        EXPECT_GE(clock.now() - before, Milliseconds{c.instruction == 0 || c.instruction == 2 ? 50 : 30});
        compose(c.instruction, c.pot, c.reg);
        wire.clear();
        panel().cmdDoInstruction.userClick();
        EXPECT_THAT(transfers(), ElementsAre(c.transfer));
        // P0.6 is high for a read alone.
        EXPECT_EQ(ports, panel().lblReadValue.enabled() ? (std::vector<int>{0x40, 0}) : std::vector<int>{});
        lamp = Colour::Green;
        EXPECT_EQ(panel().ShpI2CAck[0].colour(), lamp);
        expectNothingLeftBehind();
    }
    EXPECT_EQ(bench.context().results.kept().back().text,
              "Transfer wiper register of every pot to its data register 1");
}

TEST_F(InstructionTest, ButtonsOfTheRegistersReachTheirOwnCells) {
    open();
    std::vector<std::string> wanted;
    for (int index = 0; index < 16; ++index) {
        type(panel().txtWrData[index], hexText(index * 16 + 3));
        panel().cdmWrData[index].userClick();
        EXPECT_EQ(stored(index), index * 16 + 3);
        EXPECT_EQ(panel().ShpDataWr[index].colour(), Colour::LightGreen);
        panel().cmdRDData[index].userClick();
        EXPECT_EQ(panel().lblRdData[index].caption(), hexText(index * 16 + 3, 2));
        EXPECT_EQ(panel().ShpDataRd[index].colour(), Colour::LightGreen);
        EXPECT_EQ(stateOf(panel().lblRdData[index]), Freshness::State::Fresh);
    }
    for (int pot = 0; pot < 4; ++pot) {
        type(panel().txtWXWcr[pot], hexText(pot * 9 + 1, 2));
        panel().cmdWrWCR[pot].userClick();
        EXPECT_EQ(part().wipers.at(static_cast<std::size_t>(pot)), pot * 9 + 1);
        panel().cmdRdWCR[pot].userClick();
        panel().cmdRdWCR[pot].userClick();
        EXPECT_EQ(panel().ShpRdWCR[pot].colour(), Colour::Green);
        EXPECT_EQ(panel().ShpWrWCR[pot].colour(), Colour::LightGreen);
    }
    expectTruth();
    // What was written is read by the device panel, and stands at the wiper.
    i2c().cmdI2Read[0].userClick();
    EXPECT_EQ(i2c().lblPotReadhex[0].caption(), "01");
    EXPECT_EQ(stateOf(panel().lblRDWcr[0]), Freshness::State::Fresh);
    type(panel().txtWXWcr[3], "C0");
    panel().cmdWrWCR[3].userClick();
    EXPECT_NE(stateOf(i2c().lblPotReadhex[0]), Freshness::State::Fresh);
    i2c().cmdSampleWiper[3].userClick();
    EXPECT_NEAR(leadingNumber(i2c().lblWiperVolts[3].caption()), bus.state().vcc * 0xC0 / 256, kStep);
    i2c().CMDxMIT[0].userClick(); // the device panel's own write makes the readings old
    EXPECT_NE(stateOf(panel().lblRDWcr[0]), Freshness::State::Fresh);
    // A data register outlasts VCC and comes back; the readings do not.
    i2c().OptVCC[1].userClick();
    for (int cell = 0; cell < 20; ++cell)
        EXPECT_NE(stateOf(reading(cell)), Freshness::State::Fresh) << cell;
    i2c().OptVCC[0].userClick();
    panel().cmdRdWCR[1].userClick();
    EXPECT_EQ(panel().lblRDWcr[1].caption(), "43");
}

TEST_F(InstructionTest, TransfersMarkSourceAndRecipient) {
    open();
    compose(4, 1, 2);
    panel().cmdDoInstruction.userClick();
    EXPECT_EQ(panel().ShpRdWCR[1].colour(), Colour::LightBlue);
    EXPECT_EQ(panel().lblRDWcr[1].caption(), ">>");
    EXPECT_EQ(panel().ShpDataRd[6].colour(), Colour::Yellow);
    EXPECT_EQ(panel().ShpRdWCR[0].colour(), Colour::Black);
    compose(5, 2, 0);
    panel().cmdDoInstruction.userClick();
    EXPECT_EQ(panel().ShpRdWCR[2].colour(), Colour::Yellow);
    EXPECT_EQ(panel().lblRdData[8].caption(), "<<");
    EXPECT_EQ(panel().ShpDataRd[8].colour(), Colour::LightBlue);
    EXPECT_EQ(panel().ShpDataWr[8].colour(), Colour::Black);
    panel().cmdReadAll.userClick();
    compose(7, -1, 3);
    panel().cmdDoInstruction.userClick();
    EXPECT_EQ(part().nonvolatileWrites, 5);
    for (int pot = 0; pot < 4; ++pot) {
        EXPECT_EQ(panel().ShpRdWCR[pot].colour(), Colour::Yellow);
        EXPECT_EQ(panel().ShpDataRd[pot * 4 + 3].colour(), Colour::LightBlue);
        EXPECT_EQ(panel().lblRdData[pot * 4 + 3].caption(), "<<");
        EXPECT_EQ(panel().lblRdData[pot * 4 + 2].caption(), "80");
    }
    compose(6, -1, 3);
    panel().cmdDoInstruction.userClick();
    EXPECT_EQ(panel().lblRDWcr[3].caption(), ">>");
    EXPECT_EQ(panel().ShpDataRd[3].colour(), Colour::Yellow);
    panel().cmdSetWReqRd.userClick();
    EXPECT_EQ(panel().txtWXWcr[3].text(), ">>");
    EXPECT_EQ(panel().ShpDataWr[0].colour(), Colour::LightBlue);
    // A mark is no value: nothing goes out.
    wire.clear();
    EXPECT_EQ(panel().cmdWrWCR[3].userClick().kind, Outcome::Kind::Faulted);
    EXPECT_THAT(boxes(), ElementsAre("Type mismatch [OK]"));
    panel().cmdResetInstruction.userClick();
    bench.frm_q4410.unload();
    bench.frm_q4410.show();
    panel().OptInstruction[0].userClick();
    EXPECT_EQ(panel().lblSet[4].caption(), "9--");
    EXPECT_EQ(panel().cmdDoInstruction.userClick().kind, Outcome::Kind::Faulted);
    EXPECT_THAT(boxes(), ElementsAre("Type mismatch [OK]"));
    EXPECT_THAT(sent(), IsEmpty());
    expectNothingLeftBehind();
}

TEST_F(InstructionTest, StoreOfTheWipersIsOneInstruction) {
    open();
    panel().cmdFillRegs.userClick();
    wire.clear();
    i2c().cmdStoreWCRs.userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 00 80"));
    EXPECT_EQ(stored(12), 0xDD);
}

TEST_F(InstructionTest, AllRegistersAreFilledReadAndStopped) {
    open();
    panel().cmdFillRegs.userClick();
    EXPECT_EQ(transfers().at(0), "01 06 50 02 00 A0 AA");
    EXPECT_EQ(part().wipers, (std::vector<int>{0xAA, 0xBB, 0xCC, 0xDD}));
    for (int index = 0; index < 16; ++index)
        EXPECT_EQ(stored(index), index);
    Milliseconds all{0};
    for (const Colour colour : {Colour::LightGreen, Colour::Green, Colour::LightGreen}) {
        const Milliseconds began = clock.now();
        panel().cmdReadAll.userClick();
        EXPECT_EQ(panel().lblRdData[11].caption(), "0B");
        for (int cell = 0; cell < 20; ++cell)
            EXPECT_EQ((cell < 4 ? panel().ShpRdWCR[cell] : panel().ShpDataRd[cell - 4]).colour(), colour);
        expectTruth();
        all = clock.now() - began;
    }
    // Its exchanges, one wait ahead of each read and one behind.
    const Milliseconds began = clock.now();
    panel().cmdRdWCR[0].userClick();
    EXPECT_LE(all, (clock.now() - began) * 20 * 102 / 100);
    // The user stops it in the middle; what he clicks meanwhile is refused.
    at(200, [this] {
        EXPECT_TRUE(panel().OptInstruction[3].userClick().refused());
        EXPECT_TRUE(panel().cdmWrData[0].userClick().refused());
        EXPECT_TRUE(bench.context().activities.abort());
    });
    wire.clear();
    panel().cmdReadAll.userClick();
    const auto count = transfers().size();
    EXPECT_TRUE(count > 1 && count < 8) << count;
    EXPECT_FALSE(bench.context().results.kept().back().good);
    expectNothingLeftBehind();
}

TEST_F(InstructionTest, IncrementsAreClockedByHand) {
    open();
    compose(8, 2);
    wire.clear();
    panel().cmdDoInstruction.userClick();
    EXPECT_EQ(lines(), "XBR0=02 30 30 20 00 "
                       "20 00 10 30 10 00 20 00 10 30 10 00 20 00 20 00 20 00 20 00 10 30 10 "
                       "00 20 00 20 00 10 30 10 00 20 00 20 00 20 00 10 30 10 00 20 00 10 30 10");
    EXPECT_EQ(panel().lvlPotN.caption(), "Pot  2 Volts");
    EXPECT_EQ(panel().txtWXWcr[2].text() + panel().lblRDWcr[2].caption(), "^v--");
    EXPECT_EQ(panel().lblPotVolts.caption(), i2c().lblWiperVolts[2].caption());
    for (int pot = 0; pot < 4; ++pot)
        EXPECT_EQ(panel().FrVRK[pot].visible(), pot == 2);
    EXPECT_FALSE(panel().FrVal.visible());
    for (Control* control : std::initializer_list<Control*>{
             &panel().OptInstruction[0], &panel().OptWiper[1], &panel().OptRegSel[1], &panel().cmdRdWCR[2],
             &panel().cmdDoInstruction, &panel().cmdReadAll, &panel().cmdFillRegs,
             &panel().cmdResetInstruction, &panel().cmdSetWReqRd, &i2c().cmdMMenu, &i2c().OptVCC[1]})
        EXPECT_FALSE(control->responsive()) << control->path();
    EXPECT_EQ(act([this] { panel().cmdReadAll_Click(); }).kind, Outcome::Kind::Faulted);
    boxes();
    wire.clear();
    const struct {
        int button;
        const char *lines, *text;
        Colour lamp;
        int wiper;
    } steps[] = {{0, "10 30 10", "^1", Colour::Blue, 0x81},
                 {0, "10 30 10", "^1", Colour::LightBlue, 0x82},
                 {1, "00 20 00", "1v", Colour::Blue, 0x81}};
    for (const auto& step : steps) {
        panel().cmdIncrWip[step.button].userClick();
        EXPECT_EQ(lines(), step.lines);
        EXPECT_EQ(panel().txtWXWcr[2].text(), step.text);
        EXPECT_EQ(panel().ShpWrWCR[2].colour(), step.lamp);
        EXPECT_EQ(part().wipers[2], step.wiper);
        EXPECT_NEAR(leadingNumber(panel().lblPotVolts.caption()), bus.state().vcc * step.wiper / 256, kStep);
    }
    const Milliseconds before = clock.now();
    panel().cmdIncrWip[2].userClick();
    EXPECT_GE(clock.now() - before, Milliseconds{750});
    EXPECT_EQ(lines(), "00 20 30 XBR0=06");
    EXPECT_EQ(panel().lblRDWcr[2].caption() + panel().txtWXWcr[2].text(), "8181");
    EXPECT_EQ(panel().ShpWrWCR[2].colour(), Colour::LightBlue);
    EXPECT_EQ(panel().ShpRdWCR[2].colour(), Colour::Yellow);
    EXPECT_TRUE(panel().OptRegSel[0].enabled() && panel().FrVal.visible() && !panel().FrIncrDec.visible());
    expectNothingLeftBehind();
    expectTruth();
}

TEST_F(InstructionTest, IncrementsStopAtTheEndsOfTheWiper) {
    open();
    for (const int up : {0, 1}) {
        type(panel().txtWXWcr[1], up == 0 ? "FD" : "02");
        panel().cmdWrWCR[1].userClick();
        beginSteps(1);
        for (int step = 0; step < 4; ++step)
            panel().cmdIncrWip[up].userClick();
        panel().cmdIncrWip[2].userClick();
        EXPECT_EQ(panel().lblRDWcr[1].caption(), up == 0 ? "FF" : "00");
        expectTruth();
    }
}

TEST_F(InstructionTest, IncrementsMayBeAbortedAnywhere) {
    open();
    for (int ms = 0; ms < 700; ms += 35) {
        SCOPED_TRACE(ms);
        const int wiper = part().wipers[3];
        at(ms, [this] { EXPECT_TRUE(bench.context().activities.abort()); });
        beginSteps(3);
        int stepped = 0;
        while (panel().stepping() && stepped < 5 && panel().cmdIncrWip[0].userClick().done())
            ++stepped;
        advance(events, clock, Milliseconds{1000});
        EXPECT_EQ(part().wipers[3], wiper + stepped);
        EXPECT_FALSE(panel().stepping());
        expectNothingLeftBehind();
        expectTruth();
    }
    // Closing the window leaves them; unloading the panel ends them.
    beginSteps(0);
    bench.frm_q4410.userClose();
    EXPECT_TRUE(panel().stepping() && !i2c().enabled());
    act([this] { i2c().cmdMMenu_Click(); });
    EXPECT_FALSE(bench.frm_q4410.loaded());
    EXPECT_TRUE(i2c().enabled());
    EXPECT_EQ(bus.state().sfr.at("E1"), 0x06);
}

/// Whatever goes wrong: told, nothing left behind, and no cell says that it was read.
TEST_F(InstructionTest, FailuresAreToldAndLeaveNothingBehind) {
    const struct {
        const char* what;
        std::function<void(InstructionTest&)> spoil;
        int boxes; ///< of one read
    } cases[] = {
        {"VCC is off", [](InstructionTest& t) { t.i2c().OptVCC[1].userClick(); }, 2},
        {"wrong address", [](InstructionTest& t) { t.type(t.i2c().txtDeviceAdr, "54"); }, 2},
        {"no part", [](InstructionTest& t) { t.bus.socket(std::nullopt); }, 2},
        {"lost reply", [](InstructionTest& t) { t.fault(sim::FaultKind::NoReply, 1, 6); }, 1},
        {"late reply", [](InstructionTest& t) { t.fault(sim::FaultKind::LateReply, 1, 6, 7000); }, 1},
        {"port not read", [](InstructionTest& t) { t.fault(sim::FaultKind::NoReply, 1, 18); }, 1},
    };
    open();
    panel().cmdFillRegs.userClick();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (Button* action : {&panel().cmdReadAll, &panel().cmdFillRegs, &panel().cmdRDData[5]}) {
            bus.clear();
            bus.socket("Q4410");
            type(i2c().txtDeviceAdr, "50");
            i2c().OptVCC[0].setValue(false);
            i2c().OptVCC[0].userClick();
            boxes();
            c.spoil(*this);
            for (int dialog = 0; dialog < 45; ++dialog)
                answer(Choice::Retry);
            EXPECT_TRUE(action->userClick().done());
            dropAnswers();
            const bool met = action != &panel().cmdFillRegs || std::string(c.what) != "port not read";
            EXPECT_GE(boxes().size(), static_cast<std::size_t>(met ? c.boxes : 0));
            expectTruth();
            if (c.boxes == 2) {
                EXPECT_EQ(panel().ShpI2CAck[0].colour(), Colour::LightRed);
                EXPECT_FALSE(bench.context().results.kept().back().good);
            }
            expectNothingLeftBehind();
        }
    }
    // In the increments: a lost port ends them, whatever the button.
    for (const int button : {0, 1, 2}) {
        bus.clear();
        beginSteps(1);
        fault(sim::FaultKind::NoReply, 1, 18);
        answer(Choice::Retry);
        panel().cmdIncrWip[button].userClick();
        EXPECT_THAT(boxes(), ElementsAre("Please check USB connection.\r\ncheckStatus [Retry]"));
        EXPECT_FALSE(panel().stepping());
        expectNothingLeftBehind();
        expectTruth();
    }
    for (const int button : {-1, 0, 2}) {
        SCOPED_TRACE(button);
        if (button >= 0)
            beginSteps(1);
        bus.unplug(0);
        for (int dialog = 0; dialog < 10; ++dialog)
            answer(Choice::Retry, [this] { bus.plug(0); });
        if (button >= 0)
            panel().cmdIncrWip[button].userClick();
        else
            beginSteps(1);
        if (panel().stepping()) // the board came back within the begin
            panel().cmdIncrWip[2].userClick();
        dropAnswers();
        EXPECT_GE(boxes().size(), 1U);
        expectNothingLeftBehind();
        expectTruth();
        i2c().OptVCC[0].setValue(false);
        i2c().OptVCC[0].userClick();
    }
}

/// Whatever the user does, a cell that says it was read holds what the part holds.
TEST_F(InstructionTest, PageShowsThePartAfterTwoThousandRandomActions) {
    open();
    std::mt19937 random(4410);
    const auto below = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    for (int action = 0; action < 2000; ++action) {
        const int pot = below(4), cell = below(16), value = below(256);
        switch (below(12)) {
        case 0:
            panel().cmdRdWCR[pot].userClick();
            break;
        case 1:
            type(panel().txtWXWcr[pot], hexText(value, 2));
            panel().cmdWrWCR[pot].userClick();
            EXPECT_EQ(part().wipers[static_cast<std::size_t>(pot)], value);
            break;
        case 2:
        case 3:
            panel().cmdRDData[cell].userClick();
            break;
        case 4:
            type(panel().txtWrData[cell], hexText(value, 2));
            panel().cdmWrData[cell].userClick();
            EXPECT_EQ(stored(cell), value);
            break;
        case 5:
        case 6: // whatever is chosen, as it stands
            panel().OptInstruction[below(8)].userClick();
            panel().OptWiper[pot].userClick();
            panel().OptRegSel[below(4)].userClick();
            panel().cmdDoInstruction.userClick();
            break;
        case 7: // without choosing anew
            panel().OptInstruction[below(8)].userClick();
            panel().cmdDoInstruction.userClick();
            break;
        case 8: {
            beginSteps(pot);
            int expected = part().wipers[static_cast<std::size_t>(pot)];
            for (int step = below(4); step > 0; --step) {
                const int down = below(2);
                panel().cmdIncrWip[down].userClick();
                expected = std::clamp(expected + (down != 0 ? -1 : 1), 0, 255);
            }
            panel().cmdIncrWip[2].userClick();
            EXPECT_EQ(part().wipers[static_cast<std::size_t>(pot)], expected);
            break;
        }
        case 9:
            if (below(6) == 0) {
                i2c().OptVCC[1].userClick();
                i2c().OptVCC[0].userClick();
            }
            break;
        case 10:
            if (below(8) == 0)
                (below(2) == 0 ? panel().cmdReadAll : panel().cmdFillRegs).userClick();
            break;
        default:
            (below(2) == 0 ? panel().cmdSetWReqRd : panel().cmdResetInstruction).userClick();
        }
        boxes();
        wire.clear();
        expectTruth();
        ASSERT_FALSE(HasFailure()) << "action " << action;
    }
    boxes();
    expectNothingLeftBehind();
}

} // namespace
} // namespace vrk
