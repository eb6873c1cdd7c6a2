#include "motherboard/frmMotherboardDAQ2.h"

#include "motherboard/consoleMirror.h"
#include "motherboard/replyBytes.h"

#include <array>
#include <utility>

namespace vrk {

void frmMotherboardDAQ2::wireSupplies() {
    OptVCC.setCaptions({"On", "Off"});
    OptVCCMinus.setCaptions({"On", "Off"});
    for (const int index : {0, 1}) {
        OptVCC[index].join(vccGroup_);
        OptVCCMinus[index].join(minusGroup_);
        OptVCCMinus[index].setEnabled(!uses_.supply.TrackOn);
    }
    ChkTrack.setCaption("Track");
    ChkTrack.showValue(uses_.supply.TrackOn ? 1 : 0);
    ShpVCCon.setCaption("VCC");
    ShpVCCMinusOn.setCaption("V-");
    static constexpr std::array<const char*, 16> kBytes = {"00", "50", "C2", "C0", "00", "50", "C0", "77",
                                                           "00", "50", "B2", "C0", "00", "50", "B0", "00"};
    for (auto& cell : txtSPIwr) {
        cell->setText(kBytes.at(static_cast<std::size_t>(cell->index())));
        hexBox(*cell);
    }
    for (auto& cell : txtSPIRd)
        cell->setText("--");
    for (auto& cell : txtSPIRd)
        cell->markUnread();
    lblVCCVoltsRDBK.setCaption("0.000");
    lblVCCVoltsRDBK.markUnread();
    lblCal_header.setCaption("Defaults");
    cmdSPIWrite.setCaption("Write Reg");
    cmdSPIWrite2.setCaption("Write Data");
    cmdSPRRdReg.setCaption("Read Setup");
    cmdSPIReadData.setCaption("ReadData");
    cmdSampleVCC.setCaption("Sample VCC");
    cmdSetVCCVolts.setCaption("Update VCC");
    wireClick(OptVCC, &frmMotherboardDAQ2::OptVCC_Click);
    wireClick(OptVCCMinus, &frmMotherboardDAQ2::OptVCCMinus_Click);
    wireClick(ChkTrack, &frmMotherboardDAQ2::ChkTrack_Click);
    wireClick(cmdSPIWrite, &frmMotherboardDAQ2::cmdSPIWrite_Click);
    wireClick(cmdSPIWrite2, &frmMotherboardDAQ2::cmdSPIWrite2_Click);
    wireClick(cmdSPRRdReg, &frmMotherboardDAQ2::cmdSPRRdReg_Click);
    wireClick(cmdSPIReadData, &frmMotherboardDAQ2::cmdSPIReadData_Click);
    wireClick(cmdSampleVCC, &frmMotherboardDAQ2::cmdSampleVCC_Click);
}

void frmMotherboardDAQ2::selectDac(bool selected) {
    console().chkGPvalueP2[4].setValue(selected ? 0 : 1); // active low
    console().cmdWrGPData_Click(2);
    console().cmdRdGPData_Click(2);
}

void frmMotherboardDAQ2::dacExchange(DacRow row) {
    const int first = 4 * static_cast<int>(row) + 1; // the first cell of a row is not sent
    for (int k = 0; k < 3; ++k)
        (void)hexToByte(txtSPIwr[first + k].text()); // a bad byte must not leave the DAC selected
    OnScopeExit afterFault([this] { setButtonsEnabled(true); });
    cmdDisableButtons_Click();
    // A fault on the way must not leave U5 listening: it would take every later frame for its own.
    OnScopeExit deselect([this] {
        try {
            selectDac(false);
        } catch (...) {
            // The program ends under a link dialog, and the fault that led here is told anyway.
            return;
        }
    });
    selectDac(true);
    if (row == DacRow::ReadSetup || row == DacRow::ReadData) {
        events().letEventsRun();
        for (auto& cell : txtSPIRd)
            cell->setText("XX");
    }
    console().chkSPIread.setValue(1);
    console().txtNumToWrite.setText("3");
    for (int k = 0; k < 3; ++k) {
        if (row != DacRow::WriteSetup)
            uses_.ports.SPIBuf[k] = hexToByte(txtSPIwr[first + k].text());
        console().txtWriteVal[k].setText(txtSPIwr[first + k].text());
    }
    const Milliseconds asked = context().clock().now();
    console().cmdSPIWrite_Click();
    takeReply(txtSPIRd, console().txtReadVal, txtSPIRd.count(), asked);
    deselect.dismiss();
    selectDac(false);
    events().letEventsRun();
    afterFault.dismiss();
    cmdEnableBUttons_Click();
}

void frmMotherboardDAQ2::cmdSPIWrite_Click() {
    dacExchange(DacRow::WriteSetup);
}
void frmMotherboardDAQ2::cmdSPIWrite2_Click() {
    dacExchange(DacRow::WriteData);
}
void frmMotherboardDAQ2::cmdSPRRdReg_Click() {
    dacExchange(DacRow::ReadSetup);
}
void frmMotherboardDAQ2::cmdSPIReadData_Click() {
    dacExchange(DacRow::ReadData);
}

void frmMotherboardDAQ2::markMeasuredStale(const char* cause) {
    for (Control* reading :
         std::initializer_list<Control*>{&lblVCCVoltsRDBK, &txtADDec, &txtRdgs[0], &txtGPIOUserName[0]})
        reading->markStale(cause);
    for (auto& box : txtI2CRead)
        box->markStale(cause);
}

void frmMotherboardDAQ2::supplySwitched() {
    constexpr char kCause[] = "a supply was switched since";
    markMeasuredStale(kCause);
    console().markBusReadingsStale(kCause);
}

void frmMotherboardDAQ2::boardChosen() {
    constexpr char kCause[] = "a board was chosen since";
    markMeasuredStale(kCause);
    for (auto* boxes : {&txtPBufRd, &txtSPIRd, &txtSPIORead, &txtSPIORead3})
        for (auto& box : *boxes)
            box->markStale(kCause);
}

bool frmMotherboardDAQ2::followSupplyPins() {
    const bool before = std::exchange(uses_.link.suppressControlEvents, true);
    const OnScopeExit restore([this, before] { uses_.link.suppressControlEvents = before; });
    bool moved = false;
    const auto follow = [this, &moved](int pin, ControlArray<OptionButton>& options, Lamp& lamp) {
        const bool on = console().chkGPvalue(pin / 8)[pin % 8].checked();
        moved = moved || on != options[0].value();
        // The image too: the next write of any other pin must not switch a supply.
        setPin(pin, on ? 1 : 0);
        options[on ? 0 : 1].showSelected();
        lamp.setColour(on ? Colour::LightRed : Colour::Black);
    };
    follow(kPinVcc, OptVCC, ShpVCCon);
    follow(kPinMinus, OptVCCMinus, ShpVCCMinusOn);
    if (moved)
        supplySwitched();
    return moved;
}

std::optional<frmMotherboardDAQ2::SupplyPins> frmMotherboardDAQ2::toldSupplyPins() {
    const Label& port = console().lblRdGPData[kPinVcc / 8];
    const auto& worth = port.freshness();
    if (!worth || worth->state != Freshness::State::Fresh)
        return std::nullopt;
    const auto bits = static_cast<unsigned>(hexToInt(port.caption()));
    return SupplyPins{.vcc = (bits & (1U << (kPinVcc % 8))) != 0,
                      .minus = (bits & (1U << (kPinMinus % 8))) != 0};
}

std::optional<frmMotherboardDAQ2::SupplyPins> frmMotherboardDAQ2::supplyPins() {
    if (const auto told = toldSupplyPins())
        return told;
    console().cmdRdGPData_Click(kPinVcc / 8);
    return toldSupplyPins();
}

void frmMotherboardDAQ2::takeSupplyPins(const SupplyPins& pins) {
    setPin(kPinVcc, pins.vcc ? 1 : 0);
    setPin(kPinMinus, pins.minus ? 1 : 0);
    (void)followSupplyPins();
}

void frmMotherboardDAQ2::showSuppliesOn(SupplyPanel& panel) {
    const auto show = [](Lamp* lamp, const Lamp& source, OptionButton* option) {
        if (lamp != nullptr)
            lamp->setColour(source.colour());
        if (option != nullptr)
            option->showSelected();
    };
    show(panel.vccLamp(), ShpVCCon, panel.vccOption(OptVCC[0].value() ? 0 : 1));
    show(panel.minusLamp(), ShpVCCMinusOn, panel.minusOption(OptVCCMinus[0].value() ? 0 : 1));
}

void frmMotherboardDAQ2::tellPanel(bool minus, int index) {
    SupplyPanel* panel = activeSupply();
    if (panel == nullptr || index < 0 || index > 1)
        return;
    const OptionButton* shown = minus ? panel->minusOption(index) : panel->vccOption(index);
    if (shown != nullptr && shown->value())
        return; // it was the panel that switched
    panel->suppliesMoved();
    showSuppliesOn(*panel);
}

namespace {
/// Of a switch that lets events run: whether one of them chose the other way. As long as nothing was set yet,
/// its click has done what there was to do.
class Overtaken {
  public:
    explicit Overtaken(const OptionButton& chosen) : chosen_(chosen), byOption_(chosen.value()) {}
    bool operator()() const { return byOption_ && !chosen_.value(); }

