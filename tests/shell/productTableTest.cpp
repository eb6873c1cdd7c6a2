#include "tests/support/TestBench.h"

#include "platform/files/files.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;

using Rows = std::vector<std::vector<std::string>>;

/// Volts of one converter step as a panel shows them: twice those at the pin.
constexpr double kStep = 2 * 3.3 / 1023;

class ProductTableTest : public TestBench {
  protected:
    ProductExec& table() { return *bench.ProductExec; }
    void useSpi() {
        bench.sharedValues().find("I2CBusMode")->set(kNoIndex, false);
        bench.sharedValues().find("SPIBusMode")->set(kNoIndex, true);
    }
    /// Loads a file by the panel's own button.
    void load(const std::string& path) {
        dialogs.answerFile(path);
        ASSERT_TRUE(table().cmdLoadParam.userClick().done());
        (void)boxes();
    }
    Rows cells() {
        Rows rows;
        for (int row = 0; row < table().tGrid.rows(); ++row) {
            rows.emplace_back();
            for (int column = 0; column < table().tGrid.columns(); ++column)
                rows.back().push_back(table().tGrid.cell(row, column));
        }
        return rows;
    }
    bool selected() { return std::get<bool>(bench.sharedValues().find("ParamSelected")->get(kNoIndex)); }
    std::string chosen(int field) { return table().lblDeviceSel[field].caption(); }
    /// A line of so many fields, "a0" up.
    static std::string line(const std::string& name, int fields, const char* end = "\r\n") {
        std::string text;
        for (int i = 0; i < fields; ++i)
            text += (i > 0 ? "," : "") + name + decimalText(i);
        return text + end;
    }
    static std::string example(const char* name) { return std::string(VRK_EXAMPLES "/") + name; }
};

TEST_F(ProductTableTest, EveryI2cRowOfTheExampleWorksWithoutFurtherSetting) {
    openI2c();
    for (int row = 1, rows = 3; row < rows - 1; ++row) {
        SCOPED_TRACE(row);
        if (row == 1) // later the table still stands there as it was left
            dialogs.answerFile(example("parts-I2C.csv"));
        at(200, [&] {
            EXPECT_TRUE(table().Frame1.visible());
            rows = table().tGrid.rows();
            EXPECT_FALSE(table().cmdReturn.enabled());
            (void)table().tGrid.userSelect(row, 0);
            bus.socket(chosen(1).substr(0, chosen(1).find('/'))); // behind it: the form of its data sheet
            (void)table().cmdReturn.userClick();
        });
        ASSERT_TRUE(i2c().mnu_I2cList.userClick().done());
        (void)boxes(); // the file dialog
        EXPECT_EQ(i2c().lblProduct.caption(), chosen(1));
        EXPECT_GE(rows, 3);
        if (chosen(5) == "NA")
            continue; // told by instructions, on a page of their own
        (void)i2c().OptVCC[1].userClick();
        (void)i2c().OptVCC[0].userClick();
        const int taps = decimalInt(chosen(3));
        for (int channel = 0; channel < decimalInt(chosen(2)); ++channel) {
            SCOPED_TRACE(channel);
            EXPECT_TRUE(i2c().SSFrame4[channel].visible());
            const int position = taps / 4 + channel;
            type(i2c().txtDECDataWrt[channel], decimalText(position));
            (void)i2c().txtDECDataWrt[channel].userEnter();
            (void)i2c().cmdI2Read[channel].userClick();
            EXPECT_EQ(i2c().lblPotRead[channel].caption(), decimalText(position));
            EXPECT_EQ(bus.state().part->wipers.at(static_cast<std::size_t>(channel)), position);
            const double volts = bus.state().vcc * position / taps;
            EXPECT_NEAR(leadingNumber(i2c().lblWiperVolts[channel].caption()), volts, 1.5 * kStep);
        }
        (void)i2c().cmdACRWrite.userClick();
        (void)i2c().cmdACRRead.userClick();
        EXPECT_EQ(i2c().txtACR[1].text(), chosen(6));
        (void)i2c().cmdWriteGP.userClick();
        (void)i2c().cmdGPRead.userClick();
        EXPECT_EQ(i2c().lblGPRead.caption(), i2c().txtGPWrite.text());
    }
}

TEST_F(ProductTableTest, FileIsCutIntoRowsByCountingFields) {
    bench.start();
    // Blanks go, quotes keep commas; a short line takes from the next one; the mark counts in front alone.
    const std::string file = line("h", 15) + " \"a, \"\"b\"\"\" , one two ," + line("x", 12) + line("s", 13) +
                             line("t", 2) + line("u", 15, ",end\n") + "end," + line("z", 15);
    load(folder.write("a.csv", file).string());
    const Rows rows = cells();
    ASSERT_EQ(rows.size(), 5U); // the last is the one behind the data
    EXPECT_EQ(rows[1][0], "a, \"b\"");
    EXPECT_EQ(rows[1][1], "one two");
    EXPECT_EQ(rows[1][14], "s0");
    EXPECT_EQ(rows[2][0], "s1");
    EXPECT_EQ(rows[2][13], "t1");
    EXPECT_EQ(rows[2][14], "u0");
    EXPECT_EQ(rows[3][0], "u1");
    EXPECT_EQ(rows[3][14], "end");
    EXPECT_EQ(table().lblField[5].caption(), "h5");
    EXPECT_EQ(table().lblField[13].caption(), "h13");
    EXPECT_EQ(table().lblField[4].caption(), "Bus Adr"); // the first five are the panel's own
    EXPECT_FALSE(table().lblField[14].visible());
}

