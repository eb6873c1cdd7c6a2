#include "apps/vrkctl/RunInJob.h"

#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Terminal.h"
#include "apps/vrkctl/entries.h"
#include "platform/controls/recording.h"
#include "platform/files/JsonObject.h"
#include "platform/files/files.h"
#include "platform/files/markup.h"
#include "platform/runtime/text.h"
#include "sim/PartCatalogue.h"

#include <algorithm>
#include <cstddef>
#include <system_error>
#include <utility>

namespace vrk {

namespace {
std::string member(const char* name, const std::string& value) {
    return std::string("\"") + name + "\":" + value;
}

Options withPart(Options options) {
    if (!options.simulate.empty())
        options.simulate = simulatedPart(options.simulate);
    return options;
}

/// Makes the file and takes it away again: a disk that is full already, too, is found before VCC is on.
/// \throws Fault
void probeJournal(const std::filesystem::path& path) {
    constexpr std::size_t kRoom = 4096; // for a header
    JournalFile probe = JournalFile::create(path);
    const OnScopeExit gone([&path] {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    });
    probe.add(std::string(kRoom, ' '));
    probe.flush(true);
}
} // namespace

RunInJob::RunInJob(const Options& options, const RunInOptions& runIn, bool resume)
    : options_(withPart(options)),
      runIn_(runIn),
      resume_(resume),
      bench_((checkEntries(), checkFiles(), options_)) {
    if (!runIn_.junit.empty())
        junit_.emplace(runIn_.junit, tellFileFailed);
}

void RunInJob::checkEntries() const {
    if (!runIn_.vcc.empty())
        requireLevel(runIn_.vcc);
    if (runIn_.vcc == "off")
        throw usage("--vcc: a run-in test needs VCC");
    if (!options_.simulate.empty() &&
        sim::partFacts(options_.simulate).model != sim::PartFacts::Model::UpDown)
        throw usage("--simulate: " + options_.simulate +
                    " is no up/down part; the run-in test takes --simulate=UPDN100");
    requireDistinct({{"--log", runIn_.log},
                     {"--junit", runIn_.junit},
                     {resume_ ? "JOURNAL" : "--journal", runIn_.journal},
                     {"--wire-log", options_.wireLog},
                     {"--sim-memory", options_.simMemory}});
}

void RunInJob::checkFiles() {
    // Nothing is sent before it is clear that all files of the run can be had.
    if (resume_) {
        const RunInHistory history = readRunIn(runIn_.journal);
        if (const std::string why = whyNotResumable(runIn_.journal, history); !why.empty())
            throw Fault(why);
        (void)JournalFile::open(runIn_.journal, history.extent.good);
        if (history.extent.torn)
            tell("the last line of " + runIn_.journal.string() + " was torn and is dropped");
        (void)recountRunIn(
            runIn_.journal, std::nullopt, [this](const RunInStage& stage) { counted_.stage(stage); },
            runIn_.junit.empty() ? nullptr : &suite_);
        if (history.progress.range)
            rangeFound(*history.progress.range);
        if (history.progress.last)
            last_ = *history.progress.last;
        if (!options_.simulate.empty() && history.header.part != options_.simulate)
            tell("the run was begun on " +
                 (history.header.part.empty() ? std::string("a board") : history.header.part) + "; this is " +
                 options_.simulate);
    } else if (!runIn_.journal.empty()) {
        probeJournal(runIn_.journal);
    }
    if (!runIn_.log.empty())
        requireWritable(runIn_.log);
    if (!runIn_.junit.empty() && !suite_)
        replaceFile(
            runIn_.junit,
            junitText(
                {.name = runIn_.id, .started = {}, .properties = {{"state", "incomplete"}}, .cases = {}}));
    else if (!runIn_.junit.empty())
        replaceFile(runIn_.junit, junitText(suite_->suite(false)));
}

// ---- set-up

void RunInJob::open() {
    bench_.openRow(frmStartup::kUpDown, "opening the up/down panel");
    if (!resume_)
        bench_.switchVccOn(runIn_.vcc.empty() ? "on" : runIn_.vcc);
    bench_.done(bench_.bench().frmVRK_UD1->cmdRunin.userClick(), "opening the run-in panel");
    if (const auto signalled = interrupt::requested())
        throw CommandError(*signalled, "interrupted; nothing was run");
}

void RunInJob::fillFields() {
    UPDN_Runin& page = panel();
    page.txtTestQty.setText(decimalText(runIn_.steps));
    page.txtLogSteps.setText(decimalText(runIn_.logEvery));
    page.txtWipPositions.setText(decimalText(runIn_.positions));
    page.txtLimitDiv.setText(doubleText(runIn_.tolerance));
    page.txtRunInID.setText(runIn_.id);
    page.ChkLogAll.setValue(runIn_.logAll ? 1 : 0);
    page.ChkFast.setValue(runIn_.doublePurge ? 1 : 0);
    for (std::size_t stage = 0; stage < runIn_.stimulus.size(); ++stage)
        page.txtInitialIncr[static_cast<int>(stage)].setText(decimalText(runIn_.stimulus[stage]));
}

// ---- the run

RunInOrder RunInJob::order() {
    return {.journal = runIn_.journal,
            .resume = resume_,
            .abort = RunInSettings::Abort::Interrupts,
            .asks = false,
            .observers = {this},
            .begun =
                [this](const RunInHeader& header) {
                    if (!suite_ && junit_) // it grows with the run
                        suite_.emplace(header, std::nullopt);
                },
            .journalFailed = [](const std::string& why) { tellFileFailed("the journal ends here: " + why); }};
}

ExitCode RunInJob::run() {
    open();
    RunInHome& home = bench_.bench().runInHome();
    home.program = "vrkctl " VRK_VERSION;
    home.part = [this] { return options_.simulate; };
    home.awake = bench_.session().virtualClock() == nullptr ? &awake_ : nullptr;
    if (!resume_)
        fillFields();
    bench_.session().workBegins();
    std::optional<RunInEnd> end;
    const Outcome outcome = bench_.session().events().deliver([&] { end = panel().run(order()); });
    return concluded(outcome, end);
}

ExitCode RunInJob::concluded(const Outcome& outcome, std::optional<RunInEnd> end) {
    bench_.tellMessages();
    const auto signalled = interrupt::requested();
    const RunInEnd how = end.value_or(signalled ? RunInEnd::Interrupted : RunInEnd::LinkLost);
    if (suite_ && outcome.kind != Outcome::Kind::Faulted)
        suite_->ended(runInEndName(how));
    writeJUnit(true);
    saveLog();
    if (outcome.kind == Outcome::Kind::Faulted)
        throw CommandError(ExitCode::CheckFailed, ""); // a box has told it
    if (outputGone_)
        throw CommandError(*outputGone_);
    showEnd(runInEndName(how));
    if (signalled)
        return *signalled;
    if (!end)
        throw bench_.linkLost("the test was running");
    bench_.requireReplayed();
    return how == RunInEnd::Completed && counted_.passed() ? ExitCode::Done : ExitCode::CheckFailed;
}

void RunInJob::saveLog() {
    if (runIn_.log.empty())
        return;
    try {
        replaceFile(runIn_.log, recordingText(bench_.bench().context(), panel().rtxt1));
    } catch (const Fault& fault) {
        tellFileFailed(fault.what());
    }
}

void RunInJob::showEnd(const std::string& how) const {
    if (options_.json)
        put("{" + member("ended", jsonText(how)) + "," + member("count", decimalText(counted_.count)) + "," +
            member("fails", decimalText(counted_.fails)) + "," +
            member("judgements", decimalText(counted_.judgements)) + "," +
            member("voltsPerStep", jsonNumber(counted_.voltsPerStep)) + "," +
            member("limit", jsonNumber(counted_.limit)) + "}\n");
    else
        put(how + ":" + numberToText(counted_.count) + " steps," + numberToText(counted_.fails) +
            " fails in" + numberToText(counted_.judgements) + " judgements, limit " +
            formatNumber(counted_.limit, "0.0000") + " V\n");
}

void RunInJob::show(const std::string& line) {
    if (outputGone_)
        return;
    try {
        put(line);
    } catch (const CommandError& error) {
        outputGone_ = error;
        abort();
    }
}

void RunInJob::stageBegan(int /*stage*/) {
    if (interrupt::requested() || outputGone_)
        abort();
}

void RunInJob::rangeFound(const RunInRange& range) {
    counted_.range(range);
    if (counted_.still)
        tell(kWiperStill);
    if (suite_)
        suite_->range(range);
}

void RunInJob::stageDone(const RunInStage& stage) {
    last_ = stage;
    counted_.stage(stage);
    if (suite_)
        suite_->stage(stage);
}

void RunInJob::logPoint(int count, int fails) {
    const long long ms = last_.ms.count();
    if (options_.json)
        show("{" + member("count", decimalText(count)) + "," + member("fails", decimalText(fails)) + "," +
             member("position", decimalText(last_.tally)) + "," + member("volts", jsonNumber(last_.volts)) +
             "," + member("ms", decimalText(ms)) + "}\n");
    else
        show(numberToText(count) + " steps," + numberToText(fails) + " fails, position" +
             numberToText(last_.tally) + ", " + formatNumber(last_.volts, "0.0000") + " V, " +
             decimalText(ms / 1000) + " s\n");
    // A report of many intervals takes a while: it must not take the time of the run.
    if (std::chrono::steady_clock::now() >= junitDue_)
        writeJUnit(false);
}

void RunInJob::writeJUnit(bool partly) {
    constexpr int kShare = 20; // of the run's time at most one part in so many
    if (!junit_ || !suite_)
        return;
    const auto began = std::chrono::steady_clock::now();
    junit_->tryWrite(junitText(suite_->suite(partly)));
    const auto ended = std::chrono::steady_clock::now();
    junitDue_ = ended + (ended - began) * kShare;
}

void RunInJob::event(RunInEvent what, const std::string& text) {
    if (suite_)
        suite_->event(runInEventName(what), text);
    tell(text);
}

bool RunInJob::goOn(const std::string& /*text*/) {
    return runIn_.goOnMismatch;
}

} // namespace vrk
