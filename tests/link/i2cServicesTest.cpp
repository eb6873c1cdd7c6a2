#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using report::Command;
using sim::FaultKind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class I2cServicesTest : public TestBench {
  protected:
    void replyWith(const std::vector<std::uint8_t>& data, int times = 1) {
        std::vector<std::uint8_t> reply = {1, 0};
        reply.insert(reply.end(), data.begin(), data.end());
        bus.reply(static_cast<int>(Command::I2cTransfer), reply, times);
    }
    std::string readValues(int from, int to) {
        std::string text;
        for (int i = from; i <= to; ++i)
            text += console().txtReadVal[i].text() + ".";
        return text;
    }
};

TEST_F(I2cServicesTest, ReadDataLandByRegisterNumberUpToBox63) {
    loadConsoles();
    using Row = std::tuple<const char*, CheckBox*, const char*, int, int, std::string>;
    link().i2cAddress = 0xA0;
    CheckBox* const senders[] = {&console().chkRandom, &console().ChK2WireCommand, &console().chk2WireRead};
    console().txtNumToRead.setText("8");
    for (const auto& [start, sender, report, from, to, shown] :
         {Row{"02", senders[0], "01 06 A1 08 01 02", 1, 10, ".11.12.13.14.15.16.17.18.."},
          Row{"3C", senders[1], "01 06 A1 08 01 3C", 59, 63, ".11.12.13.14."},
          Row{"40", senders[2], "01 06 A1 08 01 40", 0, 63, std::string(64, '.')},
          Row{"3C", nullptr, "01 06 A1 08 00", 0, 8, "11.12.13.14.15.16.17.18.."}}) {
        SCOPED_TRACE(report);
        for (auto& box : console().txtReadVal)
            box->setText("");
        console().txtStartRegRD.setText(start);
        for (CheckBox* box : senders)
            box->setValue(box == sender ? 1 : 0);
        sent();
        replyWith({0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18});
        console().cmdRead.userClick();
        EXPECT_EQ(sent(sender != nullptr ? 6 : 5).at(0), report);
        EXPECT_EQ(readValues(from, to), shown);
        EXPECT_EQ(console().TXTI2C[0].text() + console().TXTI2C[7].text(), "1118");
        EXPECT_EQ(console().txtSlaveAddress.text(), "A0");
    }
    console().txtNumToRead.setText("1");
    replyWith({0x42});
    console().cmdRead.userClick();
    EXPECT_EQ(console().TXTI2C[1].freshness()->state, Freshness::State::Stale); // of the read before
}

