#include "panels/blocks/entries.h"

#include "platform/runtime/text.h"

namespace vrk {

namespace {
constexpr int kDigits = 3;
constexpr int kHighest = 256;

void makeHexEntry(TextBox& box, const std::function<void()>& check, std::function<void()> onEnter) {
    box.setMaxLength(kDigits);
    box.onKeyPress([check, onEnter = std::move(onEnter)](int key) {
        const int passed = hexKeyFilter(key);
        if (passed == kEnterKey) {
            check();
            if (onEnter)
                onEnter();
        }
        return passed;
    });
    box.onLostFocus(check);
}

void tidy(TextBox& box, const std::string& fallback) {
    box.setText(upperCase(box.text()));
    const int value = hexToInt(box.text());
    if (value <= 0 || value > kHighest)
        box.setText(fallback);
}
} // namespace

void hexEntry(TextBox& box, const std::string& fallback, std::function<void()> onEnter) {
    makeHexEntry(
        box, [&box, fallback] { tidy(box, fallback); }, std::move(onEnter));
}

void hexEntryOrNone(TextBox& box, const std::string& fallback) {
    makeHexEntry(box,
                 [&box, fallback] {
                     if (box.text() != "NA")
                         tidy(box, fallback);
                 },
                 {});
}

} // namespace vrk
