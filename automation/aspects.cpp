#include "automation/aspects.h"

#include "automation/parameters.h"

#include <limits>

namespace vrk {

namespace {
constexpr int kMost = std::numeric_limits<int>::max();

std::string colour(Colour value) {
    return std::string(colourName(value));
}

void addRows(Json& into, const RowControl& control) {
    Json rows = Json::array();
    Json itemData = Json::array();
    for (const RowControl::Row& row : control.rows()) {
        rows.push_back(row.text);
        itemData.push_back(row.itemData);
    }
    into["rows"] = std::move(rows);
    into["itemData"] = std::move(itemData);
    into["index"] = control.listIndex();
}

void addGrid(Json& into, const Grid& grid) {
    into["rows"] = grid.rows();
    into["columns"] = grid.columns();
    into["firstRow"] = 0;
    into["firstColumn"] = 0;
    Json cells = Json::array();
    Json colours = Json::array();
    for (int row = 0; row < grid.rows(); ++row) {
        Json texts = Json::array();
        Json names = Json::array();
        for (int column = 0; column < grid.columns(); ++column) {
            texts.push_back(grid.cell(row, column));
            names.push_back(colour(grid.cellColour(row, column)));
        }
        cells.push_back(std::move(texts));
        colours.push_back(std::move(names));
    }
    into["cells"] = std::move(cells);
    into["colours"] = std::move(colours);
    into["row"] = grid.row();
}

void addFreshness(Json& into, const Freshness& freshness, Milliseconds now) {
    const bool never = freshness.state == Freshness::State::Never;
    into["state"] = freshnessName(freshness.state);
    into["ageMs"] = never ? Json() : Json((now - freshness.since).count());
}

int whole(const Json& value, int least = std::numeric_limits<int>::min(), int most = kMost) {
    return static_cast<int>(wholeNumber(value, "value", least, most));
}

bool flag(const Json& value) {
    if (value.is_boolean())
        return value.get<bool>();
    return whole(value, 0, 1) != 0;
}

/// A number is taken as its decimal text, since fields carry numbers as text.
std::string text(const Json& value) {
    if (value.is_number())
        return value.dump();
    if (!value.is_string())
        throw invalidParams("parameter 'value' takes a text here");
    return value.get<std::string>();
}

Colour colourByName(const Json& value) {
    const std::string name = text(value);
    for (int number = 0; number <= static_cast<int>(Colour::PureGreen); ++number)
        if (name == colourName(static_cast<Colour>(number)))
            return static_cast<Colour>(number);
    throw invalidParams("unknown colour '" + name +
                        "'; for example \"light green\", \"black\", \"pure red\"");
}

const char* mainAspect(Control::Kind kind) {
    using Kind = Control::Kind;
    switch (kind) {
    case Kind::CheckBox:
    case Kind::OptionButton:
    case Kind::Slider:
    case Kind::ProgressBar:
        return "value";
    case Kind::TextBox:
    case Kind::TextLog:
        return "text";
    case Kind::ComboBox:
    case Kind::ListBox:
        return "index";
    case Kind::Lamp:
        return "colour";
    case Kind::Grid:
        return "cells";
    case Kind::Timer:
        return "running";
    case Kind::Button:
    case Kind::MenuEntry:
    case Kind::Label:
    case Kind::Frame:
    case Kind::Picture:
        break;
    }
    return "caption";
}

int cellPart(const std::optional<int>& given, const char* name) {
    if (!given)
        throw invalidParams(std::string("a grid's cell needs parameter '") + name + "'");
    return *given;
}

template <class C, class V>
std::function<void()> call(Control& control, void (C::*set)(V), std::remove_cvref_t<V> value) {
    return [&target = static_cast<C&>(control), set, value] { (target.*set)(value); };
}

/// The assignments that one kind alone knows; nothing if it has no such aspect.
std::function<void()> kindAssignment(Control& control, const std::string& aspect, const Assignment& given) {
    const Json& value = given.value;
    const auto is = [&](Control::Kind kind, const char* name) {
        return control.kind() == kind && aspect == name;
    };
    using Kind = Control::Kind;
    if (is(Kind::CheckBox, "value"))
        return call(control, &CheckBox::setValue, value.is_boolean() ? int(value.get<bool>()) : whole(value));
    if (is(Kind::OptionButton, "value"))
        return call(control, &OptionButton::setValue, flag(value));
    if (is(Kind::TextBox, "text"))
        return call(control, &TextBox::setText, text(value));
    if (is(Kind::TextLog, "text"))
        return [&log = static_cast<TextLog&>(control), all = text(value)] { log.setText(all); };
    if (is(Kind::ComboBox, "index") || is(Kind::ListBox, "index"))
        return call(control, &RowControl::setListIndex, whole(value));
    if (is(Kind::Slider, "value"))
        return call(control, &Slider::setValue, whole(value));
    if (is(Kind::ProgressBar, "value"))
        return call(control, &ProgressBar::setValue, whole(value));
    if (is(Kind::Lamp, "colour"))
        return call(control, &Lamp::setColour, colourByName(value));
    if (is(Kind::Timer, "running"))
        return call(control, &Timer::setRunning, flag(value));
    if (is(Kind::Timer, "interval"))
        return call(control, &Timer::setInterval, Milliseconds(whole(value, 0)));
    if (is(Kind::Grid, "cells"))
        return [&grid = static_cast<Grid&>(control), row = cellPart(given.row, "row"),
                column = cellPart(given.column, "column"),
                cell = text(value)] { grid.setCell(row, column, cell); };
    return {};
}
} // namespace

Json readAspects(const Control& control) {
    Json into;
    into["kind"] = control.kindName();
    into["enabled"] = control.enabled();
    into["visible"] = control.visible();
    into["tip"] = control.toolTip();
    using Kind = Control::Kind;
    switch (control.kind()) {
    case Kind::CheckBox:
        into["value"] = static_cast<const CheckBox&>(control).value();
        into["caption"] = control.caption();
        break;
    case Kind::OptionButton:
        into["value"] = static_cast<const OptionButton&>(control).value();
        into["caption"] = control.caption();
        break;
    case Kind::TextBox:
        into["text"] = static_cast<const TextBox&>(control).text();
        break;
    case Kind::TextLog:
        into["text"] = static_cast<const TextLog&>(control).text();
        break;
    case Kind::ComboBox:
    case Kind::ListBox:
        addRows(into, static_cast<const RowControl&>(control));
        break;
    case Kind::Slider: {
        const auto& slider = static_cast<const Slider&>(control);
        into["value"] = slider.value();
        into["min"] = slider.minimum();
        into["max"] = slider.maximum();
        into["tick"] = slider.tickFrequency();
        break;
    }
    case Kind::ProgressBar:
        into["value"] = static_cast<const ProgressBar&>(control).value();
        into["max"] = static_cast<const ProgressBar&>(control).maximum();
        break;
    case Kind::Lamp:
        into["colour"] = colour(static_cast<const Lamp&>(control).colour());
        break;
    case Kind::Grid:
        addGrid(into, static_cast<const Grid&>(control));
        break;
    case Kind::Timer:
        into["interval"] = static_cast<const Timer&>(control).interval().count();
        into["running"] = static_cast<const Timer&>(control).running();
        break;
    case Kind::Button:
    case Kind::MenuEntry:
    case Kind::Label:
    case Kind::Frame:
    case Kind::Picture:
        into["caption"] = control.caption();
        break;
    }
    if (const auto& freshness = control.freshness())
        addFreshness(into, *freshness, control.panel().context().clock().now());
    return into;
}

std::function<void()> prepareAssignment(Control& control, const Assignment& assignment) {
    const std::string aspect = assignment.aspect.value_or(mainAspect(control.kind()));
    const Json& value = assignment.value;
    if (aspect == "enabled")
        return [&control, on = flag(value)] { control.setEnabled(on); };
    if (aspect == "visible")
        return [&control, on = flag(value)] { control.setVisible(on); };
    if (aspect == "caption")
        return [&control, caption = text(value)] { control.setCaption(caption); };
    if (aspect == "tip")
        return [&control, tip = text(value)] { control.setToolTip(tip); };
    if (auto assign = kindAssignment(control, aspect, assignment))
        return assign;
    throw invalidParams("a " + std::string(control.kindName()) + " has no aspect '" + aspect +
                        "' to set; it has " + mainAspect(control.kind()) +
                        ", caption, tip, enabled, visible");
}

} // namespace vrk
