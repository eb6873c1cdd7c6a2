#pragma once

#include <string>

/// Texts of the user's inside a report that a program reads. What is no UTF-8 becomes U+FFFD: a comment may
/// be in any code, a report may not.
namespace vrk {

/// For an element or an attribute. XML has no place for control characters: they become blanks.
std::string xmlText(const std::string& text);

/// A JSON string, quotation marks included.
std::string jsonText(const std::string& text);

} // namespace vrk
