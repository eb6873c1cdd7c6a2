#include "tests/panels/InstructionPanelTest.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What the panel of the parts on I2C has for itself, and how an instruction is put together.
using InstructionTest = InstructionPanelTest;

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

TEST_F(InstructionTest, StoreOfTheWipersIsOneInstruction) {
    open();
    panel().cmdFillRegs.userClick();
    wire.clear();
    i2c().cmdStoreWCRs.userClick();
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 00 80"));
    EXPECT_EQ(stored(12), 0xDD);
    // A part that has no such instructions takes their panel away; what it was set to stays.
    i2c().mnu_KV4074.userClick();
    EXPECT_TRUE(!bench.frm_q4410.visible() && panel().OptInstruction[7].value());
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

} // namespace
} // namespace vrk
