#include "tests/panels/I2cPanelTest.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What the panel counts is what the part has stored.
class StoresTest : public I2cPanelTest {
  protected:
    using Counts = std::map<std::string, int>;

    void expectCounted(const Counts& wanted) {
        EXPECT_EQ(i2c().nonvolatileWrites().byRegister(), wanted);
        EXPECT_EQ(bus.state().part->writes, wanted);
        EXPECT_EQ(i2c().nonvolatileWrites().total(), bus.state().part->nonvolatileWrites);
        EXPECT_EQ(i2c().lblNvWrites.caption(), decimalText(bus.state().part->nonvolatileWrites));
    }
    /// A loop of the program's own: that of a script, for instance, which knows not what it will store.
    void storeInALoop(int times) {
        act([&] {
            bool stopped = false;
            const Activity loop(i2c().context().activities, "Loop", [&stopped] { stopped = true; });
            for (int pass = 0; pass < times && !stopped; ++pass) {
                console().cmdWrite_Click();
                i2c().pump();
            }
        });
    }
};

TEST_F(StoresTest, RegisterPartsStoreWhatTheControlRegisterSays) {
    openI2c();
    choose("KV4074", &frmVRK_User1::mnu_KV4074);
    enter(i2c().txtHexDataWrt[2], "20");
    enter(i2c().txtHexDataWrt[0], "21");
    enter(i2c().txtHexDataWrt[0], "21"); // the cell wears by the same value too
    enter(i2c().txtGPAddress, "5");
    i2c().cmdWriteGP.userClick();
    expectCounted({{"00", 2}, {"02", 1}, {"05", 1}});
    EXPECT_EQ(i2c().lblNvRegisters.caption(), "00  2, 02  1, 05  1");
    EXPECT_EQ(i2c().nonvolatileWrites().ofWiper(0), 2);
    i2c().cmdACRWrite.userClick(); // C0: volatile
    enter(i2c().txtHexDataWrt[3], "22");
    i2c().cmdReadAllWipers[0].userClick();
    i2c().cmdWriteGP.userClick(); // which no control register can make volatile
    expectCounted({{"00", 2}, {"02", 1}, {"05", 2}});
    i2c().OptVCC[1].userClick();
    answer(Choice::Retry);
    enter(i2c().txtHexDataWrt[1], "23"); // refused by a part without VCC
    boxes();
    i2c().OptVCC[0].userClick(); // the control register is as power makes it
    enter(i2c().txtHexDataWrt[1], "24");
    expectCounted({{"00", 2}, {"01", 1}, {"02", 1}, {"05", 2}});
    // Whoever sends it: the console, three registers at once.
    console().txtNumToWrite.setText("3");
    console().txtStartRegWr.setText("03");
    act([this] { console().cmdWrite_Click(); });
    expectCounted({{"00", 2}, {"01", 1}, {"02", 1}, {"03", 1}, {"04", 1}, {"05", 3}});
    // A reply that is lost was a write all the same; the repetition is another.
    fault(sim::FaultKind::NoReply, 1, 6);
    answer(Choice::Retry);
    enter(i2c().txtHexDataWrt[0], "25");
    boxes();
    EXPECT_EQ(i2c().nonvolatileWrites().total(), bus.state().part->nonvolatileWrites);
    EXPECT_EQ(i2c().nonvolatileWrites().ofWiper(0), 4);
    choose("KV4074", &frmVRK_User1::mnu_KV4074);
    EXPECT_EQ(i2c().lblNvWrites.caption(), "0");
    EXPECT_EQ(i2c().lblNvRegisters.caption(), "none");
}

