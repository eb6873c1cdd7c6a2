#pragma once

#include "platform/runtime/Clock.h"

#include <QString>

#include <deque>

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
    /// A stretch that was measured after an interruption.
    void addResumed(int from, int to);

  private:
    void thin();

    Plot* plot_;
};

/// Times of a run that is under way.
class RunInClock {
  public:
    void begin(Milliseconds now);
    /// Four steps are done.
    void round(Milliseconds now);
    Milliseconds elapsed() const { return last_ - began_; }
    /// By the median of the last rounds: one that stood behind a dialog all night spoils nothing.
    Milliseconds left(int stepsToGo) const;

  private:
    Milliseconds began_{0};
    Milliseconds last_{0};
    std::deque<Milliseconds> rounds_;
};

/// First step at which the end of a run is tested and the quantity is reached: log points that fall inside a
/// round of four steps are none. 0 where the entries make no run.
int runInEndStep(int quantity, int logSteps);

/// "1:58:07"
QString runInTimeText(Milliseconds time);

} // namespace vrk
