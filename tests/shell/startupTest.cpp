#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class StartupTest : public TestBench {};

TEST_F(StartupTest, LampBlinksWhileThePanelWaits) {
    bench.start();
    EXPECT_EQ(startup().cboVRKSelect.listIndex(), 0);
    EXPECT_FALSE(startup().Shpstatus[2].visible());
    for (const Colour colour : {Colour::LightGreen, Colour::Green, Colour::LightGreen}) {
        advance(events, clock, Milliseconds{1500});
        EXPECT_TRUE(startup().Shpstatus[2].visible());
        EXPECT_EQ(startup().Shpstatus[2].colour(), colour);
    }
    EXPECT_THAT(sent(), IsEmpty()); // no board is asked for before a selection
}

TEST_F(StartupTest, RowsWithoutAPanelLoadTheConsolesAndStay) {
    bench.start();
    for (const int row : {1, 6, 7, 8}) {
        advance(events, clock, Milliseconds{1500});
        startup().cboVRKSelect.userSelect(row);
        EXPECT_TRUE(bench.frmMotherboardDAQ2.loaded() && bench.frmMainF340.loaded()) << row;
        EXPECT_FALSE(bench.frmMotherboardDAQ2.visible() || bench.frmMainF340.visible()) << row;
        EXPECT_TRUE(bench.frmStartup.visible());
        EXPECT_EQ(startup().cboVRKSelect.listIndex(), row);
        EXPECT_FALSE(startup().Shpstatus[2].visible());
        advance(events, clock, Milliseconds{5000});
        EXPECT_FALSE(startup().Shpstatus[2].visible()); // the blinking has stopped
        startup().cboVRKSelect.userSelect(0);
        startup().Timer1.setRunning(true);
    }
    EXPECT_FALSE(bench.frmVRK_User1.loaded());
}

TEST_F(StartupTest, SelectionHandsOverAndTheMainMenuComesBackWithoutASecondDiscovery) {
    bench.start();
    startup().cboVRKSelect.userSelect(2);
    EXPECT_TRUE(bench.frmVRK_User1.visible());
    EXPECT_FALSE(bench.frmStartup.visible() || bench.frmMotherboardDAQ2.visible() ||
                 bench.frmMainF340.visible());
    EXPECT_EQ(link().activePanel, &i2c());
    EXPECT_EQ(i2c().ShpAttach.colour(), Colour::LightGreen);
    const hid::Handle handle = link().hidHandle;
    i2c().OptVCC[0].userClick();
    ASSERT_GT(bus.state().vcc, 4);
    const frmMainF340* const before = &console();
    i2c().cmdMMenu.userClick();
    EXPECT_EQ(bus.state().vcc, 0);
    EXPECT_FALSE(bench.frmVRK_User1.visible());
    EXPECT_TRUE(bench.frmVRK_User1.loaded());
    EXPECT_TRUE(bench.frmStartup.visible());
    EXPECT_EQ(startup().cboVRKSelect.listIndex(), 0);
    EXPECT_TRUE(startup().Timer1.running());
    EXPECT_EQ(link().activePanel, &startup());
    board().setPin(frmMotherboardDAQ2::kPinMotherboardSwitch, 1);
    startup().cboVRKSelect.userSelect(2);
    EXPECT_FALSE(board().chkPData[frmMotherboardDAQ2::kPinMotherboardSwitch].checked()); // the I2C bus again
    EXPECT_TRUE(bench.frmVRK_User1.visible());
    EXPECT_EQ(&console(), before);
    EXPECT_EQ(link().hidHandle, handle);
    EXPECT_EQ(bus.state().handles, 2);
    // Back from the menu the window closes as at first: it ends the program.
    bench.frmVRK_User1.userClose();
    EXPECT_TRUE(events.ended());
}

TEST_F(StartupTest, SecondPickInsideALoadIsRefused) {
    for (const int ms : {1, 20, 60, 120})
        at(ms, [this] { EXPECT_TRUE(startup().cboVRKSelect.userSelect(2).refused()); });
    bench.start();
    EXPECT_TRUE(startup().cboVRKSelect.userSelect(2).done());
    EXPECT_TRUE(startup().cboVRKSelect.enabled());
    EXPECT_TRUE(board().chkPData[frmMotherboardDAQ2::kPinShutdown].checked());
    EXPECT_EQ(bus.state().sfr.at("90") & 4, 4); // the part is not held in shutdown
}

