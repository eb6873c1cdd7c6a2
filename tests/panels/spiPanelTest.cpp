#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using report::Command;
using State = Freshness::State;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// The SPI panel with a part in the socket.
class SpiPanelTest : public TestBench {
  protected:
    /// The SPI transfers that went out since the last call: the bytes of each frame.
    std::vector<std::string> frames() {
        std::vector<std::string> cut = sent(Command::SpiTransfer, 16);
        for (std::string& report : cut)
            report = report.substr(21, 3 * static_cast<std::size_t>(hexToInt(report.substr(18, 2))) - 1);
        return cut;
    }
    void choose(const char* part, MenuEntry frmVRK_SPI1::*entry) {
        bus.socket(part);
        ASSERT_TRUE((spi().*entry).userClick().done());
        wire.clear();
    }
    void openKv4184() {
        openSpi();
        choose("KV4184", &frmVRK_SPI1::mnuKV4184);
    }
    /// One row of a product table; returns what was said.
    std::vector<std::string> chooseRow(const std::string& fields) {
        return chooseFrom(spi().mnu_SPI_List,
                          folder.write("p.csv", "h,,,,,,,,,,,,,,,,,,\r\n," + fields + ",,,\r\n").string(), 1);
    }
    /// What a part sets: part, ID, commands, lengths, taps.
    std::string setUp() {
        std::string text = spi().lblProduct.caption().substr(0, 6) + " " + spi().busAddress();
        for (const TextBox* box : std::initializer_list<const TextBox*>{
                 &spi().txtACRAddress[0], &spi().txtACRAddress[1], &spi().txtGPAddress[0],
                 &spi().txtGPAddress[1], &spi().txtBaseVRKWriteAddress, &spi().txtBaseVRKReadAddress,
                 &spi().txtSPIWrCount, &spi().txtSPIRDQuantity})
            text += " " + box->text();
        return text + " " + decimalText(spi().wipers.TapCount) + "/" +
               decimalText(spi().Slider1[0].maximum());
    }
    static State stateOf(const Control& reading) { return reading.freshness()->state; }
    void expectNothingLeftDisabled() {
        for (const Button* button :
             {&spi().CMDxMIT[1], &spi().cmdI2Read[1], &spi().cmdSampleWiper[1], &spi().cmdACRRead,
              &spi().cmdACRWrite, &spi().cmdGPRead, &spi().cmdWriteGP})
            EXPECT_TRUE(button->enabled()) << button->path();
        EXPECT_EQ(events.depth(), 0);
    }
};

TEST(SpiFramesTest, FrameFollowsFromIdCommandDataAndFamily) {
    using enum SpiFamily;
    const struct {
        SpiLead lead;
        SpiFamily family;
        const char* base;
        int channel;
        const char* data; ///< nullptr: a read
        std::string bytes;
    } cases[] = {
        {{false, "50"}, Registers, "C0", 3, "3F", " C3 3F"},
        {{true, "52"}, Registers, "C0", 0, "05", " 52 C0 05"},
        {{false, "NA"}, Registers, "80", 2, nullptr, " 82 00 00 00"},
        {{true, "5E"}, Registers, "B0", 1, nullptr, " 5E B1 00 00 00"},
        {{false, "0"}, Registers, "5", 2, "7", " 7 7"}, // no leading zeros
        // The ID leads the ten-bit family's frames whatever the box says, and is odd in a read.
        {{false, "50"}, TenBit, "A0", 0, "1FF", " 50 A0 1 FF"},
        {{true, "50"}, TenBit, "A0", 0, "5", " 50 A0 0 05"},
        {{true, "50"}, TenBit, "A0", 0, "7C", " 50 A0 0 7C"},
        {{true, "50"}, TenBit, "A0", 0, "0123", " 50 A0 1 23"},
        {{false, "5A"}, TenBit, "80", 0, nullptr, " 5B 80 00 00 00"},
    };
    for (const auto& c : cases) {
        const std::string command = spiCommand(c.base, c.channel);
        std::string bytes;
        for (const SpiFrameByte& byte : c.data != nullptr ? spiWriteFrame(c.lead, command, c.data, c.family)
                                                          : spiReadFrame(c.lead, command, c.family))
            bytes += " " + byte.hex;
        EXPECT_EQ(bytes, c.bytes);
    }
    EXPECT_EQ(spiFrameText(spiReadFrame({false, "5A"}, "82"), 5),
              "82 command · 00 clock · 00 clock · 00 clock · ..");
}

