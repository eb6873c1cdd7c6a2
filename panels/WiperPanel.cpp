#include "panels/WiperPanel.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vrk {

namespace {

struct TapChoice {
    int taps;
    int tick;
};
constexpr std::array<TapChoice, 8> kTapChoices = {
    {{16, 1}, {32, 2}, {64, 4}, {100, 5}, {128, 8}, {256, 16}, {512, 32}, {1024, 64}}};
constexpr int kFirstWiperChannelRow = 6; ///< VIN0 on the channel list

} // namespace

WiperPanel::WiperPanel(PanelContext& context, std::string name, std::string title, Uses uses,
                       WiperState& state)
    : DevicePanel(context, std::move(name), std::move(title), std::move(uses)), wipers(state) {
    lblProduct.setCaption("Manual Setup");
    OptChans.setCaptions({"1", "2", "4"});
    OptTaps.setCaptions({"16", "32", "64", "100", "128", "256", "512", "1024"});
    for (auto& option : OptChans)
        option->join(chansGroup_);
    for (auto& option : OptTaps)
        option->join(tapsGroup_);
    OptChans[0].showSelected();
    OptTaps[4].showSelected();
    cmdACRRead.setCaption("Read");
    cmdACRWrite.setCaption("Write");
    cmdACRRead.setContainer(SSFrame2);
    cmdACRWrite.setContainer(SSFrame2);
    for (int index = 0; index < kChannels; ++index)
        wireChannel(index);
    wireClick(OptChans, &WiperPanel::OptChans_Click);
    wireClick(OptTaps, &WiperPanel::OptTaps_Click);
    wireClick(CMDxMIT, &WiperPanel::CMDxMIT_Click);
    wireClick(cmdI2Read, &WiperPanel::cmdI2Read_Click);
    wireClick(cmdSampleWiper, &WiperPanel::cmdSampleWiper_Click);
    wireClick(ChkAutoRead, &WiperPanel::ChkAutoRead_Click);
    wireClick(List1, &WiperPanel::List1_Click);
    action("txtHexDataWrt_KeyPress", &WiperPanel::txtHexDataWrt_KeyPress);
    action("txtDECDataWrt_KeyPress", &WiperPanel::txtDECDataWrt_KeyPress);
    action("Wrt_VRK", &WiperPanel::Wrt_VRK);
    action("Read_VRK", &WiperPanel::Read_VRK);
}

void WiperPanel::wireChannel(int index) {
    Slider& slider = Slider1[index];
    slider.setRange(1, wipers.TapCount);
    slider.setValue(1);
    slider.onChange([this] {
        if (!wipers.SuppressTouch)
            wipers.SliderTouched = true;
    });
    slider.onScroll([this] {
        wipers.SliderTouched = true;
        pump();
    });
    slider.onMouseDown([this] { wipers.SliderDrag = true; });
    slider.onMouseUp([this, index] { sliderMouseUp(index); });
    List1[index].onScroll([this] {
        if (!wipers.SuppressTouch)
            wipers.ListTouched = true;
    });
    txtDECDataWrt[index].setText("0000");
    txtDECDataWrt[index].setMaxLength(4);
    txtHexDataWrt[index].setText("000");
    txtHexDataWrt[index].setMaxLength(4);
    txtHexDataWrt[index].onKeyPress([this, index](int key) { return txtHexDataWrt_KeyPress(index, key); });
    txtDECDataWrt[index].onKeyPress([this, index](int key) { return txtDECDataWrt_KeyPress(index, key); });
    for (TextBox* box : {&txtHexDataWrt[index], &txtDECDataWrt[index]})
        box->onGotFocus([this] { wipers.EntryDone = false; });
    txtHexDataWrt[index].setCaption("Hex");
    txtDECDataWrt[index].setCaption("Dec");
    CMDxMIT[index].setCaption("Write");
    CMDxMIT[index].setToolTip("Executes a write transaction which sets the VRK's wiper position.");
    cmdI2Read[index].setCaption("Read");
    cmdI2Read[index].setToolTip("Executes an I2C read of the VRK's wiper position.");
    ChkAutoRead[index].setCaption("Auto Read");
    cmdSampleWiper[index].setCaption("Rd Volts");
    lblPotRead[index].setCaption("0000");
    lblPotReadhex[index].setCaption("000");
    lblWiperVolts[index].setCaption("0.000");
    txtFactor[index].setText("2.0");
    txtFactor[index].setCaption("AD Factor");
    for (Control* control :
         std::initializer_list<Control*>{&Slider1[index], &List1[index], &txtDECDataWrt[index],
                                         &txtHexDataWrt[index], &CMDxMIT[index], &lblChanSend[index]})
        control->setContainer(SSFrame3[index]);
    for (Control* control :
         std::initializer_list<Control*>{&cmdI2Read[index], &ChkAutoRead[index], &ProgressBar1[index],
                                         &lblPotRead[index], &lblPotReadhex[index], &cmdSampleWiper[index],
                                         &lblWiperVolts[index], &txtFactor[index], &lblChanRcvr[index]})
        control->setContainer(SSFrame4[index]);
}

