#include "sim/Board.h"

#include <algorithm>

namespace vrk::sim {

namespace {
constexpr double kTemperatureVolts = 0.8475; // 0.776 V and 2.86 mV a degree, at 25 degrees
constexpr std::uint8_t kSdaPin = 0x10;       // P0.4
constexpr std::uint8_t kMuxCode = 0x1F;
} // namespace

Board::Board(std::uint32_t seed, Faults& faults) : faults_(faults), converter_(seed) {}

void Board::powerUp() {
    powered_ = true;
    ports_.reset();
    converter_.reset();
    external_.reset();
    supplies_.powerUp();
    settle();
}

void Board::powerDown() {
    powered_ = false;
    supplies_.powerDown();
    settle();
}

void Board::socket(std::unique_ptr<Part> part) {
    part_ = std::move(part);
    if (part_) {
        part_->setStoreGuard(this);
    }
    settle();
}

void Board::settle() {
    const PinLevels lines = powered_ ? ports_.lines() : PinLevels{};
    supplies_.follow(lines);
    if (part_) {
        part_->surround({supplies_.vcc(), supplies_.vminus(), lines});
    }
}

bool Board::missNextStore() {
    return faults_.take(FaultKind::MissedStore).has_value();
}

std::uint8_t Board::readRegister(std::uint8_t address) {
    ports_.pullLow(0, faults_.waiting(FaultKind::StuckSda) ? kSdaPin : 0);
    return ports_.read(address);
}

void Board::writeRegister(std::uint8_t address, std::uint8_t value) {
    ports_.write(address, value);
    settle();
}

Part* Board::partOnI2c() const {
    return part_ && part_->powered() && ports_.smbusConnected() ? part_.get() : nullptr;
}

void Board::i2cStart() {
    if (Part* part = partOnI2c()) {
        part->i2cStart();
    }
}

bool Board::i2cWrite(std::uint8_t byte) {
    Part* part = partOnI2c();
    return part != nullptr && part->i2cWrite(byte);
}

std::uint8_t Board::i2cRead(bool acknowledged) {
    Part* part = partOnI2c();
    return part != nullptr ? part->i2cRead(acknowledged) : 0xFF;
}

void Board::i2cStop() {
    if (Part* part = partOnI2c()) {
        part->i2cStop();
    }
}

std::vector<std::uint8_t> Board::spiTransfer(const std::vector<std::uint8_t>& out) {
    std::vector<std::uint8_t> in(out.size(), 0);
    Part* part = supplies_.selected() ? &supplies_.u5() : part_.get();
    if (part == nullptr || !part->powered() || !ports_.spiConnected()) {
        return in;
    }
    part->spiSelect(true);
    std::transform(out.begin(), out.end(), in.begin(),
                   [part](std::uint8_t byte) { return part->spiExchange(byte); });
    part->spiSelect(false);
    settle();
    return in;
}

double Board::channelVolts(std::uint8_t code) const {
    if (const auto held = heldVolts_.find(code); held != heldVolts_.end()) {
        return held->second;
    }
    if (code >= channel::kVin0 && code <= channel::kVin3) {
        // The board halves its inputs, so that 5 V stay below the reference.
        return part_ ? part_->wiperRatio(code - channel::kVin0) * supplies_.vcc() / 2.0 : 0.0;
    }
    if (code == channel::kVin4) {
        return supplies_.vcc() / 2.0;
    }
    if (code <= channel::kLastPin) {
        const int port = code < 8 ? 1 : 2;
        return pinHigh(ports_.lines(), port, code % 8) ? kReferenceVolts : 0.0;
    }
    if (code == channel::kTemperature) {
        return kTemperatureVolts;
    }
    return code == channel::kVdd ? kReferenceVolts : 0.0;
}

int Board::convert(int noise) {
    return converter_.convert(
        ports_.latch(sfr::AMX0P) & kMuxCode, ports_.latch(sfr::AMX0N) & kMuxCode,
        [this](std::uint8_t code) { return channelVolts(code); }, noise);
}

void Board::holdInput(std::uint8_t code, std::optional<double> volts) {
    if (volts) {
        heldVolts_[code] = *volts;
    } else {
        heldVolts_.erase(code);
    }
}

} // namespace vrk::sim
