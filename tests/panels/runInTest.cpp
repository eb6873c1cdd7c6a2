#include "panels/discrete/RunInReport.h"
#include "platform/files/files.h"
#include "tests/support/TestBench.h"

#include <fstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace vrk {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// The run-in page over the up/down panel with VCC on, journals in a folder of the test's own.
class RunIn : public TestBench {
  public:
    std::filesystem::path runs = folder.path() / "data/runs";

    UPDN_Runin& open(int steps) {
        bus.socket("UPDN100");
        bench.runInHome().folder = runs;
        bench.runInHome().keepJournal = true;
        EXPECT_TRUE(bench.start().done());
        EXPECT_TRUE(startup().cboVRKSelect.userSelect(frmStartup::kUpDown).done());
        EXPECT_TRUE(bench.frmVRK_UD1->OptVCC[0].userClick().done());
        EXPECT_TRUE(bench.frmVRK_UD1->cmdRunin.userClick().done());
        UPDN_Runin& panel = *bench.UPDN_Runin;
        panel.txtTestQty.setText(decimalText(steps));
        panel.txtLogSteps.setText("4");
        return panel;
    }
    std::filesystem::path journal() {
        for (const auto& entry : std::filesystem::directory_iterator(runs))
            return entry.path();
        return {};
    }
    /// What the journal says of events, in its order.
    std::vector<std::string> told() {
        std::vector<std::string> all;
        RunInListener listener;
        listener.event = [&all](const std::string& what, const std::string&) { all.push_back(what); };
        (void)readRunIn(journal(), listener);
        return all;
    }
    /// The journal as it was behind its `lines`-th line.
    void cut(int lines) {
        const auto path = journal();
        const std::string text = readFile(path);
        std::size_t end = 0;
        for (int line = 0; line < lines; ++line)
            end = text.find('\n', end) + 1;
        std::ofstream(path) << text.substr(0, end);
    }
    /// Behind a step, before the next one's first edge.
    Subscription behind(UPDN_Runin& panel, int step, std::function<void()> hand) {
        return panel.observeStages([step, hand = std::move(hand)](const RunInStage& stage) {
            if (stage.loop == step)
                hand();
        });
    }
    void store(const std::string& position) { bus.setMemory("UPDN100: " + position + "\nUPDN100: 00\n"); }
};

TEST_F(RunIn, TheJournalTellsTheRun) {
    UPDN_Runin& panel = open(8);
    ASSERT_TRUE(panel.chkJournal.checked());
    // The limit for loops is none for a test that is there to store: no box may stand in its way.
    bench.frmVRK_UD1->txtNvBudget.setText("4");
    ASSERT_TRUE(bench.frmVRK_UD1->txtNvBudget.userEnter().done());
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    EXPECT_EQ(journal().filename().string().substr(0, 15), "runin-20200101-");
    const std::string text = readFile(journal());
    EXPECT_THAT(text, HasSubstr("\"fields\":{\"steps\":8,\"logEvery\":4,\"positions\":100,\"tolerance\":0.33,"
                                "\"id\":\"User Test ID\",\"logAll\":false,\"doublePurge\":false,"
                                "\"stimulus\":[102,102,63,1,1,1,1],\"vcc\":\"5.0\""));
    EXPECT_THAT(text, HasSubstr("{\"kind\":\"stage\",\"loop\":1,\"stage\":3,\"tally\":64,\"counts\":"));
    EXPECT_THAT(text, HasSubstr("\"verdict\":\"pass\",\"band\":\"pass\",\"ms\":"));
    EXPECT_THAT(text, HasSubstr("{\"kind\":\"end\",\"ended\":\"completed\"}\n"));
    EXPECT_EQ(text.substr(9, 16), "{\"kind\":\"header\"");
    EXPECT_EQ(crc32("123456789"), 0xCBF43926U); // the check value of this code
    const RunInReport report = recountRunIn(journal(), std::nullopt);
    EXPECT_EQ(report.counted.count, 8);
    EXPECT_EQ(report.counted.judgements, 10);
    EXPECT_EQ(report.counted.fails, 0);
    EXPECT_GT(recountRunIn(journal(), 0.0001).counted.fails, 0);
    // A finished run is not offered, and an existing file is never touched.
    panel.Form_Activate();
    EXPECT_FALSE(panel.FrmUnfinished.visible());
    EXPECT_THROW((void)panel.run({.journal = journal(), .resume = true}), Fault);
    EXPECT_THROW((void)panel.run({.journal = journal(), .asks = false}), Fault);
    EXPECT_EQ(readFile(journal()), text);
}

