#include "panels/discrete/frmVRK_UD1.h"

#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {

/// The parts share /INC and U/D. With /INC the motherboard is told the click of its neighbour P0.5; the
/// value's own change has run the pin's click before.
std::vector<OutputPin> pinRows() {
    constexpr int kCs1 = 6, kCs2 = 7, kInc = 9, kIncClick = 5, kUpDown = 10;
    return {{"/CS1", kCs1, kCs1}, {"/INC", kInc, kIncClick}, {"U/D", kUpDown, kUpDown}, {"RSVD"},
            {"/CS2", kCs2, kCs2}, {"/INC", kInc, kIncClick}, {"U/D", kUpDown, kUpDown}, {"RSVD"}};
}

constexpr int kWiperRow = 6; ///< VIN0 on the channel list
constexpr Milliseconds kSequenceStep{250};

} // namespace

frmVRK_UD1::frmVRK_UD1(PanelContext& panelContext, BenchServices& panelServices, PinPanelState& panelState,
                       std::function<void()> showRunIn)
    : PinPanel(panelContext, "frmVRK_UD1", "VRK Up/Down Evaluation", panelServices, panelState, pinRows()),
      showRunIn_(std::move(showRunIn)) {
    cmdIncr.setCaptions({"Up", "Down", "Up", "Down"});
    for (auto& field : txtIncr)
        field->setText("10");
    for (auto& field : txtDelay) {
        field->setText("50");
        field->setCaption("Delay in mSec ");
    }
    ChlAutoCS.setCaptions({"/CS1 Set low before Inc/Dec", "/CS1  Set High after Inc/Dec (No Store)",
                           "/CS2 Set low before Inc/Dec", "/CS2  Set High after Inc/Dec (No Store)"});
    cmdAbortIncr.setCaptions({"Abort ", "Abort "});
    cmdSequence.setCaptions({"Store", "No Store", "Store", "No Store"});
    cmdAlloutsHigh.setCaptions({"Set All High", "Set All High"});
    OptChans.setCaptions({"Single Channel VRK", "Dual Channel VRK"});
    OptTaps.setCaptions({"512", "256", "128", "100", "64", "32", "16"});
    OptCS.setCaptions({"Single", "Dual"});
    for (auto& option : OptChans)
        option->join(chansGroup_);
    for (auto& option : OptTaps)
        option->join(tapsGroup_);
    for (auto& option : OptCS)
        option->join(csGroup_);
    OptChans[0].showSelected();
    OptCS[0].showSelected();
    OptTaps[3].showSelected();
    lblWiperVolts.setCaption("0.000");
    cmdSampleWiper.setCaption("Sample");
    txtFactor.setText("2.0");
    txtFactor.setCaption("AD Factor");
    cmdSampleBits.setCaption("Read Pins Back");
    cmdRunin.setCaption("Show Run In");
    cmdMMenu.setCaption("Return to Main Menu");
    for (int part = 0; part < kParts; ++part) {
        cmdAbortIncr[part].setEnabled(false);
        for (int bit = 0; bit < kBitsOfPart; ++bit) {
            ChOut[kBitsOfPart * part + bit].setContainer(FrmStaticIO[part]);
            ShpOut[kBitsOfPart * part + bit].setContainer(FrmStaticIO[part]);
        }
        cmdAlloutsHigh[part].setContainer(FrmStaticIO[part]);
        for (const int way : {0, 1}) {
            cmdIncr[2 * part + way].setContainer(FrmIncr[part]);
            txtIncr[2 * part + way].setContainer(FrmIncr[part]);
            ChlAutoCS[2 * part + way].setContainer(FrmIncr[part]);
            cmdSequence[2 * part + way].setContainer(FrmExit[part]);
        }
        txtDelay[part].setContainer(FrmIncr[part]);
        cmdAbortIncr[part].setContainer(FrmIncr[part]);
    }
    wireClick(cmdIncr, &frmVRK_UD1::cmdIncr_Click);
    wireClick(cmdAbortIncr, &frmVRK_UD1::cmdAbortIncr_Click);
    wireClick(cmdSequence, &frmVRK_UD1::cmdSequence_Click);
    wireClick(cmdAlloutsHigh, &frmVRK_UD1::cmdAlloutsHigh_Click);
    wireClick(cmdSampleBits, &frmVRK_UD1::cmdSampleBits_Click);
    wireClick(OptChans, &frmVRK_UD1::OptChans_Click);
    wireClick(OptCS, &frmVRK_UD1::OptCS_Click);
    wireClick(ChlAutoCS, &frmVRK_UD1::ChlAutoCS_Click);
    wireClick(cmdRunin, &frmVRK_UD1::cmdRunin_Click);
    cmdSampleWiper.onClick([this] { cmdSampleWiper_Click(0); });
    action("cmdSampleWiper_Click", &frmVRK_UD1::cmdSampleWiper_Click);
}

