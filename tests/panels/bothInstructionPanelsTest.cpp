#include "tests/panels/InstructionPanelTest.h"

#include <random>

namespace vrk {
namespace {

using report::Command;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

INSTANTIATE_TEST_SUITE_P(Bus, BothInstructionPanels, ::testing::Values(Bus::I2C, Bus::SPI),
                         [](const auto& on) { return on.param == Bus::SPI ? "Spi" : "I2c"; });

TEST_P(BothInstructionPanels, ButtonsOfTheRegistersReachTheirOwnCells) {
    open();
    for (int index = 0; index < 16; ++index) {
        type(panel().txtWrData[index], hexText(index * 16 + 3));
        panel().cdmWrData[index].userClick();
        EXPECT_EQ(stored(index), index * 16 + 3);
        EXPECT_EQ(panel().ShpDataWr[index].colour(), Colour::LightGreen);
        panel().cmdRDData[index].userClick();
        EXPECT_EQ(panel().lblRdData[index].caption(), hexText(index * 16 + 3, 2));
        EXPECT_EQ(panel().ShpDataRd[index].colour(), Colour::LightGreen);
        EXPECT_EQ(stateOf(panel().lblRdData[index]), Freshness::State::Fresh);
    }
    for (int pot = 0; pot < 4; ++pot) {
        type(panel().txtWXWcr[pot], hexText(pot * 9 + 1, 2));
        panel().cmdWrWCR[pot].userClick();
        EXPECT_EQ(part().wipers.at(static_cast<std::size_t>(pot)), pot * 9 + 1);
        panel().cmdRdWCR[pot].userClick();
        panel().cmdRdWCR[pot].userClick();
        EXPECT_EQ(panel().ShpRdWCR[pot].colour(), Colour::Green);
        EXPECT_EQ(panel().ShpWrWCR[pot].colour(), Colour::LightGreen);
    }
    expectTruth();
    // What was written is read by the device panel, and stands at the wiper.
    device().cmdI2Read[0].userClick();
    EXPECT_EQ(device().lblPotReadhex[0].caption(), "01");
    EXPECT_EQ(stateOf(panel().lblRDWcr[0]), Freshness::State::Fresh);
    type(panel().txtWXWcr[3], "C0");
    panel().cmdWrWCR[3].userClick();
    EXPECT_NE(stateOf(device().lblPotReadhex[0]), Freshness::State::Fresh);
    device().cmdSampleWiper[3].userClick();
    EXPECT_NEAR(leadingNumber(device().lblWiperVolts[3].caption()), bus.state().vcc * 0xC0 / 256, kStep);
    device().CMDxMIT[0].userClick(); // the device panel's own write makes the readings old
    EXPECT_NE(stateOf(panel().lblRDWcr[0]), Freshness::State::Fresh);
    // A data register outlasts VCC and comes back; the readings do not.
    device().OptVCC[1].userClick();
    for (int cell = 0; cell < 20; ++cell)
        EXPECT_NE(stateOf(reading(cell)), Freshness::State::Fresh) << cell;
    device().OptVCC[0].userClick();
    panel().cmdRdWCR[1].userClick();
    EXPECT_EQ(panel().lblRDWcr[1].caption(), "43");
}

TEST_P(BothInstructionPanels, TransfersMarkSourceAndRecipientAndAreDrawnAsTheyWere) {
    open();
    send(4, 1, 2);
    EXPECT_EQ(panel().ShpRdWCR[1].colour(), Colour::LightBlue);
    EXPECT_EQ(panel().lblRDWcr[1].caption(), ">>");
    EXPECT_EQ(panel().ShpDataRd[6].colour(), Colour::Yellow);
    EXPECT_EQ(panel().ShpRdWCR[0].colour(), Colour::Black);
    send(5, 2, 0);
    EXPECT_EQ(panel().ShpRdWCR[2].colour(), Colour::Yellow);
    EXPECT_EQ(panel().lblRdData[8].caption(), "<<");
    EXPECT_EQ(panel().ShpDataRd[8].colour(), Colour::LightBlue);
    EXPECT_EQ(panel().ShpDataWr[8].colour(), Colour::Black);
    send(5, 2, 3);
    EXPECT_EQ(arrows(), "1.2>WCR WCR>2.0 WCR>2.3");
    panel().cdmWrData[8].userClick();
    EXPECT_EQ(arrows(), "1.2>WCR WCR>2.3");
    // The byte goes to pot 2, while the fields and the lamps are at pot 0.
    compose(0, 2);
    panel().OptInstruction[1].userClick();
    panel().OptInstruction[4].userClick();
    panel().cmdDoInstruction.userClick();
    EXPECT_EQ(panel().lblSet[4].caption(), "D2");
    EXPECT_EQ(panel().lblRDWcr[0].caption(), ">>");
    EXPECT_EQ(arrows(), "1.2>WCR 2.0>WCR");
    device().OptVCC[1].userClick();
    EXPECT_EQ(arrows(), "");
    answerAll(Choice::Retry);
    send(4, 3, 1); // marked as told, and nothing was moved
    dropAnswers();
    EXPECT_EQ(panel().lblRDWcr[3].caption() + arrows(), ">>");
    device().OptVCC[0].userClick();
    boxes();
    panel().cmdReadAll.userClick();
    const int stores = part().nonvolatileWrites;
    send(7, -1, 3);
    EXPECT_EQ(part().nonvolatileWrites, stores + 4);
    EXPECT_EQ(arrows(), "WCR>0.3 WCR>1.3 WCR>2.3 WCR>3.3");
    for (int pot = 0; pot < 4; ++pot) {
        EXPECT_EQ(panel().ShpRdWCR[pot].colour(), Colour::Yellow);
        EXPECT_EQ(panel().ShpDataRd[pot * 4 + 3].colour(), Colour::LightBlue);
        EXPECT_EQ(panel().lblRdData[pot * 4 + 3].caption(), "<<");
        EXPECT_EQ(panel().lblRdData[pot * 4 + 1].caption(), "80");
    }
    send(6, -1, 3);
    EXPECT_EQ(arrows(), "0.3>WCR 1.3>WCR 2.3>WCR 3.3>WCR");
    EXPECT_EQ(panel().lblRDWcr[3].caption(), ">>");
    EXPECT_EQ(panel().ShpDataRd[3].colour(), Colour::Yellow);
    panel().cmdSetWReqRd.userClick();
    EXPECT_EQ(panel().txtWXWcr[3].text(), ">>");
    EXPECT_EQ(panel().ShpDataWr[0].colour(), Colour::LightBlue);
    // A mark is no value: nothing goes out.
    wire.clear();
    EXPECT_EQ(panel().cmdWrWCR[3].userClick().kind, Outcome::Kind::Faulted);
    EXPECT_THAT(boxes(), ElementsAre("Type mismatch [OK]"));
    // Reset takes the choice and leaves the class: what is sent then is no instruction.
    panel().OptInstruction[2].userClick();
    panel().cmdResetInstruction.userClick();
    EXPECT_EQ(panel().lblSet[4].caption() + arrows(), "00");
    answerAll(Choice::Retry);
    panel().cmdDoInstruction.userClick();
    dropAnswers();
    EXPECT_NE(stateOf(panel().lblRdData[0]), Freshness::State::Fresh);
    EXPECT_EQ(bench.context().results.kept().back().text, "Instruction 00 failed");
    boxes();
    slot().unload();
    slot().show();
    panel().OptInstruction[0].userClick();
    EXPECT_EQ(panel().lblSet[4].caption(), "9--");
    wire.clear();
    EXPECT_EQ(panel().cmdDoInstruction.userClick().kind, Outcome::Kind::Faulted);
    EXPECT_THAT(boxes(), ElementsAre("Type mismatch [OK]"));
    EXPECT_THAT(sent(), IsEmpty());
    expectNothingLeftBehind();
}

TEST_P(BothInstructionPanels, AllRegistersAreFilledReadAndStopped) {
    open();
    panel().cmdFillRegs.userClick();
    EXPECT_EQ(part().wipers, (std::vector<int>{0xAA, 0xBB, 0xCC, 0xDD}));
    for (int index = 0; index < 16; ++index)
        EXPECT_EQ(stored(index), index);
    Milliseconds all{0};
    for (const Colour colour : {Colour::LightGreen, Colour::Green, Colour::LightGreen}) {
        const Milliseconds began = clock.now();
        panel().cmdReadAll.userClick();
        EXPECT_EQ(panel().lblRdData[11].caption(), "0B");
        for (int cell = 0; cell < 20; ++cell)
            EXPECT_EQ((cell < 4 ? panel().ShpRdWCR[cell] : panel().ShpDataRd[cell - 4]).colour(), colour);
        expectTruth();
        all = clock.now() - began;
    }
    // Its exchanges, one wait ahead of each read and one behind.
    const Milliseconds began = clock.now();
    panel().cmdRdWCR[0].userClick();
    EXPECT_LE(all, (clock.now() - began) * 20 * 102 / 100);
    // The user stops it in the middle; what he clicks meanwhile is refused, on the device panel too.
    const int stores = part().nonvolatileWrites;
    at(200, [this] {
        EXPECT_TRUE(panel().OptInstruction[3].userClick().refused());
        EXPECT_TRUE(panel().cdmWrData[0].userClick().refused());
        device().cmdStoreWCRs.userClick();
        EXPECT_EQ(bench.context().results.kept().back().text, "Store refused");
    });
    at(210, [this] { EXPECT_TRUE(bench.context().activities.abort()); });
    wire.clear();
    panel().cmdReadAll.userClick();
    const auto count = sent(spiBus() ? Command::SpiTransfer : Command::I2cTransfer).size();
    EXPECT_TRUE(count > 1 && count < 8) << count;
    EXPECT_FALSE(bench.context().results.kept().back().good);
    EXPECT_EQ(part().nonvolatileWrites, stores);
    expectNothingLeftBehind();
    at(200, [this] { slot().unload(); });
    panel().cmdReadAll.userClick();
    EXPECT_LT(sent(spiBus() ? Command::SpiTransfer : Command::I2cTransfer).size(), 8U);
}

TEST_P(BothInstructionPanels, IncrementsStopAtTheEndsOfTheWiper) {
    open();
    for (const int up : {0, 1}) {
        type(panel().txtWXWcr[1], up == 0 ? "FD" : "02");
        panel().cmdWrWCR[1].userClick();
        send(8, 1);
        for (int step = 0; step < 4; ++step)
            panel().cmdIncrWip[up].userClick();
        panel().cmdIncrWip[2].userClick();
        EXPECT_EQ(panel().lblRDWcr[1].caption(), up == 0 ? "FF" : "00");
        expectTruth();
    }
}

TEST_P(BothInstructionPanels, IncrementsMayBeAbortedAnywhere) {
    open();
    for (int ms = 0; ms < 700; ms += 35) {
        SCOPED_TRACE(ms);
        const int wiper = part().wipers[3];
        at(ms, [this] { EXPECT_TRUE(bench.context().activities.abort()); });
        send(8, 3);
        int stepped = 0;
        while (panel().stepping() && stepped < 5 && panel().cmdIncrWip[0].userClick().done())
            ++stepped;
        advance(events, clock, Milliseconds{1000});
        EXPECT_EQ(part().wipers[3], wiper + stepped);
        EXPECT_FALSE(panel().stepping());
        expectNothingLeftBehind();
        expectTruth();
    }
    // Closing the window leaves them; unloading the panel ends them.
    send(8, 0);
    slot().userClose();
    EXPECT_TRUE(panel().stepping() && !device().enabled());
    act([this] { device().cmdMMenu_Click(); });
    EXPECT_FALSE(slot().loaded());
    EXPECT_TRUE(device().enabled());
    EXPECT_EQ(bus.state().sfr.at("E1"), 0x06);
}

/// Whatever goes wrong: told, nothing left behind, and no cell says that it was read.
TEST_P(BothInstructionPanels, FailuresAreToldAndLeaveNothingBehind) {
    const int transfer = static_cast<int>(spiBus() ? Command::SpiTransfer : Command::I2cTransfer);
    const auto unplug = [this] { at(100, [this] { bus.unplug(0); }); };
    open();
    const struct {
        const char* what;
        std::function<void()> spoil;
        bool heard; ///< behind the dialog's Retry, where there is one
        const Button* notFor = nullptr;
    } cases[] = {
        {"VCC is off", [this] { device().OptVCC[1].userClick(); }, false},
        {"wrong address", [this] { type(device().txtDeviceAdr, "54"); }, false},
        {"no part", [this] { bus.socket(std::nullopt); }, false},
        // On I2C the transfer is repeated, on SPI each frame goes once.
        {"lost reply", [&] { fault(sim::FaultKind::NoReply, 1, transfer); }, !spiBus()},
        {"late reply", [&] { fault(sim::FaultKind::LateReply, 1, transfer, 6100); }, !spiBus()},
        {"not sent", [&] { fault(sim::FaultKind::WriteFails, 1, transfer); }, !spiBus()},
        // On I2C a read needs the port for the part's address; on SPI it touches no pin.
        {"port not read", [this] { fault(sim::FaultKind::NoReply, 1, 18); }, spiBus(), &panel().cmdFillRegs},
        {"unplugged", unplug, false, &panel().cmdRDData[5]}, // which is over before the plug is out
    };
    panel().cmdFillRegs.userClick();
    for (const auto& c : cases)
        for (Button* action : {&panel().cmdReadAll, &panel().cmdFillRegs, &panel().cmdRDData[5]}) {
            SCOPED_TRACE(c.what + (" " + action->name()));
            if (action == c.notFor)
                continue;
            restore();
            type(panel().txtWXWcr[0], "5A"); // what a fill does not write
            panel().cmdWrWCR[0].userClick();
            panel().cmdRdWCR[0].userClick();
            c.spoil();
            answer(Choice::Retry, [this] { bus.plug(0); }); // without power for its part
            answerAll(Choice::Retry);
            EXPECT_TRUE(action->userClick().done());
            dropAnswers();
            boxes();
            expectTruth();
            EXPECT_EQ(bench.context().results.kept().back().good, c.heard);
            expectNothingLeftBehind();
        }
}

TEST_P(BothInstructionPanels, IncrementsEndWithTheirPortAndWithTheirPart) {
    open();
    for (const int button : {0, 1, 2}) { // a lost port ends them, whatever the button
        restore();
        type(panel().txtWXWcr[1], "4B");
        send(8, 1);
        fault(sim::FaultKind::NoReply, 1, 18);
        answer(Choice::Retry);
        panel().cmdIncrWip[button].userClick();
        EXPECT_THAT(boxes(), ElementsAre("Please check USB connection.\r\ncheckStatus [Retry]"));
        EXPECT_FALSE(panel().stepping());
        EXPECT_EQ(panel().txtWXWcr[1].text(), button == 2 ? panel().lblRDWcr[1].caption() : "4B");
        EXPECT_EQ(panel().ShpWrWCR[1].colour(), Colour::LightBlue);
        expectNothingLeftBehind();
        expectTruth();
    }
    // An edge that the board does not take ends them too, as the part has heard something else; and so does
    // VCC.
    for (const bool edge : {true, false}) {
        restore();
        send(8, 1);
        at(1, [this, edge] {
            if (edge)
                fault(sim::FaultKind::WriteFails, 1, 18);
            else
                (void)board().OptVCC[1].userClick();
        });
        answer(Choice::Retry);
        panel().cmdIncrWip[0].userClick();
        EXPECT_FALSE(panel().stepping());
        EXPECT_FALSE(bench.context().results.kept().back().good);
        dropAnswers();
        boxes();
        expectNothingLeftBehind();
    }
    // Nor does a report that is lost on the way out leave the bus without its pins.
    for (int ms = 0; ms < 12; ++ms) {
        SCOPED_TRACE(ms);
        restore();
        send(8, 1);
        at(ms, [this] { fault(sim::FaultKind::WriteFails, 1, 18); });
        answerAll(Choice::Retry);
        panel().cmdIncrWip[2].userClick();
        advance(events, clock, Milliseconds{100}); // before the fault is due
        dropAnswers();
        boxes();
        expectNothingLeftBehind();
    }
    // Without VCC no step is taken for one.
    restore();
    device().OptVCC[1].userClick();
    type(panel().txtWXWcr[1], "4B");
    send(8, 1);
    panel().cmdIncrWip[0].userClick();
    EXPECT_EQ(bench.context().results.kept().back().text, "Pot 1 not stepped up");
    answerAll(Choice::Retry);
    panel().cmdIncrWip[2].userClick();
    EXPECT_EQ(panel().txtWXWcr[1].text(), "4B"); // nothing was read back that could be written
    dropAnswers();
    boxes();
    // The board comes back without power, before the begin (-1), ahead of a button and within a step (3).
    for (const int button : {-1, 0, 2, 3}) {
        SCOPED_TRACE(button);
        restore();
        if (button >= 0)
            send(8, 1);
        answer(Choice::Retry, [this] { bus.plug(0); });
        answerAll(Choice::Retry);
        if (button == 3)
            at(1, [this] { bus.unplug(0); });
        else
            bus.unplug(0);
        if (button >= 0)
            panel().cmdIncrWip[button % 3].userClick();
        else
            send(8, 1);
        dropAnswers();
        EXPECT_GE(boxes().size(), 1U);
        EXPECT_FALSE(panel().stepping());
        EXPECT_FALSE(bench.context().results.kept().back().good);
        expectNothingLeftBehind();
        expectTruth();
    }
}

/// Whatever the user does, a cell that says it was read holds what the part holds.
TEST_P(BothInstructionPanels, PageShowsThePartAfterTwoThousandRandomActions) {
    open();
    std::mt19937 random(4410);
    const auto below = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    for (int action = 0; action < 2000; ++action) {
        const int pot = below(4), cell = below(16), value = below(256);
        switch (below(12)) {
        case 0:
            panel().cmdRdWCR[pot].userClick();
            break;
        case 1:
            type(panel().txtWXWcr[pot], hexText(value, 2));
            panel().cmdWrWCR[pot].userClick();
            EXPECT_EQ(part().wipers[static_cast<std::size_t>(pot)], value);
            break;
        case 2:
        case 3:
            panel().cmdRDData[cell].userClick();
            break;
        case 4:
            type(panel().txtWrData[cell], hexText(value, 2));
            panel().cdmWrData[cell].userClick();
            EXPECT_EQ(stored(cell), value);
            break;
        case 5:
        case 6: // whatever is chosen, as it stands
            panel().OptInstruction[below(8)].userClick();
            panel().OptWiper[pot].userClick();
            panel().OptRegSel[below(4)].userClick();
            panel().cmdDoInstruction.userClick();
            break;
        case 7: // without choosing anew
            panel().OptInstruction[below(8)].userClick();
            panel().cmdDoInstruction.userClick();
            break;
        case 8: {
            send(8, pot);
            int expected = part().wipers[static_cast<std::size_t>(pot)];
            for (int step = below(4); step > 0; --step) {
                const int down = below(2);
                panel().cmdIncrWip[down].userClick();
                expected = std::clamp(expected + (down != 0 ? -1 : 1), 0, 255);
            }
            panel().cmdIncrWip[2].userClick();
            EXPECT_EQ(part().wipers[static_cast<std::size_t>(pot)], expected);
            break;
        }
        case 9:
            if (below(6) == 0) {
                device().OptVCC[1].userClick();
                device().OptVCC[0].userClick();
            }
            break;
        case 10:
            if (below(8) == 0)
                (below(2) == 0 ? panel().cmdReadAll : panel().cmdFillRegs).userClick();
            break;
        default:
            (below(2) == 0 ? panel().cmdSetWReqRd : panel().cmdResetInstruction).userClick();
        }
        boxes();
        wire.clear();
        expectTruth();
        ASSERT_FALSE(HasFailure()) << "action " << action;
    }
    expectNothingLeftBehind();
}

} // namespace
} // namespace vrk
