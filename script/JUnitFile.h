#pragma once

#include "platform/files/JUnit.h"
#include "script/ScriptReports.h"
#include "script/ScriptResults.h"

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

namespace vrk {

/// Keeps a JUnit file beside a run: whole at its start, at the end of each pass and at its end. Observe with
/// it behind the collector.
class JUnitFile final : public ScriptObserver {
  public:
    /// \param trouble hears once that the file cannot be written; the run goes on
    JUnitFile(std::filesystem::path path, const ScriptResults& results,
              std::function<void(const std::string&)> trouble)
        : file_(std::move(path), std::move(trouble)), results_(results) {}

    /// Writes what there is. For the start of a run, where a file that cannot be written ends the command.
    /// \throws Fault
    void write() { file_.write(junitReport(results_)); }
    /// True if the file is not what it should be.
    bool failed() const { return file_.failed(); }
    /// The run is over: the collector has been told how.
    void finish() { tryWrite(); }

    void passBegan(int, int) override {
        // Later ones find the file whole, and in a long loop it is long.
        if (results_.passes.size() <= 1)
            tryWrite();
    }
    void passEnded(ScriptEnd) override { tryWrite(); }

  private:
    void tryWrite() { file_.tryWrite(junitReport(results_)); }

    ReportFile file_;
    const ScriptResults& results_;
};

} // namespace vrk
