#include "link/readings.h"
#include "panels/blocks/entries.h"
#include "panels/instruction/InstructionPanel.h"
#include "platform/runtime/text.h"

#include <array>
#include <utility>

namespace vrk {

namespace {
constexpr int kAll = InstructionPanel::kPots * (1 + InstructionPanel::kRegisters);
constexpr const char* kIntoWiper = ">>";
constexpr const char* kIntoData = "<<";
constexpr std::array<const char*, InstructionPanel::kPots> kWiperFill = {"AA", "BB", "CC", "DD"};

int dataIndex(int pot, int reg) {
    return pot * InstructionPanel::kRegisters + reg;
}
int optionOf(InstructionKind kind) {
    return static_cast<int>(kind);
}
} // namespace

class InstructionPanel::AllRegisters {
  public:
    AllRegisters(InstructionPanel& panel, const char* name)
        : panel_(panel),
          busy_(panel),
          name_(name),
          activity_(panel.context().activities, name, [this] { stopped_ = true; }) {
        panel_.powered_ = panel_.uses_.services.vccOn();
    }

    /// A board that went and came back is without VCC: each register left would ask about its address.
    bool goesOn() const { return !stopped_ && !panel_.unloaded_ && !panel_.partLost(); }
    void send() {
        panel_.cmdDoInstruction_Click();
        failed_ += panel_.lastAnswered_ ? 0 : 1;
        activity_.progress(activity_.done() + 1, kAll);
    }
    void end() const {
        const std::string count = decimalText(activity_.done());
        const std::string of = " of " + decimalText(kAll) + " registers";
        if (!goesOn())
            panel_.tell(false, name_ + " aborted",
                        count + of + (panel_.partLost() ? ": VCC has gone meanwhile" : ""));
        else
            panel_.tell(failed_ == 0, name_ + (failed_ == 0 ? "" : " failed"),
                        failed_ == 0 ? count + " registers" : decimalText(failed_) + of);
        for (auto* group : {&panel_.OptWiper, &panel_.OptRegSel})
            for (auto& option : *group)
                option->setValue(false);
    }

