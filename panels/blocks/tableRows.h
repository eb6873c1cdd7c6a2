#pragma once

#include "panels/blocks/ShellControl.h"

#include <string>

namespace vrk {

/// What both bus panels check and take of a row of the product table. The first columns are those of either
/// bus.
enum TableColumn : int { kTableProduct = 1, kTableChannels = 2, kTableTaps = 3, kTableAddress = 4 };

/// "column 3 holds "x", not a number of taps".
std::string cellFault(const ProductTable& table, int column, const std::string& wanted);
/// What is wrong with channels and taps of the row chosen; empty if a panel can take them.
std::string sizesFault(const ProductTable& table);

bool isHexByte(const std::string& text);
bool isWholeBetween(const std::string& text, int least, int most);
/// A single digit gets a "0" in front, as hexadecimal fields show bytes.
std::string twoDigits(const std::string& text);

} // namespace vrk
