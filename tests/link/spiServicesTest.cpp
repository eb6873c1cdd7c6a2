#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;

class SpiServicesTest : public TestBench {
  protected:
    void write(const std::vector<const char*>& bytes) {
        console().txtNumToWrite.setText(decimalText(static_cast<long long>(bytes.size())));
        for (std::size_t i = 0; i < bytes.size(); ++i)
            console().txtWriteVal[static_cast<int>(i)].setText(bytes[i]);
        console().cmdSPIWrite.userClick();
    }
};

TEST_F(SpiServicesTest, ReadBackOnlyWhenAsked) {
    loadConsoles();
    write({"50", "C0", "2c"});
    EXPECT_THAT(sent(Command::SpiTransfer, 11), ElementsAre("01 09 00 00 00 00 03 50 C0 2C 00"));
    EXPECT_EQ(console().txtReadVal[0].text(), "");

    console().chkSPIread.userClick();
    bus.reply(9, {1, 1, 0x0A, 0xBC, 0xFF}); // the error byte is not looked at
    write({"50", "C0"});
    EXPECT_THAT(sent(Command::SpiTransfer, 9), ElementsAre("01 09 00 01 00 00 02 50 C0"));
    EXPECT_EQ(console().txtReadVal[0].text(), "0A");
    EXPECT_EQ(console().txtReadVal[1].text(), "BC");
    EXPECT_EQ(console().txtReadVal[2].text(), "");
    EXPECT_EQ(console().txtReadVal[1].freshness()->state, Freshness::State::Fresh);
    // No file to take the bytes from: what came before is no answer.
    console().chkFileWriteData.userClick();
    write({"50", "C0"});
    EXPECT_THAT(sent(Command::SpiTransfer), ::testing::IsEmpty());
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_FALSE(console().replied());
    EXPECT_EQ(console().txtReadVal[1].freshness()->state, Freshness::State::Stale);
}

TEST_F(SpiServicesTest, ClockListRunsFromSlowToFast) {
    loadConsoles();
    console().cboSPIclock_init();
    const auto& rows = console().cboSPIClock.rows();
    ASSERT_EQ(rows.size(), 24U);
    EXPECT_EQ(rows.front(), (RowControl::Row{"0.5", 23}));
    EXPECT_EQ(rows[16], (RowControl::Row{"1.5", 7}));
    EXPECT_EQ(rows.back(), (RowControl::Row{"12", 0}));
    EXPECT_EQ(console().cboSPIClock.text(), "1");     // the board's own, 0B
    EXPECT_THAT(sent(4), ElementsAre("01 08 01 00")); // nothing is sent back
    console().cboSPIClock.userSelect(23);
    EXPECT_THAT(sent(4), ElementsAre("01 08 00 00"));
}

} // namespace
} // namespace vrk
