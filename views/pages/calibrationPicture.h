#pragma once

namespace vrk {

class FrmVCCCal;
class Plot;

/// The supply's curve as a plot: volts over the code with the seven targets, the levels of the file as it was
/// behind it, and below how far each level is off its target.
class CalibrationPicture {
  public:
    CalibrationPicture();
    Plot& plot() const { return *plot_; }
    /// Shows the panel's last sweep, as far as it is.
    void show(const FrmVCCCal& panel);

  private:
    Plot* plot_;
};

} // namespace vrk
