#pragma once

#include "panels/blocks/BenchServices.h"
#include "platform/controls/PanelBlock.h"

#include <string>

namespace vrk {

/// Switches, level and measurement of the part's supplies, and the correction of every voltage that the panel
/// measures.
class SupplyBlock : public PanelBlock {
  public:
    ControlArray<OptionButton> OptVCC{host(), "OptVCC", 0, 1};
    ControlArray<OptionButton> OptVM{host(), "OptVM", 0, 1};
    CheckBox ChkTrack{host(), "ChkTrack"};
    Lamp ShpVCCon{host(), "ShpVCCon"};
    Lamp ShVM{host(), "ShVM"};
    ComboBox CboVCC{host(), "CboVCC"};
    Button cmdUpdateVCC{host(), "cmdUpdateVCC"};
    Button cmdReadVCC{host(), "cmdReadVCC"};
    Reading lblVCCVolts{host(), "lblVCCVolts"};
    Label lblSPICode{host(), "lblSPICode"};
    Label lblUserVCC{host(), "lblUserVCC"};
    TextBox txtUserVCC{host(), "txtUserVCC"};
    TextBox txtADOffset{host(), "txtADOffset"};
    TextBox txtADGain{host(), "txtADGain"};

    /// Switches VCC, sends the code again and measures. \param index 0 on, 1 off.
    void OptVCC_Click(int index);
    void OptVM_Click(int index);
    void ChkTrack_Click();
    void CboVCC_Click();
    /// Sends the level's code to the supply's converter and measures VCC.
    void cmdUpdateVCC_Click();
    void cmdReadVCC_Click();

  protected:
    SupplyBlock(Panel& panel, BenchServices& services);
    /// VCC's switch is at work.
    bool switching() const { return switching_ > 0; }

    /// Between the switch and the code that follows it. The pins that go with the part's supply are the
    /// panel's: what is a shutdown pin for one family is a direction for the other.
    virtual void afterVccSwitch() {}
    /// VCC was switched or its level changed: what was read before no longer holds.
    virtual void supplyChanged() {}

    /// Converts the channel chosen on the motherboard twice, as the first conversion after a change of
    /// channel is of the channel before, adds the offset to the shared value, and shows volts times the gain,
    /// "#0.000".
    void measure(Reading& volts);

  private:
    /// What is shown follows VCC's pin, and the last click holds: one that ran inside this switch, while it
    /// let events run, may have been undone by its writes; and without Track a write of the ports switches
    /// VCC on behind its switch, which then would do nothing. \return true if the last click had to be
    /// repeated; it has told then
    bool repeated();
    void showUserCode();
    /// \param row of the motherboard's channel list.
    void measureVcc(int row);

    BenchServices& services_;
    OptionGroup vccGroup_;
    OptionGroup minusGroup_;
    int asked_ = 1;          ///< index of the last click
    int switching_ = 0;      ///< depth: a click may come while one switches
    bool disturbed_ = false; ///< one came inside another
    bool again_ = false;     ///< the last click is repeated
};

} // namespace vrk
