#pragma once

#include "platform/runtime/Fault.h"

#include <array>

/// Commands of the parts with one ten-bit wiper and four data registers. Element 0 is the wiper, 1 to 4 are
/// the data registers; of the transfers element 0 is data register 0. Values travel in two bytes, bits 9 and
/// 8 in the first. Some bytes serve twice: the read mark of the address and the length of the frame tell
/// which.
namespace vrk::tenBit {

inline constexpr int kDataRegisters = 4;
inline constexpr int kRegisters = 1 + kDataRegisters;
using Commands = std::array<const char*, kRegisters>;
using Transfers = std::array<const char*, kDataRegisters>;

inline constexpr Commands kRead = {"80", "A0", "A4", "A8", "AC"};
inline constexpr Commands kWrite = {"A0", "C0", "C4", "C8", "CC"};
inline constexpr Transfers kDataToWiper = {"C0", "C4", "C8", "CC"};
inline constexpr Transfers kWiperToData = {"E0", "E4", "E8", "EC"};

/// \throws Fault "Subscript out of range"
template <std::size_t Count>
const char* commandOf(const std::array<const char*, Count>& commands, int index) {
    if (index < 0 || index >= static_cast<int>(Count))
        throw subscriptOutOfRange();
    return commands.at(static_cast<std::size_t>(index));
}

} // namespace vrk::tenBit
