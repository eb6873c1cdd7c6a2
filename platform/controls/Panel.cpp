#include "platform/controls/Panel.h"

#include "platform/runtime/text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk {

Panel::Panel(PanelContext& context, std::string name, std::string title)
    : context_(context), name_(std::move(name)), title_(std::move(title)) {}

Panel::~Panel() = default;

void Panel::setEnabled(bool enabled) {
    if (std::exchange(enabled_, enabled) != enabled)
        enabledChanged_.emit();
}

Control* Panel::find(const std::string& name, int index) const {
    const auto found = std::find_if(controls_.begin(), controls_.end(), [&](const Control* control) {
        return control->index() == index && control->name() == name;
    });
    return found == controls_.end() ? nullptr : *found;
}

void Panel::tell(bool good, const std::string& text, const std::string& detail, const Control* field) const {
    context_.results.add({.good = good,
                          .text = text,
                          .detail = detail,
                          .field = field == nullptr ? "" : field->panel().name() + "." + field->path(),
                          .time = context_.clock().wallTime()});
}

const Panel::Action* Panel::findAction(const std::string& name) const {
    for (const NamedAction& action : actions_)
        if (action.name == name)
            return &action.run;
    return nullptr;
}

namespace {
ArgumentError wrongArgument(std::size_t index, const std::string& wanted) {
    return ArgumentError("argument " + std::to_string(index + 1) + " must be " + wanted);
}
} // namespace

double numberArgument(const ActionArgs& args, std::size_t index) {
    const ActionValue& value = args.at(index);
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        return static_cast<double>(*whole);
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag ? 1 : 0;
    if (const auto* text = std::get_if<std::string>(&value); text != nullptr && isNumeric(*text))
        return leadingNumber(*text);
    throw wrongArgument(index, "a number");
}

std::int64_t wholeArgument(const ActionArgs& args, std::size_t index) {
    const double number = numberArgument(args, index);
    if (number != std::floor(number))
        throw wrongArgument(index, "a whole number");
    return roundHalfEven(number);
}

std::string textArgument(const ActionArgs& args, std::size_t index) {
    const ActionValue& value = args.at(index);
    if (const auto* text = std::get_if<std::string>(&value))
        return *text;
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        return decimalText(*whole);
    if (const auto* number = std::get_if<double>(&value))
        return doubleText(*number);
    throw wrongArgument(index, "a text");
}

void requireArguments(const ActionArgs& args, std::size_t count) {
    if (args.size() != count)
        throw ArgumentError("it takes " + std::to_string(count) + " arguments, not " +
                            std::to_string(args.size()));
}

PanelSlotBase::PanelSlotBase(PanelContext& context, std::string name, std::string title)
    : context_(context), name_(std::move(name)), title_(std::move(title)) {}

Panel& PanelSlotBase::load() {
    if (!panel_) {
        panel_ = create();
        // Reachable before its load runs, which calls services of others that look back at this panel.
        const std::shared_ptr<Panel> panel = panel_;
        changed_.emit(SlotEvent::Loaded);
        try {
            panel->Form_Load();
        } catch (...) {
            // A panel that is half set up must not count as loaded: its next use begins anew.
            if (panel_ == panel)
                forget();
            throw;
        }
        if (!panel_) // its load lets events run
            throw Fault(title_ + " was closed while it was opening");
    }
    return *panel_;
}

void PanelSlotBase::show() {
    load();
    if (!std::exchange(visible_, true))
        changed_.emit(SlotEvent::Shown);
    bringToFront();
}

void PanelSlotBase::bringToFront() {
    if (std::exchange(context_.front, this) == this)
        return;
    changed_.emit(SlotEvent::Activated);
    load().Form_Activate();
}

void PanelSlotBase::hide() {
    load();
    if (context_.front == this)
        context_.front = nullptr;
    if (std::exchange(visible_, false))
        changed_.emit(SlotEvent::Hidden);
}

void PanelSlotBase::unload() {
    if (!panel_)
        return;
    const std::shared_ptr<Panel> panel = panel_;
    panel->Form_Unload();
    if (panel_ != panel)
        return; // its unload has unloaded it already
    forget();
}

void PanelSlotBase::forget() {
    if (context_.front == this)
        context_.front = nullptr;
    visible_ = false;
    const std::shared_ptr<Panel> panel = std::exchange(panel_, nullptr);
    changed_.emit(SlotEvent::Unloaded);
    context_.events.retire(panel);
}

Outcome PanelSlotBase::userClose() {
    return context_.events.deliver([this] {
        if (const auto panel = panel_) {
            panel->Form_QueryUnload();
            if (panel->closeHides())
                hide();
            else
                unload();
        }
    });
}

Outcome PanelSlotBase::userActivate() {
    return context_.events.deliver([this] {
        if (panel_ && visible_)
            bringToFront();
    });
}

} // namespace vrk
