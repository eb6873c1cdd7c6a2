#include "tests/motherboard/MotherboardBench.h"

namespace vrk {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PortsTest : public MotherboardBench {};

/// One write of the whole image, data before drive.
constexpr std::array<const char*, 6> kRegisters = {"80", "90", "A0", "A4", "A5", "A6"};

TEST_F(PortsTest, LoadLeavesTheStartImageOnTheBoard) {
    loadConsoles();
    EXPECT_EQ(image(), "02 08 10 05 08 F8");
    const std::array<int, 6> bytes = {0x02, 0x08, 0x10, 0x05, 0x08, 0xF8};
    for (std::size_t reg = 0; reg < bytes.size(); ++reg)
        EXPECT_EQ(bus.state().sfr.at(kRegisters.at(reg)), bytes.at(reg)) << kRegisters.at(reg);
    EXPECT_EQ(bus.state().vcc, 0);
    EXPECT_TRUE(board().OptVCC[1].value() && board().OptVCCMinus[1].value());
}

TEST_F(PortsTest, WriteSendsTheSixRegistersInOrder) {
    loadConsoles();
    board().chkPData[6].userClick();
    board().chkP0OutEn[15].userClick();
    EXPECT_THAT(sent(), IsEmpty());
    board().cmdWrtPipe1.userClick();
    EXPECT_THAT(sent(5), ElementsAre("01 12 00 80 42", "01 12 00 90 08", "01 12 00 A0 10", "01 12 00 A4 05",
                                     "01 12 00 A5 88", "01 12 00 A6 F8"));
    EXPECT_EQ(unlocked(), 13);
}

TEST_F(PortsTest, PinsChangeTheirBitAndTheirMirrorOnly) {
    loadConsoles();
    frmMotherboardDAQ2& b = board();
    for (const auto& [pin, reg, mask, mirror] :
         {std::tuple{&b.chkPData[8], 1, 0x01, &console().chkGPvalueP1[0]},
          {&b.chkPData[20], 2, 0x10, &console().chkGPvalueP2[4]},
          {&b.chkP0OutEn[23], 5, 0x80, &console().chkOpenCollectorP2[7]},
          {&b.chkP0OutEn[11], 4, 0x08, &console().chkOpenCollectorP1[3]}}) {
        SCOPED_TRACE(pin->path());
        const int before = byteOf("PBuf", reg);
        for (int pass = 0; pass < 2; ++pass) {
            pin->userClick();
            const int now = byteOf("PBuf", reg);
            EXPECT_EQ(now & ~mask, before & ~mask);
            EXPECT_EQ((now & mask) != 0, pin->checked());
            EXPECT_EQ(mirror->value(), pin->value());
            EXPECT_EQ(b.txtPBuf[reg].text(), byteToHex2(static_cast<std::uint8_t>(now)));
        }
    }
    // Clearing a clear bit takes nothing away.
    act([&] { b.chkPData_Click(9); });
    EXPECT_EQ(image(), "02 08 10 05 08 F8");
    for (const int bad : {24, -1})
        EXPECT_EQ(act([&] { b.chkPData_Click(bad); }).fault, "Subscript out of range");
    EXPECT_THAT(boxes(), Each("Subscript out of range [OK]"));
    EXPECT_EQ(image(), "02 08 10 05 08 F8");
}

TEST_F(PortsTest, TypedImageNeverReachesTheBoard) {
    loadConsoles();
    for (const auto& [typed, text] :
         {std::pair{"ff", "FF"}, {"100", "100"}, {"101", "00"}, {"0", "00"}, {"7", "7"}, {"xyz", "00"}}) {
        board().txtPBuf[0].setText("");
        type(board().txtPBuf[0], typed);
        board().txtPBuf[0].userEnter();
        EXPECT_EQ(board().txtPBuf[0].text(), text) << typed;
        EXPECT_EQ(byteOf("PBuf", 0), 2);
    }
    board().cmdWrtPipe1.userClick();
    EXPECT_EQ(board().txtPBuf[0].text(), "02");
    EXPECT_EQ(sent(5).at(0), "01 12 00 80 02");
}

TEST_F(PortsTest, WriteUnderAnotherActionsLock) {
    loadConsoles();
    board().cmdDisableButtons_Click();
    board().cmdDisableButtons_Click();
    EXPECT_EQ(unlocked(), 0);
    EXPECT_TRUE(board().cmdWrtPipe1.userClick().refused());
    act([this] { board().cmdWrtPipe1_Click(); });
    EXPECT_EQ(unlocked(), 13); // the caller's buttons come back early
    sent();

    // A write that never ends is waited for, 3000 passes long, and then gone past.
    assign("pipeWriteBusy", kNoIndex, 1);
    int passes = 0;
    events.setHostPump([&passes] { ++passes; });
    act([this] { board().cmdWrtPipe1_Click(); });
    events.setHostPump({});
    EXPECT_GE(passes, 3000);
    EXPECT_LT(passes, 3020);
    EXPECT_EQ(sent().size(), 6U);
    EXPECT_FALSE(std::get<bool>(value("pipeWriteBusy").get(kNoIndex)));
}

} // namespace
} // namespace vrk
