#pragma once

#include <filesystem>
#include <string>

namespace vrk {

/// True if the path names an existing file (not a folder).
bool fileExists(const std::filesystem::path& path);

/// The whole file. \throws Fault with the system's description.
std::string readFile(const std::filesystem::path& path);

/// Replaces the file whole or not at all: written beside it, flushed to the disk, then renamed over it. The
/// file's permissions stay. \throws Fault; the old file is then untouched.
void replaceFile(const std::filesystem::path& path, const std::string& content);

/// Adds to the end of the file, which is made if it does not exist; what was there stays even if the addition
/// fails half-way. \throws Fault with the system's description.
void appendFile(const std::filesystem::path& path, const std::string& content);

/// Where the programs keep what outlives a run: the folder `wanted`; if that is empty, beside the executable,
/// or with the user's data where that cannot be written. \throws Fault if there is no folder `wanted`.
std::filesystem::path programFolder(const std::filesystem::path& wanted);

} // namespace vrk
