#include "apps/vrkctl/TerminalDialogs.h"

#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

Choice TerminalDialogs::show(const MessageBox& box) {
    const auto has = [&box](Choice choice) {
        return std::find(box.buttons.begin(), box.buttons.end(), choice) != box.buttons.end();
    };
    if (has(Choice::Retry)) {
        const bool again =
            startsWith(box.text, "Invalid I2C address") || (linkLost_ != nullptr && linkLost_());
        return again ? Choice::Retry : Choice::Cancel;
    }
    const std::string text = trimmed(box.text);
    if (std::find(messages_.begin(), messages_.end(), text) == messages_.end())
        messages_.push_back(text);
    return has(Choice::No) ? Choice::No : Choice::Ok;
}

std::optional<std::string> TerminalDialogs::chooseFile(const FileRequest&) {
    return std::nullopt;
}

std::vector<std::string> TerminalDialogs::takeMessages() {
    return std::exchange(messages_, {});
}

} // namespace vrk
