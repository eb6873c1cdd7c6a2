#include "motherboard/frmMotherboardDAQ2.h"

#include "link/readings.h"

#include <array>

namespace vrk {

namespace {

constexpr std::array<const char*, 18> kChannels320 = {
    "00 - P1.0",      "01 - P1.1",      "02 - P1.2",      "03 - P1.3",      "04 - P1.4",        "05 - P1.5",
    "06 - P1.6 VIN0", "07 - P1.7 VIN1", "08 - P2.0 VIN2", "09 - P2.1 VIN3", "0A - P2.2 VIN4",   "0B - P2.3",
    "0C - P2.4",      "0D - P2.5",      "0E - P2.6",      "0F - P2.7",      "1E - Temp Sensor", "1F - VDD"};

constexpr std::array<const char*, 23> kChannels340 = {
    "00 - P2.0",      "01 - P2.1",      "02 - P2.2",      "03 - P2.3",        "04 - P2.5", "05 - P2.6",
    "06 - P3.0",      "07 - P3.1",      "08 - P3.4",      "09 - P3.5",        "0A - P3.7", "0B - P4.0 VIN4",
    "0C - P4.3 VIN0", "0D - P4.4 VIN1", "0E - P4.5 VIN2", "0F - P4.6 VIN3",   "10 - RSVD", "11 - P0.3",
    "12 - P0.4",      "13 - P1.1",      "14 - P1.2",      "1E - Temp Sensor", "1F - VDD"};

constexpr int kVin0Row = 6;
constexpr Milliseconds kSampleWait{100};

} // namespace

void frmMotherboardDAQ2::wireAnalog() {
    Combo1.setCaption("A/D Channel");
    txtADDec.setText("XXXX");
    for (TextBox* box : {&txtADDec, &txtRdgs[0], &txtGPIOUserName[0]})
        box->markUnread();
    lblVINP.setCaptions({"Vin0", "Vin1", "Vin2", "Vin3", "Vin4 VCC/2", "Proc-Temp", "Proc-VCC"});
    shpSample.setCaption("Sampling");
    shpSample.setVisible(false);
    cmdSetMode.setCaption("Update AD Channel");
    cmdSample.setCaption("Loop on Read A/D");
    cmdEndSampling.setCaption("Stop Sampling");
    cmdEndSampling.setEnabled(false);
    cmdReadAllAD.setCaption("Read All");
    Label9.setCaption("Trig to Read Delay Time mSec");
    CboIntTime.setToolTip("Sets the delay between KV8800 Samples. Only change when timer is stopped.");
    wireClick(Combo1, &frmMotherboardDAQ2::Combo1_Click);
    wireClick(cmdSetMode, &frmMotherboardDAQ2::cmdSetMode_Click);
    wireClick(cmdSample, &frmMotherboardDAQ2::cmdSample_Click);
    wireClick(cmdEndSampling, &frmMotherboardDAQ2::cmdEndSampling_Click);
    wireClick(cmdReadAllAD, &frmMotherboardDAQ2::cmdReadAllAD_Click);
    action("READ_AD", &frmMotherboardDAQ2::READ_AD);
}

void frmMotherboardDAQ2::fillChannels() {
    const bool board340 = uses_.analog.ProcessorID == 340;
    std::vector<RowControl::Row> rows;
    if (board340)
        for (const char* text : kChannels340)
            rows.push_back({text, 0});
    else
        for (const char* text : kChannels320)
            rows.push_back({text, 0});
    Combo1.setRows(std::move(rows));
    Combo1.setListIndex(board340 ? 11 : 10);
}

void frmMotherboardDAQ2::READ_AD() {
    // The board did not take the channel, or has forgotten it: any other one must not pass for it.
    if (console().connectedInput().empty())
        console().cmdMuxWrite_Click();
    console().chkADCEnable.setValue(1);
    console().cmdADCWrEn_Click();
    console().cmdADCRDData_Click();
    AnalogState& analog = uses_.analog;
    analog.ADHigh = uses_.link.reportBuffer[2];
    analog.ADLow = uses_.link.reportBuffer[3];
    const int code = analog.ADHigh * 256 + analog.ADLow;
    txtADDec.setText(decimalText(code));
    const double volts = throughText(analog.ADRef / 1023 * code);
    txtRdgs[0].setText(formatNumber(volts, "##.####"));
    analog.ADVolts = volts;
    analog.ADVolts2 = volts + volts;
    const bool good = console().replied() && !console().connectedInput().empty();
    markReading(txtADDec, good);
    markReading(txtRdgs[0], good);
}

bool frmMotherboardDAQ2::measured() const {
    const auto& worth = txtRdgs[0].freshness();
    return worth && worth->state == Freshness::State::Fresh;
}

void frmMotherboardDAQ2::Combo1_Click() {
    console().cboAnamux[0].setListIndex(Combo1.listIndex());
    console().cmdMuxWrite_Click();
    READ_AD();
}

void frmMotherboardDAQ2::cmdSetMode_Click() {
    console().cboAnamux[0].setListIndex(Combo1.listIndex());
    console().cboAnamux[1].setListIndex(uses_.analog.MuxGroundIndex);
    console().cmdMuxWrite_Click();
    READ_AD();
}

void frmMotherboardDAQ2::cmdReadAllAD_Click() {
    // One channel despite the caption, and twice the pin's volts.
    Combo1.setListIndex(kVin0Row);
    events().letEventsRun();
    READ_AD();
    READ_AD();
    txtGPIOUserName[0].setText(formatNumber(uses_.analog.ADVolts2, "#0.0000"));
    markReading(txtGPIOUserName[0], measured());
}

void frmMotherboardDAQ2::cmdSample_Click() {
    OnScopeExit afterFault([this] {
        cmdEndSampling.setEnabled(false);
        setButtonsEnabled(true);
    });
    // Before any event may close the console, or ask for the end: the loop has no other.
    uses_.analog.EndSampling = 0;
    cmdEndSampling.setEnabled(true);
    const Activity activity(context().activities, cmdSample.caption(),
                            [this] { uses_.analog.EndSampling = -1; });
    cmdDisableButtons_Click();
    cmdSample.setEnabled(false);
    shpSample.setVisible(true);
    while (uses_.analog.EndSampling != -1) {
        context().clock().sleep(kSampleWait);
        events().letEventsRun();
        READ_AD();
        shpSample.setColour(shpSample.colour() == Colour::Black ? Colour::LightGreen : Colour::Black);
        events().letEventsRun();
    }
    afterFault.dismiss();
    cmdEndSampling.setEnabled(false);
    cmdSample.setEnabled(true);
    cmdEnableBUttons_Click();
}

void frmMotherboardDAQ2::cmdEndSampling_Click() {
    uses_.analog.EndSampling = -1;
    events().letEventsRun();
}

} // namespace vrk