TEST_F(StoresTest, DataRegistersAreCountedByPotAndRegister) {
    openI2c();
    bus.socket("Q4422");
    EXPECT_THAT(chooseRow("Q4422,4,256,50,05,00,NA,r,s,t,u,1,1"), IsEmpty());
    answer(Choice::Ok);
    i2c().cdmAuto_Init.userClick();
    boxes();
    i2c().cmdUp[0].userClick();
    i2c().cmdUp[2].userClick(); // the pins name pot 3
    EXPECT_EQ(bus.state().part->writes.at("DR3.0"), 2);
    expectCounted(bus.state().part->writes);
    bus.socket("Q3318");
    i2c().OptVCC[1].userClick();
    i2c().OptVCC[0].userClick();
    EXPECT_THAT(chooseRow("Q3318/9,1,1024,50,NA,NA,NA,r,s,t,u,1,2"), IsEmpty());
    i2c().CMDq331X_Write[0].userClick();      // the wiper
    i2c().CMDq331X_Write[3].userClick();      // Data 2
    i2c().cmdQ331xDatatoWiper[2].userClick(); // no store, though its byte is that of a write
    i2c().cmdQ331xWipertoData[1].userClick();
    i2c().CMDq331X_Read[3].userClick();
    expectCounted({{"DR0.1", 1}, {"DR0.2", 1}});
}

TEST_F(StoresTest, ALoopIsAskedAboutOnceBeforeItPassesTheBudget) {
    openI2c();
    for (const auto& [typed, kept] :
         {std::pair{"0", "10000"}, {"1000001", "10000"}, {"", "10000"}, {"4", "4"}}) {
        type(i2c().txtNvBudget, typed);
        i2c().txtNvBudget.userEnter();
        EXPECT_EQ(i2c().txtNvBudget.text(), kept) << typed;
    }
    act([this] { i2c().sweepWiper(0, 0, 1, 1); }); // two, and room for two more
    wire.clear();
    answer(Choice::Cancel);
    act([this] { i2c().sweepWiper(0, 0, 9, 3); });
    EXPECT_THAT(boxes(), ElementsAre(::testing::StartsWith("The part has had 2 non-volatile writes")));
    EXPECT_THAT(transfers(), IsEmpty());
    act([this] { i2c().sweepWiper(0, 0, 9, 3); }); // asked once
    enter(i2c().txtNvBudget, "5");                 // and about a new budget anew
    answer(Choice::Cancel);
    act([this] { i2c().sweepWiper(0, 0, 9, 3); });
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_EQ(bus.state().part->nonvolatileWrites, 6);
    // A loop that did not say what it would store is stopped where the next would pass the budget.
    choose("KV4071", &frmVRK_User1::mnu_KV4071);
    enter(i2c().txtHexDataWrt[0], "10");
    answer(Choice::Cancel);
    storeInALoop(9);
    EXPECT_THAT(boxes(), ElementsAre(::testing::StartsWith("The part has had 5 non-volatile writes")));
    EXPECT_EQ(i2c().nonvolatileWrites().total(), 5);
    // What the user does by hand is his own to count.
    choose("KV4071", &frmVRK_User1::mnu_KV4071);
    for (int write = 0; write < 6; ++write)
        enter(i2c().txtHexDataWrt[0], "11");
    // And what is not stored passes no budget.
    i2c().cmdACRWrite.userClick();
    act([this] { i2c().sweepWiper(0, 0, 127, 1); });
    EXPECT_EQ(i2c().nonvolatileWrites().total(), 6);
}

TEST_F(StoresTest, PinPanelsCountTheEdgesThatStore) {
    loadConsoles();
    bus.socket("UPDN100");
    startup().cboVRKSelect.userSelect(4);
    frmVRK_UD1& upDown = *bench.frmVRK_UD1;
    upDown.OptVCC[0].userClick();
    const int before = upDown.nonvolatileWrites().total();
    const int stored = bus.state().part->nonvolatileWrites;
    upDown.ChOut[0].userClick(); // /CS falls and rises with /INC high
    upDown.ChOut[0].userClick();
    EXPECT_EQ(upDown.nonvolatileWrites().total() - before, 1);
    EXPECT_EQ(bus.state().part->nonvolatileWrites - stored, 1);
}

} // namespace
} // namespace vrk