TEST_F(SpiPanelTest, LoadSetsThePanelAndTheBoardUp) {
    openSpi(false);
    EXPECT_EQ(setUp(), "Manual  02 60 C4 84 C0 80 2 4 128/128");
    EXPECT_EQ(spi().txtDeviceAdr.text(), "50");
    EXPECT_EQ(spi().txtACR[0].text(), "C0");
    EXPECT_EQ(bus.state().sfr.at("90") & 0x08, 0x08); // the board's switch: SPI
    EXPECT_EQ(spi().cboSPIClock.rows(), console().cboSPIClock.rows());
    const int row = spi().cboSPIClock.listIndex() + 1;
    spi().cboSPIClock.userSelect(row);
    const std::string report = "01 08 00 " + hexText(console().cboSPIClock.row(row).itemData, 2);
    EXPECT_THAT(sent(Command::SpiClock, 4),
                ElementsAre(report, report)); // by the list's click, then the call
    bus.unplug(0);
    bus.plug(0);
    console().cmdReconnect.userClick();
    EXPECT_EQ(spi().cboSPIClock.listIndex(), row - 1); // the board is back at its own
}

TEST_F(SpiPanelTest, AListOfClocksThatIsLostIsReadAgain) {
    loadConsoles();
    fault(sim::FaultKind::NoReply, 2, static_cast<int>(Command::SpiClock));
    answer(Choice::Retry);
    answer(Choice::Retry);
    (void)startup().cboVRKSelect.userSelect(frmStartup::kSPI);
    EXPECT_EQ(boxes().size(), 2U);
    // What Retry's discovery has read last is no list of clocks.
    const auto clocks = spi().cboSPIClock.rows();
    EXPECT_GE(spi().cboSPIClock.listIndex(), 0);
    console().cboSPIclock_init();
    EXPECT_EQ(console().cboSPIClock.rows(), clocks);
}

