#include "tests/support/TestBench.h"

namespace vrk {
namespace {

using report::Command;
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

/// What gives back more than a number, as a client calls it.
TEST_F(ConsoleTest, RoutinesGoByTheirName) {
    loadConsoles();
    bus.socket("KV4071", 0x50);
    bench.frmVRK_User1.load();
    i2c().OptVCC[0].userClick();
    folder.write("registers.txt", "generic,0x11,0xfF");
    const auto call = [this](const char* name, ActionArgs args) {
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