  private:
    InstructionPanel& panel_;
    Busy busy_;
    std::string name_;
    bool stopped_ = false;
    int failed_ = 0;
    Activity activity_;
};

void InstructionPanel::wireRegisters() {
    for (auto& block : FrVRK) {
        block->setCaption("Pot " + decimalText(block->index()));
        block->setToolTip("VRK / POT Internal Data and WCR Registers");
    }
    for (int pot = 0; pot < kPots; ++pot) {
        txtWXWcr[pot].setText("000");
        lblRDWcr[pot].setCaption("000");
        lblRDWcr[pot].setToolTip("Displayed Register Value in Hex");
        cmdRdWCR[pot].setCaption("Read");
        cmdRdWCR[pot].setToolTip("Read Wiper Register");
        cmdWrWCR[pot].setCaption("Write");
        cmdWrWCR[pot].setToolTip("Write Wiper Register");
        const std::string name = "WCR of pot " + decimalText(pot);
        ShpRdWCR[pot].setCaption(name + ", as read");
        ShpWrWCR[pot].setCaption(name + ", written");
        for (Control* control :
             std::initializer_list<Control*>{&txtWXWcr[pot], &lblRDWcr[pot], &cmdRdWCR[pot], &cmdWrWCR[pot],
                                             &ShpRdWCR[pot], &ShpWrWCR[pot]})
            control->setContainer(FrVRK[pot]);
    }
    for (int index = 0; index < txtWrData.count(); ++index) {
        const std::string reg = decimalText(index % kRegisters);
        hexByteEntry(txtWrData[index], 3);
        txtWrData[index].setText("000");
        lblRdData[index].setCaption("000");
        cmdRDData[index].setCaption("Rd " + reg);
        cmdRDData[index].setToolTip("Read Data Register");
        cdmWrData[index].setCaption("Wr " + reg);
        cdmWrData[index].setToolTip("Write Data Register");
        const std::string name = "data register " + reg + " of pot " + decimalText(index / kRegisters);
        ShpDataRd[index].setCaption(name + ", as read");
        ShpDataWr[index].setCaption(name + ", written");
        for (Control* control :
             std::initializer_list<Control*>{&txtWrData[index], &lblRdData[index], &cmdRDData[index],
                                             &cdmWrData[index], &ShpDataRd[index], &ShpDataWr[index]})
            control->setContainer(FrVRK[index / kRegisters]);
    }
    cmdReadAll.setCaption("Read All");
    cmdReadAll.setToolTip("Read all Data and WCR Registers");
    cmdFillRegs.setCaption("Fill Regs");
    cmdFillRegs.setToolTip("Write / Fill all Data and WCR Register");
    cmdSetWReqRd.setCaption("Set Wr = Rd");
    cmdSetWReqRd.setToolTip("Moves Read Data into Write Fields for all Data and WCR Registers.");
    cmdResetInstruction.setCaption("Reset");
    cmdResetInstruction.setToolTip("Clear Selections and LED Status");
    constexpr std::array<Colour, 5> kLegend = {Colour::Black, Colour::LightGreen, Colour::Green,
                                               Colour::LightBlue, Colour::Yellow};
    for (auto& lamp : ShpLegend) {
        lamp->setColour(kLegend.at(static_cast<std::size_t>(lamp->index())));
        lamp->setCaption("Legend");
    }
    Label5.setCaptions(
        {"Has not been written or Read Since being updated.",
         "Multiple Register Access, Toggles between Light and Dark Green",
         "This register has been modified (recipient) by an XFER operation or programming function.",
         "This register is the source of an XFER operation."});
    wireClick(cmdRdWCR, &InstructionPanel::cmdRdWCR_Click);
    wireClick(cmdWrWCR, &InstructionPanel::cmdWrWCR_Click);
    wireClick(cmdRDData, &InstructionPanel::cmdRDData_Click);
    wireClick(cdmWrData, &InstructionPanel::cdmWrData_Click);
    wireClick(cmdReadAll, &InstructionPanel::cmdReadAll_Click);
    wireClick(cmdFillRegs, &InstructionPanel::cmdFillRegs_Click);
    wireClick(cmdSetWReqRd, &InstructionPanel::cmdSetWReqRd_Click);
    wireClick(cmdResetInstruction, &InstructionPanel::cmdResetInstruction_Click);
}

// One register. The instruction comes first: its handler resets the fields of pot and register.

void InstructionPanel::cmdRdWCR_Click(int index) {
    reselect(OptInstruction[optionOf(InstructionKind::ReadWiper)]);
    reselect(OptWiper[index]);
    cmdDoInstruction_Click();
    lblRDWcr[index].setCaption(lblReadValue.caption());
}

void InstructionPanel::cmdWrWCR_Click(int index) {
    reselect(OptInstruction[optionOf(InstructionKind::WriteWiper)]);
    reselect(OptWiper[index]);
    txtWriteValue.setText(txtWXWcr[index].text());
    cmdDoInstruction_Click();
}

void InstructionPanel::cmdRDData_Click(int index) {
    Reading& shown = lblRdData[index];
    reselect(OptInstruction[optionOf(InstructionKind::ReadData)]);
    reselect(OptWiper[index / kRegisters]);
    reselect(OptRegSel[index % kRegisters]);
    cmdDoInstruction_Click();
    shown.setCaption(lblReadValue.caption());
}

void InstructionPanel::cdmWrData_Click(int index) {
    const std::string value = txtWrData[index].text();
    reselect(OptInstruction[optionOf(InstructionKind::WriteData)]);
    reselect(OptWiper[index / kRegisters]);
    reselect(OptRegSel[index % kRegisters]);
    txtWriteValue.setText(value);
    cmdDoInstruction_Click();
}

void InstructionPanel::blockUpdate(const InstructionResult& result) {
    const InstructionChoice& choice = uses_.choice;
    const int pot = uses_.fields.potField;
    const int reg = uses_.fields.regField / 4;
    if (choice.instructionClass == "XFER") {
        transferred({.pot = pot, .reg = reg}, result);
    } else if (choice.instructionClass == "XFERG") {
        for (int each = 0; each < kPots; ++each)
            transferred({.pot = each, .reg = reg}, result);
    } else {
        const int data = dataIndex(pot, reg);
        const bool read = choice.instructionClass == "Read";
        if (choice.registerKind == "WCR" && read)
            registerRead(lblRDWcr[pot], ShpRdWCR[pot], result);
        else if (choice.registerKind == "WCR")
            registerWritten(txtWXWcr[pot], ShpWrWCR[pot], lblRDWcr[pot], result);
        else if (read)
            registerRead(lblRdData[data], ShpDataRd[data], result);
        else
            registerWritten(txtWrData[data], ShpDataWr[data], lblRdData[data], result);
    }
}

void InstructionPanel::registerRead(Reading& shown, Lamp& lamp, const InstructionResult& result) {
    shown.setCaption(lblReadValue.caption());
    if (result.answered && !asChosen())
        shown.markStale("the instruction has read another register");
    else
        markReading(shown, result.answered);
    lamp.blinkGood();
}

void InstructionPanel::registerWritten(TextBox& shown, Lamp& lamp, Reading& asRead,
                                       const InstructionResult& result) {
    shown.setText(txtWriteValue.text());
    asRead.markStale(result.answered ? "written since" : "a write failed since");
    lamp.blinkGood();
}

void InstructionPanel::showMark(Reading& shown, const char* mark, const std::string& cause) {
    shown.setCaption(mark);
    shown.markRead(); // a register that was never read shows the mark too
    shown.markStale(cause);
}

void InstructionPanel::transferred(const RegisterPlace& place, const InstructionResult& result) {
    const bool fromWiper = uses_.choice.transferSource == "WCR";
    const int data = dataIndex(place.pot, place.reg);
    Lamp& source = fromWiper ? ShpRdWCR[place.pot] : ShpDataRd[data];
    Lamp& recipient = fromWiper ? ShpDataRd[data] : ShpRdWCR[place.pot];
    Reading& shown = fromWiper ? lblRdData[data] : lblRDWcr[place.pot];
    source.setColour(Colour::Yellow);
    recipient.setColour(Colour::LightBlue);
    showMark(shown, fromWiper ? kIntoData : kIntoWiper,
             result.answered ? "transferred, not read" : "a transfer failed since");
}

std::optional<std::uint8_t> InstructionPanel::byteToSend() const {
    if (uses_.choice.instructionClass == "INC")
        return instructionByte(InstructionKind::Step, {.pot = uses_.fields.potField});
    if (!isHexText(lblSet[kByteField].caption()))
        return std::nullopt;
    return sentByte();
}

bool InstructionPanel::asChosen() const {
    const auto byte = byteToSend();
    const auto effect = byte ? instructionEffect(*byte) : std::nullopt;
    if (!effect)
        return false;
    const InstructionRow& row = instructionRow(effect->kind);
    const InstructionChoice& choice = uses_.choice;
    const bool moves = choice.instructionClass == "XFER" || choice.instructionClass == "XFERG";
    return choice.instructionClass == row.group &&
           (moves ? choice.transferSource : choice.registerKind) == row.target &&
           (!row.usesPot || effect->place.pot == uses_.fields.potField) &&
           (!row.usesRegister || effect->place.reg * 4 == uses_.fields.regField);
}

void InstructionPanel::forgetTransfers(const std::function<bool(const Transfer&)>& which) {
    if (std::erase_if(transfers_, which) > 0)
        transfersChanged_.emit();
}

void InstructionPanel::noteTransfers(const InstructionEffect& effect, bool answered) {
    forgetTransfers([&effect](const Transfer& earlier) {
        return (effect.allPots() || earlier.place.pot == effect.place.pot) &&
               (effect.accessesWiper() || earlier.place.reg == effect.place.reg);
    });
    if (!answered || !effect.transfers())
        return; // of one that nobody heard it is not known what was moved
    for (int pot = 0; pot < kPots; ++pot)
        if (effect.allPots() || pot == effect.place.pot)
            transfers_.push_back({{.pot = pot, .reg = effect.place.reg}, effect.intoWiper()});
    transfersChanged_.emit();
}

void InstructionPanel::noteEffect(bool answered) {
    const auto effect = instructionEffect(sentByte());
    if (!effect)
        return;
    noteTransfers(*effect, answered);
    const auto [pot, reg] = effect->place;
    const bool all = effect->allPots();
    const bool intoWiper = effect->intoWiper();
    const bool intoData = effect->intoData();
    for (int each = all ? 0 : pot; each < (all ? kPots : pot + 1); ++each) {
        Reading& changed = intoWiper ? lblRDWcr[each] : lblRdData[dataIndex(each, reg)];
        if ((intoWiper || intoData) && changed.freshness()->state == Freshness::State::Fresh)
            changed.markStale("an instruction has changed it since");
    }
    if (intoWiper)
        companion().wipersMoved();
}

void InstructionPanel::markRegistersStale(const std::string& cause) {
    for (auto& shown : lblRDWcr)
        shown->markStale(cause);
    for (auto& shown : lblRdData)
        shown->markStale(cause);
    lblReadValue.markStale(cause);
    lblPotVolts.markStale(cause);
    forgetTransfers([](const Transfer&) { return true; });
}

// All registers

void InstructionPanel::cmdReadAll_Click() {
    AllRegisters run(*this, "Read of all registers");
    reselect(OptInstruction[optionOf(InstructionKind::ReadWiper)]);
    OptWiper[0].setValue(false);
    for (int pot = 0; pot < kPots && run.goesOn(); ++pot) {
        OptWiper[pot].setValue(true);
        run.send();
    }
    OptInstruction[optionOf(InstructionKind::ReadWiper)].setValue(false);
    OptInstruction[optionOf(InstructionKind::ReadData)].setValue(true);
    OptWiper[0].setValue(false);
    OptRegSel[0].setValue(false);
    for (int index = 0; index < kPots * kRegisters && run.goesOn(); ++index) {
        OptWiper[index / kRegisters].setValue(true);
        OptRegSel[index % kRegisters].setValue(true);
        run.send();
    }
    run.end();
}

void InstructionPanel::cmdFillRegs_Click() {
    AllRegisters run(*this, "Filling of all registers");
    reselect(OptInstruction[optionOf(InstructionKind::WriteWiper)]);
    for (int pot = 0; pot < kPots && run.goesOn(); ++pot) {
        txtWriteValue.setText(kWiperFill.at(static_cast<std::size_t>(pot)));
        reselect(OptWiper[pot]);
        run.send();
    }
    OptWiper[kPots - 1].setValue(false);
    OptInstruction[optionOf(InstructionKind::WriteWiper)].setValue(false);
    OptInstruction[optionOf(InstructionKind::WriteData)].setValue(true);
    OptWiper[0].setValue(false);
    OptRegSel[0].setValue(false);
    for (int index = 0; index < kPots * kRegisters && run.goesOn(); ++index) {
        OptWiper[index / kRegisters].setValue(true);
        OptRegSel[index % kRegisters].setValue(true);
        txtWriteValue.setText(hexText(index, 2));
        run.send();
    }
    run.end();
}

void InstructionPanel::cmdSetWReqRd_Click() {
    for (int pot = 0; pot < kPots; ++pot) {
        txtWXWcr[pot].setText(lblRDWcr[pot].caption());
        ShpWrWCR[pot].setColour(Colour::LightBlue);
    }
    for (int index = 0; index < txtWrData.count(); ++index) {
        txtWrData[index].setText(lblRdData[index].caption());
        ShpDataWr[index].setColour(Colour::LightBlue);
    }
}

void InstructionPanel::cmdResetInstruction_Click() {
    uses_.fields = {};
    for (auto& option : OptInstruction) {
        option->setValue(false);
        option->setEnabled(true);
    }
    freeOptions();
    for (int index = 0; index < kPots; ++index) {
        lblSet[index].setCaption("0");
        ShpRdWCR[index].setColour(Colour::Black);
        ShpWrWCR[index].setColour(Colour::Black);
    }
    for (auto* lamps : {&ShpDataWr, &ShpDataRd})
        for (auto& lamp : *lamps)
            lamp->setColour(Colour::Black);
    forgetTransfers([](const Transfer&) { return true; });
}

} // namespace vrk
