#include "views/plot/PlotModel.h"

#include <algorithm>

namespace vrk {

void PlotSeries::put(double x, double y) {
    const auto at = std::lower_bound(points.begin(), points.end(), x,
                                     [](const QPointF& point, double value) { return point.x() < value; });
    if (at != points.end() && at->x() == x)
        at->setY(y);
    else
        points.insert(at, QPointF(x, y));
}

bool PlotModel::empty() const {
    return std::all_of(panes.begin(), panes.end(), [](const PlotPane& pane) {
        return std::all_of(pane.series.begin(), pane.series.end(),
                           [](const PlotSeries& series) { return series.dashed || series.points.empty(); });
    });
}

QString PlotModel::csv() const {
    if (numbers)
        return numbers();
    QString text = "series," + x.title.toLower() + ",value\n";
    for (const PlotPane& pane : panes)
        for (const PlotSeries& series : pane.series)
            for (const QPointF& point : series.points)
                text += QString("%1,%2,%3\n")
                            .arg(series.name)
                            .arg(point.x(), 0, 'g', 10)
                            .arg(point.y(), 0, 'g', 10);
    return text;
}

} // namespace vrk
