#include "tests/platform/hid/FakeHost.h"
#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using report::Command;
using sim::FaultKind;
using ::testing::Each;
using ::testing::ElementsAre;

constexpr char kReadFailed[] = "Please check USB connection.ReadFile error.";
constexpr char kWriteFailed[] = "Please check USB connection.WriteFile error.";
constexpr char kCheckStatus[] = "Please check USB connection.\r\ncheckStatus";
constexpr char kNotFound[] =
    "Please check USB connection.\r\nVRK_HID  Evaluation Board (PID &H2034) not found.";
constexpr char kBadAddress[] = "Invalid I2C address. Press Retry to return to GUI and enter valid address or "
                               "Cancel to close GUI.";

std::string with(const char* text, const char* answer) {
    return std::string(text) + " [" + answer + "]";
}

class LinkTest : public TestBench {
  protected:
    /// A good reply to the next transfers, whatever stands in the socket.
    void replyWith(const std::vector<std::uint8_t>& data, int times = 1) {
        std::vector<std::uint8_t> reply = {1, 0};
        reply.insert(reply.end(), data.begin(), data.end());
        bus.reply(static_cast<int>(Command::I2cTransfer), reply, times);
    }
    int handles(int boardNumber = 0) const { return bus.state(boardNumber).handles; }
};

