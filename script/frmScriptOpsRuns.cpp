#include "script/frmScriptOps.h"

#include "platform/runtime/text.h"

#include <algorithm>
#include <utility>

namespace vrk {

namespace {

/// Rows that a rehearsal ahead of a run takes at most: the window stands still meanwhile. A script without
/// service block never has so many.
constexpr int kMostRowsAhead = 3000;

std::string counted(long long number, const std::string& noun) {
    return decimalText(number) + " " + noun + (number == 1 ? "" : "s");
}

} // namespace

void frmScriptOps::wireRuns() {
    frmScriptExec.setCaption("Script Execution");
    frmScriptExec.setEnabled(false); // until a script is loaded
    for (Control* control :
         {static_cast<Control*>(&cmdExecAll), static_cast<Control*>(&cmdRunContinuous),
          static_cast<Control*>(&cmdAbort), static_cast<Control*>(&cmdGo), static_cast<Control*>(&cmdStep),
          static_cast<Control*>(&chkAOF), static_cast<Control*>(&chkPauseOnFail),
          static_cast<Control*>(&txtRunning), static_cast<Control*>(&txtTotLines),
          static_cast<Control*>(&txttotReads), static_cast<Control*>(&txtRdPass),
          static_cast<Control*>(&txtRdFails), static_cast<Control*>(&txtLoopCount)})
        control->setContainer(frmScriptExec);
    cmdExecAll.setCaption("Run");
    cmdRunContinuous.setCaption("Run Continuous");
    cmdAbort.setCaption("Abort");
    cmdGo.setCaption("Go");
    cmdStep.setCaption("Step");
    chkAOF.setCaption("Abort On Fail");
    chkPauseOnFail.setCaption("Pause On Fail");
    txtRunning.setCaption("Running");
    txtTotLines.setCaption("Lines");
    txttotReads.setCaption("Reads");
    txtRdPass.setCaption("Pass");
    txtRdFails.setCaption("Fail");
    txtLoopCount.setCaption("Loops");
    txtLoopCount.setText("0");
    setRunButtons(false);
    for (Button* button : {&cmdAbort, &cmdGo})
        button->setEnabled(false);

    frameInterrupt.setCaption("Interrupt Status");
    for (Control* control : {static_cast<Control*>(&chkISample), static_cast<Control*>(&cmdISample),
                             static_cast<Control*>(&txtIstart), static_cast<Control*>(&txtIend),
                             static_cast<Control*>(&txtIexec), static_cast<Control*>(&txtIdetectStep),
                             static_cast<Control*>(&txtIEnableStep), static_cast<Control*>(&txtIDisableStep),
                             static_cast<Control*>(&txtLastRead), static_cast<Control*>(&txtIDefault),
                             static_cast<Control*>(&shpISample[0])})
        control->setContainer(frameInterrupt);
    chkISample.setCaption("Enable");
    chkISample.setToolTip("Manual Enable / Disable of Interrupt Sampling");
    cmdISample.setCaption("Sample");
    cmdISample.setToolTip("Click here to Sample GPIO bits.");
    shpISample[0].setToolTip(
        "Sample Led will change color each time Interrupt is sampled during script execution");
    txtIstart.setCaption("Start");
    txtIend.setCaption("End");
    txtIexec.setCaption("Executing");
    txtIdetectStep.setCaption("Detect Step");
    txtIEnableStep.setCaption("Enabled");
    txtIDisableStep.setCaption("Disabled");
    txtLastRead.setCaption("LastRead");
    txtIDefault.setCaption("Expect");
    for (TextBox* step :
         {&txtIstart, &txtIend, &txtIexec, &txtIdetectStep, &txtIEnableStep, &txtIDisableStep})
        step->setText("----");
    txtLastRead.setText("0000");
    txtIDefault.setText("0000");
    cmdRehearse.setCaption("Rehearse");
    cmdRehearse.setEnabled(static_cast<bool>(uses_.rehearsalBench));

    wireClick(cmdExecAll, &frmScriptOps::cmdExecAll_Click);
    wireClick(cmdRunContinuous, &frmScriptOps::cmdRunContinuous_Click);
    wireClick(cmdAbort, &frmScriptOps::cmdAbort_Click);
    wireClick(cmdGo, &frmScriptOps::cmdGo_Click);
    wireClick(cmdStep, &frmScriptOps::cmdStep_Click);
    wireClick(chkPauseOnFail, &frmScriptOps::chkPauseOnFail_Click);
    wireClick(cmdISample, &frmScriptOps::cmdISample_Click);
    wireClick(chkISample, &frmScriptOps::chkISample_Click);
    wireClick(cmdRehearse, &frmScriptOps::cmdRehearse_Click);
    vbalGrid1.onClick([this] { vbalGrid1_Click(); });
    action("ExecStep", &frmScriptOps::ExecStep);
    action("RunFromHere", &frmScriptOps::RunFromHere);
    action("RunSelection", &frmScriptOps::RunSelection);
    action("RetryRow", &frmScriptOps::RetryRow);
    cmdExecAll.onClick([this] { askForRun(false, [this] { cmdExecAll_Click(); }); });
    cmdRunContinuous.onClick([this] { askForRun(true, [this] { cmdRunContinuous_Click(); }); });
    cmdStep.onClick([this] { askForRun(false, [this] { cmdStep_Click(); }); });
    debuggerWatch_ = debugger_.observe([this] { debuggerMoved(); });
    breakpointWatch_ = debugger_.observeBreakpoints([this] { keepBreakpoints(); });
}

void frmScriptOps::debuggerMoved() {
    cmdGo.setEnabled(debugger_.paused());
    if (debugger_.paused() && debugger_.reason() == ScriptDebugger::Reason::Fail)
        tellFail(debugger_.pausedAt());
}

void frmScriptOps::tellFail(int row) {
    const RowResult* result = latest(row);
    if (result == nullptr)
        return;
    tell(false,
         "Row " + script_.table.text(row, ScriptColumn::Line) + " failed: expected " + result->expected +
             ", read " + (result->read.empty() ? "nothing" : result->read),
         decimalText(number(Text::RdFails)) + " of " +
             decimalText(number(Text::RdFails) + number(Text::RdPass)) + " comparisons",
         &vbalGrid1);
}

void frmScriptOps::askForRun(bool endless, std::function<void()> run) {
    if (!ask || script_.ScriptRunning) {
        run();
        return;
    }
    rehearseAhead();
    // Without an end any write is too many.
    const int writes = rehearsal_ ? rehearsal_->totalWrites() : 0;
    const bool many = writes > (endless ? 0 : Rehearsal::kManyWrites);
    if (many)
        ask(Question::ManyWrites, std::move(run));
    else
        run();
}

void frmScriptOps::rehearseAhead() {
    if (!uses_.rehearsalBench || script_.ScriptRaw.empty() || rehearsing_ ||
        (rehearsal_ && rehearsedStopping_ == chkAOF.checked()))
        return;
    try {
        int rows = 0;
        showRehearsal(rehearsed([&rows] { return ++rows <= kMostRowsAhead; }));
    } catch (const Fault&) {
        // What cannot be rehearsed can be run all the same: the run tells what is wrong.
        rehearsal_.reset();
    }
}

std::string frmScriptOps::questionText(Question question) const {
    if (question == Question::SaveUnread)
        return unreadRows() == 1
                   ? "1 row with expected data was never read: \"--\" would be written in its place."
                   : decimalText(unreadRows()) +
                         " rows with expected data were never read: \"--\" would be written in their place.";
    std::string registers;
    if (rehearsal_)
        for (const auto& [reg, count] : rehearsal_->nonvolatileWrites)
            registers += (registers.empty() ? " (" : ", ") + decimalText(count) + " to " + reg;
    return std::string("Each pass writes the part's non-volatile cells ") +
           (rehearsal_ && !rehearsal_->whole ? "at least " : "") +
           counted(rehearsal_ ? rehearsal_->totalWrites() : 0, "time") + registers +
           (registers.empty() ? "" : ")") + ": they wear.";
}

void frmScriptOps::userRunFromHere(int row) {
    askForRun(false, [this, row] { RunFromHere(row); });
}

void frmScriptOps::userRunSelection(int first, int last) {
    askForRun(false, [this, first, last] { RunSelection(first, last); });
}

TextBox& frmScriptOps::box(Text field) {
    switch (field) {
    case Text::LastRead:
        return txtLastRead;
    case Text::IEnableStep:
        return txtIEnableStep;
    case Text::IDisableStep:
        return txtIDisableStep;
    case Text::Istart:
        return txtIstart;
    case Text::Iend:
        return txtIend;
    case Text::Iexec:
        return txtIexec;
    case Text::IdetectStep:
        return txtIdetectStep;
    case Text::IDefault:
        return txtIDefault;
    case Text::TotReads:
        return txttotReads;
    case Text::RdPass:
        return txtRdPass;
    case Text::RdFails:
        return txtRdFails;
    case Text::TotLines:
        return txtTotLines;
    case Text::Running:
        return txtRunning;
    case Text::LoopCount:
    case Text::Count:
        break;
    }
    return txtLoopCount;
}

void frmScriptOps::passBegan(int first, int last) {
    cmdRunContinuous.setEnabled(false);
    cmdExecAll.setEnabled(false);
    cmdAbort.setEnabled(true);
    uses_.services.link.activePanel = this;
    firstRow_ = first;
    lastRow_ = last;
    cmdRecord.setEnabled(false);
    for (auto& report : cmdReport)
        report->setEnabled(true);
}

void frmScriptOps::rowEnded(int row) {
    if (!openRows_.empty())
        openRows_.pop_back();
    rowSteps_.emit(row, false);
}

void frmScriptOps::rowBegan(int row) {
    openRows_.push_back(row);
    rowSteps_.emit(row, true);
    if (!activities_.empty() && row >= firstRow_ && row <= lastRow_)
        activities_.back()->progress(row - firstRow_, lastRow_ - firstRow_ + 1);
}

void frmScriptOps::passEnded(ScriptEnd end) {
    // Where a load has taken the rows away, how it ended says whether what stands there now can be run.
    if (cmdAbort.enabled())
        setRunButtons(true);
    cmdAbort.setEnabled(false);
    frmDataRecord.setEnabled(true);
    showRecording();
    const PassResult& pass = results().passes.back();
    const bool good = pass.failed == 0 && pass.errors == 0 && end == ScriptEnd::Completed;
    const auto bad = std::find_if(pass.rows.begin(), pass.rows.end(),
                                  [](const RowResult& row) { return row.verdict >= RowVerdict::Fail; });
    std::string detail = pass.errors == 0 ? "" : decimalText(pass.errors) + " rows in error; ";
    if (bad != pass.rows.end())
        detail += "first in row " + decimalText(bad->line) +
                  (bad->verdict == RowVerdict::Error ? ": " + bad->why
                                                     : ": expected " + bad->expected + ", read " + bad->read);
    tell(good,
         "Script " + std::string(scriptEndName(end)) + ": " + decimalText(pass.passed) + " passed, " +
             decimalText(pass.failed) + " failed",
         detail, &vbalGrid1);
    scriptChanged_.emit();
}

void frmScriptOps::withRun(bool stepping, const std::function<ScriptEnd()>& passes) {
    if (script_.ScriptRunning) {
        // Another run in the midst of one belongs to it.
        (void)passes();
        return;
    }
    if (rehearsing_) // it knows nothing yet of what the run would wear
        throw Fault("The script is being rehearsed");
    collector_.begin(std::filesystem::path(loadedPath_).filename().string(),
                     uses_.mode.SPIBusMode ? "spi" : "i2c", context().clock().wallTime());
    debugger_.begin(stepping);
    activities_.push_back(
        std::make_unique<Activity>(context().activities, "Script", [this] { cmdAbort_Click(); }));
    ScriptEnd end = ScriptEnd::Interrupted;
    const OnScopeExit over([this, &end] {
        activities_.pop_back();
        debugger_.end();
        collector_.finish(end);
        scriptChanged_.emit();
    });
    end = passes();
}

void frmScriptOps::cmdExecAll_Click() {
    withRun(false, [this] { return run_.runPass(); });
}

void frmScriptOps::cmdRunContinuous_Click() {
    const OnScopeExit buttons([this] {
        cmdAbort.setEnabled(false);
        cmdRunContinuous.setEnabled(cmdExecAll.enabled());
    });
    withRun(false, [this] { return run_.runPasses(); });
}

void frmScriptOps::cmdAbort_Click() {
    run_.abort();
    stopRehearsal_ = true;
    pump();
}

void frmScriptOps::ExecStep(int row, int /*column*/) {
    run_.runRow(row);
}

void frmScriptOps::vbalGrid1_Click() {
    if (recording_)
        return; // a row's own transfers are no gestures to be recorded
    if (vbalGrid1.row() >= 1 && vbalGrid1.row() <= script_.table.rows())
        run_.runRow(vbalGrid1.row());
}

void frmScriptOps::cmdISample_Click() {
    run_.sample();
}

void frmScriptOps::chkISample_Click() {
    txtIEnableStep.setText(chkISample.checked() ? "On" : "Off");
    txtIDisableStep.setText(chkISample.checked() ? "" : "On");
}

void frmScriptOps::cmdGo_Click() {
    debugger_.go();
}

void frmScriptOps::cmdStep_Click() {
    if (script_.ScriptRunning)
        debugger_.step();
    else
        withRun(true, [this] { return run_.runPass(); });
}

void frmScriptOps::chkPauseOnFail_Click() {
    debugger_.pauseOnFail = chkPauseOnFail.checked();
}

void frmScriptOps::RunFromHere(int row) {
    RunSelection(row, run_.mainPart().last);
}

void frmScriptOps::RunSelection(int first, int last) {
    if (script_.ScriptRunning)
        throw Fault("A script is running");
    withRun(false, [&] { return run_.runPass(ScriptRun::Range{first, last}); });
}

void frmScriptOps::RetryRow(int row) {
    run_.runRow(row);
}

Rehearsal frmScriptOps::rehearsed(std::function<bool()> goOn) const {
    std::string bytes;
    for (const std::string& line : script_.ScriptRaw)
        bytes += line + "\n";
    const BusMode mode = uses_.mode; // the panel may be opened for the other bus meanwhile
    const RehearsalOptions options{.name = std::filesystem::path(loadedPath_).filename().string(),
                                   .mode = mode,
                                   .base = script_.ScriptI2CBase,
                                   .stopOnFail = chkAOF.checked(),
                                   .started = context().clock().wallTime(),
                                   .sizes = &script_.table,
                                   .goOn = std::move(goOn)};
    return rehearse(bytes, options, uses_.rehearsalBench);
}

void frmScriptOps::showRehearsal(Rehearsal found) {
    rehearsal_ = std::move(found);
    rehearsedStopping_ = chkAOF.checked();
    lblRehearsal.setCaption(
        doubleText(static_cast<double>(rehearsal_->lasted.count()) / 1000.0) + " s, " +
        counted(rehearsal_->reports, "report") + ", " +
        counted(rehearsal_->totalWrites(), "non-volatile write") + ", " +
        counted(static_cast<long long>(rehearsal_->wouldFail.size()), "row") + " would fail, " +
        decimalText(static_cast<long long>(rehearsal_->neverPass.size())) + " can never pass" +
        (rehearsal_->whole ? "" : "; broken off, the script goes on"));
    scriptChanged_.emit();
}

void frmScriptOps::cmdRehearse_Click() {
    if (!uses_.rehearsalBench || script_.ScriptRaw.empty() || rehearsing_)
        return;
    rehearsing_ = true;
    stopRehearsal_ = false;
    const unsigned table = script_.table.generation();
    const bool running = script_.ScriptRunning; // it stands at a row meanwhile
    const bool runs = cmdExecAll.enabled();
    DisabledWhile busy({&cmdRehearse});
    if (!running) {
        setRunButtons(false);
        cmdAbort.setEnabled(true);
        scriptChanged_.emit();
    }
    const OnScopeExit over([this, table, running, runs] {
        rehearsing_ = false;
        if (running)
            return;
        cmdAbort.setEnabled(false);
        if (script_.table.generation() == table)
            setRunButtons(runs);
        scriptChanged_.emit();
    });
    const Activity activity(context().activities, "Rehearsal", [this] { stopRehearsal_ = true; });
    Rehearsal found = rehearsed([this, table] {
        pump();
        return !stopRehearsal_ && script_.table.generation() == table;
    });
    if (script_.table.generation() != table)
        return; // another script is in the table
    if (!found.whole) {
        tell(false, "Rehearsal aborted", {}, &cmdRehearse);
        return;
    }
    showRehearsal(std::move(found));
    tell(rehearsal_->wouldFail.empty(), "Rehearsed", lblRehearsal.caption(), &lblRehearsal);
}

} // namespace vrk
