#include "link/frmMainF340.h"

#include "link/pinNames.h"
#include "link/readings.h"

#include <array>
#include <cmath>
#include <string_view>

namespace vrk {

using report::Command;

namespace {

/// Inputs of the 340 board, positive and negative alike up to the last two.
constexpr std::array<std::string_view, 21> kInputs340 = {
    "00 - P2.0", "01 - P2.1", "02 - P2.2", "03 - P2.3", "04 - P2.5", "05 - P2.6", "06 - P3.0",
    "07 - P3.1", "08 - P3.4", "09 - P3.5", "0A - P3.7", "0B - P4.0", "0C - P4.3", "0D - P4.4",
    "0E - P4.5", "0F - P4.6", "10 - RSVD", "11 - P0.3", "12 - P0.4", "13 - P1.1", "14 - P1.2"};

} // namespace

void frmMainF340::wireAdc() {
    cboAnamux[0].setCaption("+ Input");
    cboAnamux[1].setCaption("- Input");
    cboADCReadMode[0].setCaption("Read Mode");
    cboADCReadMode[1].setCaption("Sample Mode");
    for (auto& field : txtModeByte)
        field->setText("XX");
    lblBytesSucceded.setCaption("--");
    txtADDec.setText("xxxx");
    chkADCEnable.setCaption("Enable");
    OptiADCSamples.setCaptions({"Single", "Cont."});
    for (auto& option : OptiADCSamples)
        option->join(sampleGroup_);
    OptiADCSamples[0].setValue(true);
    txtADCLoopCount.setText("10");
    decimalField(txtADCLoopCount, 255, false);
    for (auto& field : txtADSAMP) {
        field->setText("00");
        field->setMaxLength(2);
        hexField(*field, false);
    }
    txtADOSC.setText("38");
    txtADOSC.setMaxLength(2);
    hexField(txtADOSC, false);
    for (auto* labels : {&lblADMuxData, &lblADCRefcon, &lblADCClockDaa, &lblADCMode1Data, &lblADCLoopData,
                         &lblADCSampleData, &lblADCEnable, &lblAdRcv})
        for (auto& label : *labels)
            label->setCaption("--");
    txtADCReg[0].setText("84");
    txtADCReg[1].setText("02");
    txtADCDelay[0].setText("01");
    for (TextBox* field : {&txtADCReg[0], &txtADCReg[1], &txtADCDelay[0]}) {
        field->setMaxLength(2);
        hexField(*field, false);
    }
    lblADRegRead.setCaption("--");
    lblADDecimal[1].setCaption("--");
    lbl_ADReal.setCaption("--");
    cmdMuxWrite.setCaption("ADC Mux Select 12");
    cmdRdADMux.setCaption("Read Mux");
    cmdADCWrEn.setCaption("ADC Enable 16");
    cmdADCRDEnable.setCaption("Read Enable");
    cmdADCRDData.setCaption("Read ADC");
    cmdWriteADCClock.setCaption("ADC Clock 10");
    cmdReadADCClock.setCaption("Read Clock");
    cmdADCWrmode1.setCaption("ADC Mode 13");
    cmdADCRDMode16.setCaption("Read Mode");
    cmdWrtLoopCount.setCaption("ADC Avg Loop Count 14");
    cmdRdADCAvg.setCaption("Read Loop Count");
    cmdADCWriteSampleRate.setCaption("ADC Sample Rate 15");
    cmdADCRdSampleRate.setCaption("Read Sample Rate");
    cmdRdADCMode.setCaption("Read REFCON");
    cmdWrADCMode.setCaption("ADC Mode 11");
    cmdInitADCIO.setCaption("Init External ADC");
    cmdWrtADReg.setCaption("Write Register");
    cmdRD7150.setCaption("Read External ADC");

    wireClick(cmdMuxWrite, &frmMainF340::cmdMuxWrite_Click);
    wireClick(cmdRdADMux, &frmMainF340::cmdRdADMux_Click);
    wireClick(cmdADCWrEn, &frmMainF340::cmdADCWrEn_Click);
    wireClick(cmdADCRDEnable, &frmMainF340::cmdADCRDEnable_Click);
    wireClick(cmdADCRDData, &frmMainF340::cmdADCRDData_Click);
    wireClick(cmdWriteADCClock, &frmMainF340::cmdWriteADCClock_Click);
    wireClick(cmdReadADCClock, &frmMainF340::cmdReadADCClock_Click);
    wireClick(cmdADCWrmode1, &frmMainF340::cmdADCWrmode1_Click);
    wireClick(cmdADCRDMode16, &frmMainF340::cmdADCRDMode16_Click);
    wireClick(cmdWrtLoopCount, &frmMainF340::cmdWrtLoopCount_Click);
    wireClick(cmdRdADCAvg, &frmMainF340::cmdRdADCAvg_Click);
    wireClick(cmdADCWriteSampleRate, &frmMainF340::cmdADCWriteSampleRate_Click);
    wireClick(cmdADCRdSampleRate, &frmMainF340::cmdADCRdSampleRate_Click);
    wireClick(cmdRdADCMode, &frmMainF340::cmdRdADCMode_Click);
    wireClick(cmdWrADCMode, &frmMainF340::cmdWrADCMode_Click);
    wireClick(cmdInitADCIO, &frmMainF340::cmdInitADCIO_Click);
    wireClick(cmdWrtADReg, &frmMainF340::cmdWrtADReg_Click);
    wireClick(cmdRD7150, &frmMainF340::cmdRD7150_Click);
}

void frmMainF340::fillMuxLists() {
    const bool board340 = uses_.analog.ProcessorID == 340;
    std::vector<RowControl::Row> pins;
    if (board340) {
        for (const std::string_view text : kInputs340)
            pins.push_back({std::string(text), 0});
    } else {
        for (int code = 0; code < 16; ++code)
            pins.push_back(
                {hexText(code, 2) + " - P" + decimalText(1 + code / 8) + "." + decimalText(code % 8), 0});
    }
    auto positive = pins;
    positive.push_back({"1E - Temp Sensor", 0});
    positive.push_back({"1F - VDD", 0});
    auto negative = pins;
    negative.push_back({"1E - VREF", 0});
    negative.push_back({"1F - GND", 0});
    cboAnamux[0].setRows(std::move(positive));
    cboAnamux[1].setRows(std::move(negative));
    uses_.analog.MuxVCCIndex = board340 ? 11 : 10;
    uses_.analog.MuxGroundIndex = board340 ? 22 : 17;
    cboAnamux[0].setListIndex(uses_.analog.MuxVCCIndex);
    cboAnamux[1].setListIndex(uses_.analog.MuxGroundIndex);
    if (board340)
        return;
    for (int bit = 0; bit < 8; ++bit) {
        for (int port = 0; port < 3; ++port)
            chkGPvalue(port)[bit].setCaption(kPinCaptions.at(static_cast<std::size_t>(8 * port + bit)));
        chkGPvalueP3[bit].setCaption("");
        chkGPvalueP4[bit].setCaption("");
    }
}

void frmMainF340::setPinAnalog(int port, int bit) {
    chkDIN(port)[bit].setValue(1);
    chkDIN_Click(port);
    cmdWrGPAnalog_Click(port);
}

void frmMainF340::cmdMuxWrite_Click() {
    uses_.trace.detail({"Connect F340 ADC Input"});
    cmdClearAnalog_Click();
    for (int k = 0; k < 2; ++k)
        txtModeByte[k].setText(decimalText(hexToInt(cboAnamux[k].text())));
    for (int k = 0; k < 2; ++k) {
        const int row = cboAnamux[k].listIndex();
        if (uses_.analog.ProcessorID == 340) {
            const std::string text = cboAnamux[k].text();
            if (const auto at = text.find(" - P"); at != std::string::npos)
                setPinAnalog(text[at + 4] - '0', text[at + 6] - '0');
        } else if (row >= 0 && row <= 7) {
            setPinAnalog(1, row);
        } else if (row >= 8 && row <= 10) {
            setPinAnalog(2, row - 8);
            // Row 10 takes P2.3 along with P2.2, and row 11, which names P2.3, takes none: benches count on
            // VIN4, row 10, being measured with both pins analog.
            if (row == 10)
                setPinAnalog(2, 3);
        }
    }
    uses_.trace.detail({"ADC Connect: +INP =", cboAnamux[0].text(), "  ADC -INP =", cboAnamux[1].text()});
    const bool taken =
        sendCommand(Command::AdcMux, kFill,
                    {report::kWrite, hexToByte(cboAnamux[0].text()), hexToByte(cboAnamux[1].text())});
    connectedInput_ = taken ? cboAnamux[0].text() : std::string();
}

bool frmMainF340::readLabels(Command command, unsigned prepare, ControlArray<Label>& labels) {
    const bool asked = readCommand(command, prepare, {report::kRead});
    if (asked)
        showReply(labels);
    else
        markReadings(labels, false);
    return asked;
}

void frmMainF340::cmdRdADMux_Click() {
    readLabels(Command::AdcMux, kPurgeFill, lblADMuxData);
}

void frmMainF340::cmdADCWrEn_Click() {
    sendCommand(Command::AdcEnable, kKeep,
                {report::kWrite, static_cast<std::uint8_t>(chkADCEnable.checked() ? 1 : 0)});
}

void frmMainF340::cmdADCRDEnable_Click() {
    if (!readLabels(Command::AdcEnable, kPurge, lblADCEnable))
        return;
    ShpADCEn[0].setColour(byteAt(2) != 0 ? Colour::LightRed : Colour::Black);
}

void frmMainF340::cmdADCRDData_Click() {
    uses_.trace.detail({"Record F340 ADC Input"});
    lblBytesSucceded.setCaption("--");
    txtADDec.setText("xxxx");
    const std::uint8_t readMode = toByte(roundHalfEven(leadingNumber(cboADCReadMode[0].text())));
    const std::uint8_t sampleMode = toByte(roundHalfEven(leadingNumber(cboADCReadMode[1].text())));
    const bool written = sendCommand(Command::AdcRead, kPurge, {readMode, sampleMode});
    lblBytesSucceded.setCaption(numberToText(written ? hid::kReportSize : 0));
    replied_ = link().checkStatus(written) == kLinkGood && link().readReply();
    uses_.analog.ADHigh = byteAt(2);
    uses_.analog.ADLow = byteAt(3);
    // A high byte of 0x80 or more gives 32768 and more; no fault.
    const int count = uses_.analog.ADHigh * 256 + uses_.analog.ADLow;
    txtADDec.setText(decimalText(count));
    markReading(txtADDec, replied_);
    uses_.analog.ADVolts = throughText(uses_.analog.ADRef / 1023 * count);
    if (uses_.trace.detailOn())
        uses_.trace.detail({" Decimal Count = ", decimalText(count)});
}

void frmMainF340::cmdWriteADCClock_Click() {
    sendCommand(Command::AdcClock, kFill, {report::kWrite, hexToByte(txtADOSC.text())});
}

void frmMainF340::cmdReadADCClock_Click() {
    readLabels(Command::AdcClock, kPurgeFill, lblADCClockDaa);
}

void frmMainF340::cmdADCWrmode1_Click() {
    sendCommand(Command::AdcSampleMode, kFill,
                {report::kWrite, static_cast<std::uint8_t>(OptiADCSamples[1].value() ? 1 : 0)});
}

void frmMainF340::cmdADCRDMode16_Click() {
    if (!readLabels(Command::AdcSampleMode, kPurgeFill, lblADCMode1Data))
        return;
    OptiADCSamples[lblADCMode1Data[2].caption() == "01" ? 1 : 0].setValue(true);
}

void frmMainF340::cmdWrtLoopCount_Click() {
    sendCommand(Command::AdcLoopCount, kFill, {report::kWrite, decimalByte(txtADCLoopCount.text())});
}

void frmMainF340::cmdRdADCAvg_Click() {
    readLabels(Command::AdcLoopCount, kPurgeFill, lblADCLoopData);
}

void frmMainF340::cmdADCWriteSampleRate_Click() {
    sendCommand(Command::AdcSampleRate, kPurgeFill,
                {report::kWrite, hexToByte(txtADSAMP[0].text()), hexToByte(txtADSAMP[1].text())});
}

void frmMainF340::cmdADCRdSampleRate_Click() {
    readLabels(Command::AdcSampleRate, kPurgeFill, lblADCSampleData);
}

void frmMainF340::cmdRdADCMode_Click() {
    readLabels(Command::AdcRefcon, kPurgeFill, lblADCRefcon);
}

void frmMainF340::cmdWrADCMode_Click() {
    // The firmware has no write for the reference, and the button says so.
    context().say("Underconstruction");
}

void frmMainF340::cmdInitADCIO_Click() {
    uses_.trace.detail({"Init KV7150 Basic I/O and Control Bits"});
    uses_.trace.detail({"Set GPIO Push-Pull:  CS; CLK ; MOSI / "});
    uses_.trace.detail({"Data:  RESET; CS; MISO = 1; CLK: MOSI = 0"});
    for (const auto& [bit, value] : {std::pair{0, 0}, {1, 1}, {2, 1}, {3, 0}, {4, 1}})
        chkOpenCollectorP1[bit].setValue(value);
    for (const auto& [bit, value] : {std::pair{0, 1}, {1, 1}, {3, 1}, {2, 0}, {4, 0}})
        chkGPvalueP1[bit].setValue(value);
    cmdWrOC_Click(1);
    events().letEventsRun();
    cmdRdOC_Click(1);
    events().letEventsRun();
    cmdWrGPData_Click(1);
    events().letEventsRun();
    cmdRdGPData_Click(1);
    events().letEventsRun();
    uses_.trace.detail({"Init KV7150 I/O Completed"});
}

void frmMainF340::cmdWrtADReg_Click() {
    const std::initializer_list<std::uint8_t> bytes = {report::kWrite, hexToByte(txtADCReg[0].text()),
                                                       hexToByte(txtADCReg[1].text()),
                                                       hexToByte(txtADCDelay[0].text())};
    link().fillReportBuffer(0); // filled first, then drained: this command has it the other way round
    link().linkOk = link().checkStatus(sendCommand(Command::ExtAdcAccess, kPurge, bytes)) > 0;
    replied_ = link().linkOk && link().readReply();
    markReadings(lblAdRcv, replied_);
    markReading(lblADRegRead, replied_);
    if (!link().linkOk)
        return;
    for (auto& label : lblAdRcv)
        label->setCaption(byteToHex2(byteAt(1 + label->index())));
    events().letEventsRun();
    // The part's bits arrive one place late: the first byte's low bit is the register's bit 7.
    const int high = (hexToInt(lblAdRcv[1].caption()) & 1) << 7;
    const int rest = roundHalfEven(hexToInt(lblAdRcv[2].caption()) / 2.0) & 127;
    lblADRegRead.setCaption(byteToHex2(static_cast<std::uint8_t>(high | rest)));
}

void frmMainF340::cmdRD7150_Click() {
    const std::initializer_list<std::uint8_t> bytes = {report::kRead, hexToByte(txtADCReg[0].text()),
                                                       hexToByte(txtADCReg[1].text()),
                                                       hexToByte(txtADCDelay[0].text())};
    link().fillReportBuffer(0);
    link().linkOk = link().checkStatus(sendCommand(Command::ExtAdcAccess, kPurge, bytes)) > 0;
    replied_ = link().linkOk && link().readReply();
    markReadings(lblADDecimal, replied_);
    markReading(lbl_ADReal, replied_);
    if (!link().linkOk)
        return;
    constexpr int kSign = 0x800000;
    int value = byteAt(3) * 65536 + byteAt(4) * 256 + byteAt(5);
    if (value >= kSign)
        value = -(((value - kSign) ^ 0x7FFFFF) + 1);
    lblADDecimal[1].setCaption(decimalText(value));
    if (externalGain == 0)
        externalGain = 1;
    const double millivolts = 2.5 / externalGain / 8388607 * value * 1000;
    lbl_ADReal.setCaption(formatNumber(millivolts, "####0.00"));
}

} // namespace vrk
