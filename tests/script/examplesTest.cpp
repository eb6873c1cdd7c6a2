#include "script/ScriptReports.h"
#include "tests/script/ScriptBench.h"

#include "platform/files/files.h"

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A bench of its own for each rehearsal.
class SecondBench final : public RehearsalBench {
  public:
    SecondBench(const std::string& part, const BusMode& mode) {
        inner_.SetUp();
        inner_.mode = mode;
        inner_.bus.socket(part);
        (void)inner_.panel();
    }
    ~SecondBench() override { (void)inner_.boxes(); }
    ScriptBus& bus() override { return inner_.scriptBus; }
    Milliseconds now() const override { return inner_.clock.now(); }
    void pass(Milliseconds duration) override { inner_.clock.sleep(duration); }
    long long reports() const override {
        return std::count_if(inner_.wire.begin(), inner_.wire.end(), [](const hid::WireEvent& event) {
            return event.direction == hid::WireEvent::Direction::Out;
        });
    }
    std::map<std::string, int> nonvolatileWrites() const override {
        return {{"all", inner_.bus.state().part->nonvolatileWrites}};
    }

  private:
    struct Inner : ScriptBench {
        void TestBody() override {}
    };
    Inner inner_;
};

class ScriptExamplesTest : public ScriptBench {
  protected:
    ScriptExamplesTest() {
        rehearsals = [this] { return std::make_unique<SecondBench>(part, mode); };
    }
    std::string part = "KV4071";
};

TEST_F(ScriptExamplesTest, RunOnTheirPartsAsRehearsed) {
    const struct {
        const char* file;
        const char* part;
        bool spi;
        const char* counts;
        int writes; ///< non-volatile
    } cases[] = {
        {"kv4071-wiper.txt", "KV4071", false, "5/0", 1}, {"kv4074-quad.txt", "KV4074", false, "4/0", 2},
        {"kv4071-fails.txt", "KV4071", false, "2/1", 0}, {"kv4071-interrupt.txt", "KV4071", false, "4/0", 0},
        {"kv4184-spi.txt", "KV4184", true, "3/0", 0},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.file);
        mode = {!one.spi, one.spi};
        part = one.part;
        bus.socket(part);
        panel().txtIDefault.setText("0000");
        for (int row = 1; row <= ScriptTable::kMostLines; ++row)
            script.table.sizes(row) = {}; // as the first script of a session finds them
        load(readFile(std::string(VRK_EXAMPLES "/") + one.file));
        EXPECT_THAT(panel().findings(), IsEmpty());
        ASSERT_TRUE(panel().cmdRehearse.userClick().done());
        EXPECT_THAT(transfers(), IsEmpty()); // the real part has seen nothing of it
        const Milliseconds before = clock.now();
        const int writes = bus.state().part->nonvolatileWrites;
        ASSERT_TRUE(panel().cmdExecAll.userClick().done());
        EXPECT_EQ(counts(), one.counts);
        EXPECT_EQ(panel().results().verdict(), std::string(one.counts).ends_with("/0") ? "pass" : "fail");
        const Rehearsal& rehearsal = *panel().rehearsal();
        EXPECT_EQ(rehearsal.lasted, clock.now() - before);
        EXPECT_EQ(rehearsal.reports, static_cast<long long>(sent().size()));
        EXPECT_EQ(rehearsal.totalWrites(), one.writes);
        EXPECT_EQ(bus.state().part->nonvolatileWrites - writes, one.writes);
        EXPECT_EQ(rehearsal.results.verdict(), panel().results().verdict());
        EXPECT_THAT(rehearsal.neverPass, IsEmpty());
    }
}

TEST_F(ScriptExamplesTest, RehearsalKnowsRowsThatNoPartCanPass) {
    load("`w20000\n00,,7E\n20,,01\n20,,02\n00,,XX\n`G12\n00,,12345\n`AFF\n00,,11\n`w\n`S\n`A50\n00,11,\n`"
         "ENDM\n00,,XX");
    ASSERT_TRUE(panel().cmdRehearse.userClick().done());
    const Rehearsal& rehearsal = *panel().rehearsal();
    EXPECT_THAT(rehearsal.neverPass, ElementsAre(4, 5, 6, 7, 9));
    EXPECT_THAT(rehearsal.wouldFail, ElementsAre(2, 4, 5, 6, 7, 9));
    EXPECT_EQ(rehearsal.messages.size(), 1U); // the address; the pause is passed over
    EXPECT_GE(rehearsal.lasted.count(), 20000);
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "s_DL.txt"));
    EXPECT_THAT(jsonReport(rehearsal.results, &rehearsal),
                ::testing::HasSubstr(R"("nonvolatileWrites":{"all":1},"neverPass":[4,5,6,7,9]}})"));
    EXPECT_THAT(boxes(), IsEmpty());

    // Of many writes a window asks; without an end any are too many.
    std::vector<std::string> asked;
    panel().ask = [&](frmScriptOps::Question question, const std::function<void()>& goOn) {
        asked.push_back(panel().questionText(question));
        EXPECT_TRUE(goOn);
    };
    wire.clear();
    ASSERT_TRUE(panel().cmdRunContinuous.userClick().done());
    EXPECT_THAT(asked, ElementsAre(::testing::HasSubstr("1 time (1 to all)")));
    EXPECT_THAT(transfers(), IsEmpty());
    panel().ask = {};

    panel().chkAOF.setValue(1);
    ASSERT_TRUE(panel().cmdRehearse.userClick().done());
    EXPECT_THAT(panel().rehearsal()->wouldFail, ElementsAre(2));
    load("`w1\n`w1"); // of the script before nothing is known any more
    EXPECT_FALSE(panel().rehearsal());
    load("\n`EISTART\n`ENDM"); // but for the sizes of its rows, with which row 2 runs
    ASSERT_TRUE(panel().cmdRehearse.userClick().done());
    EXPECT_GT(panel().rehearsal()->reports, 0);

    load("00,11,\n`ENDM");
    panel().events().post([this] { panel().cmdAbort_Click(); });
    ASSERT_TRUE(panel().cmdRehearse.userClick().done());
    EXPECT_FALSE(panel().rehearsal());
    EXPECT_TRUE(panel().cmdExecAll.enabled() && panel().cmdRehearse.enabled() && !panel().cmdAbort.enabled());

    // Where a window asks, a run that was not rehearsed is rehearsed by itself.
    panel().ask = [&asked](auto, const auto&) { asked.emplace_back("again"); };
    ASSERT_TRUE(panel().cmdRunContinuous.userClick().done());
    EXPECT_EQ(asked.back(), "again");
    EXPECT_THAT(transfers(), IsEmpty());
    ASSERT_TRUE(panel().cmdExecAll.userClick().done());
    EXPECT_EQ(asked.size(), 2U);
    EXPECT_EQ(transfers().size(), 1U);
}

} // namespace
} // namespace vrk
