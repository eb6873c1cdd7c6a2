#pragma once

#include "panels/discrete/PinPanel.h"

namespace vrk {

/// The up/down panel: parts with /CS, /INC and U/D, one or two of them. The two share /INC and U/D; each has
/// a chip select of its own. The wiper moves at the falling edge of /INC; /CS rising with /INC high stores.
class frmVRK_UD1 final : public PinPanel {
  public:
    static constexpr int kParts = 2;
    static constexpr int kBitsOfPart = 4;
    enum Bit : int { kCs = 0, kInc = 1, kUpDown = 2, kReserved = 3 };

    frmVRK_UD1(PanelContext& context, BenchServices& services, PinPanelState& state,
               std::function<void()> showRunIn);

    void Form_Load() override;

    /// 0 up and 1 down of part #1, 2 and 3 of part #2
    ControlArray<Button> cmdIncr{*this, "cmdIncr", 0, 3};
    ControlArray<TextBox> txtIncr{*this, "txtIncr", 0, 3};
    /// Half period of the pulses, ms
    ControlArray<TextBox> txtDelay{*this, "txtDelay", 0, 1};
    ControlArray<CheckBox> ChlAutoCS{*this, "ChlAutoCS", 0, 3};
    ControlArray<Button> cmdAbortIncr{*this, "cmdAbortIncr", 0, 1};
    /// 0 store and 1 no store of part #1, 2 and 3 of part #2
    ControlArray<Button> cmdSequence{*this, "cmdSequence", 0, 3};
    ControlArray<Button> cmdAlloutsHigh{*this, "cmdAlloutsHigh", 0, 1};
    ControlArray<OptionButton> OptChans{*this, "OptChans", 0, 1};
    ControlArray<OptionButton> OptTaps{*this, "OptTaps", 0, 6};
    ControlArray<OptionButton> OptCS{*this, "OptCS", 0, 1};
    ControlArray<Frame> FrmStaticIO{*this, "FrmStaticIO", 0, 1};
    ControlArray<Frame> FrmIncr{*this, "FrmIncr", 0, 1};
    ControlArray<Frame> FrmExit{*this, "FrmExit", 0, 1};
    Reading lblWiperVolts{*this, "lblWiperVolts"};
    Button cmdSampleWiper{*this, "cmdSampleWiper"};
    TextBox txtFactor{*this, "txtFactor"};
    Button cmdSampleBits{*this, "cmdSampleBits"};
    Button cmdRunin{*this, "cmdRunin"};

    /// Pulses /INC as often as the entry says. An abort still gives the last edge.
    void cmdIncr_Click(int index);
    void cmdAbortIncr_Click(int part);
    /// Ends the access to a part, with or without a store.
    void cmdSequence_Click(int index);
    void cmdAlloutsHigh_Click(int index);
    void cmdSampleBits_Click();
    void cmdSampleWiper_Click(int index);
    void OptChans_Click(int index);
    void OptCS_Click(int index);
    void ChlAutoCS_Click(int index);
    void cmdRunin_Click();

  protected:
    StoreRules storeRules() const override { return {.pins = StoreRules::Pins::UpDown}; }
    void afterPinWrite() override { cmdSampleWiper_Click(0); }
    void voltsStale(const std::string& cause) override { lblWiperVolts.markStale(cause); }

  private:
    std::vector<Control*> resting();

    std::function<void()> showRunIn_;
    OptionGroup chansGroup_;
    OptionGroup tapsGroup_;
    OptionGroup csGroup_;
};

} // namespace vrk
