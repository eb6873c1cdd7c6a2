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

RunInEnd RunInTest::run(const bool& abort) {
    began_ = board_.now();
    board_.prepare();
    header();
    board_.setAllHigh();
    findRange();
    initialTest();
    return loop(abort);
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

void RunInTest::sample() {
    counts_ = board_.sample(settings_.doublePurge);
    wiperVolts_ = counts_ * voltsPerCount_;
    observer_.sampled(stage_, wiperVolts_);
}

void RunInTest::findRange() {
    // More steps than the part has, so that the wiper ends at its stop.
    const auto toStop = [this](int stage, double& volts) {
        stage_ = stage;
        observer_.stageBegan(stage);
        const int count = settings_.stimulus.at(static_cast<std::size_t>(stage));
        clock(directionOf(stage), count);
        sample();
        volts = wiperVolts_;
        wiperPos_ =
            directionOf(stage) == kUp ? std::min(count, settings_.positions) : std::max(wiperPos_ - count, 0);
    };
    const auto measured = [this] {
        RunInStage done;
        done.stage = stage_;
        done.shown = done.tally = wiperPos_;
        done.counts = counts_;
        done.volts = done.expected = wiperVolts_;
        done.ms = board_.now() - began_;
        observer_.stageDone(done);
    };
    toStop(0, range_.max);
    measured();
    toStop(1, range_.min);
    if (settings_.positions == 0)
        throw divisionByZero();
    range_.voltsPerStep = (range_.max - range_.min) / settings_.positions;
    range_.limit = range_.voltsPerStep * settings_.tolerance;
    observer_.rangeFound(range_);
    measured();
    log("Max Wiper V:[" + four(range_.max) + "]    Min Wiper V:[" + four(range_.min) +
        "]    Volts Per Step:[" + formatNumber(range_.voltsPerStep, "0.000000") + "]" + kLineEnd);
    log(" Calculated Limit +-:[" + four(range_.limit) + "]  " + kLineEnd + kLineEnd);
}

void RunInTest::initialTest() {
    stage_ = 2;
    observer_.stageBegan(stage_);
    const int count = settings_.stimulus[2];
    clock(kUp, count);
    store();
    sample();
    RunInStage stage;
    wiperPos_ = tally(count, stage);
    const double centre = wiperPos_ * range_.voltsPerStep;
    log("Initial Test :  ");
    judgeInitial(centre + range_.limit, centre - range_.limit, stage);
    log(kLineEnd + "Beginning Loop  " + settings_.id + " Test" + kLineEnd + kLineEnd);
    // The lamp goes by the error alone, whatever the band said.
    stage.verdict = std::abs(stage.error) <= range_.limit ? RunInVerdict::Pass : RunInVerdict::Fail;
    observer_.stageDone(stage);
}

void RunInTest::stageOfLoop(int stage) {
    stage_ = stage;
    observer_.stageBegan(stage);
    ++loopCount_;
    const int count = settings_.stimulus.at(static_cast<std::size_t>(stage));
    const int direction = directionOf(stage);
    clock(direction, count);
    store();
    sample();
    RunInStage done;
    wiperPos_ = tally(direction == kUp ? count : -count, done);
    observer_.stageDone(done);
}

RunInEnd RunInTest::loop(const bool& abort) {
    for (;;) {
        for (int stage = kFirstOfLoop; stage < RunInSettings::kStages; ++stage)
            stageOfLoop(stage);
        observer_.roundDone(loopCount_, failCount_);
        if (settings_.logSteps == 0)
            throw divisionByZero();
        if (loopCount_ % settings_.logSteps == 0) {
            observer_.logPoint(loopCount_, failCount_);
            if (loopCount_ >= settings_.testQty) {
                finish(RunInEnd::Completed);
                return RunInEnd::Completed;
            }
            log(settings_.id + "   " + "Activity Log : Test Count:[" + numberToText(loopCount_) +
                "] Fail Count:[" + numberToText(failCount_) +
                "] Time Stamp: " + runInTime(board_.wallTime()) + kLineEnd);
        }
        if (abort) {
            finish(RunInEnd::Terminated);
            return RunInEnd::Terminated;
        }
    }
}

void RunInTest::finish(RunInEnd how) {
    const WallTime now = board_.wallTime();
    const std::string counts =
        "Test Count:[" + numberToText(loopCount_) + "] Fail Count:[" + numberToText(failCount_) + "]";
    if (how == RunInEnd::Completed)
        log(settings_.id + "   " + "Test Completed : " + counts + " Time Stamp: " + runInTime(now) +
            kLineEnd + kLineEnd);
    else
        log(settings_.id + "   " + "Test Terminated : " + counts + "  Date / Time Stamp: " + runInDate(now) +
            " " + runInTime(now) + kLineEnd);
    observer_.ended(how, loopCount_, failCount_);
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