/// Each sender with a buffer full of EE in front of it: what it names, and whether it cleared the rest. A
/// stale report shows whether it drained the queue first.
TEST_F(LinkTest, EverySenderLaysItsReportOut) {
    loadConsoles();
    frmMainF340& c = console();
    c.link().i2cAddress = 0x50;
    c.txtNumToRead.setText("4");
    c.txtNumToWrite.setText("3");
    c.txtStartRegRD.setText("10");
    c.txtStartRegWr.setText("2C");
    for (const auto& [index, text] : {std::pair{0, "50"}, {1, "C0"}, {2, "7f"}})
        c.txtWriteVal[index].setText(text);
    c.chkSPIClockPhaseChange.setValue(1);
    c.txtClockPhaseChangeByte.setText("12");
    c.txtADSAMP[0].setText("12");
    c.txtADSAMP[1].setText("34");
    c.txtADCLoopCount.setText("200");
    c.cboADCReadMode[0].setListIndex(2);
    c.cboADCReadMode[1].setListIndex(1);
    c.cboSPIclock_init();

    enum : unsigned { kNothing = 0, kPurges = 1, kFills = 2, kBoth = 3 };
    const std::tuple<unsigned, const char*, std::function<void()>> rows[] = {
        {kBoth, "01 00", [&] { c.cmdFirmwareVersion.userClick(); }},
        {kFills, "01 01 00 02", [&] { c.chkLED[1].userClick(); }},
        {kBoth, "01 01 01", [&] { c.getLEDstate(); }},
        {kFills, "01 02 00 08 08 01", [&] { c.chkWeakPullUpDisable.userClick(); }},
        {kFills, "01 03 00 08 00", [&] { c.setGPvalue(); }},
        {kFills, "01 04 00 03 00 00", [&] { c.chkStoppedWrite.userClick(); }},
        {kFills, "01 04 00 03 01 00", [&] { c.chkExtendHold.userClick(); }},
        {kFills, "01 04 00 0B 01 00", [&] { c.chk2WireRead.userClick(); }},
        {kFills, "01 04 00 0A 01 00", [&] { c.chkRepeatedStart.userClick(); }},
        {kBoth, "01 04 00 0A 01 01", [&] { c.cmdToggleSCL.userClick(); }},
        {kBoth, "01 04 01", [&] { c.getI2Coptions(); }},
        {kFills, "01 05 00 F0", [&] { c.cboSMBusFrequency.userSelect(0); }},
        {kBoth, "01 05 01", [&] { c.cboSMBusFrequency_init(); }},
        {kPurges, "01 06 51 04 01 10", [&] { c.cmdRead.userClick(); }},
        {kNothing, "01 06 51 04 00", [&] { c.cmdSimpleI2cRd.userClick(); }}, // two-wire read is on
        {kPurges, "01 06 50 03 01 2C 50 C0 7F", [&] { c.cmdWrite.userClick(); }},
        {kPurges, "01 06 50 03 01 2C 50 C0 7F", [&] { c.cmdSimpleI2cWr.userClick(); }},
        {kFills, "01 07 00 05", [&] { c.chkSPIckpol.userClick(); }},
        {kFills, "01 07 00 07", [&] { c.chkSPIckpha.userClick(); }},
        {kFills, "01 07 00 03", [&] { c.chkSPIss.userClick(); }},
        {kBoth, "01 07 01", [&] { c.getSPIconfig(); }},
        {kFills, "01 08 00 17", [&] { c.cboSPIClock.userSelect(0); }},
        {kBoth, "01 08 01", [&] { c.cboSPIclock_init(); }},
        {kPurges, "01 09 00 00 01 0C 03 50 C0 7F", [&] { c.cmdSPIWrite.userClick(); }},
        {kFills, "01 0A 00 38", [&] { c.cmdWriteADCClock.userClick(); }},
        {kBoth, "01 0A 01", [&] { c.cmdReadADCClock.userClick(); }},
        {kBoth, "01 0B 01", [&] { c.cmdRdADCMode.userClick(); }},
        {kFills, "01 0C 00 0A 1F", [&] { c.cmdMuxWrite.userClick(); }},
        {kBoth, "01 0C 01", [&] { c.cmdRdADMux.userClick(); }},
        {kFills, "01 0D 00 00", [&] { c.cmdADCWrmode1.userClick(); }},
        {kBoth, "01 0D 01", [&] { c.cmdADCRDMode16.userClick(); }},
        {kFills, "01 0E 00 C8", [&] { c.cmdWrtLoopCount.userClick(); }},
        {kBoth, "01 0E 01", [&] { c.cmdRdADCAvg.userClick(); }},
        {kBoth, "01 0F 00 12 34", [&] { c.cmdADCWriteSampleRate.userClick(); }},
        {kBoth, "01 0F 01", [&] { c.cmdADCRdSampleRate.userClick(); }},
        {kNothing, "01 10 00 01", [&] { c.cmdADCWrEn.userClick(); }},
        {kPurges, "01 10 01", [&] { c.cmdADCRDEnable.userClick(); }},
        {kPurges, "01 11 02 01", [&] { c.cmdADCRDData.userClick(); }},
        {kFills, "01 12 00 D4 A5",
         [&] {
             c.txtSFRAddress.setText("D4");
             c.txtSFRWRData.setText("A5");
             c.cmdSetSFR.userClick();
         }},
        {kBoth, "01 12 01 D4", [&] { c.cmdGetSDFValue.userClick(); }},
        // These two clear the buffer first and drain after it.
        {kPurges, "01 13 00 84 02 01", [&] { c.cmdWrtADReg.userClick(); }},
        {kPurges, "01 13 01 84 02 01", [&] { c.cmdRD7150.userClick(); }},
    };
    replyWith({}, 4);
    for (const auto& [prepares, bytes, run] : rows) {
        SCOPED_TRACE(bytes);
        link().purgeInputReports();
        link().reportBuffer.fill(0xEE);
        link().reportBuffer[0] = 1;
        std::vector<std::uint8_t> stale(hid::kReportSize, 0xEE); // drained, it takes the place of the EE's
        stale[0] = 1;
        bus.stale(stale);
        wire.clear();
        run();
        const bool drained = !wire.empty() && wire.front().direction == hid::WireEvent::Direction::In;
        EXPECT_EQ(drained, (prepares & kPurges) != 0);
        std::string expected = bytes;
        while (expected.size() < 3 * hid::kReportSize - 1)
            expected += (prepares & kFills) != 0 ? " 00" : " EE";
        const auto reports = sent(hid::kReportSize);
        ASSERT_FALSE(reports.empty());
        EXPECT_EQ(reports.back(), expected);
    }
}

TEST_F(LinkTest, ReplyIsGoodUntil6000Milliseconds) {
    loadConsoles();
    replyWith({0x7F}, 3);
    fault(FaultKind::LateReply, 1, 6, 5999);
    console().cmdRead.userClick();
    EXPECT_EQ(link().i2cStatus, kLinkGood);
    EXPECT_EQ(console().TXTI2C[0].text(), "7F");
    EXPECT_EQ(sent(Command::I2cTransfer).size(), 1U);

    fault(FaultKind::LateReply, 1, 6, 6000);
    std::vector<int> seen;
    answer(Choice::Retry, [&] {
        seen = {link().i2cStatus, link().hidLinkCode};
        EXPECT_EQ(link().health(), modHID::Health::Silent);
    });
    const auto before = clock.now();
    console().cmdRead.userClick();
    EXPECT_GE(clock.now() - before, Milliseconds(6000));
    EXPECT_THAT(boxes(), ElementsAre(with(kReadFailed, "Retry")));
    EXPECT_THAT(seen, ElementsAre(kLinkGood, 1));     // a time-out leaves the status of the last reply
    EXPECT_EQ(sent(Command::I2cTransfer).size(), 2U); // sent again after the discovery
    EXPECT_EQ(handles(), 2);
}

