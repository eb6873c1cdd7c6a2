#include "tests/motherboard/MotherboardBench.h"

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SuppliesTest : public MotherboardBench {
  protected:
    std::string told() { return bench.context().results.kept().back().text; }
    std::string code(int row) { return std::get<std::string>(value("VCCHex").get(row)); }
};

TEST_F(SuppliesTest, FourFramesOfTheSupplyDac) {
    loadConsoles();
    frmMotherboardDAQ2& b = board();
    // The frame of each button, and whether its bytes go into SPIBuf.
    for (const auto& [button, frame, keeps] : {std::tuple{&b.cmdSPIWrite, "50 C2 C0", false},
                                               {&b.cmdSPIWrite2, "50 C0 77", true},
                                               {&b.cmdSPRRdReg, "50 B2 C0", true},
                                               {&b.cmdSPIReadData, "50 B0 00", true}}) {
        SCOPED_TRACE(button->name());
        for (int k = 0; k < 3; ++k)
            assign("SPIBuf", k, 0xEE);
        button->userClick();
        EXPECT_THAT(sent(10), ElementsAre("01 12 00 A0 00 00 00 00 00 00", "01 12 01 A0 00 00 00 00 00 00",
                                          std::string("01 09 00 01 00 00 03 ") + frame,
                                          "01 12 00 A0 10 00 00 00 00 00", "01 12 01 A0 00 00 00 00 00 00"));
        EXPECT_EQ(byteOf("SPIBuf", 0), keeps ? 0x50 : 0xEE);
        EXPECT_EQ(unlocked(), 13);
    }
    EXPECT_EQ(bus.state().code, 0x77);
    EXPECT_EQ(b.txtSPIRd[2].text(), "77"); // the code read back
    EXPECT_EQ(b.txtSPIRd[2].freshness()->state, Freshness::State::Fresh);
    // A lost reply leaves no value that looks read, and U5 not selected.
    fault(sim::FaultKind::NoReply, 1, 9);
    answer(Choice::Retry);
    b.cmdSPIReadData.userClick();
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_EQ(b.txtSPIRd[2].freshness()->state, Freshness::State::Stale);
    EXPECT_EQ(bus.state().sfr.at("A0") & 0x10, 0x10);
    EXPECT_EQ(unlocked(), 13);
    // Measures the input that is connected, VIN0, though the list moves to VIN4; a switch makes it stale.
    b.Combo1.setListIndex(6);
    b.cmdSampleVCC.userClick();
    EXPECT_EQ(b.lblVCCVoltsRDBK.toolTip(), "Twice the volts at 06 - P1.6");
    EXPECT_EQ(b.lblVCCVoltsRDBK.freshness()->state, Freshness::State::Fresh);
    b.OptVCC[0].userClick();
    EXPECT_EQ(b.lblVCCVoltsRDBK.freshness()->state, Freshness::State::Stale);
    EXPECT_FALSE(b.lblVCCVoltsRDBK.freshness()->failed);
    b.OptVCC[1].userClick();
    sent();
    for (const auto& [typed, text] : {std::pair{"7g", "7"}, {"101", "00"}, {"0", "00"}, {"ff", "FF"}}) {
        type(b.txtSPIwr[13], typed);
        b.txtSPIwr[13].userLeave();
        EXPECT_EQ(b.txtSPIwr[13].text(), text);
    }
    // The field of each row that is not sent.
    b.txtSPIwr[4].setText("FF");
    b.cmdSPIWrite2.userClick();
    EXPECT_THAT(sent(Command::SpiTransfer, 10), ElementsAre("01 09 00 01 00 00 03 50 C0 77"));
    // A byte that is none: nothing is transferred, the buttons come back.
    b.txtSPIwr[7].setText("100");
    EXPECT_EQ(b.cmdSPIWrite2.userClick().fault, "Overflow");
    EXPECT_THAT(boxes(), ElementsAre("Overflow [OK]"));
    EXPECT_THAT(sent(Command::SpiTransfer), IsEmpty());
    EXPECT_EQ(unlocked(), 13);
    // Nor does a fault behind the select leave U5 selected.
    b.txtSPIwr[7].setText("55");
    console().txtClockPhaseChangeByte.setText("256");
    EXPECT_EQ(b.cmdSPIWrite2.userClick().fault, "Overflow");
    EXPECT_THAT(boxes(), ElementsAre("Overflow [OK]"));
    EXPECT_EQ(bus.state().sfr.at("A0") & 0x10, 0x10);
}

