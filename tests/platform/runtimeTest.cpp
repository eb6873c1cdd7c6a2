#include "platform/runtime/EventLoop.h"
#include "platform/runtime/text.h"

#include <cstdint>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <string>
#include <vector>

namespace vrk {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The text that a conversion gives, or the fault's.
template <class F>
std::string attempt(F convert) {
    try {
        return std::to_string(convert());
    } catch (const Fault& fault) {
        return fault.what();
    }
}

TEST(Text, NumbersOutOfText) {
    struct Row {
        const char* text;
        const char* hexInt;
        const char* hexByte;
        const char* count;
        double leading;
        bool numeric;
    };
    for (const Row& row :
         {Row{"", "0", "0", "0", 0, false}, Row{"7f", "127", "127", "0", 7, false},
          Row{"0B - P2.3", "11", "11", "0", 0, false}, Row{"G1", "0", "0", "0", 0, false},
          Row{"100", "256", "Overflow", "100", 100, true}, Row{"7FFF", "32767", "Overflow", "0", 7, false},
          Row{"FFFF", "-1", "Overflow", "0", 0, false},
          Row{"8000", "-32768", "Overflow", "Overflow", 8000, true},
          Row{"10000", "Overflow", "Overflow", "Overflow", 10000, true},
          Row{" 2.5 ", "0", "0", "2", 2.5, true}, Row{"3.5", "3", "3", "4", 3.5, true},
          Row{"-0.4", "0", "0", "0", -0.4, true}, Row{"-1", "0", "0", "Overflow", -1, true},
          Row{"2.0x", "2", "2", "0", 2, false}, Row{".", "0", "0", "0", 0, false},
          Row{"1e2", "482", "Overflow", "100", 100, true}, Row{"1e", "30", "30", "0", 1, false},
          Row{"1,234", "1", "1", "0", 1, false}, Row{"1e999", "Overflow", "Overflow", "Overflow", 0, true}}) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(attempt([&] { return hexToInt(row.text); }), row.hexInt);
        EXPECT_EQ(attempt([&] { return hexToByte(row.text); }), row.hexByte);
        EXPECT_EQ(attempt([&] { return decimalByte(row.text); }), row.count);
        if (row.text != std::string("1e999")) {
            EXPECT_EQ(leadingNumber(row.text), row.leading);
        }
        EXPECT_EQ(isNumeric(row.text), row.numeric);
    }
    EXPECT_EQ(hexText(-1), "FFFF");
    EXPECT_EQ(hexText(10, 3), "00A");
    EXPECT_EQ(numberToText(-3) + numberToText(0), "-3 0");
    EXPECT_EQ(attempt([] { return toInt16(32768); }), "Overflow");
    EXPECT_EQ(doubleText(3.3 / 1023 * 341), "1.1");
    EXPECT_EQ(throughText(0.1 + 0.2), 0.3);
}

TEST(Text, FormatPatterns) {
    using Row = std::tuple<double, const char*, const char*>;
    for (const auto& [value, pattern, text] :
         {Row{0, "##.####", "."}, Row{0.5, "##.####", ".5"}, Row{123, "##.####", "123."},
          Row{0, "#0.000", "0.000"}, Row{5.00049, "#0.000", "5.000"}, Row{5.0005, "#0.000", "5.001"},
          Row{-0.0004, "#0.000", "0.000"}, Row{-0.0005, "#0.000", "-0.001"}, Row{1.005, "#0.00", "1.01"},
          Row{3.14159, "00.0000", "03.1416"}, Row{99.99995, "00.0000", "100.0000"}, Row{2.7, "0.0", "2.7"},
          Row{7, "0", "7"}, Row{-2500, "####0.00", "-2500.00"}})
        EXPECT_EQ(formatNumber(value, pattern), text) << value << " in " << pattern;
}

/// Against whole-number arithmetic on value = mantissa / 10^6.
RC_GTEST_PROP(Text, FormatRoundsHalfAwayFromZero, ()) {
    const auto mantissa = *rc::gen::inRange<std::int64_t>(-2'000'000'000, 2'000'000'000);
    const auto places = *rc::gen::inRange(1, 5);
    std::int64_t unit = 1'000'000;
    for (int i = 0; i < places; ++i)
        unit /= 10;
    const std::int64_t size = std::abs(mantissa);
    const std::int64_t rounded = size / unit + (size % unit * 2 >= unit ? 1 : 0);
    std::string digits = std::to_string(rounded);
    digits.insert(0, digits.size() <= static_cast<std::size_t>(places) ? places + 1 - digits.size() : 0, '0');
    digits.insert(digits.size() - places, ".");
    const std::string pattern = "#0." + std::string(places, '0');
    RC_ASSERT(formatNumber(static_cast<double>(mantissa) / 1e6, pattern) ==
              (mantissa < 0 && rounded > 0 ? "-" : "") + digits);
}

class EventLoopTest : public ::testing::Test {
  protected:
    VirtualClock clock;
    EventLoop loop{clock};
    std::vector<std::string> told;
    std::string order;
    void SetUp() override {
        loop.setFaultHandler([this](const std::string& fault) { told.push_back(fault); });
    }
    std::function<void()> note(char c) {
        return [this, c] { order += c; };
    }
};