TEST_F(LinkTest, TransferIsRepeatedForEachRetryAndEndsWithCancel) {
    loadConsoles();
    replyWith({}, 3);
    std::vector<int> codes;
    const auto note = [&] { codes.push_back(link().hidLinkCode); };
    fault(FaultKind::WriteFails, 2, 6);
    answer(Choice::Retry, note);
    answer(Choice::Retry);
    console().cmdRead.userClick();
    EXPECT_THAT(boxes(), ElementsAre(with(kWriteFailed, "Retry"), with(kWriteFailed, "Retry")));
    EXPECT_EQ(sent(Command::I2cTransfer).size(), 3U);
    EXPECT_EQ(link().i2cStatus, kLinkGood);

    fault(FaultKind::WriteFails, 1, 6);
    answer(Choice::Retry, note);
    console().cmdWrite.userClick();
    EXPECT_THAT(boxes(), ElementsAre(with(kWriteFailed, "Retry")));
    EXPECT_THAT(codes, ElementsAre(4, 4));

    fault(FaultKind::NoReply, 1, 6);
    answer(Choice::Cancel);
    EXPECT_EQ(console().cmdWrite.userClick().kind, Outcome::Kind::Ended);
    EXPECT_THAT(boxes(), ElementsAre(with(kReadFailed, "Cancel")));
    EXPECT_EQ(link().msgResult, 2);
    EXPECT_EQ(handles(), 0);
    EXPECT_EQ(link().hidHandle + link().hidOverlappedHandle, -2);
}

TEST_F(LinkTest, OtherCommandsAreLostWithTheirReply) {
    loadConsoles();
    for (const FaultKind kind : {FaultKind::NoReply, FaultKind::WriteFails}) {
        fault(kind, 1, 14);
        answer(Choice::Retry);
        EXPECT_TRUE(console().cmdRdADCAvg.userClick().done());
        EXPECT_THAT(boxes(), ElementsAre(with(kCheckStatus, "Retry")));
        EXPECT_EQ(link().msgResult, 1); // the discovery found the board
        EXPECT_EQ(sent(Command::AdcLoopCount).size(), 1U);
    }
    fault(FaultKind::NoReply, 1, 14);
    answer(Choice::Cancel);
    EXPECT_EQ(console().cmdRdADCAvg.userClick().kind, Outcome::Kind::Ended);
    EXPECT_THAT(boxes(), ElementsAre(with(kCheckStatus, "Cancel")));
    EXPECT_EQ(handles(), 0);
}

