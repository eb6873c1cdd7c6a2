#include "panels/discrete/RunInTest.h"

#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk {

namespace {

constexpr Milliseconds kStoreTime{3};
constexpr double kFullScale = 1023; ///< of the ten-bit converter
constexpr int kUp = 0, kDown = 1;
constexpr int kFirstOfLoop = 3;
const std::string kLineEnd = "\r\n";

std::string four(double value) {
    return formatNumber(value, "0.0000");
}

/// A value as its four decimals tell it: the judgement works on what is shown.
double asFour(double value) {
    return leadingNumber(four(value));
}

std::string twoDigits(int value) {
    return (value < 10 ? "0" : "") + decimalText(value);
}

int directionOf(int stage) {
    return stage == 1 || stage == 4 || stage == 6 ? kDown : kUp;
}

} // namespace

std::string runInDate(const WallTime& time) {
    return decimalText(time.year) + "-" + twoDigits(time.month) + "-" + twoDigits(time.day);
}

std::string runInTime(const WallTime& time) {
    return twoDigits(time.hour) + ":" + twoDigits(time.minute) + ":" + twoDigits(time.second);
}

RunInTest::RunInTest(RunInBoard& board, RunInObserver& observer, RunInSettings settings)
    : board_(board),
      observer_(observer),
      settings_(std::move(settings)),
      voltsPerCount_(2 * settings_.reference / kFullScale) {}

const char* runInEndName(RunInEnd how) {
    static constexpr std::array<const char*, 5> kNames = {"completed", "terminated", "link lost",
                                                          "interrupted", "mismatch"};
    return kNames.at(static_cast<std::size_t>(how));
}

const char* runInEventName(RunInEvent what) {
    static constexpr std::array<const char*, 5> kNames = {"resumed", "mismatch", "link lost", "link back",
                                                          "unknown round"};
    return kNames.at(static_cast<std::size_t>(what));
}

void RunInAudience::logText(std::string_view text) {
    for (RunInObserver* one : all_)
        one->logText(text);
}

void RunInAudience::stageBegan(int stage) {
    for (RunInObserver* one : all_)
        one->stageBegan(stage);
}

void RunInAudience::stepping(int direction, int count) {
    for (RunInObserver* one : all_)
        one->stepping(direction, count);
}

void RunInAudience::sampled(int stage, double volts) {
    for (RunInObserver* one : all_)
        one->sampled(stage, volts);
}

void RunInAudience::rangeFound(const RunInRange& range) {
    for (RunInObserver* one : all_)
        one->rangeFound(range);
}

void RunInAudience::stageDone(const RunInStage& stage) {
    for (RunInObserver* one : all_)
        one->stageDone(stage);
}

void RunInAudience::roundDone(int count, int fails) {
    for (RunInObserver* one : all_)
        one->roundDone(count, fails);
}

void RunInAudience::logPoint(int count, int fails) {
    for (RunInObserver* one : all_)
        one->logPoint(count, fails);
}

void RunInAudience::event(RunInEvent what, const std::string& text) {
    for (RunInObserver* one : all_)
        one->event(what, text);
}

void RunInAudience::ended(RunInEnd how, int count, int fails) {
    for (RunInObserver* one : all_)
        one->ended(how, count, fails);
}

bool RunInAudience::goOn(const std::string& text) {
    return std::all_of(all_.begin(), all_.end(), [&text](RunInObserver* one) { return one->goOn(text); });
}

RunInEnd RunInTest::run(const bool& abort) {
    began_ = board_.now();
    board_.prepare();
    header();
    return begin(abort);
}

RunInEnd RunInTest::begin(const bool& abort) {
    board_.setAllHigh();
    while (!findRange())
        recall();
    initialTest();
    return loop(kFirstOfLoop, abort);
}

RunInEnd RunInTest::resume(const RunInProgress& progress, const bool& abort) {
    began_ = board_.now() - progress.spent;
    range_ = progress.range.value_or(RunInRange{});
    last_ = progress.last;
    stage_ = last_ ? last_->stage : 2; // where the samples of the recall are shown
    loopCount_ = progress.loopCount;
    testCount_ = progress.testCount;
    failCount_ = progress.failCount;
    passCount_ = progress.passCount;
    header();
    recall();
    note(RunInEvent::Resumed, "Test Resumed : " + counts() + "  Date / Time Stamp: " + dateAndTime());
    if (!progress.range)
        return begin(abort);
    if (!last_) {
        clockRange();
        initialTest();
        return loop(kFirstOfLoop, abort);
    }
    wiperPos_ = last_->tally;
    int next = last_->stage + 1;
    if (next >= RunInSettings::kStages) {
        next = kFirstOfLoop;
        // The program may have been stopped between the round and what follows it.
        if (!progress.roundServed)
            if (const auto end = endOfRound(abort))
                return *end;
    }
    const Place place = locate(next);
    if (!accept(place, next, true))
        return finish(RunInEnd::Mismatch);
    sampled_ = place == Place::OneStoreOn;
    return loop(next, abort);
}