TEST_F(StartupTest, LoadThatFaultsLeavesNothingHalfOpen) {
    bench.start();
    bus.reply(static_cast<int>(report::Command::I2cClock), {0x01, 0x00, 48, 1}); // kHz beyond 16 bits
    EXPECT_EQ(startup().cboVRKSelect.userSelect(frmStartup::kI2C).kind, Outcome::Kind::Faulted);
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_FALSE(bench.frmMainF340.loaded() || bench.frmVRK_User1.loaded());
    EXPECT_EQ(startup().cboVRKSelect.listIndex(), 0);
    EXPECT_TRUE(startup().Timer1.running() && startup().cboVRKSelect.enabled());
    startup().cboVRKSelect.userSelect(frmStartup::kI2C); // the next use loads anew
    EXPECT_TRUE(bench.frmVRK_User1.visible() && bench.frmMainF340.loaded());
    EXPECT_EQ(bus.state().handles, 2);
}

TEST_F(StartupTest, ConsolesShowAlongAfterADoubleClickOnThePicture) {
    bench.start();
    startup().Picture1.userDoubleClick();
    EXPECT_FALSE(bench.frmMainF340.loaded());
    startup().cboVRKSelect.userSelect(2);
    EXPECT_TRUE(bench.frmMotherboardDAQ2.visible());
    EXPECT_TRUE(bench.frmMainF340.visible());
    EXPECT_TRUE(bench.frmVRK_User1.visible());
    EXPECT_EQ(bench.context().front, &bench.frmVRK_User1);
}

TEST_F(StartupTest, ClosingAWindowThatTheProgramStandsOnEndsItAndClosesTheHandles) {
    for (const auto& [panel, ends] : {std::pair{"frmVRK_User1", true},
                                      {"frmStartup", true},
                                      {"frmMainF340", true},
                                      {"frmMotherboardDAQ2", false},
                                      {"Doco", false}}) {
        SCOPED_TRACE(panel);
        VirtualClock time;
        EventLoop loop{time};
        sim::SimulatedBus usb{time};
        Bench other{{loop, dialogs, clipboard, usb, folder.path(), folder.path()}};
        other.start();
        other.frmStartup->cboVRKSelect.userSelect(2);
        other.Doco.show();
        ASSERT_EQ(usb.state().handles, 2);
        other.findPanel(panel)->userClose();
        EXPECT_EQ(loop.ended(), ends);
        EXPECT_EQ(usb.state().handles, ends ? 0 : 2);
        // What comes later finds the program gone; or the motherboard, loaded again, with both supplies off.
        EXPECT_EQ(other.frmVRK_User1->OptVCC[0].userClick().kind,
                  ends ? Outcome::Kind::Ended : Outcome::Kind::Done);
    }
}

struct OneTool final : InformationTool {
    std::optional<std::string> name() override { return "Info Center"; }
    void open() override { throw Fault("info: No such file or directory"); }
};

TEST_F(StartupTest, AboutBoxOpensTheToolThatTheSystemHas) {
    bench.start();
    (void)startup().mnuAboutShow.userClick();
    ASSERT_TRUE(bench.frmAbout2.visible());
    EXPECT_TRUE(bench.frmAbout2->cmdSysInfo.userClick().refused()); // no tool, no button
    (void)bench.frmAbout2->cmdOK.userClick();
    EXPECT_FALSE(bench.frmAbout2.loaded());
    EXPECT_TRUE(bench.frmStartup.visible());

    OneTool tool;
    class frmAbout2 about(bench.context(), {&tool, [] {}});
    EXPECT_THAT(about.cmdSysInfo.toolTip(), HasSubstr("Info Center"));
    EXPECT_TRUE(about.cmdSysInfo.userClick().done());
    EXPECT_THAT(boxes(), ElementsAre(HasSubstr("could not be opened: info: No such file")));
}

} // namespace
} // namespace vrk
