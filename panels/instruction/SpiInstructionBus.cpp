#include "panels/instruction/InstructionBus.h"

#include "panels/blocks/spiRow.h"
#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {
/// Places of a frame: fields count from 1, the bytes that come back from 0.
enum Sent : int { kId = 1, kInstruction = 2, kData = 3 };
enum Came : int { kEcho = SpiRowFields::kCheckByte, kValue = 2 };
constexpr Milliseconds kBeforeRead{20};
} // namespace

SpiInstructionBus::SpiInstructionBus(BenchServices& benchServices, PanelContext& context,
                                     std::function<Frame()> frame)
    : InstructionBus(benchServices), context_(context), frame_(std::move(frame)) {}

InstructionResult SpiInstructionBus::exchange(const std::string& instruction, int lastPlace) {
    frmMotherboardDAQ2& board = services().board();
    board.cmdSPIOWrite3_Click();
    const bool replied = services().console().replied();
    const SpiRowFields row = spiReadRow(board);
    const bool own = row.holds(kInstruction, instruction);
    const int length = decimalByte(board.txtSPIWrQty3.text());
    if (!replied)
        failure_ = "the board did not reply";
    else if (!own)
        failure_ = "another frame went out meanwhile";
    else if (length <= lastPlace)
        failure_ = "the frame of " + decimalText(length) + " bytes ends ahead of the answer";
    else
        failure_ = "the part did not answer";
    return {.good = replied,
            // A frame that ends ahead of the answer shows what an earlier one left in its place.
            .answered = replied && own && length > lastPlace && row.heard(),
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
    return exchange(instruction, kValue);
}

InstructionResult SpiInstructionBus::write(const std::string& instruction, const std::string& data) {
    frmMotherboardDAQ2& board = services().board();
    board.txtSPIWrite3Data[kId].setText(frame_().id);
    board.txtSPIWrQty3.setText("3");
    board.txtSPIWrite3Data[kInstruction].setText(instruction);
    board.txtSPIWrite3Data[kData].setText(data);
    return exchange(instruction, kEcho);
}

InstructionResult SpiInstructionBus::transfer(const std::string& instruction) {
    frmMotherboardDAQ2& board = services().board();
    board.txtSPIWrite3Data[kId].setText(frame_().id);
    board.txtSPIWrQty3.setText("2");
    board.txtSPIWrite3Data[kInstruction].setText(instruction);
    return exchange(instruction, kEcho);
}

bool SpiInstructionBus::lastGood() const {
    return services().link.hidLinkCode == 0;
}

} // namespace vrk
