#include "panels/blocks/entries.h"

#include "platform/runtime/text.h"

#include <memory>
#include <utility>

namespace vrk {

namespace {
constexpr int kDigits = 3;
constexpr int kHighest = 256;

void tidy(TextBox& box, const HexEntry& entry, int highest) {
    box.setText(upperCase(box.text()));
    if (entry.mayBeNone && box.text() == "NA")
        return;
    const int value = hexToInt(box.text());
    if (value <= 0 || value > highest)
        box.setText(entry.fallback);
}

void run(const std::function<void()>& handler) {
    if (handler)
        handler();
}
} // namespace

void hexEntry(TextBox& box, HexEntry entry) {
    box.setMaxLength(kDigits);
    const auto rules = std::make_shared<const HexEntry>(std::move(entry));
    box.onKeyPress([&box, rules](int key) {
        const int passed = hexKeyFilter(key);
        if (passed == kEnterKey) {
            tidy(box, *rules, kHighest);
            run(rules->onEnter);
        }
        return passed;
    });
    box.onLostFocus([&box, rules] {
        tidy(box, *rules, rules->highestWhenLeft);
        run(rules->onLeave);
    });
}

void hexByteEntry(TextBox& box, int digits) {
    box.setMaxLength(digits);
    box.onKeyPress(hexKeyFilter);
    box.onLostFocus([&box] {
        box.setText(upperCase(box.text()));
        const int value = hexToInt(box.text());
        if (value <= 0 || value >= kHighest)
            box.setText("00");
    });
}

} // namespace vrk
