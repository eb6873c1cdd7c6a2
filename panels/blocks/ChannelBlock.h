#pragma once

#include "panels/blocks/BenchServices.h"
#include "platform/controls/PanelBlock.h"
#include "platform/runtime/Signal.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// What the wiper actions of one panel have come to; outlives the panel, and scripts see it by name.
struct WiperState {
    /// Limit of every wiper value.
    int TapCount = 128;
    /// 1, 2 or 4, from the part selected.
    int channelCount = 1;
    /// Register of each wiper channel.
    CheckedArray<int, 11> ChanReg;
    /// Last value prepared for writing and last value read, in element 6.
    CheckedArray<int, 11> WiperWrite;
    CheckedArray<std::string, 11> WiperWriteHex;
    CheckedArray<int, 11> WiperRead;
    bool ListTouched = false;   ///< the user has scrolled a list
    bool SliderTouched = false; ///< a slider has moved
    bool SuppressTouch = false; ///< the program moves slider and list: that is no touch
    bool SliderDrag = false;    ///< the slider's mouse button is down, or its mouse-up action runs
    bool ListDrive = false;     ///< the list moves the slider
    bool HexPending = false;    ///< typed and not yet committed
    int HexPendingIndex = 0;
    bool DecPending = false;
    int DecPendingIndex = 0;
    bool EntryDone = false; ///< Enter was given; cleared by the focus of a value box
    /// Byte composed from the control register's options.
    int ACRImage = 0;
    std::uint8_t I2CWriteAddress = 0x50;
    std::uint8_t I2CReadAddress = 0x51;
};

/// \param panel the panel whose state it is.
void publish(SharedValues& values, WiperState& state, const std::string& panel);

/// The channels: how one wiper value travels from a slider, a list or a typed number to the part, and back to
/// the panel with its voltage. Panels differ in the exchange alone.
class ChannelBlock : public PanelBlock {
  public:
    static constexpr int kChannels = 4;
    /// The element of the wiper arrays that the panels use.
    static constexpr int kWiperElement = 6;

    ControlArray<Slider> Slider1{host(), "Slider1", 0, kChannels - 1};
    ControlArray<ListBox> List1{host(), "List1", 0, kChannels - 1};
    ControlArray<TextBox> txtDECDataWrt{host(), "txtDECDataWrt", 0, kChannels - 1};
    ControlArray<TextBox> txtHexDataWrt{host(), "txtHexDataWrt", 0, kChannels - 1};
    ControlArray<Button> CMDxMIT{host(), "CMDxMIT", 0, kChannels - 1};
    ControlArray<Button> cmdI2Read{host(), "cmdI2Read", 0, kChannels - 1};
    ControlArray<CheckBox> ChkAutoRead{host(), "ChkAutoRead", 0, kChannels - 1};
    ControlArray<ProgressBar> ProgressBar1{host(), "ProgressBar1", 0, kChannels - 1};
    ControlArray<Reading> lblPotRead{host(), "lblPotRead", 0, kChannels - 1};
    ControlArray<Reading> lblPotReadhex{host(), "lblPotReadhex", 0, kChannels - 1};
    ControlArray<Button> cmdSampleWiper{host(), "cmdSampleWiper", 0, kChannels - 1};
    ControlArray<Reading> lblWiperVolts{host(), "lblWiperVolts", 0, kChannels - 1};
    ControlArray<TextBox> txtFactor{host(), "txtFactor", 0, kChannels - 1};
    ControlArray<Label> lblChanSend{host(), "lblChanSend", 0, kChannels - 1};
    ControlArray<Label> lblChanRcvr{host(), "lblChanRcvr", 0, kChannels - 1};
    ControlArray<Frame> SSFrame3{host(), "SSFrame3", 0, kChannels - 1};
    ControlArray<Frame> SSFrame4{host(), "SSFrame4", 0, kChannels - 1};
    ControlArray<OptionButton> OptChans{host(), "OptChans", 0, 2};
    ControlArray<OptionButton> OptTaps{host(), "OptTaps", 0, 7};

    /// Of this panel alone.
    WiperState& wipers;

    /// One guarded write. An entry typed and not yet committed is committed first, which writes once more.
    void CMDxMIT_Click(int index);
    /// One guarded read, display and voltage.
    void cmdI2Read_Click(int index);
    void cmdSampleWiper_Click(int index);
    void ChkAutoRead_Click(int index);
    void List1_Click(int index);
    int txtHexDataWrt_KeyPress(int index, int key);
    int txtDECDataWrt_KeyPress(int index, int key);
    void OptChans_Click(int index);
    void OptTaps_Click(int index);

