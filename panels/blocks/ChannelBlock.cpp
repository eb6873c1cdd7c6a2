#include "panels/blocks/ChannelBlock.h"

#include "link/readings.h"
#include "panels/blocks/choices.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {

constexpr int kFirstWiperChannelRow = 6; ///< VIN0 on the channel list

} // namespace

void publish(SharedValues& values, WiperState& state, const std::string& panel) {
    values.scalar("TapCount", state.TapCount, panel);
    values.scalar("channelCount", state.channelCount, panel);
    values.array("ChanReg", state.ChanReg, panel);
    values.array("WiperWrite", state.WiperWrite, panel);
    values.array("WiperWriteHex", state.WiperWriteHex, panel);
    values.array("WiperRead", state.WiperRead, panel);
    values.scalar("ListTouched", state.ListTouched, panel);
    values.scalar("SliderTouched", state.SliderTouched, panel);
    values.scalar("SuppressTouch", state.SuppressTouch, panel);
    values.scalar("SliderDrag", state.SliderDrag, panel);
    values.scalar("ListDrive", state.ListDrive, panel);
    values.scalar("HexPending", state.HexPending, panel);
    values.scalar("HexPendingIndex", state.HexPendingIndex, panel);
    values.scalar("DecPending", state.DecPending, panel);
    values.scalar("DecPendingIndex", state.DecPendingIndex, panel);
    values.scalar("EntryDone", state.EntryDone, panel);
    values.scalar("ACRImage", state.ACRImage, panel);
    values.scalar("I2CWriteAddress", state.I2CWriteAddress, panel);
    values.scalar("I2CReadAddress", state.I2CReadAddress, panel);
}

ChannelBlock::ChannelBlock(Panel& panel, BenchServices& services, WiperState& state,
                           std::vector<Control*> alsoBusy)
    : PanelBlock(panel), wipers(state), services_(services), alsoBusy_(std::move(alsoBusy)) {
    OptTaps.setCaptions({"16", "32", "64", "100", "128", "256", "512", "1024"});
    for (auto& option : OptChans)
        option->join(chansGroup_);
    for (auto& option : OptTaps)
        option->join(tapsGroup_);
    OptChans[0].showSelected();
    OptTaps[4].showSelected();
    for (int index = 0; index < kChannels; ++index)
        wireChannel(index);
    bindClick(OptChans, &ChannelBlock::OptChans_Click);
    bindClick(OptTaps, &ChannelBlock::OptTaps_Click);
    bindClick(CMDxMIT, &ChannelBlock::CMDxMIT_Click);
    bindClick(cmdI2Read, &ChannelBlock::cmdI2Read_Click);
    bindClick(cmdSampleWiper, &ChannelBlock::cmdSampleWiper_Click);
    bindClick(ChkAutoRead, &ChannelBlock::ChkAutoRead_Click);
    bindClick(List1, &ChannelBlock::List1_Click);
    bindAction("txtHexDataWrt_KeyPress", &ChannelBlock::txtHexDataWrt_KeyPress);
    bindAction("txtDECDataWrt_KeyPress", &ChannelBlock::txtDECDataWrt_KeyPress);
    bindAction("sweepWiper", &ChannelBlock::sweepWiper);
}

