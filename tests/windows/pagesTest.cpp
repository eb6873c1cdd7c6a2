#include "tests/windows/WindowTest.h"

#include "views/pages.h"
#include "views/pages/boxes.h"
#include "views/pages/pinRows.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vrk {
namespace {

constexpr const char* kHome = "frmStartup";
constexpr const char* kLink = "frmMainF340";
constexpr const char* kBoard = "frmMotherboardDAQ2";

class PagesTest : public WindowTest {
  protected:
    /// Loads the consoles as a first choice does, and opens the page from the rail.
    void open(const char* panel) {
        openI2c();
        workspace.open(*findPageRow(panel));
        bringToFront(panel);
    }
    QString text(const char* panel, const std::string& path) { return widget<QLabel>(panel, path).text(); }
    void key(const char* panel, int code, Qt::KeyboardModifiers with = {}) {
        ASSERT_EQ(workspace.front(), &page(panel));
        QTest::keyClick(&workspace, static_cast<Qt::Key>(code), with);
        QTest::qWait(1);
    }
};

/// Fields, lamps and buttons that could be taken for one another: what each is called, and where it stands.
TEST_F(PagesTest, EveryTwinHasItsOwnNameAndPlace) {
    const struct {
        const char* panel;
        const char* path;
        const char* name;
        const char* place;
    } kRows[] = {
        {kLink, "chkGPvalueP1(6)", "P1.6 HI", "Port 1"},
        {kLink, "chkOpenCollectorP1(6)", "P1.6 push-pull", "Port 1"},
        {kLink, "chkDINP1(6)", "P1.6 analog", "Port 1"},
        {kLink, "chkGPvalueP4(0)", "P4.0 HI", "Port 4"},
        {kLink, "lblWrGPData(1)", "P1 data written", "Port 1"},
        {kLink, "lblRdGPData(1)", "P1 data read", "Port 1"},
        {kLink, "lblWrOC(2)", "P2 mode written", "Port 2"},
        {kLink, "lblRdOC(2)", "P2 mode read", "Port 2"},
        {kLink, "lblRdGPAnalog(3)", "P3 analog read", "Port 3"},
        {kLink, "ShpGPIOStat(3)", "P3 mode: read equals written", "Port 3"},
        {kLink, "ShpGPIOStat(8)", "P3 data: read equals written", "Port 3"},
        {kLink, "ShpGPIOStat(13)", "P3 analog: read equals written", "Port 3"},
        {kLink, "cmdWrGPData(0)", "Write P0 data", "Port 0"},
        {kLink, "cmdRdOC(0)", "Read P0 mode", "Port 0"},
        {kLink, "cmdWrGPAnalog(4)", "Write P4 analog", "Port 4"},
        {kLink, "txtSFRAddress", "Register address", "One register"},
        {kLink, "txtSFRWRData", "Value to write", "One register"},
        {kLink, "lblSFRBuf(1)", "error", "One register"},
        {kLink, "lblSFRBuf(3)", "data", "One register"},
        {kLink, "txtPBuf(6)", "A4: P0MDOUT to write", "Special function registers (hex)"},
        {kLink, "txtPBufRd(6)", "A4: P0MDOUT as read", "Special function registers (hex)"},
        {kLink, "ShpSKFRd(25)", "F8: SPI0CN read", "Special function registers (hex)"},
        {kLink, "txtNumToRead", "Number of bytes to read", "Read and write"},
        {kLink, "txtStartRegRD", "Start register of the read", "Read and write"},
        {kLink, "txtStartRegWr", "Start register of the write", "Read and write"},
        {kLink, "txtWriteIndividual(0)", "Value 1 of the toggle", "Individual register with toggle"},
        {kLink, "txtWriteVal(31)", "Byte to write, register 1F", "Bytes by register (hex)"},
        {kLink, "txtReadVal(31)", "Byte read, register 1F", "Bytes by register (hex)"},
        {kLink, "lblADCClockDaa(3)", "Clock reply: ADOSC", "On-chip converter"},
        {kLink, "cboEVBinstance", "Board instance", "head"},
        {kBoard, "chkPData(10)", "P1.2 HI", "Port 1"},
        {kBoard, "chkP0OutEn(10)", "P1.2 drive", "Port 1"},
        {kBoard, "txtPBuf(1)", "P1 Data to write", "Port 1"},
        {kBoard, "txtPBufRd(4)", "P1Enable as read", "Port 1"},
        {kBoard, "ShpVCCon", "VCC", "Supply"},
        {kBoard, "ShpVCCMinusOn", "V−", "Supply"},
        {kBoard, "lblVCCVoltsRDBK", "VCC read back, volts", "Supply"},
        {kBoard, "txtSPIwr(7)", "Write Data, cell 3", "Supply DAC U5 (hex)"},
        {kBoard, "txtRdgs(0)", "Last reading, volts", "Analog input"},
        {kBoard, "txtGPIOUserName(4)", "Vin4 VCC/2, volts", "Inputs"},
        {kBoard, "txtI2COut(1)", "I2C write, address", "I2C I/O"},
        {kBoard, "txtI2CIN(2)", "I2C read, register", "I2C I/O"},
        {kBoard, "ShpI2CNAK(1)", "I2C read", "I2C I/O"},
        {kBoard, "txtSPIWrite3Data(2)", "Row 3 byte 2", "SPI I/O"},
        {kBoard, "txtSPIORead3(2)", "Row 3 byte read 2", "SPI I/O"},
    };
    open(kLink);
    workspace.open(*findPageRow(kBoard));
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.path);
        const QWidget& found = widget(row.panel, row.path);
        EXPECT_TRUE(found.accessibleName().startsWith(row.name)) << found.accessibleName().toStdString();
        EXPECT_EQ(place(found), QString(row.place));
    }
}

