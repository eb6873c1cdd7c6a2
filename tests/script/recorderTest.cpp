#include "tests/script/ScriptBench.h"

#include "platform/files/files.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Bytes = std::vector<std::uint8_t>;

TEST(ScriptRecorderTest, TransfersBecomeLines) {
    const struct {
        bool read;
        std::uint8_t address;
        Bytes registers;
        Bytes data;
        int status;
        int after; ///< ms since the transfer before
        std::vector<std::string> lines;
    } cases[] = {
        {false, 0x50, {0x02}, {0xC0}, kLinkGood, 700, {"`A50", "02,C0,"}},
        {true, 0x50, {0x00}, {0x3F, 0x0A}, kLinkGood, 9, {"00,,3F0A"}},
        {false, 0xA4, {0x10}, {0x11}, kLinkGood, 10, {"`w10", "`AA4", "10,11,"}},
        {false,
         0xA4,
         {0x10},
         {0x22},
         kLinkError,
         40000,
         {"`w32767", "`w7233", "# write of 22 at A4, register 10: no good answer"}},
        {true,
         0xA4,
         {0x12},
         {0x22},
         kLinkReadFailed,
         1,
         {"# read of 1 bytes at A4, register 12: no good answer"}},
        {false, 0xA4, {}, {0x33, 0x44}, kLinkGood, 1, {"00,3344, # sent without a register byte"}},
        {true, 0xA4, {}, {0x55}, kLinkGood, 1, {"00,,55 # sent without a register byte"}},
        {false,
         0xA4,
         {0x01, 0x02},
         {0x66},
         kLinkGood,
         1,
         {"# write of 66 at A4, register 0102: a row sends one register byte"}},
        {false, 0xA4, {}, {}, kLinkGood, 1, {"# write of 0 bytes at A4: a row moves a byte at least"}},
    };
    ScriptRecorder recorder;
    Milliseconds now{5000};
    for (const auto& one : cases) {
        now += Milliseconds(one.after);
        EXPECT_EQ(recorder.lines({one.read, one.address, one.registers, one.data, one.status}, now),
                  one.lines);
    }
}

class RecorderTest : public ScriptBench {};

TEST_F(RecorderTest, WhatIsDoneOnTheI2cPanelRunsAgainAsAScript) {
    load("00,,11\n`ENDM");
    ASSERT_TRUE(panel().cmdRecord.userClick().done());
    EXPECT_TRUE(panel().cmdExecAll.userClick().refused());
    EXPECT_TRUE(panel().mnuScript_Read.userClick().refused());
    ASSERT_TRUE(i2c().cmdACRWrite.userClick().done());
    clock.sleep(Milliseconds{250});
    type(i2c().txtHexDataWrt[0], "2A");
    ASSERT_TRUE(i2c().CMDxMIT[0].userClick().done());
    ASSERT_TRUE(i2c().cmdI2Read[0].userClick().done());
    panel().vbalGrid1.userSelect(1, 1); // a row that runs now is no gesture of the user's
    const std::vector<std::string> done = transfers();
    ASSERT_TRUE(panel().cmdRecordStop.userClick().done());
    ASSERT_TRUE(i2c().cmdI2Read[0].userClick().done());
    EXPECT_EQ(cell(script.table.rows() - 1, ScriptColumn::Operation), " Reg:1 R:1");
    EXPECT_EQ(cell(script.table.rows(), ScriptColumn::Operation), "Cmd: End Main");

    dialogs.answerFile((folder.path() / "r.txt").string());
    ASSERT_TRUE(panel().cmdRecordSave.userClick().done());
    (void)boxes();
    const std::string saved = readFile(folder.path() / "r.txt");
    EXPECT_THAT(saved, ::testing::StartsWith("# recorded 2020-01-01 12:00\r\n`A50\r\n02,"));
    EXPECT_THAT(saved, HasSubstr("\r\n00,2A,\r\n"));
    EXPECT_THAT(saved, ::testing::EndsWith("\r\n00,,2A\r\n`ENDM\r\n"));
    EXPECT_THAT(panel().lblCaption.caption(), HasSubstr("[ r.txt ]"));
    EXPECT_TRUE(panel().cmdRecordSave.userClick().refused());
    wire.clear();
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    EXPECT_EQ(counts(), "1/0");
    EXPECT_EQ(transfers(), done);
    ASSERT_TRUE(panel().cmdReload2.userClick().done());
    EXPECT_EQ(panel().lblLoadStatus.caption(), "");
}

