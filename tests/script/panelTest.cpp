#include "script/JUnitFile.h"
#include "script/ScriptReports.h"
#include "tests/script/ScriptBench.h"

#include "platform/files/files.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

using Column = ScriptColumn;

class ScriptPanelTest : public ScriptBench {};

TEST_F(ScriptPanelTest, OpensWithoutAScriptAndTakesOneFromTheMenu) {
    i2c().txtDeviceAdr.setText("A0");
    EXPECT_EQ(panel().txtI2CAdr.text(), "A0");
    EXPECT_EQ(panel().lblCaption.caption(), "No Script File Selected");
    EXPECT_TRUE(panel().cmdExecAll.userClick().refused());
    EXPECT_TRUE(panel().cmdBrowse.userClick().refused());

    ASSERT_TRUE(panel().mnuScript_Read.userClick().done());
    EXPECT_THAT(boxes(), ElementsAre("Select Script File to Open []"));
    load("00,,11\n`ENDM\n`EISTART\n`EIEND");
    EXPECT_EQ(panel().lblCaption.caption(), "[ s.txt ]    Script IC Send / Receive");
    EXPECT_EQ(cell(0, Column::Address) + cell(1, Column::Address), "I2C AdrA0");
    EXPECT_EQ(panel().txtIstart.text() + panel().txtIend.text(), "34");
    EXPECT_EQ(panel().txtTotLines.text(), "4");
    EXPECT_EQ(panel().txtScriptLine1.text().size(), 5U);
    EXPECT_EQ(colour(1, Column::Operation), Colour::PureGreen);
    EXPECT_FALSE(panel().frmDataRecord.enabled());
    // Cancelled: the old script stays, and a reload has no file.
    ASSERT_TRUE(panel().mnuScript_Read.userClick().done());
    (void)boxes();
    EXPECT_EQ(cell(1, Column::Line), "001");
    EXPECT_FALSE(script.ScriptLoaded);
}

TEST_F(ScriptPanelTest, AFileThatIsNoScriptLeavesTheOneThatIsLoaded) {
    load("00,,11\n`ENDM");
    const struct {
        std::string path;
        const char* reason;
    } cases[] = {{folder.write("a", "").string(), "empty"},
                 {folder.write("b", std::string("MZ\0\1", 4)).string(), "NUL"},
                 {folder.write("c", std::string(100000, ' ')).string(), "longer than"},
                 {(folder.path() / "d").string(), "No such file"},
                 {folder.path().string(), "directory"}};
    for (const auto& one : cases) {
        dialogs.answerFile(one.path);
        ASSERT_TRUE(panel().mnuScript_Read.userClick().done());
        (void)boxes();
        EXPECT_THAT(panel().lblLoadStatus.caption(), HasSubstr(one.reason));
        EXPECT_EQ(cell(1, Column::Operation), " Reg:1 R:1");
        EXPECT_TRUE(panel().cmdExecAll.enabled());
        EXPECT_TRUE(panel().cmdReload2.enabled());
    }
}

TEST_F(ScriptPanelTest, AFaultyScriptCanBeMendedAndReloaded) {
    load("00,,11\n`w99999\n`ENDM");
    EXPECT_THAT(panel().lblLoadStatus.caption(), HasSubstr("Line 2"));
    EXPECT_EQ(cell(1, Column::Actual), "--");
    EXPECT_FALSE(panel().cmdExecAll.enabled());
    folder.write("s.txt", "`w9\n`ENDM");
    ASSERT_TRUE(panel().cmdReload2.userClick().done());
    EXPECT_EQ(panel().lblLoadStatus.caption(), "");
    EXPECT_TRUE(panel().cmdExecAll.enabled());

    const struct {
        const char* typed;
        const char* text;
        const char* address;
    } cases[] = {
        {"a2", "A2", "A2"}, {"ff", "60", "A2"}, {"FFFF", "60", "A2"}, {"12345", "60", "A2"}, {"5", "5", "5"}};
    for (const auto& one : cases) {
        enter(panel().txtI2CAdr, one.typed);
        EXPECT_EQ(panel().txtI2CAdr.text(), one.text);
        EXPECT_EQ(cell(1, Column::Address), one.address);
    }
    i2c().txtDeviceAdr.setText("100"); // the most that this field takes
    panel().Form_Load();
    EXPECT_EQ(panel().txtI2CAdr.text(), "60");
    EXPECT_EQ(script.ScriptI2CBase, 0x60);
}