/// At twice the size on a small screen.
TEST_F(PagesTest, SmallWindowCutsNoButtonOfTheHeadAndShowsWhoHasTheKeyboard) {
    open(kLink);
    const QSize usual = workspace.size();
    workspace.resize(640, 360);
    for (const char* path : {"cmdFirmwareVersion", "cmdHoswMother", "cmdReconnect", "cmdQuit"}) {
        QWidget& button = widget(kLink, path);
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return button.isVisible() && button.width() >= button.sizeHint().width(); }, 1000))
            << path;
        button.setFocus();
        EXPECT_TRUE(
            QTest::qWaitFor([&] { return button.visibleRegion().boundingRect() == button.rect(); }, 1000))
            << path;
    }
    key(kLink, Qt::Key_1, Qt::ControlModifier); // a tab without a field
    EXPECT_EQ(workspace.focusWidget(), &widget(kLink, "SSTab1"));
    workspace.resize(usual);
    EXPECT_TRUE(QTest::qWaitFor([this] { return place(widget(kLink, "cmdQuit")) == "head"; }, 1000));
}

/// F5 and Ctrl+Enter on each tab: the last command that goes to the board tells which button they pressed.
TEST_F(PagesTest, KeysReadAndWriteWhatIsInFront) {
    const struct {
        int tab;
        int key;
        int count;                       ///< of reports out
        std::initializer_list<int> last; ///< bytes of the last of them, from the command on
    } kRows[] = {
        {0, Qt::Key_F5, 1, {0x00}},
        {1, Qt::Key_F5, 1, {0x06, 0x51}},
        {1, Qt::Key_Return, 1, {0x06, 0x50}},
        {2, Qt::Key_Return, 1, {0x09}},
        {3, Qt::Key_F5, 26, {0x12, 0x01, 0xF8}},
        {3, Qt::Key_Return, 28, {0x12, 0x01, 0xF5}},
        {4, Qt::Key_F5, 26, {0x12, 0x01, 0xF8}},
        {4, Qt::Key_Return, 1, {0x12, 0x00, 0xA4, 0x11}},
        {5, Qt::Key_F5, 1, {0x11}},
        {5, Qt::Key_Return, 8, {0x0C}},
    };
    open(kLink);
    auto& console = *bench.frmMainF340;
    console.txtI2Caddress.setText("50");
    console.txtNumToWrite.setText("1");
    std::vector<hid::Report> out;
    const Subscription wire = w.recorder.observe([&](const hid::WireEvent& event) {
        if (event.direction == hid::WireEvent::Direction::Out)
            out.push_back(event.report);
    });
    for (const auto& row : kRows) {
        SCOPED_TRACE(QString("tab %1, key %2").arg(row.tab).arg(row.key, 0, 16).toStdString());
        key(kLink, Qt::Key_1 + row.tab, Qt::ControlModifier);
        ASSERT_EQ(console.SSTab1.listIndex(), row.tab);
        console.txtSFRAddress.setText("A4");
        console.txtSFRWRData.setText("11");
        out.clear();
        key(kLink, row.key, row.key == Qt::Key_F5 ? Qt::NoModifier : Qt::ControlModifier);
        EXPECT_EQ(static_cast<int>(out.size()), row.count);
        ASSERT_FALSE(out.empty());
        std::string bytes;
        for (int at = 0; at < 6; ++at)
            bytes += QString("%1 ").arg(out.back()[static_cast<std::size_t>(at)], 2, 16).toStdString();
        int at = 1;
        for (const int byte : row.last)
            EXPECT_EQ(out.back()[static_cast<std::size_t>(at++)], byte) << bytes;
    }
}

