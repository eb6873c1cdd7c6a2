#pragma once

#include "views/FastDrawing.h"
#include "views/plot/PlotPicture.h"

#include <QElapsedTimer>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

class QMenu;

namespace vrk {

/// A plot on the screen: crosshair, zoom along the horizontal axis, copy and export. The mouse wheel zooms
/// around the mouse, dragging marks a stretch; the arrow keys move the crosshair, + and - zoom, 0 shows all.
class Plot final : public QWidget {
  public:
    explicit Plot(const QString& name);

    PlotModel& model() { return model_; }
    const PlotModel& model() const { return model_; }
    /// The model has changed. Redrawn at most ten times a second, however often it is called.
    void changed();
    /// The whole horizontal axis.
    void showAll();
    void zoom(double from, double to);
    double from() const { return from_; }
    double to() const { return to_; }
    /// Words in the crosshair's box; empty where there is none.
    QString spotWords() const;
    /// How often the traces were drawn.
    int redraws() const { return redraws_; }

    /// The traces as they are in sight, without crosshair; their numbers are all of them.
    FastDrawing& drawing() { return drawing_; }
    /// An entry of the plot's own menu, behind copy and save.
    void addMenuEntry(const QString& text, std::function<void()> act);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    PlotPicture picture(const QRectF& area) const;
    void draw();
    void zoomAround(double x, double factor);
    void moveSpot(double x, std::optional<double> pixelY);
    void stepSpot(int by);

    PlotModel model_;
    double from_ = 0;
    double to_ = 0; ///< not above from_: all is shown
    std::optional<PlotPicture::Spot> spot_;
    std::optional<double> dragFrom_; ///< x where the mouse button went down
    double dragTo_ = 0;
    QPixmap drawn_;
    bool stale_ = true;
    QTimer pace_;
    QElapsedTimer sinceDrawn_;
    int redraws_ = 0;
    FastDrawing drawing_;
    QMenu* menu_;
};

} // namespace vrk
