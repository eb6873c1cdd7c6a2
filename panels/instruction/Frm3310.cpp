#include "panels/instruction/Frm3310.h"

#include "link/readings.h"
#include "panels/WiperPanel.h"
#include "panels/blocks/vccCheck.h"
#include "panels/instruction/tenBitInstructions.h"
#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {
constexpr int kLampRead = 2;
constexpr int kLampPart = 4;
constexpr int kDigits = 3;
constexpr int kCommand = 2;  ///< its place among the bytes that go out
constexpr int kValueEnd = 3; ///< place of a value's lower byte in what comes back

std::string padded(const std::string& text) {
    return text.empty() || text.size() >= kDigits ? text : std::string(kDigits - text.size(), '0') + text;
}

std::string registerName(int index) {
    return index == 0 ? "Wiper" : "Data " + decimalText(index - 1);
}
} // namespace

Frm3310::Frm3310(PanelContext& panelContext, Uses uses)
    : Panel(panelContext, "Frm3310", kTitle), uses_(std::move(uses)) {
    frq331x.setCaption("Q3318/9 Table 3 Instruction Set");
    Label12.setCaption("Transfer Commands (1 Byte Instructions)");
    Label13.setCaptions({"Write Hex", "Read Hex"});
    for (int index = 0; index < kRegisters; ++index) {
        const char* kind = index == 0 ? "Wiper Register" : "Data Register";
        CMDq331X_Read[index].setCaption(registerName(index));
        CMDq331X_Read[index].setToolTip(std::string("Read ") + kind);
        CMDq331X_Write[index].setCaption(registerName(index));
        CMDq331X_Write[index].setToolTip(std::string("Write ") + kind);
        txtWrQ3319[index].setText("000");
        txtWrQ3319[index].setMaxLength(kDigits);
        txtWrQ3319[index].onKeyPress(hexKeyFilter);
        lblRdq331x[index].setCaption("000");
        lblRdq331x[index].setToolTip("Displayed Register Value in Hex");
        for (Control* control : std::initializer_list<Control*>{&CMDq331X_Read[index], &CMDq331X_Write[index],
                                                                &txtWrQ3319[index], &lblRdq331x[index]})
            control->setContainer(frq331x);
    }
    for (int index = 0; index < kDataRegisters; ++index) {
        const std::string data = "Data " + decimalText(index);
        cmdQ331xDatatoWiper[index].setCaption(data + " > Wiper");
        cmdQ331xDatatoWiper[index].setToolTip("Transfer Data Register Contents to Wiper Register");
        cmdQ331xWipertoData[index].setCaption("Wiper > " + data);
        cmdQ331xWipertoData[index].setToolTip("Transfer Wiper Register Contents to Data Register");
        cmdQ331xDatatoWiper[index].setContainer(frq331x);
        cmdQ331xWipertoData[index].setContainer(frq331x);
    }
    wireClick(CMDq331X_Write, &Frm3310::CMDq331X_Write_Click);
    wireClick(CMDq331X_Read, &Frm3310::CMDq331X_Read_Click);
    wireClick(cmdQ331xDatatoWiper, &Frm3310::cmdQ331xDatatoWiper_Click);
    wireClick(cmdQ331xWipertoData, &Frm3310::cmdQ331xWipertoData_Click);
}

OnScopeExit Frm3310::takeNoGesture() {
    frq331x.setEnabled(false);
    return OnScopeExit([this] { frq331x.setEnabled(true); });
}

bool Frm3310::composes() const {
    return startsWith(companion().devicePanel().lblProduct.caption(), "Q3310/1");
}

std::string Frm3310::readId() const {
    return hexText(hexToInt(companion().devicePanel().txtDeviceAdr.text()) + 1);
}

void Frm3310::blink() {
    companion().devicePanel().Shape1[kLampRead].blinkGood();
}

std::string Frm3310::failure(bool composed, const std::string& command, const SpiRowFields& row) const {
    if (!composed)
        return "no part of this family is chosen on the SPI panel";
    if (!uses_.services.console().replied())
        return "the board did not reply";
    if (!row.holds(kCommand, command))
        return "another frame went out meanwhile";
    return row.heard() ? "" : "the part did not answer";
}

void Frm3310::tellOutcome(const std::string& failure, const std::string& what, const std::string& value,
                          const Control& field) {
    if (failure.empty())
        tell(true, what + value, {}, &field);
    else
        tell(false, what + " failed", failure, &field);
}

