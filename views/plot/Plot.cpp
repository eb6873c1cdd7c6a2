#include "views/plot/Plot.h"

#include "platform/qt/theme.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace vrk {

using namespace qt;

namespace {
constexpr int kPaceMs = 100; ///< between two drawings of the traces
constexpr double kWheelZoom = 0.8;
} // namespace

Plot::Plot(const QString& name)
    : drawing_(*this, {.name = name,
                       .paint = [this](QPainter& painter,
                                       const QRectF& area) { picture(area).paint(painter, palette()); },
                       .numbers = [this] { return model_.csv(); }}),
      menu_(new QMenu(this)) {
    setAccessibleName(name);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setFont(textFont(kSmall));
    pace_.setSingleShot(true);
    connect(&pace_, &QTimer::timeout, this, [this] { update(); });
    drawing_.addTo(*menu_);
    addMenuEntry("Show all", [this] { showAll(); });
}

void Plot::addMenuEntry(const QString& text, std::function<void()> act) {
    connect(menu_->addAction(text), &QAction::triggered, this, std::move(act));
}

void Plot::changed() {
    stale_ = true;
    if (pace_.isActive())
        return;
    const qint64 stood = sinceDrawn_.isValid() ? sinceDrawn_.elapsed() : kPaceMs;
    pace_.start(static_cast<int>(std::max<qint64>(0, kPaceMs - stood)));
}

void Plot::showAll() {
    zoom(0, 0);
}

void Plot::zoom(double from, double to) {
    from_ = std::max(from, model_.x.from);
    to_ = std::min(to, model_.x.to);
    if (from_ <= model_.x.from && to_ >= model_.x.to)
        to_ = from_; // all of it, also when the axis grows
    changed();
}

void Plot::zoomAround(double x, double factor) {
    const double from = to_ > from_ ? from_ : model_.x.from;
    const double to = to_ > from_ ? to_ : model_.x.to;
    const double least = (model_.x.to - model_.x.from) / 1e6; // closer than this no two points are told apart
    if ((to - from) * factor < least)
        return;
    zoom(x - (x - from) * factor, x + (to - x) * factor);
}

PlotPicture Plot::picture(const QRectF& area) const {
    const bool zoomed = to_ > from_;
    return {model_, area, font(), zoomed ? from_ : model_.x.from, zoomed ? to_ : model_.x.to};
}

QString Plot::spotWords() const {
    return spot_ ? spot_->words : QString();
}

QSize Plot::sizeHint() const {
    return {dp(480), dp(178)};
}

QSize Plot::minimumSizeHint() const {
    return {dp(160), dp(60)};
}

void Plot::draw() {
    drawn_ = QPixmap(size() * devicePixelRatioF());
    drawn_.setDevicePixelRatio(devicePixelRatioF());
    drawn_.fill(palette().color(QPalette::Window));
    QPainter painter(&drawn_);
    picture(rect()).paint(painter, palette());
    stale_ = false;
    sinceDrawn_.restart();
    ++redraws_;
}

void Plot::paintEvent(QPaintEvent*) {
    if (drawn_.isNull() || drawn_.size() != size() * devicePixelRatioF() || (stale_ && !pace_.isActive()))
        draw();
    QPainter painter(this);
    painter.drawPixmap(0, 0, drawn_);
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
    if (model_.empty())
        return;
    const PlotPicture now = picture(rect());
    if (dragFrom_) {
        QColor mark = palette().color(QPalette::Highlight);
        mark.setAlphaF(0.2F);
        const QRectF place = now.plotArea();
        painter.fillRect(QRectF(QPointF(now.pixelOf(*dragFrom_), place.top()),
                                QPointF(now.pixelOf(dragTo_), place.bottom())),
                         mark);
    }
    if (spot_)
        now.paintCrosshair(painter, palette(), *spot_);
}

void Plot::resizeEvent(QResizeEvent*) {
    stale_ = true;
}

void Plot::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        drawn_ = QPixmap();
}

void Plot::moveSpot(double x, std::optional<double> pixelY) {
    spot_ = picture(rect()).spotAt(x, pixelY);
    setAccessibleDescription(spotWords());
    update();
}

void Plot::stepSpot(int by) {
    if (!spot_)
        return moveSpot(to_ > from_ ? from_ : model_.x.from, std::nullopt);
    const auto& points = model_.panes.front().series.at(spot_->series).points;
    const auto at = std::lower_bound(points.begin(), points.end(), spot_->x,
                                     [](const QPointF& point, double x) { return point.x() < x; });
    const auto index = std::clamp<std::ptrdiff_t>(at - points.begin() + by, 0, std::ssize(points) - 1);
    const QPointF& next = points[static_cast<std::size_t>(index)];
    moveSpot(next.x(), std::nullopt);
}

void Plot::wheelEvent(QWheelEvent* event) {
    if (model_.empty())
        return;
    const double turned = event->angleDelta().y() / 120.0;
    zoomAround(picture(rect()).xAt(event->position().x()), std::pow(kWheelZoom, turned));
    event->accept();
}

void Plot::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || model_.empty())
        return;
    dragFrom_ = dragTo_ = picture(rect()).xAt(event->position().x());
}

void Plot::mouseMoveEvent(QMouseEvent* event) {
    const double x = picture(rect()).xAt(event->position().x());
    if (dragFrom_)
        dragTo_ = x;
    moveSpot(x, event->position().y());
}

void Plot::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !dragFrom_)
        return;
    const PlotPicture now = picture(rect());
    const double from = *std::exchange(dragFrom_, std::nullopt);
    const double to = now.xAt(event->position().x());
    constexpr double kLeastDrag = 6; // a hand that trembles while clicking marks nothing
    if (std::abs(now.pixelOf(to) - now.pixelOf(from)) >= kLeastDrag)
        zoom(std::min(from, to), std::max(from, to));
    update();
}

void Plot::mouseDoubleClickEvent(QMouseEvent*) {
    showAll();
}

void Plot::leaveEvent(QEvent*) {
    if (hasFocus())
        return; // the keys moved it there
    spot_.reset();
    update();
}

void Plot::keyPressEvent(QKeyEvent* event) {
    const double middle = spot_ ? spot_->x : (model_.x.from + model_.x.to) / 2;
    if (event->matches(QKeySequence::Copy))
        drawing_.copy();
    else if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right)
        stepSpot(event->key() == Qt::Key_Left ? -1 : 1);
    else if (event->key() == Qt::Key_Home || event->key() == Qt::Key_End)
        moveSpot(event->key() == Qt::Key_Home ? model_.x.from : model_.x.to, std::nullopt);
    else if (event->key() == Qt::Key_Plus)
        zoomAround(middle, kWheelZoom);
    else if (event->key() == Qt::Key_Minus)
        zoomAround(middle, 1 / kWheelZoom);
    else if (event->key() == Qt::Key_0)
        showAll();
    else
        QWidget::keyPressEvent(event);
}

void Plot::contextMenuEvent(QContextMenuEvent* event) {
    menu_->popup(event->globalPos());
}

} // namespace vrk
