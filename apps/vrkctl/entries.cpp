#include "apps/vrkctl/entries.h"

#include "apps/rehearsal/benchSteps.h"
#include "apps/vrkctl/Options.h"
#include "platform/files/files.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vrk {

namespace {
/// Rows of the panels' supply list.
constexpr std::array kLevels = {"2.7", "3.0", "3.3", "3.5", "4.0", "4.5", "5.0", "Min", "Mid", "Max"};
} // namespace

std::string levelNames() {
    std::string all;
    for (const char* level : kLevels)
        all += (all.empty() ? "" : ", ") + std::string(level);
    return all;
}

void requireLevel(const std::string& vcc) {
    const bool known = std::any_of(kLevels.begin(), kLevels.end(),
                                   [&vcc](const char* level) { return sameLevel(vcc, level); });
    if (!known && vcc != "on" && vcc != "off")
        throw CommandError(ExitCode::Usage,
                           "--vcc: '" + vcc + "' is no level; levels: " + levelNames() + ", off");
}

void requireDistinct(std::initializer_list<std::pair<const char*, std::filesystem::path>> files) {
    std::vector<std::pair<const char*, std::filesystem::path>> before;
    for (const auto& [name, path] : files) {
        if (path.empty())
            continue;
        std::error_code ignored;
        const auto place = std::filesystem::weakly_canonical(path, ignored);
        for (const auto& [other, taken] : before)
            if (place == taken || sameFile(place, taken))
                throw CommandError(ExitCode::Usage, std::string(name) + " and " + other +
                                                        " are one file: one would overwrite the other");
        before.emplace_back(name, place);
    }
}

} // namespace vrk
