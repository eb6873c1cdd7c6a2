#pragma once

#include <QPainter>
#include <QWidget>

#include <functional>

namespace vrk::qt {

/// A drawing that takes a double click (or Enter, with the keyboard on it).
class PictureWidget final : public QWidget {
  public:
    using Draw = std::function<void(QPainter& painter, const QRectF& area, const QPalette& palette)>;

    /// \param size room that the drawing wants.
    PictureWidget(QSize size, Draw draw, QWidget* parent = nullptr);
    std::function<void()> doubleClicked;
    QSize sizeHint() const override { return size_; }
    QSize minimumSizeHint() const override { return size_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QSize size_;
    Draw draw_;
};

} // namespace vrk::qt
