#include "panels/spi/spiFrames.h"

#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <algorithm>

namespace vrk {

namespace {

constexpr const char* kId = "ID";
constexpr const char* kCommand = "command";
constexpr const char* kData = "data";
constexpr const char* kClock = "clock"; ///< clocks a byte of the answer in

std::string lastDigits(std::string text, std::size_t digits) {
    if (text.size() < digits)
        text.insert(0, digits - text.size(), '0');
    return text.substr(text.size() - digits);
}

} // namespace

SpiFamily spiFamilyOf(std::string_view product) {
    return startsWith(product, "Q3310/1") ? SpiFamily::TenBit : SpiFamily::Registers;
}

std::string spiCommand(std::string_view base, int channel) {
    return hexText(hexToInt(base) + channel);
}

SpiFrame spiWriteFrame(const SpiLead& lead, const std::string& command, const std::string& data,
                       SpiFamily family) {
    if (family == SpiFamily::TenBit) {
        const std::string value = lastDigits(data, 3);
        return {{lead.id, kId},
                {command, kCommand},
                {value.substr(0, 1), "data 9-8"},
                {value.substr(1), "data 7-0"}};
    }
    SpiFrame frame = {{command, kCommand}, {data, kData}};
    if (lead.sendId)
        frame.insert(frame.begin(), {lead.id, kId});
    return frame;
}

SpiFrame spiReadFrame(const SpiLead& lead, const std::string& command, SpiFamily family) {
    SpiFrame frame = {{command, kCommand}, {"00", kClock}, {"00", kClock}, {"00", kClock}};
    if (family == SpiFamily::TenBit)
        frame.insert(frame.begin(), {hexText(hexToInt(lead.id) + 1), "ID, read"});
    else if (lead.sendId)
        frame.insert(frame.begin(), {lead.id, kId});
    return frame;
}

void requireSendable(const SpiFrame& frame, int length) {
    if (length < 0 || length > kMostSpiBytes)
        throw subscriptOutOfRange();
    for (const SpiFrameByte& byte : frame)
        (void)hexToByte(byte.hex);
}

std::string spiFrameText(const SpiFrame& frame, int length) {
    std::string text;
    for (int at = 0; at < std::min(length, kMostSpiBytes); ++at) {
        if (at > 0)
            text += " · ";
        if (at >= static_cast<int>(frame.size())) {
            text += "..";
            continue;
        }
        const auto& [hex, what] = frame[static_cast<std::size_t>(at)];
        const int value = hexToInt(hex);
        text += (value < 0 || value > 0xFF ? hex : byteToHex2(static_cast<std::uint8_t>(value))) + " " + what;
    }
    return text;
}

} // namespace vrk
