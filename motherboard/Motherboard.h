#pragma once

#include "motherboard/frmMotherboardDAQ2.h"

namespace vrk {

class FrmVCCCal;

/// Supply routines that every device panel shares; they work on the fields of the panel in front.
class Motherboard {
  public:
    Motherboard(PanelContext& context, modHID& link, AnalogState& analog, SupplyState& supply,
                PanelSlot<frmMotherboardDAQ2>& console, PanelSlot<FrmVCCCal>& calibration);

    /// Lamps and options of the panel in front, and the motherboard's switch. \param state 0 VCC on, 1 VCC
    /// off
    void showSupplyState(int state);

    /// Shows what the board's supply pins are, without switching anything: a board that was unplugged comes
    /// back with both supplies off, and On must then switch on. Runs whenever a board has been read whole.
    void followBoard();

    /// Both supplies off, the supply DAC set up, the volts list filled from the built-in codes or, where
    /// there is one, from the calibration file.
    void initSupplyDefaults();
    /// The two frames that the supply DAC needs behind the board's power-up.
    void setUpSupplyDac();
    /// Pins and supply DAC once more, where the board has been found with VCC off since: it may have lost its
    /// power, and with it all that it was told. Ahead of switching VCC on.
    void prepareBoard();

  private:
    SupplyPanel* active() const;
    void applyCalibration();

    PanelContext& context_;
    modHID& link_;
    AnalogState& analog_;
    SupplyState& supply_;
    PanelSlot<frmMotherboardDAQ2>& console_;
    PanelSlot<FrmVCCCal>& calibration_;
    int followed_ = 0; ///< instance that the panels show
    bool boardForgot_ = false;
    Subscription boardRead_;
};

} // namespace vrk
