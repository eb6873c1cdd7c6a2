#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using report::Command;
using sim::FaultKind;
using ::testing::ElementsAre;

class ConsoleTest : public TestBench {};

TEST_F(ConsoleTest, LedBitsGoIntoTheBoxesAsTheyCome) {
    loadConsoles();
    bus.reply(1, {1, 0, 3});
    console().getLEDstate();
    EXPECT_EQ(console().chkLED[0].value(), 1);
    EXPECT_EQ(console().chkLED[1].value(), 2);
    EXPECT_THAT(sent(Command::Led, 4), ElementsAre("01 01 01 00"));
    console().chkLED[0].userClick(); // any value but 0 counts as lit
    EXPECT_THAT(sent(Command::Led, 4), ElementsAre("01 01 00 02"));
}

TEST_F(ConsoleTest, FirmwareVersionText) {
    loadConsoles();
    console().cmdFirmwareVersion.userClick();
    EXPECT_EQ(console().lblFirmwareVersion.caption(), "Firmware Version 1.2 - 2008/June/12");
    bus.reply(0, {1, 0, 10, 0, 0x07, 0xE9, 13, 1});
    console().cmdFirmwareVersion.userClick();
    EXPECT_EQ(console().txtFirmwareVersion.text(), "Firmware Version 10.0 - 2025//1");
}

TEST_F(ConsoleTest, EntryRules) {
    loadConsoles();
    frmMainF340& c = console();
    using Row = std::tuple<TextBox*, const char*, const char*, const char*>;
    for (const auto& [field, typed, text, left] :
         {Row{&c.txtRegister, "g7f", "7F", "7F"}, Row{&c.txtWriteIndividual[1], "abc", "AB", "AB"},
          Row{&c.txtWriteVal[63], "-0x5", "05", "05"}, Row{&c.txtSFRAddress, "e1", "E1", "E1"},
          Row{&c.txtPBuf[25], "z9", "9", "9"}, Row{&c.txtNumToRead, "4a0", "40", "32"},
          Row{&c.txtNumToRead, "32", "32", "32"}, Row{&c.txtNumToWrite, "0", "0", "1"},
          Row{&c.txtNumToWrite, "-7", "7", "7"}, Row{&c.txtADCLoopCount, "256", "256", "255"},
          Row{&c.txtADCLoopCount, "0", "0", "1"}, Row{&c.txtADCLoopCount, "255", "255", "255"}}) {
        SCOPED_TRACE(field->path() + " " + typed);
        type(*field, typed);
        EXPECT_EQ(field->text(), text);
        field->userLeave();
        EXPECT_EQ(field->text(), left);
    }
    c.txtNumToWrite.userEdit("", 0); // emptied
    c.txtNumToWrite.userLeave();
    EXPECT_EQ(c.txtNumToWrite.text(), "1");
}

TEST_F(ConsoleTest, ClipboardKeysPassTheFilter) {
    loadConsoles();
    constexpr int kCtrl = 2;
    TextBox& field = console().txtWriteVal[3];
    type(field, "A5");
    field.userKey('A', kCtrl);
    EXPECT_EQ(field.selectedText(), "A5");
    field.userSelect(1, 1);
    field.userKey('C', kCtrl);
    EXPECT_EQ(clipboard.text(), "5");
    clipboard.setText("zq");
    field.userKey('V', kCtrl);
    EXPECT_EQ(field.text(), "zq");
    clipboard.setText("forty");
    console().txtNumToRead.userKey('V', kCtrl);
    console().txtNumToRead.userLeave();
    EXPECT_EQ(console().txtNumToRead.text(), "1");
    console().txtSFRAddress.userKey('V', kCtrl); // not a field with clipboard keys
    EXPECT_EQ(console().txtSFRAddress.text(), "F5");
}

