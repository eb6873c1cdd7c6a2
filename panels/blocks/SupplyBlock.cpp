#include "panels/blocks/SupplyBlock.h"

#include "link/readings.h"
#include "platform/runtime/text.h"

namespace vrk {

namespace {
constexpr int kUserRow = 10;
/// VIN4 on the lists of the 320 board; the reading keeps the number on any other board.
constexpr int kVccSampleRow = 10;
constexpr Milliseconds kVccSettle{80};
} // namespace

SupplyBlock::SupplyBlock(Panel& panel, BenchServices& services) : PanelBlock(panel), services_(services) {
    OptVCC.setCaptions({"On", "Off"});
    OptVM.setCaptions({"On", "Off"});
    for (const int index : {0, 1}) {
        OptVCC[index].join(vccGroup_);
        OptVM[index].join(minusGroup_);
        OptVM[index].setEnabled(!services.supply.TrackOn);
    }
    OptVCC[1].showSelected();
    OptVM[1].showSelected();
    ChkTrack.setCaption("Track V+");
    ChkTrack.showValue(services.supply.TrackOn ? 1 : 0);
    ShpVCCon.setCaption("VCC");
    ShVM.setCaption("V-");
    CboVCC.setCaption("VCC");
    cmdUpdateVCC.setCaption("Update VCC");
    cmdReadVCC.setCaption("Sample VCC");
    lblVCCVolts.setCaption("0.00");
    lblSPICode.setCaption("5F");
    lblUserVCC.setCaption("User");
    txtUserVCC.setText("5F");
    txtUserVCC.setToolTip("Hex Programming Code (20-7F) Hex");
    txtADOffset.setText("0.00");
    txtADOffset.setCaption("Offset");
    txtADGain.setText("2.0");
    txtADGain.setCaption("Gain");

    bindClick(OptVCC, &SupplyBlock::OptVCC_Click);
    bindClick(OptVM, &SupplyBlock::OptVM_Click);
    bindClick(ChkTrack, &SupplyBlock::ChkTrack_Click);
    bindClick(CboVCC, &SupplyBlock::CboVCC_Click);
    bindClick(cmdUpdateVCC, &SupplyBlock::cmdUpdateVCC_Click);
    bindClick(cmdReadVCC, &SupplyBlock::cmdReadVCC_Click);
    CboVCC.onLostFocus([this] {
        showUserCode();
        txtUserVCC.setText(upperCase(txtUserVCC.text()));
    });
    // The range in its tool tip is not enforced.
    txtUserVCC.onLostFocus([this] { txtUserVCC.setText(upperCase(txtUserVCC.text())); });
    txtADOffset.onLostFocus([this] {
        if (!isNumeric(txtADOffset.text()))
            txtADOffset.setText("0.00");
    });
    txtADGain.onLostFocus([this] {
        if (!isNumeric(txtADGain.text()))
            txtADGain.setText("2.00");
    });
}

void SupplyBlock::OptVCC_Click(int index) {
    asked_ = index;
    disturbed_ = switching_ > 0;
    {
        ++switching_;
        const OnScopeExit over([this] { --switching_; });
        if (index == 0)
            services_.motherboard.prepareBoard();
        services_.motherboard.showSupplyState(index);
        lblVCCVolts.markStale("VCC was switched since");
        supplyChanged();
        afterVccSwitch();
        cmdUpdateVCC_Click();
    }
    if (switching_ > 0 || repeated())
        return; // the outermost tells, or the one that was repeated
    // The reply to the measurement is the one sign that the switch reached the board; one that was away and
    // came back under Retry answers too, without VCC.
    const std::string what = asked_ == 0 ? "VCC on" : "VCC off";
    const std::string volts = "measured " + lblVCCVolts.caption() + " V";
    if (const auto& worth = lblVCCVolts.freshness(); worth->state != Freshness::State::Fresh)
        host().tell(false, what + " not confirmed",
                    worth->failed ? "the measurement got no reply" : worth->cause, &lblVCCVolts);
    else if (!OptVCC[asked_].value())
        host().tell(false, what + " did not last", "the board has it the other way, " + volts, &lblVCCVolts);
    else
        host().tell(true, what, volts);
}

bool SupplyBlock::repeated() {
    frmMotherboardDAQ2& board = services_.board();
    auto* active = dynamic_cast<SupplyPanel*>(services_.link.activePanel);
    const OptionButton* on = active == nullptr ? nullptr : active->vccOption(0);
    if (on == nullptr || lblVCCVolts.freshness()->failed)
        return false; // nobody has the switch, or nobody knows how it stands
    const auto pins = board.supplyPins();
    if (!pins)
        return false;
    const bool mine = on == &OptVCC[0]; // else another panel has been opened meanwhile
    const int wanted = mine ? asked_ : on->value() ? 0 : 1;
    const int pin = pins->vcc ? 0 : 1;
    const bool fresh = lblVCCVolts.freshness()->state == Freshness::State::Fresh;
    if (mine && !disturbed_ && fresh && wanted == pin && board.OptVCC[pin].value() && OptVCC[pin].value())
        return false;
    board.takeSupplyPins(*pins);
    board.showSuppliesOn(*active);
    // A board that came back without VCC stays so until the user switches it on.
    if (wanted == pin || again_ || (wanted == 0 && mine && !disturbed_))
        return !mine;
    again_ = true;
    const OnScopeExit over([this] { again_ = false; });
    active->vccOption(wanted)->setValue(true);
    return true;
}

void SupplyBlock::OptVM_Click(int index) {
    if (index == 0) {
        ShVM.setColour(Colour::LightRed);
        services_.board().OptVCCMinus[0].setValue(true);
    } else if (index == 1) {
        services_.board().OptVCCMinus[1].setValue(true);
        ShVM.setColour(Colour::Black);
    }
    host().pump();
}

void SupplyBlock::ChkTrack_Click() {
    frmMotherboardDAQ2& board = services_.board();
    if (ChkTrack.value() == 1) {
        services_.supply.TrackOn = true;
        board.ChkTrack.setValue(1);
        for (auto& option : OptVM)
            option->setEnabled(false);
        for (const int state : {0, 1})
            if (OptVCC[state].value()) {
                OptVM[state].setValue(true);
                OptVCC_Click(state);
            }
        // VCC stands already, so nothing was switched, whatever the panel shows now.
        const bool minus = board.chkPData[frmMotherboardDAQ2::kPinMinus].checked();
        if (minus != OptVM[0].value())
            host().tell(false, minus ? "V- is still on" : "V- is still off",
                        "Track takes it along when VCC is switched next", &ShVM);
    } else {
        board.ChkTrack.setValue(0);
        services_.supply.TrackOn = false;
        for (auto& option : OptVM)
            option->setEnabled(true);
    }
    host().pump();
}

void SupplyBlock::CboVCC_Click() {
    showUserCode();
}

void SupplyBlock::showUserCode() {
    const bool user = CboVCC.listIndex() == kUserRow;
    txtUserVCC.setVisible(user);
    lblUserVCC.setVisible(user);
}

void SupplyBlock::cmdUpdateVCC_Click() {
    DisabledWhile busy({&cmdUpdateVCC});
    host().pump();
    frmMotherboardDAQ2& board = services_.board();
    const std::string before = lblSPICode.caption();
    // No list of today has a row 10; the branch is for one that offers a code of the user's own.
    if (CboVCC.listIndex() != kUserRow) {
        lblSPICode.setCaption(services_.supply.VCCHex[CboVCC.listIndex()]);
        board.txtSPIwr[7].setText(lblSPICode.caption());
        txtUserVCC.setText(lblSPICode.caption());
    } else {
        lblSPICode.setCaption(txtUserVCC.text());
        board.txtSPIwr[7].setText(txtUserVCC.text());
    }
    if (lblSPICode.caption() != before)
        supplyChanged();
    board.cmdSPIWrite2_Click();
    host().pump();
    measureVcc(services_.analog.MuxVCCIndex);
    busy.release();
    host().pump();
}

void SupplyBlock::cmdReadVCC_Click() {
    DisabledWhile busy({&cmdReadVCC});
    measureVcc(kVccSampleRow);
    busy.release();
    host().pump();
}

void SupplyBlock::measureVcc(int row) {
    services_.board().Combo1.setListIndex(row);
    host().pump();
    measure(lblVCCVolts);
    host().pump();
    host().wait(kVccSettle);
}

void SupplyBlock::measure(Reading& volts) {
    services_.board().READ_AD();
    services_.board().READ_AD();
    services_.analog.ADVolts += leadingNumber(txtADOffset.text());
    volts.setCaption(formatNumber(services_.analog.ADVolts * leadingNumber(txtADGain.text()), "#0.000"));
    markReading(volts, services_.board().measured());
}

} // namespace vrk
