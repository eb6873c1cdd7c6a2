#pragma once

#include "panels/discrete/PinPanel.h"

#include <array>

namespace vrk {

/// The push-button panel: a part that two buttons move, pressed low, with /MUTE, /STORE and /CS1 beside them.
class frmVRK_PB1 final : public PinPanel {
  public:
    enum Bit : int { kCs = 0, kStore = 1, kMute = 2, kUp = 3, kDown = 4 };

    frmVRK_PB1(PanelContext& context, BenchServices& services, PinPanelState& state);

    void Form_Load() override;

    /// 0 up, 1 down
    ControlArray<Button> cmdIncr{*this, "cmdIncr", 0, 1};
    ControlArray<TextBox> txtIncr{*this, "txtIncr", 0, 1};
    /// Pulse period, ms
    TextBox txtDelay{*this, "txtDelay"};
    ControlArray<CheckBox> ChlAutoCS{*this, "ChlAutoCS", 0, 1};
    Label blAutoStore{*this, "blAutoStore"};
    Button cmdAbortIncr{*this, "cmdAbortIncr"};
    ControlArray<Button> cmdSequence{*this, "cmdSequence", 0, 4};
    /// Hold time of /UP, /DOWN and /STORE, ms
    ControlArray<TextBox> txtPressAndHold{*this, "txtPressAndHold", 0, 2};
    Button cmdAlloutsHigh{*this, "cmdAlloutsHigh"};
    ControlArray<OptionButton> OptCS{*this, "OptCS", 0, 1};
    /// Analog inputs VIN0 to VIN3
    ControlArray<TextBox> txtFactor{*this, "txtFactor", 0, 3};
    ControlArray<Button> cmdSampleWiper{*this, "cmdSampleWiper", 0, 3};
    ControlArray<Reading> lblWiperVolts{*this, "lblWiperVolts", 0, 3};
    ControlArray<Label> lblADChan{*this, "lblADChan", 0, 3};

    /// Presses a button as often as the entry says.
    void cmdIncr_Click(int index);
    void cmdAbortIncr_Click();
    void cmdSequence_Click(int index);
    void cmdAlloutsHigh_Click();
    void cmdSampleWiper_Click(int index);
    void ChlAutoCS_Click(int index);
    void OptCS_Click(int index);

  protected:
    /// With two parts the line of /STORE is a chip select.
    StoreRules storeRules() const override {
        return {.pins = OptCS[1].value() ? StoreRules::Pins::None : StoreRules::Pins::PushButton};
    }
    void voltsStale(const std::string& cause) override;

  private:
    /// Low for the time, then high for the time.
    void press(int bit, Milliseconds hold);
    std::vector<Control*> resting();
    /// The hold times, repaired where they are no numbers.
    std::array<Milliseconds, 3> holds();

    OptionGroup csGroup_;
};

} // namespace vrk
