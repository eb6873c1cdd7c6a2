#include "platform/files/files.h"
#include "platform/hid/ReplayHost.h"
#include "platform/hid/WireLog.h"
#include "platform/runtime/Fault.h"
#include "tests/platform/hid/FakeHost.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

namespace vrk::hid {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using namespace std::chrono_literals;

constexpr std::uint16_t kVendor = 0xF5C3;
constexpr std::uint16_t kProduct = 0x2034;

/// A recorder over a host with a foreign device between two boards.
class Wire : public testing::Test {
  protected:
    Wire() : path_(testing::TempDir() + "vrk-wire-" + std::to_string(getpid())) {
        host_.devices = {{kVendor, kProduct, "a"}, {1, 2, "mouse"}, {kVendor, kProduct, "b"}};
        host_.onCall = [this] { clock_.sleep(2ms); };
        host_.onTimeout = [this](Milliseconds timeout) { clock_.sleep(timeout - 2ms); };
    }
    ~Wire() override { std::filesystem::remove(path_); }

    std::string faultOfLog(const std::string& text) {
        replaceFile(path_, text);
        try {
            ReplayHost(path_, clock_, kVendor, kProduct);
        } catch (const Fault& fault) {
            return fault.what();
        }
        return "";
    }

    VirtualClock clock_;
    FakeHost host_;
    WireRecorder recorder_{host_, clock_, kVendor, kProduct};
    std::string path_;
};

/// Talks to two boards; what the caller saw, reads with the time that they took.
std::vector<std::string> talk(HidHost& host, Clock& clock) {
    std::vector<Handle> boards;
    for (const DeviceInfo& device : host.list())
        if (device.vendor == kVendor)
            boards.push_back(host.open(device.path));
    std::vector<std::string> seen;
    const auto read = [&](std::size_t board, Milliseconds timeout) {
        Report report{};
        const Milliseconds start = clock.now();
        const bool arrived = host.read(boards[board], report, timeout) == ReadResult::Arrived;
        seen.push_back((arrived ? "got " + std::to_string(report[2]) : "nothing") + " in " +
                       std::to_string((clock.now() - start).count()));
    };
    const auto write = [&](std::size_t board, std::initializer_list<int> bytes) {
        if (!host.write(boards[board], reportOf(bytes)))
            seen.emplace_back("refused");
    };
    read(0, 5ms);
    read(0, 5ms);
    write(0, {1, 6, 0xA0});
    read(0, 6000ms);
    write(1, {1, 0});
    read(1, 6000ms);
    read(1, 5ms); // the drain before the next command finds the late reply
    write(1, {1, 0});
    read(1, 6000ms);
    return seen;
}

TEST_F(Wire, ReplayAnswersAsTheRecordedBoardsDid) {
    host_.replies = {reportOf({1, 0, 77}), {}, reportOf({1, 0, 5}), {}, reportOf({1, 0, 6}),
                     reportOf({1, 0, 7})};
    std::vector<std::string> recorded;
    {
        WireLog log(recorder_, clock_, path_, {});
        recorded = talk(recorder_, clock_);
    }
    EXPECT_THAT(recorded, ElementsAre("got 77 in 2", "nothing in 5", "got 5 in 2", "nothing in 6000",
                                      "got 6 in 2", "got 7 in 2"));
    ReplayHost replay(path_, clock_, kVendor, kProduct);
    auto replayed = talk(replay, clock_);
    EXPECT_TRUE(replay.finished());
    EXPECT_EQ(replayed.at(0), "got 77 in 0") << "it waits there already";
    replayed[0] = recorded[0];
    EXPECT_EQ(replayed, recorded);
}

TEST_F(Wire, LogHoldsEachReportOfTheBoardsAndNothingElse) {
    WireLog log(recorder_, clock_, path_, {});
    recorder_.list();
    const Handle mouse = recorder_.open("mouse");
    const Handle board = recorder_.open("b");
    recorder_.write(mouse, reportOf({9}));
    clock_.jumpTo(1234ms);
    recorder_.write(board, reportOf({1, 6, 0xA0}));
    host_.replies = {reportOf({1, 0, 0x3F})};
    Report reply{};
    recorder_.read(board, reply, 100ms);
    host_.takesWrites = false;
    recorder_.write(board, reportOf({1}));
    recorder_.close(board);
    recorder_.write(board, reportOf({2}));
    host_.takesWrites = true;
    host_.devices.back().path = "b2"; // unplugged and plugged in again
    recorder_.list();
    recorder_.write(recorder_.open("b2"), reportOf({3}));

    const auto line = [](const std::string& head, int bytes) {
        std::string zeros;
        for (int i = 0; i < 64 - bytes; ++i)
            zeros += " 00";
        return head + zeros;
    };
    // Read while the log is still open: a crash must not take the last reports with it.
    EXPECT_EQ(readFile(path_), "vrkbench wire log 1\n# started 2020-01-01 12:00:00.000\n"
                               "# ms, direction, board, 64 bytes\nboard 1 b\n" +
                                   line("    1236 out 1 01 06 A0", 3) + '\n' +
                                   line("    1238 in  1 01 00 3F", 3) + '\n' + line("    1240 out 1 01", 1) +
                                   " failed\nboard 1 b2\n" + line("    1248 out 1 03", 1) + '\n');
}

TEST_F(Wire, FirstRequestThatDiffersIsToldAndEndsTheReplay) {
    {
        WireLog log(recorder_, clock_, path_, {});
        const Handle board = recorder_.open("a");
        recorder_.write(board, reportOf({1, 6, 0xA0}));
        recorder_.write(board, reportOf({1, 6, 0xA2, 0, 5}));
        host_.replies = {reportOf({1})};
        Report reply{};
        recorder_.read(board, reply, 1ms);
    }
    ReplayHost replay(path_, clock_, kVendor, kProduct);
    std::vector<ReplayHost::Difference> told;
    replay.onDifference([&](const auto& difference) { told.push_back(difference); });
    const Handle board = replay.open(replay.list().at(0).path);
    EXPECT_TRUE(replay.write(board, reportOf({1, 6, 0xA0})));
    EXPECT_FALSE(replay.write(board, reportOf({1, 6, 0xA4, 0, 4})));
    EXPECT_FALSE(replay.write(board, reportOf({1, 6, 0xA2, 0, 5}))) << "too late to come back";

    const Milliseconds before = clock_.now();
    Report reply{};
    EXPECT_EQ(replay.read(board, reply, 6000ms), ReadResult::TimedOut);
    EXPECT_EQ(clock_.now() - before, 6000ms);
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].request, 2);
    EXPECT_THAT(told[0].text, HasSubstr("byte 2, 4\n  recorded board 0: 01 06 A2 00 05 00"));
    EXPECT_THAT(told[0].text, HasSubstr("\n  sent     board 0: 01 06 A4 00 04 00"));
    EXPECT_EQ(replay.lastError(), told[0].text);

    ReplayHost again(path_, clock_, kVendor, kProduct);
    const Handle second = again.open("replay:0");
    EXPECT_TRUE(again.write(second, reportOf({1, 6, 0xA0})));
    EXPECT_TRUE(again.write(second, reportOf({1, 6, 0xA2, 0, 5})));
    EXPECT_FALSE(again.write(second, reportOf({1})));
    EXPECT_THAT(again.lastError(), HasSubstr("not in the recording"));

    // Cut before a reply: the recording is to blame, not the board.
    ReplayHost cut(path_, clock_, kVendor, kProduct);
    const Handle third = cut.open("replay:0");
    EXPECT_TRUE(cut.write(third, reportOf({1, 6, 0xA0})));
    EXPECT_TRUE(cut.write(third, reportOf({1, 6, 0xA2, 0, 5})));
    EXPECT_EQ(cut.read(third, reply, 5ms), ReadResult::Arrived);
    EXPECT_EQ(cut.read(third, reply, 20ms), ReadResult::TimedOut);
    EXPECT_FALSE(cut.diverged());
    EXPECT_EQ(cut.read(third, reply, 6000ms), ReadResult::TimedOut);
    EXPECT_TRUE(cut.diverged());
    EXPECT_THAT(cut.lastError(), HasSubstr("The recording ends before the reply to request 2\n"));
}

