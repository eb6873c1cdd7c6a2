#pragma once

#include <filesystem>
#include <string_view>

namespace vrk {

/// Writes all of the bytes. A pipe whose reader takes nothing for five seconds counts as broken: whoever
/// writes here drives a bench meanwhile. \return 0, or the system's error
int writeAll(int descriptor, std::string_view bytes);

/// A file that takes bytes at its end as they come. A terminal or a pipe is as good as a file on the disk.
class OutputFile {
  public:
    enum class Mode { Anew, Append };

    /// Makes the file if there is none. Never waits: a pipe that nobody reads is refused.
    /// \throws Fault with the system's description
    OutputFile(const std::filesystem::path& path, Mode mode);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Hands the bytes to the system: a crash of the program then loses none of them.
    /// \return 0, or the system's error
    int write(std::string_view bytes) const { return writeAll(file_, bytes); }
    /// Some network disks tell only now that there was no room. \return 0, or the system's error
    int close();

  private:
    int file_;
};

} // namespace vrk