TEST_F(LinkTest, RetryOverALostReplyShowsTheBoardsStateAndNoOtherRegister) {
    loadConsoles();
    for (CheckBox* box : {&console().chkStoppedWrite, &console().chkSPIckpha, &console().chkLED[1]})
        if (!box->checked())
            box->userClick();
    const int rate = console().cboSMBusFrequency.listIndex();
    ASSERT_GE(rate, 0);
    for (const Command command : {Command::Led, Command::I2cClock, Command::I2cOptions, Command::SpiConfig}) {
        SCOPED_TRACE(static_cast<int>(command));
        fault(FaultKind::NoReply, 1, static_cast<int>(command));
        answer(Choice::Retry);
        console().cboEVBinstance.userSelect(0);
        EXPECT_THAT(boxes(), ElementsAre(with(kCheckStatus, "Retry")));
        EXPECT_TRUE(console().chkStoppedWrite.checked() && console().chkSPIckpha.checked());
        EXPECT_NE(console().chkLED[1].value(), 0);
        EXPECT_EQ(console().cboSMBusFrequency.listIndex(), rate);
    }
    console().txtSFRAddress.setText("80");
    fault(FaultKind::NoReply, 1, 18);
    answer(Choice::Retry);
    console().cmdGetSDFValue.userClick();
    EXPECT_THAT(boxes(), ElementsAre(with(kCheckStatus, "Retry")));
    EXPECT_EQ(bench.context().results.kept().back().text, "No reply: register access");
    // What Retry read last, register F8, and not the request: 01 12 01 80.
    EXPECT_EQ(console().lblSFRBuf[2].caption() + console().lblSFRBuf[3].caption(), "000D");
    console().chkSPIread.setValue(1);
    fault(FaultKind::NoReply, 1, 9);
    answer(Choice::Retry);
    console().cmdSPIWrite.userClick();
    EXPECT_THAT(boxes(), ElementsAre(with(kCheckStatus, "Retry")));
    EXPECT_EQ(console().txtReadVal[0].text(), "00");
    // Pins that were read before the loss are not laid over those that Retry has read.
    const auto pins = [this](int port) {
        return console().lblWrGPData[port].caption() + console().lblWrOC[port].caption();
    };
    const std::string first = pins(0);
    for (const FaultKind kind : {FaultKind::NoReply, FaultKind::WriteFails})
        for (const char* getter : {"getGPvalue", "getGPconf"}) {
            fault(kind, 1, 18);
            answer(Choice::Retry);
            EXPECT_TRUE(act([&] { (*console().findAction(getter))({}); }).done());
            EXPECT_THAT(boxes(), ElementsAre(with(kCheckStatus, "Retry")));
            EXPECT_EQ(pins(0) + pins(2), first + "10F8");
        }
    console().cmdFirmwareVersion.userClick();
    fault(FaultKind::WriteFails, 1, 0);
    answer(Choice::Retry);
    console().cmdFirmwareVersion.userClick();
    EXPECT_EQ(boxes().size(), 1U);
    EXPECT_NE(console().txtFirmwareVersion.freshness()->state, Freshness::State::Fresh);
    sent();
    console().cmdSimpleI2cRd.userClick(); // sets no report ID of its own
    EXPECT_THAT(sent(2), ElementsAre("01 06"));
}

TEST_F(LinkTest, LateReplyNeverAnswersAnotherRequest) {
    openI2c();
    link().i2cAddress = 0x50;
    console().txtWriteVal[0].setText("2A");
    console().cmdWrite.userClick();
    for (int late = 6000; late < 6016; ++late) { // wherever in Retry's discovery it comes
        SCOPED_TRACE(late);
        console().TXTI2C[0].setText("--");
        console().txtPBufRd[2].setText("--");
        fault(FaultKind::LateReply, 1, 6, late);
        answer(Choice::Retry);
        EXPECT_TRUE(console().cmdRead.userClick().done());
        EXPECT_EQ(boxes().size(), 1U);
        EXPECT_EQ(console().TXTI2C[0].text(), "2A");
        EXPECT_EQ(console().txtPBufRd[2].text() + console().txtPBufRd[6].text(), "7005");
        EXPECT_EQ(console().cboSMBusFrequency.text(), "400");
        // A service without a drain of its own, behind a time-out without a dialog.
        fault(FaultKind::LateReply, 1, 6, late);
        console().cmdSimpleI2cRd.userClick();
        clock.sleep(Milliseconds(20));
        sent();
        console().txtStartRegRD.setText("10");
        console().cmdSimpleI2cRd.userClick();
        console().txtStartRegRD.setText("00");
        console().cmdSimpleI2cRd.userClick();
        EXPECT_EQ(console().txtReadVal[0].text(), "2A");
    }
}

TEST_F(LinkTest, DeviceThatNeverStopsSendingIsToldOnce) {
    loadConsoles();
    const auto flood = [this] {
        for (int report = 0; report < 63; ++report)
            bus.stale({1, 0, 0xEE});
    };
    int reads = 0;
    const Subscription more = recorder.observe([&](const hid::WireEvent& event) {
        if (event.direction == hid::WireEvent::Direction::In && event.report[2] == 0xEE && ++reads % 60 == 0)
            flood();
    });
    flood();
    link().purgeInputReports();
    link().purgeInputReports();
    EXPECT_EQ(reads, 2 * modHID::kMostStale);
    const auto told = boxes();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_THAT(told[0], ::testing::HasSubstr("never stops sending"));
}

