#include "sim/Socket.h"

namespace vrk::sim {

void Socket::put(std::unique_ptr<Part> part) {
    part_ = std::move(part);
    i2c_.restart();
    spi_.restart();
}

void Socket::follow(const Surroundings& now, bool spiSelect) {
    if (part_) {
        part_->surround(now);
    }
    driveI2c(isHigh(now.pins, pin::kSda), isHigh(now.pins, pin::kScl));
    driveSpi({spiSelect, isHigh(now.pins, pin::kSpiClock), isHigh(now.pins, pin::kSpiOut)});
}

void Socket::driveI2c(bool sda, bool scl) {
    if (live()) {
        i2c_.follow(sda, scl, *part_);
    } else {
        i2c_.reset(sda, scl);
    }
}

void Socket::driveSpi(const SpiLevels& levels) {
    if (live()) {
        spi_.follow(levels, *part_);
    } else {
        spi_.reset(levels);
    }
}

} // namespace vrk::sim
