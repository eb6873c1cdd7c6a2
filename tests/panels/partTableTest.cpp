#include "tests/panels/I2cPanelTest.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A part taken from the product table.
class PartTableTest : public I2cPanelTest {
  protected:
    static constexpr const char* kGood = "KV4078,4,256,A0,10,C0,5g,r,s,t,u,1,2";
    /// All that a row sets.
    std::vector<std::string> setUp() {
        return {i2c().txtDeviceAdr.text(),
                i2c().txtACRAddress.text(),
                i2c().txtACR[0].text(),
                i2c().txtGPAddress.text(),
                i2c().lblGDRs.caption(),
                i2c().lblProduct.caption(),
                decimalText(i2c().wipers.TapCount),
                decimalText(i2c().wipers.channelCount),
                decimalText(i2c().cboRegSize.listIndex()),
                decimalText(i2c().cboDataSize.listIndex()),
                hexText(i2c().wipers.I2CReadAddress)};
    }
};

TEST_F(PartTableTest, RowIsTakenWholeOrNotAtAll) {
    openI2c(false);
    EXPECT_THAT(chooseRow(kGood, 49, 49), IsEmpty()); // with the headings 50 rows: as many as a table takes
    const std::vector<std::string> taken = {"A0",  "10", "C0", "05", "5g", "KV4078",
                                            "256", "4",  "1",  "2",  "A1"};
    EXPECT_EQ(setUp(), taken);
    EXPECT_TRUE(i2c().OptTaps[5].value() && i2c().OptChans[2].value());
    const std::pair<const char*, const char*> bad[] = {
        {"X,1,40000,50,02,C1,1h,r,s,t,u,0,1", "column 3 holds \"40000\", not a number of taps up to 1024"},
        {"X,1,0,50,02,C1,1h,r,s,t,u,0,1", "column 3"},
        {"X,5,128,50,02,C1,1h,r,s,t,u,0,1", "column 2 holds \"5\""},
        {"X,1.5,128,50,02,C1,1h,r,s,t,u,0,1", "column 2"},
        {"X,1,128,FFF,02,C1,1h,r,s,t,u,0,1", "column 4 holds \"FFF\", not a bus address"},
        {"X,1,128,50,0x2,C1,1h,r,s,t,u,0,1", "column 5"},
        {"X,1,128,50,02,,1h,r,s,t,u,0,1", "column 6"},
        {"X,1,128,50,02,C1,h1,r,s,t,u,0,1", "column 7"},
        {"X,1,128,50,02,C1,1h,r,s,t,u,9,1", "column 12 holds \"9\", not a size of 0, 1 or 2 bytes"},
        {"X,1,128,50,02,C1,1h,r,s,t,u,0,-1", "column 13"},
    };
    for (const auto& [row, why] : bad) {
        EXPECT_THAT(chooseRow(row), ElementsAre(HasSubstr(std::string("This row cannot be taken: ") + why)))
            << row;
        EXPECT_EQ(setUp(), taken) << row;
    }
    // No register, a size that is no number, one digit, taps that the panel has no option for.
    EXPECT_THAT(chooseRow("Y,2,512,5,NA,NA,NA,r,s,t,u,x,"), IsEmpty());
    EXPECT_THAT(setUp(),
                ElementsAre("5", "NA", "NA", "NA", "None Available", "Y", "256", "2", "1", "1", "6"));
    EXPECT_TRUE(i2c().OptTaps[5].value() && i2c().OptChans[1].value());
}

TEST_F(PartTableTest, TableStandsOnceAndGoesWithItsPanel) {
    openI2c(false);
    EXPECT_THAT(chooseRow("Q4410/9,4,256,A0,10,C0,5g,r,s,t,u,1,2"), IsEmpty());
    const auto before = setUp();
    // A second opening is the table that stands; what was chosen earlier is no choice of now.
    at(200, [this] {
        EXPECT_TRUE(i2c().cmdSlave.userClick().refused()); // the panel under it waits
        act([this] { i2c().mnu_I2cList_Click(); });
        EXPECT_FALSE(bench.ProductExec->cmdReturn.enabled());
        EXPECT_EQ(bench.ProductExec->lblDeviceSel[1].caption(), "");
        at(100, [this] { bench.ProductExec.userClose(); });
    });
    i2c().mnu_I2cList.userClick();
    EXPECT_THAT(boxes(), ElementsAre("No Device was selected from the list [OK]"));
    EXPECT_TRUE(i2c().enabled());
    EXPECT_EQ(setUp(), before);
    // Nor is the panel left while its pins are made ready for the table.
    at(1, [this] { EXPECT_TRUE(i2c().cmdMMenu.userClick().refused()); });
    at(200, [this] { bench.ProductExec.userClose(); });
    i2c().mnu_I2cList.userClick();
    EXPECT_THAT(boxes(), ElementsAre(" []", "No Device was selected from the list [OK]"));
    // The main menu takes table and wait away, and nothing is said of a choice.
    at(200, [this] { act([this] { i2c().cmdMMenu_Click(); }); });
    EXPECT_TRUE(i2c().mnu_I2cList.userClick().done());
    EXPECT_TRUE(bench.frmStartup.visible());
    EXPECT_FALSE(bench.ProductExec.loaded() || bench.frmVRK_User1.visible());
    EXPECT_TRUE(i2c().enabled());
    EXPECT_EQ(events.depth(), 0);
    startup().cboVRKSelect.userSelect(frmStartup::kI2C);
    EXPECT_EQ(setUp(), before);
    EXPECT_TRUE(i2c().Frq4410Show.visible() && bench.frmMainF340->chk2WireRead.checked());
    EXPECT_THAT(chooseRow("KV4071,1,128,50,02,C0,1g,r,s,t,u,1,1"), IsEmpty());
    EXPECT_EQ(i2c().lblProduct.caption(), "KV4071");
}

} // namespace
} // namespace vrk