TEST_F(PagesTest, APinThatReadsOtherThanWrittenIsTinted) {
    open(kLink);
    key(kLink, Qt::Key_4, Qt::ControlModifier);
    auto& pin = dynamic_cast<PinRow&>(widget(kLink, "pin.P0.0"));
    auto& pair = dynamic_cast<DiffersGround&>(widget(kLink, "pair.lblWrGPData(0)"));
    EXPECT_EQ(pin.nowWord(), "drives LO"); // the console's load drives it
    EXPECT_FALSE(pair.differs());
    EXPECT_EQ(text(kLink, "lblRdGPData(4)"), qt::kNeverRead);
    click(kLink, "chkGPvalueP0(0)");
    EXPECT_EQ(pin.nowWord(), "reads LO"); // set, but not written yet
    EXPECT_TRUE(pair.differs());
    click(kLink, "cmdWrGPData(0)");
    click(kLink, "cmdRdGPData(0)");
    EXPECT_EQ(pin.nowWord(), "drives HI");
    EXPECT_FALSE(pair.differs());
    EXPECT_EQ(text(kLink, "lblRdGPData(0)"), text(kLink, "lblWrGPData(0)"));
}

TEST_F(PagesTest, ConsoleAndPanelTellOneSupply) {
    open(kBoard);
    EXPECT_EQ(widget<qt::LampWidget>(kBoard, "ShpVCCon").word(), "on");
    EXPECT_EQ(text(kBoard, "lblVCCVoltsRDBK"), qt::kNeverRead); // the panel has measured, the console has not
    key(kBoard, Qt::Key_F5);
    EXPECT_EQ(widget<qt::KeyLineEdit>(kBoard, "txtPBufRd(2)").accessibleDescription(), "");
    EXPECT_FALSE(dynamic_cast<DiffersGround&>(widget(kBoard, "pair.txtPBuf(3)")).differs());
    click(kBoard, "OptVCC(1)");
    EXPECT_EQ(widget<qt::LampWidget>("frmVRK_User1", "ShpVCCon").word(), "off");
    EXPECT_TRUE(bench.frmVRK_User1->OptVCC[1].value());
    EXPECT_EQ(w.bus.state().vcc, 0.0);
}

class HomePageTest : public PagesTest {};

TEST_F(HomePageTest, CardsFollowThePartInTheSocket) {
    bringToFront(kHome);
    auto& part = widget<QComboBox>(kHome, "socket.part");
    auto& card = dynamic_cast<BoxFrame&>(widget(kHome, "card.I2C"));
    EXPECT_TRUE(card.marked());
    EXPECT_EQ(text(kHome, "card.words.I2C"), "socket holds KV4071");
    EXPECT_EQ(text(kHome, "card.words.SPI"), "other part in the socket");

    part.setFocus();
    QTest::keyClick(&part, Qt::Key_Down);
    settle();
    EXPECT_EQ(w.bus.state().part->name, "KV4074");
    EXPECT_EQ(text(kHome, "card.words.I2C"), "socket holds KV4074");
    EXPECT_EQ(widget<QLineEdit>(kHome, "socket.address").text(), "A0");
    QWidget& address = widget(kHome, "socket.address");
    address.setFocus();
    QTest::keyClick(&address, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&address, "a8");
    QTest::keyClick(&address, Qt::Key_Return);
    EXPECT_EQ(w.workspace.page(kHome)->context().socket->state().address, 0xA8);
    click(kHome, "socket.empty");
    settle();
    EXPECT_FALSE(w.bus.state().part.has_value());
    EXPECT_EQ(text(kHome, "card.words.I2C"), "the socket is empty");
    EXPECT_FALSE(card.marked());
}

TEST_F(HomePageTest, ChoosesAmongBoardsAndComesBack) {
    w.bus.setBoards(2);
    openI2c(false);
    workspace.open(*findPageRow(kHome));
    settle();
    EXPECT_EQ(text(kHome, "home.instance.of"), "1 of 2");
    auto& instance = widget<QComboBox>(kHome, "home.instance");
    instance.setFocus();
    QTest::keyClick(&instance, Qt::Key_Down);
    settle();
    EXPECT_EQ(bench.link().instance(), 1);
    EXPECT_EQ(text(kHome, "home.instance.of"), "2 of 2");
    EXPECT_EQ(text(kHome, "home.firmware"), qt::kNeverRead);
    click(kHome, "home.reconnect");
    settle();
    EXPECT_EQ(text(kHome, "home.firmware"), "1.2 - 2008/June/12");
    EXPECT_EQ(bench.link().instance(), 0);
    bringToFront("frmVRK_User1");
    click("frmVRK_User1", "cmdMMenu");
    EXPECT_EQ(workspace.front(), workspace.page(kHome));
    EXPECT_EQ(bench.frmStartup->cboVRKSelect.listIndex(), frmStartup::kHead);
    EXPECT_TRUE(widget(kHome, "Shpstatus(2)").isVisible() || bench.frmStartup->Timer1.running());
}

TEST_F(HomePageTest, SaysThatTheBoardIsSilent) {
    open(kLink);
    w.bus.fault({.kind = sim::FaultKind::NoReply});
    boxes.expect("", "Retry", [this] {
        QTest::qWait(260);
        EXPECT_EQ(text(kHome, "home.board"), "Simulated board silent");
    });
    click(kLink, "cmdFirmwareVersion");
    settle();
    EXPECT_EQ(text(kHome, "home.board"), "Simulated board attached");
}

} // namespace
} // namespace vrk
