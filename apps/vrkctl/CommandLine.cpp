#include "apps/vrkctl/CommandLine.h"

#include "apps/vrkctl/Options.h"
#include "platform/runtime/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <set>
#include <utility>

namespace vrk {

namespace {
/// Letters to add, drop, change or exchange with their neighbour to make one word the other.
std::size_t distance(const std::string& one, const std::string& other) {
    std::vector<std::size_t> before, last, now(other.size() + 1);
    for (std::size_t column = 0; column < now.size(); ++column)
        now[column] = column;
    for (std::size_t row = 1; row <= one.size(); ++row) {
        before = std::exchange(last, now);
        now[0] = row;
        for (std::size_t column = 1; column < now.size(); ++column) {
            const bool same = one[row - 1] == other[column - 1];
            now[column] =
                std::min({last[column] + 1, now[column - 1] + 1, last[column - 1] + (same ? 0 : 1)});
            if (row > 1 && column > 1 && one[row - 1] == other[column - 2] &&
                one[row - 2] == other[column - 1])
                now[column] = std::min(now[column], before[column - 2] + 1);
        }
    }
    return now.back();
}

using Apps = std::vector<const CLI::App*>;

Apps subcommandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

std::vector<std::string> namesOf(const Apps& apps) {
    std::vector<std::string> names;
    for (const CLI::App* one : apps)
        names.push_back(one->get_name());
    return names;
}

void addCommandWords(const CLI::App& app, std::set<std::string>& words) {
    for (const CLI::App* inner : subcommandsOf(app)) {
        words.insert(inner->get_name());
        addCommandWords(*inner, words);
    }
}

std::string pathOf(const CLI::App& app) {
    return (app.get_parent() == nullptr ? "" : pathOf(*app.get_parent()) + " ") + app.get_name();
}

std::vector<std::string> optionsOf(const CLI::App* app) {
    std::vector<std::string> names;
    for (; app != nullptr; app = app->get_parent())
        for (const CLI::Option* option : app->get_options())
            for (const std::string& name : option->get_lnames())
                names.push_back("--" + name);
    return names;
}

std::string unknownCommand(const std::string& word, const CLI::App& app) {
    return "there is no command '" + word + "'" + didYouMean(word, namesOf(subcommandsOf(app))) +
           " (\"vrkctl help\" lists the commands)";
}

std::string listOfCommands(const CLI::App& app) {
    const Apps commands = subcommandsOf(app);
    const bool top = app.get_parent() == nullptr;
    std::string text = top ? "name a command:\n" : pathOf(app) + " needs a command:\n";
    std::size_t width = 0;
    for (const std::string& name : namesOf(commands))
        width = std::max(width, name.size());
    for (const CLI::App* command : commands)
        text += "  " + command->get_name() + std::string(width + 2 - command->get_name().size(), ' ') +
                command->get_description() + "\n";
    return text + "\"vrkctl help COMMAND\" tells more. Without a board, try: vrkctl wiper sweep 0 --simulate";
}
} // namespace

std::string didYouMean(const std::string& word, const std::vector<std::string>& names) {
    const std::string wanted = upperCase(word);
    const std::string* best = nullptr;
    std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
    for (const std::string& name : names)
        if (const std::size_t apart = distance(wanted, upperCase(name)); apart < least) {
            least = apart;
            best = &name;
        }
    return best == nullptr ? "" : "; did you mean '" + *best + "'?";
}

const std::string* nameInAnyCase(const std::string& word, const std::vector<std::string>& names) {
    const auto found = std::find_if(names.begin(), names.end(), [&word](const std::string& name) {
        return upperCase(name) == upperCase(word);
    });
    return found == names.end() ? nullptr : &*found;
}

std::vector<std::string> readableArguments(const CLI::App& app, int argc, char** argv) {
    std::vector<std::string> given(argv + std::min(argc, 1), argv + argc);
    std::set<std::string> commands;
    addCommandWords(app, commands);
    std::vector<std::string> arguments;
    for (const std::string& word : given) {
        const bool behindSimulate = !arguments.empty() && arguments.back() == "--simulate";
        const bool maybePart = !word.empty() && std::isalpha(static_cast<unsigned char>(word.front())) != 0 &&
                               !commands.contains(word);
        if (behindSimulate && maybePart)
            arguments.back() += "=" + word;
        else
            arguments.push_back(word);
    }
    if (arguments.empty() || arguments.front() != "help")
        return arguments;
    arguments.erase(arguments.begin());
    const CLI::App* asked = &app;
    for (const std::string& word : arguments) {
        const Apps inner = subcommandsOf(*asked);
        const auto found = std::find_if(inner.begin(), inner.end(),
                                        [&word](const CLI::App* one) { return one->get_name() == word; });
        if (found == inner.end() && !word.starts_with("-"))
            throw CommandError(ExitCode::Usage, unknownCommand(word, *asked));
        if (found != inner.end())
            asked = *found;
    }
    arguments.push_back("--help");
    return arguments;
}

std::string usageError(const CLI::App& app, const CLI::ParseError& error) {
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty())
        command = command->get_subcommands().back();
    const bool needsCommand = !subcommandsOf(*command).empty();
    const std::string help = " (\"" + pathOf(*command) + " --help\" tells more)";
    const auto unknown = app.remaining(true);
    if (!unknown.empty() && unknown.front().starts_with("-")) {
        const std::string name = unknown.front().substr(0, unknown.front().find('='));
        return "there is no option " + name + didYouMean(name, optionsOf(command)) + help;
    }
    if (!unknown.empty() && needsCommand)
        return unknownCommand(unknown.front(), *command);
    if (!unknown.empty())
        return "'" + unknown.front() + "' is one word too many" + help;
    return needsCommand ? listOfCommands(*command) : error.what() + help;
}

} // namespace vrk
