#include "automation/BenchMethods.h"

#include "automation/aspects.h"
#include "automation/gestures.h"
#include "automation/parameters.h"
#include "automation/simOperations.h"

#include <array>
#include <cstdio>
#include <set>

namespace vrk {

namespace {
Json description(const std::string& name, std::string_view kind, const std::string& caption = {},
                 const std::string& tip = {}) {
    return {{"name", name},    {"kind", kind},       {"first", nullptr},
            {"last", nullptr}, {"caption", caption}, {"tip", tip}};
}

/// One entry a name: controls of one array stand behind one another.
void describeControls(Json& into, const Panel& panel) {
    for (const Control* control : panel.controls()) {
        if (into.empty() || into.back()["name"] != control->name())
            into.push_back(
                description(control->name(), control->kindName(), control->caption(), control->toolTip()));
        if (control->index() == kNoIndex)
            continue;
        Json& entry = into.back();
        if (entry["first"].is_null())
            entry["first"] = control->index();
        entry["last"] = control->index();
    }
}

/// A name that several panels have stands once.
void describeValues(Json& into, const SharedValues& values) {
    std::set<std::string> told;
    for (const SharedValues::Value& value : values.all()) {
        if (!told.insert(value.name).second)
            continue;
        Json entry = description(value.name, "Value");
        if (value.isArray()) {
            entry["first"] = value.first;
            entry["last"] = value.last;
        }
        into.push_back(std::move(entry));
    }
}

void describeActions(Json& into, const std::vector<Panel::NamedAction>& actions) {
    for (const Panel::NamedAction& action : actions)
        into.push_back(description(action.name, "Action"));
}

Json dateAndTime(const WallTime& wall) {
    std::array<char, 32> date{};
    std::array<char, 32> time{};
    std::snprintf(date.data(), date.size(), "%04d-%02d-%02d", wall.year, wall.month, wall.day);
    std::snprintf(time.data(), time.size(), "%02d:%02d:%02d", wall.hour, wall.minute, wall.second);
    return {{"date", date.data()}, {"time", time.data()}};
}

Json describeShown(const ScriptedDialogs::Shown& shown) {
    if (shown.kind == ScriptedDialogs::Shown::Kind::Message) {
        Json buttons = Json::array();
        for (const Choice choice : shown.box.buttons)
            buttons.push_back(choiceName(choice));
        return {{"kind", "message"},  {"text", shown.box.text}, {"title", shown.box.title},
                {"buttons", buttons}, {"answer", shown.answer}, {"filter", nullptr},
                {"name", nullptr}};
    }
    return {{"kind", shown.file.mode == FileRequest::Mode::Open ? "open" : "save"},
            {"text", ""},
            {"title", shown.file.title},
            {"buttons", Json::array()},
            {"answer", shown.answer.empty() ? Json() : Json(shown.answer)},
            {"filter", shown.file.filter},
            {"name", shown.file.name}};
}
} // namespace

const std::vector<std::pair<std::string, BenchMethods::Method>>& BenchMethods::table() {
    static const std::vector<std::pair<std::string, Method>> kTable = {
        {"panels", &BenchMethods::panels},
        {"describe", &BenchMethods::describe},
        {"get", &BenchMethods::get},
        {"set", &BenchMethods::set},
        {"call", &BenchMethods::call},
        {"show", &BenchMethods::show},
        {"close", &BenchMethods::close},
        {"answer", &BenchMethods::answer},
        {"dialogs", &BenchMethods::dialogs},
        {"clipboard", &BenchMethods::clipboard},
        {"log", &BenchMethods::log},
        {"now", &BenchMethods::now},
        {"advance", &BenchMethods::advanceTime},
        {"sim", &BenchMethods::simulate}};
    return kTable;
}

BenchMethods::Method BenchMethods::find(const std::string& name) {
    for (const auto& [known, method] : table())
        if (known == name)
            return method;
    return nullptr;
}

std::vector<std::string> BenchMethods::names() {
    std::vector<std::string> names;
    for (const auto& entry : table())
        names.push_back(entry.first);
    return names;
}

void BenchMethods::asEvent(const EventLoop::Action& act) {
    requireDone(bench_.events.deliver(act));
}

void BenchMethods::withArguments(const std::string& path, const EventLoop::Action& act) {
    std::string wrong;
    asEvent([&] {
        try {
            act();
        } catch (const ArgumentError& error) {
            wrong = error.what();
        }
    });
    if (!wrong.empty())
        throw invalidParams("'" + path + "': " + wrong);
}

Panel& BenchMethods::used(PanelSlotBase& slot) {
    if (!slot.loaded())
        asEvent([&slot] { slot.load(); });
    if (Panel* panel = slot.panel())
        return *panel;
    throw invalidParams("panel '" + slot.name() + "' has closed itself while it was loaded");
}

Control& BenchMethods::usedControl(const Path& path) {
    if (path.bare())
        throw invalidParams("'" + path.text() + "' names no panel; write panel.control");
    return controlAt(used(slotNamed(bench_, path.panel)), path);
}

Control& BenchMethods::loadedControl(const Path& path) const {
    const PanelSlotBase& slot = slotNamed(bench_, path.panel);
    if (!slot.loaded())
        throw invalidParams("panel '" + path.panel + "' is not loaded");
    return controlAt(*slot.panel(), path);
}

Json BenchMethods::gesture(const std::string& method, const Json& params) {
    Control& control = usedControl(parsePath(textParameter(params, "path")));
    requireDone(performGesture(control, method, params), &control);
    return nullptr;
}

Json BenchMethods::panels(const Json&) {
    Json all = Json::array();
    for (const PanelSlotBase* slot : bench_.panels) {
        const Panel* panel = slot->panel();
        all.push_back({{"name", slot->name()},
                       {"title", slot->title()},
                       {"loaded", panel != nullptr},
                       {"visible", slot->visible()},
                       {"enabled", panel == nullptr || panel->enabled()}});
    }
    return all;
}

Json BenchMethods::describe(const Json& params) {
    Json all = Json::array();
    if (const auto name = optionalText(params, "panel")) {
        const Panel& panel = used(slotNamed(bench_, *name));
        describeControls(all, panel);
        describeActions(all, panel.actions());
        return all;
    }
    describeValues(all, bench_.values);
    describeActions(all, bench_.moduleActions);
    return all;
}

Json BenchMethods::read(const std::string& text) const {
    const Path path = parsePath(text);
    if (const SharedValues::Value* value = sharedValueAt(bench_, path)) {
        try {
            return toJson(value->get(path.index));
        } catch (const Fault& missing) {
            throw invalidParams(missing.what()); // it lives in a panel that is not loaded
        }
    }
    return readAspects(loadedControl(path));
}

Json BenchMethods::get(const Json& params) {
    const Json* paths = findParameter(params, "paths");
    if (paths == nullptr)
        return read(textParameter(params, "path"));
    if (!paths->is_array())
        throw invalidParams("parameter 'paths' takes a list of paths");
    Json all = Json::array();
    for (const Json& path : *paths) {
        if (!path.is_string())
            throw invalidParams("parameter 'paths' takes a list of paths");
        all.push_back(read(path.get<std::string>()));
    }
    return all;
}

Json BenchMethods::set(const Json& params) {
    const Path path = parsePath(textParameter(params, "path"));
    const Json* value = findParameter(params, "value");
    if (value == nullptr)
        throw invalidParams("parameter 'value' is missing");
    if (const SharedValues::Value* shared = sharedValueAt(bench_, path)) {
        if (!shared->set)
            throw invalidParams("'" + path.text() + "' can only be read");
        const ActionValue held = toActionValue(*value, "value");
        withArguments(path.text(), [&] { shared->set(path.index, held); });
        return nullptr;
    }
    Assignment assignment{*value, optionalText(params, "aspect")};
    const auto cellPart = [&params](const char* name) -> std::optional<int> {
        if (findParameter(params, name) == nullptr)
            return std::nullopt;
        return static_cast<int>(wholeParameter(params, name, 0, 0xFFFF));
    };
    assignment.row = cellPart("row");
    assignment.column = cellPart("column");
    asEvent(prepareAssignment(usedControl(path), assignment));
    return nullptr;
}

Json BenchMethods::call(const Json& params) {
    const Path path = parsePath(textParameter(params, "path"));
    ActionArgs args;
    if (const Json* given = findParameter(params, "args")) {
        if (!given->is_array())
            throw invalidParams("parameter 'args' takes a list");
        for (const Json& value : *given)
            args.push_back(toActionValue(value, "args"));
    }
    const Panel::Action& action = path.bare() ? moduleActionNamed(bench_, path.name)
                                              : actionAt(used(slotNamed(bench_, path.panel)), path);
    ActionValue result;
    withArguments(path.text(), [&] { result = action(args); });
    return toJson(result);
}

Json BenchMethods::show(const Json& params) {
    PanelSlotBase& slot = slotNamed(bench_, textParameter(params, "panel"));
    asEvent([&slot] { slot.show(); });
    return nullptr;
}

Json BenchMethods::close(const Json& params) {
    PanelSlotBase& slot = slotNamed(bench_, textParameter(params, "panel"));
    if (!slot.loaded())
        throw invalidParams("panel '" + slot.name() + "' is not loaded");
    if (!slot.panel()->enabled())
        throw RpcError(RpcCode::Refused, slot.name() + " is disabled");
    requireDone(slot.userClose());
    return nullptr;
}

ScriptedDialogs::Answer BenchMethods::answerOf(const Json& given) const {
    const bool withOperation = given.is_object();
    const std::string name = withOperation       ? textParameter(given, "choice")
                             : given.is_string() ? given.get<std::string>()
                                                 : given.dump();
    const auto choice = choiceByName(name);
    if (!choice)
        throw invalidParams("unknown choice '" + name + "'; choices: OK, Cancel, Retry, Yes, No");
    ScriptedDialogs::Answer answer{*choice, {}};
    const Json* operation = withOperation ? findParameter(given, "sim") : nullptr;
    if (operation == nullptr)
        return answer;
    if (bench_.simulated == nullptr)
        throw invalidParams("there is no simulated board to change");
    answer.before = [run = prepareSimOperation(*bench_.simulated, *operation), log = bench_.log] {
        try {
            run();
        } catch (const RpcError& error) {
            // The action under the box must not suffer from a slip of the client.
            log(std::string("under a message box: ") + error.what());
        }
    };
    return answer;
}

Json BenchMethods::answer(const Json& params) {
    // Nothing is queued unless everything is right.
    std::vector<ScriptedDialogs::Answer> choices;
    std::vector<std::optional<std::string>> files;
    const auto listed = [&params](const char* name) -> const Json& {
        static const Json kNone = Json::array();
        const Json* list = findParameter(params, name);
        if (list != nullptr && !list->is_array())
            throw invalidParams(std::string("parameter '") + name + "' takes a list");
        return list == nullptr ? kNone : *list;
    };
    for (const Json& choice : listed("choices"))
        choices.push_back(answerOf(choice));
    for (const Json& file : listed("files")) {
        if (!file.is_string() && !file.is_null())
            throw invalidParams("parameter 'files' takes paths, and null for a cancelled dialog");
        files.push_back(file.is_null() ? std::nullopt : std::optional(file.get<std::string>()));
    }
    constexpr std::size_t kMostQueued = 100'000;
    if (bench_.dialogs.queued() + choices.size() + files.size() > kMostQueued)
        throw invalidParams("at most " + std::to_string(kMostQueued) + " answers may wait for dialogs");
    for (auto& choice : choices)
        bench_.dialogs.answer(std::move(choice));
    for (auto& file : files)
        bench_.dialogs.answerFile(std::move(file));
    return nullptr;
}

Json BenchMethods::dialogs(const Json&) {
    Json all = Json::array();
    if (const std::size_t dropped = bench_.dialogs.takeDropped(); dropped > 0)
        bench_.log(std::to_string(dropped) +
                   " dialogs before those of this answer were dropped, since nobody asked");
    for (const ScriptedDialogs::Shown& shown : bench_.dialogs.takeShown())
        all.push_back(describeShown(shown));
    return all;
}

Json BenchMethods::clipboard(const Json& params) {
    if (const auto text = optionalText(params, "text"))
        bench_.clipboard.setText(*text);
    return bench_.clipboard.text();
}

Json BenchMethods::log(const Json& params) {
    constexpr std::int64_t kMost = std::int64_t{1} << 53;
    const auto since = static_cast<std::uint64_t>(wholeParameter(params, "since", 0, kMost, 0));
    Json all = Json::array();
    for (const Result& result : bench_.results.kept())
        if (result.number > since) {
            Json line = {{"number", result.number},
                         {"good", result.good},
                         {"text", result.text},
                         {"detail", result.detail},
                         {"field", result.field}};
            line.update(dateAndTime(result.time));
            all.push_back(std::move(line));
        }
    return all;
}

Json BenchMethods::now(const Json&) {
    Json time = {{"ms", bench_.events.clock().now().count()}};
    time.update(dateAndTime(bench_.events.clock().wallTime()));
    return time;
}

Json BenchMethods::advanceTime(const Json& params) {
    if (bench_.virtualClock == nullptr)
        throw RpcError(RpcCode::MethodNotFound, "advance needs virtual time (--virtual-time)");
    constexpr std::int64_t kTenYears = std::int64_t{10} * 366 * 86'400'000;
    const Milliseconds duration(wholeParameter(params, "ms", 0, kTenYears));
    advance(bench_.events, *bench_.virtualClock, duration);
    return now(params);
}

Json BenchMethods::simulate(const Json& params) {
    if (bench_.simulated == nullptr)
        throw RpcError(RpcCode::MethodNotFound, "sim needs a simulated board (--simulate)");
    return prepareSimOperation(*bench_.simulated, params)();
}

} // namespace vrk
