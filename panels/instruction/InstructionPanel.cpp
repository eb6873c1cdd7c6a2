#include "panels/instruction/InstructionPanel.h"

#include "link/readings.h"
#include "panels/blocks/entries.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {
constexpr Milliseconds kAfterInstruction{30};
/// Elements of lblSet.
enum SetField : int {
    kNibble = 0,
    kRegister = 1,
    kPot = 2,
    kMerged = 3,
    kByte = InstructionPanel::kByteField
};

std::string capitalised(std::string words) {
    if (!words.empty())
        words.front() = upperCase(words.substr(0, 1)).front();
    return words;
}
} // namespace

bool InstructionPanel::isHexText(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
}

InstructionPanel::Busy::Busy(InstructionPanel& panel) : panel_(panel) {
    ++panel_.busy_;
    panel_.refreshEnabled();
}

InstructionPanel::Busy::~Busy() {
    --panel_.busy_;
    panel_.refreshEnabled();
}

InstructionPanel::InstructionPanel(PanelContext& panelContext, const std::string& name,
                                   const std::string& title, const Uses& uses, const Words& words,
                                   std::unique_ptr<InstructionBus> bus)
    : Panel(panelContext, name, title),
      uses_(uses),
      words_(words),
      bus_(std::move(bus)),
      steps_(bus_->port(), bus_->stepWiring()) {
    wireInstruction();
    wireRegisters();
    wireIncrements();
}

void InstructionPanel::wireInstruction() {
    FrPot.setCaption(words_.frame);
    FrWiper.setCaption("P1 / P0");
    FrWiper.setContainer(FrPot);
    FrVal.setContainer(FrPot);
    for (int index = 0; index < OptInstruction.count(); ++index) {
        OptInstruction[index].setCaption(instructionTable().at(static_cast<std::size_t>(index)).caption);
        OptInstruction[index].setToolTip(
            "Use these Radio Buttons to setup Instruction byte fileds,  I3-I0, R0/1, P0/1");
        OptInstruction[index].join(instructionGroup_);
        OptInstruction[index].setContainer(FrPot);
    }
    OptRegSel.setCaptions({"0", "1", "2", "3"});
    OptWiper.setCaptions({"0", "1", "2", "3"});
    for (int index = 0; index < kPots; ++index) {
        OptRegSel[index].join(registerGroup_);
        OptRegSel[index].setContainer(FrPot);
        OptWiper[index].join(potGroup_);
        OptWiper[index].setContainer(FrWiper);
    }
    lblSet.setCaptions({"-", "-", "-", "--", "--"});
    lblSet[kNibble].setToolTip("I3-I0 Value in Hex");
    lblSet[kRegister].setToolTip("R0/1 Value");
    lblSet[kPot].setToolTip("P0/1 Value");
    lblSet[kMerged].setToolTip("Merged R0/1 and P0/1 Value in Hex");
    lblSet[kByte].setToolTip("Final Instruction Set in Hex");
    txtWriteValue.setText("00");
    txtWriteValue.setToolTip("Field for Value to Write in Hex.");
    txtWriteValue.setContainer(FrVal);
    hexByteEntry(txtWriteValue, 2);
    lblReadValue.setCaption("---");
    lblReadValue.setToolTip("Returned Value in Hex.");
    cmdDoInstruction.setCaption("Go");
    cmdDoInstruction.setToolTip("Execute Instruction / Operation");
    Label1.setCaption(words_.resultLamp);
    ShpI2CAck[0].setCaption(words_.resultLamp);
    wireClick(OptInstruction, &InstructionPanel::OptInstruction_Click);
    wireClick(OptRegSel, &InstructionPanel::OptRegSel_Click);
    wireClick(OptWiper, &InstructionPanel::OptWiper_Click);
    wireClick(cmdDoInstruction, &InstructionPanel::cmdDoInstruction_Click);
}

