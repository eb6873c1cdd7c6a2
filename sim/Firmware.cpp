#include "sim/Firmware.h"

#include "link/reportLayout.h"

#include <algorithm>
#include <initializer_list>

namespace vrk::sim {

namespace {

using report::Command;
namespace reg = report::sfr;

constexpr std::uint8_t kClockMhz = 24;
constexpr std::uint8_t kBusError = 1;       // no acknowledge
constexpr std::uint8_t kRequestTooLong = 2; // would leave the report
constexpr std::uint8_t kTwoWireRead = 0x08;
constexpr std::uint8_t kStopBetween = 0x02;
constexpr std::uint8_t kWeakPullUpDisable = 0x80; // XBAR1
constexpr std::uint8_t kAdcEnabled = 0x80;        // ADC0CN

hid::Report replyWith(std::initializer_list<std::uint8_t> data = {}) {
    hid::Report reply{};
    reply[report::kIdByte] = report::kReportId;
    std::copy(data.begin(), data.end(), reply.begin() + report::kFirstData);
    return reply;
}

std::uint8_t withBits(std::uint8_t value, std::uint8_t mask, unsigned bits) {
    return static_cast<std::uint8_t>((value & ~unsigned{mask}) | (bits & mask));
}

} // namespace

std::optional<hid::Report> Firmware::handle(const hid::Report& in) {
    if (in[report::kIdByte] != report::kReportId || in[report::kCommandByte] >= report::kCommandCount) {
        return std::nullopt;
    }
    faults_.begin(in[report::kCommandByte]);
    const auto command = static_cast<Command>(in[report::kCommandByte]);
    switch (command) { // those whose byte 2 is no sub-command
    case Command::FirmwareVersion:
        return replyWith({1, 2, 2008 / 256, 2008 % 256, 6, 12}); // 1.2 of 12 June 2008
    case Command::I2cTransfer:
        return i2cTransfer(in);
    case Command::SpiTransfer:
        return spiTransfer(in);
    case Command::AdcRead:
        return adcRead();
    default:
        break;
    }
    if (in[report::kSubCommandByte] > report::kRead) {
        return std::nullopt;
    }
    const bool read = in[report::kSubCommandByte] == report::kRead;
    switch (command) {
    case Command::Led:
        return led(in, read);
    case Command::GpioConfig:
        return gpioConfig(in, read);
    case Command::GpioValue:
        return gpioValue(in, read);
    case Command::I2cOptions:
        return i2cOptions(in, read);
    case Command::I2cClock:
        return i2cClock(in, read);
    case Command::SpiConfig:
        return spiConfig(in, read);
    case Command::SpiClock:
        return clockRegister(in, read, reg::SPI0CKR);
    case Command::AdcClock:
        return clockRegister(in, read, sfr::ADC0CF);
    case Command::AdcRefcon:
        return adcRefcon(in, read);
    case Command::AdcMux:
        return adcMux(in, read);
    case Command::AdcSampleMode:
        return plain(in, read, settings_.adcContinuous);
    case Command::AdcLoopCount:
        return plain(in, read, settings_.adcLoopCount);
    case Command::AdcSampleRate:
        return adcSampleRate(in, read);
    case Command::AdcEnable:
        return adcEnable(in, read);
    case Command::SfrAccess:
        return sfrAccess(in, read);
    case Command::ExtAdcAccess:
        return extAdcAccess(in, read);
    default:
        return std::nullopt;
    }
}

std::optional<hid::Report> Firmware::plain(const hid::Report& in, bool read, std::uint8_t& setting) {
    if (read) {
        return replyWith({setting});
    }
    setting = in[3];
    return std::nullopt;
}

std::optional<hid::Report> Firmware::clockRegister(const hid::Report& in, bool read, std::uint8_t address) {
    if (read) {
        return replyWith({kClockMhz, board_.readRegister(address)});
    }
    setSfr(address, in[3]);
    return std::nullopt;
}

std::optional<hid::Report> Firmware::i2cClock(const hid::Report& in, bool read) {
    if (read) {
        return replyWith({kClockMhz, settings_.i2cDivisor});
    }
    settings_.i2cDivisor = in[3];
    return std::nullopt;
}

std::optional<hid::Report> Firmware::led(const hid::Report& in, bool read) {
    if (read) {
        return replyWith({settings_.leds});
    }
    settings_.leds = in[3] & 3;
    return std::nullopt;
}

std::optional<hid::Report> Firmware::gpioConfig(const hid::Report& in, bool read) {
    const std::uint8_t p2Mode = board_.readRegister(reg::P2MDOUT);
    const std::uint8_t crossbar = board_.readRegister(reg::XBAR1);
    if (read) {
        const std::uint8_t disabled = (crossbar & kWeakPullUpDisable) != 0 ? 1 : 0;
        return replyWith({board_.readRegister(reg::P1MDOUT), withBits(0, 0x0F, p2Mode), disabled});
    }
    setSfr(reg::P1MDOUT, in[3]);
    setSfr(reg::P2MDOUT, withBits(p2Mode, 0x0F, in[4]));
    setSfr(reg::XBAR1, withBits(crossbar, kWeakPullUpDisable, in[5] != 0 ? kWeakPullUpDisable : 0U));
    return std::nullopt;
}

std::optional<hid::Report> Firmware::gpioValue(const hid::Report& in, bool read) {
    if (read) {
        return replyWith({board_.readRegister(reg::P1), withBits(0, 0x0F, board_.readRegister(reg::P2))});
    }
    setSfr(reg::P1, in[3]);
    setSfr(reg::P2, withBits(board_.ports().latch(reg::P2), 0x0F, in[4]));
    return std::nullopt;
}

std::optional<hid::Report> Firmware::i2cOptions(const hid::Report& in, bool read) {
    if (read) {
        return replyWith({settings_.i2cOptions, settings_.extendHold});
    }
    settings_.i2cOptions = in[3];
    settings_.extendHold = in[4];
    if (in[5] == 0) {
        return std::nullopt;
    }
    // Nine clocks free a part that waits in the middle of a byte; a line that stays low is reported.
    const bool stuck = faults_.take(FaultKind::StuckSda).has_value();
    return replyWith({static_cast<std::uint8_t>(stuck ? 1 : 0)});
}

std::optional<hid::Report> Firmware::spiConfig(const hid::Report& in, bool read) {
    if (read) {
        return replyWith({settings_.spiConfig});
    }
    settings_.spiConfig = in[3] & 7;
    const unsigned config = settings_.spiConfig;
    // CKPOL is bit 4 and CKPHA bit 5 of SPI0CFG; the idle level of the select is bit 2 of SPI0CN.
    setSfr(reg::SPI0CFG, withBits(board_.readRegister(reg::SPI0CFG), 0x30, config << 4));
    setSfr(reg::SPI0CN, withBits(board_.readRegister(reg::SPI0CN), 0x04, config));
    return std::nullopt;
}

std::optional<hid::Report> Firmware::adcRefcon(const hid::Report& in, bool read) {
    if (read) {
        return replyWith({board_.readRegister(sfr::REF0CN)});
    }
    setSfr(sfr::REF0CN, in[3]);
    return std::nullopt;
}

std::optional<hid::Report> Firmware::adcMux(const hid::Report& in, bool read) {
    if (!read) {
        setSfr(sfr::AMX0P, in[3]);
        setSfr(sfr::AMX0N, in[4]);
        return std::nullopt;
    }
    hid::Report reply = replyWith();
    std::size_t at = report::kFirstData;
    for (const std::uint8_t address :
         {sfr::AMX0P, sfr::AMX0N, reg::P0MDIN, reg::P0SKIP, reg::P1MDIN, reg::P1SKIP, reg::P2MDIN,
          reg::P2SKIP, reg::P3MDIN, reg::P3SKIP, reg::P4MDIN}) {
        reply[at++] = board_.readRegister(address);
    }
    return reply;
}

std::optional<hid::Report> Firmware::adcSampleRate(const hid::Report& in, bool read) {
    if (read) {
        return replyWith({kClockMhz, settings_.adcSampleRate[0], settings_.adcSampleRate[1]});
    }
    settings_.adcSampleRate = {in[3], in[4]};
    return std::nullopt;
}

std::optional<hid::Report> Firmware::adcEnable(const hid::Report& in, bool read) {
    if (read) {
        return replyWith({static_cast<std::uint8_t>(board_.converter().enabled() ? 1 : 0)});
    }
    const bool on = in[3] != 0;
    board_.converter().enable(on);
    setSfr(sfr::ADC0CN, withBits(board_.readRegister(sfr::ADC0CN), kAdcEnabled, on ? kAdcEnabled : 0U));
    return std::nullopt;
}

std::optional<hid::Report> Firmware::sfrAccess(const hid::Report& in, bool read) {
    const std::uint8_t address = in[report::kSfrAddress];
    if (!read) {
        setSfr(address, in[report::kSfrValue]);
        return std::nullopt;
    }
    if (!Ports::isRegister(address)) {
        return replyWith({1, 0});
    }
    return replyWith({0, board_.readRegister(address)});
}

hid::Report Firmware::i2cTransfer(const hid::Report& in) {
    hid::Report reply = replyWith();
    const bool read = (in[report::kI2cAddress] & 1) != 0;
    const int count = in[report::kI2cCount];
    const int sent = report::kI2cPayload + in[report::kI2cRegisterCount] + (read ? 0 : count);
    if (sent > hid::kReportSize || (read && report::kFirstData + count > hid::kReportSize)) {
        reply[report::kErrorByte] = kRequestTooLong;
    } else if (faults_.take(FaultKind::Nak) || faults_.waiting(FaultKind::StuckSda) ||
               !i2cExchange(in, reply)) {
        reply = replyWith();
        reply[report::kErrorByte] = kBusError;
    }
    return reply;
}

bool Firmware::i2cExchange(const hid::Report& in, hid::Report& reply) {
    const std::uint8_t slave = in[report::kI2cAddress];
    const int count = in[report::kI2cCount];
    const int registers = in[report::kI2cRegisterCount];
    const bool read = (slave & 1) != 0;
    // A two-wire read has one slave byte, the reading one, in front of the register bytes and the data.
    const bool turnRound = read && registers > 0 && (settings_.i2cOptions & kTwoWireRead) == 0;

    board_.i2cStart();
    bool good = board_.i2cWrite(turnRound ? slave & 0xFE : slave);
    const int written = registers + (read ? 0 : count);
    for (int i = 0; good && i < written; ++i) {
        good = board_.i2cWrite(in[static_cast<std::size_t>(report::kI2cPayload + i)]);
    }
    if (good && turnRound) {
        if ((settings_.i2cOptions & kStopBetween) != 0) {
            board_.i2cStop();
        }
        board_.i2cStart();
        good = board_.i2cWrite(slave);
    }
    for (int i = 0; good && read && i < count; ++i) {
        reply[static_cast<std::size_t>(report::kFirstData + i)] = board_.i2cRead(i + 1 < count);
    }
    board_.i2cStop();
    return good;
}

std::optional<hid::Report> Firmware::spiTransfer(const hid::Report& in) {
    const int most = hid::kReportSize - report::kSpiPayload;
    const int count = std::min<int>(in[report::kSpiCount], most);
    const auto* first = in.begin() + report::kSpiPayload;
    std::optional<std::size_t> phaseChange;
    if (in[report::kSpiPhaseChange] != 0) {
        phaseChange = in[report::kSpiPhaseByte];
    }
    const std::vector<std::uint8_t> bytes = board_.spiTransfer({first, first + count}, phaseChange);
    if (in[report::kSpiRead] == 0) {
        return std::nullopt;
    }
    hid::Report reply = replyWith();
    std::copy(bytes.begin(), bytes.end(), reply.begin() + report::kFirstData);
    return reply;
}

hid::Report Firmware::adcRead() {
    const std::optional<Fault> noise = faults_.take(FaultKind::Noise);
    const int count = board_.convert(noise ? noise->counts : 0);
    return replyWith({static_cast<std::uint8_t>(count >> 8), static_cast<std::uint8_t>(count & 0xFF)});
}

hid::Report Firmware::extAdcAccess(const hid::Report& in, bool read) {
    if (read) {
        // The card's input stands on VIN0.
        const std::int32_t value = ExternalConverter::convert(board_.channelVolts(channel::kVin0));
        const auto bits = static_cast<std::uint32_t>(value);
        return replyWith({0, static_cast<std::uint8_t>(bits >> 16), static_cast<std::uint8_t>(bits >> 8),
                          static_cast<std::uint8_t>(bits)});
    }
    ExternalConverter& converter = board_.externalConverter();
    converter.write(in[3], in[4]);
    // The converter answers half a clock late: its byte stands one bit to the left in the two that come.
    const unsigned shifted = static_cast<unsigned>(converter.read(in[3])) << 1;
    return replyWith({static_cast<std::uint8_t>(shifted >> 8), static_cast<std::uint8_t>(shifted)});
}

} // namespace vrk::sim
