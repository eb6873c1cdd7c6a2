#include "platform/controls/Control.h"

#include "platform/controls/Panel.h"
#include "platform/controls/controls.h"

#include <array>
#include <utility>

namespace vrk {

std::string_view colourName(Colour colour) {
    static constexpr std::array<std::string_view, 18> kNames = {
        "black",     "blue",          "green",     "cyan",       "red",         "magenta",
        "brown",     "light gray",    "dark gray", "light blue", "light green", "light cyan",
        "light red", "light magenta", "yellow",    "white",      "pure red",    "pure green"};
    return kNames[static_cast<std::size_t>(colour)];
}

std::string_view freshnessName(Freshness::State state) {
    static constexpr std::array<std::string_view, 3> kNames = {"never", "fresh", "stale"};
    return kNames[static_cast<std::size_t>(state)];
}

Control::Control(Panel& panel, std::string name, int index)
    : panel_(panel), name_(std::move(name)), index_(index) {
    panel_.controls_.push_back(this);
}

Control::~Control() {
    panel_.context().focus.forget(*this);
}

std::string_view Control::kindName() const {
    static constexpr std::array<std::string_view, 16> kNames = {
        "CheckBox",    "OptionButton", "TextBox", "Button", "MenuEntry", "ComboBox", "ListBox", "Slider",
        "ProgressBar", "Label",        "Lamp",    "Frame",  "Grid",      "TextLog",  "Timer",   "Picture"};
    return kNames[static_cast<std::size_t>(kind())];
}

std::string Control::path() const {
    return index_ == kNoIndex ? name_ : name_ + "(" + std::to_string(index_) + ")";
}

void Control::setEnabled(bool enabled) {
    if (std::exchange(enabled_, enabled) != enabled)
        notify(Aspect::Enabled);
}

void Control::setVisible(bool visible) {
    if (std::exchange(visible_, visible) != visible)
        notify(Aspect::Visible);
}

void Control::setCaption(const std::string& caption) {
    if (caption_ == caption)
        return;
    caption_ = caption;
    notify(Aspect::Caption);
}

void Control::setToolTip(const std::string& tip) {
    if (toolTip_ == tip)
        return;
    toolTip_ = tip;
    notify(Aspect::ToolTip);
}

void Control::markUnread() {
    freshness_.emplace();
    notify(Aspect::Freshness);
}

void Control::markRead() {
    freshness_ = Freshness{Freshness::State::Fresh, panel_.context().clock().now(), {}, false};
    notify(Aspect::Freshness);
}

void Control::markStale(const std::string& cause, bool failed) {
    if (!freshness_)
        markUnread();
    if (freshness_->state == Freshness::State::Never) {
        // A first read that failed leaves nothing to be stale, but the failure is worth telling.
        if (std::exchange(freshness_->failed, failed) == failed)
            return;
    } else {
        freshness_->state = Freshness::State::Stale;
        freshness_->failed = failed;
    }
    freshness_->cause = cause;
    notify(Aspect::Freshness);
}

bool Control::reachable() const {
    for (const Control* control = this; control != nullptr; control = control->container_)
        if (!control->visible_)
            return false;
    return true;
}

bool Control::responsive() const {
    for (const Control* control = this; control != nullptr; control = control->container_)
        if (!control->enabled_)
            return false;
    return panel_.enabled();
}

bool Control::focused() const {
    return panel_.context().focus.focused() == this;
}

Outcome Control::gesture(std::function<void()> act) {
    if (!reachable() || !responsive())
        return {Outcome::Kind::Refused, {}};
    return panel_.events().deliver([this, act = std::move(act), alive = std::weak_ptr(alive_)] {
        // Held back during an exchange it meets the control as it stands afterwards, or not at all.
        if (!alive.expired() && reachable() && responsive())
            act();
    });
}

void Control::takeFocus() {
    panel_.context().focus.move(this);
}

Outcome Control::userFocus() {
    return gesture([this] { takeFocus(); });
}

Outcome Control::userLeave() {
    if (!focused())
        return {};
    return panel_.events().deliver([this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired() && focused())
            panel_.context().focus.move(nullptr);
    });
}

void Control::raiseGotFocus() const {
    if (gotFocus_)
        gotFocus_();
}

void Control::raiseLostFocus() const {
    if (lostFocus_)
        lostFocus_();
}

void FocusKeeper::move(Control* to) {
    if (focused_ == to)
        return;
    Control* from = std::exchange(focused_, to);
    if (from != nullptr)
        from->raiseLostFocus();
    if (to != nullptr && focused_ == to)
        to->raiseGotFocus();
}

} // namespace vrk
