#include "sim/Board.h"

#include <algorithm>

namespace vrk::sim {

namespace {
constexpr double kTemperatureVolts = 0.8475; // 0.776 V and 2.86 mV a degree, at 25 degrees
constexpr std::uint8_t kSdaMask = 1U << pin::kSda.bit;
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

void Board::socket(std::unique_ptr<Part> part, int socket) {
    if (part) {
        part->memory().setGuard(this);
        part->memory().onStore([this, socket] {
            if (storeListener_) {
                storeListener_(socket);
            }
        });
    }
    sockets_.at(static_cast<std::size_t>(socket)).put(std::move(part));
    settle();
}

void Board::passTime(Milliseconds now) {
    for (Socket& socket : sockets_) {
        if (Part* part = socket.part()) {
            part->passTime(now);
        }
    }
}

void Board::settle() {
    const PinLevels lines = powered_ ? ports_.lines() : PinLevels{};
    supplies_.follow(lines);
    const bool select = isHigh(lines, pin::kSpiSelect);
    for (Socket& socket : sockets_) {
        socket.follow({supplies_.vcc(), supplies_.vminus(), lines}, select || supplies_.selected());
    }
    supplies_.u5().driveSpi(
        {select || !supplies_.selected(), isHigh(lines, pin::kSpiClock), isHigh(lines, pin::kSpiOut)});
}

bool Board::missNextStore() {
    return faults_.take(FaultKind::MissedStore).has_value();
}

std::uint8_t Board::readRegister(std::uint8_t address) {
    const bool pulled = !ports_.smbusConnected() && !sdaHigh();
    return ports_.read(address, pulled || faults_.waiting(FaultKind::StuckSda) ? kSdaMask : 0);
}

void Board::writeRegister(std::uint8_t address, std::uint8_t value) {
    ports_.write(address, value);
    settle();
}

// ---- the bus ports of the controller

void Board::driveI2c(bool sda, bool scl) {
    masterSda_ = sda;
    masterScl_ = scl;
    if (ports_.smbusConnected()) {
        for (Socket& socket : sockets_) {
            socket.driveI2c(sda, scl);
        }
    }
}

bool Board::sdaHigh() const {
    return std::none_of(sockets_.begin(), sockets_.end(),
                        [](const Socket& socket) { return socket.pullsSdaLow(); });
}

bool Board::i2cClock(bool sda) {
    driveI2c(sda, false);
    driveI2c(sda, true);
    const bool level = sda && (sdaHigh() || !ports_.smbusConnected());
    driveI2c(sda, false);
    return level;
}

void Board::i2cStart() {
    if (!masterScl_) { // a repeated one
        driveI2c(true, false);
    }
    driveI2c(true, true);
    driveI2c(false, true);
    driveI2c(false, false);
}

bool Board::i2cWrite(std::uint8_t byte) {
    for (int bit = 7; bit >= 0; --bit) {
        i2cClock(((byte >> bit) & 1) != 0);
    }
    return !i2cClock(true);
}

std::uint8_t Board::i2cRead(bool acknowledged) {
    unsigned byte = 0;
    for (int bit = 0; bit < 8; ++bit) {
        byte = byte << 1 | (i2cClock(true) ? 1U : 0U);
    }
    i2cClock(!acknowledged);
    return static_cast<std::uint8_t>(byte);
}

void Board::i2cStop() {
    driveI2c(false, false);
    driveI2c(false, true);
    driveI2c(true, true);
}

void Board::driveSpi(const SpiLevels& levels) {
    const bool u5 = supplies_.selected();
    supplies_.u5().driveSpi({levels.select || !u5, levels.clock, levels.data});
    for (Socket& socket : sockets_) {
        socket.driveSpi({levels.select || u5, levels.clock, levels.data});
    }
}

bool Board::spiInput() const {
    return supplies_.u5().spiOutput() || std::any_of(sockets_.begin(), sockets_.end(),
                                                     [](const Socket& socket) { return socket.spiOutput(); });
}

std::vector<std::uint8_t> Board::spiTransfer(const std::vector<std::uint8_t>& out,
                                             std::optional<std::size_t> phaseChange) {
    std::vector<std::uint8_t> in(out.size(), 0);
    if (!ports_.spiConnected()) {
        return in;
    }
    const SpiMode mode = ports_.spiMode();
    SpiLevels levels{!mode.selectIdle, mode.clockIdle, false};
    driveSpi(levels);
    for (std::size_t i = 0; i < out.size(); ++i) {
        const bool secondEdge = mode.secondEdge != (phaseChange && i >= *phaseChange);
        unsigned byte = 0;
        for (int bit = 7; bit >= 0; --bit) {
            const bool data = ((out[i] >> bit) & 1) != 0;
            // Data is put out ahead of the edge at which it is taken: the first or the second of a clock.
            if (!secondEdge) {
                levels.data = data;
                driveSpi(levels);
                byte = byte << 1 | (spiInput() ? 1U : 0U);
            }
            levels.clock = !mode.clockIdle;
            driveSpi(levels);
            if (secondEdge) {
                levels.data = data;
                driveSpi(levels);
                byte = byte << 1 | (spiInput() ? 1U : 0U);
            }
            levels.clock = mode.clockIdle;
            driveSpi(levels);
        }
        in[i] = static_cast<std::uint8_t>(byte);
    }
    settle(); // the lines back to idle, and the supplies to U5's new code
    return in;
}

double Board::vinVolts(int input) const {
    // VIN1 sees the wiper of part #2 where there is one, else the second channel of part #1.
    const bool second = input == 1 && part(1) != nullptr;
    const Part* wired = part(second ? 1 : 0);
    // The board halves its inputs, so that 5 V stay below the reference.
    return wired != nullptr ? wired->wiperRatio(second ? 0 : input) * supplies_.vcc() / 2.0 : 0.0;
}

double Board::channelVolts(std::uint8_t code) const {
    if (const auto held = heldVolts_.find(code); held != heldVolts_.end()) {
        return held->second;
    }
    if (code >= channel::kVin0 && code <= channel::kVin3) {
        return vinVolts(code - channel::kVin0);
    }
    if (code == channel::kVin4) {
        return supplies_.vcc() / 2.0;
    }
    if (code <= channel::kLastPin) {
        const int port = code < 8 ? 1 : 2;
        return isHigh(ports_.lines(), {port, code % 8}) ? kReferenceVolts : 0.0;
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