void frmVRK_UD1::Form_Load() {
    becomeActive();
    state() = {};
    OptChans_Click(0);
    services().motherboard.initSupplyDefaults();
    lblUserVCC.setVisible(false);
    txtUserVCC.setVisible(false);
    cmdAlloutsHigh_Click(0);
    cmdAlloutsHigh_Click(1);
    pump();
}

std::vector<Control*> frmVRK_UD1::resting() {
    std::vector<Control*> all;
    for (auto* buttons : {&cmdSequence, &cmdAlloutsHigh, &cmdIncr})
        for (auto& button : *buttons)
            all.push_back(button.get());
    return all;
}

void frmVRK_UD1::cmdIncr_Click(int index) {
    Button& pressed = cmdIncr[index];
    if (!requireVcc())
        return;
    const PinsInHand inHand(*this);
    const int part = index < 2 ? 0 : 1;
    const int first = kBitsOfPart * part;
    // Ahead of the first edge: an entry beyond all bounds must not leave a part selected.
    const Milliseconds delay{std::max(0, countOf(txtDelay[part], 0))};
    const int count = countOf(txtIncr[index], 1);
    DisabledWhile busy(resting());
    state().IncrAbort = false; // the edges ahead of the pulses let events run already
    if (ChOut[kCs].checked())  // deselected: /INC must be high before the part is selected
        setBit(kInc, true);
    state().UDDevice = part + 1;
    pump();
    // The box of part #1 rules both parts.
    if (ChlAutoCS[0].checked())
        setBit(first + kCs, false);
    cmdAbortIncr[part].setEnabled(true);
    const OnScopeExit abortOff([this, part] { cmdAbortIncr[part].setEnabled(false); });
    Run run(*this, pressed, pressed.caption() + " of part #" + decimalText(part + 1));
    {
        const Batch batch(services().run);
        setBit(first + kInc, true);
        setBit(first + kUpDown, index % 2 == 0);
        writePorts();
        waitLive(delay);
        pump();
    }
    int done = 1;
    for (; done < count && !run.stopped(); ++done) {
        setBit(first + kInc, false);
        pump();
        waitLive(delay);
        setBit(first + kInc, true);
        pump();
        waitLive(delay);
        run.progress(done, count);
    }
    // The last falling edge, after an abort as well; /INC stays low, which is where the end sequences begin.
    waitLive(delay);
    setBit(first + kInc, false);
    pump();
    if (ChlAutoCS[2 * part + 1].checked())
        setBit(first + kCs, true);
    cmdAbortIncr[part].setEnabled(false);
    busy.release();
    const bool whole = run.whole();
    cmdSampleWiper_Click(0);
    pump();
    run.tellEnd(decimalText(done) + (done == 1 ? " edge" : " edges") + " of /INC", whole, lblWiperVolts);
}

void frmVRK_UD1::cmdAbortIncr_Click(int /*part*/) {
    abortRun();
}

