#pragma once

#include "script/ScriptResults.h"

#include <filesystem>
#include <functional>
#include <string>

namespace vrk {

/// Keeps a JUnit file beside a run: whole at its start, at the end of each pass and at its end, so that a
/// program that is killed leaves a report that says how far it came. Observe with it behind the collector.
class JUnitFile final : public ScriptObserver {
  public:
    /// \param trouble hears once that the file cannot be written; the run goes on
    JUnitFile(std::filesystem::path path, const ScriptResults& results,
              std::function<void(const std::string&)> trouble)
        : path_(std::move(path)), results_(results), trouble_(std::move(trouble)) {}

    /// Writes what there is. For the start of a run, where a file that cannot be written ends the command.
    /// \throws Fault
    void write();
    /// True if the file is not what it should be.
    bool failed() const { return failed_; }
    /// The run is over: the collector has been told how.
    void finish() { tryWrite(); }

    void passBegan(int, int) override { tryWrite(); }
    void passEnded(ScriptEnd) override { tryWrite(); }

  private:
    void tryWrite();

    std::filesystem::path path_;
    const ScriptResults& results_;
    std::function<void(const std::string&)> trouble_;
    bool failed_ = false;
};

} // namespace vrk
