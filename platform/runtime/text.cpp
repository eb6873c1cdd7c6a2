#include "platform/runtime/text.h"

#include "platform/runtime/Fault.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>

namespace vrk {

namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::string_view kBlanks = " \t\r\n";

std::optional<int> digitValue(char c) {
    const auto at = kDigits.find(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
    if (at == std::string_view::npos)
        return std::nullopt;
    return static_cast<int>(at);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Length of the number at the start of `text`, 0 if there is none.
std::size_t numberLength(std::string_view text) {
    std::size_t at = 0;
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
        ++at;
    std::size_t digits = 0;
    for (; at < text.size() && isDigit(text[at]); ++at)
        ++digits;
    if (at < text.size() && text[at] == '.') {
        ++at;
        for (; at < text.size() && isDigit(text[at]); ++at)
            ++digits;
    }
    if (digits == 0)
        return 0;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        std::size_t exponent = at + 1;
        if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-'))
            ++exponent;
        if (exponent < text.size() && isDigit(text[exponent])) {
            while (exponent < text.size() && isDigit(text[exponent]))
                ++exponent;
            at = exponent;
        }
    }
    return at;
}

/// \param text a number by numberLength()
double parseNumber(std::string_view text) {
    if (text.front() == '+')
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        // Too small is 0; too large is told by whoever needs a range.
        const bool small =
            text.find("e-") != std::string_view::npos || text.find("E-") != std::string_view::npos;
        value = small ? 0.0 : std::numeric_limits<double>::infinity();
        if (!small && text.front() == '-')
            value = -value;
    }
    return value;
}

} // namespace

std::string hexText(int value) {
    return hexText(value, 1);
}

std::string hexText(int value, int digits) {
    unsigned rest = value < 0 ? static_cast<unsigned>(value) & 0xFFFFU : static_cast<unsigned>(value);
    std::string text;
    do {
        text.insert(text.begin(), kDigits[rest % 16]);
        rest /= 16;
    } while (rest != 0);
    if (text.size() < static_cast<std::size_t>(digits))
        text.insert(0, static_cast<std::size_t>(digits) - text.size(), '0');
    return text;
}

std::string byteToHex2(std::uint8_t value) {
    return {kDigits[value >> 4U], kDigits[value & 0xFU]};
}

int hexToInt(std::string_view text) {
    long value = 0;
    for (const char c : text) {
        const auto digit = digitValue(c);
        if (!digit)
            break;
        value = value * 16 + *digit;
        if (value > 0xFFFF)
            throw overflow();
    }
    return static_cast<std::int16_t>(value);
}

std::uint8_t hexToByte(std::string_view text) {
    return toByte(hexToInt(text));
}

std::string decimalText(long long value) {
    return std::to_string(value);
}

std::string numberToText(long long value) {
    return value < 0 ? decimalText(value) : " " + decimalText(value);
}

double leadingNumber(std::string_view text) {
    const auto start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos)
        return 0;
    const auto rest = text.substr(start);
    const auto length = numberLength(rest);
    return length == 0 ? 0 : parseNumber(rest.substr(0, length));
}

bool isNumeric(std::string_view text) {
    const std::string body = trimmed(text);
    return !body.empty() && numberLength(body) == body.size();
}

std::uint8_t decimalByte(std::string_view text) {
    return toByte(decimalInt(text));
}

int decimalInt(std::string_view text) {
    return isNumeric(text) ? roundHalfEven(leadingNumber(text)) : 0;
}

int roundHalfEven(double value) {
    const double rounded = value - std::remainder(value, 1.0);
    if (!(rounded >= std::numeric_limits<int>::min() && rounded <= std::numeric_limits<int>::max()))
        throw overflow();
    return static_cast<int>(rounded);
}

std::uint8_t toByte(long long value) {
    if (value < 0 || value > 255)
        throw overflow();
    return static_cast<std::uint8_t>(value);
}

int toInt16(long long value) {
    if (value < -32768 || value > 32767)
        throw overflow();
    return static_cast<int>(value);
}

std::string doubleText(double value) {
    constexpr int kDigits15 = 15;
    std::array<char, 40> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, kDigits15);
    return {text.data(), end};
}

double throughText(double value) {
    return parseNumber(doubleText(value));
}

namespace {
/// Rounded on the 15 digits of the text form, so that 0.0005 rounds up although its binary value is below.
/// The way through the text is long, and matters only next to a half: every reading comes along here.
double roundedText(double value) {
    constexpr double kDoubt = 1e-12; // far more than the 15th digit is worth
    const bool clear = std::fabs(value - std::floor(value) - 0.5) > kDoubt * std::max(1.0, value);
    return std::round(clear ? value : throughText(value));
}
} // namespace

std::string formatNumber(double value, std::string_view pattern) {
    const auto point = pattern.find('.');
    const auto whole = pattern.substr(0, point);
    const auto fraction = point == std::string_view::npos ? std::string_view{} : pattern.substr(point + 1);

    double scale = 1;
    for (std::size_t digit = 0; digit < fraction.size(); ++digit)
        scale *= 10;
    const double scaled = roundedText(std::fabs(value) * scale);
    const bool negative = value < 0 && scaled > 0;

    std::string digits;
    if (constexpr double kWhole = 1e15; scaled < kWhole) {
        digits = std::to_string(static_cast<long long>(scaled));
    } else {
        std::array<char, 400> buffer{};
        std::snprintf(buffer.data(), buffer.size(), "%.0f", scaled);
        digits = buffer.data();
    }
    if (digits.size() < fraction.size())
        digits.insert(0, fraction.size() - digits.size(), '0');
    std::string wholeDigits = digits.substr(0, digits.size() - fraction.size());
    std::string fractionDigits = digits.substr(digits.size() - fraction.size());

    wholeDigits.erase(0, std::min(wholeDigits.find_first_not_of('0'), wholeDigits.size()));
    const auto wanted = static_cast<std::size_t>(std::count(whole.begin(), whole.end(), '0'));
    if (wholeDigits.size() < wanted)
        wholeDigits.insert(0, wanted - wholeDigits.size(), '0');
    while (!fractionDigits.empty() && fractionDigits.back() == '0' &&
           fraction[fractionDigits.size() - 1] == '#')
        fractionDigits.pop_back();

    std::string text = negative ? "-" : "";
    text += wholeDigits;
    if (point != std::string_view::npos)
        text += "." + fractionDigits; // the point stays even with no digit behind it
    return text;
}

std::string upperCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return result;
}

std::string trimmed(std::string_view text) {
    const auto start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos)
        return {};
    return std::string(text.substr(start, text.find_last_not_of(kBlanks) - start + 1));
}

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

std::string monthName(int month) {
    static constexpr std::array<std::string_view, 12> kNames = {
        "January", "February", "March",     "April",   "May",      "June",
        "July",    "August",   "September", "October", "November", "December"};
    return month >= 1 && month <= 12 ? std::string(kNames[static_cast<std::size_t>(month - 1)])
                                     : std::string();
}

int hexKeyFilter(int key) {
    if (key >= 'a' && key <= 'z')
        key -= 'a' - 'A';
    const bool passes = (key >= '0' && key <= '9') || (key >= 'A' && key <= 'F');
    return passes || key == kEnterKey || key == kBackspaceKey ? key : 0;
}

int decimalKeyFilter(int key) {
    const bool passes = key >= '0' && key <= '9';
    return passes || key == kEnterKey || key == kBackspaceKey ? key : 0;
}

} // namespace vrk
