#pragma once

#include "panels/discrete/RunInTest.h"
#include "platform/files/Journal.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// What a journal says of its run before the first step.
struct RunInHeader {
    std::string run;     ///< differs from that of every other run
    std::string started; ///< "2020-01-01 12:00:00"
    std::string program; ///< name and version
    std::string part;
    std::string vcc;         ///< level of the supply, as its list names it; empty: not switched by the run
    std::string calibration; ///< heading of the calibration in use
    RunInSettings settings{};
};

/// An ID for a new run.
std::string newRunInId();

/// How far a journal tells of its run.
struct RunInHistory {
    RunInHeader header;
    RunInProgress progress;
    int resumed = 0;                    ///< how often the run was gone on with
    std::optional<std::string> ended{}; ///< none: it was not ended, or was gone on with since
    JournalExtent extent;

    /// Ended for good: nobody goes on with it.
    bool finished() const { return ended == "completed" || ended == "terminated"; }
};

/// Hears a journal while it is read.
struct RunInListener {
    std::function<void(const RunInHeader& header)> header{};
    std::function<void(const RunInRange& range)> range{};
    std::function<void(const RunInStage& stage)> stage{};
    /// \param what as the journal names it
    std::function<void(const std::string& what, const std::string& text)> event{};
    std::function<void(const std::string& how)> ended{};
};

/// Reads a journal up to its end or its damage, whether somebody writes to it or not.
/// \throws Fault for a file that is no journal of a run, or one of another version.
RunInHistory readRunIn(const std::filesystem::path& path, const RunInListener& listener = {});

/// Why nobody can go on with this journal; empty if somebody can.
std::string whyNotResumable(const std::filesystem::path& path, const RunInHistory& history);

/// Keeps a journal of a run: a line for each stage as it is done, on the disk once a round. A journal that
/// cannot be written any more ends; the run goes on.
class RunInJournal final : public RunInObserver {
  public:
    using Trouble = std::function<void(const std::string& text)>;

    /// A new one; an existing file is never touched. \param trouble hears once that the journal ends here.
    /// \throws Fault
    RunInJournal(const std::filesystem::path& path, const RunInHeader& header, Trouble trouble);
    /// Goes on with one. \throws Fault
    RunInJournal(const std::filesystem::path& path, const RunInHistory& history, Trouble trouble);

    const std::filesystem::path& path() const { return file_.path(); }
    /// For an end that the run itself does not live to see.
    void end(RunInEnd how);

    void rangeFound(const RunInRange& range) override;
    void stageDone(const RunInStage& stage) override;
    void roundDone(int count, int fails) override;
    void event(RunInEvent what, const std::string& text) override;
    void ended(RunInEnd how, int /*count*/, int /*fails*/) override { end(how); }

  private:
    void add(const std::string& record);
    void flush(bool wait);
    void failed(const std::string& why);

    JournalFile file_;
    Trouble trouble_;
    bool whole_ = true;
};

/// The stage as a line of the journal has it.
std::string stageRecord(const RunInStage& stage);

/// The journals of a folder whose runs were not brought to their end, newest first. Looks at their first and
/// last records alone: whether one can be gone on with is another question.
std::vector<std::filesystem::path> unfinishedRunIns(const std::filesystem::path& folder);

} // namespace vrk
