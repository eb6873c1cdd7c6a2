#include "panels/blocks/tableRows.h"

#include "panels/blocks/ChannelBlock.h"
#include "panels/blocks/choices.h"
#include "platform/runtime/text.h"

namespace vrk {

std::string cellFault(const ProductTable& table, int column, const std::string& wanted) {
    return "column " + decimalText(column) + " holds \"" + table.field(column) + "\", not " + wanted;
}

std::string sizesFault(const ProductTable& table) {
    if (!isWholeBetween(table.field(kTableChannels), 1, ChannelBlock::kChannels))
        return cellFault(table, kTableChannels, "a number of channels from 1 to 4");
    if (!isWholeBetween(table.field(kTableTaps), 1, kTapChoices.back().taps))
        return cellFault(table, kTableTaps, "a number of taps up to 1024");
    return {};
}

bool isHexByte(const std::string& text) {
    return !text.empty() && text.size() <= 2 &&
           text.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
}

bool isWholeBetween(const std::string& text, int least, int most) {
    if (!isNumeric(text))
        return false;
    const double value = leadingNumber(text);
    return value >= least && value <= most && value == static_cast<int>(value);
}

std::string twoDigits(const std::string& text) {
    return text.size() == 1 ? "0" + text : text;
}

} // namespace vrk
