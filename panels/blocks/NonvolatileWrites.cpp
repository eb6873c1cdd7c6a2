#include "panels/blocks/NonvolatileWrites.h"

#include "link/modHID.h"
#include "link/reportLayout.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

using report::Command;

namespace {

constexpr std::uint8_t kVccSwitch = 0x20;   ///< P2.5
constexpr std::uint8_t kDacDeselect = 0x10; ///< P2.4: low while the SPI bus goes to the supplies' DAC
constexpr int kPots = 4;
constexpr int kSpiRegisters = 0x20;
constexpr std::uint8_t kVolatileBit = 0x80;

/// High half of a quad part's instruction; register in bits 3 and 2, pot in bits 1 and 0.
enum Quad : int { kAllWipersToData = 0x8, kWriteData = 0xC, kWiperToData = 0xE };
/// The same of a ten-bit part.
enum TenBit : int { kTenBitWriteData = 0xC, kTenBitWiperToData = 0xE };

constexpr bool isHigh(std::uint8_t port, int bit) {
    return ((port >> bit) & 1U) != 0;
}

std::string dataRegister(int pot, int reg) {
    return "DR" + decimalText(pot) + "." + decimalText(reg);
}

} // namespace

void NonvolatileWrites::restart() {
    counts_.clear();
    total_ = 0;
    warned_ = false;
    changed_.emit();
}

void NonvolatileWrites::powerLost() {
    volatileWrites_ = false;
    bank_ = 0;
    ports_[2] &= static_cast<std::uint8_t>(~kVccSwitch);
}

int NonvolatileWrites::ofWiper(int channel) const {
    int writes = 0;
    for (const auto& [name, number] : counts_)
        if (name == hexText(channel, 2) || startsWith(name, "DR" + decimalText(channel) + "."))
            writes += number;
    return writes;
}

bool NonvolatileWrites::wiperWritesAreStored(const StoreRules& rules) const {
    return (rules.protocol == PartProtocol::Registers && !volatileWrites_) ||
           (rules.protocol == PartProtocol::Banks && (bank_ & 1) != 0);
}

void NonvolatileWrites::setBudget(int budget) {
    if (std::exchange(budget_, budget) != budget)
        warned_ = false;
    changed_.emit();
}

bool NonvolatileWrites::shouldWarn(int more) {
    return total_ + more > budget_ && !std::exchange(warned_, true);
}

void NonvolatileWrites::count(const std::string& name) {
    ++counts_[name];
    ++total_;
    changed_.emit();
}

void NonvolatileWrites::look(const hid::Report& report, int status, const StoreRules& rules, bool pinsCount) {
    switch (static_cast<Command>(report[report::kCommandByte])) {
    case Command::SfrAccess:
        if (report[report::kSubCommandByte] == report::kWrite)
            lookAtPort(report[report::kSfrAddress], report[report::kSfrValue], rules, pinsCount);
        break;
    case Command::I2cTransfer:
        if (rules.bus == PartBus::I2C && status != kLinkError)
            lookAtI2c(report, rules);
        break;
    case Command::SpiTransfer:
        // A part without VCC hears nothing, and nobody says so on this bus.
        if (rules.bus == PartBus::SPI && (ports_[2] & kVccSwitch) != 0 && (ports_[2] & kDacDeselect) != 0)
            lookAtSpi(report, rules);
        break;
    default:
        break;
    }
}

void NonvolatileWrites::lookAtPort(std::uint8_t address, std::uint8_t value, const StoreRules& rules,
                                   bool pinsCount) {
    constexpr std::array<std::uint8_t, 3> kPorts{report::sfr::P0, report::sfr::P1, report::sfr::P2};
    const auto port =
        static_cast<std::size_t>(std::find(kPorts.begin(), kPorts.end(), address) - kPorts.begin());
    if (port == kPorts.size())
        return;
    const std::array<std::uint8_t, 2> before{ports_[0], ports_[1]};
    ports_.at(port) = value;
    if (address == report::sfr::P2) {
        if ((value & kVccSwitch) == 0)
            powerLost();
        return;
    }
    if (pinsCount && (ports_[2] & kVccSwitch) != 0)
        lookAtPins(before, rules);
}

