#include "apps/rehearsal/benchSteps.h"
#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/PanelBench.h"
#include "apps/vrkctl/ScriptJob.h"
#include "apps/vrkctl/ScriptOutput.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/TerminalScriptHost.h"
#include "apps/vrkctl/entries.h"
#include "platform/files/files.h"
#include "script/ConsoleBus.h"
#include "script/JUnitFile.h"
#include "script/ScriptFile.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <optional>
#include <unistd.h>

namespace vrk {

namespace {

using Text = ScriptFields::Text;

TerminalScriptHost::Pauses pausesOf(const std::string& wanted) {
    using Pauses = TerminalScriptHost::Pauses;
    if (wanted == "continue")
        return Pauses::Continue;
    return wanted == "ask" || isatty(STDIN_FILENO) != 0 ? Pauses::Ask : Pauses::Stop;
}

/// A script on the board that the options name, from its first report to the supplies' end.
class TerminalRun final : private ScriptObserver {
  public:
    explicit TerminalRun(const ScriptJob& job)
        : job_(job),
          bench_(job.options),
          bus_(bench_.bench().services()),
          host_(events(), abort_, pausesOf(job.script.pauses), [this] { saveBeside(); }),
          run_({state_, job_.mode, abort_, fields_, bus_, host_}),
          // Rows that no report tells at the end need not be kept: a script may loop for days.
          results_(state_, fields_, host_, job.options.json || !job.script.junit.empty() ? 0 : 1),
          output_(job.options, job.script, results_.results()),
          progress_("script", 1) {
        fields_.stopOnFail = job_.script.stopOnFail;
        state_.setBase(job_.base);
        loadScript(state_, fields_, job_.lines, job_.mode);
        run_.observe(results_);
        if (!job_.script.junit.empty())
            run_.observe(junit_.emplace(job_.script.junit, results_.results(), tellFileFailed));
        run_.observe(*this);
    }

    ExitCode operator()() {
        results_.begin(job_.name, busName(job_.bus), events().clock().wallTime());
        if (!job_.script.save.empty())
            requireWritable(job_.script.save);
        if (junit_)
            junit_->write();
        warnOfWear();
        if (const auto signalled = interrupt::requested())
            throw CommandError(*signalled, "interrupted; nothing was sent");
        open();
        output_.begin();
        const ScriptEnd end = passes();
        progress_.clear();
        results_.finish(end);
        if (junit_)
            junit_->finish();
        save();
        guarded([this] { output_.end(); });
        return judged(end);
    }

  private:
    /// Cells of the part wear; the run goes on all the same, as nobody may sit here.
    void warnOfWear() {
        const Rehearsal two = job_.rehearsed(std::min(2, job_.script.loop));
        const Rehearsal one = job_.script.loop < 2 ? two : job_.rehearsed(1);
        const long long each = two.totalWrites() - (job_.script.loop < 2 ? 0 : one.totalWrites());
        const long long writes = one.totalWrites() + each * (job_.script.loop - 1);
        if (one.whole && two.whole && writes > Rehearsal::kManyWrites)
            tell("rehearsed, this run makes " + std::to_string(writes) +
                 " non-volatile writes; the part's cells wear with each");
    }

    void open() {
        bench_.open(job_.bus == ScriptedBus::SPI ? PartBus::SPI : PartBus::I2C);
        choosePart(*bench_.bench().devicePanel(), job_.part,
                   [this](const auto& gesture, const auto& what) { bench_.done(gesture(), what); });
        if (job_.script.vcc != "off")
            bench_.switchVccOn(job_.script.vcc.value_or("on"));
    }

    ScriptEnd passes() {
        ScriptRun::Range range = run_.mainPart();
        range = {job_.script.from.value_or(range.first), job_.script.to.value_or(range.last)};
        progress_.restart((range.last - range.first + 1) * job_.script.loop);
        ScriptEnd end = ScriptEnd::Interrupted;
        const Outcome outcome =
            events().deliver([this, &end, &range] { end = run_.runPasses(job_.script.loop, range); });
        bench_.tellMessages();
        if (events().ended())
            end = ScriptEnd::LinkLost;
        else if (outcome.kind == Outcome::Kind::Faulted)
            end = ScriptEnd::Stopped;
        return interrupt::requested() || failure_ ? ScriptEnd::Interrupted : end;
    }

    ExitCode judged(ScriptEnd end) {
        ExitCode code = ExitCode::Done;
        if (std::string(results_.results().verdict()) != "pass" || end != ScriptEnd::Completed)
            code = ExitCode::CheckFailed;
        if (end == ScriptEnd::LinkLost) {
            tell(bench_.linkLost("running the script").what());
            code = heavier(code, ExitCode::LinkLost);
        }
        if (end == ScriptEnd::Interrupted && interrupt::requested())
            tell("interrupted; the supplies go off");
        if (failure_) {
            try {
                std::rethrow_exception(failure_);
            } catch (const CommandError& error) {
                throw CommandError(heavier(code, error.code()), error.what());
            }
        }
        bench_.requireReplayed();
        return code;
    }

    /// A row that saves: beside the script, one copy behind the other.
    void saveBeside() {
        try {
            saveScript(state_, savedScriptPath(job_.script.file.string()), true, events().clock().wallTime(),
                       fields_.text(Text::LoopCount));
        } catch (const Fault& fault) {
            tellFileFailed(fault.what());
        }
    }

    void save() {
        if (job_.script.save.empty())
            return;
        const int unread = unreadRows(state_);
        const std::string never = "--save: rows that were never read: " + std::to_string(unread) + "; ";
        if (unread > 0 && sameFile(job_.script.save, job_.script.file)) {
            tellFileFailed(never + "what they expect would be lost, so the script stays as it is");
            return;
        }
        if (unread > 0)
            tell(never + "\"--\" stands there");
        try {
            saveScript(state_, job_.script.save, false, events().clock().wallTime(),
                       fields_.text(Text::LoopCount));
        } catch (const Fault& fault) {
            tellFileFailed(fault.what());
        }
    }

    void rowEnded(int /*row*/) override {
        bench_.tellMessages();
        guarded([this] {
            progress_.clear();
            if (const RowResult* row = results_.lastEnded())
                output_.row(*row);
        });
        progress_.done(++rows_);
    }
    void rowInError(int row, const std::string& why) override {
        progress_.clear();
        tell("line " + std::to_string(row) + ": " + why);
    }
    void passEnded(ScriptEnd /*end*/) override {
        guarded([this] {
            progress_.clear();
            output_.pass(results_.results().passes.back());
        });
    }

    /// Output that cannot be written ends the run, but not from inside of it: its rows must be put right.
    void guarded(const std::function<void()>& write) {
        if (failure_)
            return;
        try {
            write();
        } catch (const CommandError&) {
            failure_ = std::current_exception();
            host_.stop();
        }
    }

    EventLoop& events() { return bench_.bench().events(); }

    const ScriptJob& job_;
    PanelBench bench_;
    ScriptState state_;
    PlainFields fields_;
    bool abort_ = false;
    ConsoleBus bus_;
    TerminalScriptHost host_;
    ScriptRun run_;
    ResultCollector results_;
    std::optional<JUnitFile> junit_;
    ScriptOutput output_;
    ProgressBarLine progress_;
    std::exception_ptr failure_;
    int rows_ = 0;
};

} // namespace

ExitCode runScript(const Options& options, const ScriptOptions& script) {
    const ScriptJob job(options, script);
    return TerminalRun(job)();
}

} // namespace vrk