void RunInTest::header() {
    const WallTime now = board_.wallTime();
    log(kLineEnd + kLineEnd + "10.0.0 " + "VRK EEPROM Run In Test  " + settings_.id + " " + runInDate(now) +
        " " + runInTime(now) + kLineEnd + "Positions" + settings_.positionsText + " V Tolerence " +
        settings_.toleranceText + kLineEnd);
}

void RunInTest::clock(int direction, int count) {
    using enum RunInBoard::Pin;
    observer_.stepping(direction, count);
    board_.setPin(Cs, false);
    board_.setPin(Inc, true);
    board_.setPin(UpDown, direction == kUp);
    for (int step = 1; step < count; ++step) {
        board_.setPin(Inc, false);
        board_.setPin(Inc, true);
    }
    // The last falling edge; /INC stays low for the end sequence.
    board_.setPin(Inc, false);
}

void RunInTest::store() {
    using enum RunInBoard::Pin;
    board_.setPin(Inc, true);
    board_.setPin(Cs, true); // rising with /INC high: the part stores
    board_.wait(kStoreTime);
}

bool RunInTest::sample() {
    const auto counts = board_.sample(settings_.doublePurge);
    if (!counts)
        return false;
    counts_ = *counts;
    wiperVolts_ = counts_ * voltsPerCount_;
    observer_.sampled(stage_, wiperVolts_);
    return true;
}

void RunInTest::recall() {
    do
        board_.recall();
    while (!sample());
}

bool RunInTest::measureStop(int stage, double& volts) {
    stage_ = stage;
    observer_.stageBegan(stage);
    const int count = settings_.stimulus.at(static_cast<std::size_t>(stage));
    clock(directionOf(stage), count);
    if (!sample())
        return false;
    volts = wiperVolts_;
    wiperPos_ =
        directionOf(stage) == kUp ? std::min(count, settings_.positions) : std::max(wiperPos_ - count, 0);
    return true;
}

bool RunInTest::findRange() {
    // More steps than the part has, so that the wiper ends at its stop.
    const auto measured = [this] {
        RunInStage done;
        done.stage = stage_;
        done.shown = done.tally = wiperPos_;
        done.counts = counts_;
        done.volts = done.expected = wiperVolts_;
        done.ms = board_.now() - began_;
        observer_.stageDone(done);
    };
    if (!measureStop(0, range_.max))
        return false;
    measured();
    if (!measureStop(1, range_.min))
        return false;
    if (settings_.positions == 0)
        throw divisionByZero();
    range_.voltsPerStep = (range_.max - range_.min) / settings_.positions;
    range_.limit = range_.voltsPerStep * settings_.tolerance;
    observer_.rangeFound(range_);
    measured();
    log("Max Wiper V:[" + four(range_.max) + "]    Min Wiper V:[" + four(range_.min) +
        "]    Volts Per Step:[" + formatNumber(range_.voltsPerStep, "0.000000") + "]" + kLineEnd);
    log(" Calculated Limit +-:[" + four(range_.limit) + "]  " + kLineEnd + kLineEnd);
    return true;
}

void RunInTest::clockRange() {
    wiperPos_ = 0;
    for (const int stage : {0, 1}) {
        const int count = settings_.stimulus.at(static_cast<std::size_t>(stage));
        clock(directionOf(stage), count);
        wiperPos_ = stage == 0 ? std::min(count, settings_.positions) : std::max(wiperPos_ - count, 0);
    }
}