TEST_F(SpiPanelTest, EachPartWorksByItsOwnFramesChosenFromMenuOrTable) {
    openSpi();
    const struct {
        const char* name;
        MenuEntry frmVRK_SPI1::*entry;
        int row;
        const char* setUp;
        std::vector<std::string> sent;
    } cases[] = {
        {"KV4180",
         &frmVRK_SPI1::mnuKV4180,
         1,
         "KV4180  60 20 C4 84 C0 80 2 4 256/256",
         {"60 C0", "20 00 00 00", "C2 3F", "82 00 00 00", "C4 5A", "84 00 00 00"}},
        {"KV4184",
         &frmVRK_SPI1::mnuKV4184,
         2,
         "KV4184 50 C8 B8 C4 B4 C0 B0 3 3 128/128",
         {"50 C8 C0", "50 B8 00", "50 C2 3F", "50 B2 00", "50 C4 5A", "50 B4 00"}},
    };
    for (const auto& c : cases)
        for (const bool byTable : {false, true}) {
            SCOPED_TRACE(std::string(c.name) + (byTable ? " from the table" : ""));
            choose(c.name, c.entry);
            if (byTable) {
                spi().mnuKV4180.userClick();
                EXPECT_THAT(
                    chooseFrom(spi().mnu_SPI_List, std::string(VRK_EXAMPLES) + "/parts-SPI.csv", c.row),
                    IsEmpty());
            }
            EXPECT_EQ(setUp(), c.setUp);
            EXPECT_TRUE(spi().SSFrame3[3].visible() && spi().OptChans[2].value());
            spi().Option1[0].userClick();
            spi().Option1[1].userClick();
            wire.clear();
            spi().cmdACRWrite.userClick();
            spi().cmdACRRead.userClick();
            enter(spi().txtHexDataWrt[2], "3f");
            spi().cmdI2Read[2].userClick();
            enter(spi().txtGPWrite, "5a");
            spi().cmdWriteGP.userClick();
            spi().cmdGPRead.userClick();
            EXPECT_EQ(frames(), c.sent);
            EXPECT_EQ(spi().txtACR[1].text() + spi().lblGPRead.caption(), "C05A");
            EXPECT_EQ(spi().lblPotReadhex[2].caption() + spi().lblPotRead[2].caption(), "3F63");
            EXPECT_EQ(spi().ProgressBar1[2].value(), 63);
            EXPECT_NEAR(leadingNumber(spi().lblWiperVolts[2].caption()),
                        bus.state().vcc * 63 / spi().wipers.TapCount, 2 * 3.3 / 1023);
            for (auto& lamp : spi().Shape2)
                EXPECT_EQ(lamp->colour(), Colour::LightGreen);
            // The volatile 3F is lost with VCC; what went to the EEPROM comes back.
            spi().Option1[0].userClick();
            spi().cmdACRWrite.userClick();
            enter(spi().txtHexDataWrt[1], "21");
            EXPECT_EQ(spi().nonvolatileWrites().total(), bus.state().part->nonvolatileWrites);
            spi().OptVCC[1].userClick();
            EXPECT_EQ(stateOf(spi().lblPotRead[2]), State::Stale);
            spi().OptVCC[0].userClick();
            spi().cmdReadAllWipers[0].userClick();
            EXPECT_EQ(spi().lblPotReadhex[1].caption(), "21");
            EXPECT_EQ(spi().lblPotReadhex[2].caption(), hexText(spi().wipers.TapCount / 2));
        }
}

TEST_F(SpiPanelTest, RowIsTakenWholeOrNotAtAll) {
    openSpi(false);
    EXPECT_THAT(chooseRow("X,2,512,5,1,2,3,4,6,7,8,1,1,4,5"), IsEmpty());
    const std::string taken = "X 05 03 01 06 04 07 08 4 5 512/512";
    EXPECT_EQ(setUp(), taken);
    EXPECT_EQ(spi().txtACR[0].text(), "02");
    for (const auto& [fields, why] :
         {std::pair{"Y,9,128,50,B8,C0,C8,B4,C4,C0,B0,1,1,3,3", "column 2"},
          {"Y,4,2000,50,B8,C0,C8,B4,C4,C0,B0,1,1,3,3", "column 3"},
          {"Y,4,128,5G,B8,C0,C8,B4,C4,C0,B0,1,1,3,3", "column 4 holds \"5G\", not an ID"},
          {"Y,4,128,50,B8,100,C8,B4,C4,C0,B0,1,1,3,3", "column 6"},
          {"Y,4,128,50,B8,C0,C8,B4,,C0,B0,1,1,3,3", "column 9"},
          {"Y,4,128,50,B8,C0,C8,B4,C4,NA,B0,1,1,3,3", "column 10"},
          {"Y,4,128,50,B8,C0,C8,B4,C4,C0,B0,1,1,6,3", "column 14 holds \"6\", not a frame of 1 to 5"},
          {"Y,4,128,50,B8,C0,C8,B4,C4,C0,B0,1,1,3,0", "column 15"}}) {
        EXPECT_THAT(chooseRow(fields), ElementsAre(HasSubstr(std::string("cannot be taken: ") + why)));
        EXPECT_EQ(setUp(), taken);
    }
    at(200, [this] { bench.ProductExec.userClose(); });
    spi().mnu_SPI_List.userClick();
    EXPECT_THAT(boxes(), ElementsAre("No Device was selected from the list [OK]"));
    EXPECT_EQ(setUp(), taken);
    // A register that the part has not is said so; nothing is sent, and no button stays dead.
    EXPECT_THAT(chooseRow("Z,1,64,NA,NA,NA,NA,NA,NA,C0,B0,1,1,2,3"), IsEmpty());
    EXPECT_EQ(setUp(), "Z  NA NA NA NA C0 B0 2 3 64/64");
    wire.clear();
    for (Button* button : {&spi().cmdACRRead, &spi().cmdWriteGP})
        button->userClick();
    EXPECT_THAT(boxes(), ElementsAre(HasSubstr("no ACR Register"), HasSubstr("no GP Register")));
    EXPECT_THAT(sent(), IsEmpty());
    expectNothingLeftDisabled();
}

