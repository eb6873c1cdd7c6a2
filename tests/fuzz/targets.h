#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vrk::fuzz {

/// A reader of files that are not ours, under any bytes.
struct Target {
    std::string name;
    /// Gives in short how it went: an input that goes another way is worth changing further.
    /// \throws std::logic_error if what must hold does not; a Fault is a message to the user and fine.
    std::function<std::string(std::string_view bytes)> run;
    std::vector<std::string> corpus; ///< whole files, good ones
    std::vector<std::string> words;  ///< that the reader looks for
};

/// \param examples the folder of example files. \param scratch a folder of one's own
std::vector<Target> makeTargets(const std::filesystem::path& examples, const std::filesystem::path& scratch);

} // namespace vrk::fuzz