TEST_F(Wire, TheSameReportToAnotherBoardIsAnotherRequest) {
    {
        WireLog log(recorder_, clock_, path_, {});
        for (const char* board : {"a", "b"})
            recorder_.write(recorder_.open(board), reportOf({1, 6, 0xA0}));
    }
    ReplayHost replay(path_, clock_, kVendor, kProduct);
    const Handle first = replay.open(replay.list().at(0).path);
    EXPECT_TRUE(replay.write(first, reportOf({1, 6, 0xA0})));
    EXPECT_FALSE(replay.write(first, reportOf({1, 6, 0xA0})));
}

TEST_F(Wire, BrokenLogsAreRefusedWithTheirLine) {
    const std::string head = "vrkbench wire log 1\n";
    const std::string good = "1 out 0 " + reportText(reportOf({1})) + '\n';
    // Text and fault; empty: none.
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"\xEF\xBB\xBF" + head + "\r\n# remark\r\n" + good, ""},
        {head + "board 0 " + std::string(4097, 'p') + '\n' + good, "Line 2"},
        {head + good + "12 out 0 01 06", ""}, // cut short by a crash
        {"something else\n", "no wire log"},
        {head + good + "12 out 0 01 06\n", "Line 3"},
        {head + "1 up 0 " + reportText({}) + '\n', "Line 2"},
        {head + "-1 out 0 " + reportText({}) + '\n', "Line 2"},
        {head + "1 out 2000000000 " + reportText({}) + '\n', "Line 2"},
        {head + "1 out 0 " + reportText({}) + " 00\n", "Line 2"},
        {head + "1 out 0 100 " + reportText({}).substr(4) + '\n', "Line 2"},
    };
    for (const auto& [text, fault] : cases) {
        const std::string got = faultOfLog(text);
        EXPECT_THAT(got, HasSubstr(fault)) << text;
        EXPECT_EQ(got.empty(), fault.empty()) << text << got;
    }
    EXPECT_THROW(ReplayHost("/no/such/file", clock_, kVendor, kProduct), Fault);
}

