#include "tests/panels/InstructionPanelTest.h"

namespace vrk {
namespace {

using report::Command;
using State = Freshness::State;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What the panels of the SPI parts that are told by instructions have for themselves.
class SpiInstructionTest : public InstructionPanelTest {
  protected:
    SpiInstructionTest() : InstructionPanelTest(Bus::SPI) {}
    Frm3310& single() { return *bench.Frm3310; }
    /// The ten-bit part, with the length of a read frame as the SPI panel has sent it last.
    void openSingle() {
        openSpi();
        bus.socket("Q3310");
        EXPECT_THAT(chooseSpiRow("Q3310/1,1,1024,50,NA,NA,NA,NA,NA,A0,80,1,1,4,4"), IsEmpty());
        spi().cmdI2Read[0].userClick();
        wire.clear();
    }
    /// The frames that went out since the last call.
    std::vector<std::string> frames() {
        std::vector<std::string> cut = sent(Command::SpiTransfer, 16);
        for (std::string& report : cut) {
            const auto count = static_cast<std::size_t>(hexToInt(report.substr(18, 2)));
            report = count == 0 ? "" : report.substr(21, 3 * count - 1);
        }
        return cut;
    }
};

TEST_F(SpiInstructionTest, InstructionsAreFrames) {
    open();
    EXPECT_EQ(panel().FrPot.caption(), "Q4420/1 Instruction Set");
    EXPECT_EQ(panel().Label1.caption(), "USB Comm.");
    const struct {
        int instruction, pot, reg;
        const char* frame;
        const char* wipers;
    } cases[] = {
        {1, 1, -1, "50 A1 5A", "80 5A"}, // the data byte stays in the frame of the read
        {0, 1, -1, "50 91 5A", "80 5A"}, {5, 1, 3, "50 ED", "80 5A"}, {1, 1, -1, "50 A1 5A", "80 5A"},
        {2, 1, 3, "50 BD 5A", "80 5A"},  {4, 1, 0, "50 D1", "80 80"}, {6, -1, 3, "50 1C", "80 5A"},
        {7, -1, 1, "50 84", "80 5A"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.frame);
        compose(c.instruction, c.pot, c.reg);
        if (panel().txtWriteValue.enabled())
            type(panel().txtWriteValue, "5a");
        wire.clear();
        panel().cmdDoInstruction.userClick();
        EXPECT_THAT(frames(), ElementsAre(c.frame));
        EXPECT_EQ(hexText(part().wipers[0], 2) + " " + hexText(part().wipers[1], 2), c.wipers);
    }
    EXPECT_EQ(panel().lblRdData[7].caption(), "5A");
    EXPECT_EQ(panel().lblRDWcr[1].caption(), ">>");
    // The two panels compose one set of fields, each with its own choice.
    bench.frm_q4410.show();
    bench.frm_q4410->OptInstruction[0].userClick();
    bench.frm_q4410->OptWiper[2].userClick();
    EXPECT_EQ(panel().fields().potField, 2);
    EXPECT_EQ(panel().choice().instructionClass, "XFERG");
    EXPECT_EQ(bench.frm_q4410->choice().instructionClass, "Read");
    // Its device panel loads unseen with the first exchange; the one in front stays.
    EXPECT_FALSE(bench.frmVRK_User1.loaded());
    answer(Choice::Retry);
    bench.frm_q4410->cmdDoInstruction.userClick();
    EXPECT_TRUE(bench.frmVRK_User1.loaded() && !bench.frmVRK_User1.visible());
    EXPECT_EQ(link().activePanel, &spi());
    boxes();
}

TEST_F(SpiInstructionTest, LampTellsOfTheLinkAndTheCellOfThePart) {
    open();
    panel().cmdReadAll.userClick();
    EXPECT_EQ(panel().lblRdData[15].freshness()->state, State::Fresh);
    bus.socket(std::nullopt);
    panel().cmdRDData[15].userClick();
    EXPECT_EQ(panel().ShpI2CAck[0].colour(), Colour::LightGreen); // nobody acknowledges on this bus
    EXPECT_TRUE(panel().lblRdData[15].freshness()->failed);
    EXPECT_FALSE(bench.context().results.kept().back().good);
    bus.socket("Q4420");
    fault(sim::FaultKind::NoReply, 1, 9);
    answer(Choice::Retry);
    panel().cmdRDData[14].userClick();
    EXPECT_EQ(boxes().back(), "USB Communications Error, VCC & AVDD Power and USB Connections  [OK]");
    EXPECT_EQ(panel().ShpI2CAck[0].colour(), Colour::LightRed);
    panel().cmdRDData[14].userClick();
    EXPECT_EQ(panel().lblRdData[14].freshness()->state, State::Fresh);
    // A frame that ends ahead of the value reads nothing, nor does one without a byte.
    for (const char* length : {"2", ""}) {
        spi().txtSPIRDQuantity.setText(length);
        panel().cmdRDData[14].userClick();
        EXPECT_TRUE(panel().lblRdData[14].freshness()->failed) << length;
    }
    // A part without such instructions takes their panel away.
    spi().mnuKV4184.userClick();
    EXPECT_FALSE(slot().visible());
}

TEST_F(SpiInstructionTest, IncrementsAreClockedByHand) {
    open();
    send(8, 1);
    EXPECT_EQ(lines(), "XBR0=00 00 00 00 00 "
                       "01 00 04 05 04 00 01 00 04 05 04 00 01 00 01 00 01 00 01 00 "
                       "01 00 01 00 04 05 04 00 01 00 01 00 01 00 01 00 04 05 04");
    for (const int button : {0, 0, 1, 0})
        panel().cmdIncrWip[button].userClick();
    EXPECT_EQ(lines(), "04 05 04 04 05 04 00 01 00 04 05 04");
    EXPECT_EQ(part().wipers[1], 0x82);
    EXPECT_FALSE(spi().enabled());
    panel().cmdIncrWip[2].userClick();
    EXPECT_EQ(lines(), "0C XBR0=06");
    EXPECT_EQ(panel().lblRDWcr[1].caption(), "82");
    EXPECT_TRUE(spi().enabled());
    EXPECT_EQ(bus.state().sfr.at("E1"), 0x06);
}

TEST_F(SpiInstructionTest, TenBitPartHasAButtonForEachOfItsInstructions) {
    openSingle();
    EXPECT_TRUE(bench.Frm3310.visible());
    EXPECT_EQ(single().frq331x.caption(), "Q3310/0 Table 3 Instruction Set");
    const char* const reads[] = {"80", "A0", "A4", "A8", "AC"};
    const char* const writes[] = {"A0", "C0", "C4", "C8", "CC"};
    Colour lamp = spi().Shape1[2].colour();
    for (int index = 0; index < 5; ++index) {
        SCOPED_TRACE(index);
        type(single().txtWrQ3319[index], index == 0 ? "5" : "1f" + decimalText(index));
        wire.clear();
        single().CMDq331X_Write[index].userClick();
        EXPECT_THAT(frames(), ElementsAre(std::string("50 ") + writes[index] +
                                          (index == 0 ? " 00 05" : " 01 F" + decimalText(index))));
        EXPECT_NE(spi().Shape1[2].colour(), lamp);
        lamp = spi().Shape1[2].colour();
        single().CMDq331X_Read[index].userClick();
        EXPECT_THAT(frames(), ElementsAre(std::string("51 ") + reads[index] + " 00 00"));
        EXPECT_EQ(single().lblRdq331x[index].caption(), index == 0 ? "005" : "1F" + decimalText(index));
        EXPECT_EQ(single().lblRdq331x[index].freshness()->state, State::Fresh);
        lamp = spi().Shape1[2].colour();
    }
    const char* const toWiper[] = {"C0", "C4", "C8", "CC"};
    const char* const toData[] = {"E0", "E4", "E8", "EC"};
    for (int index = 0; index < 4; ++index) {
        wire.clear();
        single().cmdQ331xDatatoWiper[index].userClick();
        EXPECT_THAT(frames(), ElementsAre(std::string("51 ") + toWiper[index]));
        EXPECT_EQ(part().wipers[0], 0x1F1 + index);
        EXPECT_NE(single().lblRdq331x[0].freshness()->state, State::Fresh);
    }
    for (int index = 0; index < 4; ++index) {
        wire.clear();
        single().cmdQ331xWipertoData[index].userClick();
        EXPECT_THAT(frames(), ElementsAre(std::string("51 ") + toData[index]));
        EXPECT_EQ(part().registers.at("DR" + decimalText(index)), 0x1F4);
        EXPECT_NE(single().lblRdq331x[index + 1].freshness()->state, State::Fresh);
    }
    bus.reply(9, {1, 0, 0, 0x51, 0x1A, 0x7F}); // only the digit A counts of the upper byte
    single().CMDq331X_Read[0].userClick();
    EXPECT_EQ(single().lblRdq331x[0].caption(), "A7F");
    single().CMDq331X_Read[3].userClick();
    spi().CMDxMIT[0].userClick();
    EXPECT_NE(single().lblRdq331x[3].freshness()->state, State::Fresh);
    bus.reply(9, {1, 0, 0, 0xFF, 0xFF, 0xFF}); // a line that nobody drives
    single().CMDq331X_Read[3].userClick();
    EXPECT_NE(single().lblRdq331x[3].freshness()->state, State::Fresh);
    // Another part on the panel: the fields of before are sent, and nothing of it is taken for a reading.
    spi().mnuKV4184.userClick();
    wire.clear();
    single().CMDq331X_Read[4].userClick();
    EXPECT_THAT(frames(), ElementsAre("51 A8 00 00"));
    EXPECT_NE(single().lblRdq331x[4].freshness()->state, State::Fresh);
    spi().cmdMMenu.userClick();
    EXPECT_FALSE(bench.Frm3310.loaded());
}

/// Whatever fails is told, leaves nothing disabled, and no register says that it was read.
TEST_F(SpiInstructionTest, TenBitPanelTakesNothingForAnAnswerThatIsNone) {
    const auto otherFrames = [this] {
        at(0, [this] {
            spi().cmdI2Read[0].userClick();
            spi().CMDxMIT[0].userClick();
        });
    };
    const struct {
        const char* what;
        std::function<void()> spoil;
        bool said;
    } cases[] = {
        {"VCC is off", [this] { spi().OptVCC[1].userClick(); }, true}, // and sent all the same
        {"another ID", [this] { type(spi().txtDeviceAdr, "54"); }, false},
        {"no part", [this] { bus.socket(std::nullopt); }, false},
        {"lost reply", [this] { fault(sim::FaultKind::NoReply, 1, 9); }, true},
        {"late reply", [this] { fault(sim::FaultKind::LateReply, 1, 9, 6100); }, true},
        {"not sent", [this] { fault(sim::FaultKind::WriteFails, 1, 9); }, true},
        {"unplugged", [this] { bus.unplug(0); }, true},
        {"another frame meanwhile", otherFrames, false},
    };
    openSingle();
    for (const auto& c : cases)
        for (Button* action :
             {&single().CMDq331X_Read[2], &single().CMDq331X_Write[2], &single().cmdQ331xWipertoData[1]}) {
            SCOPED_TRACE(c.what + (" " + action->path()));
            bus.clear();
            bus.socket("Q3310");
            type(spi().txtDeviceAdr, "50");
            spi().OptVCC[0].setValue(false);
            spi().OptVCC[0].userClick();
            boxes();
            c.spoil();
            answer(Choice::Retry, [this] { bus.plug(0); });
            action->userClick();
            EXPECT_EQ(!boxes().empty(), c.said);
            dropAnswers();
            boxes();
            EXPECT_NE(single().lblRdq331x[2].freshness()->state, State::Fresh);
            EXPECT_FALSE(bench.context().results.kept().back().good);
            EXPECT_TRUE(single().CMDq331X_Write[2].responsive());
        }
    // Of two clicks that wait the second is refused: its frame would go out in the first one's place.
    wire.clear();
    at(0, [this] { EXPECT_TRUE(single().CMDq331X_Read[3].userClick().refused()); });
    single().CMDq331X_Read[1].userClick();
    EXPECT_THAT(frames(), ElementsAre("51 A0 00 00"));
}

} // namespace
} // namespace vrk