TEST_F(SpiPanelTest, FamiliesShowTheirGroupsAndTheNextPartGetsItsOwnBack) {
    openSpi();
    const bool random = console().chkRandom.checked();
    const auto hidden = [this] {
        return !(spi().frmRegisterWrite.visible() || spi().fraADDRSelect.visible() ||
                 spi().SSFrame2.visible() || spi().FrmShutdown.visible());
    };
    EXPECT_THAT(chooseRow("Q3310/1,1,1024,50,NA,NA,NA,NA,NA,A0,80,1,1,4,4"), IsEmpty());
    EXPECT_TRUE(hidden());
    EXPECT_EQ(spi().lblChanSend[0].caption() + spi().lblChanRcvr[0].caption(), "A080");
    wire.clear();
    bus.reply(9, {1, 0, 0, 0x51, 0x1A, 0x7F}); // only the digit A counts of the upper byte
    spi().cmdI2Read[0].userClick();
    EXPECT_EQ(spi().lblPotRead[0].caption(), "2687");
    EXPECT_EQ(spi().ProgressBar1[0].value(), 1024);
    bus.reply(9, {1, 0, 0, 0x51, 0x00, 0x0C});
    enter(spi().txtHexDataWrt[0], "1ff");
    spi().cmdI2Read[0].userClick();
    EXPECT_THAT(frames(), ElementsAre("51 80 00 00", "50 A0 01 FF", "51 80 00 00"));

    EXPECT_THAT(chooseRow("Q4420/1,4,256,50,NA,NA,NA,NA,NA,A0,90,1,1,3,3"), IsEmpty());
    EXPECT_TRUE(hidden() && spi().Frq4410Show.visible());
    EXPECT_EQ(spi().lblChanSend[0].caption() + spi().lblChanRcvr[0].caption(), "A090");
    EXPECT_TRUE(console().chk2WireRead.checked() && !console().chkRandom.checked());
    spi().cmdMMenu.userClick(); // another bus's panel finds its options as they were
    EXPECT_FALSE(console().chk2WireRead.checked());
    EXPECT_EQ(console().chkRandom.checked(), random);
    startup().cboVRKSelect.userSelect(frmStartup::kSPI);
    EXPECT_TRUE(console().chk2WireRead.checked());
    spi().mnuKV4180.userClick();
    EXPECT_TRUE(spi().SSFrame2.visible() && spi().fraADDRSelect.visible() && spi().FrmShutdown.visible());
    EXPECT_FALSE(spi().Frq4410Show.visible() || console().chk2WireRead.checked());
    EXPECT_EQ(spi().lblChanSend[0].caption(), " 0");
    EXPECT_EQ(spi().txtACR[0].text(), "C0"); // not the NA of a part without that register
}

