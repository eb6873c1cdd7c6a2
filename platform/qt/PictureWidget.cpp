#include "platform/qt/PictureWidget.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace vrk::qt {

PictureWidget::PictureWidget(QSize size, Draw draw, QWidget* parent)
    : QWidget(parent), size_(size), draw_(std::move(draw)) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void PictureWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font());
    draw_(painter, QRectF(rect()), palette());
}

void PictureWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && doubleClicked)
        doubleClicked();
}

void PictureWidget::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && doubleClicked)
        doubleClicked();
    else
        QWidget::keyPressEvent(event);
}

} // namespace vrk::qt