void NonvolatileWrites::lookAtPins(std::array<std::uint8_t, 2> before, const StoreRules& rules) {
    constexpr int kCs1 = 6, kCs2 = 7, kInc = 1, kStore = 7, kStepClock = 0, kBankSelect = 1;
    const auto rose = [&](std::size_t port, int bit) {
        return !isHigh(before.at(port), bit) && isHigh(ports_.at(port), bit);
    };
    if (rules.pins == StoreRules::Pins::UpDown && isHigh(ports_[1], kInc)) {
        if (rose(0, kCs1))
            count("part 1");
        if (rose(0, kCs2))
            count("part 2");
    }
    if (rules.pins == StoreRules::Pins::PushButton && isHigh(before[0], kStore) && !isHigh(ports_[0], kStore))
        count("part 1");
    if (rules.protocol == PartProtocol::Banks && rose(1, kBankSelect) && isHigh(ports_[1], kStepClock))
        count(dataRegister((isHigh(ports_[0], kCs1) ? 1 : 0) + (isHigh(ports_[0], kCs2) ? 2 : 0), 0));
}

void NonvolatileWrites::lookAtI2c(const hid::Report& report, const StoreRules& rules) {
    const std::uint8_t slave = report[report::kI2cAddress];
    if (!rules.address || (slave & 0xFE) != *rules.address)
        return;
    const bool read = (slave & 1) != 0;
    const std::size_t length =
        std::min<std::size_t>(report[report::kI2cRegisterCount] + (read ? 0U : report[report::kI2cCount]),
                              report.size() - report::kI2cPayload);
    const Bytes bytes(report.data() + report::kI2cPayload, length);
    if (bytes.empty())
        return;
    if (rules.protocol == PartProtocol::Quad || rules.protocol == PartProtocol::TenBit) {
        instruction(bytes, rules.protocol);
        return;
    }
    // The first byte is the register; each one behind it goes to the next.
    int reg = bytes.front();
    for (const std::uint8_t value : bytes.subspan(1))
        writeRegister(reg++, value, rules);
}

void NonvolatileWrites::lookAtSpi(const hid::Report& report, const StoreRules& rules) {
    const std::size_t length =
        std::min<std::size_t>(report[report::kSpiCount], report.size() - report::kSpiPayload);
    Bytes bytes(report.data() + report::kSpiPayload, length);
    if (rules.address) {
        const std::uint8_t readMark = rules.protocol == PartProtocol::TenBit ? 1 : 0;
        if (bytes.empty() || (bytes.front() & ~readMark & 0xFF) != *rules.address)
            return;
        bytes = bytes.subspan(1);
    }
    if (rules.protocol == PartProtocol::Quad || rules.protocol == PartProtocol::TenBit) {
        // Clocks behind a read carry no data: the mark tells them from a write of as many bytes.
        const bool read = rules.address && report[report::kSpiPayload] != *rules.address;
        if (!bytes.empty())
            instruction(read ? bytes.first(1) : bytes, rules.protocol);
        return;
    }
    // With an ID one command a frame; without it a frame is as many pairs of command and data as it holds.
    const std::size_t used = rules.address ? std::min<std::size_t>(bytes.size(), 2) : bytes.size();
    for (std::size_t at = 0; at + 1 < used; at += 2) {
        const int command = bytes[at];
        if (rules.control == command)
            volatileWrites_ = (bytes[at + 1] & kVolatileBit) != 0;
        else if (command >= rules.firstWrite && command < rules.firstWrite + kSpiRegisters) {
            StoreRules plain = rules;
            plain.control.reset();
            writeRegister(command - rules.firstWrite, bytes[at + 1], plain);
        }
    }
}

void NonvolatileWrites::writeRegister(int reg, std::uint8_t value, const StoreRules& rules) {
    if (rules.protocol == PartProtocol::Banks) {
        if (reg >= kPots)
            bank_ = value;
        else if ((bank_ & 1) != 0)
            count(dataRegister(reg, (bank_ >> 1) & 3));
        return;
    }
    if (rules.control == reg)
        volatileWrites_ = (value & kVolatileBit) != 0;
    else if (reg >= rules.wipers || !volatileWrites_)
        count(hexText(reg, 2));
}

void NonvolatileWrites::instruction(Bytes bytes, PartProtocol protocol) {
    const int operation = bytes.front() >> 4;
    const int reg = (bytes.front() >> 2) & 3;
    const int pot = bytes.front() & 3;
    const std::size_t data = bytes.size() - 1;
    if (protocol == PartProtocol::TenBit) {
        // The byte that writes a data register also recalls it: the frame's length tells which.
        if (pot == 0 &&
            ((operation == kTenBitWriteData && data == 2) || (operation == kTenBitWiperToData && data == 0)))
            count(dataRegister(0, reg));
        return;
    }
    if ((operation == kWriteData && data > 0) || operation == kWiperToData)
        count(dataRegister(pot, reg));
    for (int each = 0; operation == kAllWipersToData && each < kPots; ++each)
        count(dataRegister(each, reg));
}

} // namespace vrk