TEST_F(SpiPanelTest, EntriesKeepTheirRulesAndWhatCannotBeSentIsRefusedWhole) {
    openKv4184();
    spi().chkShutdown.userClick();
    spi().Option1[0].userClick();
    EXPECT_EQ(spi().txtACR[0].text(), "0");
    EXPECT_THAT(sent(), IsEmpty());
    const struct {
        TextBox* box;
        const char *typed, *onEnter, *onLeave;
    } cases[] = {
        {&spi().txtACR[0], "4a", "4A", "4A"},         {&spi().txtACR[0], "100", "100", "00"},
        {&spi().txtACR[0], "101", "00", "00"},        {&spi().txtGPWrite, "100", "100", "00"},
        {&spi().txtACRAddress[1], "xb8", "B8", "B8"}, {&spi().txtGPAddress[0], "0", "00", "00"},
        {&spi().txtDeviceAdr, "100", "100", "100"},   {&spi().txtDeviceAdr, "101", "50", "50"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.box->path() + " " + c.typed);
        enter(*c.box, c.typed);
        EXPECT_EQ(c.box->text(), c.onEnter);
        type(*c.box, c.typed);
        c.box->userLeave();
        EXPECT_EQ(c.box->text(), c.onLeave);
        EXPECT_TRUE(c.box != &spi().txtACR[0] || spi().wipers.ACRImage == hexToInt(c.onLeave));
    }
    spi().txtDeviceAdr.setText("NA");
    spi().txtDeviceAdr.userFocus();
    spi().txtDeviceAdr.userLeave();
    EXPECT_EQ(spi().txtDeviceAdr.text(), "NA");
    spi().cmdSlave.userClick();
    for (const auto& [taps, typed, hex, frame] : {std::tuple{4, "FF", "00", "50 C0 00"},
                                                  {4, "80", "80", "50 C0 80"},
                                                  {7, "1FF", "1FF", "50 C0 FF"}}) { // the last two digits
        spi().OptTaps[taps].userClick();
        frames();
        enter(spi().txtHexDataWrt[0], typed);
        EXPECT_THAT(frames(), ElementsAre(frame));
        EXPECT_EQ(spi().txtHexDataWrt[0].text(), hex);
        EXPECT_EQ(bench.context().results.kept().back().text,
                  "Wrote " + std::string(frame).substr(6) + " to wiper 0");
    }
    struct Refusal {
        TextBox* box;
        const char *text, *fault;
    };
    for (const auto& [box, text, said] : {Refusal{&spi().txtDeviceAdr, "100", "Overflow [OK]"},
                                          {&spi().txtBaseVRKReadAddress, "FF", "Overflow [OK]"},
                                          {&spi().txtSPIRDQuantity, "9", "Subscript out of range [OK]"},
                                          {&spi().txtSPIRDQuantity, "", "Subscript out of range [OK]"}}) {
        const std::string before = box->text();
        box->setText(text);
        wire.clear();
        spi().cmdI2Read[1].userClick();
        EXPECT_THAT(boxes(), ElementsAre(said));
        EXPECT_THAT(sent(), IsEmpty());
        expectNothingLeftDisabled();
        box->setText(before);
    }
    spi().txtSPIRDQuantity.setText("2"); // the ID that comes back is no answer
    spi().cmdI2Read[1].userClick();
    EXPECT_EQ(spi().Shape1[2].colour(), Colour::LightGreen);
    EXPECT_NE(stateOf(spi().lblPotRead[1]), State::Fresh);
}

TEST_F(SpiPanelTest, AddressPinsMoveThePartsId) {
    openKv4184();
    for (const int pin : {0, 3})
        spi().chkI2CAdr[pin].userClick();
    EXPECT_EQ(spi().txtCalcAddr.text(), "62");
    enter(spi().txtHexDataWrt[0], "2A");
    EXPECT_EQ(spi().Shape1[1].colour(), Colour::LightRed); // the part has left its old ID
    spi().cmdCopyAdr.userClick();
    enter(spi().txtHexDataWrt[0], "2A");
    EXPECT_EQ(frames().back(), "62 C0 2A");
    EXPECT_EQ(spi().Shape1[1].colour(), Colour::LightGreen);
}

