#include "script/ScriptRecorder.h"

#include "link/modHID.h"
#include "link/reportLayout.h"
#include "platform/runtime/text.h"

#include <algorithm>

namespace vrk {

namespace {

std::string hexOf(const std::vector<std::uint8_t>& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += byteToHex2(byte);
    return text;
}

/// Why no row of a script can do the same; empty if one can.
std::string obstacle(const I2cTransfer& transfer) {
    if (transfer.status != kLinkGood)
        return "no good answer";
    if (transfer.registers.size() > 1)
        return "a row sends one register byte";
    return transfer.data.empty() ? "a row moves a byte at least" : "";
}

} // namespace

I2cTransfer I2cTransfer::of(const hid::Report& request, const hid::Report& reply, int status) {
    const auto bytes = [](const hid::Report& from, int first, std::size_t count) {
        const auto at = from.begin() + first;
        const auto room = static_cast<std::size_t>(from.end() - at);
        return std::vector<std::uint8_t>(at, at + static_cast<std::ptrdiff_t>(std::min(count, room)));
    };
    const std::size_t count = request[report::kI2cCount];
    const std::size_t registers = request[report::kI2cRegisterCount];
    I2cTransfer transfer;
    transfer.read = (request[report::kI2cAddress] & 1U) != 0;
    transfer.address = static_cast<std::uint8_t>(request[report::kI2cAddress] & 0xFEU);
    transfer.registers = bytes(request, report::kI2cPayload, registers);
    transfer.data = transfer.read ? bytes(reply, report::kFirstData, count)
                                  : bytes(request, report::kI2cPayload + static_cast<int>(registers), count);
    transfer.status = status;
    return transfer;
}

std::vector<std::string> ScriptRecorder::lines(const I2cTransfer& transfer, Milliseconds now) {
    constexpr long long kLongestDelay = 32767; // of one row
    std::vector<std::string> lines;
    if (last_ && now - *last_ >= kShortestWait)
        for (long long left = (now - *last_).count(); left > 0; left -= kLongestDelay)
            lines.push_back("`w" + decimalText(std::min(left, kLongestDelay)));
    last_ = now;

    const std::string reg = hexOf(transfer.registers);
    const std::string data = hexOf(transfer.data);
    const std::string why = obstacle(transfer);
    if (!why.empty()) {
        lines.push_back(std::string("# ") + (transfer.read ? "read of " : "write of ") +
                        (transfer.read || data.empty()
                             ? decimalText(static_cast<long long>(transfer.data.size())) + " bytes"
                             : data) +
                        " at " + byteToHex2(transfer.address) + (reg.empty() ? "" : ", register " + reg) +
                        ": " + why);
        return lines;
    }
    if (address_ != transfer.address) {
        address_ = transfer.address;
        lines.push_back("`A" + byteToHex2(transfer.address));
    }
    // Where no register byte was sent, the console is set to send none; a row still needs one to stand in
    // the place of it, as its data would lose their first byte otherwise.
    const bool without = reg.empty();
    lines.push_back((without ? "00" : reg) + (transfer.read ? ",," : ",") + data +
                    (transfer.read ? "" : ",") + (without ? " # sent without a register byte" : ""));
    return lines;
}

} // namespace vrk
