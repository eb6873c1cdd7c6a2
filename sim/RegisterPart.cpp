#include "sim/RegisterPart.h"

namespace vrk::sim {

bool I2cRegisterPart::i2cWrite(std::uint8_t byte) {
    switch (phase_) {
    case Phase::SlaveByte:
        if ((byte & 0xFE) != slaveAddress()) {
            phase_ = Phase::Idle;
            return false;
        }
        phase_ = (byte & 1) != 0 ? Phase::Reading : Phase::Pointer;
        return true;
    case Phase::Pointer:
        pointer_ = byte;
        phase_ = Phase::Data;
        return true;
    case Phase::Data:
        if (!writeRegister(pointer_, byte)) {
            phase_ = Phase::Idle;
            return false;
        }
        ++pointer_;
        return true;
    case Phase::Reading:
    case Phase::Idle:
        break;
    }
    return false;
}

void I2cRegisterPart::onPowerUp() {
    phase_ = Phase::Idle;
    pointer_ = 0;
}

std::optional<std::uint8_t> RegisterPart::slaveAddress() const {
    return static_cast<std::uint8_t>(base_ + (addressPins(pins()) << 1));
}

double RegisterPart::wiperRatio(int channel) const {
    const bool on = powered() && !registers_.shutDown() && isHigh(pins(), pin::kShutdown);
    return on ? registers_.ratio(channel) : 0.0;
}

void RegisterPart::onPowerUp() {
    I2cRegisterPart::onPowerUp();
    registers_.powerUp();
}

} // namespace vrk::sim
