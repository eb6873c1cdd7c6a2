#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vrk {

/// How a part frames its value.
enum class SpiFamily {
    Registers, ///< one data byte behind the command
    TenBit     ///< two data bytes; the lowest bit of the ID marks a read, and the ID leads every frame
};
/// \param product as the panel shows it.
SpiFamily spiFamilyOf(std::string_view product);

/// What leads a frame.
struct SpiLead {
    bool sendId = false;
    std::string id; ///< hexadecimal
};

/// One byte of a frame as the fields of the motherboard's box take it, and what it is.
struct SpiFrameByte {
    std::string hex;
    const char* what;
    bool operator==(const SpiFrameByte& other) const { return hex == other.hex; }
};
/// From position 1 on. Bytes behind the frame's length stand in the fields and are not sent.
using SpiFrame = std::vector<SpiFrameByte>;

/// Positions that a frame has at most.
inline constexpr int kMostSpiBytes = 5;

/// "C2" for base "C0" and channel 2: without leading zeros.
std::string spiCommand(std::string_view base, int channel);

/// \param data hexadecimal text of the value. Of the ten-bit family its last three digits count, of a
/// wiper's byte the last two are the caller's to take.
SpiFrame spiWriteFrame(const SpiLead& lead, const std::string& command, const std::string& data,
                       SpiFamily family = SpiFamily::Registers);
SpiFrame spiReadFrame(const SpiLead& lead, const std::string& command,
                      SpiFamily family = SpiFamily::Registers);

/// Asked before anything goes out. \throws Fault "Overflow" where a byte is above FF, also one behind the
/// frame's length, "Subscript out of range" for a length above kMostSpiBytes.
void requireSendable(const SpiFrame& frame, int length);

/// The bytes that go out: "50 ID · C0 command · 3F data". A length behind the frame's own bytes sends what
/// stands in the fields from before: "..".
std::string spiFrameText(const SpiFrame& frame, int length);

} // namespace vrk
