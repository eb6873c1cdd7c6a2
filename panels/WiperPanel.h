#pragma once

#include "motherboard/boardState.h"
#include "panels/DevicePanel.h"

namespace vrk {

/// What the wiper actions of one bus have come to; outlives the panel, and scripts see it by name.
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

/// The channel blocks: how one wiper value travels from a slider, a list or a typed number to the part, and
/// back to the panel with its voltage. I2C and SPI panels differ in the exchange alone.
class WiperPanel : public DevicePanel {
  public:
    static constexpr int kChannels = 4;

    // Channels
    ControlArray<Slider> Slider1{*this, "Slider1", 0, kChannels - 1};
    ControlArray<ListBox> List1{*this, "List1", 0, kChannels - 1};
    ControlArray<TextBox> txtDECDataWrt{*this, "txtDECDataWrt", 0, kChannels - 1};
    ControlArray<TextBox> txtHexDataWrt{*this, "txtHexDataWrt", 0, kChannels - 1};
    ControlArray<Button> CMDxMIT{*this, "CMDxMIT", 0, kChannels - 1};
    ControlArray<Button> cmdI2Read{*this, "cmdI2Read", 0, kChannels - 1};
    ControlArray<CheckBox> ChkAutoRead{*this, "ChkAutoRead", 0, kChannels - 1};
    ControlArray<ProgressBar> ProgressBar1{*this, "ProgressBar1", 0, kChannels - 1};
    ControlArray<Label> lblPotRead{*this, "lblPotRead", 0, kChannels - 1};
    ControlArray<Label> lblPotReadhex{*this, "lblPotReadhex", 0, kChannels - 1};
    ControlArray<Button> cmdSampleWiper{*this, "cmdSampleWiper", 0, kChannels - 1};
    ControlArray<Label> lblWiperVolts{*this, "lblWiperVolts", 0, kChannels - 1};
    ControlArray<TextBox> txtFactor{*this, "txtFactor", 0, kChannels - 1};
    ControlArray<Label> lblChanSend{*this, "lblChanSend", 0, kChannels - 1};
    ControlArray<Label> lblChanRcvr{*this, "lblChanRcvr", 0, kChannels - 1};
    ControlArray<Frame> SSFrame3{*this, "SSFrame3", 0, kChannels - 1};
    ControlArray<Frame> SSFrame4{*this, "SSFrame4", 0, kChannels - 1};

    // Set-up
    Label lblProduct{*this, "lblProduct"};
    ControlArray<OptionButton> OptChans{*this, "OptChans", 0, 2};
    ControlArray<OptionButton> OptTaps{*this, "OptTaps", 0, 7};

    // Control register, shared by both buses
    Frame SSFrame2{*this, "SSFrame2"};
    Button cmdACRRead{*this, "cmdACRRead"};
    Button cmdACRWrite{*this, "cmdACRWrite"};

    /// Of this panel's bus.
    WiperState& wipers;
    static constexpr int kWiperElement = 6;

    /// One write or read of the register `reg`, which is the channel's field index too. Lamps and a message
    /// tell the outcome.
    virtual void Wrt_VRK(int reg) = 0;
    virtual void Read_VRK(int reg) = 0;

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

    /// A channel's position or volts have been read: for pictures.
    struct Reading {
        int channel = 0;
        int position = 0;
        double volts = 0; ///< after offset and gain
    };
    [[nodiscard]] Subscription observeReadings(std::function<void(const Reading&)> observer) {
        return readings_.connect(std::move(observer));
    }

    std::string partText() const override { return lblProduct.caption(); }

  protected:
    WiperPanel(PanelContext& context, std::string name, std::string title, Uses uses, WiperState& state);

    /// The load's part of this block: flags, ranges and lists for the taps, channel 0 alone shown.
    void loadChannels();
    void numberChannels();
    void fillLists();
    void resetChannelRegisters();
    /// Runs before each exchange of a wiper.
    virtual void setAddressBytes() {}
    virtual void beforeRead(int /*index*/) {}
    bool productStarts(std::string_view start) const { return startsWith(lblProduct.caption(), start); }
    /// Moves slider and list without counting as the user's hand.
    void moveControls(int index, int sliderValue);
    void clearTouched();
    int wiperHexDigits() const { return wipers.TapCount > 256 ? 3 : 2; }

    void goodWrite();
    void goodRead();

  private:
    void wireChannel(int index);
    void sliderMouseUp(int index);
    void takeTypedValue(int index);
    void showWriteValue(int index, int value);

    OptionGroup chansGroup_;
    OptionGroup tapsGroup_;
    Signal<const Reading&> readings_;
};

} // namespace vrk
