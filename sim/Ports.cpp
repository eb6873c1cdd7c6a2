#include "sim/Ports.h"

#include "link/reportLayout.h"

#include <algorithm>

namespace vrk::sim {

namespace {
namespace reg = report::sfr;

constexpr std::array<std::uint8_t, kPortCount> kData = {reg::P0, reg::P1, reg::P2, reg::P3, reg::P4};
constexpr std::array<std::uint8_t, kPortCount> kInputMode = {reg::P0MDIN, reg::P1MDIN, reg::P2MDIN,
                                                             reg::P3MDIN, reg::P4MDIN};

constexpr std::uint8_t kSpiEnable = 0x02;      // XBAR0
constexpr std::uint8_t kSmbusEnable = 0x04;    // XBAR0
constexpr std::uint8_t kCrossbarEnable = 0x40; // XBAR1

constexpr std::uint8_t kSpiPins = 0x0F;
constexpr std::uint8_t kSpiClock = 0x01, kSpiDataOut = 0x04, kSpiSelect = 0x08;
constexpr std::uint8_t kClockPhase = 0x20, kClockPolarity = 0x10; // SPI0CFG
constexpr std::uint8_t kSelectLevel = 0x04;                       // SPI0CN
constexpr std::uint8_t kSmbusPins = 0x30;

// The firmware's start image of the three ports that go to the motherboard.
constexpr std::uint8_t kP0AtStart = 0x3F; // A0, A1 low
constexpr std::uint8_t kP1AtStart = 0xFC; // A2, A3 low, /SHDN high
constexpr std::uint8_t kP2AtStart = 0x9F; // both supplies off, U5 not selected
} // namespace

void Ports::reset() {
    file_.fill(0);
    for (std::size_t p = 0; p < kData.size(); ++p) {
        file_[kData[p]] = 0xFF;
        file_[kInputMode[p]] = 0xFF;
    }
    file_[reg::P0] = kP0AtStart;
    file_[reg::P1] = kP1AtStart;
    file_[reg::P2] = kP2AtStart;
    file_[reg::XBAR0] = kSpiEnable | kSmbusEnable;
    file_[reg::XBAR1] = kCrossbarEnable;
    file_[reg::SPI0CFG] = 0x40; // master, clock idle low, first edge
    file_[reg::SPI0CKR] = 0x0B; // 24 MHz / (2 * 12): 1 MHz
    file_[reg::SPI0CN] = 0x0D;  // enabled, four wires, select idle high
    file_[sfr::AMX0N] = 0x1F;   // against ground
    file_[sfr::ADC0CF] = 0x38;  // 3 MHz, the converter's fastest clock
    file_[sfr::REF0CN] = 0x0E;  // reference VDD, bias and temperature sensor on
}

std::uint8_t Ports::read(std::uint8_t address, std::uint8_t pulledLow) const {
    const auto port = std::find(kData.begin(), kData.end(), address);
    if (port == kData.end()) {
        return file_[address];
    }
    const std::uint8_t driven = level(static_cast<int>(port - kData.begin()));
    const unsigned openDrain = ~unsigned{file_[reg::P0MDOUT]};
    return static_cast<std::uint8_t>(address == reg::P0 ? driven & ~(pulledLow & openDrain) : driven);
}

void Ports::write(std::uint8_t address, std::uint8_t value) {
    if (isRegister(address)) {
        file_[address] = value;
    }
}

std::uint8_t Ports::level(int port) const {
    const auto p = static_cast<std::size_t>(port);
    return static_cast<std::uint8_t>(file_[kData[p]] & file_[kInputMode[p]]);
}

PinLevels Ports::lines() const {
    PinLevels lines{};
    for (int port = 0; port < kPortCount; ++port) {
        lines[static_cast<std::size_t>(port)] = level(port);
    }
    unsigned p0 = lines[0];
    if (spiConnected()) {
        const SpiMode mode = spiMode();
        p0 = (p0 & ~unsigned{kSpiPins}) | kSpiDataOut | (mode.clockIdle ? kSpiClock : 0U) |
             (mode.selectIdle ? kSpiSelect : 0U);
    }
    if (smbusConnected()) {
        p0 |= kSmbusPins;
    }
    lines[0] = static_cast<std::uint8_t>(p0);
    return lines;
}

SpiMode Ports::spiMode() const {
    return {.clockIdle = (file_[reg::SPI0CFG] & kClockPolarity) != 0,
            .secondEdge = (file_[reg::SPI0CFG] & kClockPhase) != 0,
            .selectIdle = (file_[reg::SPI0CN] & kSelectLevel) != 0};
}

bool Ports::spiConnected() const {
    return (file_[reg::XBAR0] & kSpiEnable) != 0 && (file_[reg::XBAR1] & kCrossbarEnable) != 0;
}

bool Ports::smbusConnected() const {
    return (file_[reg::XBAR0] & kSmbusEnable) != 0 && (file_[reg::XBAR1] & kCrossbarEnable) != 0;
}

} // namespace vrk::sim
