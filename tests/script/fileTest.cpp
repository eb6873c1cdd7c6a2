#include "platform/runtime/text.h"
#include "tests/script/scriptFuzz.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

const BusMode kI2c{true, false};
const BusMode kSpi{false, true};

struct Loaded {
    ScriptState script;
    PlainFields fields;
    void load(const std::string& content, const BusMode& mode = kI2c) {
        loadScript(script, fields, scriptLines(content), mode);
    }
    /// Columns 2 to 8 of a row, a bar between them.
    std::string row(int number) const {
        std::string text;
        for (int column = 2; column <= 8; ++column)
            text += (column > 2 ? "|" : "") + script.table.text(number, static_cast<ScriptColumn>(column));
        return text;
    }
    /// Bytes of register, write and read; the delay.
    std::string sizes(int number) const {
        const StepSizes& sizes = script.table.sizes(number);
        return decimalText(sizes.RegCount) + " " + decimalText(sizes.WrCount) + " " +
               decimalText(sizes.RdCount) + " " + decimalText(sizes.DelayMs);
    }
};

TEST(ScriptFile, EveryFormOfALineGivesItsRow) {
    const struct {
        const char* line;
        const char* row; ///< address, register, write, expected, actual, operation, comment
        const char* sizes;
    } cases[] = {
        {"", "50|||||NOP|Script File has a blank line", "0 0 0 0"},
        {"# only, a comment", "50|||||NOP|# only, a comment", "0 0 0 0"},
        {"  \t# behind blanks", "50|||||NOP|# behind blanks", "0 0 0 0"},
        {"   ", "50||||||No Internal Register", "0 0 0 0"},
        {"00,3F,", "50|00|3F||| Reg:1 W:1|", "1 1 0 0"},
        {"0 , a b,", "50|00|AB||| Reg:1 W:1|", "1 1 0 0"},
        {"\x0F"
         "00,,3f # check # it",
         "50|00||3F|--| Reg:1 R:1|# check # it", "1 0 1 0"},
        {",a,5#c", "50||0A|05|--| W:1 R:1|No Internal Register#c", "0 1 1 0"},
        {"0102,123,4,ignored,,", "50|0102|0123|04|--| Reg:2 W:2 R:1|", "2 2 1 0"},
        {"123,12345,1234567", "50|123|12345|1234567|--| Reg:2 W:2 R:4|", "2 2 4 0"},
        {"00", "50|00|||| Reg:1|", "1 0 0 0"},
        {" `A60 # c", "50|`A60|||| Reg:2|# c", "2 0 0 0"},
        {"`Aa2", "A2|||||Cmd:Set I2C Adr|", "0 0 0 0"},
        {"`A6", "50|||||Cmd:Set I2C Adr|", "0 0 0 0"},
        {"`SPI", "SPI|||||Cmd:Set SPI Comm|", "0 0 0 0"},
        {"`w", "50|||||Cmd: Delay Keypress|", "0 0 0 -1"},
        {"`w250#x", "50|||||Cmd:Delay :250: mSec|#x", "0 0 0 250"},
        {"`w2.5", "50|||||Cmd:Delay :2.5: mSec|", "0 0 0 2"},
        {"`w-5", "50|||||Cmd:Delay :-5: mSec|", "0 0 0 -5"},
        {"`w-1", "50|||||Cmd:Delay :-1: mSec|", "0 0 0 -1"},
        {"`wait #y", "50|||||Error Delay_Time|#yDelay Error: Time not numeric", "0 0 0 0"},
        {"`S", "50|||||Cmd: Save File|", "0 0 0 0"},
        {"`G12a", "GPIO||12a|12a||Cmd: GPIO:12a|", "0 2 2 0"},
        {"`G", "GPIO|||||Cmd: GPIO:|", "0 2 2 0"},
        {"`IE", "50|||||Cmd: Int Enable|", "0 0 0 0"},
        {"` I D # blanks go where a comment stands",
         "50|||||Cmd: Int Disable|# blanks go where a comment stands", "0 0 0 0"},
        {"`ID ", "50|||||Cmd:|", "0 0 0 0"},
        {"`ENDM", "50|||||Cmd: End Main|", "0 0 0 0"},
        {"`EISTART", "50|||||Cmd: Int Start|", "0 0 0 0"},
        {"`EIEND", "50|||||Cmd: Int End|", "0 0 0 0"},
        {"`a50", "50|||||Cmd:|", "0 0 0 0"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.line);
        Loaded loaded;
        loaded.load(std::string(one.line) + "\n");
        EXPECT_EQ(loaded.row(1), one.row);
        EXPECT_EQ(loaded.sizes(1), one.sizes);
        EXPECT_EQ(loaded.script.table.text(1, ScriptColumn::Line), "001");
    }
    const struct {
        const char* line;
        const char* row;
    } spi[] = {
        {",A5,00", "||A5|00|--| W:1 R:1|"},
        {",,00", "|||00|--|Read Only SPI Not Allowed|"},
        {"01,A5,00", "|01|A5|00|--|Read Only SPI Not Allowed|"},
        {"01,A5,", "|01|A5||| Reg:1 W:1|"},
        {"`A60", "60|||||Cmd:Set I2C Adr|"},
        {"`SPI", "SPI|||||Cmd:Set SPI Comm|"},
    };
    for (const auto& one : spi) {
        Loaded loaded;
        loaded.load(one.line, kSpi);
        EXPECT_EQ(loaded.row(1), one.row) << one.line;
    }
}

