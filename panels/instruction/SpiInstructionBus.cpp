#include "panels/instruction/InstructionBus.h"

#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {
/// Places of a frame: fields count from 1, the bytes that come back from 0.
enum Sent : int { kId = 1, kInstruction = 2, kData = 3 };
enum Came : int { kEcho = 1, kValue = 2 };
constexpr Milliseconds kBeforeRead{20};
} // namespace

SpiInstructionBus::SpiInstructionBus(BenchServices& benchServices, PanelContext& context,
                                     std::function<Frame()> frame)
    : InstructionBus(benchServices), context_(context), frame_(std::move(frame)) {}

InstructionResult SpiInstructionBus::exchange() {
    frmMotherboardDAQ2& board = services().board();
    board.cmdSPIOWrite3_Click();
    const bool replied = services().console().replied();
    return {.good = replied,
            .answered = replied && hexToInt(board.txtSPIORead3[kEcho].text()) != 0,
            .value = board.txtSPIORead3[kValue].text()};
}

InstructionResult SpiInstructionBus::read(const std::string& instruction) {
    frmMotherboardDAQ2& board = services().board();
    const Frame frame = frame_();
    board.txtSPIWrite3Data[kId].setText(frame.id);
    board.txtSPIWrQty3.setText(frame.readLength);
    context_.events.letEventsRun();
    context_.clock().sleep(kBeforeRead);
    board.txtSPIWrite3Data[kInstruction].setText(instruction);
    InstructionResult result = exchange();
    // A frame that ends ahead of the value shows what an earlier one left in its place.
    result.answered = result.answered && decimalByte(frame.readLength) > kValue;
    return result;
}

InstructionResult SpiInstructionBus::write(const std::string& instruction, const std::string& data) {
    frmMotherboardDAQ2& board = services().board();
    board.txtSPIWrite3Data[kId].setText(frame_().id);
    board.txtSPIWrQty3.setText("3");
    board.txtSPIWrite3Data[kInstruction].setText(instruction);
    board.txtSPIWrite3Data[kData].setText(data);
    return exchange();
}

InstructionResult SpiInstructionBus::transfer(const std::string& instruction) {
    frmMotherboardDAQ2& board = services().board();
    board.txtSPIWrite3Data[kId].setText(frame_().id);
    board.txtSPIWrQty3.setText("2");
    board.txtSPIWrite3Data[kInstruction].setText(instruction);
    return exchange();
}

bool SpiInstructionBus::lastGood() const {
    return services().link.hidLinkCode == 0;
}

std::string SpiInstructionBus::failure() const {
    return services().console().replied() ? "the part did not answer" : "the board did not reply";
}

} // namespace vrk
