#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vrk {

/// What the desktop's file about a program (`*.desktop`) says of it.
struct DesktopEntry {
    std::string name;                 ///< untranslated
    std::string tryExec;              ///< program that must be there; empty: nothing is asked
    std::vector<std::string> command; ///< program and arguments; places for files are left out
    std::vector<std::string> onlyIn;  ///< desktops that show it; empty: all
    std::vector<std::string> notIn;   ///< desktops that do not

    /// \param desktops names of the desktop that runs, as in `XDG_CURRENT_DESKTOP`: "ubuntu:GNOME".
    bool isFor(std::string_view desktops) const;
};

/// \return nothing for a text that is no such file, or tells of no program with a window of its own: a link,
/// an entry that was deleted, a program for the terminal.
std::optional<DesktopEntry> readDesktopEntry(std::string_view text);

} // namespace vrk
