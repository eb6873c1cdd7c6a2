#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vrk {

/// The levels that every panel offers, volts.
inline constexpr std::array<double, 7> kCalibrationTargets = {2.7, 3.0, 3.3, 3.5, 4.0, 4.5, 5.0};
/// Codes of the DAC that sets VCC: 00 to 7F.
inline constexpr int kCalibrationCodes = 128;

/// Further from its target no level may be, volts: one and a half steps of the DAC, which are 33 mV each. On
/// a sound supply every level is within half a step.
inline constexpr double kCalibrationTolerance = 0.05;

/// What VCC came to at one code.
struct CalibrationPoint {
    int code = 0;
    double volts = 0; ///< at the converter's pin, which sees half of VCC
    int readings = 0;
    bool settled = true; ///< two readings in a row were equal
    bool read = true;    ///< every exchange behind it got its reply
    double vcc() const { return 2 * volts; }
};

/// The point that comes closest to a target.
struct CalibrationChoice {
    int code = 0;
    double volts = 0; ///< at the pin
    double vcc() const { return 2 * volts; }
};
using CalibrationChoices = std::array<CalibrationChoice, kCalibrationTargets.size()>;

/// For each target the closest point; of two equally close ones the lower code. A target that is out of reach
/// gets the nearest end. \param points at least one
CalibrationChoices chooseCodes(const std::vector<CalibrationPoint>& points);

/// One thing to know of a calibration before it is saved.
struct CalibrationFinding {
    bool good = true; ///< false: panels would not get the level that they show
    std::string text;
};
/// What speaks for and against a whole sweep and what was chosen from it.
std::vector<CalibrationFinding> judgeCalibration(const std::vector<CalibrationPoint>& points,
                                                 const CalibrationChoices& choices);
/// The largest distance of a level from its target, volts.
double worstResidual(const CalibrationChoices& choices);

/// The supply and the converter that a sweep works on.
class CalibrationRig {
  public:
    virtual ~CalibrationRig() = default;
    /// The supply's DAC takes the code; events may run.
    virtual void setCode(int code) = 0;
    /// Waits for 10 ms and converts. \return volts at the pin
    virtual double convert() = 0;
    /// How often the link was lost or a report not taken so far. A reading across one is none: the DAC may
    /// still have another code.
    virtual unsigned losses() const = 0;
    /// The board may have lost its settings with the link: connects the converter again.
    virtual void recover() = 0;
    /// False if somebody else has switched the supply off or moved code or channel: events run in a sweep.
    virtual bool undisturbed(int code) const = 0;
    virtual bool aborted() const = 0;
    virtual void letEventsRun() = 0;
};

enum class CalibrationEnd { Completed, Aborted, Disturbed };

/// Measures the supply at each of its codes, from the lowest to the highest.
class CalibrationSweep {
  public:
    /// Noise of one count and more may never give two equal readings: after so many pairs the last one
    /// stands.
    static constexpr int kMostPairs = 200;
    /// Pairs after which events run: a supply that does not settle must not keep Abort from being heard.
    static constexpr int kPairsBetweenEvents = 10;
    /// A code whose measurement was broken by a lost link is measured so often in all.
    static constexpr int kMostTries = 3;

    /// \param measured called for each point in its turn
    CalibrationSweep(CalibrationRig& rig, std::function<void(const CalibrationPoint&)> measured);

    /// Abort is looked for ahead of each code.
    CalibrationEnd run();

  private:
    CalibrationPoint measure(int code);

    CalibrationRig& rig_;
    std::function<void(const CalibrationPoint&)> measured_;
};

} // namespace vrk
