#include "automation/paths.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

namespace vrk {

namespace {
/// " (did you mean cmdRead?)" where a name differs in its casing alone: casings are those of the panels.
template <class Names>
std::string hint(const Names& names, const std::string& wanted) {
    for (const std::string& name : names)
        if (upperCase(name) == upperCase(wanted))
            return " (did you mean " + name + "?)";
    return {};
}

template <class Items, class Name>
std::vector<std::string> namesOf(const Items& items, Name name) {
    std::vector<std::string> names;
    for (const auto& item : items)
        names.push_back(name(item));
    return names;
}

std::string bounds(int first, int last) {
    return std::to_string(first) + " to " + std::to_string(last);
}

/// Says why `index` does not fit a name whose indices are first to last; kNoIndex stands for none.
RpcError wrongIndex(const std::string& name, int index, int first, int last) {
    if (first == kNoIndex)
        return invalidParams("'" + name + "' takes no index");
    if (index == kNoIndex)
        return invalidParams("'" + name + "' needs an index, " + bounds(first, last));
    return invalidParams("index " + std::to_string(index) + " of '" + name + "' is not in " +
                         bounds(first, last));
}
} // namespace

std::string Path::text() const {
    return (bare() ? name : panel + "." + name) +
           (index == kNoIndex ? "" : "(" + std::to_string(index) + ")");
}

Path parsePath(const std::string& text) {
    std::string_view rest = text;
    const auto takeName = [&rest] {
        std::size_t length = 0;
        while (length < rest.size() &&
               (std::isalnum(static_cast<unsigned char>(rest[length])) || rest[length] == '_'))
            ++length;
        const std::string name(rest.substr(0, length));
        rest.remove_prefix(length);
        return name;
    };
    const auto wrong = [&text] {
        return invalidParams("'" + text +
                             "' is no path; write panel.control, panel.control(index) or a bare name");
    };
    Path path;
    path.name = takeName();
    if (!rest.empty() && rest.front() == '.') {
        rest.remove_prefix(1);
        path.panel = std::exchange(path.name, takeName());
        if (path.panel.empty())
            throw wrong();
    }
    if (path.name.empty())
        throw wrong();
    if (rest.empty())
        return path;
    constexpr std::size_t kMostDigits = 6;
    const std::string digits = rest.size() > 2 ? std::string(rest.substr(1, rest.size() - 2)) : std::string();
    if (rest.front() != '(' || rest.back() != ')' || digits.empty() || digits.size() > kMostDigits ||
        digits.find_first_not_of("0123456789") != std::string::npos)
        throw wrong();
    path.index = std::stoi(digits);
    return path;
}

PanelSlotBase& slotNamed(const BenchTarget& bench, const std::string& panel) {
    std::string all;
    for (PanelSlotBase* slot : bench.panels) {
        if (slot->name() == panel)
            return *slot;
        all += (all.empty() ? "" : ", ") + slot->name();
    }
    throw invalidParams("unknown panel '" + panel + "'; panels: " + all);
}

Control& controlAt(const Panel& panel, const Path& path) {
    if (Control* control = panel.find(path.name, path.index))
        return *control;
    int first = 0;
    int last = -1;
    for (const Control* control : panel.controls())
        if (control->name() == path.name) {
            first = last < first ? control->index() : std::min(first, control->index());
            last = std::max(last, control->index());
            if (control->index() == kNoIndex)
                throw wrongIndex(panel.name() + "." + path.name, path.index, kNoIndex, kNoIndex);
        }
    if (last >= first)
        throw wrongIndex(panel.name() + "." + path.name, path.index, first, last);
    if (panel.findAction(path.name) != nullptr)
        throw invalidParams("'" + path.text() + "' is an action; run it with call");
    throw invalidParams(
        "panel '" + panel.name() + "' has no control '" + path.name + "'" +
        hint(namesOf(panel.controls(), [](const Control* control) { return control->name(); }), path.name));
}

const Panel::Action& actionAt(const Panel& panel, const Path& path) {
    if (path.index != kNoIndex)
        throw invalidParams("an action takes its index in parameter 'args', not in its path");
    if (const Panel::Action* action = panel.findAction(path.name))
        return *action;
    throw invalidParams(
        "panel '" + panel.name() + "' has no action '" + path.name + "'" +
        hint(namesOf(panel.actions(), [](const auto& action) { return action.name; }), path.name));
}

const Panel::Action& moduleActionNamed(const BenchTarget& bench, const std::string& name) {
    for (const Panel::NamedAction& action : bench.moduleActions)
        if (action.name == name)
            return action.run;
    throw invalidParams(
        "unknown action '" + name + "'" +
        hint(namesOf(bench.moduleActions, [](const auto& action) { return action.name; }), name));
}

const SharedValues::Value* sharedValueAt(const BenchTarget& bench, const Path& path) {
    const SharedValues::Value* value =
        path.bare() ? bench.values.find(path.name) : bench.values.find(path.panel, path.name);
    if (value == nullptr && !path.bare())
        return nullptr;
    if (value == nullptr)
        throw invalidParams(
            "unknown shared value '" + path.name + "'" +
            hint(namesOf(bench.values.all(), [](const auto& item) { return item.name; }), path.name));
    const bool fits =
        value->isArray() ? path.index >= value->first && path.index <= value->last : path.index == kNoIndex;
    if (!fits)
        throw wrongIndex(path.bare() ? path.name : path.panel + "." + path.name, path.index, value->first,
                         value->last);
    return value;
}

} // namespace vrk
