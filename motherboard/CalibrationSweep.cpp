#include "motherboard/CalibrationSweep.h"

#include "platform/runtime/text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk {

namespace {

/// Codes that a sentence names; the others it counts.
constexpr std::size_t kMostNamed = 4;
/// Over all codes a sound supply moves by about 4 V.
constexpr double kLeastRange = 0.5;

std::string hexCode(int code) {
    return hexText(code, 2);
}

std::string named(const std::vector<int>& codes) {
    std::string text;
    for (std::size_t at = 0; at < std::min(codes.size(), kMostNamed); ++at)
        text += (at == 0 ? "" : ", ") + hexCode(codes[at]);
    if (codes.size() > kMostNamed)
        text += " and" + numberToText(static_cast<long long>(codes.size() - kMostNamed)) + " more";
    return (codes.size() == 1 ? "code " : "codes ") + text;
}

template <class Test>
std::vector<int> codesWhere(const std::vector<CalibrationPoint>& points, Test test) {
    std::vector<int> codes;
    for (const CalibrationPoint& point : points)
        if (test(point))
            codes.push_back(point.code);
    return codes;
}

/// "1.22 to 5.16 V"
std::string rangeOf(const CalibrationPoint& least, const CalibrationPoint& greatest, const char* pattern) {
    return formatNumber(least.vcc(), pattern) + " to " + formatNumber(greatest.vcc(), pattern) + " V";
}

CalibrationFinding curveOf(const std::vector<CalibrationPoint>& points) {
    std::vector<int> falls;
    std::vector<int> stands;
    for (std::size_t at = 1; at < points.size(); ++at) {
        if (points[at].volts < points[at - 1].volts)
            falls.push_back(points[at].code);
        else if (points[at].volts <= points[at - 1].volts)
            stands.push_back(points[at].code);
    }
    if (!falls.empty())
        return {false, "the curve falls at " + named(falls)};
    if (!stands.empty())
        return {true, "the curve never falls; it stands at " + named(stands)};
    return {true, "the curve rises at every code"};
}

CalibrationFinding settlingOf(const std::vector<CalibrationPoint>& points) {
    const auto unsettled = codesWhere(points, [](const CalibrationPoint& point) { return !point.settled; });
    if (!unsettled.empty())
        return {false,
                "never two equal readings at " + named(unsettled) + ": the supply or the board is noisy"};
    const auto most = std::max_element(
        points.begin(), points.end(),
        [](const CalibrationPoint& a, const CalibrationPoint& b) { return a.readings < b.readings; });
    return {true, "every code settled, at most" + numberToText(most->readings) + " readings"};
}

CalibrationFinding reachOf(const CalibrationChoices& choices, const std::string& range) {
    std::string missed;
    for (std::size_t target = 0; target < choices.size(); ++target)
        if (std::abs(choices.at(target).vcc() - kCalibrationTargets.at(target)) > kCalibrationTolerance)
            missed += (missed.empty() ? "" : ", ") + formatNumber(kCalibrationTargets.at(target), "0.0");
    if (!missed.empty())
        return {false, "no code comes close to " + missed + " V: the supply gives " + range};
    return {true, "all targets within " + range};
}

} // namespace

CalibrationChoices chooseCodes(const std::vector<CalibrationPoint>& points) {
    CalibrationChoices choices;
    for (std::size_t target = 0; target < choices.size(); ++target) {
        const double wanted = kCalibrationTargets.at(target) / 2; // the pin sees half of VCC
        const auto closest = std::min_element(
            points.begin(), points.end(), [wanted](const CalibrationPoint& a, const CalibrationPoint& b) {
                return std::abs(wanted - a.volts) < std::abs(wanted - b.volts);
            });
        choices.at(target) = {closest->code, closest->volts};
    }
    return choices;
}

double worstResidual(const CalibrationChoices& choices) {
    double worst = 0;
    for (std::size_t target = 0; target < choices.size(); ++target)
        worst = std::max(worst, std::abs(choices.at(target).vcc() - kCalibrationTargets.at(target)));
    return worst;
}

std::vector<CalibrationFinding> judgeCalibration(const std::vector<CalibrationPoint>& points,
                                                 const CalibrationChoices& choices) {
    std::vector<CalibrationFinding> findings;
    const auto unread = codesWhere(points, [](const CalibrationPoint& point) { return !point.read; });
    if (!unread.empty())
        findings.push_back({false, "the board did not answer at " + named(unread)});
    const auto [least, greatest] = std::minmax_element(
        points.begin(), points.end(),
        [](const CalibrationPoint& a, const CalibrationPoint& b) { return a.volts < b.volts; });
    if (greatest->vcc() - least->vcc() < kLeastRange) {
        // Of a supply that stands still neither a slope nor a target says anything more.
        findings.push_back(
            {false, "the supply does not move: " + rangeOf(*least, *greatest, "0.000") + " over all codes"});
        return findings;
    }
    findings.push_back(curveOf(points));
    findings.push_back(settlingOf(points));
    findings.push_back(reachOf(choices, rangeOf(*least, *greatest, "0.00")));
    return findings;
}

CalibrationSweep::CalibrationSweep(CalibrationRig& rig, std::function<void(const CalibrationPoint&)> measured)
    : rig_(rig), measured_(std::move(measured)) {}

CalibrationEnd CalibrationSweep::run() {
    for (int code = 0; code < kCalibrationCodes; ++code) {
        if (rig_.aborted())
            return CalibrationEnd::Aborted;
        CalibrationPoint point = measure(code);
        for (int tries = 1; !point.read && tries < kMostTries && rig_.undisturbed(code); ++tries) {
            rig_.recover();
            point = measure(code);
        }
        if (!rig_.undisturbed(code))
            return CalibrationEnd::Disturbed;
        measured_(point);
        rig_.letEventsRun();
    }
    return CalibrationEnd::Completed;
}

CalibrationPoint CalibrationSweep::measure(int code) {
    const unsigned losses = rig_.losses();
    rig_.setCode(code);
    double first = -1.0;
    double second = 1.0;
    int pairs = 0;
    while (first != second && pairs < kMostPairs) {
        first = rig_.convert();
        second = rig_.convert();
        ++pairs;
        if (pairs % kPairsBetweenEvents != 0)
            continue;
        rig_.letEventsRun();
        if (rig_.aborted())
            break;
    }
    return {.code = code,
            .volts = second,
            .readings = 2 * pairs,
            .settled = first == second,
            .read = rig_.losses() == losses};
}

} // namespace vrk
