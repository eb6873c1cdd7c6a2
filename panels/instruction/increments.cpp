#include "panels/WiperPanel.h"
#include "panels/instruction/InstructionPanel.h"
#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {
enum Direction : int { kUp = 0, kDown = 1, kTerminate = 2 };
constexpr Milliseconds kPinsSettle{20};
constexpr Milliseconds kShowEnd{750};
constexpr const char* kPortSilent = "the board did not say how port P0 stands";
/// A part that was without VCC hears no further clocks as steps.
constexpr const char* kNoVcc = "VCC has gone meanwhile";
constexpr const char* kNeverVcc = "VCC was off when they began: the part hears no step";
constexpr const char* kPinsKept = "the board did not take the bus off its pins";
constexpr const char* kEdgeLost = "the board did not take an edge of the bus lines";
} // namespace

void InstructionPanel::wireIncrements() {
    FrIncrDec.setCaption("Increment / Decrement");
    FrIncrDec.setVisible(false);
    cmdIncrWip.setCaptions({"Up", "Down", "Terminate"});
    cmdIncrWip[kUp].setToolTip("Click to increment selected wiper (WCR) up");
    cmdIncrWip[kDown].setToolTip("Click to decrement selected wiper (WCR) down");
    cmdIncrWip[kTerminate].setToolTip("Exit Increment / Decrement Sequence Mode");
    lblPotVolts.setCaption("0.000");
    lvlPotN.setCaption("POT 0 Volts");
    for (Control* control : std::initializer_list<Control*>{&cmdIncrWip[kUp], &cmdIncrWip[kDown],
                                                            &cmdIncrWip[kTerminate], &lblPotVolts, &lvlPotN})
        control->setContainer(FrIncrDec);
    wireClick(cmdIncrWip, &InstructionPanel::cmdIncrWip_Click);
}

/// The registers and options that rest while the bus has no pins.
void InstructionPanel::freeControls(bool free) {
    for (int pot = 0; pot < kPots; ++pot)
        for (Control* control : std::initializer_list<Control*>{&cmdWrWCR[pot], &cmdRdWCR[pot]})
            control->setEnabled(free);
    for (int index = 0; index < txtWrData.count(); ++index)
        for (Control* control : std::initializer_list<Control*>{&cmdRDData[index], &cdmWrData[index],
                                                                &txtWrData[index], &lblRdData[index]})
            control->setEnabled(free);
    for (auto& option : OptInstruction)
        option->setEnabled(free);
    for (auto* group : {&OptWiper, &OptRegSel})
        for (auto& option : *group)
            option->setEnabled(free);
}

void InstructionPanel::beginIncrements() {
    const int pot = uses_.fields.potField;
    Lamp& written = ShpWrWCR[pot];
    WiperPanel& device = companion().devicePanel();
    steppedPot_ = pot;
    stepping_ = stepUnderWay_ = true;
    powered_ = uses_.services.vccOn();
    endWanted_ = false;
    activity_ = std::make_unique<Activity>(context().activities, "Increments of pot " + decimalText(pot),
                                           [this] { abortIncrements(); });
    OnScopeExit failed([this] { leaveIncrements(); });
    written.setColour(Colour::LightBlue);
    entryBefore_ = txtWXWcr[pot].text();
    txtWXWcr[pot].setText("^v");
    lvlPotN.setCaption("Pot " + numberToText(pot) + " Volts");
    for (auto& block : FrVRK)
        block->setVisible(false);
    freeControls(false);
    device.setEnabled(false);
    refreshEnabled();
    FrVRK[pot].setVisible(true);
    samplePot();
    samplePot();
    if (!stepping_)
        return; // the panel has gone meanwhile: nobody would give the pins back
    pinsTaken_ = true;
    const bool taken = steps_.takePins();
    FrIncrDec.setVisible(true);
    FrVal.setVisible(false);
    wait(kPinsSettle);
    pump();
    if (!taken) {
        incrementsLost(kPinsKept);
        return;
    }
    if (!steps_.readPort()) {
        incrementsLost(kPortSilent);
        return;
    }
    if (!stepping_)
        return;
    if (partLost()) {
        incrementsLost(kNoVcc);
        return;
    }
    steps_.prepare();
    forgetTransfers([pot](const Transfer& earlier) { return earlier.place.pot == pot; });
    showMark(lblRDWcr[pot], "--", "stepped, not read");
    ShpRdWCR[pot].setColour(Colour::Black);
    linesDriven_ = true;
    if (!steps_.begin(pot)) {
        incrementsLost(kEdgeLost);
        return;
    }
    pump();
    failed.dismiss();
    tell(powered_, "Pot " + decimalText(pot) + " is stepped by hand",
         powered_ ? "the bus rests until Terminate" : kNeverVcc, &cmdIncrWip[kTerminate]);
    stepUnderWay_ = false;
    if (endWanted_)
        cmdIncrWip_Click(kTerminate);
    else
        refreshEnabled();
}

