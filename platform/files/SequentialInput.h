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

    /// Passes a line end with nothing but blanks before it: the tail of a line whose last field ended in a
    /// comma.
    void skipLineEnd();

  private:
    bool takeLineEnd();

    std::string_view text_;
    std::size_t at_ = 0;
};

} // namespace vrk