void InstructionPanel::Form_Load() {
    static constexpr std::array<const char*, 10> kHead = {"INSTRUCTION", " I3 ", " I2 ", " I1 ", " I0 ",
                                                          " R1 ",        " R0 ", " P1 ", " P0 ", "OPERATION"};
    Grid1.setSize(kInstructions + 1, static_cast<int>(kHead.size()));
    for (int column = 0; column < Grid1.columns(); ++column)
        Grid1.setCell(0, column, kHead.at(static_cast<std::size_t>(column)));
    int row = 0;
    for (const InstructionRow& instruction : instructionTable()) {
        Grid1.setCell(++row, 0, instruction.name);
        for (std::size_t bit = 0; bit < instruction.bits.size(); ++bit)
            Grid1.setCell(row, static_cast<int>(bit) + 1, instruction.bits.at(bit));
        Grid1.setCell(row, Grid1.columns() - 1, instruction.operation);
    }
}

void InstructionPanel::paintRow(int row, Colour colour) {
    for (int column = 0; column < Grid1.columns(); ++column)
        Grid1.setCellColour(row, column, colour);
}

void InstructionPanel::freeOptions() {
    for (int row = 1; row < Grid1.rows(); ++row)
        paintRow(row, Colour::White);
    for (int index = 0; index < kPots; ++index) {
        OptRegSel[index].setEnabled(true);
        OptWiper[index].setEnabled(true);
        OptWiper[index].setCaption(decimalText(index));
    }
    FrWiper.setVisible(true);
    lblSet[kByte].setCaption("00");
    FrWiper.setCaption("P1/0 Selection");
}

void InstructionPanel::OptInstruction_Click(int index) {
    if (index < 0 || index >= kInstructions)
        throw subscriptOutOfRange();
    const auto kind = static_cast<InstructionKind>(index);
    const InstructionRow& row = instructionRow(kind);
    InstructionChoice& choice = uses_.choice;
    InstructionFields& fields = uses_.fields;
    fields.instructionNibble = 0;
    choice.instructionClass.clear();
    choice.registerKind.clear();
    freeOptions();

    choice.instructionClass = row.group;
    const bool moves = choice.instructionClass == "XFER" || choice.instructionClass == "XFERG";
    const bool steps = kind == InstructionKind::Step;
    (moves ? choice.transferSource : choice.registerKind) = row.target;
    if (!steps) {
        lblReadValue.setEnabled(choice.instructionClass == "Read");
        txtWriteValue.setEnabled(choice.instructionClass == "Write");
    }
    if (!row.usesPot) {
        lblSet[kPot].setCaption("0");
        for (auto& pot : OptWiper) {
            pot->setEnabled(false);
            pot->setValue(false);
        }
        fields.potField = 0;
    }
    if (!row.usesRegister) {
        lblSet[kRegister].setCaption("0");
        fields.regField = 0;
        for (auto& reg : OptRegSel) {
            reg->setEnabled(false);
            reg->setValue(false);
        }
        // The pot's option and texts stay: a pot must be clicked again before this instruction goes to it.
        if (!steps)
            fields.potField = 0;
    }
    lblSet[kNibble].setCaption(hexText(row.nibble));
    fields.instructionNibble = hexToByte(lblSet[kNibble].caption());
    lblSet[kByte].setCaption(hexText(fields.instructionNibble) + lblSet[kMerged].caption());
    const bool data = kind == InstructionKind::ReadData || kind == InstructionKind::WriteData;
    for (auto& pot : OptWiper)
        pot->setCaption("Pot " + decimalText(pot->index()) + (data ? " Data" : " WCR"));
    paintRow(index + 1, Colour::Yellow);
}

void InstructionPanel::compose() {
    lblSet[kMerged].setCaption(hexText(uses_.fields.regField + uses_.fields.potField));
    lblSet[kByte].setCaption(lblSet[kNibble].caption() + lblSet[kMerged].caption());
}

void InstructionPanel::OptRegSel_Click(int index) {
    if (index < 0 || index >= kRegisters)
        throw subscriptOutOfRange();
    lblSet[kRegister].setCaption(decimalText(index));
    uses_.fields.regField = toByte(index * 4);
    compose();
}