void InstructionPanel::samplePot() {
    WiperPanel& device = companion().devicePanel();
    device.cmdSampleWiper_Click(steppedPot_);
    pump();
    const Reading& volts = device.lblWiperVolts[steppedPot_];
    lblPotVolts.setCaption(volts.caption());
    if (volts.freshness()->state == Freshness::State::Fresh)
        lblPotVolts.markRead();
    else
        lblPotVolts.markStale(volts.freshness()->cause, volts.freshness()->failed);
}

void InstructionPanel::cmdIncrWip_Click(int index) {
    if (index < kUp || index > kTerminate)
        throw subscriptOutOfRange();
    if (!stepping_ || stepUnderWay_)
        return;
    stepUnderWay_ = true;
    refreshEnabled();
    const OnScopeExit done([this] {
        stepUnderWay_ = false;
        refreshEnabled();
    });
    if (!steps_.readPort() && index != kTerminate) {
        incrementsLost(kPortSilent);
        return;
    }
    Lamp& written = ShpWrWCR[steppedPot_];
    written.setColour(written.colour() == Colour::LightBlue ? Colour::Blue : Colour::LightBlue);
    pump();
    if (index != kTerminate)
        stepPot(index == kUp);
    if (index == kTerminate || endWanted_)
        terminate();
}

void InstructionPanel::stepPot(bool up) {
    if (!stepping_)
        return; // the panel has gone meanwhile
    txtWXWcr[steppedPot_].setText(up ? "^1" : "1v");
    const bool taken = steps_.step(up);
    companion().wipersMoved();
    if (!taken) {
        incrementsLost(kEdgeLost);
        return;
    }
    samplePot();
    if (partLost()) {
        incrementsLost(kNoVcc);
        return;
    }
    tell(powered_,
         "Pot " + decimalText(steppedPot_) + (powered_ ? "" : " not") +
             (up ? " stepped up" : " stepped down"),
         powered_ ? lblPotVolts.caption() + " V" : kNeverVcc, &lblPotVolts);
}

void InstructionPanel::terminate() {
    if (!stepping_)
        return;
    const OnScopeExit left([this] { leaveIncrements(); });
    const int pot = steppedPot_;
    (void)steps_.readPort(); // else the lines go by what was written last
    linesDriven_ = false;
    steps_.end([this] { pump(); });
    steps_.givePinsBack();
    pinsTaken_ = false;
    cmdRdWCR_Click(pot);
    if (lblRDWcr[pot].freshness()->state == Freshness::State::Fresh) {
        txtWXWcr[pot].setText(lblRDWcr[pot].caption());
        entryBefore_.reset();
    }
    ShpWrWCR[pot].setColour(Colour::LightBlue);
    ShpRdWCR[pot].setColour(Colour::Yellow);
    pump();
    wait(kShowEnd);
}

void InstructionPanel::leaveIncrements() {
    if (!std::exchange(stepping_, false))
        return;
    if (std::exchange(linesDriven_, false))
        steps_.end();
    if (std::exchange(pinsTaken_, false))
        steps_.givePinsBack();
    stepUnderWay_ = false;
    activity_.reset();
    // The marks are no value that could be written, nor is what a failed read back has left.
    if (const auto entry = std::exchange(entryBefore_, std::nullopt))
        txtWXWcr[steppedPot_].setText(*entry);
    if (Lamp& written = ShpWrWCR[steppedPot_]; written.colour() == Colour::Blue)
        written.setColour(Colour::LightBlue); // dark blue is the blink of the steps alone
    FrVal.setVisible(true);
    FrIncrDec.setVisible(false);
    for (auto& block : FrVRK)
        block->setVisible(true);
    // It may have gone first: it must not be loaded anew for this.
    if (InstructionCompanion* device = loadedCompanion())
        device->devicePanel().setEnabled(true);
    freeControls(true);
    refreshEnabled();
}

void InstructionPanel::incrementsLost(const std::string& why) {
    if (!stepping_)
        return; // the panel has gone meanwhile
    leaveIncrements();
    lblRDWcr[steppedPot_].markStale("its increments broke off"); // no read has failed
    tell(false, "Increments of pot " + decimalText(steppedPot_) + " ended", why, &txtWXWcr[steppedPot_]);
}

void InstructionPanel::abortIncrements() {
    endWanted_ = true;
    if (stepUnderWay_)
        return; // its end looks at the wish
    events().post([this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired())
            cmdIncrWip_Click(kTerminate);
    });
}

void InstructionPanel::Form_Unload() {
    unloaded_ = true;
    // The bus must not stay without its pins when nobody is left to give them back.
    leaveIncrements();
}

} // namespace vrk
