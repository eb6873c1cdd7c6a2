#include "platform/system/DesktopEntry.h"

#include <algorithm>
#include <map>
#include <utility>

namespace vrk {

namespace {

std::vector<std::string> split(std::string_view text, char at) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(at), text.size());
        if (end > 0)
            parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t from = text.find_first_not_of(kBlanks);
    if (from == std::string_view::npos)
        return {};
    return text.substr(from, text.find_last_not_of(kBlanks) - from + 1);
}

/// Keys of the main group; those of a language, as "Name[de]", stay under their own names.
std::map<std::string, std::string> mainGroup(std::string_view text) {
    std::map<std::string, std::string> values;
    bool inside = false;
    for (const std::string& whole : split(text, '\n')) {
        const std::string_view line = trimmed(whole);
        if (line.empty() || line.front() == '#')
            continue;
        if (line.front() == '[') {
            inside = line == "[Desktop Entry]";
            continue;
        }
        const std::size_t equals = line.find('=');
        if (inside && equals != std::string_view::npos)
            values.emplace(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
    }
    return values;
}

/// Undoes the escapes that every value may have.
std::string plainValue(std::string_view value) {
    static constexpr std::pair<char, char> kEscapes[] = {{'s', ' '}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}};
    std::string plain;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] != '\\' || at + 1 == value.size()) {
            plain += value[at];
            continue;
        }
        const char next = value[++at];
        const auto* const escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                                [next](const auto& pair) { return pair.first == next; });
        plain += escape == std::end(kEscapes) ? next : escape->second;
    }
    return plain;
}

/// Program and arguments: blanks part them but in quotes. "%f" and its like stand for files, which nobody
/// hands over here; "%%" is a per cent sign.
std::vector<std::string> commandOf(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    bool begun = false;
    bool quoted = false;
    const auto end = [&] {
        if (begun)
            words.push_back(std::exchange(word, {}));
        begun = false;
    };
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char letter = line[at];
        const char next = at + 1 < line.size() ? line[at + 1] : '\0';
        if (letter == '"') {
            quoted = !quoted;
            begun = true;
        } else if (!quoted && letter == ' ') {
            end();
        } else if (letter == '%' || (quoted && letter == '\\')) {
            ++at;
            if (next == '\0' || (letter == '%' && next != '%'))
                continue;
            word += next;
            begun = true;
        } else {
            word += letter;
            begun = true;
        }
    }
    end();
    return words;
}

} // namespace

bool DesktopEntry::isFor(std::string_view desktops) const {
    const std::vector<std::string> now = split(desktops, ':');
    const auto names = [&now](const std::vector<std::string>& list) {
        return std::any_of(now.begin(), now.end(), [&list](const std::string& desktop) {
            return std::find(list.begin(), list.end(), desktop) != list.end();
        });
    };
    return (onlyIn.empty() || names(onlyIn)) && !names(notIn);
}

std::optional<DesktopEntry> readDesktopEntry(std::string_view text) {
    const std::map<std::string, std::string> values = mainGroup(text);
    const auto value = [&values](const char* key) {
        const auto found = values.find(key);
        return found == values.end() ? std::string() : plainValue(found->second);
    };
    DesktopEntry entry;
    entry.name = value("Name");
    entry.tryExec = value("TryExec");
    entry.command = commandOf(value("Exec"));
    entry.onlyIn = split(value("OnlyShowIn"), ';');
    entry.notIn = split(value("NotShowIn"), ';');
    if (value("Type") != "Application" || value("Hidden") == "true" || value("Terminal") == "true" ||
        entry.name.empty() || entry.command.empty())
        return std::nullopt;
    return entry;
}

} // namespace vrk
