#pragma once

#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/PanelBench.h"
#include "panels/discrete/RunInReport.h"
#include "platform/files/JUnit.h"
#include "platform/system/LogindInhibitor.h"

#include <chrono>
#include <optional>
#include <string>

namespace vrk {

/// A run-in test from the terminal: the up/down panel with VCC on, and the run-in panel on top of it. The
/// supplies go off when it ends, however that is.
class RunInJob final : private RunInObserver {
  public:
    /// Checks entries and files and sends nothing. \throws CommandError, Fault
    RunInJob(const Options& options, const RunInOptions& runIn, bool resume);

    ExitCode run();

  private:
    // RunInObserver
    void stageBegan(int stage) override;
    void rangeFound(const RunInRange& range) override;
    void stageDone(const RunInStage& stage) override;
    void logPoint(int count, int fails) override;
    void event(RunInEvent what, const std::string& text) override;
    bool goOn(const std::string& text) override;

    void checkEntries() const;
    void checkFiles();
    void open();
    void fillFields();
    RunInOrder order();
    ExitCode concluded(const Outcome& outcome, std::optional<RunInEnd> end);
    void showEnd(const std::string& how) const;
    void saveLog();
    /// Writes data; a reader that has gone ends the run at the end of the round.
    void show(const std::string& line);
    void writeJUnit(bool partly);
    UPDN_Runin& panel() { return *bench_.bench().UPDN_Runin; }
    void abort() { bench_.bench().services().run.ScriptAbort = true; }

    Options options_;
    RunInOptions runIn_;
    bool resume_;
    std::optional<RunInSuite> suite_;
    std::optional<ReportFile> junit_;
    RunInStage last_;
    RunInCount counted_;
    std::optional<CommandError> outputGone_;
    std::chrono::steady_clock::time_point junitDue_{};
    LogindInhibitor awake_{"vrkctl"};
    PanelBench bench_; ///< behind what is checked first
};

} // namespace vrk
