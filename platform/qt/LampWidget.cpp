#include "platform/qt/Widgets.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace vrk::qt {

namespace {

/// Long enough to be seen, short enough to be over before the next transaction.
constexpr int kHaloMs = 160;

using Role = LampWidget::Role;

bool isGood(Colour colour) {
    return colour == Colour::LightGreen || colour == Colour::Green || colour == Colour::PureGreen;
}
bool isBad(Colour colour) {
    return colour == Colour::LightRed || colour == Colour::Red || colour == Colour::PureRed;
}

// Signs are drawn in a square from -1 to 1.

QPainterPath lines(std::initializer_list<std::initializer_list<QPointF>> strokes) {
    QPainterPath path;
    for (const auto& stroke : strokes) {
        auto at = stroke.begin();
        path.moveTo(*at);
        for (++at; at != stroke.end(); ++at)
            path.lineTo(*at);
    }
    return path;
}
QPainterPath tick() {
    return lines({{{-0.45, 0.02}, {-0.12, 0.36}, {0.46, -0.34}}});
}
QPainterPath cross() {
    return lines({{{-0.4, -0.4}, {0.4, 0.4}}, {{0.4, -0.4}, {-0.4, 0.4}}});
}
QPainterPath arrow(double way) { // 1: in, -1: out
    return lines(
        {{{0, -0.5 * way}, {0, 0.5 * way}}, {{-0.36, 0.12 * way}, {0, 0.5 * way}, {0.36, 0.12 * way}}});
}
QPainterPath dash() {
    return lines({{{-0.45, 0}, {0.45, 0}}});
}

QPen round(const QColor& colour, double width) {
    QPen pen(colour, width);
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

void disc(QPainter& painter, const QColor& colour, const QPainterPath& sign, const QPalette& palette) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(QPointF(0, 0), 0.94, 0.94);
    painter.setPen(round(palette.color(QPalette::Base), 0.26));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(sign);
}
void ring(QPainter& painter, const QColor& colour, const QPainterPath& sign) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(round(colour, 0.2));
    painter.drawEllipse(QPointF(0, 0), 0.84, 0.84);
    painter.drawPath(sign);
}
void failed(QPainter& painter, const QPalette& palette) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours().failure);
    painter.drawRoundedRect(QRectF(-0.9, -0.9, 1.8, 1.8), 0.2, 0.2);
    painter.setPen(round(palette.color(QPalette::Base), 0.26));
    painter.drawPath(cross());
}
void unlit(QPainter& painter, const QPalette& palette) {
    const QColor quiet = palette.color(QPalette::Active, QPalette::Dark);
    painter.setPen(QPen(quiet, 0.16));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QPointF(0, 0), 0.84, 0.84);
    painter.setPen(Qt::NoPen);
    painter.setBrush(quiet);
    painter.drawEllipse(QPointF(0, 0), 0.18, 0.18);
}
void power(QPainter& painter, bool on, const QPalette& palette) {
    if (!on) {
        painter.setPen(round(palette.color(QPalette::Active, QPalette::Dark), 0.2));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(QPointF(0, 0), 0.84, 0.84);
        painter.drawLine(QPointF(-0.58, -0.58), QPointF(0.58, 0.58));
        return;
    }
    painter.setPen(round(colours().power, 0.28));
    painter.setBrush(Qt::NoBrush);
    painter.drawArc(QRectF(-0.72, -0.62, 1.44, 1.44), (90 + 38) * 16, (360 - 76) * 16);
    painter.drawLine(QPointF(0, -0.86), QPointF(0, -0.1));
}
void edge(QPainter& painter, bool high, const QPalette& palette) {
    painter.setPen(QPen(palette.color(QPalette::WindowText), 0.2));
    painter.setBrush(Qt::NoBrush);
    const double from = high ? 0.6 : -0.6;
    painter.drawPath(lines({{{-0.9, from}, {0, from}, {0, -from}, {0.9, -from}}}));
}

} // namespace

void drawLamp(QPainter& painter, const QRectF& place, Colour colour, Role role, const QPalette& palette) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(place.center());
    const double radius = std::min(place.width(), place.height()) / 2;
    painter.scale(radius, radius);
    const bool lit = colour != Colour::Black;
    if (role == Role::Supply)
        power(painter, lit, palette);
    else if (role == Role::Pin)
        edge(painter, lit, palette);
    else if (!lit)
        unlit(painter, palette);
    else if (isBad(colour))
        failed(painter, palette);
    else if (colour == Colour::Green && role != Role::Stage)
        ring(painter, colours().good, tick());
    else if (isGood(colour))
        disc(painter, colours().good, tick(), palette);
    else if (colour == Colour::LightBlue && role == Role::Stage)
        disc(painter, colours().changed, lines({{{-0.24, -0.36}, {0.4, 0}, {-0.24, 0.36}, {-0.24, -0.36}}}),
             palette);
    else if (colour == Colour::LightBlue)
        disc(painter, colours().changed, arrow(1), palette);
    else if (colour == Colour::Yellow)
        disc(painter, colours().source, role == Role::Map ? arrow(-1) : dash(), palette);
    else if (colour == Colour::Blue)
        ring(painter, colours().blue, arrow(1));
    else
        disc(painter, lampColour(colour), {}, palette);
    painter.restore();
}

LampWidget::LampWidget(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    halo_.setSingleShot(true);
    halo_.setInterval(kHaloMs);
    QObject::connect(&halo_, &QTimer::timeout, this, [this] { update(); });
    describe();
}

void LampWidget::describe() {
    const auto name = colourName(colour_);
    const QString colour = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    setAccessibleDescription(word());
    const QString words = name_.isEmpty() ? colour : name_ + ": " + word() + ", " + colour;
    setAccessibleName(words);
    setToolTip(words);
    update();
}

void LampWidget::setName(const QString& name) {
    name_ = name;
    describe();
}

void LampWidget::setRole(Role role) {
    role_ = role;
    describe();
}

void LampWidget::setSide(int side) {
    side_ = side;
    updateGeometry();
}

void LampWidget::setColour(Colour colour) {
    colour_ = colour;
    describe();
}

void LampWidget::blink() {
    halo_.start();
    update();
}

QString LampWidget::word() const {
    const bool lit = colour_ != Colour::Black;
    if (role_ == Role::Supply)
        return lit ? "on" : "off";
    if (role_ == Role::Pin)
        return lit ? "HI" : "LO";
    if (!lit)
        return role_ == Role::Status ? "off" : "not yet";
    if (isGood(colour_))
        return "good";
    if (isBad(colour_))
        return "failed";
    if (colour_ == Colour::LightBlue)
        return role_ == Role::Stage ? "in progress" : "changed";
    if (colour_ == Colour::Yellow)
        return role_ == Role::Map ? "source" : "measured";
    if (colour_ == Colour::Blue)
        return "changed";
    const auto name = colourName(colour_);
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

QSize LampWidget::sizeHint() const {
    return {dp(side_), dp(side_)};
}

void LampWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const double side = std::min(width(), height());
    const QRectF place((width() - side) / 2, (height() - side) / 2, side, side);
    if (halo_.isActive()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colours().goodGround);
        painter.drawEllipse(place);
        drawLamp(painter, place.adjusted(2, 2, -2, -2), colour_, role_, palette());
        return;
    }
    drawLamp(painter, place.adjusted(0.5, 0.5, -0.5, -0.5), colour_, role_, palette());
}

} // namespace vrk::qt
