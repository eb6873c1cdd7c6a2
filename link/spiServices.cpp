#include "link/frmMainF340.h"

#include "link/readings.h"

#include <algorithm>
#include <utility>

namespace vrk {

using report::Command;

void frmMainF340::wireSpi() {
    cboSPIClock.setCaption("SPI Clock (MHz)");
    chkSPIckpol.setCaption("Clock Polarity (idle HI if checked)");
    chkSPIckpha.setCaption("Clock Phase ('1' if checked)");
    chkSPIss.setCaption("Slave Select (idle HI if checked)");
    chkSPIread.setCaption("Read");
    chkSPIClockPhaseChange.setCaption("Clock Phase Change");
    txtClockPhaseChangeByte.setText("0");
    txtClockPhaseChangeByte.onKeyPress([this](int key) { return checkValidEntryDecInt(key); });
    lblSPI.setCaption(
        "Clicking 'Write' sends 'Number of Bytes to Write' bytes to the slave. The bytes start at 'reg0'. "
        "If 'Read' is checked, the slave sends data upon each byte written.");
    cmdSPIWrite.setCaption("Write");

    wireClick(cmdSPIWrite, &frmMainF340::cmdSPIWrite_Click);
    wireClick(cboSPIClock, &frmMainF340::cboSPIClock_Click);
    for (CheckBox* box : {&chkSPIckpol, &chkSPIckpha, &chkSPIss})
        wireClick(*box, &frmMainF340::spiOption_Click);
    action("cboSPIclock_init", &frmMainF340::cboSPIclock_init);
    action("setSPIconfig", &frmMainF340::setSPIconfig);
    action("getSPIconfig", &frmMainF340::getSPIconfig);
}

void frmMainF340::cmdSPIWrite_Click() {
    link().purgeInputReports();
    const std::size_t count = decimalByte(txtNumToWrite.text());
    if (report::kSpiPayload + count > hid::kReportSize)
        throw subscriptOutOfRange();
    const auto mark = [this, count] {
        for (int i = 0; i < static_cast<int>(count); ++i)
            markReading(txtReadVal[i], replied_);
    };
    std::vector<std::uint8_t> data(count);
    if (!collectWriteData(data)) {
        if (chkSPIread.checked()) { // nothing was sent: what stands in the fields answers something else
            replied_ = false;
            mark();
        }
        return;
    }
    const std::uint8_t phaseByte = decimalByte(txtClockPhaseChangeByte.text());

    // No fill: what stands behind the bytes sent is of no meaning to the firmware.
    hid::Report& buffer = link().reportBuffer;
    std::copy(data.begin(), data.end(), buffer.begin() + report::kSpiPayload);
    const bool written = sendCommand(Command::SpiTransfer, kKeep,
                                     {report::kWrite, static_cast<std::uint8_t>(chkSPIread.checked() ? 1 : 0),
                                      static_cast<std::uint8_t>(chkSPIClockPhaseChange.checked() ? 1 : 0),
                                      phaseByte, static_cast<std::uint8_t>(count)});
    const bool taken = link().checkStatus(written) == kLinkGood;
    if (!chkSPIread.checked())
        return;
    replied_ = false;
    if (taken) {
        // Cleared, so that a lost reply shows no old bytes.
        link().fillReportBuffer(0);
        replied_ = link().readReply();
    }
    for (int i = 0; taken && i < static_cast<int>(count); ++i)
        txtReadVal[i].setText(byteToHex2(byteAt(report::kFirstData + i)));
    mark();
}

void frmMainF340::cboSPIclock_init() {
    if (!readState(Command::SpiClock, Lost::GoOn))
        return;
    const int kHz = toInt16(byteAt(2) * 1000);
    const int current = byteAt(3);
    std::vector<RowControl::Row> rows;
    int selected = -1;
    for (int rate = 23; rate >= 0; --rate) {
        const int frequency = kHz / ((rate + 1) * 2);
        if (frequency <= 499)
            continue;
        if (rate == current)
            selected = static_cast<int>(rows.size());
        rows.push_back({doubleText(frequency / 1000.0), rate});
    }
    const bool before = std::exchange(link().suppressControlEvents, true);
    const OnScopeExit restore([this, before] { link().suppressControlEvents = before; });
    cboSPIClock.setRows(std::move(rows));
    cboSPIClock.setListIndex(selected);
    spiClocksListed_.emit();
}

void frmMainF340::cboSPIClock_Click() {
    if (link().suppressControlEvents)
        return;
    uses_.trace.line({"Write SPI Clock :", cboSPIClock.text(), " MHz"});
    writeCommand(Command::SpiClock, {report::kWrite, toByte(cboSPIClock.itemData())});
}

void frmMainF340::setSPIconfig() {
    const unsigned bits = (chkSPIckpol.checked() ? 1U : 0U) | (chkSPIckpha.checked() ? 2U : 0U) |
                          (chkSPIss.checked() ? 4U : 0U);
    sendCommand(Command::SpiConfig, kFill, {report::kWrite, static_cast<std::uint8_t>(bits)});
}

void frmMainF340::spiOption_Click() {
    if (!link().suppressControlEvents)
        setSPIconfig();
}

void frmMainF340::getSPIconfig() {
    uses_.trace.line({"getSPIconfig: Configure SPI Options"});
    if (readState(Command::SpiConfig, Lost::Stop)) {
        const bool before = std::exchange(link().suppressControlEvents, true);
        const OnScopeExit restore([this, before] { link().suppressControlEvents = before; });
        chkSPIckpol.setValue(byteAt(2) & 1);
        chkSPIckpha.setValue((byteAt(2) >> 1) & 1);
        chkSPIss.setValue((byteAt(2) >> 2) & 1);
    }
    uses_.trace.line({"getSPIconfig: Configure SPI Completed"});
    uses_.trace.blankLine();
}

} // namespace vrk