TEST_F(RecorderTest, ARecordingThatIsInNoFileIsAskedFor) {
    ASSERT_TRUE(panel().cmdRecord.userClick().done());
    ASSERT_TRUE(i2c().cmdI2Read[0].userClick().done());
    ASSERT_TRUE(panel().cmdRecordStop.userClick().done());
    const int rows = script.table.rows();
    (void)boxes();
    answer(Choice::Cancel);
    dialogs.answerFile(folder.write("s.txt", "`w1").string());
    ASSERT_TRUE(panel().mnuScript_Read.userClick().done());
    EXPECT_THAT(boxes(), ElementsAre(HasSubstr("Select Script"), HasSubstr("not saved")));
    EXPECT_EQ(script.table.rows(), rows);
    answer(Choice::Cancel);
    ASSERT_TRUE(panel().cmdRecord.userClick().done());
    EXPECT_FALSE(panel().recording());
    dialogs.answerFile("no/such/folder/r.txt");
    ASSERT_TRUE(panel().cmdRecordSave.userClick().done());
    EXPECT_THAT(boxes(),
                ElementsAre(HasSubstr("not saved"), HasSubstr("Save Recorded"), HasSubstr("No such")));
    EXPECT_TRUE(panel().cmdRecordSave.enabled());
    answer(Choice::Ok);
    load("`w1\n`ENDM");
    EXPECT_EQ(script.table.rows(), 2);
}

TEST_F(RecorderTest, ReportsAndVerdictsOfThePage) {
    load("02,C0,\n00,11,12\n`ENDM");
    EXPECT_TRUE(panel().cmdReport[0].userClick().refused());
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    const char* const begins[] = {"<?xml", "{\"script\":\"s.txt\"", "pass,line,"};
    for (int kind = 0; kind < panel().cmdReport.count(); ++kind) {
        const auto path = folder.path() / ("report" + std::to_string(kind));
        dialogs.answerFile(path.string());
        ASSERT_TRUE(panel().cmdReport[kind].userClick().done());
        EXPECT_THAT(readFile(path), ::testing::StartsWith(begins[kind]));
    }
    (void)boxes();
    ASSERT_NE(panel().latest(2), nullptr);
    EXPECT_EQ(panel().latest(2)->read, "11");
    panel().RetryRow(2);
    EXPECT_EQ(panel().rowRuns(2), 2);
    EXPECT_EQ(panel().rowRuns(1), 1);
    EXPECT_EQ(panel().results().passes.back().failed, 1); // as the pass has counted
    load("`w1\n`ENDM");
    EXPECT_EQ(panel().latest(1), nullptr);
    EXPECT_THAT(panel().results().passes, IsEmpty());
}

/// Breakpoints of a session, as the settings of the window keep them.
class Store final : public BreakpointStore {
  public:
    std::set<int> breakpoints(const std::string& path) const override {
        const auto found = all.find(path);
        return found == all.end() ? std::set<int>() : found->second;
    }
    void keepBreakpoints(const std::string& path, const std::set<int>& lines) override { all[path] = lines; }
    std::map<std::string, std::set<int>> all;
};

TEST_F(RecorderTest, BreakpointsBelongToTheFile) {
    Store store;
    slot.unload();
    breakpoints = &store;
    load("`w1\n`w2\n`ENDM");
    const std::string path = (folder.path() / "s.txt").string();
    panel().debugger().toggleBreakpoint(2);
    EXPECT_EQ(store.all.at(path), std::set<int>{2});
    ASSERT_TRUE(panel().cmdReload2.userClick().done());
    EXPECT_EQ(panel().debugger().breakpoints(), std::set<int>{2});
    dialogs.answerFile(folder.write("t.txt", "`w1").string());
    ASSERT_TRUE(panel().mnuScript_Read.userClick().done());
    EXPECT_THAT(panel().debugger().breakpoints(), IsEmpty());
    EXPECT_EQ(store.all.at(path), std::set<int>{2});
    slot.unload();
    load("`w1\n`w2\n`ENDM");
    EXPECT_EQ(panel().debugger().breakpoints(), std::set<int>{2});
    slot.unload(); // the store goes first
}

} // namespace
} // namespace vrk
