#include "platform/hid/PatientHost.h"
#include "tests/platform/hid/FakeHost.h"

#include <gmock/gmock.h>

namespace vrk::hid {
namespace {

using namespace std::chrono_literals;

class Patient : public testing::Test {
  protected:
    Patient() { fake_.devices = {{1, 2, "a"}}; }

    RealClock clock_;
    EventLoop events_{clock_};
    FakeHost fake_;
    std::function<void()> paint_ = [] {};
    int paints_ = 0;
    PatientHost host_{fake_, events_, [this] {
                          ++paints_;
                          paint_();
                      }};
    Report report_{};
};

TEST_F(Patient, SlowCallsPaintAndHoldEveryAction) {
    int actions = 0;
    const std::function<void()> calls[] = {
        [this] { host_.list(); },
        [this] { host_.open("a"); },
        [this] { host_.write(1, report_); },
        [this] { host_.read(1, report_, 6000ms); },
    };
    fake_.onCall = [] { std::this_thread::sleep_for(200ms); };
    paint_ = [&] {
        EXPECT_TRUE(events_.held());
        EXPECT_EQ(events_.deliver([&] { ++actions; }).kind, Outcome::Kind::Held);
        throw std::runtime_error("a painter that fails");
    };
    for (const auto& call : calls) {
        paints_ = actions = 0;
        call();
        EXPECT_GE(paints_, 2);
        EXPECT_LE(paints_, 100) << "not a busy loop";
        EXPECT_EQ(actions, 0);
        EXPECT_FALSE(events_.held());
        events_.runDue();
        EXPECT_EQ(actions, paints_) << "held back, not lost";
    }
}

TEST_F(Patient, CallsFromPaintingAreRefusedAndClosedAfterwards) {
    fake_.onCall = [] { std::this_thread::sleep_for(250ms); };
    fake_.replies = {reportOf({1}), reportOf({2})};
    paint_ = [&] {
        Report other{};
        EXPECT_TRUE(host_.list().empty());
        EXPECT_EQ(host_.open("a"), kNoHandle);
        EXPECT_FALSE(host_.write(1, other));
        EXPECT_EQ(host_.read(1, other, 1ms), ReadResult::TimedOut);
        EXPECT_NE(host_.lastError(), fake_.lastError());
        if (paints_ == 1)
            host_.close(7);
        EXPECT_TRUE(fake_.closed.empty());
    };
    EXPECT_EQ(host_.read(1, report_, 6000ms), ReadResult::Arrived);
    EXPECT_GE(paints_, 1);
    EXPECT_EQ(report_, reportOf({1}));
    EXPECT_THAT(fake_.closed, testing::ElementsAre(7));
    EXPECT_EQ(host_.lastError(), fake_.lastError());
}

} // namespace
} // namespace vrk::hid
