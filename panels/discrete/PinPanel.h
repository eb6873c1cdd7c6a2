#pragma once

#include "panels/DevicePanel.h"

#include <string>
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

    const std::vector<OutputPin>& pins() const { return pins_; }
    std::string busName() const override { return {}; }
    std::string busAddress() const override { return {}; }
    /// Somebody else moves the part's pins, past this panel's boxes: the volts shown no longer hold.
    void pinsLent() { voltsStale("another panel drives the pins since"); }

  protected:
    PinPanel(PanelContext& context, std::string name, std::string title, BenchServices& services,
             PinPanelState& state, std::vector<OutputPin> pins);

    PinPanelState& state() const { return state_; }

    /// Changes bits without writing the ports: the caller writes once at the end.
    class Batch {
      public:
        explicit Batch(RunState& run) : run_(run) { run_.PinBatch = true; }
        ~Batch() { run_.PinBatch = false; }
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

      private:
        RunState& run_;
    };

    /// Controls that refuse while it exists; each gets back the state that it had.
    class Resting {
      public:
        explicit Resting(const std::vector<Control*>& controls) {
            for (Control* control : controls)
                if (control->enabled()) {
                    control->setEnabled(false);
                    taken_.push_back(control);
                }
        }
        ~Resting() {
            for (Control* control : taken_)
                control->setEnabled(true);
        }
        Resting(const Resting&) = delete;
        Resting& operator=(const Resting&) = delete;

      private:
        std::vector<Control*> taken_;
    };

    /// An action that moves pins over some time. The panel may be left in the midst of it: the pins are the
    /// next panel's then, which drives its part's address with them, and only the boxes follow the action.
    class PinsInHand {
      public:
        explicit PinsInHand(PinPanel& panel) : panel_(panel), outer_(panel.hadPins_) {
            panel_.hadPins_ = outer_ || panel_.services().ports.pinsOf == panel_.name();
        }
        ~PinsInHand() { panel_.hadPins_ = outer_; }
        PinsInHand(const PinsInHand&) = delete;
        PinsInHand& operator=(const PinsInHand&) = delete;

      private:
        PinPanel& panel_;
        bool outer_; ///< of the action that this one runs in
    };

    /// Whether the board has taken every edge since: a report that it did not take ends in no dialog.
    class Edges {
      public:
        explicit Edges(const modHID& link)
            : link_(link), retries_(link.retries()), refusals_(link.refusals()) {}
        bool whole() const { return link_.refusals() == refusals_ && link_.retries() == retries_; }

      private:
        const modHID& link_;
        unsigned retries_;
        unsigned refusals_;
    };

    /// An action that moves pins for a while: Esc and the band's Abort reach it, and it tells what it came
    /// to.
    class Run {
      public:
        Run(PinPanel& panel, const Button& pressed, const std::string& name);
        /// True once the user has asked it to stop, or VCC went off under it: a part without VCC takes no
        /// edge, and its pins must not be driven.
        bool stopped() const { return panel_.state_.IncrAbort || !panel_.services().vccOn(); }
        void progress(int done, int total) { activity_.progress(done, total); }
        /// The board has taken every edge so far.
        bool whole() const { return edges_.whole(); }
        /// \param detail behind the result. \param whole before the measurement, which is no edge. \param
        /// volts measured at the end.
        void tellEnd(const std::string& detail, bool whole, const Reading& volts) const;

      private:
        PinPanel& panel_;
        const Button& pressed_;
        Edges edges_;
        Activity activity_;
    };

    /// Every wire as its box says. Of two bits that share a pin the one of part #1 stands.
    void placePins() override;
    /// A button that is held is let go: nobody sees it any more.
    void beforeMenu() override { state_.IncrAbort = true; }
    virtual void afterPinWrite() {}
    virtual void voltsStale(const std::string& cause) = 0;
    void supplyChanged() override { voltsStale("the supply changed since"); }
    /// Two bits may share a pin: it takes the level that is asked for also where the bit's own box shows it
    /// already and the other one has moved the pin since.
    void setBit(int bit, bool high);
    void writePorts();
    void abortRun();
    /// Waits with the window alive where the wait is long enough to be noticed. An abort ends it: nobody
    /// waits out a period that was mistyped.
    void waitLive(Milliseconds duration) const;
    /// Number of a field; another text becomes `fallback`, in the field too. A field holds milliseconds or
    /// steps.
    static int countOf(TextBox& field, int fallback);
    /// Samples the channel of a wiper. \param row of the motherboard's channel list.
    void sampleInto(Reading& volts, int row);

  private:
    bool lostPins() const;

    std::vector<OutputPin> pins_;
    PinPanelState& state_;
    bool hadPins_ = false; ///< as the action under way began
};

} // namespace vrk
