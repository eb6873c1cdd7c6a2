#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>

/// What several commands take, judged before anything is sent.
namespace vrk {

/// The levels of the supply list: "2.7, 3.0, ... Max".
std::string levelNames();

/// \throws CommandError (usage) unless the supply list has such a level, or "on" or "off" is meant.
void requireLevel(const std::string& vcc);

/// \throws CommandError (usage) if two of the files are one. Empty paths are left out.
/// \param files option and path
void requireDistinct(std::initializer_list<std::pair<const char*, std::filesystem::path>> files);

} // namespace vrk