TEST_F(ProductTableTest, SurplusRowsAreIgnoredAndAFileThatCannotBeReadLeavesTheTable) {
    bench.start();
    std::string file = line("h", 15);
    for (int row = 1; row < 60; ++row)
        file += line("r" + decimalText(row) + "-", 15);
    load(folder.write("long.csv", file).string());
    EXPECT_EQ(table().tGrid.rows(), 51);
    EXPECT_EQ(table().tGrid.cell(49, 0), "r49-0");
    const Rows before = cells();
    dialogs.answerFile(std::nullopt);
    (void)table().cmdLoadParam.userClick();
    EXPECT_EQ(boxes().size(), 1U);
    dialogs.answerFile((folder.path() / "none.csv").string());
    (void)table().cmdLoadParam.userClick();
    EXPECT_THAT(boxes(), ElementsAre(EndsWith("none.csv]"), HasSubstr("none.csv")));
    EXPECT_EQ(cells(), before);
}

TEST_F(ProductTableTest, OnlyARowOfDataIsChosen) {
    bench.start();
    useSpi();
    load(folder.write("a.csv", line("h", 19) + line("a", 19) + line("b", 19)).string());
    EXPECT_EQ(table().tGrid.columns(), 19);
    EXPECT_TRUE(table().lblField[17].visible());
    (void)table().tGrid.userSelect(0, 0); // headings
    EXPECT_FALSE(table().cmdReturn.enabled());
    (void)table().tGrid.userSelect(2, 0);
    EXPECT_TRUE(selected());
    EXPECT_EQ(chosen(17), "b17");
    const auto reload = [this](const char* name) {
        return std::get<bool>(bench.sharedValues().find(name)->get(kNoIndex));
    };
    act([this] { table().cmdReturn_Click(); });
    EXPECT_TRUE(reload("reloadSPIList") && !reload("reloadI2CList"));
    (void)table().tGrid.userSelect(3, 0); // behind the data
    EXPECT_FALSE(selected());
    EXPECT_FALSE(table().cmdReturn.enabled());
    EXPECT_EQ(chosen(8), "");
    EXPECT_EQ(chosen(9), "b9"); // the emptying ends at 8: deliberate
    // Another file: no choice of the old one stays. Empty lines are no parts.
    (void)table().tGrid.userSelect(2, 0);
    load(folder.write("b.csv", line("h", 19, ",\r\n") + "\n" + line("c", 19) + " \r\n\r\n").string());
    EXPECT_FALSE(selected());
    EXPECT_FALSE(table().cmdReturn.enabled());
    EXPECT_EQ(table().tGrid.row(), 0);
    EXPECT_EQ(table().tGrid.rows(), 3);
    EXPECT_EQ(table().tGrid.cell(1, 18), "c18");
}

TEST_F(ProductTableTest, WindowClosedWithoutAChoiceLeavesThePanelAsItWas) {
    openI2c();
    type(i2c().txtDeviceAdr, "6A");
    (void)i2c().txtDeviceAdr.userLeave();
    dialogs.answerFile(example("parts-I2C.csv"));
    at(200, [this] {
        (void)table().tGrid.userSelect(2, 0);
        (void)bench.ProductExec.userClose();
    });
    ASSERT_TRUE(i2c().mnu_I2cList.userClick().done());
    EXPECT_THAT(boxes(),
                ElementsAre(EndsWith("parts-I2C.csv]"), "No Device was selected from the list [OK]"));
    EXPECT_EQ(i2c().txtDeviceAdr.text(), "6A");
    EXPECT_EQ(i2c().wipers.TapCount, 128);
    EXPECT_EQ(bench.context().front, &bench.frmVRK_User1);
}

TEST_F(ProductTableTest, WrittenFileEndsItsLinesInCommaAndBlank) {
    bench.start();
    load(folder.write("a.csv", line("h", 15) + "\"a,b\"," + line("c", 14) + "END\n").string());
    dialogs.answerFile((folder.path() / "b.csv").string());
    (void)table().cmdSaveParam.userClick();
    (void)boxes();
    EXPECT_EQ(readFile(folder.path() / "b.csv"),
              line("h", 15, ", \r\n") + "\"a,b\"," + line("c", 14, ", \r\n"));
    const Rows before = cells();
    table().ReadParameters("b.csv");
    EXPECT_EQ(table().tGrid.cell(1, 0), "a,b");
    EXPECT_EQ(cells().size(), before.size());
    dialogs.answerFile("/proc/none/b.csv");
    (void)table().cmdSaveParam.userClick();
    EXPECT_EQ(boxes().size(), 2U); // the dialog, and why not
}

} // namespace
} // namespace vrk