TEST_F(SpiPanelTest, WithVccOffWipersAreLeftAloneAndRegistersAnswerNothing) {
    openSpi(false);
    choose("KV4184", &frmVRK_SPI1::mnuKV4184);
    type(spi().txtHexDataWrt[1], "15");
    spi().CMDxMIT[1].userClick();
    EXPECT_TRUE(spi().wipers.HexPending); // kept until there is power
    spi().cmdI2Read[1].userClick();
    spi().cmdReadAllWipers[0].userClick();
    act([this] { spi().sweepWiper(1, 0, 5, 1); });
    EXPECT_EQ(boxes(), std::vector<std::string>(4, "VCC is not turned on. [OK]"));
    EXPECT_THAT(sent(), IsEmpty());
    spi().cmdACRRead.userClick();
    spi().cmdWriteGP.userClick();
    EXPECT_THAT(frames(), ElementsAre("50 B8 00", "50 C4 00"));
    EXPECT_EQ(spi().Shape2[1].colour(), Colour::LightRed);
    EXPECT_EQ(spi().Shape2[2].colour(), Colour::LightRed);
    EXPECT_NE(stateOf(spi().txtACR[1]), State::Fresh);
    expectNothingLeftDisabled();
    spi().OptVCC[0].userClick();
    frames();
    spi().CMDxMIT[1].userClick(); // Enter's write and the button's own
    EXPECT_THAT(frames(), ElementsAre("50 C1 15", "50 C1 15"));
}

/// Whatever fails: red lamps, no reading that looks fresh, everything usable again.
TEST_F(SpiPanelTest, FailedExchangeIsNoReadingAndLeavesNothingBehind) {
    const auto failing = [this](sim::FaultKind kind) {
        fault(kind, 1, static_cast<int>(Command::SpiTransfer), 6100);
        answer(Choice::Retry);
    };
    const std::pair<const char*, std::function<void()>> failures[] = {
        {"another ID", [this] { spi().txtDeviceAdr.setText("54"); }},
        {"no part", [this] { bus.socket(std::nullopt); }},
        {"lost reply", [&] { failing(sim::FaultKind::NoReply); }},
        {"late reply", [&] { failing(sim::FaultKind::LateReply); }},
        {"write fails", [&] { failing(sim::FaultKind::WriteFails); }},
    };
    openKv4184();
    for (const auto& [name, fail] : failures)
        for (const auto& [button, reading] :
             {std::pair<Button*, Control*>{&spi().cmdACRRead, &spi().txtACR[1]},
              {&spi().cmdI2Read[1], &spi().lblPotRead[1]},
              {&spi().CMDxMIT[1], nullptr}}) {
            SCOPED_TRACE(name + (" " + button->path()));
            bus.socket("KV4184");
            spi().txtDeviceAdr.setText("50");
            button->userClick();
            const bool write = reading == nullptr;
            EXPECT_EQ(spi().Shape1[write ? 1 : 2].colour(), Colour::LightGreen);
            EXPECT_TRUE(write || stateOf(*reading) == State::Fresh);
            fail();
            button->userClick();
            (void)boxes(); // the link's
            EXPECT_TRUE(write || stateOf(*reading) == State::Stale);
            EXPECT_EQ(spi().Shape2[write ? 0 : 1].colour(), Colour::LightRed);
            EXPECT_EQ(spi().Shape1[write ? 1 : 2].colour(), Colour::LightRed);
            EXPECT_THAT(bench.context().results.kept().back().text, HasSubstr("failed"));
            expectNothingLeftDisabled();
        }
}

