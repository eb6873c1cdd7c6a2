#include "platform/files/markup.h"

#include "platform/runtime/text.h"

namespace vrk {

namespace {

/// Length of the UTF-8 character at `at`; 0 if the bytes there are none: a script's comments may be in any
/// code, a report may not.
std::size_t characterLength(const std::string& text, std::size_t at) {
    const auto byte = [&text](std::size_t i) {
        return static_cast<unsigned char>(i < text.size() ? text[i] : 0);
    };
    const unsigned char lead = byte(at);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(at + i) & 0xC0U) != 0x80)
            return 0;
    // Overlong forms and surrogates.
    if ((lead == 0xE0 && byte(at + 1) < 0xA0) || (lead == 0xED && byte(at + 1) >= 0xA0) ||
        (lead == 0xF0 && byte(at + 1) < 0x90) || (lead == 0xF4 && byte(at + 1) >= 0x90))
        return 0;
    return length;
}

/// \param escape what stands for an ASCII character; empty: itself
template <class Escape>
std::string escaped(const std::string& text, const Escape& escape) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = characterLength(text, at);
        if (length == 0) {
            out += "\xEF\xBF\xBD";
            ++at;
            continue;
        }
        const std::string other = length == 1 ? escape(text[at]) : std::string();
        out += other.empty() ? text.substr(at, length) : other;
        at += length;
    }
    return out;
}

} // namespace

std::string xmlText(const std::string& text) {
    return escaped(text, [](char c) -> std::string {
        switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        default:
            // XML has no place for control characters.
            return static_cast<unsigned char>(c) < ' ' || c == '\x7F' ? " " : "";
        }
    });
}

std::string jsonText(const std::string& text) {
    return '"' +
           escaped(text,
                   [](char c) -> std::string {
                       if (c == '"' || c == '\\')
                           return std::string("\\") + c;
                       if (static_cast<unsigned char>(c) < ' ')
                           return "\\u" + std::string(2, '0') + byteToHex2(static_cast<std::uint8_t>(c));
                       return "";
                   }) +
           '"';
}

} // namespace vrk