void InstructionPanel::OptWiper_Click(int index) {
    if (index < 0 || index >= kPots)
        throw subscriptOutOfRange();
    lblSet[kPot].setCaption(decimalText(index));
    uses_.fields.potField = toByte(index);
    compose();
}

void InstructionPanel::reselect(OptionButton& option) {
    option.setValue(false);
    option.setValue(true);
}

void InstructionPanel::requireHexTexts() const {
    if (!isHexText(lblSet[kByte].caption()))
        throw typeMismatch();
    if (uses_.choice.instructionClass == "Write" && !isHexText(txtWriteValue.text()))
        throw typeMismatch();
}

std::uint8_t InstructionPanel::sentByte() const {
    return hexToByte(lblSet[kByte].caption());
}

InstructionResult InstructionPanel::exchange() {
    const std::string& group = uses_.choice.instructionClass;
    const std::string instruction = lblSet[kByte].caption();
    const bool reads = group == "Read";
    InstructionResult result = reads              ? bus_->read(instruction)
                               : group == "Write" ? bus_->write(instruction, txtWriteValue.text())
                                                  : bus_->transfer(instruction);
    // After a reset the byte is none: on SPI the part is heard all the same, but it does nothing.
    result.answered = result.answered && instructionOf(sentByte()).has_value();
    if (reads) {
        lblReadValue.setCaption(result.value);
        markReading(lblReadValue, result.answered);
    }
    return result;
}

void InstructionPanel::cmdDoInstruction_Click() {
    if (pinsTaken_)
        throw Fault("The bus rests until the increments have ended.");
    const Busy busy(*this);
    const std::string group = uses_.choice.instructionClass;
    if (group == "INC") {
        beginIncrements();
        return;
    }
    bool good = bus_->lastGood();
    if (group == "Read" || group == "Write" || group == "XFER" || group == "XFERG") {
        requireHexTexts();
        const InstructionResult result = exchange();
        blockUpdate(result);
        noteEffect(result.answered);
        tellInstruction(result);
        good = result.good;
        lastAnswered_ = result.answered;
    }
    showResult(good);
}

void InstructionPanel::tellInstruction(const InstructionResult& result) {
    const std::string& group = uses_.choice.instructionClass;
    const std::string byte = lblSet[kByte].caption();
    std::string what = capitalised(instructionWords(sentByte()));
    if (what.empty()) {
        tell(false, "Instruction " + byte + " failed", "the part has no such instruction", &lblSet[kByte]);
        return;
    }
    if (!result.answered) {
        tell(false, what + " failed", byte + " sent, " + bus_->failure(), &ShpI2CAck[0]);
        return;
    }
    std::string detail = byte + " sent";
    const Control* field = &lblSet[kByte];
    if (group == "Read") {
        what += ": " + result.value + " hex";
        detail += ", " + result.value + " came back";
        field = &lblReadValue;
    } else if (group == "Write") {
        what += ": " + txtWriteValue.text() + " hex";
        detail += " with " + txtWriteValue.text();
        field = &txtWriteValue;
    }
    tell(true, what, detail, field);
}

void InstructionPanel::showResult(bool good) {
    Lamp& lamp = ShpI2CAck[0];
    if (good) {
        lamp.blinkGood();
    } else {
        lamp.setColour(Colour::LightRed);
        pump();
        context().say(words_.failure, words_.failureTitle);
    }
    pump();
    wait(kAfterInstruction);
}

void InstructionPanel::refreshEnabled() {
    const bool free = busy_ == 0;
    FrPot.setEnabled(free);
    for (auto& block : FrVRK)
        block->setEnabled(free);
    for (Button* button : std::initializer_list<Button*>{&cmdDoInstruction, &cmdReadAll, &cmdFillRegs,
                                                         &cmdSetWReqRd, &cmdResetInstruction})
        button->setEnabled(free && !stepping_);
    FrIncrDec.setEnabled(!stepUnderWay_);
}

} // namespace vrk
