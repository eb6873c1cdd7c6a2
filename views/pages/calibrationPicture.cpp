#include "views/pages/calibrationPicture.h"

#include "motherboard/FrmVCCCal.h"
#include "platform/qt/theme.h"
#include "platform/runtime/text.h"
#include "views/plot/Plot.h"

#include <algorithm>

namespace vrk {

namespace {

constexpr double kMillivolts = 1000;
constexpr double kResidualShare = 0.38;

/// "file of 6/12/2008"
QString fileName(const CalibrationFile& file) {
    const QString date = QString::fromStdString(file.header).section(' ', 3, 3);
    return date.isEmpty() ? QString("file as it was") : "file of " + date;
}

PlotSeries levelsOf(const CalibrationFile& file) {
    PlotSeries series{.name = fileName(file), .ink = PlotInk::Earlier, .dashed = true};
    for (const CalibrationFile::Row& row : file.rows) {
        const bool code =
            row.hex.size() == 2 && row.hex.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
        if (code && isNumeric(row.vcc))
            series.put(hexToInt(row.hex), leadingNumber(row.vcc));
    }
    return series;
}

QString numbersOf(const std::vector<CalibrationPoint>& points) {
    QString text = "code,pinVolts,volts\n";
    const auto volts = [](const CalibrationPoint& point, double value) {
        return point.read ? formatNumber(value, "0.000000") : std::string();
    };
    for (const CalibrationPoint& point : points)
        text += QString::fromStdString(byteToHex2(toByte(point.code)) + "," + volts(point, point.volts) +
                                       "," + volts(point, point.vcc()) + "\n");
    return text;
}

} // namespace

CalibrationPicture::CalibrationPicture() : plot_(new Plot("VCC over code")) {
    plot_->setObjectName("curve");
    plot_->setMinimumHeight(qt::dp(200));
    PlotModel& model = plot_->model();
    model.x = {.title = "Code (hex)",
               .unit = "hex",
               .from = 0,
               .to = kCalibrationCodes - 1,
               .steps = PlotAxis::Steps::Binary,
               .hex = true};
    model.emptyWords = "Take the part out of the socket, then press Run Calibrate: "
                       "it measures VCC at each of its 128 codes.";
    PlotPane curve;
    curve.y = {.title = "VCC (V)", .unit = "V", .decimals = 3, .from = 1, .to = 5};
    PlotPane residuals;
    residuals.y = {.title = "mV", .unit = "mV", .decimals = 0, .from = -20, .to = 20, .sign = true};
    residuals.share = kResidualShare;
    model.panes = {curve, residuals};
}

void CalibrationPicture::show(const FrmVCCCal& panel) {
    const FrmVCCCal::Run& run = panel.lastRun();
    PlotModel& model = plot_->model();
    PlotPane& curve = model.panes[0];
    PlotPane& residuals = model.panes[1];
    PlotSeries measured{.name = run.points.empty() ? QString() : QString("measured now")};
    curve.fails.clear();
    for (const CalibrationPoint& point : run.points) {
        if (point.read)
            measured.put(point.code, point.vcc());
        if (!point.read || !point.settled)
            curve.fails.emplace_back(point.code, point.vcc());
    }
    curve.series = {measured};
    if (run.before)
        curve.series.push_back(levelsOf(*run.before));
    curve.targets.clear();
    PlotSeries off{.bars = true};
    if (run.completed())
        for (std::size_t target = 0; target < run.choices.size(); ++target) {
            const CalibrationChoice& choice = run.choices.at(target);
            const double wanted = kCalibrationTargets.at(target);
            curve.targets.push_back({QPointF(choice.code, choice.vcc()), QString::number(wanted, 'f', 1)});
            off.put(choice.code, (choice.vcc() - wanted) * kMillivolts);
        }
    residuals.series = {off};
    model.numbers = [points = run.points] { return numbersOf(points); };
    plot_->changed();
}

} // namespace vrk
