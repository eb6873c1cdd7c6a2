#include "tests/panels/I2cPanelTest.h"

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SupplyBlockTest : public I2cPanelTest {
  protected:
    /// Values that went to P2's latch, where bit 5 switches VCC and bit 6 V-.
    std::vector<std::string> portTwo() {
        std::vector<std::string> values;
        for (const std::string& report : sent(Command::SfrAccess, 5))
            if (report.substr(0, 11) == "01 12 00 A0")
                values.push_back(report.substr(12));
        return values;
    }
    /// Frames that went to the supply DAC.
    std::vector<std::string> frames() {
        std::vector<std::string> all;
        for (const std::string& report : sent(Command::SpiTransfer, 10))
            all.push_back(report.substr(18));
        return all;
    }
};

TEST_F(SupplyBlockTest, TrackedSuppliesComeUpOffAndSwitchInOneWrite) {
    openI2c(false);
    EXPECT_EQ(bus.state().vcc, 0);
    EXPECT_EQ(bus.state().vminus, 0);
    EXPECT_EQ(bus.state().code, 0x5F);
    EXPECT_TRUE(i2c().OptVM[0].userClick().refused()); // V- follows VCC
    i2c().OptVCC[0].userClick();
    // The switch, the shutdown pin's write of all ports, then the DAC's chip select low and high.
    EXPECT_THAT(portTwo(), ElementsAre("70", "70", "60", "70"));
    EXPECT_EQ(bus.state().code, 0x72);
    EXPECT_GT(bus.state().vcc, 4.5);
    EXPECT_LT(bus.state().vminus, -4.5);
    EXPECT_NEAR(leadingNumber(i2c().lblVCCVolts.caption()), bus.state().vcc, kStep);
    EXPECT_EQ(i2c().ShpVCCon.colour(), Colour::LightRed);
    EXPECT_EQ(i2c().ShVM.colour(), Colour::LightRed);
    EXPECT_EQ(board().ShpVCCon.colour(), Colour::LightRed);
    EXPECT_EQ(board().ShpVCCMinusOn.colour(), Colour::LightRed);
    EXPECT_TRUE(i2c().OptVM[0].value() && board().OptVCCMinus[0].value());
    EXPECT_TRUE(i2c().OptVM[1].userClick().refused() && board().OptVCCMinus[1].userClick().refused());
    i2c().OptVCC[1].userClick();
    EXPECT_EQ(bus.state().vcc, 0);
    EXPECT_EQ(bus.state().vminus, 0);
    EXPECT_EQ(i2c().ShpVCCon.colour(), Colour::Black);
    EXPECT_EQ(i2c().ShVM.colour(), Colour::Black);
    EXPECT_EQ(i2c().lblVCCVolts.caption(), "0.000");
}

TEST_F(SupplyBlockTest, TheLastClickHoldsWhereverInTheSwitchItComes) {
    openI2c(false);
    const auto run = [this](int first, const std::vector<int>& inside, int last, bool console = false) {
        int way = inside.size() % 2 == 1 ? last : 1 - last;
        for (const int ms : inside) {
            at(ms, [&switches = console ? board().OptVCC : i2c().OptVCC, way] {
                (void)switches[way].userClick();
            });
            way = 1 - way;
        }
        (void)i2c().OptVCC[first].userClick();
        clock.sleep(Milliseconds{1000});
        pump();
        const bool on = i2c().OptVCC[0].value();
        EXPECT_EQ(bus.state().vcc > 1, on);
        EXPECT_EQ(bus.state().vminus < -1, i2c().OptVM[0].value());
        EXPECT_EQ(board().OptVCC[0].value(), on);
        EXPECT_EQ(i2c().ShpVCCon.colour() == Colour::LightRed, on);
        EXPECT_EQ(i2c().ShVM.colour() == Colour::LightRed, i2c().OptVM[0].value());
        if (console)
            return;
        EXPECT_EQ(on, last == 0);
        EXPECT_EQ(bench.context().results.kept().back().text, last == 0 ? "VCC on" : "VCC off");
    };
    for (const bool track : {true, false}) {
        if (i2c().ChkTrack.checked() != track)
            (void)i2c().ChkTrack.userClick();
        for (int ms = 0; ms <= 400; ms += ms < 10 ? 1 : 10)
            for (const int last : {1, 0}) {
                SCOPED_TRACE(std::to_string(track) + std::to_string(last) + " " + std::to_string(ms) + " ms");
                run(1 - last, {ms}, last);
                for (int later = ms; later <= 200; later += 20) {
                    (void)i2c().OptVCC[1 - last].userClick();
                    run(last, {ms, later}, last);
                }
                if (track) // else the console's switch leaves VCC on, and says so
                    run(1 - last, {ms}, last, true);
            }
    }
    // Without Track every write of the ports has VCC on again behind its switch. It must not stay on for
    // good.
    (void)i2c().OptVCC[0].userClick();
    (void)i2c().OptVCC[1].userClick();
    for (const int minus : {1, 0})
        (void)i2c().OptVM[minus].userClick();
    EXPECT_GT(bus.state().vcc, 1);
    (void)i2c().cmdMMenu.userClick();
    EXPECT_EQ(bus.state().vcc, 0);
}

