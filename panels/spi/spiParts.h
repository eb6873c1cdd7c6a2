#pragma once

#include <array>
#include <string_view>

namespace vrk {

/// What is known of a part that the SPI panel's menu names. Commands and bytes are hexadecimal.
struct SpiPartFacts {
    std::string_view name;    ///< menu caption
    std::string_view product; ///< as the panel shows the part chosen
    int writeBytes;           ///< of a frame
    int readBytes;
    std::string_view acrWrite; ///< command
    std::string_view acrRead;
    std::string_view id; ///< leads each frame of a part that has one
    bool hasId;
    std::string_view generalWrite;
    std::string_view generalRead;
    std::string_view wiperWrite; ///< of wiper 0
    std::string_view wiperRead;
    int taps;
    int channels;
};

/// In the menu's order.
inline constexpr std::array<SpiPartFacts, 2> kSpiParts = {{
    {.name = "KV4180",
     .product = "KV4180, SPI, Four Channel, 256 Tap ZQM",
     .writeBytes = 2,
     .readBytes = 4,
     .acrWrite = "60",
     .acrRead = "20",
     .id = "0",
     .hasId = false,
     .generalWrite = "C4",
     .generalRead = "84",
     .wiperWrite = "C0",
     .wiperRead = "80",
     .taps = 256,
     .channels = 4},
    {.name = "KV4184",
     .product = "KV4184, SPI, Four Channel, 128 Tap ZQM",
     .writeBytes = 3,
     .readBytes = 3,
     .acrWrite = "C8",
     .acrRead = "B8",
     .id = "50",
     .hasId = true,
     .generalWrite = "C4",
     .generalRead = "B4",
     .wiperWrite = "C0",
     .wiperRead = "B0",
     .taps = 128,
     .channels = 4},
}};

} // namespace vrk
