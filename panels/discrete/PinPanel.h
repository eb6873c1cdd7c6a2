#pragma once

#include "panels/DevicePanel.h"

#include <string>
#include <utility>
#include <vector>

namespace vrk {

/// One output bit of a panel that drives a part by its pins.
struct OutputPin {
    static constexpr int kNoPin = -1;

    const char* name;      ///< "/INC"
    int pin = kNoPin;      ///< pin of the motherboard that carries it; kNoPin for a bit that leads nowhere
    int clickPin = kNoPin; ///< pin whose click the motherboard is given with it
};

/// What the actions of a pin panel share; outlives the panel.
struct PinPanelState {
    int UDDevice = 1;       ///< part in use, 1 or 2
    bool IncrAbort = false; ///< asks the run of pulses to stop
};

void publish(SharedValues& values, PinPanelState& state, const std::string& panel);

/// A device panel for parts without a bus: each wire is a port pin, and the wiper moves by its edges. One row
/// of a pin map is all that the sending code knows of a wire.
class PinPanel : public DevicePanel {
  public:
    /// Checked is high.
    ControlArray<CheckBox> ChOut;
    /// Light red is high, black is low.
    ControlArray<Lamp> ShpOut;

    /// Shows the bit and puts it into the motherboard's image; outside a batch the ports are written too, and
    /// afterPinWrite() runs.
    void ChOut_Click(int index);
    void cmdAbortIncr_Click(int part);

    const std::vector<OutputPin>& pins() const { return pins_; }
    std::string busName() const override { return {}; }
    std::string busAddress() const override { return {}; }

    /// A pin was driven: for the picture of the last edges. \param high the level from now on.
    struct Edge {
        int bit = 0;
        bool high = false;
        Milliseconds at{0}; ///< bench time
    };
    [[nodiscard]] Subscription observeEdges(std::function<void(const Edge&)> observer) {
        return edges_.connect(std::move(observer));
    }

  protected:
    PinPanel(PanelContext& context, std::string name, std::string title, BenchServices& services,
             PinPanelState& state, std::vector<OutputPin> pins);

    PinPanelState& state() const { return state_; }

    /// Changes bits without writing the ports: the caller writes once at the end.
    class Batch {
      public:
        explicit Batch(RunState& run) : run_(run), before_(std::exchange(run.PinBatch, true)) {}
        ~Batch() { run_.PinBatch = before_; }
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

      private:
        RunState& run_;
        bool before_;
    };

    virtual void afterPinWrite() {}
    void setBit(int bit, bool high) { ChOut[bit].setValue(high ? 1 : 0); }
    void writePorts() const { board().cmdWrtPipe1_Click(); }
    /// Waits with the window alive where the wait is long enough to be noticed.
    void waitLive(Milliseconds duration) const;
    /// Number of a field; another text becomes `fallback`, in the field too. A field holds milliseconds or
    /// steps.
    static int countOf(TextBox& field, int fallback);
    /// Samples the channel of a wiper. \param row of the motherboard's channel list.
    void sampleInto(Reading& volts, int row);

  private:
    std::vector<OutputPin> pins_;
    PinPanelState& state_;
    Signal<const Edge&> edges_;
};

} // namespace vrk
