#include "tests/script/ScriptBench.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Column = ScriptColumn;

class ScriptRunTest : public ScriptBench {};

TEST_F(ScriptRunTest, I2cRowsOnTheWire) {
    const struct {
        const char* row;
        std::vector<std::string> wire;
        const char* read;   ///< column 6
        const char* counts; ///< passed/failed
    } cases[] = {
        {"00,3F,", {"01 06 50 01 01 00 3F"}, "", "0/0"},
        {"00,,40", {"01 06 51 01 01 00"}, "40", "1/0"},
        {"00,12,13", {"01 06 50 01 01 00 12", "01 06 51 01 01 00"}, "12", "0/1"},
        // No register: the first byte is skipped and one behind the data follows; 00 is read from.
        {",1100,00", {"01 06 50 02 00 00 00", "01 06 51 01 01 00"}, "00", "1/0"},
        // Of two register bytes the second is the first of the data, which goes out all the same.
        {"0044,5566,", {"01 06 50 02 02 00 55 55 66"}, "", "0/0"},
        // One register byte is sent, and more expected than is read cannot be met.
        {"0000,,12345", {"01 06 51 02 01 00"}, "4000", "0/1"},
        // Copied through 32 boxes: of the bytes behind them the buffer's own stay.
        {"1F,,1111", {"01 06 51 02 01 1F"}, "FF1F", "0/1"},
        {"20,,01", {"01 06 51 01 01 20"}, "01", "1/0"},
        {"00,,XX", {"01 06 51 01 01 00"}, "40", "0/1"},
        {"`G1234", {}, "", "0/1"},
        {"`G", {}, "", "1/0"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.row);
        bus.socket("KV4071");
        load(std::string(one.row) + "\n`ENDM");
        ASSERT_TRUE(panel().vbalGrid1.userSelect(1, 1).done());
        EXPECT_EQ(transfers(), one.wire);
        EXPECT_EQ(cell(1, Column::Actual), one.read);
        EXPECT_EQ(counts(), one.counts);
        EXPECT_EQ(colour(1, Column::Address), Colour::PureGreen); // it ran
    }
}

TEST_F(ScriptRunTest, WithoutRegisterByteTheConsolesSwitchHolds) {
    console().chkRandom.setValue(0);
    load("05,11,2211\n`ENDM");
    ASSERT_TRUE(panel().vbalGrid1.userSelect(1, 1).done());
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 00 11", "01 06 51 02 00"));
    EXPECT_EQ(console().txtReadVal[0].text() + console().txtReadVal[1].text(), cell(1, Column::Actual));
    EXPECT_EQ(console().txtReadVal[5].text(), "");
}

TEST_F(ScriptRunTest, SpiRowsOnTheWire) {
    useSpi();
    load(",50C8C0,\n,50C011,XXXX11\n,50B000,XXXX11\n,50B000,FFxx00\n01,,11\n`G0102\n`ENDM");
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    const std::vector<std::string> out = sent(64);
    std::vector<std::string> spi;
    for (std::size_t i = 0; i < out.size(); ++i)
        if (out[i].substr(3, 2) == "09") {
            spi.push_back(out[i].substr(0, 29));
            ASSERT_GE(i, 2U);
            EXPECT_EQ(out[i - 2].substr(0, 11), "01 12 00 A0"); // port 2 out, and read back
            EXPECT_EQ(hexToInt(out[i - 2].substr(12, 2)) & 0x10, 0x10);
            EXPECT_EQ(out[i - 1].substr(0, 11), "01 12 01 A0");
        }
    EXPECT_THAT(spi, ElementsAre("01 09 00 01 00 00 03 50 C8 C0", "01 09 00 01 00 00 03 50 C0 11",
                                 "01 09 00 01 00 00 03 50 B0 00", "01 09 00 01 00 00 03 50 B0 00"));
    EXPECT_EQ(cell(3, Column::Actual), "XXXX11");
    EXPECT_EQ(cell(4, Column::Actual).substr(2), "XX11"); // wildcard in lower case too: the loader raises it
    EXPECT_EQ(cell(5, Column::Actual), "--");             // a read alone does nothing on SPI
    EXPECT_EQ(counts(), "1/3");
    EXPECT_EQ(console().txtNumToWrite.text(), " 3");
    EXPECT_EQ(ports.PBuf[0] * 256 + ports.PBuf[1], 0x0102);
    EXPECT_EQ(panel().txtIDefault.text(), "0102");
}

TEST_F(ScriptRunTest, APassCountsAndEndsAheadOfItsEndMarker) {
    loadAndRun("02,C0,\n00,11,11\n00,,12\n00,22,22\n");
    // No end marker: the last line is left out.
    EXPECT_EQ(counts(), "1/1");
    EXPECT_EQ(panel().txtRunning.text(), "Done");
    EXPECT_EQ(panel().txtTotLines.text(), "4");
    EXPECT_EQ(panel().txttotReads.text(), "3");
    EXPECT_EQ(colour(2, Column::Actual), Colour::PureGreen);
    EXPECT_EQ(colour(3, Column::Actual), Colour::PureRed);
    EXPECT_EQ(colour(3, Column::Address), Colour::PureGreen); // ran, whatever it came to
    EXPECT_EQ(cell(4, Column::Actual), "--");
    EXPECT_TRUE(panel().frmDataRecord.enabled());
    EXPECT_FALSE(panel().cmdAbort.enabled());
    EXPECT_EQ(link().activePanel, &panel());

    loadAndRun("`ENDM\n00,11,11\n");
    EXPECT_EQ(counts(), "0/0");
    EXPECT_THAT(transfers(), IsEmpty());
}