TEST(ScriptFile, MarkersAddressesAndCountsOfAWholeScript) {
    Loaded loaded;
    loaded.load("\xEF\xBB\xBF`A60\r\n00,,1\n`A5\r00,1,2\r\n`ENDM\n`EISTART\n`EIEND");
    const ScriptState& script = loaded.script;
    EXPECT_EQ(script.TotalLines, 7);
    EXPECT_EQ(script.table.text(2, ScriptColumn::Address), "60");
    EXPECT_EQ(script.table.text(3, ScriptColumn::Address), "60"); // sets "05", shows it from the next row on
    EXPECT_EQ(script.table.text(4, ScriptColumn::Address), "05");
    EXPECT_EQ(script.ExpectedReads, 2);
    EXPECT_EQ(loaded.fields.text(ScriptFields::Text::TotReads), "2");
    EXPECT_EQ(loaded.fields.text(ScriptFields::Text::Istart), "6");
    EXPECT_EQ(script.EndMainStep, 5);
    EXPECT_EQ(script.IntEndStep, 7);
    EXPECT_EQ(script.ScriptRaw.front(), "`A60");
    // Shorter now: rows keep the sizes of before, their delays go; the last line stands for the marker.
    loaded.load("`w5\n`SPI\n\n#\n");
    EXPECT_EQ(loaded.sizes(2), "1 0 1 0");
    EXPECT_EQ(loaded.sizes(4), "1 1 1 0");
    EXPECT_EQ(loaded.script.EndMainStep, 4);
    EXPECT_EQ(loaded.script.IntStartStep, 0);
    EXPECT_EQ(loaded.script.table.text(1, ScriptColumn::Address), "50");
}

TEST(ScriptFile, LoadStopsWhereTheTableOrANumberEnds) {
    const auto lines = [](int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += "00,,00\n";
        return text;
    };
    Loaded full;
    full.load(lines(1000));
    EXPECT_EQ(full.script.table.text(1000, ScriptColumn::Line), "1000");
    const struct {
        std::string content;
        int line;
        int rows;
    } cases[] = {{lines(1001), 1001, 1000}, {"#\n`w32768\n#\n", 2, 2}, {"," + std::string(65530, 'A'), 0, 1}};
    for (const auto& one : cases) {
        Loaded loaded;
        try {
            loaded.load(one.content);
            EXPECT_EQ(one.line, 0);
        } catch (const ScriptLoadFault& fault) {
            EXPECT_EQ(fault.line(), one.line) << fault.what();
        }
        EXPECT_EQ(loaded.script.table.rows(), one.rows);
    }
    EXPECT_THROW(scriptLines(std::string("00,,\0", 5)), Fault);
    EXPECT_THROW(scriptLines(std::string(65536, 'A')), Fault);
}

TEST(ScriptFile, SavesWhatWasReadInPlace) {
    Loaded loaded;
    loaded.load("# test\n00,3F, 12 # keep\n00,,34\n00,,56\n00,\n");
    loaded.script.table.setText(2, ScriptColumn::Actual, "AB");
    loaded.script.table.setText(3, ScriptColumn::Actual, "789A");
    loaded.script.table.setText(4, ScriptColumn::Actual, ""); // nothing came: the field stays
    updateExpected(loaded.script);
    const WallTime time{.year = 2021, .month = 2, .day = 3, .hour = 4, .minute = 5};
    EXPECT_EQ(scriptToSave(loaded.script, time, "7"),
              "# test# AutoUpdated: 2021-02-03 04:05 Looping: 7\r\n00,3F,AB2 # keep\r\n00,,789A\r\n00,,56\r\n"
              "00,\r\n\r\n");
    // An older stamp goes, in whatever case; a data line as the first goes on working.
    loaded.load("00,,11# autoupdated: of old");
    EXPECT_EQ(scriptToSave(loaded.script, time, "0"),
              "00,,11# AutoUpdated: 2021-02-03 04:05 Looping: 0\r\n\r\n");
    EXPECT_EQ(savedScriptPath("/a/b.txt"), "/a/b_DL.txt");
    EXPECT_EQ(savedScriptPath("abc"), "abc_DL");
}