void RunInTest::initialTest() {
    stage_ = 2;
    observer_.stageBegan(stage_);
    const int count = settings_.stimulus[2];
    for (;;) {
        clock(kUp, count);
        store();
        if (sample())
            break;
        // Nothing was stored before that the part could be compared with: both stops once more, then again.
        recall();
        clockRange();
    }
    RunInStage stage;
    wiperPos_ = tally(count, stage);
    const double centre = wiperPos_ * range_.voltsPerStep;
    log("Initial Test :  ");
    judgeInitial(centre + range_.limit, centre - range_.limit, stage);
    log(kLineEnd + "Beginning Loop  " + settings_.id + " Test" + kLineEnd + kLineEnd);
    // The lamp goes by the error alone, whatever the band said.
    stage.verdict = std::abs(stage.error) <= range_.limit ? RunInVerdict::Pass : RunInVerdict::Fail;
    stage.shown = stage.tally; // as for both stops; the steps of the loop show the sum
    last_ = stage;
    observer_.stageDone(stage);
}

int RunInTest::incrementOf(int stage) const {
    const int count = settings_.stimulus.at(static_cast<std::size_t>(stage));
    return directionOf(stage) == kUp ? count : -count;
}

bool RunInTest::atTally() const {
    return std::abs(wiperVolts_ - wiperPos_ * range_.voltsPerStep) <= range_.limit;
}

RunInTest::Place RunInTest::locate(int stage) {
    // A part that was already off its tally is looked for from where it was measured last.
    const bool off = last_->verdict == RunInVerdict::Fail;
    const double here = off ? last_->volts : wiperPos_ * range_.voltsPerStep;
    // A count of 0 gives one step like a count of 1, and the part's ends hold.
    const int steps = std::max(1, std::abs(incrementOf(stage)));
    const int on =
        std::clamp(wiperPos_ + (directionOf(stage) == kUp ? steps : -steps), 0, settings_.positions);
    const double there = here + (on - wiperPos_) * range_.voltsPerStep;
    const double fromHere = std::abs(wiperVolts_ - here);
    const double fromThere = std::abs(wiperVolts_ - there);
    // One odd measurement before the stop is no place to look for: the part has stood at its tally all along.
    if (off && std::min(fromHere, fromThere) > range_.limit && atTally())
        return Place::AtTally;
    if (std::min(fromHere, fromThere) > range_.limit)
        return Place::Elsewhere;
    return fromThere < fromHere ? Place::OneStoreOn : Place::AtTally;
}

bool RunInTest::accept(Place place, int stage, bool attended) {
    const std::string read = "read " + four(wiperVolts_) + ", position" + numberToText(wiperPos_) +
                             " expects " + four(wiperPos_ * range_.voltsPerStep);
    const std::string step = numberToText(loopCount_ + 1) + " (stage " + decimalText(stage) + ")";
    if (place == Place::OneStoreOn)
        note(RunInEvent::UnknownRound,
             "Step" + step + " was stored before the stop and is judged now : " + read);
    const bool sound = last_->verdict != RunInVerdict::Fail || (place == Place::AtTally && atTally());
    if (place != Place::Elsewhere && sound) {
        if (place == Place::AtTally)
            log(settings_.id + "   Step" + step + " is next : " + read + kLineEnd);
        return true;
    }
    const std::string text = "Position Mismatch before step" + step + " : " + read;
    note(RunInEvent::Mismatch, text);
    // A part that is where it was measured last must not keep a night's run waiting for an answer.
    return (place != Place::Elsewhere && !attended) || observer_.goOn(text);
}

bool RunInTest::stageOfLoop(int stage) {
    stage_ = stage;
    observer_.stageBegan(stage);
    const int count = settings_.stimulus.at(static_cast<std::size_t>(stage));
    if (sampled_) // by the look at the recalled part, which stood in the row of the stage before
        observer_.sampled(stage, wiperVolts_);
    while (!std::exchange(sampled_, false)) {
        clock(directionOf(stage), count);
        store();
        if (sample())
            break;
        recall();
        const Place place = locate(stage);
        if (!accept(place, stage, false))
            return false;
        sampled_ = place == Place::OneStoreOn;
    }
    ++loopCount_;
    RunInStage done;
    wiperPos_ = tally(incrementOf(stage), done);
    last_ = done;
    observer_.stageDone(done);
    return true;
}

RunInEnd RunInTest::loop(int stage, const bool& abort) {
    for (;; stage = kFirstOfLoop) {
        for (; stage < RunInSettings::kStages; ++stage)
            if (!stageOfLoop(stage))
                return finish(RunInEnd::Mismatch);
        observer_.roundDone(loopCount_, failCount_);
        if (const auto end = endOfRound(abort))
            return *end;
    }
}

