#include "tests/windows/WindowTest.h"
#include "views/plot/Plot.h"

#include <QAction>
#include <QImage>
#include <QLabel>
#include <QLineEdit>

#include <fstream>

namespace vrk {
namespace {

class I2cPageTest : public WindowTest {
  protected:
    explicit I2cPageTest(const char* part = "KV4074") : WindowTest(part) {
        workspace.resize(1600, 1000);
        openI2c();
        choose("mnu_KV4074");
    }
    void choose(const char* entry) { WindowTest::choose(kI2c, entry); }
    QString text(const std::string& path) { return widget<QLabel>(kI2c, path).text(); }
    QString word(const std::string& lamp) { return widget<qt::LampWidget>(kI2c, lamp).word(); }
    Plot& plot() { return widget<Plot>(kI2c, "wiperPlot"); }
    std::size_t points(std::size_t channel) {
        return plot().model().panes.at(0).series.at(channel).points.size();
    }
    void type(const char* path, const char* words) {
        auto& field = widget<QLineEdit>(kI2c, path);
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, words);
    }
};

TEST_F(I2cPageTest, EachFieldStandsInItsPlaceUnderItsName) {
    expectPlaces(
        kI2c, {
                  {"cmdReadAllWipers(0)", "Read All", "head"},
                  {"cmdReadAllWipers(1)", "Set Write = Read", "head"},
                  {"cmdMMenu", "Main Menu", "head"},
                  {"lblPotRead(1)", "Position read, channel 1", "strip(1)"},
                  {"lblPotReadhex(2)", "Position read, hexadecimal, channel 2", "strip(2)"},
                  {"lblWiperVolts(3)", "Wiper volts, channel 3", "strip(3)"},
                  {"ProgressBar1(1)", "Position read as a bar, channel 1", "strip(1)"},
                  {"Slider1(2)", "Position, channel 2", "strip(2)"},
                  {"txtDECDataWrt(1)", "Position to write, decimal, channel 1", "strip(1)"},
                  {"txtHexDataWrt(3)", "Position to write, hexadecimal, channel 3", "strip(3)"},
                  {"CMDxMIT(2)", "Write channel 2", "strip(2)"},
                  {"cmdI2Read(1)", "Read channel 1", "strip(1)"},
                  {"cmdSampleWiper(3)", "Read volts of channel 3", "strip(3)"},
                  {"ChkAutoRead(1)", "Auto Read, channel 1", "strip(1)"},
                  {"txtFactor(2)", "AD factor, channel 2", "strip(2)"},
                  {"List1(3)", "Positions, channel 3", "strip(3)"},
                  {"OptVCC(0)", "VCC on", "section.Supply"},
                  {"OptVCC(1)", "VCC off", "section.Supply"},
                  {"OptVM(0)", "V− on", "section.Supply"},
                  {"OptVM(1)", "V− off", "section.Supply"},
                  {"ShpVCCon", "VCC", "section.Supply"},
                  {"ShVM", "V−", "section.Supply"},
                  {"CboVCC", "VCC", "section.Supply"},
                  {"lblVCCVolts", "VCC measured", "section.Supply"},
                  {"lblSPICode", "Code of the level", "section.Supply"},
                  {"txtADOffset", "Offset", "section.Supply"},
                  {"txtADGain", "Gain", "section.Supply"},
                  {"OptChans(2)", "4 channels", "section.Set-up"},
                  {"OptTaps(3)", "100 taps", "section.Set-up"},
                  {"cboRegSize", "Address Size", "section.Set-up"},
                  {"cboDataSize", "Data Size", "section.Set-up"},
                  {"txtCalcAddr", "Address computed from the pins", "section.Set-up"},
                  {"txtDeviceAdr", "Address", "section.Set-up"},
                  {"txtACRAddress", "Control register's address", "section.Control register"},
                  {"txtACR(0)", "control register, to write", "section.Control register"},
                  {"txtACR(1)", "control register, as read", "section.Control register"},
                  {"cmdACRWrite", "Write control register", "section.Control register"},
                  {"cmdACRRead", "Read control register", "section.Control register"},
                  {"Shape2(0)", "ACR write", "section.Control register"},
                  {"Shape2(1)", "ACR read", "section.Control register"},
                  {"ChkShutDown2", "/ShutDown /Wp", "section.Shutdown pin"},
                  {"txtGPAddress", "General purpose register's address", "section.General Purpose Register"},
                  {"txtGPWrite", "general purpose register, to write", "section.General Purpose Register"},
                  {"cmdWriteGP", "Write general purpose register", "section.General Purpose Register"},
                  {"cmdGPRead", "Read general purpose register", "section.General Purpose Register"},
                  {"Shape2(2)", "Register write", "section.General Purpose Register"},
                  {"Shape2(3)", "Register read", "section.General Purpose Register"},
                  {"txtWrQ3319(3)", "Data 2, to write", "section.Q3318/9"},
                  {"CMDq331X_Write(2)", "Write Data 1", "section.Q3318/9"},
                  {"CMDq331X_Read(4)", "Read Data 3", "section.Q3318/9"},
                  {"lblBank", "Bank chosen", "section.Q4422"},
                  {"lblNvWrites", "Non-volatile writes since", "section.Non-volatile writes"},
                  {"lblNvRegisters", "Non-volatile writes by register", "section.Non-volatile writes"},
                  {"txtNvBudget", "Warn above", "section.Non-volatile writes"},
                  {"ShpAttach", "USB Attach", "section.Status"},
                  {"Shp_USB_Transfer", "USB Comm", "section.Status"},
                  {"Shape1(1)", "Write VRK", "section.Status"},
                  {"Shape1(2)", "Read VRK", "section.Status"},
              });
}

TEST_F(I2cPageTest, AFailedReadMarksItsOwnChannelUntilTheNextGoodOne) {
    enter(kI2c, "txtHexDataWrt(1)", "22");
    enter(kI2c, "txtHexDataWrt(2)", "23");
    click(kI2c, "cmdI2Read(1)");
    click(kI2c, "cmdI2Read(2)");
    EXPECT_FALSE(widget(kI2c, "differs(2)").isVisible());
    enter(kI2c, "txtHexDataWrt(2)", "40");
    EXPECT_TRUE(widget(kI2c, "differs(2)").isVisible());
    EXPECT_FALSE(widget(kI2c, "differs(1)").isVisible());
    w.bus.socket(std::nullopt);
    boxes.expect("Invalid I2C address", "Retry");
    click(kI2c, "cmdI2Read(2)");
    EXPECT_EQ(word("read(2)"), "failed");
    EXPECT_EQ(word("written(2)"), "good");
    EXPECT_EQ(word("read(1)"), "good");
    EXPECT_TRUE(text("age(2)").startsWith("last read failed; good "));
    EXPECT_EQ(text("lblPotRead(2)"), "35");
    EXPECT_TRUE(widget(kI2c, "differs(2)").isVisible()); // 40 was written, 23 is what is known of it
    EXPECT_EQ(points(2), 1U);                            // the failed read left none
    EXPECT_EQ(text("lblPotRead(3)"), qt::kNeverRead);
    EXPECT_EQ(text("age(3)"), "not read yet");
    enter(kI2c, "txtDeviceAdr", "A2");
    EXPECT_TRUE(text("age(1)").endsWith("old, the address changed since"));
    EXPECT_EQ(word("read(1)"), "off"); // of another address
    enter(kI2c, "txtDeviceAdr", "A0");
    w.bus.socket("KV4074");
    click(kI2c, "cmdI2Read(2)");
    EXPECT_EQ(word("read(2)"), "good");
    EXPECT_TRUE(text("age(2)").startsWith("read "));
}

TEST_F(I2cPageTest, FieldsOfARegisterStandUnderItsByteAndAreChosenByName) {
    const auto choice = [this](const char* name) -> QComboBox& { return widget<QComboBox>(kI2c, name); };
    const auto take = [&choice](const char* name, int row) {
        choice(name).setCurrentIndex(row);
        Q_EMIT choice(name).activated(row);
        QTest::qWait(1);
    };
    EXPECT_EQ(choice("field.ACR.STORE").currentText(), "WR Register"); // C0 is to be written
    EXPECT_EQ(choice("field.ACR.SHDN").currentText(), "running");
    EXPECT_EQ(text("read.ACR.STORE"), qt::kNeverRead);
    click(kI2c, "cmdACRRead"); // 40
    EXPECT_EQ(text("read.ACR.STORE"), "IVR EEPROM");
    EXPECT_EQ(text("read.ACR.SHDN"), "running");
    take("field.ACR.SHDN", 0);
    EXPECT_EQ(bench.frmVRK_User1->txtACR[0].text(), "80");
    EXPECT_EQ(bench.frmVRK_User1->wipers.ACRImage, 0x80);
    take("field.ACR.STORE", 0);
    EXPECT_EQ(bench.frmVRK_User1->txtACR[0].text(), "00");
    EXPECT_EQ(text("read.ACR.SHDN"), "running"); // nothing was sent
    enter(kI2c, "txtHexDataWrt(2)", "23");
    EXPECT_EQ(text("stores(2)"), "1");
    EXPECT_EQ(text("stores(1)"), "0");
    enter(kI2c, "txtACRAddress", "7"); // a general purpose register without fields
    EXPECT_EQ(page(kI2c).find("field.ACR.STORE"), nullptr);
}

TEST_F(I2cPageTest, StepButtonsMoveTheWiperByOne) {
    enter(kI2c, "txtHexDataWrt(1)", "30");
    click(kI2c, "stepUp(1)");
    EXPECT_EQ(w.bus.state().part->wipers.at(1), 0x31);
    click(kI2c, "stepDown(1)");
    click(kI2c, "stepDown(1)");
    EXPECT_EQ(w.bus.state().part->wipers.at(1), 0x2F);
}

TEST_F(I2cPageTest, OneChannelLiesWideAndSeveralStandInTheirOrder) {
    const auto strip = [this](int channel) -> QWidget& {
        return *page(kI2c).page()->findChild<QWidget*>("strip(" + QString::number(channel) + ")");
    };
    for (int channel = 1; channel < 4; ++channel)
        EXPECT_GE(strip(channel).x(), strip(channel - 1).geometry().right());
    EXPECT_GT(widget(kI2c, "CMDxMIT(0)").mapTo(&strip(0), QPoint()).y(),
              widget(kI2c, "cmdI2Read(0)").mapTo(&strip(0), QPoint()).y());
    choose("mnu_KV4071");
    EXPECT_TRUE(strip(1).isHidden());
    EXPECT_GT(widget(kI2c, "CMDxMIT(0)").mapTo(&strip(0), QPoint()).x(),
              widget(kI2c, "cmdI2Read(0)").mapTo(&strip(0), QPoint()).x());
    EXPECT_GT(strip(0).width(), 3 * strip(0).height() / 2);
}

TEST_F(I2cPageTest, KeysAloneReachEveryFieldOfAChannelInReadingOrder) {
    bringToFront(kI2c);
    widget(kI2c, "cmdI2Read(1)").setFocus();
    for (const char* path :
         {"ChkAutoRead(1)", "cmdSampleWiper(1)", "txtFactor(1)", "stepDown(1)", "Slider1(1)", "stepUp(1)",
          "txtDECDataWrt(1)", "txtHexDataWrt(1)", "CMDxMIT(1)", "List1(1)"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget()->objectName().toStdString(), path);
    }
}

TEST_F(I2cPageTest, ASweepFillsThePlotAndWrongValuesAreTold) {
    bringToFront(kI2c);
    EXPECT_EQ(widget<QLineEdit>(kI2c, "sweepTo").text(), "127"); // the last position of 128 taps
    click(kI2c, "sweepHead");
    EXPECT_EQ(QApplication::focusWidget(), &widget(kI2c, "sweepFrom"));
    widget<QComboBox>(kI2c, "sweepChannel").setCurrentIndex(1);
    type("sweepFrom", "5");
    type("sweepTo", "15");
    type("sweepStep", "4");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(points(1), 4U); // 5, 9, 13, 15
    EXPECT_EQ(points(0), 0U);
    EXPECT_TRUE(plot().model().csv().startsWith("channel,position,volts,error in LSB\n1,5,0."));
    EXPECT_EQ(w.bus.state().part->wipers.at(1), 15);
    QTest::keyClick(&plot(), Qt::Key_End);
    EXPECT_TRUE(plot().spotWords().startsWith("15 · 0.")) << plot().spotWords().toStdString();
    EXPECT_TRUE(plot().spotWords().endsWith(" LSB"));
    type("sweepStep", "x");
    click(kI2c, "sweep");
    EXPECT_EQ(bench.context().results.kept().back().text, "\"x\" is no whole number");
    type("sweepStep", "0");
    boxes.expect("in steps of at least 1", "OK");
    click(kI2c, "sweep");
    EXPECT_EQ(points(1), 4U);
    click(kI2c, "OptTaps(5)");
    EXPECT_EQ(points(1), 0U); // they belong to another number of taps
    EXPECT_EQ(plot().model().x.to, 256);
}

TEST(PlotTest, ZoomsKeepsPeaksAndPacesItsDrawing) {
    Plot plot("Test");
    plot.resize(600, 300);
    PlotModel& model = plot.model();
    model.x.to = 1e6;
    model.panes.resize(1);
    model.panes[0].series.resize(1);
    auto& trace = model.panes[0].series[0].points;
    for (int at = 0; at < 1'000'000; ++at)
        trace.emplace_back(at, at == 700'123 ? 1.0 : 0.0);
    const QImage picture = plot.grab().toImage();
    const QRgb ink = qt::colours().channels[0].rgb();
    bool peak = false;
    for (int x = 0; x < picture.width(); ++x)
        peak = peak || picture.pixel(x, 120) == ink;
    EXPECT_TRUE(peak); // one point of a million, far above the others
    plot.show();
    QElapsedTimer clock;
    clock.start();
    const int before = plot.redraws();
    while (clock.elapsed() < 450) {
        plot.changed();
        QTest::qWait(1);
    }
    EXPECT_LE(plot.redraws() - before, clock.elapsed() / 100 + 1); // ten a second, however often it changed
    EXPECT_GE(plot.redraws() - before, 1);
    plot.zoom(2e5, 3e5);
    QTest::keyClick(&plot, Qt::Key_Plus);
    EXPECT_LT(plot.to() - plot.from(), 1e5);
    QTest::keyClick(&plot, Qt::Key_0);
    EXPECT_LE(plot.to(), plot.from()); // all of it

    TemporaryFolder folder;
    const struct {
        const char* name;
        const char* start;
    } kFiles[] = {{"a.png", "\x89PNG"}, {"a.pdf", "%PDF"}, {"a.svg", "<?xml"}, {"a.csv", "series,"}};
    trace.resize(1000);
    for (const auto& [name, start] : kFiles) {
        const auto path = folder.path() / name;
        EXPECT_EQ(plot.drawing().save(QString::fromStdString(path.string())), "");
        std::ifstream file(path);
        std::string first(std::string(start).size(), ' ');
        file.read(first.data(), static_cast<std::streamsize>(first.size()));
        EXPECT_EQ(first, start);
    }
    EXPECT_NE(plot.drawing().save("/no/such/folder/a.png"), "");
}

} // namespace
} // namespace vrk
