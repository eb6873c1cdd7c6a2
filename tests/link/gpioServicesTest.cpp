#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using sim::FaultKind;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class GpioServicesTest : public TestBench {};

TEST_F(GpioServicesTest, EachPortIsWrittenReadBackAndCompared) {
    loadConsoles();
    using Buttons = ControlArray<Button>;
    using Labels = ControlArray<Label>;
    using Role = std::tuple<Buttons&, Buttons&, Labels&, Labels&, const char*>;
    frmMainF340& c = console();
    int indicator = 0;
    for (const auto& [write, read, written, shown, addresses] :
         {Role{c.cmdWrOC, c.cmdRdOC, c.lblWrOC, c.lblRdOC, "A4A5A6A7AE"},
          Role{c.cmdWrGPData, c.cmdRdGPData, c.lblWrGPData, c.lblRdGPData, "8090A0B0C7"},
          Role{c.cmdWrGPAnalog, c.cmdRdGPAnalog, c.lblWrGPAnalog, c.lblRdGPAnalog, "F1F2F3F4F5"}})
        for (int port = 0; port < 5; ++port) {
            const std::string address(addresses + 2 * port, 2);
            SCOPED_TRACE(address);
            Lamp& lamp = c.ShpGPIOStat[indicator++];
            lamp.setColour(Colour::Black);
            written[port].setCaption("A5");
            write[port].userClick();
            EXPECT_THAT(sent(5), ElementsAre("01 12 00 " + address + " A5"));
            EXPECT_EQ(bus.state().sfr.at(address), 0xA5);
            for (const Colour colour : {Colour::LightGreen, Colour::Green, Colour::LightGreen}) {
                bus.reply(18, {1, 0, 0, 0xA5});
                read[port].userClick();
                EXPECT_EQ(lamp.colour(), colour);
            }
            EXPECT_THAT(sent(4), Each("01 12 01 " + address));
            bus.reply(18, {1, 0, 0, 0x5A});
            read[port].userClick();
            EXPECT_EQ(lamp.colour(), Colour::LightRed);
            EXPECT_EQ(shown[port].caption(), "5A");
            sent();
            // A report that was not taken: red, and the label stays.
            lamp.setColour(Colour::Green);
            fault(FaultKind::WriteFails, 1, 18);
            answer(Choice::Retry);
            read[port].userClick();
            EXPECT_EQ(boxes().size(), 1U);
            EXPECT_EQ(lamp.colour(), Colour::LightRed);
            EXPECT_EQ(shown[port].caption(), "5A");
            // A reply that was lost: red, though what the search has left happens to fit.
            lamp.setColour(Colour::Green);
            written[port].setCaption("0D");
            fault(FaultKind::NoReply, 1, 18);
            answer(Choice::Retry);
            read[port].userClick();
            EXPECT_EQ(boxes().size(), 1U);
            EXPECT_EQ(shown[port].caption(), "0D");
            EXPECT_EQ(lamp.colour(), Colour::LightRed);
            sent();
        }
}

TEST_F(GpioServicesTest, BoxesChangeTheLabelAndWriteOnlyByAuto) {
    loadConsoles();
    console().cmdResetGPIO.userClick();
    console().chkDINP2[2].userClick();
    EXPECT_EQ(console().lblWrGPAnalog[2].caption(), "FB"); // 0 is analog
    console().chkGPvalueP4[7].userClick();
    EXPECT_EQ(console().lblWrGPData[4].caption(), "80");
    EXPECT_THAT(sent(), IsEmpty());
    console().chkAutoWriteRead.userClick();
    console().chkGPvalueP4[7].userClick();
    EXPECT_EQ(console().lblWrGPData[4].caption(), "00");
    EXPECT_THAT(sent(4), ElementsAre("01 12 00 C7", "01 12 01 C7"));
}

TEST_F(GpioServicesTest, WriteReadAllLeavesOutPort4DataAndRestoresAuto) {
    loadConsoles();
    for (const int before : {0, 1}) {
        console().chkAutoWriteRead.setValue(before);
        sent();
        console().cmdWriteReadAll.userClick();
        EXPECT_EQ(console().chkAutoWriteRead.value(), before);
        std::vector<std::string> expected;
        for (const char* address :
             {"A4", "A5", "A6", "A7", "AE", "80", "90", "A0", "B0", "F1", "F2", "F3", "F4", "F5"})
            for (const char* sub : {"00 ", "01 "})
                expected.push_back(std::string("01 12 ") + sub + address);
        EXPECT_EQ(sent(4), expected);
    }
}

TEST_F(GpioServicesTest, RegisterTable) {
    loadConsoles();
    console().ShpSKFRd[25].setColour(Colour::LightGreen);
    console().chkWriteEqRead.userClick();
    bus.reply(18, {1, 9, 0, 0x77});
    bus.reply(18, {1, 0, 3, 0x66});
    console().cmdReadSKF.userClick();
    std::vector<std::string> expected;
    for (const char* address : {"80", "90", "A0", "A1", "A2", "A3", "A4", "A5", "A6", "D4", "F5", "D5", "D6",
                                "F1", "F2", "F3", "B0", "C7", "F4", "A7", "AE", "DF", "E1", "E2", "E3", "F8"})
        expected.push_back(std::string("01 12 01 ") + address);
    EXPECT_EQ(sent(4), expected);
    EXPECT_EQ(console().txtPBufRd[0].text() + console().txtPBuf[0].text(), "7777");
    EXPECT_NE(console().ShpSKFRd[0].colour(), Colour::LightRed); // the reply's error byte is only shown
    EXPECT_EQ(console().ShpSKFRd[1].colour(), Colour::LightRed);
    EXPECT_EQ(console().txtPBufRd[1].text(), "66");
    EXPECT_EQ(console().ShpSKFRd[25].colour(), Colour::Green);
    EXPECT_EQ(console().lblSFRBuf[0].caption() + console().lblSFRBuf[3].caption(), "010D");
    // What Retry's search has read is no answer to a request that was not taken.
    fault(FaultKind::WriteFails, 1, 18);
    answer(Choice::Retry);
    console().txtPBufRd[0].userClick();
    boxes();
    EXPECT_EQ(console().txtPBufRd[0].freshness()->state, Freshness::State::Stale);
    // A second click inside the first one's pumps works through the same fields: no row may take from it.
    console().cmdReadSKF.userClick();
    std::vector<std::string> rows;
    for (auto& row : console().txtPBufRd)
        rows.push_back(row->text());
    for (const int ms : {1, 30, 71})
        at(ms, [this] { console().cmdReadSKF.userClick(); });
    console().cmdReadSKF.userClick();
    for (auto& row : console().txtPBufRd)
        EXPECT_EQ(row->text(), rows[static_cast<std::size_t>(row->index())]) << row->index();
}

TEST_F(GpioServicesTest, ReadingTheBoardsPinsWritesNoPort) {
    loadConsoles();
    console().chkAutoWriteRead.userClick();
    for (const auto& [address, value] : {std::pair{"C7", "3C"}, {"A7", "81"}}) {
        console().txtSFRAddress.setText(address);
        console().txtSFRWRData.setText(value);
        console().cmdSetSFR.userClick();
    }
    sent();
    console().cmdSampleGP.userClick();
    act([this] { console().getGPconf(); });
    EXPECT_THAT(sent(3), Each("01 12 01"));
    EXPECT_EQ(console().lblWrGPData[4].caption(), "3C");
    EXPECT_EQ(console().chkOpenCollectorP3[7].value(), 1);
    EXPECT_FALSE(link().suppressControlEvents);
}

} // namespace
} // namespace vrk