TEST_F(RunIn, WhatWasStoppedIsOfferedAndGoneOnWithAtTheExactStep) {
    struct Case {
        const char* what;
        int lines;            ///< that are left: header, range and stages 0 to 2 are five
        const char* position; ///< stored, hexadecimal
        std::vector<std::string> events;
        std::optional<Choice> answer;
        int count; ///< at the end
    };
    const std::vector<Case> cases = {
        {"between two rounds", 9, "3F", {"resumed"}, {}, 8},
        {"in a round", 7, "3F", {"resumed"}, {}, 8},
        {"a store without its line", 6, "3F", {"resumed", "unknown round"}, {}, 8},
        {"before the initial test", 4, "05", {"resumed"}, {}, 8},
        {"before the range", 2, "05", {"resumed"}, {}, 8},
        {"elsewhere, and left", 7, "20", {"resumed", "mismatch"}, Choice::No, 2},
        {"elsewhere, and gone on", 7, "20", {"resumed", "mismatch"}, Choice::Yes, 8},
    };
    UPDN_Runin& panel = open(8);
    for (const Case& one : cases) {
        SCOPED_TRACE(one.what);
        panel.txtTestQty.setText("8");
        std::filesystem::remove_all(runs);
        ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
        const RunInReport whole = recountRunIn(journal(), std::nullopt);
        cut(one.lines);
        store(one.position);
        panel.txtTestQty.setText("4711"); // the journal's counts
        panel.Form_Activate();
        ASSERT_TRUE(panel.FrmUnfinished.visible());
        EXPECT_THAT(panel.lblUnfinished.caption(), HasSubstr(" of 8, 0 fails, 0:0"));
        (void)bench.frmVRK_UD1->OptVCC[1].userClick();
        if (one.answer)
            answer(*one.answer);
        ASSERT_TRUE(panel.cmdResumeRun.userClick().done());
        EXPECT_EQ(told(), one.events);
        EXPECT_EQ(panel.lblRUnCount[0].caption(), decimalText(one.count));
        const RunInReport report = recountRunIn(journal(), std::nullopt);
        EXPECT_EQ(report.counted.count, one.count);
        EXPECT_EQ(report.history.resumed, 1);
        EXPECT_EQ(report.counted.fails > 0, one.answer == Choice::Yes);
        EXPECT_NEAR(report.counted.limit, whole.counted.limit, 0.001);
        EXPECT_THAT(panel.rtxt1.text(), HasSubstr("User Test ID   Test Resumed : Test Count:["));
        EXPECT_EQ(boxes().size(), one.answer ? 1U : 0U);
        (void)bench.frmVRK_UD1->OptVCC[0].userClick();
    }
}

/// The last measurement before the stop failed, but the part has stood at its tally all along.
TEST_F(RunIn, AnOddLastMeasurementIsNoMismatch) {
    UPDN_Runin& panel = open(8);
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    RunInStage odd;
    RunInListener listener;
    listener.stage = [&odd](const RunInStage& stage) { odd = stage.loop == 2 ? stage : odd; };
    (void)readRunIn(journal(), listener);
    cut(6);
    odd.volts += 1;
    odd.error -= 1;
    odd.verdict = RunInVerdict::Fail;
    JournalFile::open(journal(), readRunIn(journal()).extent.good).add(stageRecord(odd));
    store("3F");
    panel.Form_Activate();
    std::vector<int> before;
    const Subscription earlier = panel.observeEarlier(
        [&before](const RunInStage& stage, bool resumed) { before.push_back(resumed ? -1 : stage.loop); });
    ASSERT_TRUE(panel.cmdResumeRun.userClick().done());
    EXPECT_EQ(told(), std::vector<std::string>{"resumed"});
    EXPECT_EQ(before, (std::vector<int>{1, 2}));
    const RunInCount counted = recountRunIn(journal(), std::nullopt).counted;
    EXPECT_EQ(counted.count, 8);
    EXPECT_EQ(counted.fails, 1);
}

