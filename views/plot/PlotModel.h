#pragma once

#include <QPointF>
#include <QString>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace vrk {

/// What a plot shows, without any drawing: volts over the position, a calibration curve with its targets, the
/// drift of a long test with its limits. All panes share the horizontal axis.

/// Tells traces apart where their colours do not.
enum class PlotMark { None, Disc, Square, Triangle, Diamond };
/// Colours by what they stand for; the plot looks them up in the shade in use.
enum class PlotInk { Channel0, Channel1, Channel2, Channel3, Quiet, Earlier };

struct PlotSeries {
    QString name{}; ///< in the legend; empty: not there
    PlotInk ink = PlotInk::Channel0;
    PlotMark endMark = PlotMark::None; ///< at the last point
    bool dashed = false;               ///< what is compared with: an ideal line, an earlier file
    bool bars = false;                 ///< from 0 to each point instead of a line
    std::vector<QPointF> points{};     ///< by rising x

    /// Puts the point in its order; one at the same x is replaced.
    void put(double x, double y);
};

struct PlotAxis {
    enum class Steps { Decimal, Binary }; ///< 1, 2, 5, 10 ... or 1, 2, 4, 8 ...

    QString title{}; ///< "Volts"
    QString unit{};  ///< behind the crosshair's value, "V"; may be empty
    int decimals = 0;
    double from = 0; ///< always in sight; the axis grows to take in what is drawn
    double to = 1;
    Steps steps = Steps::Decimal;
    bool sign = false; ///< values with their sign
    bool hex = false;  ///< codes: two hexadecimal digits
};

/// A value that was wanted, and the point that comes closest to it.
struct PlotTarget {
    QPointF at;
    QString name{}; ///< "3.3"
};

struct PlotPane {
    PlotAxis y;
    std::vector<PlotSeries> series;
    double share = 1;                                ///< of the height
    std::optional<std::pair<double, double>> limits; ///< a band with dashed edges
    std::vector<PlotTarget> targets;                 ///< diamonds with a dotted line to either axis
    std::vector<QPointF> fails;                      ///< red crosses
};

struct PlotModel {
    PlotAxis x; ///< its range is exactly from..to
    std::vector<PlotPane> panes;
    std::vector<std::pair<double, double>> resumed; ///< stretches of x measured after an interruption
    QString emptyWords;                             ///< how to fill the plot
    /// The numbers for a file; empty: a line a point, "series,x,y".
    std::function<QString()> numbers;

    /// No trace has a point; lines to compare with do not count.
    bool empty() const;
    QString csv() const;
};

} // namespace vrk