TEST_F(SpiPanelTest, WhatAnotherFrameBroughtIsNoReading) {
    openKv4184();
    enter(spi().txtHexDataWrt[2], "11");
    enter(spi().txtHexDataWrt[1], "22");
    for (const auto& [button, reading, ms] :
         {std::tuple<Button*, Control*, int>{&spi().cmdACRRead, &spi().txtACR[1], 21},
          {&spi().cmdI2Read[1], &spi().lblPotRead[1], 1},
          {&spi().CMDxMIT[1], nullptr, 1}}) {
        at(ms, [this] {
            spi().cmdI2Read[2].userClick();
            spi().CMDxMIT[2].userClick();
        });
        button->userClick();
        EXPECT_EQ(bench.context().results.kept().back().detail, "another frame went out meanwhile");
        EXPECT_TRUE(reading == nullptr || stateOf(*reading) != State::Fresh);
        EXPECT_EQ(stateOf(spi().lblPotRead[2]), State::Fresh);
        expectNothingLeftDisabled();
    }
}

TEST_F(SpiPanelTest, UnplugInALongActionEndsIt) {
    openKv4184();
    const std::pair<const char*, std::function<void()>> actions[] = {
        {"read all", [this] { (void)spi().cmdReadAllWipers[0].userClick(); }},
        {"sweep", [this] { act([this] { spi().sweepWiper(1, 0, 20, 1); }); }},
    };
    for (const auto& [name, run] : actions) {
        SCOPED_TRACE(name);
        spi().OptVCC[0].userClick();
        spi().cmdReadAllWipers[0].userClick();
        at(100, [this] { bus.unplug(0); });
        answer(Choice::Retry, [this] { bus.plug(0); }); // without power for its part
        for ([[maybe_unused]] const int more : {1, 2, 3})
            answer(Choice::Retry);
        run();
        (void)boxes();
        EXPECT_EQ(stateOf(spi().lblPotRead[1]), State::Stale);
        EXPECT_EQ(spi().ShpVCCon.colour(), Colour::Black);
        expectNothingLeftDisabled();
    }
}

TEST_F(SpiPanelTest, BothPanelsKeepTheirOwnPartTapsPinsAndEntries) {
    openSpi();
    choose("KV4180", &frmVRK_SPI1::mnuKV4180);
    type(spi().txtHexDataWrt[3], "99");
    spi().chkI2CAdr[0].userClick();
    spi().cmdMMenu.userClick();
    startup().cboVRKSelect.userSelect(frmStartup::kI2C);
    bus.socket("KV4071");
    EXPECT_EQ(i2c().wipers.TapCount, 128);
    EXPECT_FALSE(i2c().wipers.HexPending);
    EXPECT_EQ(bus.state().sfr.at("90") & 0x08, 0); // the board's switch: I2C
    i2c().OptVCC[0].userClick();
    enter(i2c().txtHexDataWrt[0], "44");
    EXPECT_EQ(bus.state().part->wipers.front(), 0x44);
    i2c().chkI2CAdr[1].userClick();
    i2c().cmdMMenu.userClick();
    startup().cboVRKSelect.userSelect(frmStartup::kSPI);
    EXPECT_EQ(bus.state().sfr.at("90") & 0x08, 0x08);
    EXPECT_EQ(bus.state().sfr.at("80") & 0xC0, 0x40); // A0 as this panel's box says, not A1
    const auto* taps = bench.sharedValues().find("frmVRK_SPI1", "TapCount");
    ASSERT_NE(taps, nullptr);
    EXPECT_EQ(std::get<std::int64_t>(taps->get(0)), 256);
    bus.socket("KV4180");
    spi().OptVCC[0].userClick();
    frames();
    spi().CMDxMIT[3].userClick();
    EXPECT_THAT(frames(), ElementsAre("C3 99", "C3 99"));
    EXPECT_TRUE(spi().mnuScriptShow.userClick().done());
    EXPECT_TRUE(std::get<bool>(bench.sharedValues().find("SPIBusMode")->get(0)));
}

} // namespace
} // namespace vrk