TEST_F(Wire, UnwritableLogIsToldBeforeAnythingIsSent) {
    EXPECT_THROW(WireLog(recorder_, clock_, "/no/such/folder/log", {}), Fault);
    EXPECT_THROW(WireLog(recorder_, clock_, testing::TempDir(), {}), Fault);
    EXPECT_THROW(WireLog(recorder_, clock_, "/dev/full", {}), Fault);
    replaceFile(path_, "");
    EXPECT_THROW(requireOtherFile(path_, testing::TempDir() + "./" + path_.substr(testing::TempDir().size())),
                 Fault);
    EXPECT_NO_THROW(requireOtherFile(path_, ""));
}

TEST_F(Wire, FullDiskIsToldOnceAndTheExchangeGoesOn) {
    std::vector<std::string> told;
    WireLog log(recorder_, clock_, path_, [&](const std::string& text) {
        told.push_back(text);
        throw std::runtime_error("the one who is told fails as well");
    });
    const Handle board = recorder_.open("a");
    failAtFileSizeLimit();
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit small{300, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    bool taken = true;
    for (int i = 0; i < 3; ++i)
        taken = recorder_.write(board, reportOf({1})) && taken;
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_TRUE(taken);
    EXPECT_TRUE(log.failed());
    ASSERT_EQ(told.size(), 1u);
    EXPECT_THAT(told[0], HasSubstr("too large"));
}

} // namespace
} // namespace vrk::hid