/// As often as the user likes, in the discovery itself too: nothing may pile up on the stack.
TEST_F(LinkTest, RetryMayBeAnsweredAnyNumberOfTimes) {
    loadConsoles();
    constexpr int kTimes = 5000;
    for (const auto& [kind, command, button] : {std::tuple{FaultKind::WriteFails, 1, &console().cmdReconnect},
                                                {FaultKind::WriteFails, 18, &console().cmdGetSDFValue},
                                                {FaultKind::WriteFails, 6, &console().cmdWrite},
                                                {FaultKind::NoReply, 5, &console().cmdReconnect}}) {
        SCOPED_TRACE(button->name());
        // A transfer's own Retry reads the board each time; a few do.
        const int times = command == 6 ? 100 : kTimes;
        fault(kind, times, command);
        for (int time = 0; time < times; ++time)
            answer(Choice::Retry);
        replyWith({});
        EXPECT_TRUE(button->userClick().done());
        EXPECT_EQ(boxes().size(), static_cast<std::size_t>(times));
        EXPECT_EQ(link().instance() + console().cboEVBinstance.listIndex(), 0);
        EXPECT_EQ(console().cboSMBusFrequency.text(), "400");
        wire.clear();
        bus.clear();
    }
}

TEST_F(LinkTest, ErrorByteAsksForTheAddressButIsNoLinkFailure) {
    loadConsoles();
    fault(FaultKind::Nak, 2, 6);
    answer(Choice::Retry);
    console().cmdRead.userClick();
    EXPECT_THAT(boxes(), ElementsAre(with(kBadAddress, "Retry")));
    EXPECT_EQ(link().i2cStatus, kLinkError);
    EXPECT_EQ(sent(Command::I2cTransfer).size(), 1U);
    EXPECT_EQ(console().cmdWrite.userClick().kind, Outcome::Kind::Ended);
    EXPECT_THAT(boxes(), ElementsAre(with(kBadAddress, "Cancel")));
}

TEST_F(LinkTest, UnpluggedBoardIsNoticedAtOnce) {
    loadConsoles();
    bus.unplug(0);
    answer(Choice::Retry, [&] { bus.plug(0); });
    replyWith({0x42}, 2);
    auto before = clock.now();
    link().purgeInputReports();
    EXPECT_EQ(clock.now(), before);
    console().cmdRead.userClick();
    EXPECT_THAT(boxes(), ElementsAre(with(kWriteFailed, "Retry")));
    EXPECT_LT(clock.now() - before, Milliseconds(1000));
    EXPECT_EQ(console().TXTI2C[0].text(), "42");
    EXPECT_EQ(handles(), 2);

    // Gone between the write and its reply.
    const Subscription pull = recorder.observe([this](const hid::WireEvent& event) {
        if (event.direction == hid::WireEvent::Direction::Out && event.report[1] == 6)
            bus.unplug(0);
    });
    answer(Choice::Cancel, [&] {
        EXPECT_EQ(link().hidLinkCode, 1);
        EXPECT_EQ(link().health(), modHID::Health::Gone);
    });
    before = clock.now();
    EXPECT_EQ(console().cmdRead.userClick().kind, Outcome::Kind::Ended);
    EXPECT_LT(clock.now() - before, Milliseconds(100));
    EXPECT_THAT(boxes(), ElementsAre(with(kReadFailed, "Cancel")));
}

