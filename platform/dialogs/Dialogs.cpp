#include "platform/dialogs/Dialogs.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vrk {

namespace {
constexpr std::array<std::pair<Choice, const char*>, 5> kChoices = {{{Choice::Ok, "OK"},
                                                                     {Choice::Cancel, "Cancel"},
                                                                     {Choice::Retry, "Retry"},
                                                                     {Choice::Yes, "Yes"},
                                                                     {Choice::No, "No"}}};

Choice safeChoice(const std::vector<Choice>& buttons) {
    for (const Choice wanted : {Choice::Cancel, Choice::No})
        if (std::find(buttons.begin(), buttons.end(), wanted) != buttons.end())
            return wanted;
    return buttons.empty() ? Choice::Ok : buttons.front();
}
} // namespace

std::string choiceName(Choice choice) {
    for (const auto& [value, name] : kChoices)
        if (value == choice)
            return name;
    return {};
}

std::optional<Choice> choiceByName(const std::string& name) {
    for (const auto& [value, text] : kChoices)
        if (name == text)
            return value;
    return std::nullopt;
}

Choice ScriptedDialogs::show(const MessageBox& box) {
    Choice choice = safeChoice(box.buttons);
    const bool asks = box.buttons.size() > 1;
    if (asks && !answers_.empty()) {
        const Answer answer = std::move(answers_.front());
        answers_.pop_front();
        if (answer.before)
            answer.before();
        // A queued answer that the box has no button for cannot be pressed.
        if (std::find(box.buttons.begin(), box.buttons.end(), answer.choice) != box.buttons.end())
            choice = answer.choice;
    }
    remember({Shown::Kind::Message, box, choiceName(choice), {}});
    return choice;
}

std::optional<std::string> ScriptedDialogs::chooseFile(const FileRequest& request) {
    std::optional<std::string> path;
    if (!files_.empty()) {
        path = std::move(files_.front());
        files_.pop_front();
    }
    remember({Shown::Kind::File, {}, path.value_or(""), request});
    return path;
}

void ScriptedDialogs::remember(Shown shown) {
    shown_.push_back(std::move(shown));
    if (shown_.size() <= kKept)
        return;
    shown_.pop_front();
    ++dropped_;
}

std::deque<ScriptedDialogs::Shown> ScriptedDialogs::takeShown() {
    return std::exchange(shown_, {});
}

std::size_t ScriptedDialogs::takeDropped() {
    return std::exchange(dropped_, 0);
}

} // namespace vrk
