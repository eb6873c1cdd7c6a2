#pragma once

#include "platform/files/OutputFile.h"
#include "platform/hid/WireRecorder.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vrk::hid {

/// Writes every report that passes a recorder to a file.
///
/// The file is text, a line a report, for people with grep as much as for the replay:
///
///     vrkbench wire log 1
///     # started 2024-05-31 09:15:02.120
///     # ms, direction, board, 64 bytes
///     board 0 /dev/hidraw3
///           12 out 0 01 06 A0 00 ... (64 bytes, two hexadecimal digits each)
///           14 in  0 01 00 A0 00 ...
///         6020 out 0 01 06 A0 00 ... failed
///
/// The first line names the format and its version. A line that begins with '#' and an empty line mean
/// nothing. "board" stands before the first report of a board, and again where its path has changed, as it
/// does with each plug; all behind the number is its path. Times
/// count in milliseconds from the start of the program; "failed" marks a report that the board did not take.
class WireLog {
  public:
    /// Makes the file anew, so that nothing is sent before it is known to be writable.
    /// \param onFailure called once when a later write fails (a full disk); the log ends there.
    /// \throws Fault with the system's description if the file cannot be written.
    WireLog(WireRecorder& recorder, const Clock& clock, const std::filesystem::path& path,
            std::function<void(const std::string&)> onFailure);

    /// The one who is told of failures hears of one at the end too.
    ~WireLog();

    WireLog(const WireLog&) = delete;
    WireLog& operator=(const WireLog&) = delete;

    bool failed() const { return file_ == nullptr; }

  private:
    void write(const WireEvent& event);
    void end(int error);

    std::string path_;
    std::unique_ptr<OutputFile> file_;
    std::function<void(const std::string&)> onFailure_;
    std::map<int, std::string> named_; ///< paths of the boards as the log has named them last
    Subscription subscription_;
};

/// \throws Fault if a recording is to be played back from the very file that the log would overwrite.
/// \param replay empty: none is. \param log empty: none is written.
void requireOtherFile(const std::filesystem::path& replay, const std::filesystem::path& log);

/// The reports of a wire log in their order. A last line that a crash cut short is left out.
/// \throws Fault that names the line which is no wire log.
std::vector<WireEvent> parseWireLog(std::string_view text);

/// "01 06 A0 ...", upper case.
std::string reportText(const Report& report);

} // namespace vrk::hid
