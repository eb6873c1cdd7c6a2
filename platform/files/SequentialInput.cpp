#include "platform/files/SequentialInput.h"

#include <algorithm>

namespace vrk {

namespace {
bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
} // namespace

std::optional<std::string> SequentialInput::next() {
    while (at_ < text_.size() && isBlank(text_[at_]))
        ++at_;
    if (at_ >= text_.size())
        return std::nullopt;
    std::string field;
    if (text_[at_] == '"') {
        for (++at_; at_ < text_.size(); ++at_) {
            if (text_[at_] != '"') {
                field += text_[at_];
            } else if (at_ + 1 < text_.size() && text_[at_ + 1] == '"') {
                field += '"';
                ++at_;
            } else {
                ++at_;
                break;
            }
        }
    }
    const bool quoted = !field.empty();
    const std::size_t end = std::min(text_.find_first_of(",\r\n", at_), text_.size());
    std::string_view plain = text_.substr(at_, end - at_);
    at_ = end;
    if (!quoted) {
        while (!plain.empty() && isBlank(plain.back()))
            plain.remove_suffix(1);
        field = plain;
    }
    if (at_ < text_.size() && !takeLineEnd())
        ++at_; // the comma
    return field;
}

bool SequentialInput::takeLineEnd() {
    if (at_ >= text_.size() || (text_[at_] != '\r' && text_[at_] != '\n'))
        return false;
    const bool carriageReturn = text_[at_] == '\r';
    ++at_;
    if (carriageReturn && at_ < text_.size() && text_[at_] == '\n')
        ++at_;
    return true;
}

void SequentialInput::skipLineEnds() {
    std::size_t before = 0;
    do {
        before = at_;
        while (at_ < text_.size() && isBlank(text_[at_]))
            ++at_;
    } while (takeLineEnd());
    at_ = before;
}

std::string sequentialField(const std::string& text) {
    const bool plain = text.find_first_of(",\"\r\n") == std::string::npos &&
                       (text.empty() || (!isBlank(text.front()) && !isBlank(text.back())));
    if (plain)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + "\"";
}

} // namespace vrk
