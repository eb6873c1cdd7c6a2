#include "sim/RegisterPart.h"

namespace vrk::sim {

bool shutdownPinLow(const PinLevels& pins) {
    return !pinHigh(pins, 1, 2);
}

bool RegisterPart::i2cWrite(std::uint8_t byte) {
    switch (phase_) {
    case Phase::SlaveByte: {
        const auto address = static_cast<std::uint8_t>(baseAddress_ + addressPins(pins()));
        if ((byte & 0xFE) != address) {
            phase_ = Phase::Idle;
            return false;
        }
        phase_ = (byte & 1) != 0 ? Phase::Reading : Phase::Pointer;
        return true;
    }
    case Phase::Pointer:
        pointer_ = byte;
        phase_ = Phase::Data;
        return true;
    case Phase::Data:
        if (!memory_.write(pointer_, byte, storeGuard())) {
            phase_ = Phase::Idle;
            return false;
        }
        ++pointer_;
        return true;
    case Phase::Reading: // the part drives the line itself and acknowledges nothing
    case Phase::Idle:
        break;
    }
    return false;
}

std::uint8_t RegisterPart::i2cRead(bool acknowledged) {
    if (phase_ != Phase::Reading) {
        return 0xFF;
    }
    if (!acknowledged) {
        phase_ = Phase::Idle;
    }
    return memory_.read(pointer_++);
}

double RegisterPart::wiperRatio(int channel) const {
    return powered() && !memory_.shutDown() && !shutdownPinLow(pins()) ? memory_.ratio(channel) : 0.0;
}

void RegisterPart::onPowerUp() {
    memory_.powerUp();
    phase_ = Phase::Idle;
    pointer_ = 0;
}

void RegisterPart::onPowerDown() {
    memory_.powerDown();
}

} // namespace vrk::sim
