#include "tests/motherboard/MotherboardBench.h"

namespace vrk {
namespace {

using report::Command;
using sim::FaultKind;
using ::testing::ElementsAre;

class MotherboardConsoleTest : public MotherboardBench {
  protected:
    static std::string texts(const ControlArray<TextBox>& array) {
        std::string all;
        for (const auto& box : array)
            all += box->text() + ".";
        return all;
    }
};

TEST_F(MotherboardConsoleTest, I2cReadTakesTheEvenAddressAndOneMoreBox) {
    loadConsoles();
    console().txtStartRegRD.setText("07");
    for (int i = 0; i < 8; ++i)
        console().txtReadVal[i].setText(byteToHex2(static_cast<std::uint8_t>(0xE0 + i)));
    bus.reply(6, {1, 0, 0x11, 0x22, 0x33, 0x44, 0x55}, 4);

    board().cmdI2CRead.userClick(); // blank count
    EXPECT_THAT(sent(6), ElementsAre("01 06 51 00 01 07"));
    EXPECT_EQ(texts(board().txtI2CRead), "E0.--.--.--.");
    EXPECT_EQ(board().ShpI2CNAK[1].colour(), Colour::LightGreen);

    console().chkRandom.setValue(0);
    type(board().txtI2CIN[0], "2");
    type(board().txtI2CIN[2], "1c");
    board().cmdI2CRead.userClick();
    EXPECT_THAT(sent(5), ElementsAre("01 06 51 02 00"));
    EXPECT_EQ(texts(board().txtI2CRead), "11.22.E2.--.");
    EXPECT_EQ(board().txtI2CRead[1].freshness()->state, Freshness::State::Fresh);
    EXPECT_EQ(link().i2cAddress, 0x50);
    EXPECT_EQ(console().txtStartRegWr.text(), "1C"); // the write's field, not the read's
    EXPECT_EQ(console().txtStartRegRD.text(), "07");
    EXPECT_EQ(board().txtI2CReadStatus.text(), "--");

    type(board().txtI2CIN[0], "4");
    EXPECT_EQ(board().cmdI2CRead.userClick().fault, "Subscript out of range");
    EXPECT_THAT(boxes(), ElementsAre("Subscript out of range [OK]"));
    EXPECT_EQ(texts(board().txtI2CRead), "11.22.33.44.");
    console().txtStartRegRD.setText("08"); // behind the boxes that are shown
    console().chkRandom.setValue(1);
    type(board().txtI2CIN[0], "1");
    board().cmdI2CRead.userClick();
    EXPECT_EQ(board().txtI2CRead[0].freshness()->state, Freshness::State::Never);
    EXPECT_EQ(unlocked(), 13);

    type(board().txtI2CIN[0], "1");
    fault(FaultKind::Nak, 1, 6);
    answer(Choice::Retry);
    board().cmdI2CRead.userClick();
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_EQ(board().ShpI2CNAK[1].colour(), Colour::LightRed);
    EXPECT_EQ(board().ShpI2CNAK[0].colour(), Colour::Black);
}

TEST_F(MotherboardConsoleTest, I2cWriteUsesByte1AsRegisterAndData) {
    loadConsoles();
    bus.reply(6, {1, 0}, 2);
    board().CMDI2CWrite.userClick();
    EXPECT_THAT(sent(6), ElementsAre("01 06 50 00 01 02"));
    EXPECT_EQ(console().txtWriteVal[0].text() + console().txtWriteVal[1].text(), "02C0");
    type(board().txtI2COut[0], "2");
    type(board().txtI2COut[1], "A1");
    board().CMDI2CWrite.userClick();
    EXPECT_THAT(sent(8), ElementsAre("01 06 A0 02 01 02 02 C0"));
    EXPECT_EQ(board().ShpI2CNAK[0].colour(), Colour::LightGreen);
    EXPECT_EQ(unlocked(), 13);
}

TEST_F(MotherboardConsoleTest, SpiRowsSendFromTheirSecondField) {
    loadConsoles();
    frmMotherboardDAQ2& b = board();
    using Boxes = ControlArray<TextBox>;
    using Row = std::tuple<TextBox&, Boxes&, TextBox&, Boxes&, Button&>;
    for (const auto& [quantity, data, count, read, button] :
         {Row{b.txtSPIWrQty2, b.txtSPIWrite2Data, b.txtSPIReadCnt2, b.txtSPIORead, b.cmdSPIOWrite2},
          Row{b.txtSPIWrQty3, b.txtSPIWrite3Data, b.txtSPIReadCnt3, b.txtSPIORead3, b.cmdSPIOWrite3}}) {
        SCOPED_TRACE(button.name());
        for (int i = 0; i < 6; ++i)
            data[i].setText(byteToHex2(static_cast<std::uint8_t>(0xA0 + i)));
        console().chkGPvalueP2[4].setValue(0);
        console().txtReadVal[2].setText("zz");
        bus.reply(9, {1, 0, 0x5A, 0xA5});
        quantity.setText("2");
        button.userClick();
        EXPECT_THAT(sent(9), ElementsAre("01 12 00 A0 10 00 00 00 00", "01 12 01 A0 00 00 00 00 00",
                                         "01 09 00 01 00 00 02 A1 A2"));
        EXPECT_EQ(texts(read), "5A.A5.zz.--.--.--."); // one more box than the count
        EXPECT_EQ(count.text(), "2");
        EXPECT_EQ(byteOf("SPIBuf", 0), 0xA0);
        EXPECT_EQ(byteOf("SPIBuf", 5), 0xA5);

        for (const auto& [typed, left] : {std::pair{"9", "5"}, {"0", "1"}, {"5", "5"}}) {
            type(quantity, typed);
            quantity.userLeave();
            EXPECT_EQ(quantity.text(), left);
        }
        button.userClick();
        EXPECT_THAT(sent(Command::SpiTransfer, 13), ElementsAre("01 09 00 01 00 00 05 A1 A2 A3 A4 A5 00"));
    }
    // Its enable comes without a disable: it frees the buttons of whoever has locked them.
    act([&] {
        b.cmdDisableButtons_Click();
        b.cmdSPIOWrite2_Click();
    });
    EXPECT_EQ(unlocked(), 13);
}

TEST_F(MotherboardConsoleTest, ClosingItSwitchesTheDeviceOff) {
    openI2c();
    EXPECT_GT(bus.state().vcc, 2.0);
    board().chkPData[6].userClick();
    console().cmdHoswMother.userClick();
    EXPECT_TRUE(bench.frmMotherboardDAQ2.visible());
    EXPECT_TRUE(board().cmdexit.userClick().done());
    EXPECT_FALSE(bench.frmMotherboardDAQ2.loaded());
    EXPECT_GT(bus.state().vcc, 2.0); // until the next use loads it again
    board();
    EXPECT_EQ(bus.state().vcc, 0);
    EXPECT_EQ(image(), "02 08 10 05 08 F8");
    EXPECT_FALSE(bench.frmMotherboardDAQ2.visible());
}

} // namespace
} // namespace vrk
