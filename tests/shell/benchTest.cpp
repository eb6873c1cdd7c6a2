#include "tests/support/TestBench.h"

#include <set>

namespace vrk {
namespace {

using report::Command;
using ::testing::IsEmpty;

/// A bench of its own, for a test with two.
class SecondBench : public TestBench {
    void TestBody() override {}
};

class BenchTest : public TestBench {
  protected:
    const SharedValues::Value& value(const std::string& name) { return *bench.sharedValues().find(name); }
};

TEST_F(BenchTest, TwoBenchesInOneProgramShareNothing) {
    SecondBench other;
    openI2c();
    other.openI2c(false);
    wire.clear();
    type(i2c().txtHexDataWrt[0], "2A");
    bench.Doco->ChkTrace[2].userClick();
    i2c().ChkTrack.userClick();
    EXPECT_THAT(other.wire, IsEmpty());
    other.i2c().CMDxMIT[0].setEnabled(true);
    other.board().OptVCC[0].setValue(true);
    other.i2c().CMDxMIT[0].userClick(); // commits no entry of its neighbour's
    EXPECT_EQ(other.sent(Command::I2cTransfer).size(), 1U);
    EXPECT_EQ(i2c().txtHexDataWrt[0].text(), "2A");
    i2c().CMDxMIT[0].userClick();
    EXPECT_EQ(bus.state().part->wipers.at(0), 0x2A);
    EXPECT_EQ(other.bus.state().part->wipers.at(0), 0);
    EXPECT_EQ(other.bench.Doco->ChkTrace[2].value(), 0);
    EXPECT_EQ(other.bench.Doco->rtxt1.text(), "");
    EXPECT_TRUE(std::get<bool>(other.bench.sharedValues().find("TrackOn")->get(0)));
    EXPECT_FALSE(std::get<bool>(value("TrackOn").get(0)));
}

TEST_F(BenchTest, EverySharedValueIsItsOwn) {
    loadConsoles();
    const auto snapshot = [this] {
        std::vector<ActionValue> all;
        for (const auto& shared : bench.sharedValues().all())
            for (int index = std::max(shared.first, 0); index <= std::max(shared.last, 0); ++index)
                if (index < 64 || index == shared.last) // of long ones enough to see a neighbour
                    all.push_back(shared.get(index));
        return all;
    };
    const std::set<std::string> wide = {"LoopCount", "TestCount", "FailCount",
                                        "PassCount", "TestQty",   "ExpectedReads"};
    for (const auto& shared : bench.sharedValues().all()) {
        if (!shared.set || shared.name == "reportBuffer")
            continue;
        const std::vector<ActionValue> before = snapshot();
        const ActionValue old = shared.get(std::max(shared.last, 0));
        ActionValue changed = std::string("7B");
        if (std::holds_alternative<bool>(old))
            changed = !std::get<bool>(old);
        else if (wide.contains(shared.name))
            changed = std::int64_t{100000};
        else if (std::holds_alternative<std::int64_t>(old))
            changed = std::int64_t{123};
        else if (std::holds_alternative<double>(old))
            changed = 1.25;
        shared.set(std::max(shared.last, 0), changed);
        EXPECT_EQ(shared.get(std::max(shared.last, 0)), changed) << shared.name;
        const std::vector<ActionValue> after = snapshot();
        int differing = 0;
        for (std::size_t value = 0; value < after.size(); ++value)
            differing += after[value] == before[value] ? 0 : 1;
        EXPECT_EQ(differing, 1) << shared.name;
        if (std::holds_alternative<std::int64_t>(old) && !wide.contains(shared.name)) {
            EXPECT_THROW(shared.set(std::max(shared.last, 0), std::int64_t{40000}), Fault) << shared.name;
        }
    }
}

TEST_F(BenchTest, BadTextForTheReportBufferChangesNothing) {
    value("reportBuffer").set(0, std::string("01FF"));
    EXPECT_EQ(std::get<std::string>(value("reportBuffer").get(0)).substr(0, 6), "01FF00");
    for (const auto& bad : {std::string("0"), std::string("0G"), std::string(130, '0')})
        EXPECT_THROW(value("reportBuffer").set(0, bad), Fault) << bad;
    EXPECT_EQ(link().reportBuffer[1], 0xFF);
}

TEST_F(BenchTest, ScriptsOpenForTheBusOfThePanelThatOpensThem) {
    openI2c();
    i2c().txtDeviceAdr.setText("A4");
    bench.services().shell.openScripts(Bus::SPI);
    frmScriptOps& scripts = *bench.frmScriptOps;
    EXPECT_EQ(scripts.txtI2CAdr.text(), "A4");
    EXPECT_EQ(scripts.vbalGrid1.cell(0, 2), "");
    dialogs.answerFile(folder.write("s.txt", "#\n`w\n`ENDM").string());
    ASSERT_TRUE(scripts.mnuScript_Read.userClick().done());

    ASSERT_TRUE(i2c().mnuScriptShow.userClick().done());
    EXPECT_EQ(bench.context().front, &bench.frmScriptOps);
    EXPECT_EQ(scripts.vbalGrid1.cell(0, 2), "I2C Adr");
    EXPECT_EQ(scripts.vbalGrid1.rows(), 4); // what was loaded stays in sight
    EXPECT_THAT(scripts.lblLoadStatus.caption(), ::testing::HasSubstr("SPI script"));
    ASSERT_TRUE(scripts.cmdReload2.userClick().done());
    EXPECT_EQ(scripts.lblLoadStatus.caption(), "");
    // A run goes on with its bus, whoever comes by.
    answer(Choice::Ok, [this] { bench.services().shell.openScripts(Bus::SPI); });
    ASSERT_TRUE(scripts.cmdExecAll.userClick().done());
    EXPECT_TRUE(std::get<bool>(value("I2CBusMode").get(0)));
    (void)boxes();
    // The warning goes with its cause.
    bench.services().shell.openScripts(Bus::SPI);
    EXPECT_THAT(scripts.lblLoadStatus.caption(), ::testing::HasSubstr("I2C script"));
    ASSERT_TRUE(i2c().mnuScriptShow.userClick().done());
    EXPECT_EQ(scripts.lblLoadStatus.caption(), "");
}

TEST_F(BenchTest, ScriptsDoNotLoadTheI2cPanel) {
    loadConsoles();
    bench.services().shell.openScripts(Bus::SPI);
    EXPECT_EQ(bench.frmScriptOps->txtI2CAdr.text(), "50");
    EXPECT_FALSE(bench.frmVRK_User1.loaded());
    EXPECT_TRUE(std::get<bool>(value("SPIBusMode").get(0)));
}

} // namespace
} // namespace vrk