TEST_F(ScriptRunTest, AnErrorIsToldApartFromAFail) {
    // The part refuses register 7; what is compared then is the buffer as it was prepared.
    for (int i = 0; i < 3; ++i)
        answer(Choice::Retry);
    loadAndRun("`AFF\n00,,01\n`A50\n07,11,\n`A60\n00,,01\n00,,0100\n`ENDM");
    EXPECT_THAT(boxes(), ElementsAre("Illegal I2C address Script Row  2 Value = FF [OK]", kInvalidAddress,
                                     kInvalidAddress, kInvalidAddress));
    EXPECT_EQ(colour(4, Column::Write), Colour::PureRed);
    EXPECT_EQ(counts(), "1/1");
    const auto& rows = panel().results().passes.back().rows;
    std::vector<std::string> verdicts;
    for (const RowResult& row : rows)
        verdicts.emplace_back(rowVerdictName(row.verdict));
    EXPECT_THAT(verdicts, ElementsAre("ran", "error", "ran", "error", "ran", "error", "error"));
    EXPECT_EQ(panel().results().verdict(), "error");
}

TEST_F(ScriptRunTest, ARowThatTheLinkBrokeIsInError) {
    useSpi();
    load(",50C8C0,\n,50C011,\n`ENDM");
    fault(sim::FaultKind::NoReply, 1, 9);
    answer(Choice::Retry); // the discovery behind it answers; the transfer is not repeated
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    EXPECT_EQ(panel().results().verdict(), "error");
    (void)boxes();
    const auto verdict = [this](std::size_t row) {
        return panel().results().passes.back().rows[row].verdict;
    };
    EXPECT_EQ(verdict(1), RowVerdict::Ran);
    fault(sim::FaultKind::WriteFails, 1, 9);
    answer(Choice::Cancel); // ends the program
    panel().cmdExecAll.userClick();
    (void)boxes();
    EXPECT_EQ(verdict(0), RowVerdict::Error);
    EXPECT_EQ(verdict(1), RowVerdict::NotReached);
}

TEST_F(ScriptRunTest, AFaultEndsItsRowAndTheRunGoesOn) {
    loadAndRun("00," + std::string(130, '1') + ",\n00,11,\n`ENDM");
    EXPECT_THAT(boxes(), ElementsAre("Subscript out of range [OK]"));
    EXPECT_EQ(colour(1, Column::Address), Colour::PureRed);
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 00 11"));
}

TEST_F(ScriptRunTest, DelaysAndPausesTakeTheirTime) {
    load("`w250\n`w\n`w-7\n00,11,\n`ENDM");
    answer(Choice::Ok);
    const Milliseconds before = clock.now();
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    EXPECT_THAT(boxes(), ElementsAre("Script Pause Line :2 Click OK to Continue, Cancel to Abort [OK]"));
    EXPECT_EQ(cell(1, Column::Actual), "Delay 250");
    EXPECT_EQ(cell(2, Column::Actual), "Delay Keypress");
    EXPECT_THAT(transfers(), ElementsAre("01 06 50 01 01 00 11"));
    EXPECT_EQ((clock.now() - before).count(), 250 + 200 + 3); // purge, write, reply

    answer(Choice::Cancel);
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    (void)boxes();
    EXPECT_THAT(transfers(), IsEmpty());
    EXPECT_EQ(panel().results().passes.back().end, ScriptEnd::Stopped);
}

