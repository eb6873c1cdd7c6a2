#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Text rules: fields carry values as text, so every conversion has one place here.
namespace vrk {

/// Upper-case hexadecimal without leading zeros. A negative value shows its 16-bit two's complement.
std::string hexText(int value);

/// As hexText(), padded with "0" in front to at least `digits`.
std::string hexText(int value, int digits);

/// Two upper-case hexadecimal digits.
std::string byteToHex2(std::uint8_t value);

/// The text read as hexadecimal up to the first character that is no hexadecimal digit ("0B - P2.3" gives
/// 11); an empty text gives 0. 16 bits: 8000 to FFFF come out negative. \throws Fault "Overflow" above FFFF.
int hexToInt(std::string_view text);

/// hexToInt() into a byte. \throws Fault "Overflow" outside 0 to 255.
std::uint8_t hexToByte(std::string_view text);

/// Decimal text without a leading blank.
std::string decimalText(long long value);

/// The number-to-text rule: a non-negative number gets a leading blank, in the place of its sign.
std::string numberToText(long long value);

/// The number at the start of the text, blanks skipped, 0 if there is none ("2.0x" gives 2).
double leadingNumber(std::string_view text);

/// True if the whole text is one number: blanks around it, sign, decimal point and exponent allowed.
bool isNumeric(std::string_view text);

/// Decimal count of a field; blank or non-numeric text is 0; rounds half to even.
/// \throws Fault "Overflow" outside 0 to 255.
std::uint8_t decimalByte(std::string_view text);

/// Decimal text to a whole number, rounding half to even; blank or non-numeric text is 0.
/// \throws Fault "Overflow" outside the 32-bit range.
int decimalInt(std::string_view text);

/// Rounds to a whole number, halves to even. \throws Fault "Overflow" outside the 32-bit range.
int roundHalfEven(double value);

/// \throws Fault "Overflow" outside 0 to 255.
std::uint8_t toByte(long long value);

/// A 16-bit signed result. \throws Fault "Overflow" outside -32768 to 32767.
int toInt16(long long value);

/// Shortest decimal text that carries 15 significant digits.
std::string doubleText(double value);

/// The value as its text form carries it: through doubleText() and back.
double throughText(double value);

/// A number in a digit pattern: '0' is a digit always shown, '#' one shown when needed ("#0.000",
/// "##.####", "00.0000"). Rounds half away from zero; a value that rounds to zero has no minus.
std::string formatNumber(double value, std::string_view pattern);

std::string upperCase(std::string_view text);
std::string trimmed(std::string_view text);
bool startsWith(std::string_view text, std::string_view start);

/// Full English month name, empty outside 1 to 12.
std::string monthName(int month);

/// Hex key filter: upper-cases the key; Enter (13), Backspace (8), 0-9 and A-F pass; others become 0.
int hexKeyFilter(int key);

/// Decimal key filter: Enter (13), Backspace (8) and 0-9 pass; others become 0.
int decimalKeyFilter(int key);

inline constexpr int kEnterKey = 13;
inline constexpr int kBackspaceKey = 8;

} // namespace vrk