TEST(ScriptCheck, TellsWhatWillNotDoWhatItsWriterMeant) {
    const struct {
        const char* content;
        std::vector<std::string> i2c; ///< line, kind, a part of the text
        std::vector<std::string> spi;
    } cases[] = {
        {"`ENDM", {}, {}},
        {"", {"1 w empty"}, {"1 w empty"}},
        {"#\n00,1",
         {"2 w odd number", "2 w no `ENDM"},
         {"2 e no register field", "2 w odd number", "2 w no `ENDM"}},
        {"`wx\n`w40000\n`ENDM",
         {"1 e no number", "2 e at most 32767"},
         {"1 e no number", "2 e at most 32767"}},
        {"`AFF\n`AG0\n`AFE\n`A\n`ENDM", {"1 e above FE", "2 e not hex"}, {"1 e above FE", "2 e not hex"}},
        {"`X\n`G1234\n`GZZ\n`ENDM",
         {"1 e unknown", "2 w always counts", "3 e not hex", "3 w always counts"},
         {"1 e unknown", "2 w always counts", "3 e not hex", "3 w always counts"}},
        {"`ENDM\n`EISTART", {"2 e no `EIEND"}, {"2 e no `EIEND"}},
        {"`ENDM\n`EIEND\n`EISTART", {"2 e ahead"}, {"2 e ahead"}},
        {"0102,,\n20,,11\n1F,,11\n00,,1XXX\n\n`ENDM",
         {"1 w only the first", "2 w copies nothing", "4 e not hex", "4 w as it stands", "5 w blank"},
         {"1 e no register", "2 e no register", "3 e no register", "4 e not hex", "4 e no register",
          "5 w blank"}},
        {",,XX11\n,A5,XX11\n`ENDM",
         {"1 w compared as it stands", "2 w compared as it stands"},
         {"1 e only what"}},
    };
    for (const auto& one : cases)
        for (const bool spi : {false, true}) {
            SCOPED_TRACE(std::string(one.content) + (spi ? " on SPI" : " on I2C"));
            const auto found = checkScriptFile(one.content, spi ? kSpi : kI2c, 0x50);
            auto expected = spi ? one.spi : one.i2c;
            ASSERT_EQ(found.size(), expected.size());
            std::vector<std::string> texts;
            for (const auto& finding : found)
                texts.push_back(decimalText(finding.line) +
                                (finding.severity == ScriptFinding::Severity::Error ? " e " : " w ") +
                                finding.text);
            for (const std::string& wanted : expected)
                EXPECT_THAT(texts,
                            ::testing::Contains(::testing::AllOf(::testing::StartsWith(wanted.substr(0, 4)),
                                                                 HasSubstr(wanted.substr(4)))));
        }
    // Sizes of a script before.
    Loaded loaded;
    loaded.load("00,11,11\n`ENDM");
    loaded.load("`SPI\n`ENDM");
    EXPECT_THAT(checkScript(loaded.script, kI2c),
                ElementsAre(::testing::Field(&ScriptFinding::text, HasSubstr("an earlier script"))));
}

TEST(ScriptFile, AnyBytesAreALoadOrAMessage) {
    // Pieces that the reader looks for, in any order, and bytes that it does not expect.
    const std::string pieces[] = {
        "`",  "A",    "SPI", "w",  "G", "IE",  "ENDM", "EISTART", "# AutoUpdated:", ",",   "R:", "\r",
        "\n", "\r\n", " ",   "\t", "-", "1e9", "FF",   "xx",      "\xEF\xBB\xBF",   "\xFF"};
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes;
        for (auto i = random() % 40; i > 0; --i)
            bytes += pieces[random() % std::size(pieces)];
        ASSERT_TRUE(scriptSurvives(bytes, round % 2 == 1)) << bytes;
    }
}

} // namespace
} // namespace vrk