void Frm3310::CMDq331X_Write_Click(int index) {
    const char* command = tenBit::commandOf(tenBit::kWrite, index);
    const OnScopeExit underWay = takeNoGesture();
    (void)requireVcc(uses_.services, context()); // the exchange runs all the same
    frmMotherboardDAQ2& board = uses_.services.board();
    const bool composed = composes();
    if (composed) {
        board.txtSPIWrQty2.setText("4");
        txtWrQ3319[index].setText(padded(txtWrQ3319[index].text()));
        const std::string value = txtWrQ3319[index].text();
        board.txtSPIWrite2Data[1].setText(companion().devicePanel().txtDeviceAdr.text());
        board.txtSPIWrite2Data[2].setText(command);
        board.txtSPIWrite2Data[3].setText(value.substr(0, 1));
        board.txtSPIWrite2Data[4].setText(value.size() < 2 ? value : value.substr(value.size() - 2));
    }
    board.cmdSPIOWrite2_Click();
    const std::string failed = failure(composed, command, spiWriteRow(board));
    lblRdq331x[index].markStale(failed.empty() ? "written since" : "a write failed since");
    if (index == 0)
        companion().wipersMoved();
    blink();
    companion().devicePanel().Shape1[kLampPart].setColour(Colour::LightGreen);
    tellOutcome(failed, "Write of " + registerName(index), ": " + txtWrQ3319[index].text() + " hex",
                txtWrQ3319[index]);
}

void Frm3310::CMDq331X_Read_Click(int index) {
    const char* command = tenBit::commandOf(tenBit::kRead, index);
    const OnScopeExit underWay = takeNoGesture();
    (void)requireVcc(uses_.services, context()); // the exchange runs all the same
    frmMotherboardDAQ2& board = uses_.services.board();
    const bool composed = composes();
    if (composed) {
        board.txtSPIWrQty2.setText("4");
        uses_.services.console().txtNumToRead.setText("2");
        board.txtSPIWrite3Data[1].setText(readId());
        board.txtSPIWrite3Data[2].setText(command);
        for (const int rest : {3, 4, 5})
            board.txtSPIWrite3Data[rest].setText("00");
    }
    board.cmdSPIOWrite3_Click();
    // The frame is as long as the last one of this row: no step of this panel sets its length.
    const int length = decimalByte(board.txtSPIWrQty3.text());
    const std::string high = board.txtSPIORead3[2].text();
    const int value = hexToInt(high.empty() ? high : high.substr(high.size() - 1)) * 256 +
                      hexToInt(board.txtSPIORead3[3].text());
    lblRdq331x[index].setCaption(hexText(value, kDigits));
    std::string failed = failure(composed, command, spiReadRow(board));
    if (composed && length <= kValueEnd)
        failed = "the read frame is " + decimalText(length) + " bytes long: read once on the SPI panel";
    markReading(lblRdq331x[index], failed.empty());
    blink();
    tellOutcome(failed, "Read of " + registerName(index), ": " + lblRdq331x[index].caption() + " hex",
                lblRdq331x[index]);
}

void Frm3310::transfer(const char* command, const std::string& what, Reading& recipient) {
    const OnScopeExit underWay = takeNoGesture();
    (void)requireVcc(uses_.services, context()); // the exchange runs all the same
    frmMotherboardDAQ2& board = uses_.services.board();
    const bool composed = composes();
    if (composed) {
        board.txtSPIWrQty2.setText("2");
        uses_.services.console().txtNumToWrite.setText("2");
        board.txtSPIWrite2Data[1].setText(readId());
        board.txtSPIWrite2Data[2].setText(command);
    }
    board.cmdSPIOWrite2_Click();
    recipient.markStale("transferred since");
    blink();
    tellOutcome(failure(composed, command, spiWriteRow(board)), what, {}, recipient);
}

void Frm3310::cmdQ331xDatatoWiper_Click(int index) {
    transfer(tenBit::commandOf(tenBit::kDataToWiper, index),
             "Transfer of Data " + decimalText(index) + " to the wiper", lblRdq331x[0]);
    companion().wipersMoved();
}

void Frm3310::cmdQ331xWipertoData_Click(int index) {
    transfer(tenBit::commandOf(tenBit::kWiperToData, index),
             "Transfer of the wiper to Data " + decimalText(index), lblRdq331x[index + 1]);
}

void Frm3310::markRegistersStale(const std::string& cause) {
    for (auto& shown : lblRdq331x)
        shown->markStale(cause);
}

} // namespace vrk
