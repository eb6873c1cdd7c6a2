#include "sim/BankPart.h"

namespace vrk::sim {

namespace {
constexpr std::uint8_t kPots = 4;
constexpr Pin kDs0{0, 6}, kDs1{0, 7}, kStepClock{1, 0}, kSelect{1, 1}, kStepUp{1, 2};
} // namespace

std::optional<std::uint8_t> BankPart::slaveAddress() const {
    return isHigh(pins(), kSelect) ? std::optional(address_) : std::nullopt;
}

std::uint8_t BankPart::readRegister(std::uint8_t reg) const {
    if (reg >= kPots) {
        return status_;
    }
    return static_cast<std::uint8_t>(bankSelected() ? registers_.data(reg, bank()) : registers_.wiper(reg));
}

bool BankPart::writeRegister(std::uint8_t reg, std::uint8_t value) {
    if (reg >= kPots) {
        status_ = value & 7;
    } else if (bankSelected()) {
        registers_.store(reg, bank(), value);
    } else {
        registers_.setWiper(reg, value);
    }
    return true;
}

void BankPart::onPowerUp() {
    I2cRegisterPart::onPowerUp();
    registers_.powerUp();
    status_ = 0;
}

void BankPart::onPins(const PinLevels& before, const PinLevels& now) {
    const int pot = (isHigh(now, kDs0) ? 1 : 0) + (isHigh(now, kDs1) ? 2 : 0);
    if (rose(before, now, kSelect) && isHigh(now, kStepClock)) {
        registers_.wiperToData(pot, 0);
    } else if (!isHigh(before, kSelect) && !isHigh(now, kSelect) && rose(before, now, kStepClock)) {
        registers_.step(pot, isHigh(now, kStepUp));
    }
}

void BankPart::describe(PartState& state) const {
    registers_.describe(state);
    state.registers["status"] = status_;
}

} // namespace vrk::sim