TEST_F(LinkTest, SecondOfTwoBoardsAmongForeignDevices) {
    bus.setBoards(2);
    bus.setForeign(3);
    loadConsoles();
    EXPECT_THAT(console().cboEVBinstance.rows(),
                ElementsAre(RowControl::Row{"0", 0}, RowControl::Row{"1", 1}));
    EXPECT_EQ(handles(0) * handles(1), 4);
    console().chkLED[0].userClick();
    console().chkSPIckpol.userClick();
    EXPECT_TRUE(bus.state(0).leds.green);
    EXPECT_FALSE(bus.state(1).leds.green);
    wire.clear();

    // The board chosen is read over the console's fields, and nothing is written to it.
    console().cboEVBinstance.userSelect(1);
    EXPECT_THAT(wire, Each(::testing::Field(&hid::WireEvent::board, 1)));
    EXPECT_EQ(console().chkLED[0].value(), 0);
    EXPECT_EQ(console().chkSPIckpol.value(), 0);
    const auto reports = sent(3);
    ASSERT_EQ(reports.size(), 4U + 2 * 26);
    EXPECT_THAT(std::vector(reports.begin(), reports.begin() + 4),
                ElementsAre("01 01 01", "01 05 01", "01 04 01", "01 07 01"));
    EXPECT_THAT(std::vector(reports.begin() + 4, reports.end()), Each("01 12 01"));
    console().chkLED[1].userClick();
    EXPECT_TRUE(bus.state(1).leds.red);
    EXPECT_FALSE(bus.state(0).leds.red);

    for (const bool retry : {false, true}) {
        console().cboEVBinstance.userSelect(1);
        bus.unplug(0);
        bus.plug(0);
        sent();
        if (retry) {
            fault(FaultKind::WriteFails, 1, 14);
            answer(Choice::Retry);
            console().cmdRdADCAvg.userClick();
            EXPECT_EQ(boxes().size(), 1U);
            wire.erase(wire.begin()); // what failed went to board 1
        } else {
            console().cmdReconnect.userClick();
        }
        EXPECT_EQ(link().instance() + console().cboEVBinstance.listIndex(), 0);
        EXPECT_THAT(wire, Each(::testing::Field(&hid::WireEvent::board, 0)));
        EXPECT_EQ(handles(0) * handles(1), 4);
    }

    // Devices of other makers are closed again at once, the boards' two handles when the link ends.
    hid::FakeHost host;
    host.devices = {{1, 2, "mouse"}, {report::kVendorId, report::kProductId, "board"}, {1, 3, "keys"}};
    Trace trace;
    modHID other(bench.context(), host, trace);
    other.initHIDConnection();
    EXPECT_THAT(host.closed, ElementsAre(1, 3));
    other.closeHIDHandles();
    EXPECT_THAT(host.closed, ElementsAre(1, 3, 2, 2));
}

TEST_F(LinkTest, WithoutABoardOneWarningThenTheSecondSelectionGoesOn) {
    bus.setForeign(2);
    bus.unplug(0);
    ASSERT_TRUE(bench.start().done());
    ASSERT_TRUE(startup().cboVRKSelect.userSelect(frmStartup::kI2C).done());
    constexpr char kWarning[] = "Evaluation Board is not connected, or another application is using it. [OK]";
    EXPECT_THAT(boxes(), ElementsAre(with(kNotFound, "Cancel"), kWarning));
    EXPECT_EQ(startup().cboVRKSelect.listIndex(), 0);
    EXPECT_TRUE(bench.frmStartup.visible());
    EXPECT_THAT(wire, Each(::testing::Field(&hid::WireEvent::failed, true)));
    EXPECT_EQ(console().cboEVBinstance.rowCount(), 0);

    answer(Choice::Retry, [&] { bus.plug(0); });
    EXPECT_TRUE(startup().cboVRKSelect.userSelect(frmStartup::kI2C).done());
    EXPECT_THAT(boxes(), ElementsAre(with(kCheckStatus, "Retry")));
    EXPECT_TRUE(bench.frmVRK_User1.visible());
    EXPECT_EQ(i2c().ShpAttach.colour(), Colour::LightGreen);
    EXPECT_GT(i2c().cboI2CClock.rowCount(), 0);
    EXPECT_EQ(console().cboEVBinstance.rowCount(), 1);

    bus.unplug(0);
    answer(Choice::Retry);
    answer(Choice::Cancel);
    EXPECT_EQ(console().cmdFirmwareVersion.userClick().kind, Outcome::Kind::Ended);
    EXPECT_THAT(boxes(), ElementsAre(with(kCheckStatus, "Retry"), with(kNotFound, "Cancel")));
}

TEST_F(LinkTest, RequestsThatLeaveTheReportAreFaultsBeforeAnythingIsSent) {
    loadConsoles();
    frmMainF340& c = console();
    replyWith({}, 2);
    for (const auto& [box, button, most] : {std::tuple{&c.txtNumToRead, &c.cmdRead, 62},
                                            {&c.txtNumToWrite, &c.cmdWrite, 58},
                                            {&c.txtNumToWrite, &c.cmdSPIWrite, 57}}) {
        SCOPED_TRACE(button->name());
        for (const int count : {most, most + 1, 256}) {
            box->setText(decimalText(count));
            button->userClick();
            EXPECT_EQ(sent().size(), count == most ? 1U : 0U);
        }
        EXPECT_THAT(boxes(), ElementsAre("Subscript out of range [OK]", "Overflow [OK]"));
    }
}

} // namespace
} // namespace vrk