TEST_F(I2cServicesTest, IndividualWriteAlwaysChangesTheRegister) {
    loadConsoles();
    using Row = std::tuple<int, std::uint8_t, const char*>;
    link().i2cAddress = 0x50;
    type(console().txtRegister, "9");
    type(console().txtWriteIndividual[0], "a");
    type(console().txtWriteIndividual[1], "0B");
    for (const auto& [button, there, written] : {Row{0, 0x55, "0A"}, Row{1, 0x55, "0B"}, Row{0, 0x0A, "0B"},
                                                 Row{1, 0x0B, "0A"}, Row{0, 0x0B, "0A"}}) {
        SCOPED_TRACE(std::string(written) + " by button " + decimalText(button));
        replyWith({there});
        replyWith({});
        replyWith({0x33});
        console().cmdWriteIndividual[button].userClick();
        EXPECT_THAT(sent(7), ElementsAre(::testing::StartsWith("01 06 51 01 01 09"),
                                         std::string("01 06 50 01 01 09 ") + written,
                                         ::testing::StartsWith("01 06 51 01 01 09")));
        EXPECT_EQ(console().txtReadIndividual.text(), "33");
    }
    EXPECT_EQ(console().txtRegister.text() + console().txtWriteIndividual[0].text(), "090A");
    fault(FaultKind::Nak, 1, 6);
    answer(Choice::Retry);
    console().cmdWriteIndividual[0].userClick();
    EXPECT_EQ(sent(Command::I2cTransfer).size(), 1U); // nothing is written on an unknown register
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_EQ(act([this] { console().cmdWriteIndividual_Click(2); }).fault, "Subscript out of range");
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(I2cServicesTest, ScanOfAnEmptyBusVisitsEveryAddressAndAsks) {
    loadConsoles();
    const auto before = clock.now();
    answer(Choice::No);
    EXPECT_TRUE(console().cmdScanI2Caddress.userClick().done());
    EXPECT_GE(clock.now() - before, Milliseconds(12800));
    EXPECT_THAT(boxes(), ElementsAre("VRK_HID I2C address not found. Close GUI? [No]"));
    const auto reports = sent(Command::I2cTransfer, 4);
    ASSERT_EQ(reports.size(), 128U);
    EXPECT_EQ(reports.front(), "01 06 01 01");
    EXPECT_EQ(reports.back(), "01 06 FF 01");
    EXPECT_EQ(console().txtI2Caddress.text(), "FE");
    EXPECT_TRUE(console().cmdScanI2Caddress.enabled());

    at(1050, [this] { // in the eleventh address
        EXPECT_TRUE(console().cmdScanI2Caddress.userClick().refused());
        EXPECT_TRUE(console().cmdStopScan.userClick().done());
    });
    console().cmdScanI2Caddress.userClick();
    EXPECT_EQ(sent(Command::I2cTransfer).size(), 11U);
    EXPECT_TRUE(console().cmdStopScan.userClick().refused());
    at(1050, [this] { EXPECT_TRUE(bench.context().activities.abort()); });
    console().cmdScanI2Caddress.userClick();
    EXPECT_EQ(sent(Command::I2cTransfer).size(), 11U);

    answer(Choice::Yes);
    EXPECT_EQ(console().cmdScanI2Caddress.userClick().kind, Outcome::Kind::Ended);
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_EQ(bus.state().handles, 0);
}

TEST_F(I2cServicesTest, ScanStopsAtTheFirstAnswer) {
    openI2c();
    console().cmdScanI2Caddress.userClick();
    EXPECT_EQ(sent(Command::I2cTransfer).size(), 0x50U / 2 + 1);
    EXPECT_EQ(console().txtI2Caddress.text(), "50");
    EXPECT_EQ(link().i2cAddress, 0x50);
    EXPECT_EQ(console().chkADDRbit[3].value() + console().chkADDRbit[5].value(), 2);
}

TEST_F(I2cServicesTest, TypedAddressIsTakenAfterHalfASecond) {
    loadConsoles();
    const auto before = clock.now();
    at(400, [this] { EXPECT_EQ(link().i2cAddress, 0); });
    type(console().txtI2Caddress, "51");
    EXPECT_GE(clock.now() - before, Milliseconds(500));
    EXPECT_EQ(console().txtI2Caddress.text(), "50");
    EXPECT_EQ(link().i2cAddress, 0x50);
    EXPECT_EQ(console().chkADDRbit[5].value(), 1);
    const auto clicked = clock.now();
    console().chkADDRbit[6].userClick();
    console().chkADDRbit[3].userClick();
    EXPECT_EQ(console().txtI2Caddress.text(), "C0");
    EXPECT_EQ(link().i2cAddress, 0xC0);
    EXPECT_EQ(clock.now(), clicked);
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(I2cServicesTest, StuckSdaIsTold) {
    loadConsoles();
    console().cmdToggleSCL.userClick();
    EXPECT_THAT(sent(6), ElementsAre("01 04 00 01 00 01"));
    fault(FaultKind::StuckSda);
    console().cmdToggleSCL.userClick();
    EXPECT_THAT(boxes(), ElementsAre("SDA error [OK]"));
}

TEST_F(I2cServicesTest, RegisterFile) {
    loadConsoles();
    console().txtNumToWrite.setText("3");
    console().obFillData[0].userClick();
    constexpr char kRefused[] = "Register file does not exist or is invalid [OK]";
    // No content: no file. No bytes written behind count and register: refused.
    using Row = std::tuple<const char*, const char*, const char*>;
    for (const auto& [content, written, filled] :
         {Row{"generic,0x11,0x2,0xfF", "11 02 FF", "1102FF"},
          Row{"generic\r\n0x11, 0x22 ,0x33\r\n0x44\r\n", "11 22 33", "112233"},
          Row{"\"generic\",0x11,skip,0x33", "11 00 33", "11BB33"},
          Row{"generic,0x11,0x22", nullptr, "AABBCC"}, Row{"Generic,0x11,0x22,0x33", nullptr, "AABBCC"},
          Row{"generic,0x11,0x100,0x33", nullptr, "AABBCC"}, Row{"", nullptr, "AABBCC"},
          Row{nullptr, nullptr, "AABBCC"}}) {
        SCOPED_TRACE(content != nullptr ? content : "no file");
        std::filesystem::remove(folder.path() / "registers.txt");
        if (content != nullptr)
            folder.write("registers.txt", content);
        for (const auto& [index, text] : {std::pair{0, "AA"}, {1, "BB"}, {2, "CC"}})
            console().txtWriteVal[index].setText(text);
        console().cmdFillWriteTextBoxes.userClick();
        EXPECT_EQ(console().txtWriteVal[0].text() + console().txtWriteVal[1].text() +
                      console().txtWriteVal[2].text(),
                  filled);
        replyWith({});
        console().chkFileWriteData.setValue(1);
        console().cmdWrite.userClick();
        const auto reports = sent(9);
        EXPECT_EQ(link().i2cStatus, written != nullptr ? kLinkGood : kLinkError);
        if (written != nullptr) {
            EXPECT_THAT(reports, ElementsAre(std::string("01 06 00 03 01 00 ") + written));
        } else {
            EXPECT_THAT(reports, IsEmpty());
            EXPECT_THAT(boxes(), ElementsAre(kRefused, kRefused));
        }
    }
}

TEST_F(I2cServicesTest, ClockListShowsTheBoardsDivisor) {
    loadConsoles();
    const ComboBox& list = console().cboSMBusFrequency;
    EXPECT_EQ(list.row(0), (RowControl::Row{"100", 240}));
    EXPECT_EQ(list.row(list.rowCount() - 1), (RowControl::Row{"24000", 1}));
    EXPECT_EQ(list.rowCount(), 240);
    EXPECT_EQ(list.text(), "400");

    bus.reply(5, {1, 0, 24, 250}); // 96 kHz has no row
    console().cboSMBusFrequency_init();
    EXPECT_EQ(list.listIndex(), -1);

    bus.reply(5, {1, 0, 32, 32});
    console().cboSMBusFrequency_init();
    EXPECT_EQ(list.text(), "1000");
    sent();
    console().cboSMBusFrequency.userSelect(0); // divisor 256 does not fit its byte
    EXPECT_THAT(boxes(), ElementsAre("Overflow [OK]"));
    EXPECT_THAT(sent(), IsEmpty());
    console().cboSMBusFrequency.userSelect(1);
    EXPECT_THAT(sent(4), ElementsAre("01 05 00 FF"));

    bus.reply(5, {1, 0, 40, 32}); // 40,000 kHz leave the 16 bits
    EXPECT_EQ(act([this] { console().cboSMBusFrequency_init(); }).fault, "Overflow");
    EXPECT_THAT(boxes(), ElementsAre("Overflow [OK]"));
    EXPECT_EQ(list.rowCount(), 256);
}

} // namespace
} // namespace vrk
