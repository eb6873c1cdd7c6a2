#include "panels/instruction/InstructionBus.h"

#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {
constexpr Milliseconds kA0Settle{20};
} // namespace

I2cInstructionBus::I2cInstructionBus(BenchServices& benchServices, PanelContext& context,
                                     std::function<std::string()> address)
    : InstructionBus(benchServices), context_(context), address_(std::move(address)) {}

void I2cInstructionBus::setAddress() const {
    services().link.i2cAddress = static_cast<std::uint8_t>(hexToByte(address_()) & 0xFEU);
}

bool I2cInstructionBus::answeredSince(unsigned transfers) const {
    const modHID& link = services().link;
    return link.transfers() != transfers && link.lastTransfer() == kLinkGood && link.i2cStatus == kLinkGood;
}

InstructionResult I2cInstructionBus::read(const std::string& instruction) {
    frmMainF340& console = services().console();
    setAddress();
    console.txtNumToRead.setText("1");
    RaisedA0 raised(port());
    context_.events.letEventsRun();
    context_.clock().sleep(kA0Settle);
    console.txtStartRegRD.setText(instruction);
    const unsigned before = services().link.transfers();
    console.cmdRead_Click();
    const bool instructed =
        console.chk2WireRead.checked() || console.ChK2WireCommand.checked() || console.chkRandom.checked();
    const InstructionResult result{.good = lastGood(),
                                   .answered = instructed && answeredSince(before),
                                   .value = console.TXTI2C[0].text()};
    raised.lower();
    return result;
}

InstructionResult I2cInstructionBus::send(unsigned count, const std::string& instruction,
                                          const std::string& data) {
    frmMainF340& console = services().console();
    setAddress();
    console.txtNumToWrite.setText(decimalText(count));
    console.txtStartRegWr.setText(instruction);
    console.txtWriteVal[0].setText(instruction);
    if (count > 1)
        console.txtWriteVal[1].setText(data);
    const unsigned before = services().link.transfers();
    console.cmdWrite_Click();
    // A register byte of the console's own stands where the part expects the data.
    return {.good = lastGood(), .answered = !console.chkRandom.checked() && answeredSince(before)};
}

InstructionResult I2cInstructionBus::write(const std::string& instruction, const std::string& data) {
    return send(2, instruction, data);
}

InstructionResult I2cInstructionBus::transfer(const std::string& instruction) {
    return send(1, instruction, {});
}

bool I2cInstructionBus::lastGood() const {
    return services().link.i2cStatus == kLinkGood;
}

std::string I2cInstructionBus::failure() const {
    // A reply that never came leaves the status of the exchange before it.
    const int status = services().link.lastTransfer();
    if (status == kLinkReadFailed)
        return "the board did not reply";
    if (status == kLinkWriteFailed)
        return "the board did not take the request";
    return lastGood() ? "the console's I2C options are not those of this part"
                      : "bus status " + decimalText(services().link.i2cStatus);
}

} // namespace vrk
