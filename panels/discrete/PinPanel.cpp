#include "panels/discrete/PinPanel.h"

#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {
constexpr Milliseconds kNoticed{100}; ///< a wait from here on would stop the window
constexpr Milliseconds kSlice{20};
constexpr Milliseconds kAfterSample{50};
} // namespace

void publish(SharedValues& values, PinPanelState& state, const std::string& panel) {
    values.scalar("UDDevice", state.UDDevice, panel);
    values.scalar("IncrAbort", state.IncrAbort, panel);
}

PinPanel::PinPanel(PanelContext& panelContext, std::string name, std::string title,
                   BenchServices& panelServices, PinPanelState& state, std::vector<OutputPin> pins)
    : DevicePanel(panelContext, std::move(name), std::move(title), panelServices),
      ChOut(*this, "ChOut", 0, static_cast<int>(pins.size()) - 1),
      ShpOut(*this, "ShpOut", 0, static_cast<int>(pins.size()) - 1),
      pins_(std::move(pins)),
      state_(state) {
    for (int bit = 0; bit < ChOut.count(); ++bit) {
        const char* caption = pins_.at(static_cast<std::size_t>(bit)).name;
        ChOut[bit].setCaption(caption);
        ShpOut[bit].setCaption(caption);
    }
    wireClick(ChOut, &PinPanel::ChOut_Click);
}

void PinPanel::ChOut_Click(int index) {
    const bool high = ChOut[index].checked();
    ShpOut[index].setColour(high ? Colour::LightRed : Colour::Black);
    const OutputPin& row = pins_.at(static_cast<std::size_t>(index));
    if (row.pin != OutputPin::kNoPin) {
        board().chkPData[row.pin].setValue(high ? 1 : 0);
        board().chkPData_Click(row.clickPin);
    }
    if (services().run.PinBatch)
        return;
    writePorts();
    pump();
    afterPinWrite();
}

bool PinPanel::lostPins() const {
    const std::string& owner = services().ports.pinsOf; // none behind a reset of all pins
    return hadPins_ && !owner.empty() && owner != name();
}

void PinPanel::setBit(int bit, bool high) {
    if (lostPins()) {
        ChOut[bit].showValue(high ? 1 : 0);
        ShpOut[bit].setColour(high ? Colour::LightRed : Colour::Black);
        return;
    }
    const OutputPin& row = pins_.at(static_cast<std::size_t>(bit));
    if (ChOut[bit].checked() != high)
        ChOut[bit].setValue(high ? 1 : 0);
    else if (row.pin != OutputPin::kNoPin && board().chkPData[row.pin].checked() != high)
        ChOut_Click(bit);
}

void PinPanel::placePins() {
    for (int bit = ChOut.count() - 1; bit >= 0; --bit)
        if (const int pin = pins_.at(static_cast<std::size_t>(bit)).pin; pin != OutputPin::kNoPin)
            board().setPin(pin, ChOut[bit].value());
}

void PinPanel::writePorts() {
    if (lostPins())
        return;
    board().cmdWrtPipe1_Click();
    voltsStale("a pin was driven since");
}

void PinPanel::abortRun() {
    state_.IncrAbort = true;
    pump();
}

PinPanel::Run::Run(PinPanel& panel, const Button& pressed, const std::string& name)
    : panel_(panel),
      pressed_(pressed),
      edges_(panel.link()),
      activity_(panel.context().activities, name, [&panel] { panel.state_.IncrAbort = true; }) {}

void PinPanel::Run::tellEnd(const std::string& detail, bool whole, const Reading& volts) const {
    const bool read = volts.freshness()->state == Freshness::State::Fresh;
    std::string text = activity_.name() + " done";
    bool good = false;
    if (!panel_.services().vccOn())
        text = activity_.name() + " stopped: VCC went off";
    else if (!whole)
        text = activity_.name() + ": the link was lost meanwhile, edges may be missing";
    else if (panel_.state_.IncrAbort)
        text = activity_.name() + " aborted";
    else
        good = read;
    panel_.tell(good, text,
                (whole ? "" : "at most ") + detail +
                    (read ? ", wiper " + volts.caption() + " V" : ", wiper not read"),
                &pressed_);
}

void PinPanel::waitLive(Milliseconds duration) const {
    if (duration < kNoticed) {
        wait(duration);
        return;
    }
    const Milliseconds end = context().clock().now() + duration;
    while (context().clock().now() < end && !state_.IncrAbort) {
        wait(std::min(kSlice, end - context().clock().now()));
        pump();
    }
}

int PinPanel::countOf(TextBox& field, int fallback) {
    if (isNumeric(field.text()))
        return roundHalfEven(leadingNumber(field.text()));
    field.setText(decimalText(fallback));
    return fallback;
}

void PinPanel::sampleInto(Reading& volts, int row) {
    board().Combo1.setListIndex(row);
    pump();
    measure(volts);
    wait(kAfterSample);
}

} // namespace vrk
