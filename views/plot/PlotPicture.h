#pragma once

#include "views/plot/PlotModel.h"

#include <QFont>
#include <QRectF>

#include <optional>
#include <vector>

class QPainter;
class QPalette;

namespace vrk {

/// One drawing of a plot at one size: knows where everything stands, for painting and for the crosshair.
class PlotPicture {
  public:
    /// \param area in the painter's units. \param font of the axes. \param from, to the part of the
    /// horizontal axis that is in sight.
    PlotPicture(const PlotModel& model, const QRectF& area, const QFont& font, double from, double to);

    /// Everything but the crosshair. A trace with more points than pixels is drawn as the least and the
    /// greatest of each column of pixels, so that its cost follows the width and no peak is lost.
    void paint(QPainter& painter, const QPalette& palette) const;

    /// A place on the crosshair: the point nearest to the mouse, and its value in every pane.
    struct Spot {
        double x = 0;
        std::size_t series = 0;
        QString words; ///< "63 · 2.470 V · +0.23 LSB"
    };
    /// Nothing without points. \param y chooses among traces; nothing takes the first that has points.
    std::optional<Spot> spotAt(double x, std::optional<double> pixelY = std::nullopt) const;
    void paintCrosshair(QPainter& painter, const QPalette& palette, const Spot& spot) const;

    double xAt(double pixel) const;
    double pixelOf(double x) const;
    QRectF plotArea() const;

  private:
    struct Pane {
        QRectF place;
        double low = 0;
        double high = 1;
    };
    double pixelY(const Pane& pane, double y) const;
    void fit(std::size_t pane);
    /// The marks of a pane's vertical axis.
    struct Ticks {
        double step;
        int decimals;
    };
    Ticks ticksOf(std::size_t pane) const;
    void paintGrid(QPainter& painter, const QPalette& palette, std::size_t pane) const;
    void paintPane(QPainter& painter, const QPalette& palette, std::size_t pane) const;
    void paintTargets(QPainter& painter, const QPalette& palette, const Pane& pane,
                      const std::vector<PlotTarget>& targets) const;
    void paintBars(QPainter& painter, const QPalette& palette, const Pane& pane,
                   const PlotSeries& series) const;
    void paintTrace(QPainter& painter, const Pane& pane, const PlotSeries& series) const;
    void paintLegend(QPainter& painter, const QPalette& palette) const;

    const PlotModel& model_;
    QRectF area_;
    QFont font_;
    double from_;
    double to_;
    std::vector<Pane> panes_;
};

} // namespace vrk