void WiperPanel::loadChannels() {
    clearTouched();
    wipers.SuppressTouch = wipers.SliderDrag = wipers.ListDrive = wipers.HexPending = wipers.DecPending =
        wipers.EntryDone = false;
    for (int index = 0; index < kChannels; ++index) {
        ProgressBar1[index].setMaximum(wipers.TapCount);
        Slider1[index].setMaximum(wipers.TapCount);
    }
    wipers.channelCount = 1;
    resetChannelRegisters();
    OptChans_Click(0);
    fillLists();
}

void WiperPanel::numberChannels() {
    for (int index = 0; index < kChannels; ++index) {
        lblChanSend[index].setCaption(numberToText(index));
        lblChanRcvr[index].setCaption(numberToText(index));
    }
}

void WiperPanel::resetChannelRegisters() {
    for (int index = 0; index < kChannels; ++index)
        wipers.ChanReg[index] = index;
}

void WiperPanel::clearTouched() {
    wipers.ListTouched = false;
    wipers.SliderTouched = false;
}

void WiperPanel::fillLists() {
    // One row more than the taps: the highest row is out of the slider's reach.
    std::vector<RowControl::Row> rows;
    for (int value = 0; value <= wipers.TapCount; ++value)
        rows.push_back({decimalText(value), 0});
    for (auto& list : List1)
        list->setRows(rows);
}

void WiperPanel::moveControls(int index, int sliderValue) {
    const bool before = std::exchange(wipers.SuppressTouch, true);
    const OnScopeExit restore([this, before] { wipers.SuppressTouch = before; });
    clearTouched();
    Slider1[index].setValue(sliderValue);
    List1[index].setListIndex(Slider1[index].value() - 1);
}

void WiperPanel::OptChans_Click(int index) {
    const int shown = index == 0 ? 1 : index == 1 ? 2 : kChannels;
    for (int channel = 1; channel < kChannels; ++channel) {
        SSFrame3[channel].setVisible(channel < shown);
        SSFrame4[channel].setVisible(channel < shown);
    }
}

void WiperPanel::OptTaps_Click(int index) {
    if (index < 0 || index >= static_cast<int>(kTapChoices.size()))
        throw subscriptOutOfRange();
    const TapChoice& choice = kTapChoices.at(static_cast<std::size_t>(index));
    wipers.TapCount = choice.taps;
    const bool before = std::exchange(wipers.SuppressTouch, true);
    OnScopeExit restore([this, before] { wipers.SuppressTouch = before; });
    for (int channel = 0; channel < kChannels; ++channel) {
        ProgressBar1[channel].setMaximum(wipers.TapCount);
        ProgressBar1[channel].setValue(1);
        Slider1[channel].setMaximum(wipers.TapCount);
        Slider1[channel].setTickFrequency(choice.tick);
    }
    fillLists();
    const bool wide = wipers.TapCount > 256;
    for (int channel = 0; channel < kChannels; ++channel) {
        Slider1[channel].setValue(1);
        txtDECDataWrt[channel].setText(wide ? "0000" : "000");
        txtHexDataWrt[channel].setText(wide ? "000" : "00");
        lblPotRead[channel].setCaption(wide ? "----" : "---");
        lblPotReadhex[channel].setCaption(wide ? "---" : "--");
    }
    wipers.SuppressTouch = before;
    restore.dismiss();
    pump();
}

void WiperPanel::CMDxMIT_Click(int index) {
    DisabledWhile busy({&CMDxMIT[index], &cmdI2Read[index], &cmdACRWrite, &cmdACRRead});
    // Enter itself writes, so a pending entry gives one write from inside and a second from here.
    if (wipers.HexPending)
        txtHexDataWrt_KeyPress(wipers.HexPendingIndex, kEnterKey);
    if (wipers.DecPending)
        txtDECDataWrt_KeyPress(wipers.DecPendingIndex, kEnterKey);
    pump();
    setAddressBytes();
    Wrt_VRK(wipers.ChanReg[index]);
    pump();
    if (ChkAutoRead[index].checked()) {
        wait(Milliseconds{50});
        cmdI2Read_Click(index);
        pump();
    }
    pump();
    wait(Milliseconds{20});
    busy.release();
    pump();
}

void WiperPanel::cmdI2Read_Click(int index) {
    beforeRead(index);
    DisabledWhile busy({&CMDxMIT[index], &cmdI2Read[index], &cmdACRWrite, &cmdACRRead});
    pump();
    setAddressBytes();
    Read_VRK(wipers.ChanReg[index]);
    const int value = std::min(wipers.WiperRead[kWiperElement], wipers.TapCount);
    ProgressBar1[index].setValue(value);
    lblPotRead[index].setCaption(decimalText(value));
    lblPotReadhex[index].setCaption(hexText(value, 2));
    pump();
    cmdSampleWiper_Click(index);
    readings_.emit({index, value, leadingNumber(lblWiperVolts[index].caption())});
    pump();
    wait(Milliseconds{20});
    busy.release();
    pump();
}