void ChannelBlock::wireChannel(int index) {
    Slider& slider = Slider1[index];
    slider.setRange(1, wipers.TapCount);
    slider.setValue(1);
    slider.onChange([this] {
        if (!wipers.SuppressTouch)
            wipers.SliderTouched = true;
    });
    slider.onScroll([this] {
        wipers.SliderTouched = true;
        host().pump();
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

void ChannelBlock::loadChannels() {
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

void ChannelBlock::numberChannels() {
    for (int index = 0; index < kChannels; ++index) {
        lblChanSend[index].setCaption(numberToText(index));
        lblChanRcvr[index].setCaption(numberToText(index));
    }
}

int ChannelBlock::shownChannels() const {
    return static_cast<int>(
        std::count_if(SSFrame3.begin(), SSFrame3.end(), [](const auto& frame) { return frame->visible(); }));
}

void ChannelBlock::resetChannelRegisters() {
    for (int index = 0; index < kChannels; ++index)
        wipers.ChanReg[index] = index;
}

void ChannelBlock::clearTouched() {
    wipers.ListTouched = false;
    wipers.SliderTouched = false;
}

void ChannelBlock::fillLists() {
    // One row more than the taps: the highest row is out of the slider's reach.
    std::vector<RowControl::Row> rows;
    for (int value = 0; value <= wipers.TapCount; ++value)
        rows.push_back({decimalText(value), 0});
    for (auto& list : List1)
        list->setRows(rows);
}

void ChannelBlock::moveControls(int index, int sliderValue) {
    const bool before = std::exchange(wipers.SuppressTouch, true);
    const OnScopeExit restore([this, before] { wipers.SuppressTouch = before; });
    clearTouched();
    Slider1[index].setValue(sliderValue);
    List1[index].setListIndex(Slider1[index].value() - 1);
}

void ChannelBlock::OptChans_Click(int index) {
    dropPending();
    if (index < 0 || index >= OptChans.count())
        throw subscriptOutOfRange();
    const int shown = kChannelChoices.at(static_cast<std::size_t>(index));
    for (int channel = 1; channel < kChannels; ++channel) {
        SSFrame3[channel].setVisible(channel < shown);
        SSFrame4[channel].setVisible(channel < shown);
    }
}

void ChannelBlock::OptTaps_Click(int index) {
    if (index < 0 || index >= static_cast<int>(kTapChoices.size()))
        throw subscriptOutOfRange();
    dropPending();
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
        lblPotRead[channel].showUnread(wide ? "----" : "---");
        lblPotReadhex[channel].showUnread(wide ? "---" : "--");
        lblWiperVolts[channel].markStale("the part or its taps were chosen since");
    }
    pointsGone_.emit();
    partChanged();
    wipers.SuppressTouch = before;
    restore.dismiss();
    host().pump();
}

DisabledWhile ChannelBlock::channelBusy(int index) {
    if (sweeping_)
        return DisabledWhile({}); // they rest until the sweep has ended
    std::vector<Control*> busy{&CMDxMIT[index], &cmdI2Read[index]};
    busy.insert(busy.end(), alsoBusy_.begin(), alsoBusy_.end());
    return DisabledWhile(std::move(busy));
}

void ChannelBlock::CMDxMIT_Click(int index) {
    if (!mayExchange())
        return;
    DisabledWhile busy = channelBusy(index);
    // Enter itself writes, so a pending entry gives one write from inside and a second from here.
    if (wipers.HexPending)
        txtHexDataWrt_KeyPress(wipers.HexPendingIndex, kEnterKey);
    if (wipers.DecPending)
        txtDECDataWrt_KeyPress(wipers.DecPendingIndex, kEnterKey);
    host().pump();
    const std::string sent = sentText(index);
    const bool good = writeWiper(index);
    lblWiperVolts[index].markStale("the wiper was written since");
    transferred(index, Transfer::Write, good);
    host().pump();
    std::string detail;
    bool told = !good;
    if (ChkAutoRead[index].checked()) {
        host().wait(Milliseconds{50});
        cmdI2Read_Click(index);
        host().pump();
        detail = "read back " + lblPotReadhex[index].caption() + ", " + voltsText(index);
        told = told || lblPotReadhex[index].freshness()->state != Freshness::State::Fresh;
    }
    if (!told)
        host().tell(true, "Wrote " + sent + " to wiper " + decimalText(index), detail, &txtHexDataWrt[index]);
    host().pump();
    host().wait(Milliseconds{20});
    busy.release();
    host().pump();
}

void ChannelBlock::transferred(int index, Transfer kind, bool good) {
    transfers_.emit({index, kind, good});
    if (good)
        return;
    const bool write = kind == Transfer::Write;
    Control& field = write ? static_cast<Control&>(CMDxMIT[index]) : lblPotRead[index];
    host().tell(false,
                std::string(write ? "Write of" : "Read of") + " channel " + decimalText(index) + " failed",
                failureDetail(), &field);
}

void ChannelBlock::showPosition(int index, std::optional<int> read) {
    const int value = shownPosition(wipers.WiperRead[kWiperElement]);
    ProgressBar1[index].setValue(std::min(value, wipers.TapCount));
    lblPotRead[index].setCaption(decimalText(value));
    lblPotReadhex[index].setCaption(hexText(value, readDigits()));
    for (Reading* shown : {&lblPotRead[index], &lblPotReadhex[index]})
        markReading(*shown, read.has_value());
}

std::string ChannelBlock::voltsText(int index) const {
    const Reading& volts = lblWiperVolts[index];
    return volts.freshness()->state == Freshness::State::Fresh ? volts.caption() + " V"
                                                               : "volts not measured";
}

void ChannelBlock::cmdI2Read_Click(int index) {
    beforeRead(index);
    if (!mayExchange())
        return;
    DisabledWhile busy = channelBusy(index);
    host().pump();
    const std::optional<int> read = readWiper(index);
    showPosition(index, read);
    transferred(index, Transfer::Read, read.has_value());
    host().pump();
    cmdSampleWiper_Click(index);
    const Reading& volts = lblWiperVolts[index];
    if (read) {
        if (volts.freshness()->state == Freshness::State::Fresh)
            points_.emit({index, shownPosition(*read), leadingNumber(volts.caption())});
        host().tell(true, "Read " + lblPotReadhex[index].caption() + " from wiper " + decimalText(index),
                    voltsText(index), &lblPotRead[index]);
    }
    host().pump();
    host().wait(Milliseconds{20});
    busy.release();
    host().pump();
}

void ChannelBlock::cmdSampleWiper_Click(int index) {
    DisabledWhile busy({&cmdSampleWiper[index]});
    host().pump();
    services_.board().Combo1.setListIndex(index + kFirstWiperChannelRow);
    host().pump();
    measureWiper(lblWiperVolts[index]);
    host().wait(Milliseconds{50});
    busy.release();
    host().pump();
}

void ChannelBlock::ChkAutoRead_Click(int index) {
    if (ChkAutoRead[index].checked())
        cmdI2Read_Click(index);
}

void ChannelBlock::showWriteValue(int index, int value) {
    wipers.WiperWrite[kWiperElement] = value;
    wipers.WiperWriteHex[kWiperElement] = hexText(value, 2);
    txtHexDataWrt[index].setText(wipers.WiperWriteHex[kWiperElement]);
    txtDECDataWrt[index].setText(decimalText(value));
}

void ChannelBlock::sliderMouseUp(int index) {
    if (!wipers.SliderTouched) {
        wipers.SliderDrag = false;
        return;
    }
    DisabledWhile busy({&Slider1[index]});
    const OnScopeExit dragOver([this] { wipers.SliderDrag = false; });
    host().pump();
    if (!wipers.ListDrive) {
        wipers.SliderDrag = true;
        List1[index].setListIndex(Slider1[index].value() - 1); // its click writes
        host().pump();
        showWriteValue(index, decimalInt(List1[index].text()));
        host().pump();
        host().pump();
        wipers.SliderDrag = false;
    }
    host().wait(Milliseconds{20});
    busy.release();
    wipers.SliderTouched = false;
    host().pump();
}

void ChannelBlock::List1_Click(int index) {
    // A click without a scroll before it does nothing: the user scrolls to a row, then clicks it.
    if (!wipers.ListTouched && !wipers.SliderTouched)
        return;
    clearTouched();
    DisabledWhile busy({&List1[index]});
    host().pump();
    if (!wipers.SliderDrag) {
        wipers.ListDrive = true;
        const OnScopeExit driveOver([this] { wipers.ListDrive = false; });
        {
            // For the move alone: what the user does while events run counts.
            const bool before = std::exchange(wipers.SuppressTouch, true);
            const OnScopeExit restore([this, before] { wipers.SuppressTouch = before; });
            Slider1[index].setValue(List1[index].listIndex() + 1);
        }
        host().pump();
        host().pump();
    } else {
        List1[index].setListIndex(Slider1[index].value() - 1);
        host().pump();
    }
    int value = decimalInt(List1[index].text());
    if (value < 1 || value > 1024)
        value = 0;
    showWriteValue(index, value);
    host().pump();
    if (services_.link.BoardConnected)
        CMDxMIT_Click(index);
    host().pump();
    host().pump();
    host().wait(Milliseconds{20});
    busy.release();
}

void ChannelBlock::takeTypedValue(int index) {
    wipers.WiperWrite[kWiperElement] = hexToInt(txtHexDataWrt[index].text());
    txtDECDataWrt[index].setText(decimalText(wipers.WiperWrite[kWiperElement]));
    moveControls(index, wipers.WiperWrite[kWiperElement] + 1);
    CMDxMIT_Click(index);
    host().pump();
}

void ChannelBlock::tellRefused(const TextBox& entry, int value) {
    if (value == 0)
        return; // 0 itself, or no number, which stands for 0
    host().tell(false,
                "\"" + entry.text() + "\" is outside 0 to " + decimalText(wipers.TapCount) + ": 0 is written",
                {}, &entry);
}

int ChannelBlock::txtHexDataWrt_KeyPress(int index, int key) {
    TextBox& box = txtHexDataWrt[index];
    wipers.DecPending = false;
    wipers.HexPending = true;
    wipers.HexPendingIndex = index;
    if (key != kEnterKey)
        return key; // not filtered: Enter tidies the text
    wipers.EntryDone = true;
    wipers.HexPending = false;
    const std::string zero(static_cast<std::size_t>(wiperHexDigits()), '0');
    std::string text = upperCase(box.text());
    const int value = hexToInt(text);
    if (value <= 0 || value > wipers.TapCount) {
        tellRefused(box, value);
        text = zero;
    }
    if (text.size() < zero.size())
        text.insert(0, zero.size() - text.size(), '0');
    box.setText(text);
    takeTypedValue(index);
    return key;
}

int ChannelBlock::txtDECDataWrt_KeyPress(int index, int key) {
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
        tellRefused(box, value);
        value = 0;
        box.setText("0");
    }
    txtHexDataWrt[index].setText(hexText(value, 2));
    takeTypedValue(index);
    return key;
}

void ChannelBlock::dropPending() {
    wipers.HexPending = false;
    wipers.DecPending = false;
}

void ChannelBlock::markChannelsStale(const std::string& cause) {
    for (int channel = 0; channel < kChannels; ++channel)
        for (Reading* shown : {&lblPotRead[channel], &lblPotReadhex[channel], &lblWiperVolts[channel]})
            shown->markStale(cause);
}

} // namespace vrk