void frmVRK_UD1::cmdSequence_Click(int index) {
    services().run.PinBatch = false;
    state().UDDevice = index < 2 ? 1 : 2;
    (void)requireVcc(); // the sequence runs all the same
    const PinsInHand inHand(*this);
    const bool stores = index % 2 == 0;
    if (stores)
        cmdSequence[index + 1].setEnabled(false);
    // Its waits let events run; a second sequence inside this one would store once more.
    const Resting alone(resting());
    const Edges edges(link());
    const int first = kBitsOfPart * (state().UDDevice - 1);
    const auto step = [this, first](int bit, bool high, bool waits = true) {
        setBit(first + bit, high);
        if (!waits)
            return;
        wait(kSequenceStep);
        pump();
    };
    if (stores) {
        // /CS rising with /INC high stores; the dip leaves the part deselected.
        step(kInc, true);
        step(kCs, true);
        step(kCs, false);
        step(kCs, true, index == 2);
    } else {
        step(kInc, false);
        step(kCs, true, false);
    }
    const bool powered = services().vccOn(); // it may have gone off in a wait
    tell(powered && edges.whole(), stores ? "Store sequence sent" : "Deselected without a store",
         "part #" + decimalText(state().UDDevice) + (powered ? "" : ", without VCC") +
             (edges.whole() ? "" : ", edges may be missing"),
         &cmdSequence[index]);
}

void frmVRK_UD1::cmdAlloutsHigh_Click(int index) {
    DisabledWhile busy({&cmdAlloutsHigh[0], &cmdAlloutsHigh[1]});
    const Batch batch(services().run);
    if (index < 0 || index >= kParts)
        throw subscriptOutOfRange();
    for (int bit = kBitsOfPart * index; bit < ChOut.count(); ++bit) {
        setBit(bit, true);
        ShpOut[bit].setColour(Colour::LightRed);
    }
    for (int bit = kBitsOfPart * index; bit < ChOut.count(); ++bit) {
        const OutputPin& row = pins().at(static_cast<std::size_t>(bit));
        if (row.pin == OutputPin::kNoPin)
            continue;
        board().chkPData[row.pin].setValue(1);
        board().chkPData_Click(row.clickPin);
    }
    writePorts();
}

void frmVRK_UD1::cmdSampleBits_Click() {
    board().cmdReadPipe1_Click();
    const TextBox& port0 = board().txtPBufRd[0];
    const TextBox& port1 = board().txtPBufRd[1];
    for (const TextBox* port : {&port0, &port1})
        if (port->freshness()->state != Freshness::State::Fresh)
            return tell(false, "The pins were not read back", "the boxes stand as before", &cmdSampleBits);
    const int p0 = hexToInt(port0.text());
    const int p1 = hexToInt(port1.text());
    const Batch batch(services().run); // reading back drives no pin
    setBit(kCs, (p0 & 64) != 0);
    setBit(kInc, (p1 & 2) != 0);
    setBit(kUpDown, (p1 & 4) != 0);
    tell(true, "Pins read back", "P0 " + port0.text() + ", P1 " + port1.text() + " hex", &cmdSampleBits);
}

void frmVRK_UD1::cmdSampleWiper_Click(int index) {
    DisabledWhile busy({&cmdSampleWiper});
    sampleInto(lblWiperVolts, kWiperRow + index);
}

void frmVRK_UD1::OptChans_Click(int index) {
    OptCS[index].setValue(true);
    for (Frame* group : {&FrmStaticIO[1], &FrmIncr[1], &FrmExit[1]})
        group->setVisible(index == 1);
}

void frmVRK_UD1::OptCS_Click(int /*index*/) {
    pump();
}

void frmVRK_UD1::ChlAutoCS_Click(int index) {
    // A sequence that ends by itself needs no "No Store".
    if (index == 1 || index == 3)
        cmdSequence[index].setEnabled(!ChlAutoCS[index].checked());
}

void frmVRK_UD1::cmdRunin_Click() {
    if (showRunIn_)
        showRunIn_();
}

} // namespace vrk