TEST_F(ScriptRunTest, AbortIsSeenBetweenRowsAndPassesGoOnUntilThen) {
    load("02,C0,\n00,11,12\n`w100\n00,22,\n`ENDM");
    at(380, [&] { (void)panel().cmdAbort.userClick(); });
    ASSERT_TRUE(panel().cmdRunContinuous.userClick().done());
    // The fourth pass stands in its delay, which it finishes.
    EXPECT_EQ(panel().txtLoopCount.text(), "4");
    EXPECT_EQ(counts(), "0/1");
    EXPECT_THAT(ranLines(), ElementsAre(1, 2, 3));
    EXPECT_TRUE(panel().cmdRunContinuous.enabled());

    panel().chkAOF.setValue(1);
    ASSERT_TRUE(panel().cmdRunContinuous.userClick().done());
    EXPECT_EQ(panel().txtLoopCount.text(), "1");
    EXPECT_THAT(ranLines(), ElementsAre(1, 2));
    EXPECT_EQ(panel().results().end, ScriptEnd::StoppedOnFail);

    // Rows that send nothing take no time, and yet the abort gets through; without a row nothing goes on.
    load("`A50\n`ENDM");
    at(10'020, [&] { (void)panel().cmdAbort.userClick(); });
    ASSERT_TRUE(panel().cmdRunContinuous.userClick().done());
    EXPECT_EQ(panel().results().end, ScriptEnd::Stopped);
    // Nor does it take more and more memory: a script may loop for days.
    const auto& passes = panel().results().passes;
    EXPECT_EQ(passes.size(), ResultCollector::kMostPasses);
    EXPECT_EQ(decimalText(passes.back().pass), panel().txtLoopCount.text());
    EXPECT_EQ(passes.front().rows.capacity(), 0U);
    load("`ENDM\n00,,11");
    ASSERT_TRUE(panel().cmdRunContinuous.userClick().done());
    EXPECT_EQ(panel().txtLoopCount.text(), "1");
}

TEST_F(ScriptRunTest, TheUserMayRunARowOrLoadAnotherScriptInTheMidst) {
    load("02,C0,\n`w50\n00,33,\n`ENDM\n00,,33");
    at(20, [&] { (void)panel().vbalGrid1.userSelect(5, 1); });
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    EXPECT_THAT(ranLines(), ElementsAre(1, 2, 5, 3));

    // Half a script that comes in the midst cannot be run once the run has ended.
    for (const std::string rest : {"", "\n`w99999"}) {
        load("02,C0,\n00,44,44\n`w50\n#\n`ENDM");
        at(20, [&] { load("#\n"); });
        at(30, [&] { load("00,,33\n`ENDM" + rest); });
        ASSERT_TRUE(panel().cmdRunContinuous.userClick().done());
        EXPECT_EQ(panel().results().end, ScriptEnd::Stopped);
        EXPECT_EQ(panel().results().passes.back().passed, 1);
        EXPECT_EQ(panel().results().passes.back().rows.back().operation, "NOP"); // of the script that ran
        EXPECT_EQ(cell(1, Column::Actual), "--");
        EXPECT_EQ(panel().cmdExecAll.enabled() && panel().cmdRunContinuous.enabled(), rest.empty());
        EXPECT_EQ(panel().cmdExecAll.enabled() || panel().cmdRunContinuous.enabled(), rest.empty());
    }
    EXPECT_THAT(boxes(), IsEmpty());
}

TEST_F(ScriptRunTest, TheServiceBlockRunsOnceForEachEnabling) {
    const struct {
        const char* what;
        std::string script;
        std::vector<int> lines;
        const char* detected;
    } cases[] = {
        {"with a block", "02,C0,\n`IE\n00,,33\n`ENDM\n`EISTART\n00,33,33\n`EIEND", {1, 2, 5, 6, 7, 3}, "002"},
        {"without", "02,C0,\n`IE\n00,,33\n`ENDM", {1, 2, 3}, "002"},
        {"reversed", "`IE\n#\n`ENDM\n`EIEND\n`EISTART", {1, 2}, "001"},
        {"expected value empty", "`G\n`IE\n`ENDM\n`EISTART\n#\n`EIEND", {1, 2}, "----"},
        {"switched off in time",
         "`ID\n`IE\n`IE\n`ENDM\n`EISTART\n#\n`EIEND",
         {1, 2, 5, 6, 7, 3, 5, 6, 7},
         "003"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        panel().txtIDefault.setText("0000");
        panel().chkISample.showValue(0);
        loadAndRun(one.script);
        EXPECT_EQ(ranLines(), one.lines);
        EXPECT_EQ(panel().txtIdetectStep.text(), one.detected);
        EXPECT_EQ(panel().chkISample.checked(), std::string(one.detected) == "----");
    }
    EXPECT_EQ(panel().txtIexec.text(), "7");
    // By hand, too.
    ASSERT_TRUE(panel().chkISample.userClick().done());
    EXPECT_EQ(panel().txtIEnableStep.text() + panel().txtIDisableStep.text(), "On");
    ASSERT_TRUE(panel().vbalGrid1.userSelect(1, 1).done()); // `ID: nothing is sampled behind it
    EXPECT_EQ(panel().txtIDisableStep.text(), "001");
    EXPECT_EQ(panel().txtIdetectStep.text(), "003");
}

TEST_F(ScriptRunTest, ABlockThatEnablesItselfIsStopped) {
    load("`IE\n00,11,\n`ENDM\n`EISTART\n`IE\n`EIEND");
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    EXPECT_THAT(boxes(), ElementsAre(HasSubstr("100 times")));
    EXPECT_THAT(transfers(), IsEmpty());
    EXPECT_EQ(ranLines().size(), 201U); // the first row, and two rows of each entry

    // One copy of the step to go back to: the main part resumes behind the inner row, which is its end.
    load("`IE\n#\n#\n`ENDM\n`EISTART\n`w50\n`EIEND");
    at(20, [&] { (void)panel().chkISample.userClick(); });
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    EXPECT_THAT(ranLines(), ElementsAre(1, 5, 6, 5, 6, 7));
    EXPECT_EQ(script.IntSavedStep, 6);
}

} // namespace
} // namespace vrk
