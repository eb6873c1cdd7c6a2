#pragma once

#include "motherboard/frmMotherboardDAQ2.h"
#include "panels/blocks/ShellControl.h"
#include "platform/controls/Panel.h"

#include <array>

namespace vrk {

/// The start panel: sets the shared start values, asks for the device family, brings up the two consoles
/// behind the scenes and hands over to one device panel.
class frmStartup final : public Panel, public ActivePanel {
  public:
    static constexpr int kRows = 10;
    enum Row : int {
        kHead = 0,
        kConsolesOnly = 1,
        kI2C = 2,
        kSPI = 3,
        kUpDown = 4,
        kPushButton = 5,
        kCalibrate = 9
    };

    struct Uses {
        PanelSlot<class frmMainF340>& console;
        PanelSlot<class frmMotherboardDAQ2>& board;
        modHID& link;
        Trace& trace;
        AnalogState& analog;
        SupplyState& supply;
        ShellState& state;
        /// The panel behind each row; nullptr where a row has none.
        std::function<PanelSlotBase*(int row)> panelOfRow;
        std::function<PanelSlotBase&()> self;
        std::function<void()> showInstructions;
        std::function<void()> showAbout;
    };

    frmStartup(PanelContext& context, Uses uses);

    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;
    void Form_GotFocus();

    ComboBox cboVRKSelect{*this, "cboVRKSelect"};
    ComboBox cboDeviceSelect{*this, "cboDeviceSelect"};
    ControlArray<OptionButton> OptLM73{*this, "OptLM73", 0, 1};
    ComboBox CboVCC{*this, "CboVCC"};
    Timer Timer1{*this, "Timer1"};
    ControlArray<Lamp> Shpstatus{*this, "Shpstatus", 2, 2};
    CheckBox chkTRDetail{*this, "chkTRDetail"};
    CheckBox ChkTrace{*this, "ChkTrace"};
    Button Command1{*this, "Command1"};
    Button Command2{*this, "Command2"};
    Button Command3{*this, "Command3"};
    Button cmdShow4410{*this, "cmdShow4410"};
    Button cmdShowBlock{*this, "cmdShowBlock"};
    MenuEntry mnuAboutShow{*this, "mnuAboutShow"};
    Picture Picture1{*this, "Picture1"};
    Picture Picture2{*this, "Picture2"};
    Label Label1{*this, "Label1"};

    void cboVRKSelect_Click();
    void Timer1_Timer();
    void OptLM73_Click(int index);
    void chkTRDetail_Click();
    void mnuAboutShow_Click();
    void Picture1_DblClick();
    void Command1_Click() {}
    void Command2_Click() {}
    void Command3_Click();
    /// The instruction panel of the quad parts on I2C, whatever panel has been used.
    void cmdShow4410_Click();
    void cmdShowBlock_Click() {}

  private:
    void loadConsoles();

    Uses uses_;
    OptionGroup lm73Group_;
    Subscription switches_;
};

} // namespace vrk
