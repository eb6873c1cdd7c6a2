#include "apps/vrkctl/Session.h"
#include "apps/vrkctl/Terminal.h"

#include <array>
#include <gtest/gtest.h>

namespace vrk {
namespace {

using namespace std::chrono_literals;

/// A command's session on simulated boards, its part under power and set to 7F in its volatile register.
class LinkWaitTest : public ::testing::Test {
  protected:
    explicit LinkWaitTest(int board = 0, double wait = 60) {
        Options options;
        options.simulate = "KV4071";
        options.board = board;
        options.linkWait = wait;
        session_.emplace(options, dialogs_, DefaultTime::VirtualIfPossible);
        bench().start();
        bench().frmStartup->cboVRKSelect.userSelect(frmStartup::kI2C);
        if (board > 0)
            bench().frmMainF340->cboEVBinstance.userSelect(board);
        bench().frmVRK_User1->OptVCC[0].userClick();
        EXPECT_TRUE(write(2, 0xC0) && write(0, 0x7F));
    }

    Bench& bench() { return session_->bench(); }
    sim::SimulatedBus& bus() { return *session_->simulated(); }
    Milliseconds now() { return session_->virtualClock()->now(); }
    bool ended() { return session_->events().ended(); }
    void in(Milliseconds delay, std::function<void()> what) {
        session_->events().postAfter(delay, std::move(what));
    }
    /// \return true if the part took it.
    bool write(std::uint8_t reg, std::uint8_t value) {
        int status = 0;
        session_->events().deliver(
            [&] { status = bench().link().writeI2C(0x50, std::array{value}, std::array{reg}, 1); });
        return status == kLinkGood;
    }

    TerminalDialogs dialogs_;
    std::optional<Session> session_;
};

TEST_F(LinkWaitTest, ABoardThatComesBackIsGoneOnWith) {
    bus().unplug(0);
    in(30s, [this] { bus().plug(0); });
    const Milliseconds began = now();
    EXPECT_TRUE(write(1, 0x55));
    EXPECT_LT(now() - began, 35s);
    const auto state = bus().state(0);
    EXPECT_GT(state.vcc, 4.8) << "the level that was chosen, not that of the board's power-up";
    EXPECT_EQ(state.part->wipers.front(), 0x40) << "volatile";
    EXPECT_EQ(state.part->registers.at("01"), 0x55);

    // Each loss has the whole time; with VCC off it stays off.
    bench().frmVRK_User1->OptVCC[1].userClick();
    bus().unplug(0);
    in(50s, [this] { bus().plug(0); });
    EXPECT_FALSE(write(1, 0x66));
    EXPECT_FALSE(ended());
    EXPECT_EQ(bus().state(0).vcc, 0);
}

TEST_F(LinkWaitTest, OneThatDoesNotEndsTheCommand) {
    bus().unplug(0);
    const Milliseconds began = now();
    EXPECT_FALSE(write(1, 0x55));
    EXPECT_TRUE(ended());
    EXPECT_EQ(now() - began, 60s);
}

TEST_F(LinkWaitTest, NeitherDoesOneThatAnswersAllButWhatItIsWantedFor) {
    bus().fault({.kind = sim::FaultKind::NoReply, .times = 1'000'000, .command = 6});
    const Milliseconds began = now();
    EXPECT_FALSE(write(1, 0x55));
    EXPECT_TRUE(ended());
    EXPECT_LT(now() - began, 80s);
}

TEST_F(LinkWaitTest, ALossWhoseRequestIsNotSentAgainTakesNothingFromALaterOne) {
    bus().fault({.kind = sim::FaultKind::NoReply, .command = 9});
    bench().frmVRK_User1->cmdUpdateVCC.userClick();
    session_->virtualClock()->sleep(100s);
    bus().unplug(0);
    in(30s, [this] { bus().plug(0); });
    EXPECT_TRUE(write(1, 0x55));
}

struct NoWaitTest : LinkWaitTest {
    NoWaitTest() : LinkWaitTest(0, 0) {}
};

TEST_F(NoWaitTest, IsGivenUpAtOnce) {
    bus().unplug(0);
    const Milliseconds began = now();
    EXPECT_FALSE(write(1, 0x55));
    EXPECT_TRUE(ended());
    EXPECT_LT(now() - began, 1s);
}

struct SecondBoardTest : LinkWaitTest {
    SecondBoardTest() : LinkWaitTest(1) {}
};

TEST_F(SecondBoardTest, IsChosenAgain) {
    bus().unplug(1);
    in(5s, [this] { bus().plug(1); });
    EXPECT_TRUE(write(1, 0x55));
    EXPECT_EQ(bus().state(1).part->registers.at("01"), 0x55);
    EXPECT_NE(bus().state(0).part->registers.at("01"), 0x55);
    EXPECT_EQ(bus().state(0).vcc, 0);
}

TEST(ExitCodes, OneOfSeveralCounts) {
    const ExitCode order[] = {ExitCode::Done,     ExitCode::CheckFailed, ExitCode::File,
                              ExitCode::LinkLost, ExitCode::ReaderGone,  ExitCode::Interrupted};
    for (const ExitCode* one = order; one + 1 < std::end(order); ++one)
        for (const ExitCode* other = one + 1; other < std::end(order); ++other) {
            EXPECT_EQ(heavier(*one, *other), *other);
            EXPECT_EQ(heavier(*other, *one), *other);
        }
}

} // namespace
} // namespace vrk
