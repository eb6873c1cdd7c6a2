#pragma once

#include "panels/blocks/BenchServices.h"
#include "panels/instruction/InstructionBus.h"
#include "panels/instruction/InstructionCompanion.h"
#include "panels/instruction/StepSequence.h"
#include "panels/instruction/instructions.h"
#include "platform/controls/Panel.h"
#include "platform/runtime/Signal.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vrk {

/// The raw instructions of the quad parts: one is composed from three groups of options, shown with its
/// fields, and sent; a block of registers for each pot does the same by one click each. The panels of the two
/// buses differ in the bus and in some words.
class InstructionPanel : public Panel {
  public:
    static constexpr int kPots = 4;
    static constexpr int kRegisters = 4; ///< data registers of a pot
    static constexpr int kByteField = 4; ///< element of lblSet that holds the byte

    struct Uses {
        BenchServices& services;
        InstructionFields& fields;
        InstructionChoice& choice;
        /// The device panel beside this one; loads it unseen if need be.
        std::function<InstructionCompanion&()> companion;
        /// The same, nullptr while it is not loaded.
        std::function<InstructionCompanion*()> loadedCompanion;
    };
    struct Words {
        const char* frame; ///< over the instruction set
        const char* resultLamp;
        const char* failure; ///< message after a bad instruction, and its title
        const char* failureTitle;
    };

    void Form_Load() override;
    void Form_Unload() override;
    bool closeHides() const override { return true; }

    // The instruction
    Frame FrPot{*this, "FrPot"};
    ControlArray<OptionButton> OptInstruction{*this, "OptInstruction", 0, kInstructions - 1};
    ControlArray<OptionButton> OptRegSel{*this, "OptRegSel", 0, kRegisters - 1};
    Frame FrWiper{*this, "FrWiper"};
    ControlArray<OptionButton> OptWiper{*this, "OptWiper", 0, kPots - 1};
    /// 0 nibble, 1 register, 2 pot, 3 both merged, 4 the byte: the text that is sent
    ControlArray<Label> lblSet{*this, "lblSet", 0, 4};
    Frame FrVal{*this, "FrVal"};
    TextBox txtWriteValue{*this, "txtWriteValue"};
    Reading lblReadValue{*this, "lblReadValue"};
    Button cmdDoInstruction{*this, "cmdDoInstruction"};
    ControlArray<Lamp> ShpI2CAck{*this, "ShpI2CAck", 0, 0};
    Label Label1{*this, "Label1"};
    Grid Grid1{*this, "Grid1"};

    // The registers: data register r of pot p is number 4p + r.
    ControlArray<Frame> FrVRK{*this, "FrVRK", 0, kPots - 1};
    ControlArray<TextBox> txtWXWcr{*this, "txtWXWcr", 0, kPots - 1};
    ControlArray<Reading> lblRDWcr{*this, "lblRDWcr", 0, kPots - 1};
    ControlArray<Lamp> ShpWrWCR{*this, "ShpWrWCR", 0, kPots - 1};
    ControlArray<Lamp> ShpRdWCR{*this, "ShpRdWCR", 0, kPots - 1};
    ControlArray<Button> cmdRdWCR{*this, "cmdRdWCR", 0, kPots - 1};
    ControlArray<Button> cmdWrWCR{*this, "cmdWrWCR", 0, kPots - 1};
    ControlArray<TextBox> txtWrData{*this, "txtWrData", 0, kPots* kRegisters - 1};
    ControlArray<Reading> lblRdData{*this, "lblRdData", 0, kPots* kRegisters - 1};
    ControlArray<Lamp> ShpDataWr{*this, "ShpDataWr", 0, kPots* kRegisters - 1};
    ControlArray<Lamp> ShpDataRd{*this, "ShpDataRd", 0, kPots* kRegisters - 1};
    ControlArray<Button> cmdRDData{*this, "cmdRDData", 0, kPots* kRegisters - 1};
    ControlArray<Button> cdmWrData{*this, "cdmWrData", 0, kPots* kRegisters - 1};
    Button cmdReadAll{*this, "cmdReadAll"};
    Button cmdFillRegs{*this, "cmdFillRegs"};
    Button cmdSetWReqRd{*this, "cmdSetWReqRd"};
    Button cmdResetInstruction{*this, "cmdResetInstruction"};
    ControlArray<Lamp> ShpLegend{*this, "ShpLegend", 0, 4};
    ControlArray<Label> Label5{*this, "Label5", 0, 3};

    // Increments
    Frame FrIncrDec{*this, "FrIncrDec"};
    ControlArray<Button> cmdIncrWip{*this, "cmdIncrWip", 0, 2};
    Reading lblPotVolts{*this, "lblPotVolts"};
    Label lvlPotN{*this, "lvlPotN"};

