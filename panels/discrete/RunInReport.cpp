#include "panels/discrete/RunInReport.h"

#include "platform/runtime/text.h"

#include <cmath>
#include <cstdio>

namespace vrk {

namespace {

WallTime timeOf(const std::string& stamp) {
    WallTime time;
    (void)std::sscanf(stamp.c_str(), "%d-%d-%d %d:%d:%d", &time.year, &time.month, &time.day, &time.hour,
                      &time.minute, &time.second);
    return time;
}

std::string four(double value) {
    return formatNumber(value, "0.0000");
}

} // namespace

std::string runInStamp(const WallTime& time) {
    return runInDate(time) + " " + runInTime(time);
}

void RunInCount::range(const RunInRange& range) {
    voltsPerStep = range.voltsPerStep;
    still = wiperStill(voltsPerStep);
    limit = tolerance_ ? range.voltsPerStep * *tolerance_ : range.limit;
}

RunInStage RunInCount::judged(const RunInStage& stage) const {
    RunInStage again = stage;
    if (!tolerance_ || stage.verdict == RunInVerdict::Measured)
        return again;
    again.verdict = std::abs(stage.error) <= limit ? RunInVerdict::Pass : RunInVerdict::Fail;
    if (stage.band) {
        const double centre = stage.tally * voltsPerStep;
        again.band = stage.volts >= centre - limit && stage.volts <= centre + limit;
    }
    return again;
}

void RunInCount::stage(const RunInStage& stage) {
    const RunInStage again = judged(stage);
    if (again.verdict == RunInVerdict::Measured)
        return;
    count = again.loop;
    ++judgements;
    fails += again.verdict == RunInVerdict::Fail ? 1 : 0;
    if (again.band) {
        ++judgements;
        fails += *again.band ? 0 : 1;
    }
}

RunInSuite::RunInSuite(const RunInHeader& header, std::optional<double> tolerance)
    : header_(header), tolerance_(tolerance), counted_(tolerance), started_(timeOf(header.started)) {}

void RunInSuite::judge(Interval& interval, const RunInStage& stage) {
    const auto failed = [&interval](const std::string& why) {
        if (interval.fails++ == 0)
            interval.why = why;
    };
    interval.last = stage.loop;
    interval.ended = stage.ms;
    const std::string read = "read " + four(stage.volts) + " V, position" + numberToText(stage.tally) +
                             ", error " + four(stage.error) + " V";
    if (stage.verdict == RunInVerdict::Fail)
        failed(stage.loop == 0 ? read : "first at step" + numberToText(stage.loop) + ": " + read);
    if (stage.band == false)
        failed(read + ": outside the initial band");
}

void RunInSuite::stage(const RunInStage& given) {
    const RunInStage stage = counted_.judged(given);
    counted_.stage(given);
    lost_.clear(); // it was gone on with
    mismatch_.clear();
    if (stage.verdict != RunInVerdict::Measured) {
        if (!open_)
            open_ = Interval{.first = stage.loop, .began = spent_};
        judge(*open_, stage);
        if (stage.loop == 0 && counted_.still && open_->fails++ == 0)
            open_->why = kWiperStill;
        const bool round = stage.stage == RunInSettings::kStages - 1;
        if (stage.loop == 0 || (round && stage.loop % header_.settings.logSteps == 0)) {
            cases_.push_back(caseOf(*open_));
            open_.reset();
        }
    }
    loop_ = stage.loop;
    spent_ = stage.ms;
}

void RunInSuite::event(const std::string& what, const std::string& text) {
    if (what == runInEventName(RunInEvent::Resumed)) {
        resumed_ += (resumed_.empty() ? "" : ", ") + decimalText(loop_ + 1);
        state_ = "incomplete";
    } else if (what == runInEventName(RunInEvent::LinkLost)) {
        lost_ = text;
    } else if (what == runInEventName(RunInEvent::LinkBack)) {
        lost_.clear();
    } else if (what == runInEventName(RunInEvent::Mismatch)) {
        mismatch_ = text;
    }
}

JUnitCase RunInSuite::caseOf(const Interval& interval) {
    JUnitCase one;
    one.name = interval.last == 0
                   ? "initial test"
                   : "steps" + numberToText(interval.first) + " to" + numberToText(interval.last);
    one.lasted = interval.ended - interval.began;
    if (!interval.error.empty()) {
        one.outcome = JUnitCase::Outcome::Error;
        one.message = interval.error;
        one.type = "link";
    } else if (interval.fails > 0 || !interval.elsewhere.empty()) {
        one.outcome = JUnitCase::Outcome::Failure;
        one.message = !interval.elsewhere.empty()
                          ? interval.elsewhere
                          : decimalText(interval.fails) + " outside the limit, " + interval.why;
        one.type = "mismatch";
    }
    return one;
}

JUnitSuite RunInSuite::suite(bool partly) const {
    JUnitSuite suite;
    suite.name = header_.settings.id;
    suite.started = started_;
    suite.lasted = spent_;
    suite.cases = cases_;
    std::optional<Interval> open = open_;
    const bool stopped = !lost_.empty() || !mismatch_.empty();
    if (stopped && !open)
        open = Interval{.first = loop_ + 1, .last = loop_ + 1, .began = spent_, .ended = spent_};
    if (open && (partly || stopped)) {
        open->error = lost_;
        open->elsewhere = mismatch_;
        suite.cases.push_back(caseOf(*open));
    }
    suite.properties = {{"state", state_},
                        {"run", header_.run},
                        {"part", header_.part},
                        {"tolerance", doubleText(tolerance_.value_or(header_.settings.tolerance))},
                        {"voltsPerStep", doubleText(counted_.voltsPerStep)},
                        {"limit", doubleText(counted_.limit)}};
    if (tolerance_)
        suite.properties.emplace_back("derived", "true");
    if (!resumed_.empty())
        suite.properties.emplace_back("resumed", resumed_);
    return suite;
}

RunInReport recountRunIn(const std::filesystem::path& path, std::optional<double> tolerance,
                         const std::function<void(const RunInStage& judged)>& stage,
                         std::optional<RunInSuite>* suite) {
    RunInReport report;
    report.counted = RunInCount(tolerance);
    RunInListener listener;
    listener.header = [&](const RunInHeader& header) {
        if (suite != nullptr)
            suite->emplace(header, tolerance);
    };
    listener.range = [&](const RunInRange& range) {
        report.counted.range(range);
        if (suite != nullptr)
            (*suite)->range(range);
    };
    listener.stage = [&](const RunInStage& done) {
        report.counted.stage(done);
        if (stage)
            stage(report.counted.judged(done));
        if (suite != nullptr)
            (*suite)->stage(done);
    };
    listener.event = [&](const std::string& what, const std::string& text) {
        if (suite != nullptr)
            (*suite)->event(what, text);
    };
    listener.ended = [&](const std::string& how) {
        if (suite != nullptr)
            (*suite)->ended(how);
    };
    report.history = readRunIn(path, listener);
    report.tolerance = tolerance.value_or(report.history.header.settings.tolerance);
    report.derived = tolerance.has_value();
    return report;
}

} // namespace vrk