TEST_F(SupplyBlockTest, WithoutTrackingTheSuppliesAreSeparate) {
    openI2c(false);
    i2c().ChkTrack.userClick();
    EXPECT_EQ(board().ChkTrack.value(), 0);
    i2c().OptVM[0].userClick();
    EXPECT_LT(bus.state().vminus, -1);
    EXPECT_EQ(bus.state().vcc, 0);
    EXPECT_EQ(i2c().ShVM.colour(), Colour::LightRed);
    i2c().OptVCC[0].userClick();
    EXPECT_GT(bus.state().vcc, 4.5);
    i2c().OptVM[1].userClick();
    EXPECT_EQ(bus.state().vminus, 0);
    EXPECT_GT(bus.state().vcc, 4.5);
    // The pins' image keeps VCC's bit, so both writes of all ports still send it; the console's mirror, which
    // the chip select goes out with, does not.
    sent();
    i2c().OptVCC[1].userClick();
    EXPECT_THAT(portTwo(), ElementsAre("30", "30", "00", "10"));
    EXPECT_EQ(i2c().ShpVCCon.colour(), Colour::Black);
    EXPECT_EQ(bus.state().vcc, 0);
    i2c().OptVCC[0].userClick();
    // Tracking again takes V- along with VCC as it stands.
    i2c().ChkTrack.userClick();
    EXPECT_EQ(board().ChkTrack.value(), 1);
    EXPECT_TRUE(i2c().OptVM[0].value() && i2c().OptVM[1].userClick().refused());
    i2c().OptVCC[1].userClick();
    EXPECT_EQ(bus.state().vcc, 0);
}

TEST_F(SupplyBlockTest, PanelComingToTheFrontWithVccOffSetsTheSuppliesUpAgain) {
    openI2c();
    i2c().CboVCC.userSelect(2);
    bench.frmMainF340.show();
    wire.clear();
    bench.frmVRK_User1.userActivate();
    EXPECT_THAT(sent(), IsEmpty()); // VCC on: left alone
    EXPECT_EQ(i2c().CboVCC.listIndex(), 2);
    i2c().OptVCC[1].userClick();
    bench.frmMainF340.show();
    wire.clear();
    bench.frmVRK_User1.userActivate();
    EXPECT_EQ(link().activePanel, &i2c());
    EXPECT_THAT(frames(), ElementsAre("03 50 C0 3E", "03 50 C0 5F", "03 50 C2 C0"));
    EXPECT_EQ(i2c().CboVCC.listIndex(), 6);
}

TEST_F(SupplyBlockTest, EachRowOfTheVoltsListSendsItsCodeAndMeasures) {
    openI2c();
    const std::pair<const char*, const char*> rows[] = {
        {"2.7", "2C"}, {"3.0", "35"}, {"3.3", "3E"}, {"3.5", "44"}, {"4.0", "54"},
        {"4.5", "63"}, {"5.0", "72"}, {"Min", "00"}, {"Mid", "3F"}, {"Max", "7F"}};
    EXPECT_EQ(board().lblCal_header.caption(), "Defaults");
    EXPECT_EQ(i2c().CboVCC.text(), "5.0");
    ASSERT_EQ(i2c().CboVCC.rowCount(), 10);
    for (int row = 0; row < 10; ++row) {
        SCOPED_TRACE(rows[row].first);
        EXPECT_EQ(i2c().CboVCC.row(row).text, rows[row].first);
        i2c().CboVCC.userSelect(row);
        EXPECT_FALSE(i2c().txtUserVCC.visible());
        i2c().cmdUpdateVCC.userClick();
        EXPECT_THAT(frames(), ElementsAre(std::string("03 50 C0 ") + rows[row].second));
        EXPECT_EQ(i2c().lblSPICode.caption(), rows[row].second);
        EXPECT_EQ(i2c().txtUserVCC.text(), rows[row].second);
        EXPECT_EQ(bus.state().code, hexToInt(rows[row].second));
        EXPECT_NEAR(leadingNumber(i2c().lblVCCVolts.caption()), bus.state().vcc, kStep);
        board().cmdSampleVCC.userClick();
        EXPECT_EQ(board().lblVCCVoltsRDBK.caption(), i2c().lblVCCVolts.caption());
        if (const double volts = leadingNumber(rows[row].first); volts > 0) {
            EXPECT_NEAR(bus.state().vcc, volts, 0.1);
        }
    }
}

TEST_F(SupplyBlockTest, ListWithNoRowSelectedIsAFaultAndTheButtonComesBack) {
    openI2c();
    i2c().CboVCC.userSelect(-1);
    EXPECT_EQ(i2c().cmdUpdateVCC.userClick().kind, Outcome::Kind::Faulted);
    EXPECT_THAT(boxes(), ElementsAre("Subscript out of range [OK]"));
    EXPECT_TRUE(i2c().cmdUpdateVCC.enabled());
    EXPECT_THAT(frames(), IsEmpty());
}

TEST_F(SupplyBlockTest, OffsetAndGainCorrectTheReading) {
    openI2c();
    bus.input(0x0A, std::nullopt, 512); // VIN4: 512 * 3.3 / 1023 = 1.6516 V
    for (const auto& [offset, gain, volts, shared] : {std::tuple{"0.00", "2.0", "3.303", 1.6516},
                                                      {"0.1", "3", "5.255", 1.7516},
                                                      {"-2", "2.0", "-0.697", -0.3484}}) {
        i2c().txtADOffset.setText(offset);
        i2c().txtADGain.setText(gain);
        i2c().cmdReadVCC.userClick();
        EXPECT_EQ(i2c().lblVCCVolts.caption(), volts);
        EXPECT_NEAR(std::get<double>(bench.sharedValues().find("ADVolts")->get(0)), shared, 1e-4);
        EXPECT_THAT(frames(), IsEmpty()); // sampling sends no code
    }
    for (const auto& [box, text] : {std::pair{&i2c().txtADOffset, "0.00"}, {&i2c().txtADGain, "2.00"}}) {
        type(*box, "x1");
        box->userLeave();
        EXPECT_EQ(box->text(), text); // no number: back to the default
    }
}

} // namespace
} // namespace vrk