void WiperPanel::cmdSampleWiper_Click(int index) {
    DisabledWhile busy({&cmdSampleWiper[index]});
    pump();
    board().Combo1.setListIndex(index + kFirstWiperChannelRow);
    pump();
    lblWiperVolts[index].setCaption(measure());
    wait(Milliseconds{50});
    busy.release();
    pump();
}

void WiperPanel::ChkAutoRead_Click(int index) {
    if (ChkAutoRead[index].checked())
        cmdI2Read_Click(index);
}

void WiperPanel::showWriteValue(int index, int value) {
    wipers.WiperWrite[kWiperElement] = value;
    wipers.WiperWriteHex[kWiperElement] = hexText(value, 2);
    txtHexDataWrt[index].setText(wipers.WiperWriteHex[kWiperElement]);
    txtDECDataWrt[index].setText(decimalText(value));
}

void WiperPanel::sliderMouseUp(int index) {
    if (!wipers.SliderTouched) {
        wipers.SliderDrag = false;
        return;
    }
    DisabledWhile busy({&Slider1[index]});
    const OnScopeExit dragOver([this] { wipers.SliderDrag = false; });
    pump();
    if (!wipers.ListDrive) {
        wipers.SliderDrag = true;
        List1[index].setListIndex(Slider1[index].value() - 1); // its click writes
        pump();
        showWriteValue(index, decimalInt(List1[index].text()));
        pump();
        pump();
        wipers.SliderDrag = false;
    }
    wait(Milliseconds{20});
    busy.release();
    wipers.SliderTouched = false;
    pump();
}

void WiperPanel::List1_Click(int index) {
    // A click without a scroll before it does nothing: the user scrolls to a row, then clicks it.
    if (!wipers.ListTouched && !wipers.SliderTouched)
        return;
    clearTouched();
    DisabledWhile busy({&List1[index]});
    pump();
    if (!wipers.SliderDrag) {
        wipers.ListDrive = true;
        const OnScopeExit driveOver([this] { wipers.ListDrive = false; });
        {
            // For the move alone: what the user does while events run counts.
            const bool before = std::exchange(wipers.SuppressTouch, true);
            const OnScopeExit restore([this, before] { wipers.SuppressTouch = before; });
            Slider1[index].setValue(List1[index].listIndex() + 1);
        }
        pump();
        pump();
    } else {
        List1[index].setListIndex(Slider1[index].value() - 1);
        pump();
    }
    int value = decimalInt(List1[index].text());
    if (value < 1 || value > 1024)
        value = 0;
    showWriteValue(index, value);
    pump();
    if (uses().link.BoardConnected)
        CMDxMIT_Click(index);
    pump();
    pump();
    wait(Milliseconds{20});
    busy.release();
}

void WiperPanel::takeTypedValue(int index) {
    wipers.WiperWrite[kWiperElement] = hexToInt(txtHexDataWrt[index].text());
    txtDECDataWrt[index].setText(decimalText(wipers.WiperWrite[kWiperElement]));
    moveControls(index, wipers.WiperWrite[kWiperElement] + 1);
    CMDxMIT_Click(index);
    pump();
}

int WiperPanel::txtHexDataWrt_KeyPress(int index, int key) {
    TextBox& box = txtHexDataWrt[index];
    wipers.DecPending = false;
    wipers.HexPending = true;
    wipers.HexPendingIndex = index;
    if (key != kEnterKey)
        return key; // deliberately unfiltered; Enter tidies the text
    wipers.EntryDone = true;
    wipers.HexPending = false;
    const std::string zero(static_cast<std::size_t>(wiperHexDigits()), '0');
    std::string text = upperCase(box.text());
    const int value = hexToInt(text);
    if (value <= 0 || value > wipers.TapCount)
        text = zero;
    if (text.size() < zero.size())
        text.insert(0, zero.size() - text.size(), '0');
    box.setText(text);
    takeTypedValue(index);
    return key;
}

int WiperPanel::txtDECDataWrt_KeyPress(int index, int key) {
    TextBox& box = txtDECDataWrt[index];
    wipers.HexPending = false;
    wipers.DecPending = true;
    wipers.DecPendingIndex = index;
    if (key != kEnterKey)
        return key;
    wipers.EntryDone = true;
    wipers.DecPending = false;
    box.setText(upperCase(box.text()));
    if (hexToInt(txtHexDataWrt[index].text()) == 0)
        txtHexDataWrt[index].setText("0");
    int value = decimalInt(box.text());
    if (value < 0 || value > wipers.TapCount) {
        value = 0;
        box.setText("0");
    }
    txtHexDataWrt[index].setText(hexText(value, 2));
    takeTypedValue(index);
    return key;
}

void WiperPanel::goodWrite() {
    Shape1[4].setColour(Colour::LightGreen);
    Shape1[1].blinkGood();
}

void WiperPanel::goodRead() {
    Shape1[2].blinkGood();
    Shape1[4].setColour(Colour::LightGreen);
}

} // namespace vrk