    /// Writes and reads back the positions `from`, `from` + `step` ... and `to`, downwards if `to` is below,
    /// so that the volts over the position can be seen. Ends at the first exchange that fails, or when
    /// aborted. \param step at least 1. \throws Fault if a position is outside 0 to the taps.
    void sweepWiper(int channel, int from, int to, int step);

    /// A position and its volts, both read just now: for pictures.
    struct Point {
        int channel = 0;
        int position = 0;
        double volts = 0; ///< after offset and gain
    };
    [[nodiscard]] Subscription observePoints(std::function<void(const Point&)> observer) {
        return points_.connect(std::move(observer));
    }
    /// The points of before belong to another part: the pictures begin anew.
    [[nodiscard]] Subscription observePointsGone(std::function<void()> observer) {
        return pointsGone_.connect(std::move(observer));
    }
    /// A write or read of the channel has come to its end, with its lamps set.
    enum class Transfer { Write, Read };
    struct Transferred {
        int channel = 0;
        Transfer kind = Transfer::Write;
        bool good = false;
    };
    [[nodiscard]] Subscription observeTransfers(std::function<void(const Transferred&)> observer) {
        return transfers_.connect(std::move(observer));
    }

  protected:
    /// \param alsoBusy the buttons that rest while a channel is at work, beside its own.
    ChannelBlock(Panel& panel, BenchServices& services, WiperState& state, std::vector<Control*> alsoBusy);

    // The exchange, which is the panel's.
    /// False where no exchange may begin; the user has been told then.
    virtual bool mayExchange() { return true; }
    /// Runs first in every read: what the part must be set to for it.
    virtual void beforeRead(int /*channel*/) {}
    /// Sends the channel's entry. \return true if the part took it; lamps and messages are the panel's.
    virtual bool writeWiper(int channel) = 0;
    /// Reads into WiperRead(6). \return nothing if the read failed: what WiperRead(6) then holds may be
    /// anything, and is shown but never taken for a reading.
    virtual std::optional<int> readWiper(int channel) = 0;
    /// What a write of the channel gives the part, in words: its entry, unless the frame holds less of it.
    virtual std::string sentText(int channel) const { return txtHexDataWrt[channel].text(); }
    /// Why the last exchange failed, in words.
    virtual std::string failureDetail() const = 0;
    /// What is shown of a value above the taps.
    virtual int shownPosition(int value) const = 0;
    /// Least digits of a position read, in hexadecimal.
    virtual int readDigits() const { return 2; }
    /// Measures the channel chosen on the motherboard: see SupplyBlock::measure().
    virtual void measureWiper(Reading& volts) = 0;
    /// Ahead of a loop that writes wipers `writes` times. \return false if the user would rather not.
    virtual bool mayLoop(int /*writes*/) { return true; }
    /// The part, its taps or channels were chosen anew.
    virtual void partChanged() {}

    /// The load's part of this block: flags, ranges and lists for the taps, channel 0 alone shown.
    void loadChannels();
    void numberChannels();
    void resetChannelRegisters();
    /// Channels in use.
    int shownChannels() const;
    /// Digits that an entry is filled up to.
    int wiperHexDigits() const { return wipers.TapCount > 256 ? 3 : 2; }
    /// Moves slider and list without counting as the user's hand.
    void moveControls(int index, int sliderValue);
    /// What was typed for one part must never be written to the next.
    void dropPending();
    void markChannelsStale(const std::string& cause);

  private:
    void wireChannel(int index);
    void fillLists();
    void clearTouched();
    void sliderMouseUp(int index);
    void takeTypedValue(int index);
    void tellRefused(const TextBox& entry, int value);
    void showWriteValue(int index, int value);
    void showPosition(int index, std::optional<int> read);
    /// "2.458 V", or that they could not be measured.
    std::string voltsText(int index) const;
    void transferred(int index, Transfer kind, bool good);
    DisabledWhile channelBusy(int index);
    bool sweepPosition(int channel, int position);

    BenchServices& services_;
    std::vector<Control*> alsoBusy_;
    bool sweeping_ = false;
    OptionGroup chansGroup_;
    OptionGroup tapsGroup_;
    Signal<const Point&> points_;
    Signal<> pointsGone_;
    Signal<const Transferred&> transfers_;
};

} // namespace vrk
