#include "platform/system/DesktopInformationTool.h"

#include "platform/runtime/Fault.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vrk {

namespace fs = std::filesystem;

namespace {

/// The tools by the names of their files, those of a desktop's own ahead of those that run on all.
constexpr std::array kTools = {"org.kde.kinfocenter.desktop",
                               "gnome-about-panel.desktop",
                               "gnome-info-overview-panel.desktop",
                               "cinnamon-settings-info.desktop",
                               "mate-about.desktop",
                               "xfce4-about.desktop",
                               "lxqt-about.desktop",
                               "hardinfo2.desktop",
                               "hardinfo.desktop",
                               "lshw-gtk.desktop",
                               "gtk-lshw.desktop"};

std::string variable(const char* name, const std::string& otherwise) {
    const char* const value = std::getenv(name);
    return value == nullptr || *value == '\0' ? otherwise : std::string(value);
}

/// The parts of a list with colons; relative ones count for nothing.
std::vector<fs::path> absolutePaths(const std::string& list) {
    std::vector<fs::path> paths;
    std::size_t from = 0;
    while (from <= list.size()) {
        const std::size_t to = std::min(list.find(':', from), list.size());
        const fs::path path = list.substr(from, to - from);
        if (path.is_absolute())
            paths.push_back(path);
        from = to + 1;
    }
    return paths;
}

std::vector<fs::path> dataFolders() {
    return absolutePaths(variable("XDG_DATA_HOME", variable("HOME", "/nonexistent") + "/.local/share") + ":" +
                         variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share"));
}

bool isProgram(const std::string& name) {
    if (name.find('/') != std::string::npos)
        return access(name.c_str(), X_OK) == 0;
    for (const fs::path& folder : absolutePaths(variable("PATH", "/usr/local/bin:/usr/bin:/bin")))
        if (access((folder / name).c_str(), X_OK) == 0)
            return true;
    return false;
}

std::optional<DesktopEntry> readEntry(const fs::path& file) {
    constexpr std::size_t kMost = 1 << 20; // such files have some kilobytes, most of them translations
    std::error_code failed;
    if (!fs::is_regular_file(file, failed) || fs::file_size(file, failed) > kMost)
        return std::nullopt;
    std::ifstream stream(file, std::ios::binary);
    return readDesktopEntry(std::string(std::istreambuf_iterator<char>(stream), {}));
}

/// Starts a program in a session of its own, so that it neither ends with this one nor hears its Ctrl-C.
void start(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t files;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    posix_spawn_file_actions_init(&files);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&files, descriptor, "/dev/null", O_RDWR, 0);
    pid_t process = -1;
    const int failed =
        posix_spawnp(&process, arguments.front(), &files, &attributes, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    if (failed != 0)
        throw Fault(command.front() + ": " + std::generic_category().message(failed));
    // Somebody must hear of its end, or it stays in the system's list of processes until this program's.
    std::thread([process] {
        int status = 0;
        waitpid(process, &status, 0);
    }).detach();
}

} // namespace

std::optional<DesktopEntry> DesktopInformationTool::find() {
    const std::string desktops = variable("XDG_CURRENT_DESKTOP", "");
    for (const char* const tool : kTools)
        for (const fs::path& folder : dataFolders()) {
            const fs::path file = folder / "applications" / tool;
            std::error_code failed;
            if (!fs::exists(file, failed))
                continue;
            const auto entry = readEntry(file);
            if (entry && entry->isFor(desktops) && isProgram(entry->command.front()) &&
                (entry->tryExec.empty() || isProgram(entry->tryExec)))
                return entry;
            break; // hidden here, whatever stands in later folders
        }
    return std::nullopt;
}

std::optional<std::string> DesktopInformationTool::name() {
    const auto entry = find();
    return entry ? std::optional(entry->name) : std::nullopt;
}

void DesktopInformationTool::open() {
    // Looked for once more: it may have been installed or removed since.
    const auto entry = find();
    if (!entry)
        throw Fault("There is no such tool on this system.");
    start(entry->command);
}

} // namespace vrk