  private:
    const OptionButton& chosen_;
    bool byOption_; ///< not so where the action is called by its name
};
} // namespace

void frmMotherboardDAQ2::OptVCC_Click(int index) {
    const Overtaken overtaken(OptVCC[index]);
    OnScopeExit afterFault([this] { setButtonsEnabled(true); });
    cmdDisableButtons_Click();
    uses_.supply.TrackOn = ChkTrack.value() == 1;
    supplySwitched();
    events().letEventsRun();
    if (overtaken())
        return;
    if (index == 0) {
        ShpVCCon.setColour(Colour::LightRed);
        setPin(kPinVcc, 1);
        if (uses_.supply.TrackOn) {
            OptVCCMinus[0].setValue(true);
            ShpVCCMinusOn.setColour(Colour::LightRed);
            setPin(kPinMinus, 1);
        }
    } else if (index == 1) {
        // Without tracking only the controller console's mirror is cleared: the image keeps VCC's bit, and
        // the write below sends it still set. VCC's own pin box switches it off then.
        console().chkGPvalueP2[5].setValue(0);
        ShpVCCon.setColour(Colour::Black);
        if (uses_.supply.TrackOn) {
            OptVCCMinus[1].setValue(true);
            ShpVCCMinusOn.setColour(Colour::Black);
            setPin(kPinVcc, 0);
            setPin(kPinMinus, 0);
        }
    }
    events().letEventsRun();
    cmdWrtPipe1_Click();
    SupplyPanel* panel = activeSupply();
    // A panel that switches goes on to the DAC, whose select takes VCC off.
    if (index == 1 && !overtaken() && chkPData[kPinVcc].checked() &&
        (panel == nullptr || !panel->switchesVcc()))
        tellVccOn(*this);
    tellPanel(false, index);
    afterFault.dismiss();
    cmdEnableBUttons_Click();
    events().letEventsRun();
}

void frmMotherboardDAQ2::OptVCCMinus_Click(int index) {
    if (uses_.supply.TrackOn)
        return;
    const Overtaken overtaken(OptVCCMinus[index]);
    OnScopeExit afterFault([this] { setButtonsEnabled(true); });
    cmdDisableButtons_Click();
    supplySwitched();
    events().letEventsRun();
    if (overtaken())
        return;
    if (index == 0) {
        ShpVCCMinusOn.setColour(Colour::LightRed);
        chkPData[kPinMinus].setValue(1);
        // The neighbour's: VCC's bit follows its box again. The assignment has run the pin's own.
        chkPData_Click(kPinVcc);
    } else if (index == 1) {
        ShpVCCMinusOn.setColour(Colour::Black);
        setPin(kPinMinus, 0);
    }
    events().letEventsRun();
    cmdWrtPipe1_Click();
    tellPanel(true, index);
    afterFault.dismiss();
    cmdEnableBUttons_Click();
    events().letEventsRun();
}

void frmMotherboardDAQ2::ChkTrack_Click() {
    const bool track = ChkTrack.value() == 1;
    uses_.supply.TrackOn = track;
    for (auto& option : OptVCCMinus)
        option->setEnabled(!track);
    if (SupplyPanel* panel = activeSupply(); panel != nullptr && panel->trackBox() != nullptr)
        panel->trackBox()->setValue(track ? 1 : 0);
    events().letEventsRun();
}

void frmMotherboardDAQ2::cmdSampleVCC_Click() {
    OnScopeExit afterFault([this] { setButtonsEnabled(true); });
    cmdDisableButtons_Click();
    console().cboAnamux[0].setListIndex(uses_.analog.MuxVCCIndex);
    events().letEventsRun();
    READ_AD();
    READ_AD();
    lblVCCVoltsRDBK.setCaption(formatNumber(uses_.analog.ADVolts2, "#0.000"));
    // The multiplexer stays where it was: the list alone has moved.
    lblVCCVoltsRDBK.setToolTip("Twice the volts at " + console().connectedInput());
    markReading(lblVCCVoltsRDBK, measured());
    afterFault.dismiss();
    cmdEnableBUttons_Click();
}

} // namespace vrk