TEST_F(ScriptPanelTest, SavesByButtonAndByRow) {
    loadAndRun("02,C0,\n00,11,22\n00,,33 # c\n`S\n`S\n`ENDM\n00,,44");
    const std::string once =
        "02,C0,# AutoUpdated: 2020-01-01 12:00 Looping: 0\r\n00,11,11\r\n00,,11 # c\r\n`S\r\n"
        "`S\r\n`ENDM\r\n00,,44\r\n\r\n";
    std::string never = once;
    never.replace(never.find("44"), 2, "--"); // a row that never ran
    EXPECT_EQ(readFile(folder.path() / "s_DL.txt"), never + never);
    EXPECT_EQ(panel().unreadRows(), 1);

    dialogs.answerFile((folder.path() / "t.txt").string());
    ASSERT_TRUE(panel().cmdBrowse.userClick().done());
    EXPECT_THAT(boxes(), ElementsAre(HasSubstr("Select File For Update")));
    panel().chkAppend.setValue(0);
    ASSERT_TRUE(panel().cmdStartRec[0].userClick().done());
    EXPECT_EQ(readFile(folder.path() / "t.txt"), never);
    EXPECT_EQ(panel().Label18.caption(), " 8 Script written: 2020-01-01 12:00");
    panel().txtFilePath.setText("no/such/folder");
    ASSERT_TRUE(panel().cmdStartRec[0].userClick().done());
    EXPECT_THAT(boxes(), ElementsAre(HasSubstr("No such file")));
}

TEST_F(ScriptPanelTest, ReportsOfARun) {
    load("02,C0,\n00,11,12\n`A60\n00,,<1\n`A50\n00,22,22\n`ENDM");
    JUnitFile file(folder.path() / "r.xml", panel().results(), {});
    answer(Choice::Retry);
    at(1, [&] { file.write(); }); // as a program that is killed then would leave it
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    (void)boxes();
    EXPECT_THAT(readFile(folder.path() / "r.xml"),
                HasSubstr("<property name=\"state\" value=\"incomplete\"/>"));
    file.finish();
    const std::string junit = readFile(folder.path() / "r.xml");
    EXPECT_THAT(junit,
                HasSubstr("<testsuite name=\"s.txt\" tests=\"3\" failures=\"1\" errors=\"1\" skipped=\"0\""));
    EXPECT_THAT(junit, HasSubstr("timestamp=\"2020-01-01T12:00:"));
    EXPECT_THAT(junit, HasSubstr("name=\"state\" value=\"completed\""));
    EXPECT_THAT(junit,
                HasSubstr("name=\"pass 1 line 002\" time=\"0.006\"><failure message=\"line 002: expected 12, "
                          "read 11\" type=\"mismatch\"/></testcase>"));
    EXPECT_THAT(junit, HasSubstr("line 004\" time="));
    EXPECT_THAT(junit, Not(HasSubstr("<1")));
    EXPECT_THAT(csvReport(panel().results()),
                ::testing::StartsWith("pass,line,operation,address,register,write,expected,read,verdict,ms\n"
                                      "1,1,\" Reg:1 W:1\",50,02,C0,,,ran,3\n1,2,"));
    const std::string json = jsonReport(panel().results());
    EXPECT_THAT(json,
                HasSubstr(R"({"script":"s.txt","bus":"i2c","verdict":"error","ended":"completed","passes":[{)"
                          R"("pass":1,"seconds":)"));
    EXPECT_THAT(
        json,
        HasSubstr(R"({"line":2,"operation":" Reg:1 W:1 R:1","address":"50","register":"00","write":"11",)"
                  R"("expected":"12","read":"11","verdict":"fail","ms":6})"));

    // Texts of any code stay readable for readers of XML and JSON.
    ScriptResults odd;
    odd.script = "a\xE4\x01\"\xC3\xA4<";
    EXPECT_THAT(junitReport(odd), HasSubstr("name=\"a\xEF\xBF\xBD &quot;\xC3\xA4&lt;\""));
    EXPECT_THAT(jsonReport(odd), HasSubstr("\"a\xEF\xBF\xBD\\u0001\\\"\xC3\xA4<\""));
}

TEST_F(ScriptPanelTest, AnUnwritableReportIsToldOnceAndTheRunGoesOn) {
    std::vector<std::string> told;
    ScriptResults results;
    JUnitFile file(folder.path() / "gone/r.xml", results,
                   [&](const std::string& text) { told.push_back(text); });
    EXPECT_THROW(file.write(), Fault);
    file.passBegan(1, 2);
    file.passEnded(ScriptEnd::Completed);
    EXPECT_THAT(told, ElementsAre(HasSubstr("No such file")));
    EXPECT_TRUE(file.failed());
}

} // namespace
} // namespace vrk