TEST_F(SuppliesTest, WithoutTrackSwitchingVccOffLeavesItsBitInTheImage) {
    loadConsoles();
    board().ChkTrack.userClick();
    EXPECT_FALSE(std::get<bool>(value("TrackOn").get(kNoIndex)));
    board().cmdReadPipe1.userClick();
    board().OptVCC[0].userClick();
    for (TextBox* port2 : {&board().txtPBufRd[2], &console().txtPBufRd[2]}) // written since
        EXPECT_EQ(port2->freshness()->state, Freshness::State::Stale);
    EXPECT_EQ(board().txtPBufRd[0].freshness()->state, Freshness::State::Fresh);
    EXPECT_EQ(image(), "02 08 30 05 08 F8");
    sent();
    board().OptVCC[1].userClick();
    EXPECT_EQ(sent(5).at(2), "01 12 00 A0 30");
    EXPECT_EQ(console().chkGPvalueP2[5].value(), 0);
    EXPECT_EQ(board().chkPData[21].value(), 1);
    EXPECT_EQ(board().ShpVCCon.colour(), Colour::Black);
    EXPECT_GT(bus.state().vcc, 2.0);

    board().OptVCCMinus[0].userClick();
    EXPECT_EQ(sent(5).at(2), "01 12 00 A0 70");
    board().OptVCCMinus[1].userClick();
    EXPECT_EQ(sent(5).at(2), "01 12 00 A0 30");
    EXPECT_EQ(bus.state().vminus, 0);
    // The panel in front tells what the console's box says.
    openI2c();
    for (int click = 0; click < 2; ++click) {
        board().ChkTrack.userClick();
        EXPECT_EQ(i2c().ChkTrack.value(), board().ChkTrack.value()) << click;
    }
    // What is on against what its switch shows is told, and does not stay on when the panel is left.
    i2c().OptVCC[0].userClick();
    i2c().OptVCC[1].userClick();
    EXPECT_EQ(told(), "VCC off");
    i2c().chkI2CAdr[0].userClick();
    EXPECT_EQ(told(), "VCC is on, though switched off");
    EXPECT_EQ(i2c().lblVCCVolts.freshness()->state, Freshness::State::Stale);
    i2c().OptVM[1].userClick();
    i2c().OptVM[0].userClick();
    i2c().ChkTrack.userClick(); // switches VCC by what its options show, and V- with it
    EXPECT_EQ(told(), "VCC off");
    EXPECT_EQ(bus.state().vminus, 0);
    i2c().ChkTrack.userClick();
    i2c().OptVM[0].userClick();
    EXPECT_EQ(bus.state().vcc, 0);
    i2c().ChkTrack.userClick();
    EXPECT_EQ(told(), "V- is still on");
    i2c().cmdMMenu.userClick();
    EXPECT_EQ(bus.state().vcc, 0);
    EXPECT_EQ(bus.state().vminus, 0);
}

TEST_F(SuppliesTest, TheLastClickOnTheConsolesSwitchHolds) {
    loadConsoles();
    for (int ms = 0; ms <= 60; ms += 2)
        for (const int last : {1, 0}) {
            at(ms, [this, last] { board().OptVCC[last].userClick(); });
            board().OptVCC[1 - last].userClick();
            clock.sleep(Milliseconds{500});
            pump();
            EXPECT_TRUE(board().OptVCC[last].value()) << ms;
            EXPECT_TRUE(bench.context().results.kept().empty()) << ms; // "VCC is on, though switched off"
            EXPECT_EQ(bus.state().vcc > 1, last == 0) << ms;
            EXPECT_EQ(bus.state().vminus < -1, board().OptVCCMinus[0].value()) << ms;
        }
}

