#include "tests/windows/WindowTest.h"
#include "views/pages.h"

#include <QLabel>
#include <QLineEdit>

namespace vrk {
namespace {

constexpr const char* kPage = "frm_q4410";

class InstructionPageTest : public WindowTest {
  protected:
    InstructionPageTest() : WindowTest("Q4410") {
        workspace.resize(1600, 1000);
        openI2c();
        // The part as its row of the parameter file sets the panel up.
        (void)bench.events().deliver([this] {
            frmVRK_User1& panel = *bench.frmVRK_User1;
            panel.lblProduct.setCaption("Q4410/9");
            panel.Frq4410Show.setVisible(true);
            bench.frmMainF340->chk2WireRead.setValue(1);
            bench.frmMainF340->chkRandom.setValue(0);
        });
        click("frmVRK_User1", "cmdShowq4410");
    }
    frm_q4410& panel() { return *bench.frm_q4410; }
    QString text(const std::string& path) { return widget<QLabel>(kPage, path).text(); }
    void choose(int instruction, int pot, int reg) {
        click(kPage, "OptInstruction(" + std::to_string(instruction) + ")");
        if (pot >= 0)
            click(kPage, "OptWiper(" + std::to_string(pot) + ")");
        if (reg >= 0)
            click(kPage, "OptRegSel(" + std::to_string(reg) + ")");
    }
    /// The cell of the map that the widget stands in.
    std::string cellOf(const QWidget& shown) {
        for (const QWidget* at = &shown; at != nullptr; at = at->parentWidget())
            if (at->objectName().startsWith("cell("))
                return at->objectName().toStdString();
        return {};
    }
};

TEST_F(InstructionPageTest, RegistersStandInTheirCells) {
    for (int pot = 0; pot < 4; ++pot)
        for (int row = 0; row < 5; ++row) {
            const std::string at = "(" + std::to_string(row == 0 ? pot : pot * 4 + row - 1) + ")";
            const std::string cell = "cell(" + std::to_string(pot) + "," + std::to_string(row) + ")";
            const std::vector<const char*> names =
                row == 0 ? std::vector{"lblRDWcr", "ShpRdWCR", "cmdRdWCR", "txtWXWcr", "ShpWrWCR", "cmdWrWCR"}
                         : std::vector{"lblRdData", "ShpDataRd", "cmdRDData",
                                       "txtWrData", "ShpDataWr", "cdmWrData"};
            for (const char* name : names)
                EXPECT_EQ(cellOf(widget(kPage, name + at)), cell) << name << at;
        }
    EXPECT_EQ(widget(kPage, "cdmWrData(6)").accessibleName(), "Write data register 2 of pot 1");
    EXPECT_EQ(widget(kPage, "lblRDWcr(3)").accessibleName(), "WCR of pot 3, as read");
}

TEST_F(InstructionPageTest, CellTellsWhatItsRegisterIsWorth) {
    click(kPage, "cmdRDData(6)");
    EXPECT_EQ(text("lblRdData(6)"), "80");
    enter(kPage, "txtWrData(6)", "5A");
    EXPECT_EQ(widget(kPage, "txtWrData(6)").accessibleDescription(), "differs from read");
    click(kPage, "cdmWrData(6)");
    EXPECT_EQ(widget(kPage, "txtWrData(6)").accessibleDescription(), "") << "what was read is old now";
    EXPECT_EQ(text("writes(2)") + text("writes(1)"), "1 write0 writes");
    (void)bench.events().deliver([this] { bench.frmVRK_User1->cmdSampleWiper_Click(1); });
    EXPECT_EQ(text("wiperVolts(1)"),
              QString("wiper %1 V").arg(bench.frmVRK_User1->lblWiperVolts[1].caption().c_str()));
    EXPECT_EQ(text("wiperVolts(2)"), "");
    choose(4, 1, 2);
    EXPECT_EQ(text("instructionWords"), "Transfer data register 2 of pot 1 to its wiper register");
    click(kPage, "cmdDoInstruction");
    EXPECT_EQ(text("lblRDWcr(1)"), ">>");
    EXPECT_EQ(widget(kPage, "transfers").accessibleName(), "Transferred: data register 2 to WCR in pot 1");
    EXPECT_EQ(widget<qt::LampWidget>(kPage, "ShpDataRd(6)").word(), "source");
    click(kPage, "cmdRdWCR(1)");
    EXPECT_EQ(text("lblRDWcr(1)"), "5A");
    EXPECT_EQ(widget(kPage, "transfers").accessibleName(), "No transfer");
    // A failed read shows, though the model's lamp blinks as for a good one.
    w.bus.socket(std::nullopt);
    boxes.expect("Invalid I2C address", "Retry");
    click(kPage, "cmdRdWCR(1)");
    EXPECT_TRUE(widget(kPage, "failed.lblRDWcr(1)").isVisible());
    EXPECT_FALSE(widget(kPage, "failed.lblRDWcr(2)").isVisible());
    bool told = false;
    for (const auto* label : widget(kPage, "cell(1,0)").findChildren<QLabel*>())
        told = told || label->text() == "last read failed";
    EXPECT_TRUE(told);
    boxes.expect("Invalid I2C address", "Abort"); // else there is one for each of the twenty registers
    click(kPage, "cmdReadAll");
}

TEST_F(InstructionPageTest, ByteIsPutTogetherBeforeItIsSent) {
    EXPECT_EQ(text("instructionWords"), "Choose an instruction,\nthen pot and register");
    choose(2, 2, 1);
    EXPECT_EQ(text("lblSet(4)"), "B6");
    EXPECT_EQ(text("instructionWords"), "Read data register 1 of pot 2");
    EXPECT_EQ(text("instructionFurther"), "1 byte comes back · slave 50 hex");
    QString bits;
    for (int bit = 0; bit < 8; ++bit)
        bits += text("bit(" + std::to_string(bit) + ")");
    EXPECT_EQ(bits, "10110110");
    QTest::keyClick(&workspace, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(text("lblReadValue"), "80");
    // The increments go to the pot of the field, which a change of instruction has put back.
    choose(0, 3, -1);
    choose(1, -1, -1);
    choose(8, -1, -1);
    EXPECT_EQ(text("lblSet(4)") + text("bit(7)"), "230");
    EXPECT_EQ(text("instructionWords"), "Step wiper register of pot 0");
    EXPECT_EQ(text("instructionFurther"), "sent as 20 hex · clocks follow, one a step · slave 50 hex");
    choose(8, 2, -1);
    choose(8, 3, -1);
    EXPECT_EQ(text("instructionFurther"), "clocks follow, one a step · slave 50 hex");
    workspace.resize(1280, 720); // Go stands below, the buttons of the increments above
    settle();
    widget(kPage, "cmdDoInstruction").setFocus(); // scrolls there
    settle();
    click(kPage, "cmdDoInstruction");
    EXPECT_TRUE(widget(kPage, "lblRDWcr(3)").isVisible());
    EXPECT_FALSE(widget(kPage, "lblRDWcr(2)").isVisible());
    settle();
    EXPECT_FALSE(widget(kPage, "cmdIncrWip(2)").visibleRegion().isEmpty());
    EXPECT_EQ(workspace.focusWidget(), &widget(kPage, "cmdIncrWip(0)"));
    EXPECT_FALSE(widget("frmVRK_User1", "cmdMMenu").isEnabled());
    workspace.open(*findPageRow("frmVRK_UD1")); // refused, with a word
    EXPECT_EQ(workspace.front(), &page(kPage));
    EXPECT_EQ(bench.context().results.kept().back().detail, "this page waits; Increments of pot 3 runs");
    // Away and back, the keyboard is on the page.
    (void)bench.frm_q4410.userClose();
    workspace.open(*findPageRow(kPage));
    settle();
    EXPECT_TRUE(page(kPage).holds(*workspace.focusWidget()));
    click(kPage, "cmdIncrWip(0)");
    QTest::keyClick(&workspace, Qt::Key_Escape);
    QTest::qWait(1);
    EXPECT_EQ(text("lblRDWcr(3)"), "81");
    EXPECT_TRUE(widget(kPage, "lblRDWcr(2)").isVisible());
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return workspace.focusWidget() == &widget(kPage, "cmdDoInstruction"); }, 1000));
}

