#include "tests/support/TestBench.h"

#include "platform/files/files.h"

namespace vrk {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class TraceTest : public TestBench {
  protected:
    Doco& trace() { return *bench.Doco; }
    std::string saved(const char* name) { return readFile(folder.path() / name); }
};

TEST_F(TraceTest, LinesPassTheirGates) {
    loadConsoles();
    console().txtSFRAddress.setText("80");
    console().cmdFirmwareVersion.userClick();
    const std::string version = console().txtFirmwareVersion.text();
    ASSERT_THAT(version, StartsWith("Firmware Version "));
    const std::string one = "Read F340 Processor Firmware Revision: " + version + "\r\n";
    const std::string two = "Read F340 SFR Register 80\r\n";
    const std::string fill = "Clear USB Buffer Memory: 0\r\n";
    for (const auto& [on, detail, base, text] : {std::tuple{false, true, true, std::string()},
                                                 {true, false, true, one},
                                                 {true, true, false, one + two}}) {
        trace().ChkTrace[2].setValue(on);
        trace().chkTRDetail.setValue(detail);
        trace().ChkBasIO.setValue(base);
        trace().cndTclear.userClick();
        console().cmdFirmwareVersion.userClick();
        console().cmdGetSDFValue.userClick();
        EXPECT_EQ(trace().rtxt1.text(), text);
    }
    trace().ChkBasIO.userClick();
    trace().cndTclear.userClick();
    console().cmdGetSDFValue.userClick();
    EXPECT_THAT(trace().rtxt1.text(), HasSubstr(fill));
    EXPECT_THAT(trace().rtxt1.text(), HasSubstr(two));
    trace().ChkTrace[2].userClick();
    trace().cndTclear.userClick();
    console().cmdGetSDFValue.userClick();
    EXPECT_EQ(trace().rtxt1.text(), "");
}

TEST_F(TraceTest, DetailSwitchesOfBothPanelsShowTheSame) {
    bench.start();
    startup().chkTRDetail.userClick();
    EXPECT_EQ(trace().chkTRDetail.value(), 1);
    trace().chkTRDetail.userClick();
    EXPECT_EQ(startup().chkTRDetail.value(), 0);
    trace().ChkVerbose.userClick();
    EXPECT_TRUE(bench.trace().traceVerbose);
}

TEST_F(TraceTest, SavedFileEndsEachSectionWithEndOnALineOfItsOwn) {
    const std::string head = "Trace File Data Acquisition 2020-01-01 12:00\r\n";
    trace().txtFilePath.setText("trace.txt");
    for (const auto& [text, body] : {std::pair{"", "END\r\n"},
                                     {"one\r\ntwo", "one\r\ntwo\r\nEND\r\n"},
                                     {"one\r\n", "one\r\nEND\r\n"},
                                     {"one\r\n\r\n", "one\r\n\r\nEND\r\n"}}) {
        trace().rtxt1.setText(text);
        trace().cmdStartRec[0].userClick();
        EXPECT_EQ(saved("trace.txt"), head + body);
        EXPECT_EQ(trace().rtxt1.text(), text);
    }
    trace().chkAppend.userClick();
    trace().cmdStartRec[0].userClick();
    EXPECT_EQ(saved("trace.txt"), head + "one\r\n\r\nEND\r\n" + head + "one\r\n\r\nEND\r\n");
}

TEST_F(TraceTest, BrowsedPathIsTaken) {
    for (const auto& [path, taken] :
         {std::pair{std::optional<std::string>("b.txt"), "b.txt"}, {std::nullopt, "b.txt"}}) {
        dialogs.answerFile(path);
        trace().cmdBrowse.userClick();
        EXPECT_EQ(boxes().size(), 1U);
        EXPECT_EQ(trace().txtFilePath.text(), taken);
    }
}

TEST_F(TraceTest, PathThatCannotBeWrittenIsToldAndTheTextStays) {
    trace().rtxt1.setText("kept");
    for (const int append : {0, 1})
        for (const char* path : {"", ".", "missing/trace.txt"}) {
            trace().chkAppend.setValue(append);
            trace().txtFilePath.setText(path);
            trace().cmdStartRec[0].userClick();
            EXPECT_EQ(boxes().size(), 1U) << path;
            EXPECT_EQ(trace().rtxt1.text(), "kept");
        }
    EXPECT_THAT(std::filesystem::is_empty(folder.path()), true); // nothing half-written lies about
}

TEST_F(TraceTest, ClosingTheWindowLosesNeitherTextNorSwitches) {
    loadConsoles();
    bench.Doco.show();
    trace().ChkTrace[2].userClick();
    trace().ChkBasIO.userClick();
    console().cmdFirmwareVersion.userClick();
    const std::string text = trace().rtxt1.text();
    ASSERT_THAT(text, HasSubstr("Firmware Version"));
    bench.Doco.userClose();
    EXPECT_FALSE(bench.Doco.visible());
    console().cmdFirmwareVersion.userClick();
    EXPECT_EQ(trace().rtxt1.text(), text + text);
    EXPECT_EQ(trace().ChkTrace[2].value(), 1);
    EXPECT_EQ(trace().ChkBasIO.value(), 1);
}

} // namespace
} // namespace vrk
