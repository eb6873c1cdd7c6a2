#pragma once

#include "link/frmMainF340.h"
#include "motherboard/Motherboard.h"
#include "motherboard/SupplyPanel.h"
#include "panels/ShellControl.h"
#include "platform/controls/Panel.h"

#include <functional>
#include <string>

namespace vrk {

/// What every device panel has: the supply block, the status block, the way back to the start panel.
class DevicePanel : public Panel, public SupplyPanel {
  public:
    struct Uses {
        PanelSlot<class frmMainF340>& console;
        PanelSlot<class frmMotherboardDAQ2>& board;
        Motherboard& motherboard;
        modHID& link;
        AnalogState& analog;
        PortState& ports;
        SupplyState& supply;
        ShellState& state;
        ShellControl& shell;
        ProductTable& products;
        std::function<void()> hideSelf;
    };

    ~DevicePanel() override;

    void Form_Activate() override;
    /// Closing the window ends the program, unless the panel is on its way back to the start panel.
    void Form_QueryUnload() override;
    void Form_Unload() override;

    // Supplies
    ControlArray<OptionButton> OptVCC{*this, "OptVCC", 0, 1};
    ControlArray<OptionButton> OptVM{*this, "OptVM", 0, 1};
    CheckBox ChkTrack{*this, "ChkTrack"};
    Lamp ShpVCCon{*this, "ShpVCCon"};
    Lamp ShVM{*this, "ShVM"};
    ComboBox CboVCC{*this, "CboVCC"};
    Button cmdUpdateVCC{*this, "cmdUpdateVCC"};
    Button cmdReadVCC{*this, "cmdReadVCC"};
    Label lblVCCVolts{*this, "lblVCCVolts"};
    Label lblSPICode{*this, "lblSPICode"};
    Label lblUserVCC{*this, "lblUserVCC"};
    TextBox txtUserVCC{*this, "txtUserVCC"};
    TextBox txtADOffset{*this, "txtADOffset"};
    TextBox txtADGain{*this, "txtADGain"};
    CheckBox ChkShutDown2{*this, "ChkShutDown2"};

    /// Switches VCC, sends the code again and measures: 0 on, 1 off.
    void OptVCC_Click(int index);
    void OptVM_Click(int index);
    void ChkTrack_Click();
    void CboVCC_Click();
    void cmdUpdateVCC_Click();
    void cmdReadVCC_Click();
    void ChkShutDown2_Click();

    // Status
    Lamp ShpAttach{*this, "ShpAttach"};
    /// 1 write, 2 read, 3 timer, 4 communication with the part
    ControlArray<Lamp> Shape1{*this, "Shape1", 1, 4};
    Lamp Shp_USB_Transfer{*this, "Shp_USB_Transfer"};
    ControlArray<Label> lblUSBChk{*this, "lblUSBChk", 0, 5};
    Button cmdMMenu{*this, "cmdMMenu"};

    void cmdMMenu_Click();

    Lamp* attachLamp() override { return &ShpAttach; }
    Lamp* transferLamp() override { return &Shp_USB_Transfer; }
    Lamp* vccLamp() override { return &ShpVCCon; }
    Lamp* minusLamp() override { return &ShVM; }
    OptionButton* minusOption(int index) override { return &OptVM[index]; }
    CheckBox* trackBox() override { return &ChkTrack; }
    ComboBox* vccList() override { return &CboVCC; }

    /// Bus and address for the band on top of the window.
    virtual std::string busText() const = 0;
    /// The part chosen, for the band.
    virtual std::string partText() const = 0;
    modHID& link() const { return uses_.link; }

  protected:
    DevicePanel(PanelContext& context, std::string name, std::string title, Uses uses);

    class frmMainF340& console() {
        return *uses_.console;
    }
    class frmMotherboardDAQ2& board() {
        return *uses_.board;
    }
    const Uses& uses() const { return uses_; }
    void pump() { events().letEventsRun(); }
    void wait(Milliseconds duration) { context().clock().sleep(duration); }
    void becomeActive() { uses_.link.activePanel = this; }

    /// Says so when VCC is off; the exchange runs all the same.
    void warnIfVccOff();
    /// Reads the channel chosen twice, adds the offset to the shared reading. \return volts times the gain,
    /// as text
    std::string measure();
    /// Upper-cases the text; a value outside 1 to 256 becomes `fallback`.
    void hexEntry(TextBox& box, const std::string& fallback, std::function<void()> onEnter = {});

  private:
    void wireSupply();
    void wireStatus();
    void showUserCode();
    void measureVcc(int row);

    Uses uses_;
    OptionGroup vccGroup_;
    OptionGroup minusGroup_;
    Subscription attached_;
};

} // namespace vrk
