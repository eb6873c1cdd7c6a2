#include "apps/vrkbench/Desktop.h"
#include "tests/windows/WindowTest.h"
#include "views/workspace/Section.h"

#include <QComboBox>
#include <QLabel>
#include <QStackedWidget>

namespace vrk {
namespace {

constexpr const char* kSpi = "frmVRK_SPI1";

class SpiPageTest : public WindowTest {
  protected:
    SpiPageTest() : WindowTest("KV4184") {
        workspace.resize(1600, 1000);
        click("frmStartup", "open.SPI");
        choose(kSpi, "mnuKV4184");
        click(kSpi, "OptVCC(0)");
    }
    QString text(const std::string& path) { return widget<QLabel>(kSpi, path).text(); }
};

TEST_F(SpiPageTest, EachFieldStandsInItsPlaceUnderItsName) {
    expectPlaces(
        kSpi,
        {
            {"cmdReadAllWipers(0)", "Read All", "head"},
            {"lblPotRead(1)", "Position read, channel 1", "strip(1)"},
            {"CMDxMIT(2)", "Write channel 2", "strip(2)"},
            {"OptChans(2)", "Quad Channel VRK", "section.Set-up"},
            {"OptTaps(3)", "100 taps", "section.Set-up"},
            {"txtBaseVRKWriteAddress", "Wiper 0, command to write", "section.Set-up"},
            {"txtBaseVRKReadAddress", "Wiper 0, command to read", "section.Set-up"},
            {"txtSPIWrCount", "Bytes of a write frame", "section.Set-up"},
            {"txtSPIRDQuantity", "Bytes of a read frame", "section.Set-up"},
            {"chkSendID", "ID Enabled", "section.Set-up"},
            {"txtDeviceAdr", "ID", "section.Set-up"},
            {"txtCalcAddr", "Device ID computed from the pins", "section.Set-up"},
            {"txtACRAddress(0)", "Control register, command to write", "section.Control register"},
            {"txtACRAddress(1)", "Control register, command to read", "section.Control register"},
            {"txtACR(0)", "control register, to write", "section.Control register"},
            {"txtACR(1)", "control register, as read", "section.Control register"},
            {"cmdACRWrite", "Write control register", "section.Control register"},
            {"Shape2(1)", "ACR read", "section.Control register"},
            {"txtGPAddress(0)", "General register, command to write", "section.General Register Access"},
            {"txtGPAddress(1)", "General register, command to read", "section.General Register Access"},
            {"cmdGPRead", "Read general purpose register", "section.General Register Access"},
            {"lblWriteFrame(3)", "Frame of Write 3", "section.Frames"},
            {"lblReadFrame(1)", "Frame of Read 1", "section.Frames"},
            {"lblRegisterFrame(1)", "Frame of ACR read", "section.Frames"},
            {"lblRegisterFrame(2)", "Frame of Reg. write", "section.Frames"},
            {"cmdShowq4410", "Show Instruction Set Form", "section.Q4420/1"},
        });
    const QWidget& update = widget(kSpi, "cmdSetSPICLock");
    EXPECT_LE(update.mapTo(&workspace, QPoint(update.width(), 0)).x(), workspace.width()) << "cut off";
}

TEST_F(SpiPageTest, FramesAreThoseOfTheChannelInHandBeforeTheyGo) {
    auto& frames = widget<QStackedWidget>(kSpi, "framesOfChannel");
    enter(kSpi, "txtHexDataWrt(2)", "3f");
    EXPECT_EQ(frames.currentIndex(), 2);
    EXPECT_EQ(text("lblWriteFrame(2)"), "50 ID · C2 command · 3F data");
    EXPECT_EQ(text("lblReadFrame(2)"), "50 ID · B2 command · 00 clock");
    click(kSpi, "cmdI2Read(2)");
    EXPECT_EQ(text("lblPotRead(2)"), "63");
    EXPECT_EQ(widget<qt::LampWidget>(kSpi, "read(2)").word(), "good");
    w.bus.socket(std::nullopt);
    click(kSpi, "cmdI2Read(2)");
    EXPECT_EQ(text("lblPotRead(2)"), "0");
    EXPECT_EQ(widget(kSpi, "txtHexDataWrt(2)").accessibleDescription(), "") << "3F is the last that is known";
    click(kSpi, "chkSendID");
    EXPECT_EQ(text("lblReadFrame(2)"), "B2 command · 00 clock · 00 clock");
    EXPECT_TRUE(text("age(2)").endsWith("the address changed since"));
}

TEST_F(SpiPageTest, FieldsAreThoseOfTheRegisterThatEachCommandLeadsTo) {
    auto* store = &widget<QComboBox>(kSpi, "field.ACR.STORE");
    EXPECT_EQ(store->currentText(), "WR Register"); // C0 is to be written
    click(kSpi, "cmdACRRead");                      // 40
    EXPECT_EQ(text("read.ACR.STORE") + "/" + text("read.ACR.SHDN"), "IVR EEPROM/running");
    enter(kSpi, "txtACRAddress(1)", "b0"); // reads wiper 0
    click(kSpi, "cmdACRRead");
    EXPECT_EQ(text("read.ACR.STORE"), qt::kNeverRead);
    enter(kSpi, "txtACRAddress(0)", "na");
    EXPECT_EQ(text("read.WR0.POSITION"), "40 hex");
    EXPECT_EQ(page(kSpi).find("field.ACR.STORE"), nullptr);
}

/// What the inspector lists by register stands there whole.
TEST_F(SpiPageTest, StoresOfEveryRegisterAreReadable) {
    click(kSpi, "Option1(0)");
    click(kSpi, "cmdACRWrite");
    for (const char* command : {"c0", "c1", "c2", "c3", "c4", "c5", "c6", "c7"}) {
        enter(kSpi, "txtGPAddress(0)", command);
        for (int times = 0; times < 12; ++times)
            (void)bench.frmVRK_SPI1->cmdWriteGP.userClick();
    }
    workspace.findChild<Section*>("section.Non-volatile writes")->setFolded(false);
    settle();
    auto& list = widget<QLabel>(kSpi, "lblNvRegisters");
    EXPECT_TRUE(list.text().endsWith("07  12"));
    EXPECT_GE(list.height(), list.heightForWidth(list.width()));
}

TEST(DesktopPart, OpensItsPanelSetUpForIt) {
    for (const auto& [part, panel] : {std::pair{"kv4184", "frmVRK_SPI1"}, {"KV4074", "frmVRK_User1"}}) {
        SCOPED_TRACE(part);
        TemporaryFolder folder;
        BoxWatcher boxes;
        Desktop desktop(
            {.simulate = part, .openPart = true, .folder = folder.path().string(), .settings = false});
        desktop.open();
        Bench& bench = desktop.bench();
        ASSERT_TRUE(QTest::qWaitFor([&] { return bench.devicePanel() != nullptr; }, 5000));
        ASSERT_TRUE(QTest::qWaitFor([&] { return desktop.events().depth() == 0; }, 5000));
        EXPECT_EQ(bench.devicePanel()->name(), panel);
        EXPECT_EQ(dynamic_cast<WiperPanel&>(*bench.devicePanel()).lblProduct.caption().substr(2, 4),
                  std::string(part).substr(2));
    }
}

} // namespace
} // namespace vrk