/// The SPI panel with a part of its families, as the part's row of the parameter file sets it up.
class SpiFamilyTest : public WindowTest {
  protected:
    explicit SpiFamilyTest(const char* part = "Q3310") : WindowTest(part) {
        workspace.resize(1600, 1000);
        click("frmStartup", "open.SPI");
        click("frmVRK_SPI1", "OptVCC(0)");
    }
    void chooseFamily(const char* product) {
        (void)bench.events().deliver([this, product] { bench.frmVRK_SPI1->lblProduct.setCaption(product); });
    }
};

TEST_F(SpiFamilyTest, SingleWiperPageHasARowForEachRegister) {
    constexpr const char* kSingle = "Frm3310";
    chooseFamily("Q3310/1");
    enter("frmVRK_SPI1", "txtSPIRDQuantity", "4");
    click("frmVRK_SPI1", "cmdI2Read(0)");
    (void)bench.events().deliver([this] { bench.Frm3310.show(); });
    for (int index = 0; index < 5; ++index) {
        const std::string at = "(" + std::to_string(index) + ")";
        const std::string name = index == 0 ? "Wiper" : "Data " + std::to_string(index - 1);
        EXPECT_EQ(widget(kSingle, "CMDq331X_Read" + at).accessibleName().toStdString(), "Read " + name);
        EXPECT_EQ(widget(kSingle, "CMDq331X_Write" + at).accessibleName().toStdString(), "Write " + name);
        EXPECT_EQ(widget(kSingle, "lblRdq331x" + at).accessibleName().toStdString(), name + ", as read");
        enter(kSingle, "txtWrQ3319" + at, ("1a" + std::to_string(index)).c_str());
        click(kSingle, "CMDq331X_Write" + at);
        const int row = widget(kSingle, "lblRdq331x" + at).y();
        EXPECT_LT(std::abs(widget(kSingle, "txtWrQ3319" + at).y() - row), 24);
        EXPECT_TRUE(index == 0 ||
                    std::abs(widget(kSingle, "cmdQ331xWipertoData(" + std::to_string(index - 1) + ")").y() -
                             row) < 24);
    }
    click(kSingle, "cmdQ331xDatatoWiper(2)");
    QTest::keyClick(&workspace, Qt::Key_F5); // reads the wiper
    EXPECT_EQ(widget<QLabel>(kSingle, "lblRdq331x(0)").text(), "1A3");
}

