#include "sim/SpiRegisterPart.h"

namespace vrk::sim {

void SpiRegisterPart::spiSelect(bool low) {
    listening_ = low;
    place_ = 0;
    out_ = 0;
    access_.reset();
    answer_.reset();
}

std::uint8_t SpiRegisterPart::spiNext() const {
    return listening_ ? out_ : 0;
}

void SpiRegisterPart::spiTake(std::uint8_t in) {
    if (!listening_) {
        return;
    }
    if (id_) {
        takeWithId(in);
    } else {
        takeWithoutId(in);
    }
    ++place_;
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

void SpiRegisterPart::takeWithId(std::uint8_t in) {
    out_ = in;
    if (place_ == 0) {
        // With another ID silent until chip select falls again.
        listening_ = in == static_cast<std::uint8_t>(*id_ + (addressPins(pins()) << 1));
    } else if (place_ == 1) {
        access_ = decode(in);
    } else if (place_ == 2 && access_ && access_->write) {
        registers_.write(access_->reg, in);
    }
    if (place_ >= 1 && access_ && !access_->write) {
        out_ = registers_.read(access_->reg);
    }
}

void SpiRegisterPart::takeWithoutId(std::uint8_t in) {
    if (place_ % 2 == 0) {
        command_ = in;
        out_ = answer_.value_or(command_);
        answer_.reset();
        return;
    }
    out_ = command_;
    if (const std::optional<Access> access = decode(command_)) {
        if (access->write) {
            registers_.write(access->reg, in);
        } else {
            answer_ = registers_.read(access->reg);
        }
    }
}

double SpiRegisterPart::wiperRatio(int channel) const {
    const bool on = powered() && !registers_.shutDown() && isHigh(pins(), pin::kShutdown);
    return on ? registers_.ratio(channel) : 0.0;
}

void SpiRegisterPart::onPowerUp() {
    registers_.powerUp();
    spiSelect(false);
}

} // namespace vrk::sim