    void OptInstruction_Click(int index);
    void OptRegSel_Click(int index);
    void OptWiper_Click(int index);
    /// Sends the instruction composed. \throws Fault if its text or the byte to write is no hexadecimal
    /// number; nothing has been sent then, and no pin moved.
    void cmdDoInstruction_Click();
    void cmdRdWCR_Click(int index);
    void cmdWrWCR_Click(int index);
    void cmdRDData_Click(int index);
    void cdmWrData_Click(int index);
    /// Reads all twenty registers; the user may stop it.
    void cmdReadAll_Click();
    /// Writes a value of its own to each of the twenty registers; the user may stop it.
    void cmdFillRegs_Click();
    void cmdSetWReqRd_Click();
    void cmdResetInstruction_Click();
    /// 0 up, 1 down, 2 ends the increments.
    void cmdIncrWip_Click(int index);

    /// What was read of the part no longer holds. \param cause in words, for the user
    void markRegistersStale(const std::string& cause);
    /// The device panel beside this one; nullptr while it is not loaded.
    InstructionCompanion* loadedCompanion() const { return uses_.loadedCompanion(); }
    /// Whether the byte that would go out is what the fields and the choice say: a choice that leaves the old
    /// pot in the byte, or the other panel's fields, make the two differ.
    bool asChosen() const;
    /// What Go sends: the byte shown, but for the increments, whose byte is made of the field of the pot
    /// alone, whatever is shown. Nothing while that is no number.
    std::optional<std::uint8_t> byteToSend() const;
    /// Whether the lines are moved by hand now.
    bool stepping() const { return stepping_; }
    /// Whether an instruction is under way.
    bool busy() const { return busy_ > 0; }
    /// A transfer inside one pot that the part has taken.
    struct Transfer {
        RegisterPlace place{}; ///< of the data register
        bool intoWiper = false;
    };
    /// Those since which neither end has been read or changed.
    const std::vector<Transfer>& transfers() const { return transfers_; }
    [[nodiscard]] Subscription observeTransfers(std::function<void()> observer) {
        return transfersChanged_.connect(std::move(observer));
    }
    const InstructionFields& fields() const { return uses_.fields; }
    const InstructionChoice& choice() const { return uses_.choice; }

  protected:
    InstructionPanel(PanelContext& context, const std::string& name, const std::string& title,
                     const Uses& uses, const Words& words, std::unique_ptr<InstructionBus> bus);

  private:
    /// While one exists nothing of the panel that composes or sends takes a gesture: the instruction under
    /// way must not be changed by a click that its own waits let in.
    class Busy {
      public:
        explicit Busy(InstructionPanel& panel);
        ~Busy();
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

      private:
        InstructionPanel& panel_;
    };
    /// One after the other through all registers, until the user stops it.
    class AllRegisters;
    InstructionCompanion& companion() const { return uses_.companion(); }
    void wireInstruction();
    void wireRegisters();
    void wireIncrements();
    void refreshEnabled();
    /// Every option free, and the captions of before a choice.
    void freeOptions();
    void paintRow(int row, Colour colour);
    void compose();
    /// Off and on again, so that its handler runs though it was on.
    static void reselect(OptionButton& option);
    /// Nothing of this panel may be half read or half written by a text that is no number.
    void requireHexTexts() const;
    InstructionResult exchange();
    std::uint8_t sentByte() const;
    static bool isHexText(const std::string& text);
    void blockUpdate(const InstructionResult& result);
    void registerRead(Reading& shown, Lamp& lamp, const InstructionResult& result);
    void registerWritten(TextBox& shown, Lamp& lamp, Reading& asRead, const InstructionResult& result);
    void transferred(const RegisterPlace& place, const InstructionResult& result);
    /// Shows in a register's place that it holds something that nobody has read.
    static void showMark(Reading& shown, const char* mark, const std::string& cause);
    /// Makes readings old that the byte sent has changed under another name, and keeps the transfers.
    void noteEffect(bool answered);
    void noteTransfers(const InstructionEffect& effect, bool answered);
    void forgetTransfers(const std::function<bool(const Transfer&)>& which);
    void showResult(bool good);
    void tellInstruction(const InstructionResult& result);

    void beginIncrements();
    void samplePot();
    void stepPot(bool up);
    void terminate();
    void leaveIncrements();
    void freeControls(bool free);
    void abortIncrements();
    /// Ends the increments without the part. \param why in words
    void incrementsLost(const std::string& why);
    bool partLost() const { return powered_ && !uses_.services.vccOn(); }

    Uses uses_;
    Words words_;
    std::unique_ptr<InstructionBus> bus_;
    StepSequence steps_;
    OptionGroup instructionGroup_;
    OptionGroup registerGroup_;
    OptionGroup potGroup_;
    int busy_ = 0;
    bool lastAnswered_ = false;
    bool unloaded_ = false; ///< an action that is still on the stack has nothing left to do
    bool stepping_ = false;
    bool pinsTaken_ = false;    ///< the crossbar has given the bus lines up
    bool linesDriven_ = false;  ///< a run has begun on them
    bool stepUnderWay_ = false; ///< a handler of the increments is on the stack
    bool endWanted_ = false;    ///< the user has aborted meanwhile
    bool powered_ = false;      ///< the part had VCC when they began
    int steppedPot_ = 0;
    /// What stood in the stepped pot's field before the marks of the increments took its place.
    std::optional<std::string> entryBefore_;
    std::vector<Transfer> transfers_;
    Signal<> transfersChanged_;
    std::unique_ptr<Activity> activity_;
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

} // namespace vrk
