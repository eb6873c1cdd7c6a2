#include "panels/discrete/frmVRK_PB1.h"

#include "platform/runtime/text.h"

#include <algorithm>

namespace vrk {

namespace {

std::vector<OutputPin> pinRows() {
    constexpr int kCs1 = 6, kStorePin = 7, kMutePin = 2, kUpPin = 9, kDownPin = 10;
    return {{"/CS1", kCs1, kCs1},
            {"/STORE", kStorePin, kStorePin},
            {"/MUTE", kMutePin, kMutePin},
            {"/UP", kUpPin, kUpPin},
            {"/DOWN", kDownPin, kDownPin}};
}

constexpr int kFirstWiperRow = 6; ///< VIN0 on the channel list
constexpr std::array<int, 3> kHolds = {1100, 1100, 5};

} // namespace

frmVRK_PB1::frmVRK_PB1(PanelContext& panelContext, BenchServices& panelServices, PinPanelState& panelState)
    : PinPanel(panelContext, "frmVRK_PB1", "VRK Push Button Evaluation", panelServices, panelState,
               pinRows()) {
    cmdIncr.setCaptions({"Up", "Down"});
    for (auto& field : txtIncr)
        field->setText("10");
    txtDelay.setText("50");
    txtDelay.setCaption("Delay in mSec ");
    ChlAutoCS.setCaptions({"CS before Inc/Dec", "Toggle Store"});
    ChlAutoCS[1].setToolTip("If checked, Store signal is toggled at end of Inc / Dec");
    blAutoStore.setCaption("No Store after Inc / Dec");
    cmdAbortIncr.setCaption("Abort ");
    cmdAbortIncr.setEnabled(false);
    cmdSequence.setCaptions({"Up", "Down", "Toggle Store", "Enable Shutdown", "Release Shutdown"});
    for (auto& field : txtPressAndHold)
        field->setText(decimalText(kHolds.at(static_cast<std::size_t>(field->index()))));
    cmdAlloutsHigh.setCaption("Set All High");
    OptCS.setCaptions({"SIngle", "Dual"});
    for (auto& option : OptCS)
        option->join(csGroup_);
    OptCS[0].showSelected();
    lblADChan.setCaptions({"Vin0", "Vin1", "Vin2", "Vin3"});
    for (int row = 0; row < lblWiperVolts.count(); ++row) {
        txtFactor[row].setText("2.0");
        txtFactor[row].setCaption("AD Factor");
        cmdSampleWiper[row].setCaption("Sample");
        lblWiperVolts[row].setCaption("0.000");
    }
    cmdMMenu.setCaption("Return to Main Menu");
    wireClick(cmdIncr, &frmVRK_PB1::cmdIncr_Click);
    wireClick(cmdSequence, &frmVRK_PB1::cmdSequence_Click);
    wireClick(cmdAlloutsHigh, &frmVRK_PB1::cmdAlloutsHigh_Click);
    wireClick(cmdSampleWiper, &frmVRK_PB1::cmdSampleWiper_Click);
    wireClick(ChlAutoCS, &frmVRK_PB1::ChlAutoCS_Click);
    wireClick(OptCS, &frmVRK_PB1::OptCS_Click);
    wireClick(cmdAbortIncr, &frmVRK_PB1::cmdAbortIncr_Click);
}

void frmVRK_PB1::Form_Load() {
    becomeActive();
    state() = {};
    services().motherboard.initSupplyDefaults();
    lblUserVCC.setVisible(false);
    txtUserVCC.setVisible(false);
    cmdAlloutsHigh_Click();
    pump();
}

void frmVRK_PB1::voltsStale(const std::string& cause) {
    for (auto& volts : lblWiperVolts)
        volts->markStale(cause);
}

std::vector<Control*> frmVRK_PB1::resting() {
    std::vector<Control*> all{&cmdAlloutsHigh};
    for (auto* buttons : {&cmdSequence, &cmdIncr})
        for (auto& button : *buttons)
            all.push_back(button.get());
    return all;
}

std::array<Milliseconds, 3> frmVRK_PB1::holds() {
    std::array<Milliseconds, 3> times{};
    for (std::size_t hold = 0; hold < times.size(); ++hold)
        times.at(hold) =
            Milliseconds{std::max(0, countOf(txtPressAndHold[static_cast<int>(hold)], kHolds.at(hold)))};
    return times;
}

void frmVRK_PB1::press(int bit, Milliseconds hold) {
    setBit(bit, false);
    waitLive(hold);
    setBit(bit, true);
    waitLive(hold);
}

void frmVRK_PB1::cmdIncr_Click(int index) {
    Button& pressed = cmdIncr[index];
    if (!requireVcc())
        return;
    const PinsInHand inHand(*this);
    // Ahead of the first edge: an entry beyond all bounds must not leave the part selected.
    const Milliseconds period{std::max(0, countOf(txtDelay, 0))};
    const int count = countOf(txtIncr[index], 1);
    DisabledWhile busy(resting());
    state().IncrAbort = false;
    pump();
    if (ChlAutoCS[0].checked())
        setBit(kCs, false);
    cmdAbortIncr.setEnabled(true);
    const OnScopeExit abortOff([this] { cmdAbortIncr.setEnabled(false); });
    Run run(*this, pressed, pressed.caption());
    {
        const Batch batch(services().run);
        writePorts();
        waitLive(period);
    }
    int done = 0;
    for (; done < count && !run.stopped(); ++done) {
        press(index == 0 ? kUp : kDown, period);
        run.progress(done + 1, count);
    }
    if (ChlAutoCS[1].checked())
        press(kStore, period);
    cmdAbortIncr.setEnabled(false);
    busy.release();
    const bool whole = run.whole();
    cmdSampleWiper_Click(0);
    pump();
    run.tellEnd(decimalText(done) + (done == 1 ? " press" : " presses"), whole, lblWiperVolts[0]);
}

void frmVRK_PB1::cmdAbortIncr_Click() {
    abortRun();
}

void frmVRK_PB1::cmdSequence_Click(int index) {
    Button& pressed = cmdSequence[index];
    RunState& run = services().run;
    run.PinBatch = false;
    (void)requireVcc(); // the sequence runs all the same
    const PinsInHand inHand(*this);
    const auto [up, down, store] = holds();
    const DisabledWhile busy(resting());
    const Edges edges(link());
    state().IncrAbort = false;
    // A hold that is long by mistake ends with an abort: the button is let go then.
    const Activity activity(context().activities, pressed.caption(), [this] { state().IncrAbort = true; });
    const auto pressBoth = [this, &run](bool high) {
        {
            const Batch batch(run);
            setBit(kStore, true);
            setBit(kUp, high);
        }
        // Both buttons reach the part in one write, where the last bit did not change as well.
        if (ChOut[kDown].checked() != high) {
            setBit(kDown, high);
        } else {
            writePorts();
            pump();
        }
    };
    switch (index) {
    case 0:
        press(kUp, up);
        break;
    case 1:
        press(kDown, down);
        break;
    case 2:
        press(kStore, store);
        break;
    default:
        pressBoth(index == 4);
        break;
    }
    const bool aborted = state().IncrAbort;
    const bool powered = services().vccOn(); // it may have gone off under a hold
    tell(powered && !aborted && edges.whole(), pressed.caption() + (aborted ? " aborted" : " done"),
         !powered        ? "without VCC"
         : edges.whole() ? ""
                         : "edges may be missing",
         &pressed);
}

void frmVRK_PB1::cmdAlloutsHigh_Click() {
    const Batch batch(services().run);
    for (int bit = 0; bit < ChOut.count(); ++bit) {
        setBit(bit, true);
        ShpOut[bit].setColour(Colour::LightRed);
    }
    // The load finds the boxes as they were shown last: the image must follow where no box changed.
    for (const OutputPin& row : pins())
        board().setPin(row.pin, 1);
    writePorts();
}

void frmVRK_PB1::cmdSampleWiper_Click(int index) {
    DisabledWhile busy({&cmdSampleWiper[index]});
    sampleInto(lblWiperVolts[index], kFirstWiperRow + index);
}

void frmVRK_PB1::ChlAutoCS_Click(int /*index*/) {
    blAutoStore.setCaption(ChlAutoCS[1].checked() ? "Store after Inc / Dec" : "No Store after Inc / Dec");
}

void frmVRK_PB1::OptCS_Click(int index) {
    state().UDDevice = index + 1;
    {
        const Batch batch(services().run);
        setBit(kCs, true);
    }
    setBit(kStore, true);
    // With two parts the line of /STORE is the second one's chip select.
    setBit(state().UDDevice == 1 ? kCs : kStore, false);
}

} // namespace vrk
