#include "script/ScriptRun.h"

#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"
#include "script/ScriptLine.h"
#include "script/ScriptStep.h"

#include <algorithm>
#include <utility>

namespace vrk {

using Text = ScriptFields::Text;

namespace {

/// Another script was loaded while events ran: the row does not exist any more.
struct ScriptReplaced {};

constexpr Milliseconds kAfterPause{100};

} // namespace

const char* scriptEndName(ScriptEnd end) {
    switch (end) {
    case ScriptEnd::Stopped:
        return "stopped";
    case ScriptEnd::StoppedOnFail:
        return "stopped on fail";
    case ScriptEnd::LinkLost:
        return "link lost";
    case ScriptEnd::Interrupted:
        return "interrupted";
    case ScriptEnd::Completed:
        break;
    }
    return "completed";
}

int ScriptFields::number(Text field) const {
    return decimalInt(text(field));
}

int ScriptFields::raise(Text field) {
    const int value = number(field) + 1;
    setText(field, decimalText(value));
    return value;
}

PlainFields::PlainFields() {
    setText(Text::IDefault, "0000");
    setText(Text::LastRead, "0000");
    setText(Text::LoopCount, "0");
}

void ScriptRun::letEventsRun(unsigned generation) {
    uses_.host.letEventsRun();
    if (gone(generation))
        throw ScriptReplaced{};
}

ScriptEnd ScriptRun::runPass(std::optional<Range> range) {
    ScriptState& script = uses_.script;
    uses_.ScriptAbort = false;
    stoppedOnFail_ = false;
    script.ScriptRunning = true;
    const Range rows = range.value_or(mainPart());
    const unsigned generation = script.table.generation();
    uses_.fields.setText(Text::RdFails, "0");
    uses_.fields.setText(Text::RdPass, "0");
    uses_.fields.setText(Text::TotLines, decimalText(script.EndMainStep));
    tell(&ScriptObserver::passBegan, rows.first, rows.last);

    ScriptEnd end = ScriptEnd::Interrupted;
    // Also on the way out of a program that ends in the midst.
    struct Finish {
        ScriptRun& run;
        ScriptEnd& end;
        ~Finish() {
            run.uses_.script.ScriptRunning = false;
            run.tell(&ScriptObserver::passEnded, end);
        }
    } finish{*this, end};

    for (script.RunStep = rows.first; script.RunStep <= rows.last; ++script.RunStep) {
        if (script.RunStep < 1 || script.RunStep > script.table.rows() || gone(generation))
            break;
        if (uses_.gate != nullptr)
            uses_.gate->beforeRow(script.RunStep);
        if (uses_.ScriptAbort || gone(generation))
            break;
        runRow(script.RunStep);
        uses_.host.letEventsRun();
        uses_.fields.setText(Text::Running, decimalText(script.RunStep));
        uses_.host.letEventsRun();
        if (uses_.ScriptAbort)
            break;
    }
    uses_.fields.setText(Text::Running, "Done");
    end = !uses_.ScriptAbort && !gone(generation) ? ScriptEnd::Completed
          : stoppedOnFail_                        ? ScriptEnd::StoppedOnFail
                                                  : ScriptEnd::Stopped;
    return end;
}

ScriptEnd ScriptRun::runPasses(int passes, std::optional<Range> range) {
    uses_.fields.setText(Text::LoopCount, "0");
    uses_.ScriptAbort = false;
    ScriptEnd end = ScriptEnd::Completed;
    for (int done = 0; !uses_.ScriptAbort && (passes == 0 || done < passes);) {
        end = runPass(range);
        // An aborted pass counts.
        uses_.fields.setText(Text::LoopCount, decimalText(++done));
        uses_.host.letEventsRun();
        uses_.host.letEventsRun();
        if (passes != 0)
            continue;
        const Range rows = range.value_or(mainPart());
        if (rows.first > rows.last)
            break; // no row: nothing would ever be done, and no row lets an abort through
        // Rows that send nothing take no time: the clock must go on all the same, and the processor rest.
        uses_.host.hold(Milliseconds{1});
    }
    return end;
}

void ScriptRun::runRow(int row) {
    uses_.script.table.select(row);
    execStep(row);
}

void ScriptRun::execStep(int row) {
    const unsigned generation = uses_.script.table.generation();
    std::string fault;
    bool failed = false;
    try {
        uses_.script.FailsAtStep = toInt16(uses_.fields.number(Text::RdFails));
        letEventsRun(generation);
        if (uses_.script.table.selected() != row)
            return; // the user chose another one meanwhile, which has run
        Step step(uses_.script.table.row(row), row, generation);
        struct Frame {
            ScriptRun& run;
            int row;
            Frame(ScriptRun& owner, int number) : run(owner), row(number) {
                run.tell(&ScriptObserver::rowBegan, row);
            }
            ~Frame() { run.tell(&ScriptObserver::rowEnded, row); }
        } frame(*this, row);
        try {
            runStep(step);
        } catch (const Fault& caught) {
            fault = caught.what();
            inError(row, fault);
        } catch (const ProgramEnded&) {
            inError(row, "broken off: the program ended");
            throw;
        }
        failed = step.failed;
    } catch (const ScriptReplaced&) {
        return;
    } catch (const Fault& caught) {
        fault = caught.what();
    }
    if (!fault.empty())
        uses_.host.say(fault);
    if (failed && !gone(generation) && uses_.gate != nullptr)
        uses_.gate->afterFail(row);
}

void ScriptRun::runStep(Step& step) {
    ScriptTable& table = uses_.script.table;
    table.setColour(step.row, ScriptColumn::Address, CellColour::Red);
    uses_.script.StepNo = decimalText(step.row);
    dispatch(step);
    if (uses_.fields.sampling()) {
        sample();
        letEventsRun(step.generation);
    }
    table.setColour(step.row, ScriptColumn::Address, CellColour::Green);
    letEventsRun(step.generation);
    letEventsRun(step.generation);
}

void ScriptRun::dispatch(Step& step) {
    const int delay = uses_.script.table.sizes(step.row).DelayMs;
    if (startsWith(step.operation, operation::kSetAddressStart)) {
        // The address of the rows behind was settled as they were loaded.
        uses_.script.table.setColour(step.row, ScriptColumn::Actual, CellColour::White);
        setActual(step, "");
    } else if (step.operation == operation::kNone) {
        return;
    } else if (step.operation == operation::kSave) {
        uses_.host.saveScript();
        letEventsRun(step.generation);
    } else if (step.operation == operation::kEnable) {
        uses_.fields.setText(Text::IEnableStep, step.line);
        uses_.fields.setSampling(true);
    } else if (step.operation == operation::kDisable) {
        uses_.fields.setText(Text::IDisableStep, step.line);
        uses_.fields.setSampling(false);
    } else if (delay == -1) {
        pauseForUser(step);
    } else if (delay > 0) {
        setActual(step, "Delay " + decimalText(delay));
        letEventsRun(step.generation);
        uses_.host.wait(Milliseconds(delay));
        letEventsRun(step.generation);
    } else {
        transfer(step);
    }
}

void ScriptRun::pauseForUser(Step& step) {
    setActual(step, "Delay Keypress");
    letEventsRun(step.generation);
    if (!uses_.host.confirm("Script Pause Line :" + decimalText(step.row) +
                            " Click OK to Continue, Cancel to Abort"))
        uses_.ScriptAbort = true;
    letEventsRun(step.generation);
    uses_.host.hold(kAfterPause);
    letEventsRun(step.generation);
    uses_.host.hold(kAfterPause);
    letEventsRun(step.generation);
}

void ScriptRun::compare(Step& step) {
    ScriptTable& table = uses_.script.table;
    const bool equal = table.text(step.row, ScriptColumn::Actual) == step.expected;
    table.setColour(step.row, ScriptColumn::Actual, equal ? CellColour::Green : CellColour::Red);
    if (equal) {
        uses_.fields.raise(Text::RdPass);
    } else {
        step.failed = true;
        uses_.script.FailsNow = toInt16(uses_.fields.raise(Text::RdFails));
        if (uses_.fields.abortOnFail() && uses_.script.FailsNow > uses_.script.FailsAtStep) {
            uses_.ScriptAbort = true;
            stoppedOnFail_ = true;
        }
    }
    tell(&ScriptObserver::rowCompared, step.row, equal);
    letEventsRun(step.generation);
}

void ScriptRun::setActual(Step& step, const std::string& text) {
    uses_.script.table.setText(step.row, ScriptColumn::Actual, text);
}

void ScriptRun::inError(int row, const std::string& why) {
    tell(&ScriptObserver::rowInError, row, why);
}

void ScriptRun::sample() {
    ScriptState& script = uses_.script;
    const unsigned generation = script.table.generation();
    uses_.fields.setText(Text::LastRead, uses_.bus.sampledValue());
    uses_.fields.flipSampleLamp();
    if (uses_.fields.text(Text::LastRead) != uses_.fields.text(Text::IDefault)) {
        // Also keeps the block's own rows from entering it.
        uses_.fields.setSampling(false);
        const int row = script.table.selected();
        uses_.fields.setText(Text::IdetectStep,
                             row == 0 ? std::string() : script.table.text(row, ScriptColumn::Line));
        script.IntSavedStep = row;
        if (script.IntStartStep != 0 && script.IntEndStep > script.IntStartStep) {
            serve();
            if (gone(generation))
                return;
            script.RunStep = script.IntSavedStep;
        }
    }
    uses_.host.letEventsRun();
}

void ScriptRun::serve() {
    if (serviceDepth_ >= kDeepestService) {
        uses_.ScriptAbort = true;
        throw Fault("The service block has entered itself 100 times: the script is stopped");
    }
    struct Depth {
        int& count;
        explicit Depth(int& depth) : count(depth) { ++count; }
        ~Depth() { --count; }
    } depth(serviceDepth_);
    ScriptState& script = uses_.script;
    const unsigned generation = script.table.generation();
    const int last = script.IntEndStep;
    // One copy of the step for all entries: an outer block goes on where the inner one stopped.
    for (script.IntRunStep = script.IntStartStep; script.IntRunStep <= last; ++script.IntRunStep) {
        // A row that stops the run still has its service block begun; what is aborted while it stands ahead
        // of a row of the block does not run that row.
        const bool stopping = uses_.ScriptAbort;
        if (uses_.gate != nullptr)
            uses_.gate->beforeRow(script.IntRunStep);
        if (gone(generation) || (uses_.ScriptAbort && !stopping))
            return;
        runRow(script.IntRunStep);
        uses_.fields.setText(Text::Iexec, decimalText(script.IntRunStep));
        uses_.host.letEventsRun();
        uses_.fields.setText(Text::Running, decimalText(script.IntRunStep));
        uses_.host.letEventsRun();
        if (uses_.ScriptAbort || gone(generation))
            return;
    }
}

} // namespace vrk