TEST_F(SuppliesTest, LampsAndOptionsFollowABoardThatComesBack) {
    bus.setBoards(2);
    openI2c();
    const auto shown = [this](Colour lamp, bool on) {
        for (const Lamp* each : {&board().ShpVCCon, &board().ShpVCCMinusOn, &i2c().ShpVCCon, &i2c().ShVM})
            EXPECT_EQ(each->colour(), lamp) << each->path();
        for (auto* options : {&board().OptVCC, &board().OptVCCMinus, &i2c().OptVCC, &i2c().OptVM})
            EXPECT_TRUE((*options)[on ? 0 : 1].value()) << options->name();
        EXPECT_EQ(bus.state().vcc > 2.0, on);
        EXPECT_EQ(bus.state().vminus < 0, on);
        EXPECT_EQ(byteOf("PBuf", 2) & 0x60, on ? 0x60 : 0);
    };
    const auto ports = [this] {
        std::string bytes;
        for (const char* address : {"80", "90", "A0", "A4", "A5", "A6"})
            bytes += hexText(bus.state().sfr.at(address), 2) + " ";
        return bytes;
    };
    const std::string told = ports();
    console().cmdReconnect.userClick(); // as it was
    shown(Colour::LightRed, true);
    console().cboEVBinstance.userSelect(1);
    EXPECT_EQ(i2c().ShpVCCon.colour(), Colour::Black);
    console().cboEVBinstance.userSelect(0);
    shown(Colour::LightRed, true);
    bus.unplug(0);
    bus.plug(0);
    sent();
    console().cmdReconnect.userClick();
    for (const std::string& report : sent(3))
        EXPECT_EQ(report.substr(6), "01"); // only read
    shown(Colour::Black, false);
    EXPECT_EQ(i2c().lblVCCVolts.freshness()->state, Freshness::State::Stale);
    for (int click = 0; click < 2; ++click) {
        i2c().ChkShutDown2.userClick(); // any other pin
        shown(Colour::Black, false);
    }
    sent();
    i2c().OptVCC[0].userClick();
    EXPECT_THAT(sent(Command::SpiTransfer, 10),
                ElementsAre("01 09 00 01 00 00 03 50 C0 5F", "01 09 00 01 00 00 03 50 C2 C0",
                            "01 09 00 01 00 00 03 50 C0 72")); // the DAC has forgotten its setup too
    shown(Colour::LightRed, true);
    EXPECT_EQ(ports(), told);
    EXPECT_EQ(i2c().lblVCCVolts.caption(), "5.000"); // its multiplexer was at its power-up input
    // The console resets both supplies when it is opened again.
    board().cmdexit.userClick();
    bench.frmMotherboardDAQ2.load();
    shown(Colour::Black, false);
    i2c().OptVCC[0].userClick();
    shown(Colour::LightRed, true);
    // Nothing that one board said is shown as the other's, whatever their supplies are.
    bus.input(0x0A, 1.0, {});
    console().cboEVBinstance.userSelect(1);
    i2c().OptVCC[0].userClick();
    EXPECT_EQ(i2c().lblVCCVolts.caption(), "2.000");
    console().cmdFirmwareVersion.userClick();
    board().cmdReadPipe1.userClick();
    console().cboEVBinstance.userSelect(0);
    for (const Control* reading : std::initializer_list<Control*>{
             &i2c().lblVCCVolts, &console().lblFirmwareVersion, &board().txtPBufRd[2], &board().txtADDec})
        EXPECT_EQ(reading->freshness()->state, Freshness::State::Stale) << reading->path();
    // From its run on a script counts as the panel in front, and has no supply to show.
    link().activePanel = &*bench.frmScriptOps;
    bus.unplug(0);
    bus.plug(0);
    console().cmdReconnect.userClick();
    shown(Colour::Black, false);
}

TEST_F(SuppliesTest, MinusOnRunsItsNeighboursClick) {
    loadConsoles();
    board().ChkTrack.userClick();
    board().chkPData[21].setValue(1);
    board().chkPData[22].setValue(1);
    assign("PBuf", 2, 0); // behind the boxes' back: only a click brings a bit back
    board().OptVCCMinus[0].userClick();
    EXPECT_EQ(byteOf("PBuf", 2), 0x20);
}

TEST_F(SuppliesTest, CalibrationFileTakesThePlaceOfTheBuiltInCodes) {
    folder.write("VRK_Cal_Data.txt",
                 "VRK VCC Calibration 6/12/2008 3:40:21 PM\r\nVREF , 3.25\r\n"
                 "2.7,2D,1.3486,2.6972\r\n3.0,36,1.5,3.0\r\n\" 3.3 \", 3F ,1.6,3.3\r\n"
                 "3.5,45,1.7,3.5\r\n4.0,55,2.0,4.0\r\n4.5,64,2.2,4.5\r\n5.1,75,2.5,5.1\r\nEND\r\n");
    openI2c();
    EXPECT_EQ(board().lblCal_header.caption(), "VRK VCC Calibration 6/12/2008 3:40:21 PM");
    EXPECT_EQ(number("ADRef"), 3.25);
    EXPECT_EQ(i2c().CboVCC.rowCount(), 10);
    EXPECT_EQ(i2c().CboVCC.text(), "5.1");
    EXPECT_EQ(i2c().CboVCC.row(2).text + code(2) + i2c().CboVCC.row(8).text + code(8), "3.33FMid3F");
    i2c().CboVCC.userSelect(0);
    i2c().cmdUpdateVCC.userClick();
    EXPECT_EQ(bus.state().code, 0x2D);
    EXPECT_EQ(i2c().lblSPICode.caption(), "2D");
    // A file that ends early leaves the fields that it has; a reference that is none leaves the scale.
    for (const auto& [reference, kept] : {std::pair{"3.1", 3.1}, {"0", 3.1}, {"-2", 3.1}, {"3.2x", 3.1}}) {
        folder.write("VRK_Cal_Data.txt",
                     std::string("cut\r\nVREF,") + reference + "\r\n2.7,2E,1.3,2.6\r\n3.0,37");
        (*bench.findModuleAction("initSupplyDefaults"))({});
        EXPECT_EQ(number("ADRef"), kept) << reference;
        EXPECT_EQ(code(0) + code(1) + code(2) + i2c().CboVCC.row(1).text + i2c().CboVCC.row(2).text,
                  "2E37--3.0x.x");
    }
    folder.write("VRK_Cal_Data.txt", "bad\r\nVREF,3.1\r\n2.7,1FF,1.3,2.6");
    (*bench.findModuleAction("initSupplyDefaults"))({});
    EXPECT_EQ(told() + code(0), "The calibration file is damaged--");
}

} // namespace
} // namespace vrk