TEST_F(RunIn, NewAndShowLeaveTheJournalAsItIs) {
    UPDN_Runin& panel = open(8);
    const Subscription hand = behind(panel, 2, [this] { fault(sim::FaultKind::MissedStore); });
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    cut(11);
    const auto path = journal();
    const std::string text = readFile(path);
    ASSERT_EQ(::mkfifo((runs / "pipe.journal").c_str(), 0600), 0); // must not keep the page waiting
    panel.Form_Activate();
    ASSERT_TRUE(panel.cmdShowRun.userClick().done());
    EXPECT_THAT(panel.rtxt1.text(), HasSubstr("Volts  FAIL"));
    EXPECT_THAT(panel.rtxt1.text(), HasSubstr("step 6 of 8,"));
    ASSERT_TRUE(panel.cmdNewRun.userClick().done());
    EXPECT_FALSE(panel.FrmUnfinished.visible());
    panel.Form_Activate();
    EXPECT_FALSE(panel.FrmUnfinished.visible());
    EXPECT_EQ(readFile(path), text);
}

/// The board goes before a step's first edge, or while events run behind its store: the step is then done or
/// not, and its judgement counts once.
TEST_F(RunIn, AReplugParksTheRunBehindItsDialog) {
    UPDN_Runin& panel = open(40);
    for (const bool stored : {false, true}) {
        SCOPED_TRACE(stored);
        std::filesystem::remove_all(runs);
        const Subscription hand = behind(panel, 10, [this, stored] {
            if (stored)
                events.post([this] { bus.unplug(0); });
            else
                bus.unplug(0);
        });
        answer(Choice::Retry, [this] { bus.plug(0); });
        ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
        auto shown = dialogs.takeShown();
        ASSERT_EQ(shown.size(), 1U);
        const MessageBox box = shown.front().box;
        ASSERT_TRUE(box.unattended.has_value());
        EXPECT_EQ(box.unattended->after, Milliseconds{10000});
        EXPECT_EQ(box.unattended->choice, Choice::Retry);
        EXPECT_TRUE(box.unattended->ready());
        bus.unplug(0);
        EXPECT_FALSE(box.unattended->ready());
        bus.plug(0);
        const RunInCount counted = recountRunIn(journal(), std::nullopt).counted;
        EXPECT_EQ(counted.count, 40);
        EXPECT_EQ(counted.judgements, 42);
        EXPECT_EQ(counted.fails, 0);
        std::vector<std::string> expected = {"link lost", "link back"};
        if (stored)
            expected.emplace_back("unknown round");
        EXPECT_EQ(told(), expected);
        EXPECT_THAT(panel.rtxt1.text(), HasSubstr("Link Lost : Test Count:["));
        EXPECT_THAT(panel.rtxt1.text(), HasSubstr("Link Back : Test Count:["));
        // Reconnect what the check above took away, and go again.
        ASSERT_TRUE(act([this] { link().initHIDConnection(); }).done());
        (void)bench.frmVRK_UD1->OptVCC[0].userClick();
    }
    // A link that is given up ends the program, and the journal can be gone on with.
    std::filesystem::remove_all(runs);
    const Subscription hand = behind(panel, 10, [this] { bus.unplug(0); });
    answer(Choice::Cancel);
    EXPECT_EQ(panel.cmdRunInitial.userClick().kind, Outcome::Kind::Ended);
    EXPECT_EQ(readRunIn(journal()).ended, "link lost");
    EXPECT_EQ(whyNotResumable(journal(), readRunIn(journal())), "");
    (void)boxes();
}