TEST_F(EventLoopTest, EventsRunByDueTimeThenByPosting) {
    loop.postAfter(Milliseconds(20), note('d'));
    loop.post(note('a'));
    loop.postAfter(Milliseconds(5), note('c'));
    loop.post(note('b'));
    loop.cancel(loop.post(note('x')));
    EXPECT_EQ(loop.untilNextDue(), Milliseconds(0));
    loop.runDue();
    EXPECT_EQ(order, "ab");
    EXPECT_EQ(loop.untilNextDue(), Milliseconds(5));
    advance(loop, clock, Milliseconds(19));
    EXPECT_EQ(order, "abc");
    clock.sleep(Milliseconds(100));
    loop.post(note('e')); // posted later, due earlier than "now", but after the one that is overdue
    loop.runDue();
    EXPECT_EQ(order, "abcde");
    EXPECT_EQ(loop.untilNextDue(), std::nullopt);
}

TEST_F(EventLoopTest, NothingIsDeliveredAheadOfAWait) {
    loop.setHostWait([this](auto) { order += 'w'; });
    loop.setHostPump(note('p'));
    loop.post(note('a'));
    loop.waitForEvents();
    loop.waitForEvents();
    EXPECT_EQ(order, "apwp");
}

TEST_F(EventLoopTest, ActionsNestWhereTheyLetEventsRun) {
    std::function<void()> again = [&] {
        order += 'p';
        loop.post(again);
    };
    const Outcome outcome = loop.deliver([&] {
        order += '(';
        loop.post([&] {
            order += '[';
            EXPECT_EQ(loop.depth(), 2);
            loop.letEventsRun();
            order += ']';
        });
        loop.post(note('b'));
        loop.letEventsRun();
        order += ')';
        loop.post(again); // runs once each time: it cannot keep the loop for ever
        loop.letEventsRun();
        loop.letEventsRun();
    });
    EXPECT_TRUE(outcome.done());
    EXPECT_EQ(order, "([b])pp");
    EXPECT_EQ(loop.depth(), 0);
}

TEST_F(EventLoopTest, NothingRunsWhileAnExchangeIsInFlight) {
    {
        const EventLoop::Hold exchange(loop);
        EXPECT_EQ(loop.deliver(note('g')).kind, Outcome::Kind::Held);
        loop.post(note('t'));
        loop.letEventsRun();
        loop.runDue();
        EXPECT_EQ(order, "");
    }
    loop.letEventsRun();
    EXPECT_EQ(order, "gt");
}

TEST_F(EventLoopTest, FaultIsToldOnceAndDropsItsActionAlone) {
    loop.post([&] {
        order += 'i';
        throw subscriptOutOfRange();
    });
    const Outcome outcome = loop.deliver([&] {
        loop.letEventsRun();
        order += 'o';
    });
    EXPECT_TRUE(outcome.done());
    EXPECT_EQ(order, "io");
    EXPECT_THAT(told, ElementsAre("Subscript out of range"));
    EXPECT_EQ(loop.deliver([] { throw overflow(); }).fault, "Overflow");
    EXPECT_EQ(told.size(), 2U);
    loop.setFaultHandler([](const std::string&) { throw overflow(); });
    EXPECT_EQ(loop.deliver([] { throw divisionByZero(); }).fault, "Division by zero");
}

TEST_F(EventLoopTest, EndOfTheProgramUnwindsEveryAction) {
    int ends = 0;
    loop.setEndHandler([&ends] { ++ends; });
    auto kept = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = kept;
    loop.post([&] {
        loop.deliver([&] { loop.endProgram(); }); // deep inside, behind a dispatcher of its own
        order += 'x';
        loop.letEventsRun();
        order += 'y';
    });
    loop.postAfter(Milliseconds(1), note('z'));
    const Outcome outcome = loop.deliver([&] {
        loop.retire(std::exchange(kept, nullptr));
        try {
            loop.letEventsRun();
        } catch (const std::exception&) {
            order += 'c'; // no error path may swallow it
        }
        order += 'o';
    });
    EXPECT_EQ(outcome.kind, Outcome::Kind::Ended);
    EXPECT_EQ(order, "x");
    EXPECT_EQ(ends, 1);
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(loop.ended());
    EXPECT_EQ(loop.deliver(note('n')).kind, Outcome::Kind::Ended);
    advance(loop, clock, Milliseconds(10));
    EXPECT_EQ(order, "x");
    EXPECT_THROW(loop.letEventsRun(), ProgramEnded);
    EXPECT_THAT(told, IsEmpty());
}

TEST(DelaySeconds, KeepsEventsRunningAndPassesMidnight) {
    for (const WallTime& start :
         {WallTime{2020, 1, 1, 12, 0, 0, 0}, WallTime{2020, 12, 31, 23, 59, 59, 900}}) {
        VirtualClock clock(start);
        EventLoop loop(clock);
        Milliseconds seen{0};
        loop.postAfter(Milliseconds(200), [&] { seen = clock.now(); });
        delaySeconds(loop, 0.5);
        EXPECT_GE(clock.now(), Milliseconds(500));
        EXPECT_LE(clock.now(), Milliseconds(504));
        EXPECT_GE(seen, Milliseconds(200));
        EXPECT_LE(seen, Milliseconds(204));
        const auto before = clock.now();
        delaySeconds(loop, 0);
        EXPECT_EQ(clock.now(), before);
    }
    VirtualClock clock({2020, 12, 31, 23, 59, 59, 900});
    clock.sleep(Milliseconds(150));
    EXPECT_EQ(clock.wallTime(), (WallTime{2021, 1, 1, 0, 0, 0, 50}));
}

} // namespace
} // namespace vrk
