#pragma once

#include <cstdint>

/// The wire format between host and firmware: which byte of a 64-byte report means what. The one thing that
/// the link and the simulated board share; the programs need the board's IDs of it.
namespace vrk::report {

inline constexpr std::uint16_t kVendorId = 0xF5C3;
inline constexpr std::uint16_t kProductId = 0x2034;
inline constexpr std::uint8_t kReportId = 1;

/// Byte 1 of a command report.
enum class Command : std::uint8_t {
    FirmwareVersion = 0,
    Led = 1,
    GpioConfig = 2,
    GpioValue = 3,
    I2cOptions = 4,
    I2cClock = 5,
    I2cTransfer = 6,
    SpiConfig = 7,
    SpiClock = 8,
    SpiTransfer = 9,
    AdcClock = 10,
    AdcRefcon = 11,
    AdcMux = 12,
    AdcSampleMode = 13,
    AdcLoopCount = 14,
    AdcSampleRate = 15,
    AdcEnable = 16,
    AdcRead = 17,
    SfrAccess = 18,
    ExtAdcAccess = 19,
};
inline constexpr int kCommandCount = 20;

inline constexpr int kIdByte = 0;
inline constexpr int kCommandByte = 1;
inline constexpr int kErrorByte = 1;      ///< in a reply: 0 good, above 0 failed
inline constexpr int kSubCommandByte = 2; ///< all commands but 0, 6, 9 and 17
inline constexpr int kFirstData = 2;      ///< in a reply

inline constexpr std::uint8_t kWrite = 0;
inline constexpr std::uint8_t kRead = 1;

/// I2cTransfer: [2] slave address (bit 0 set: read), [3] count, [4] register bytes r, [5..] registers, data.
inline constexpr int kI2cAddress = 2;
inline constexpr int kI2cCount = 3;
inline constexpr int kI2cRegisterCount = 4;
inline constexpr int kI2cPayload = 5;

/// SpiTransfer: [3] read back, [4] phase change, [5] its byte number, [6] count, [7..] bytes.
inline constexpr int kSpiRead = 3;
inline constexpr int kSpiPhaseChange = 4;
inline constexpr int kSpiPhaseByte = 5;
inline constexpr int kSpiCount = 6;
inline constexpr int kSpiPayload = 7;

/// SfrAccess: [3] address, [4] value; reply [2] error flag, [3] value.
inline constexpr int kSfrAddress = 3;
inline constexpr int kSfrValue = 4;

/// Special function registers of the controller that host and board both know by address.
namespace sfr {
inline constexpr std::uint8_t P0 = 0x80, P1 = 0x90, P2 = 0xA0, P3 = 0xB0, P4 = 0xC7;
inline constexpr std::uint8_t P0MDOUT = 0xA4, P1MDOUT = 0xA5, P2MDOUT = 0xA6, P3MDOUT = 0xA7, P4MDOUT = 0xAE;
inline constexpr std::uint8_t P0MDIN = 0xF1, P1MDIN = 0xF2, P2MDIN = 0xF3, P3MDIN = 0xF4, P4MDIN = 0xF5;
inline constexpr std::uint8_t P0SKIP = 0xD4, P1SKIP = 0xD5, P2SKIP = 0xD6, P3SKIP = 0xDF;
inline constexpr std::uint8_t SPI0CFG = 0xA1, SPI0CKR = 0xA2, SPI0DAT = 0xA3, SPI0CN = 0xF8;
inline constexpr std::uint8_t XBAR0 = 0xE1, XBAR1 = 0xE2, XBAR2 = 0xE3;
} // namespace sfr

} // namespace vrk::report