struct SpiQuadTest : SpiFamilyTest {
    SpiQuadTest() : SpiFamilyTest("Q4420") {}
};

TEST_F(SpiQuadTest, SpiInstructionsStandOnTheSamePageUnderTheirOwnWords) {
    constexpr const char* kQuad = "frm_q4420";
    chooseFamily("Q4420/1");
    for (const char* box : {"txtSPIRDQuantity", "txtSPIWrCount"})
        enter("frmVRK_SPI1", box, "3");
    (void)bench.events().deliver([this] { bench.frmVRK_SPI1->cmdShowq4410_Click(); });
    click(kQuad, "cmdRDData(6)");
    EXPECT_EQ(widget<QLabel>(kQuad, "lblRdData(6)").text(), "80");
    EXPECT_EQ(widget<QLabel>(kQuad, "Label1").text(), "USB Comm.");
    EXPECT_EQ(widget<QLabel>(kQuad, "instructionFurther").text(), "1 byte comes back · ID 50 hex");
    for (const char* button :
         {"OptInstruction(8)", "OptWiper(2)", "cmdDoInstruction", "cmdIncrWip(0)", "cmdIncrWip(2)"})
        click(kQuad, button);
    EXPECT_EQ(widget<QLabel>(kQuad, "lblRDWcr(2)").text(), "81");
}

} // namespace
} // namespace vrk