/// Every field that shows what the board said: never before its read, fresh behind it, stale once a read
/// fails.
TEST_F(ConsoleTest, ReadingsKnowWhatTheyAreWorth) {
    loadConsoles();
    frmMainF340& c = console();
    c.chkSPIread.setValue(1);
    using Controls = std::vector<const Control*>;
    const std::tuple<Button*, int, Controls> rows[] = {
        {&c.cmdRdADMux, 12, {&c.lblADMuxData[0], &c.lblADMuxData[12]}},
        {&c.cmdADCRDEnable, 16, {&c.lblADCEnable[2]}},
        {&c.cmdADCRDData, 17, {&c.txtADDec}},
        {&c.cmdReadADCClock, 10, {&c.lblADCClockDaa[3]}},
        {&c.cmdADCRDMode16, 13, {&c.lblADCMode1Data[2]}},
        {&c.cmdRdADCAvg, 14, {&c.lblADCLoopData[2]}},
        {&c.cmdADCRdSampleRate, 15, {&c.lblADCSampleData[4]}},
        {&c.cmdRdADCMode, 11, {&c.lblADCRefcon[2]}},
        {&c.cmdWrtADReg, 19, {&c.lblAdRcv[3], &c.lblADRegRead}},
        {&c.cmdRD7150, 19, {&c.lblADDecimal[1], &c.lbl_ADReal}},
        {&c.cmdFirmwareVersion, 0, {&c.lblFirmwareVersion, &c.txtFirmwareVersion}},
        {&c.cmdRdGPAnalog[3], 18, {&c.lblRdGPAnalog[3]}},
        {&c.cmdRdOC[1], 18, {&c.lblRdOC[1]}},
        {&c.cmdGetSDFValue, 18, {&c.lblSFRBuf[3]}},
        {&c.cmdReadIndividual, 6, {&c.txtReadIndividual}},
        {&c.cmdSimpleI2cRd, 6, {&c.txtReadVal[0]}},
        {&c.cmdRead, 6, {&c.TXTI2C[0], &c.txtReadVal[0]}},
        {&c.cmdSPIWrite, 9, {&c.txtReadVal[0]}},
    };
    using State = Freshness::State;
    const auto expect = [](const Controls& readings, State state, bool failed) {
        for (const Control* reading : readings) {
            SCOPED_TRACE(reading->path());
            ASSERT_TRUE(reading->freshness());
            EXPECT_EQ(reading->freshness()->state, state);
            EXPECT_EQ(reading->freshness()->failed, failed);
        }
    };
    for (const auto& [button, command, readings] : rows) {
        SCOPED_TRACE(button->path());
        const bool rereads = button == &c.cmdRdOC[1] || button == &c.cmdGetSDFValue || button == &c.cmdRead ||
                             button == &c.cmdRdGPAnalog[3] || button == &c.cmdSPIWrite ||
                             button == &c.cmdADCRDData;
        if (!rereads)
            expect(readings, State::Never, false);
        bus.reply(6, {1, 0, 0x12});
        button->userClick();
        bus.clear();
        expect(readings, State::Fresh, false);
        if (command == 6) { // the other commands look at no error byte
            fault(FaultKind::Nak, 1, 6);
        } else {
            fault(FaultKind::NoReply, 1, command);
        }
        answer(Choice::Retry);
        button->userClick();
        EXPECT_EQ(boxes().size(), button == &c.cmdSimpleI2cRd ? 0U : 1U);
        expect(readings, State::Stale, true);
        if (button == &c.cmdSimpleI2cRd)
            dialogs.show({"", {}, {Choice::Retry}}); // takes the answer that it had no need of
        boxes();
    }
    // Another address: what the part at the old one said no longer holds.
    bus.reply(6, {1, 0, 0x12}, 2);
    c.cmdRead.userClick();
    c.cmdReadIndividual.userClick();
    type(c.txtI2Caddress, "A0");
    expect({&c.TXTI2C[0], &c.txtReadVal[0], &c.txtReadIndividual}, State::Stale, false);
}

/// What gives back more than a number, as a client calls it.
TEST_F(ConsoleTest, RoutinesGoByTheirName) {
    loadConsoles();
    bus.socket("KV4071", 0x50);
    bench.frmVRK_User1.load();
    i2c().OptVCC[0].userClick();
    folder.write("registers.txt", "generic,0x11,0xfF");
    const auto call = [this](const char* name, const ActionArgs& args) {
        const Panel::Action* action = bench.findModuleAction(name);
        if (action == nullptr)
            action = console().findAction(name);
        return action == nullptr ? ActionValue("no such action") : (*action)(args);
    };
    const auto shared = [this](const char* name, int index = kNoIndex) {
        return bench.sharedValues().find(name)->get(index);
    };
    using std::int64_t;
    using std::string;
    sent();
    EXPECT_EQ(call("writeI2C", {int64_t{0x50}, "2A", "00", int64_t{0}}), ActionValue(int64_t{8}));
    EXPECT_EQ(call("readI2C", {int64_t{0x50}, int64_t{1}, "00", int64_t{0}}), ActionValue(int64_t{8}));
    EXPECT_EQ(shared("i2cData"), ActionValue("2A"));
    EXPECT_EQ(call("writeI2COnce", {int64_t{0x50}, "1b", "00"}), ActionValue(int64_t{8}));
    EXPECT_EQ(call("readI2COnce", {int64_t{0x50}, int64_t{1}, "00"}), ActionValue(int64_t{8}));
    EXPECT_EQ(shared("i2cData"), ActionValue("1B"));
    EXPECT_EQ(call("readI2C", {int64_t{0xA0}, int64_t{1}, "", int64_t{-1}}), ActionValue(int64_t{1}));
    EXPECT_EQ(shared("i2cData"), ActionValue(""));
    EXPECT_THAT(sent(6), ElementsAre("01 06 50 01 01 00", "01 06 51 01 01 00", "01 06 50 01 01 00",
                                     "01 06 51 01 01 00", "01 06 A1 01 00 00"));
    for (const auto& [text, last, first, second] :
         {std::tuple{"a,bc", 1, "a", "bc"}, {"", 0, "", ""}, {"a,b,c,d,e", 3, "a", "b"}, {"x", 0, "x", ""}}) {
        EXPECT_EQ(call("splitFields", {string(text), int64_t{4}, ","}), ActionValue(int64_t{last})) << text;
        EXPECT_EQ(shared("splitField", 0), ActionValue(first));
        EXPECT_EQ(shared("splitField", 1), ActionValue(second));
    }
    EXPECT_EQ(call("loadRegisterFile", {int64_t{2}}), ActionValue("11FF"));
    EXPECT_EQ(call("loadRegisterFile", {int64_t{3}}), ActionValue(""));
    EXPECT_EQ(boxes().size(), 1U);
    clipboard.setText("7E");
    call("clipboardKeys", {"txtWriteVal(3)", int64_t{'V'}, int64_t{2}});
    EXPECT_EQ(console().txtWriteVal[3].text(), "7E");
    EXPECT_THROW(call("clipboardKeys", {"chkRandom", int64_t{'V'}, int64_t{2}}), ArgumentError);
}

} // namespace
} // namespace vrk
