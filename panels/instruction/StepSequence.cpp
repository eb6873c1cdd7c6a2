#include "panels/instruction/StepSequence.h"

#include "link/reportLayout.h"

namespace vrk {

namespace {
namespace sfr = report::sfr;
constexpr std::uint8_t kBusesOnPins = 0x06; // XBR0: SPI and SMBus
// The part's address pins are taken as low here, whatever address the device panel works with.
constexpr std::uint8_t kSlaveByte = 0x50;
constexpr std::uint8_t kStepInstruction = 0x20;
} // namespace

bool StepSequence::takePins() {
    return port_.send(sfr::XBAR0, wiring_.crossbar);
}

void StepSequence::givePinsBack() {
    if (!port_.send(sfr::XBAR0, kBusesOnPins)) // nobody else would, and no part answers without
        (void)port_.send(sfr::XBAR0, kBusesOnPins);
}

bool StepSequence::readPort() {
    const auto now = port_.read();
    if (now)
        lines_ = *now;
    return now.has_value();
}

void StepSequence::prepare() {
    const unsigned bus = wiring_.data | wiring_.clock | wiring_.select;
    lines_ = static_cast<std::uint8_t>(framedBySelect() ? lines_ & ~bus : lines_ | bus);
    port_.set(lines_);
}

bool StepSequence::begin(int pot) {
    taken_ = true;
    if (framedBySelect()) {
        for (int report = 0; report < 3; ++report)
            sendLines();
    } else {
        sendLines();
        move(wiring_.data, false); // START
        move(wiring_.clock, false);
    }
    clockByte(kSlaveByte);
    clockByte(static_cast<std::uint8_t>(kStepInstruction | (pot & 3)));
    return taken_;
}

void StepSequence::clockByte(std::uint8_t byte) {
    for (int bit = 7; bit >= 0; --bit)
        clockBit(((byte >> bit) & 1) != 0);
    if (!framedBySelect())
        clockBit(true); // the part's acknowledge, which nobody looks at
}

void StepSequence::clockBit(bool bit) {
    change(wiring_.data, bit);
    change(wiring_.clock, true);
    change(wiring_.clock, false);
}

bool StepSequence::step(bool up) {
    taken_ = true;
    move(wiring_.data, up);
    move(wiring_.clock, true);
    move(wiring_.clock, false);
    return taken_;
}

void StepSequence::end(const std::function<void()>& between) {
    if (framedBySelect()) {
        move(wiring_.select, true);
        between();
        return;
    }
    move(wiring_.data, false);
    between();
    move(wiring_.clock, true);
    between();
    move(wiring_.data, true);
}

void StepSequence::move(std::uint8_t mask, bool high) {
    lines_ = static_cast<std::uint8_t>(high ? lines_ | mask : lines_ & ~unsigned{mask});
    sendLines();
}

void StepSequence::sendLines() {
    taken_ = port_.send(sfr::P0, lines_) && taken_;
}

void StepSequence::change(std::uint8_t mask, bool high) {
    if (((lines_ & mask) != 0) != high)
        move(mask, high);
}

} // namespace vrk
