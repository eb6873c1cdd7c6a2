#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace vrk {

/// True if the path names an existing file (not a folder).
bool fileExists(const std::filesystem::path& path);

/// What a file that somebody chose may have at most: register files, tables, scripts and recordings are far
/// smaller.
inline constexpr std::size_t kMostFileBytes = 16U << 20U;

/// The whole file, without a UTF-8 byte order mark. Never waits: pipes and devices are refused.
/// \throws Fault with the system's description, or for a file that is none or above 16 MiB.
std::string readFile(const std::filesystem::path& path);

/// Replaces the file whole or not at all: written beside it, flushed to the disk, then renamed over it. The
/// file's permissions stay. What a save of the same file that was killed has left beside it goes.
/// \throws Fault; the old file is then untouched.
void replaceFile(const std::filesystem::path& path, const std::string& content);

/// For the start of a work that ends with a file: replaceFile() could put one there now. Leaves no trace.
/// \throws Fault with the system's description.
void requireWritable(const std::filesystem::path& path);

/// Adds to the end of the file, which is made if it does not exist. An addition that fails half-way is taken
/// back. \throws Fault with the system's description.
void appendFile(const std::filesystem::path& path, const std::string& content);

/// True if both paths lead to one file, whichever way they are written.
bool sameFile(const std::filesystem::path& one, const std::filesystem::path& other);

/// For the start of a program: a file that outgrows the limit of its user then fails as on a full disk, with
/// a message, where the system would end the program.
void failAtFileSizeLimit();

/// Where the user's own data are kept: $XDG_DATA_HOME/vrkbench. Not made by this.
std::filesystem::path userDataFolder();

/// Where the programs keep what outlives a run: the folder `wanted`; if that is empty, beside the executable,
/// or with the user's data where that cannot be written. \throws Fault if there is no folder `wanted`.
std::filesystem::path programFolder(const std::filesystem::path& wanted);

} // namespace vrk