std::optional<RunInEnd> RunInTest::endOfRound(const bool& abort) {
    if (settings_.logSteps == 0)
        throw divisionByZero();
    if (loopCount_ % settings_.logSteps == 0) {
        observer_.logPoint(loopCount_, failCount_);
        if (loopCount_ >= settings_.testQty)
            return finish(RunInEnd::Completed);
        log(settings_.id + "   " + "Activity Log : " + counts() +
            " Time Stamp: " + runInTime(board_.wallTime()) + kLineEnd);
    }
    if (!abort)
        return std::nullopt;
    return finish(settings_.abort == RunInSettings::Abort::Interrupts ? RunInEnd::Interrupted
                                                                      : RunInEnd::Terminated);
}

std::string RunInTest::counts() const {
    return "Test Count:[" + numberToText(loopCount_) + "] Fail Count:[" + numberToText(failCount_) + "]";
}

std::string RunInTest::dateAndTime() const {
    const WallTime now = board_.wallTime();
    return runInDate(now) + " " + runInTime(now);
}

void RunInTest::note(RunInEvent what, const std::string& text) {
    log(settings_.id + "   " + text + kLineEnd);
    observer_.event(what, text);
}

void RunInTest::linkLost(const std::string& why) {
    note(RunInEvent::LinkLost,
         "Link Lost : " + counts() + "  Date / Time Stamp: " + dateAndTime() + " : " + why);
}

void RunInTest::linkBack(const std::string& text) {
    note(RunInEvent::LinkBack,
         "Link Back : " + counts() + "  Date / Time Stamp: " + dateAndTime() + " : " + text);
}

RunInEnd RunInTest::finish(RunInEnd how) {
    if (how == RunInEnd::Completed)
        log(settings_.id + "   " + "Test Completed : " + counts() +
            " Time Stamp: " + runInTime(board_.wallTime()) + kLineEnd + kLineEnd);
    else
        log(settings_.id + "   " + "Test Terminated : " + counts() + "  Date / Time Stamp: " + dateAndTime() +
            kLineEnd);
    observer_.ended(how, loopCount_, failCount_);
    return how;
}

int RunInTest::tally(int increment, RunInStage& stage) {
    // What is shown and judged is the sum; the next step starts from what the part's ends leave of it.
    const int shown = wiperPos_ + increment;
    stage.loop = loopCount_;
    stage.stage = stage_;
    stage.shown = shown;
    stage.tally = std::clamp(shown, 0, settings_.positions);
    stage.counts = counts_;
    stage.volts = wiperVolts_;
    stage.expected = asFour(shown * range_.voltsPerStep); // from zero: the lower stop is not added
    stage.ms = board_.now() - began_;
    stage.error = asFour(stage.expected - leadingNumber(formatNumber(wiperVolts_, "#0.00000")));
    judge(numberToText(shown), stage.expected, stage);
    return stage.tally;
}

void RunInTest::judge(const std::string& name, double expected, RunInStage& stage) {
    ++testCount_;
    const bool pass = std::abs(stage.error) <= range_.limit;
    stage.verdict = pass ? RunInVerdict::Pass : RunInVerdict::Fail;
    ++(pass ? passCount_ : failCount_);
    if (pass && !settings_.logAll)
        return;
    const auto volts = [](double value) { return formatNumber(value, "##.0000"); };
    log(" Wiper Position" + name + " Check Expected " + volts(expected) + "   Read " + volts(wiperVolts_) +
        "   Error " + volts(stage.error) + "  TOL " + volts(range_.limit) + " " + "Volts  " + "   Test#[" +
        numberToText(testCount_) + "] " + (pass ? "PASS" : "FAIL") + kLineEnd);
}

void RunInTest::judgeInitial(double high, double low, RunInStage& stage) {
    const auto volts = [](double value) { return formatNumber(value, "00.0000"); };
    log(" Wiper Position" + numberToText(wiperPos_) + " Check Recorded value [" + volts(wiperVolts_) +
        "] >= " + volts(low) + " and <= " + volts(high) + " " + "Volts");
    ++testCount_;
    const bool pass = wiperVolts_ >= low && wiperVolts_ <= high;
    stage.band = pass;
    ++(pass ? passCount_ : failCount_);
    log("   Test#[" + numberToText(testCount_) + "] " + (pass ? "PASS" : "FAIL") + kLineEnd);
}

} // namespace vrk