TEST_F(RunIn, EntriesThatCannotBeAreToldAndNothingIsSent) {
    UPDN_Runin& panel = open(8);
    const std::vector<std::pair<TextBox*, const char*>> cases = {
        {&panel.txtTestQty, "many"},      {&panel.txtTestQty, ""},       {&panel.txtLogSteps, "-4"},
        {&panel.txtLogSteps, "40000"},    {&panel.txtWipPositions, "x"}, {&panel.txtWipPositions, "-1"},
        {&panel.txtLimitDiv, "a third"},  {&panel.txtLimitDiv, "-0.1"},  {&panel.txtInitialIncr[3], "one"},
        {&panel.txtInitialIncr[6], "-1"},
    };
    wire.clear();
    for (const auto& [field, text] : cases) {
        const std::string before = field->text();
        field->setText(text);
        EXPECT_EQ(panel.cmdRunInitial.userClick().kind, Outcome::Kind::Faulted) << field->path() << text;
        field->setText(before);
    }
    EXPECT_EQ(boxes().size(), cases.size());
    EXPECT_TRUE(wire.empty());
    EXPECT_FALSE(std::filesystem::exists(runs));
    // A folder that cannot be: the run goes on, and the user knows.
    bench.runInHome().folder = folder.write("file", "x") / "runs";
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    EXPECT_EQ(panel.lblRUnCount[0].caption(), "8");
    EXPECT_THAT(boxes(), ::testing::ElementsAre(HasSubstr("The test begins without one")));
}

/// Cut anywhere, a journal loses what was torn and nothing else; a byte changed before the end is damage.
TEST_F(RunIn, AJournalCutAnywhereIsReadUpToThere) {
    UPDN_Runin& panel = open(8);
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    const std::string text = readFile(journal());
    const auto path = folder.path() / "cut.journal";
    const std::size_t header = text.find('\n') + 1;
    for (std::size_t length = 0; length<text.size(); length += length> 900 ? 7 : 61) {
        const std::string part = text.substr(0, length);
        std::ofstream(path) << part;
        if (length < header) {
            EXPECT_THROW((void)readRunIn(path), Fault) << length;
            continue;
        }
        const RunInHistory history = readRunIn(path);
        EXPECT_EQ(history.extent.good, part.rfind('\n') + 1) << length;
        EXPECT_EQ(history.extent.torn, part.back() != '\n') << length;
        EXPECT_FALSE(history.extent.damaged);
    }
    std::string damaged = text;
    damaged[text.size() / 2] ^= 1;
    std::ofstream(path) << damaged;
    EXPECT_TRUE(readRunIn(path).extent.damaged);
    EXPECT_THAT(whyNotResumable(path, readRunIn(path)), HasSubstr("damaged behind line"));
    // Goes on behind what is whole, and holds the file for itself meanwhile.
    std::ofstream(path) << text.substr(0, text.size() - 5);
    RunInHistory history = readRunIn(path);
    {
        RunInJournal again(path, history, {});
        EXPECT_TRUE(journalInUse(path));
        EXPECT_THROW(RunInJournal(path, history, {}), Fault);
        again.end(RunInEnd::Terminated);
    }
    EXPECT_FALSE(journalInUse(path));
    EXPECT_EQ(readRunIn(path).ended, "terminated");
    EXPECT_FALSE(readRunIn(path).extent.torn);
}

TEST_F(RunIn, TheSuiteHasACaseForEachLogInterval) {
    UPDN_Runin& panel = open(12);
    const Subscription hand = behind(panel, 8, [this] { fault(sim::FaultKind::MissedStore); });
    ASSERT_TRUE(panel.cmdRunInitial.userClick().done());
    std::optional<RunInSuite> suite;
    (void)recountRunIn(journal(), std::nullopt, {}, &suite);
    const std::string text = junitText(suite->suite(true));
    EXPECT_THAT(text, HasSubstr("<testsuite name=\"User Test ID\" tests=\"4\""));
    EXPECT_THAT(text, HasSubstr("name=\"initial test\""));
    EXPECT_THAT(text, HasSubstr("name=\"steps 9 to 12\""));
    EXPECT_THAT(text, HasSubstr("message=\"4 outside the limit, first at step 9: read"));
    EXPECT_THAT(text, HasSubstr("<property name=\"state\" value=\"completed\"/>"));
    EXPECT_THAT(text, Not(HasSubstr("resumed")));
}

} // namespace
} // namespace vrk
