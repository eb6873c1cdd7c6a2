#include "sim/SpiRegisterPart.h"

#include "sim/RegisterPart.h"

namespace vrk::sim {

void SpiRegisterPart::spiSelect(bool low) {
    selected_ = low;
    place_ = 0;
    previous_ = 0;
    access_.reset();
    answer_.reset();
}

std::uint8_t SpiRegisterPart::spiExchange(std::uint8_t in) {
    if (!selected_) {
        return 0;
    }
    const std::uint8_t out = id_ ? exchangeWithId(in) : exchangeWithoutId(in);
    ++place_;
    return out;
}

std::optional<SpiRegisterPart::Access> SpiRegisterPart::decode(std::uint8_t command) const {
    if (id_) {
        const auto reg = static_cast<std::uint8_t>(command & 0x0F);
        if ((command & 0xF0) == 0xC0) {
            return Access{true, reg};
        }
        if ((command & 0xF0) == 0xB0) {
            return Access{false, reg};
        }
        return std::nullopt;
    }
    const auto reg = static_cast<std::uint8_t>(command & 0x1F);
    switch (command & 0xE0) {
    case 0xC0:
        return Access{true, reg};
    case 0x80:
        return Access{false, reg};
    case 0x60:
        return Access{true, layout_.acr};
    case 0x20:
        return Access{false, layout_.acr};
    default:
        return std::nullopt;
    }
}

std::uint8_t SpiRegisterPart::exchangeWithId(std::uint8_t in) {
    std::uint8_t out = previous_;
    previous_ = in;
    if (place_ == 0 && in != static_cast<std::uint8_t>(*id_ + addressPins(pins()))) {
        selected_ = false; // silent until chip select falls again
    } else if (place_ == 1) {
        access_ = decode(in);
    } else if (place_ >= 2 && access_) {
        if (!access_->write) {
            out = memory_.read(access_->reg);
        } else if (place_ == 2) {
            memory_.write(access_->reg, in, storeGuard());
        }
    }
    return out;
}

std::uint8_t SpiRegisterPart::exchangeWithoutId(std::uint8_t in) {
    if (place_ % 2 == 0) {
        command_ = in;
        return previous_;
    }
    const std::uint8_t out = answer_.value_or(command_);
    answer_.reset();
    previous_ = command_;
    if (const std::optional<Access> access = decode(command_)) {
        if (access->write) {
            memory_.write(access->reg, in, storeGuard());
        } else {
            answer_ = memory_.read(access->reg);
        }
    }
    return out;
}

double SpiRegisterPart::wiperRatio(int channel) const {
    return powered() && !memory_.shutDown() && !shutdownPinLow(pins()) ? memory_.ratio(channel) : 0.0;
}

void SpiRegisterPart::onPowerUp() {
    memory_.powerUp();
    spiSelect(false);
}

} // namespace vrk::sim
