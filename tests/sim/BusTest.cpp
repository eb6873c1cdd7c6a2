#include "tests/sim/Bench.h"

#include "link/reportLayout.h"

namespace vrk::sim {
namespace {

class BusTest : public Bench {
  protected:
    BusTest() : Bench(false) {}
    hid::ReadResult read(hid::Handle from, int ms) { return bus.read(from, last, Milliseconds{ms}); }
    long long now() const { return clock.now().count(); }

    hid::Report last{};
};

constexpr auto kArrived = hid::ReadResult::Arrived;
constexpr auto kTimedOut = hid::ReadResult::TimedOut;
constexpr auto kFailed = hid::ReadResult::Failed;

TEST_F(BusTest, KeepsTheTimeOfAFullSpeedDevice) {
    EXPECT_TRUE(send("00"));
    EXPECT_EQ(now(), 1);
    EXPECT_EQ(read(handle, 0), kTimedOut);
    EXPECT_EQ(read(handle, 6000), kArrived);
    EXPECT_EQ(now(), 2);
    EXPECT_EQ(read(handle, 1), kTimedOut);
    EXPECT_EQ(now(), 3);

    const struct {
        int late;
        hid::ReadResult result;
        int end;
    } cases[] = {{5999, kArrived, 6000}, {6000, kTimedOut, 6001}, {0, kArrived, 1}};
    for (const auto& c : cases) {
        const auto start = now();
        bus.fault({.kind = FaultKind::LateReply, .ms = c.late});
        send("00");
        EXPECT_EQ(read(handle, 6000), c.result) << c.late;
        EXPECT_EQ(now() - start, c.end) << c.late;
        read(handle, 1); // purge
    }
    // A reply that came while nobody read is taken at once, also without a time-out.
    send("00");
    clock.sleep(Milliseconds{5});
    EXPECT_EQ(read(handle, 0), kArrived);
    // Reports arrive in the order in which they are ready.
    bus.fault({.kind = FaultKind::LateReply, .ms = 50});
    send("00");
    bus.stale({1, 2, 3});
    EXPECT_EQ(read(handle, 100), kArrived);
    EXPECT_EQ(text(last, 5), "01 02 03 00 00");
    EXPECT_EQ(read(handle, 100), kArrived);
    EXPECT_EQ(text(last, 4), "01 00 01 02");
}

TEST_F(BusTest, EachHandleQueuesReportsFromItsOpeningOn) {
    bus.stale({1, 1});
    const hid::Handle second = bus.open(bus.list()[0].path);
    EXPECT_NE(second, handle);
    for (int i = 0; i < 70; ++i) {
        bus.stale({1, 0, static_cast<std::uint8_t>(i)});
    }
    EXPECT_EQ(bus.state().handles, 2);
    const struct {
        hid::Handle from;
        int first, final;
    } queues[] = {{handle, 0, 61}, {second, 0, 62}};
    EXPECT_EQ(read(handle, 0), kArrived);
    EXPECT_EQ(text(last, 2), "01 01");
    for (const auto& queue : queues) {
        int seen = queue.first;
        while (read(queue.from, 0) == kArrived) {
            EXPECT_EQ(last[2], seen++);
        }
        EXPECT_EQ(seen, queue.final + 1) << "the newest are dropped";
    }
    // An answer in flight also reaches a handle that is opened before it lands.
    send("00");
    const hid::Handle third = bus.open(bus.list()[0].path);
    EXPECT_EQ(read(third, 10), kArrived);
    bus.close(third);
    bus.close(third);
    bus.close(hid::kNoHandle);
    EXPECT_EQ(read(third, 1000), kFailed);
    EXPECT_FALSE(bus.write(third, last));
    EXPECT_EQ(bus.state().handles, 2);
}

TEST_F(BusTest, ListsBoardsAmongOtherDevices) {
    const auto listed = [this] {
        std::string out;
        for (const auto& device : bus.list()) {
            const bool board = device.vendor == 0xF5C3 && device.product == 0x2034;
            EXPECT_TRUE(board || device.vendor != 0xF5C3 || device.product != 0x2034);
            out += board ? 'B' : 'o';
        }
        return out;
    };
    EXPECT_EQ(listed(), "B");
    bus.setBoards(3);
    bus.setForeign(4);
    EXPECT_EQ(listed(), "ooBoBoB");
    bus.unplug(1);
    EXPECT_EQ(listed(), "ooBooB");
    bus.setBoards(0);
    EXPECT_EQ(listed(), "oooo");

    const hid::Handle other = bus.open(bus.list()[1].path);
    EXPECT_TRUE(bus.write(other, {1}));
    EXPECT_EQ(read(other, 10), kTimedOut);
    bus.setForeign(1);
    EXPECT_EQ(read(other, 10), kFailed);
    EXPECT_EQ(bus.open("nowhere"), hid::kNoHandle);
    EXPECT_EQ(bus.lastError(), "There is no device at nowhere");
}

TEST_F(BusTest, BoardsAreSeparate) {
    bus.setBoards(2);
    bus.socket("KV4078", {}, 1);
    const hid::Handle second = bus.open(bus.list()[1].path);
    bus.write(second, zeroFilled({1, 1, 0, 1}));
    EXPECT_TRUE(bus.state(1).leds.green);
    EXPECT_FALSE(bus.state(0).leds.green);
    EXPECT_EQ(bus.state(0).part->name, "KV4071");
    EXPECT_EQ(bus.state(1).part->name, "KV4078");
    bus.write(second, zeroFilled({1, 1, 1}));
    EXPECT_EQ(read(handle, 10), kTimedOut) << "the reply is for the other board's handles";
    EXPECT_EQ(read(second, 10), kArrived);
}

TEST_F(BusTest, HandlesDieWithThePlug) {
    const std::string path = bus.list()[0].path;
    bus.stale({1});
    bus.unplug(0);
    const auto start = now();
    EXPECT_EQ(read(handle, 6000), kFailed);
    EXPECT_FALSE(send("00"));
    EXPECT_EQ(now(), start) << "at once";
    EXPECT_EQ(bus.lastError(), "The device was unplugged");
    EXPECT_TRUE(bus.list().empty());
    EXPECT_EQ(bus.open(path), hid::kNoHandle);
    EXPECT_FALSE(bus.state().plugged);
    EXPECT_EQ(bus.state().handles, 0);

    bus.plug(0);
    bus.plug(0);
    EXPECT_EQ(read(handle, 6000), kFailed);
    EXPECT_EQ(bus.open(path), hid::kNoHandle) << "the path is another one";
    handle = bus.open(bus.list().at(0).path);
    EXPECT_EQ(ask("00", 4), "01 00 01 02");

    bus.setBoards(0);
    EXPECT_FALSE(send("00"));
    bus.setBoards(1);
    EXPECT_FALSE(send("00"));
}

TEST_F(BusTest, FaultsWaitForTheCommandsThatCanMeetThem) {
    bus.fault({.kind = FaultKind::NoReply, .times = 2});
    bus.fault({.kind = FaultKind::ErrorByte, .command = 5, .value = 0xEE});
    bus.fault({.kind = FaultKind::Nak});
    bus.fault({.kind = FaultKind::StuckSda});
    bus.fault({.kind = FaultKind::WriteFails, .command = 7});
    powerPart(); // no replies: consumes nothing
    EXPECT_EQ(ask("00", 3), "");
    EXPECT_EQ(ask("01 01", 3), "");
    EXPECT_EQ(ask("01 01", 3), "01 00 00");
    EXPECT_EQ(ask("05 01", 3), "01 EE 18");
    EXPECT_EQ(ask("05 01", 3), "01 00 18");
    EXPECT_EQ(ask("06 51 01 01 00", 3), "01 01 00");
    EXPECT_EQ(ask("06 51 01 01 00", 3), "01 01 00") << "no transfer while the line is stuck";
    EXPECT_EQ(ask("04 00 01 00 01", 3), "01 00 01");
    EXPECT_EQ(ask("04 00 01 00 01", 3), "01 00 00");
    EXPECT_EQ(ask("06 51 01 01 00", 3), "01 00 40");
    EXPECT_FALSE(send("07 00 07"));
    EXPECT_EQ(ask("07 01", 3), "01 00 04") << "the refused write changed nothing";

    bus.fault({.kind = FaultKind::WriteFails, .times = 3});
    bus.reply(0, {9, 9});
    bus.input(6, 1.0, {});
    bus.clear();
    EXPECT_EQ(ask("00", 3), "01 00 01");
    EXPECT_EQ(count("06"), 388) << "the part's own wiper";
}

TEST_F(BusTest, PreparedRepliesQueue) {
    bus.reply(17, {1, 0, 0xFF, 0xFE}, 2);
    bus.reply(17, {1, 7, 0x80});
    EXPECT_EQ(ask("00", 3), "01 00 01") << "another command";
    EXPECT_EQ(ask("11 00 00", 5), "01 00 FF FE 00");
    EXPECT_EQ(ask("11 00 00", 4), "01 00 FF FE");
    EXPECT_EQ(ask("11 00 00", 4), "01 07 80 00");
    EXPECT_EQ(ask("11 00 00", 4), "01 00 00 00");
}

TEST_F(BusTest, BadArgumentsNameWhatIsAllowed) {
    const struct {
        std::function<void()> call;
        const char* message;
    } cases[] = {
        {[&] { bus.setBoards(5); }, "count must be 0 to 4"},
        {[&] { bus.setForeign(-1); }, "count must be 0 to 16"},
        {[&] { bus.unplug(1); }, "board must be 0 to 0"},
        {[&] { bus.fault({.times = 0}); }, "times must be 1 to 1000000"},
        {[&] { bus.fault({.command = 20}); }, "command must be 0 to 19"},
        {[&] { bus.fault({.kind = FaultKind::ErrorByte, .value = 256}); }, "value must be 0 to 255"},
        {[&] { bus.stale(std::vector<std::uint8_t>(65)); }, "a report has 64 bytes at most"},
        {[&] { bus.reply(-1, {}); }, "command must be 0 to 19"},
        {[&] { bus.input(16, 1.0, {}); }, "channel must be 0 to 15 (0F), 30 (1E) or 31 (1F)"},
        {[&] { bus.input(6, 1.0, 5); }, "an input is held at volts or at a count, not both"},
        {[&] { bus.input(6, {}, 1024); }, "count must be 0 to 1023"},
        {[] { faultKindFromName("nack"); }, "unknown fault kind \"nack\": one of noReply, lateReply, "
                                            "errorByte, writeFails, nak, stuckSda, missedStore, noise"},
        {[&] { bus.setBoards(0), bus.state(); }, "there is no board on the bus"},
    };
    for (const auto& c : cases) {
        try {
            c.call();
            ADD_FAILURE() << c.message;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), c.message);
        }
    }
    EXPECT_EQ(faultKindFromName("stuckSda"), FaultKind::StuckSda);
}

} // namespace
} // namespace vrk::sim
