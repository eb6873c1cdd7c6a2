#pragma once

namespace vrk {

class Plot;

/// The drift of a run as a plot: error over steps, the limit as a band, each fail a cross. A run has any
/// number of steps, its picture has not: of a long one every stretch keeps its least and its greatest error.
class RunInPicture {
  public:
    RunInPicture();
    Plot& plot() const { return *plot_; }

    /// A run begins. \param end step at which it ends
    void begin(int end);
    /// \param volts either way; 0 while it is not known
    void setLimit(double volts);
    /// A step was judged. \param error expected less measured, volts
    void add(int step, double error, bool fail);
    /// From this step on the run was gone on with after an interruption: the stretch grows with the steps.
    void addResumed(int from);

  private:
    void thin();

    Plot* plot_;
};

} // namespace vrk
