#include "apps/vrkctl/Interrupt.h"
#include "apps/vrkctl/Options.h"
#include "apps/vrkctl/PanelBench.h"
#include "apps/vrkctl/Terminal.h"
#include "platform/files/files.h"
#include "platform/runtime/text.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <utility>

namespace vrk {

namespace {

using Json = nlohmann::ordered_json;

/// As the panel's log and its file have it: no digits that the converter does not give.
double rounded(double value, const char* pattern) {
    return leadingNumber(formatNumber(value, pattern));
}
constexpr const char* kPin = "0.000000";
constexpr const char* kLevel = "0.0000";

std::string hexCode(int code) {
    return byteToHex2(toByte(code));
}

/// The calibration page worked from the terminal.
class Calibration {
  public:
    Calibration(const Options& options, const CalibrateOptions& asked)
        : options_(options), asked_(asked), bench_(options), progress_("calibration", kCalibrationCodes) {}

    ExitCode run() {
        checkFile();
        bench_.openRow(frmStartup::kCalibrate, "opening the calibration");
        bench_.session().workBegins();
        takeReference();
        if (asked_.csv)
            put("code,pinVolts,volts\n");
        const Subscription points = panel().observeRuns([this](FrmVCCCal::Change change) {
            if (change == FrmVCCCal::Change::Measured)
                measured(panel().lastRun().points.back());
        });
        const Outcome outcome = bench_.session().events().deliver([this] { panel().cmdDoVCC_Cal_Click(); });
        bench_.session().runEvents();
        progress_.clear();
        return concluded(outcome);
    }

  private:
    FrmVCCCal& panel() { return *bench_.bench().FrmVCCCal; }
    std::filesystem::path file() { return bench_.bench().context().programFolder / CalibrationFile::kName; }

    void checkFile() {
        if (asked_.save)
            requireWritable(file());
    }

    void takeReference() {
        if (!asked_.vref.empty()) {
            bench_.done(panel().txtVrefCal.userType(asked_.vref), "setting the reference");
            bench_.done(panel().txtVrefCal.userLeave(), "setting the reference");
            return;
        }
        std::optional<double> before;
        try {
            before = CalibrationFile::volts(CalibrationFile::read(file(), {}).reference);
        } catch (const Fault&) {
            // There is none, or one that no panel can read either.
        }
        if (before && *before != bench_.bench().services().analog.ADRef)
            tell("the file has a reference of " + doubleText(*before) + " V; this run takes " +
                 panel().txtVrefCal.text() + " V (--vref)");
    }

    void measured(const CalibrationPoint& point) {
        progress_.clear();
        if (asked_.csv && !outputGone_) {
            try {
                put(hexCode(point.code) + "," + (point.read ? formatNumber(point.volts, kPin) : "") + "," +
                    (point.read ? formatNumber(point.vcc(), kPin) : "") + "\n");
            } catch (const CommandError& error) {
                outputGone_ = error; // it must not pass through the panel
            }
        }
        progress_.done(point.code + 1);
        if (outputGone_ || interrupt::requested())
            bench_.session().events().post([this] { (void)panel().cmdAbort.userClick(); });
    }

    ExitCode concluded(const Outcome& outcome) {
        bench_.tellMessages();
        if (outputGone_)
            throw CommandError(*outputGone_);
        const FrmVCCCal* left = bench_.bench().FrmVCCCal.loadedPanel();
        const bool lost = bench_.session().events().ended() || left == nullptr;
        const FrmVCCCal::Run run = left == nullptr ? FrmVCCCal::Run{} : left->lastRun();
        const bool completed = !lost && run.completed();
        ExitCode code = completed && left->sound() ? ExitCode::Done : ExitCode::CheckFailed;
        bool saved = false;
        if (completed) {
            tellFindings(*left);
            // What was measured on a replay is that of the recorded board all the same.
            bench_.requireReplayed();
            saved =
                asked_.save && (code == ExitCode::Done || asked_.force) && !interrupt::requested() && save();
            if (asked_.save && code != ExitCode::Done && !asked_.force)
                tell("nothing was saved; --force saves all the same");
        }
        print(run, completed ? "completed" : lost ? "link lost" : "aborted", saved);
        if (const auto signalled = interrupt::requested()) {
            tell("interrupted after" + numberToText(static_cast<long long>(run.points.size())) + " of" +
                 numberToText(kCalibrationCodes) + " codes; VCC goes off");
            return *signalled;
        }
        if (lost)
            throw bench_.linkLost("the supply was measured");
        bench_.requireReplayed();
        if (!completed && outcome.kind != Outcome::Kind::Faulted)
            tell("the calibration was ended: " + lastResult());
        return code;
    }

    std::string lastResult() {
        const auto& results = bench_.bench().context().results.kept();
        return results.empty() ? "" : results.back().detail;
    }

    static void tellFindings(const FrmVCCCal& panel) {
        for (const CalibrationFinding& finding : panel.findings())
            if (!finding.good)
                tell("the supply cannot be calibrated: " + finding.text);
    }

    bool save() {
        bench_.done(panel().cmdSaveCal.userClick(), "saving");
        if (bench_.bench().context().results.kept().back().good)
            return true;
        tellFileFailed(lastResult());
        return false;
    }

    void print(const FrmVCCCal::Run& run, const std::string& ended, bool saved) {
        if (options_.json)
            put(json(run, ended, saved).dump() + "\n");
        else if (!asked_.csv && run.completed())
            printLevels(run, saved);
    }

    Json json(const FrmVCCCal::Run& run, const std::string& ended, bool saved) {
        Json codes = Json::array();
        for (const CalibrationPoint& point : run.points)
            codes.push_back({{"code", hexCode(point.code)},
                             {"pinVolts", point.read ? Json(rounded(point.volts, kPin)) : Json()}});
        Json targets = Json::array();
        for (std::size_t at = 0; run.completed() && at < run.choices.size(); ++at) {
            const CalibrationChoice& choice = run.choices.at(at);
            targets.push_back({{"target", kCalibrationTargets.at(at)},
                               {"code", hexCode(choice.code)},
                               {"pinVolts", rounded(choice.volts, kLevel)},
                               {"volts", rounded(choice.vcc(), kLevel)},
                               {"residual", rounded(choice.vcc() - kCalibrationTargets.at(at), kLevel)}});
        }
        return {{"vref", run.reference},
                {"codes", codes},
                {"targets", targets},
                {"saved", saved ? Json(file().string()) : Json()},
                {"ended", ended}};
    }

    void printLevels(const FrmVCCCal::Run& run, bool saved) {
        put("target  code  pin V   VCC V   off by\n");
        for (std::size_t at = 0; at < run.choices.size(); ++at) {
            const CalibrationChoice& choice = run.choices.at(at);
            const double target = kCalibrationTargets.at(at);
            putf("%6.1f  %4s  %6.4f  %6.4f  %+.0f mV\n", target, hexCode(choice.code).c_str(), choice.volts,
                 choice.vcc(), (choice.vcc() - target) * 1000);
        }
        if (saved)
            put("saved in " + file().string() + "\n");
    }

    Options options_;
    CalibrateOptions asked_;
    PanelBench bench_;
    ProgressBarLine progress_;
    std::optional<CommandError> outputGone_;
};

} // namespace

ExitCode calibrate(const Options& options, const CalibrateOptions& asked) {
    if (options.json && asked.csv)
        throw usage("--json and --csv exclude each other");
    return Calibration(options, asked).run();
}

} // namespace vrk
