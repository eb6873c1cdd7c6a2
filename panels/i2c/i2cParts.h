#pragma once

#include <array>
#include <string_view>

namespace vrk {

/// What is known of a part that the I2C panel's menu names.
struct I2cPartFacts {
    std::string_view name;       ///< menu caption
    std::string_view product;    ///< as the panel shows the part chosen
    std::string_view acrAddress; ///< register of the control byte, hexadecimal
    int address;                 ///< even 8-bit bus address
    int taps;
    int channels;
};

/// In the menu's order.
inline constexpr std::array<I2cPartFacts, 4> kI2cParts = {{
    {"KV4071", "KV4071, I2C, Single Channel, 128 Tap ZQM", "02", 0x50, 128, 1},
    {"KV4074", "KV4074, I2C, Four Channel, 128 Tap ZQM", "08", 0xA0, 128, 4},
    {"KV4078", "KV4078, I2C, Four Channel, 256 Tap ZQM", "10", 0xA0, 256, 4},
    {"KV6021", "KV6021, I2C, Single Channel, 128 Tap ZQM", "02", 0x50, 128, 1},
}};

} // namespace vrk
