#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vrk {

/// Reads a text field by field: fields end at a comma or a line end, blanks around a field are dropped, and a
/// field in double quotes keeps its commas, blanks and line ends; a doubled quote inside stands for one.
class SequentialInput {
  public:
    explicit SequentialInput(std::string_view text) : text_(text) {}

    /// The next field; nothing behind the last one.
    std::optional<std::string> next();

    /// Passes line ends with nothing but blanks before them: the tail of a line whose last field ended in a
    /// comma, and empty lines.
    void skipLineEnds();

  private:
    bool takeLineEnd();

    std::string_view text_;
    std::size_t at_ = 0;
};

/// A field as `SequentialInput` reads it back: in quotes where a comma, a quote, a line end or a blank at
/// either end would be lost.
std::string sequentialField(const std::string& text);

} // namespace vrk
