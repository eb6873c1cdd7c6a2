#include "automation/gestures.h"

#include "automation/parameters.h"
#include "platform/controls/Panel.h"

#include <algorithm>
#include <array>

namespace vrk {

namespace {
std::string pathOf(const Control& control) {
    return control.panel().name() + "." + control.path();
}

RpcError noSuchGesture(const Control& control, const std::string& method, const std::string& takers) {
    return invalidParams("'" + pathOf(control) + "' is a " + std::string(control.kindName()) + "; " + method +
                         " is for " + takers);
}

Outcome click(Control& control) {
    using Kind = Control::Kind;
    switch (control.kind()) {
    case Kind::CheckBox:
        return static_cast<CheckBox&>(control).userClick();
    case Kind::OptionButton:
        return static_cast<OptionButton&>(control).userClick();
    case Kind::Button:
        return static_cast<Button&>(control).userClick();
    case Kind::MenuEntry:
        return static_cast<MenuEntry&>(control).userClick();
    case Kind::TextBox:
        return static_cast<TextBox&>(control).userClick();
    default:
        throw noSuchGesture(control, "click", "CheckBox, OptionButton, Button, MenuEntry and TextBox");
    }
}

/// A row that is not there cannot be picked.
int existing(int count, const Json& params, const char* name) {
    if (count == 0)
        throw invalidParams("there is no row to select");
    return static_cast<int>(wholeParameter(params, name, 0, count - 1));
}

Outcome select(Control& control, const Json& params) {
    using Kind = Control::Kind;
    if (control.kind() == Kind::ComboBox || control.kind() == Kind::ListBox) {
        auto& list = static_cast<RowControl&>(control);
        return list.userSelect(existing(list.rowCount(), params, "index"));
    }
    if (control.kind() != Kind::Grid)
        throw noSuchGesture(control, "select", "ComboBox, ListBox and Grid");
    auto& grid = static_cast<Grid&>(control);
    const int row = existing(grid.rows(), params, "row");
    const bool whichColumn = findParameter(params, "column") != nullptr;
    return grid.userSelect(row, whichColumn ? existing(grid.columns(), params, "column") : 0);
}

int sliderValue(const Slider& slider, const Json& params) {
    return static_cast<int>(wholeParameter(params, "value", slider.minimum(), slider.maximum()));
}

Outcome scroll(Control& control, const Json& params) {
    if (control.kind() == Control::Kind::ListBox)
        return static_cast<ListBox&>(control).userScroll();
    if (control.kind() != Control::Kind::Slider)
        throw noSuchGesture(control, "scroll", "ListBox and Slider");
    auto& slider = static_cast<Slider&>(control);
    return slider.userScroll(sliderValue(slider, params));
}

Outcome drag(Control& control, const Json& params) {
    if (control.kind() != Control::Kind::Slider)
        throw noSuchGesture(control, "drag", "Slider");
    auto& slider = static_cast<Slider&>(control);
    return slider.userDrag(sliderValue(slider, params));
}

Outcome doubleClick(Control& control) {
    if (control.kind() != Control::Kind::Picture)
        throw noSuchGesture(control, "doubleClick", "Picture");
    return static_cast<Picture&>(control).userDoubleClick();
}

std::string whyRefused(const Control& control) {
    if (!control.reachable())
        return control.visible() ? " stands in a group that is hidden" : " is hidden";
    if (!control.panel().enabled())
        return " stands on a panel that is disabled";
    return control.enabled() ? " stands in a group that is disabled" : " is disabled";
}

constexpr std::array kGestures = {"click",  "key",    "enter", "focus",      "leave",
                                  "select", "scroll", "drag",  "doubleClick"};
} // namespace

bool isGesture(const std::string& method) {
    return std::find(kGestures.begin(), kGestures.end(), method) != kGestures.end();
}

TextBox& asTextBox(Control& control, const std::string& method) {
    if (control.kind() != Control::Kind::TextBox)
        throw noSuchGesture(control, method, "TextBox");
    return static_cast<TextBox&>(control);
}

Outcome performGesture(Control& control, const std::string& method, const Json& params) {
    if (method == "click")
        return click(control);
    if (method == "key") {
        TextBox& box = asTextBox(control, method);
        const auto code = static_cast<int>(wholeParameter(params, "code", 1, 0xFFFF));
        return box.userKey(code, static_cast<int>(wholeParameter(params, "shift", 0, 7, 0)));
    }
    if (method == "enter")
        return asTextBox(control, method).userEnter();
    if (method == "focus")
        return control.userFocus();
    if (method == "leave")
        return control.userLeave();
    if (method == "select")
        return select(control, params);
    if (method == "scroll")
        return scroll(control, params);
    if (method == "drag")
        return drag(control, params);
    return doubleClick(control);
}

void requireDone(const Outcome& outcome, const Control* control) {
    switch (outcome.kind) {
    case Outcome::Kind::Done:
    case Outcome::Kind::Held: // runs as soon as the exchange with the board is over
        return;
    case Outcome::Kind::Refused:
        throw RpcError(RpcCode::Refused,
                       control == nullptr ? "refused" : pathOf(*control) + whyRefused(*control));
    case Outcome::Kind::Faulted:
        throw RpcError(RpcCode::Faulted, outcome.fault);
    case Outcome::Kind::Ended:
        throw RpcError(RpcCode::Ended, "the program has ended");
    }
}

} // namespace vrk
