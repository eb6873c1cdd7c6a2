#include "platform/qt/Widgets.h"

#include "platform/qt/theme.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>

#include <algorithm>
#include <array>

namespace vrk::qt {

namespace {

/// Long enough to be seen, short enough to be over before the next transaction.
constexpr int kHaloMs = 160;

bool isGood(Colour colour) {
    return colour == Colour::LightGreen || colour == Colour::Green || colour == Colour::PureGreen;
}
bool isBad(Colour colour) {
    return colour == Colour::LightRed || colour == Colour::Red || colour == Colour::PureRed;
}

/// A sign that is told from the others by its shape.
QPainterPath lampSign(Colour colour, LampWidget::Meaning meaning) {
    // Drawn in a square from -1 to 1.
    QPainterPath path;
    if (meaning == LampWidget::Meaning::Supply && isBad(colour)) {
        path.moveTo(0, -0.5);
        path.lineTo(0, 0.5);
    } else if (isGood(colour)) {
        path.moveTo(-0.45, 0.02);
        path.lineTo(-0.12, 0.36);
        path.lineTo(0.46, -0.34);
    } else if (isBad(colour)) {
        path.moveTo(-0.36, -0.36);
        path.lineTo(0.36, 0.36);
        path.moveTo(0.36, -0.36);
        path.lineTo(-0.36, 0.36);
    } else if (colour == Colour::LightBlue) { // receives a transfer
        path.moveTo(-0.4, -0.2);
        path.lineTo(0, 0.3);
        path.lineTo(0.4, -0.2);
    } else if (colour == Colour::Yellow) { // gives it
        path.moveTo(-0.4, 0.2);
        path.lineTo(0, -0.3);
        path.lineTo(0.4, 0.2);
    } else if (colour == Colour::Blue) { // steps
        path.moveTo(-0.45, 0.3);
        path.lineTo(0, 0.3);
        path.lineTo(0, -0.3);
        path.lineTo(0.45, -0.3);
    }
    return path;
}

} // namespace

QColor lampColour(Colour colour) {
    static constexpr std::array<QRgb, 18> kColours = {
        0xff3a3f44, 0xff2f5fd0, 0xff1f8a3b, 0xff168a90, 0xffa02020, 0xff8a2f8a,
        0xff8a5a1f, 0xffb8bcc0, 0xff70757a, 0xff4f8ff7, 0xff35b558, 0xff38c4cc,
        0xffe0453d, 0xffd65fd6, 0xffe8c13a, 0xfff4f6f8, 0xffff0000, 0xff00c000};
    return QColor::fromRgb(kColours[static_cast<std::size_t>(colour)]);
}

LampWidget::LampWidget(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    halo_.setSingleShot(true);
    halo_.setInterval(kHaloMs);
    QObject::connect(&halo_, &QTimer::timeout, this, [this] { update(); });
    setAccessibleDescription(word());
}

void LampWidget::setMeaning(Meaning meaning) {
    meaning_ = meaning;
    setAccessibleDescription(word());
    update();
}

void LampWidget::setColour(Colour colour) {
    colour_ = colour;
    setAccessibleDescription(word());
    update();
}

void LampWidget::blink() {
    halo_.start();
    update();
}

QString LampWidget::word() const {
    if (isGood(colour_))
        return "good";
    if (isBad(colour_))
        return meaning_ == Meaning::Supply ? "on" : "failed";
    if (colour_ == Colour::Black)
        return "off";
    const auto name = colourName(colour_);
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

QSize LampWidget::sizeHint() const {
    const int side = fontMetrics().height() + 6;
    return {side, side};
}

void LampWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double radius = std::min(width(), height()) / 2.0 - 3.0;
    painter.translate(width() / 2.0, height() / 2.0);
    if (halo_.isActive()) {
        QColor halo = lampColour(colour_);
        halo.setAlphaF(0.35F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(halo);
        painter.drawEllipse(QPointF(0, 0), radius + 3.0, radius + 3.0);
    }
    if (colour_ == Colour::Black) {
        // Off: an empty socket with a dot, in the window's own colours.
        QColor ring = palette().color(QPalette::WindowText);
        ring.setAlphaF(0.45F);
        painter.setPen(QPen(ring, 1.5));
        painter.setBrush(palette().color(QPalette::Base));
        painter.drawEllipse(QPointF(0, 0), radius - 0.75, radius - 0.75);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ring);
        painter.drawEllipse(QPointF(0, 0), radius * 0.24, radius * 0.24);
        return;
    }
    const QColor fill = lampColour(colour_);
    painter.setPen(QPen(fill.darker(130), 1.0));
    painter.setBrush(fill);
    painter.drawEllipse(QPointF(0, 0), radius - 0.5, radius - 0.5);
    const bool light = fill.lightnessF() > 0.7F;
    QPen pen(light ? Qt::black : Qt::white, std::max(1.6, radius * 0.26));
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    pen.setCosmetic(true);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.scale(radius, radius);
    painter.drawPath(lampSign(colour_, meaning_));
}

LevelBar::LevelBar(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    describe();
}

void LevelBar::setRange(int maximum) {
    maximum_ = maximum;
    describe();
    update();
}

void LevelBar::setValue(int value) {
    value_ = value;
    describe();
    update();
}

void LevelBar::describe() {
    setAccessibleDescription(QString("%1 of %2").arg(value_).arg(maximum_));
}

QSize LevelBar::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 16, fontMetrics().height() * 3 / 4};
}

QSize LevelBar::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 8, sizeHint().height()};
}

void LevelBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF groove = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const double round = groove.height() / 4;
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(groove, round, round);
    const double share = maximum_ > 0 ? std::clamp(static_cast<double>(value_) / maximum_, 0.0, 1.0) : 0.0;
    QPainterPath inside;
    inside.addRoundedRect(groove.adjusted(0.5, 0.5, -0.5, -0.5), round, round);
    painter.setClipPath(inside);
    QRectF fill = groove;
    fill.setWidth(groove.width() * share);
    painter.fillRect(
        fill, palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Highlight));
    QColor mark = palette().color(QPalette::WindowText);
    mark.setAlphaF(0.25F);
    painter.setPen(mark);
    for (int quarter = 1; quarter < 4; ++quarter) {
        const double x = groove.left() + groove.width() * quarter / 4;
        painter.drawLine(QPointF(x, groove.top()), QPointF(x, groove.bottom()));
    }
}

ComboWidget::ComboWidget(QWidget* parent) : QComboBox(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMaxVisibleItems(20);
}

void ComboWidget::setCharacters(int characters) {
    setMinimumContentsLength(characters);
}

void ComboWidget::wheelEvent(QWheelEvent* event) {
    // Scrolling the window past a list must not send a new bus clock to the board.
    event->ignore();
}

ThumbSlider::ThumbSlider(Qt::Orientation orientation, QWidget* parent) : QSlider(orientation, parent) {
    setFocusPolicy(Qt::StrongFocus);
    setTickPosition(QSlider::TicksBelow);
    connect(this, &QSlider::sliderPressed, this, [this] { pressed(); });
    connect(this, &QSlider::sliderMoved, this, [this](int value) { moved(value); });
    connect(this, &QSlider::sliderReleased, this, [this] { released(); });
}

void ThumbSlider::keyPressEvent(QKeyEvent* event) {
    const int before = value();
    QSlider::keyPressEvent(event);
    if (value() == before)
        return;
    if (movingKey_ == 0) {
        movingKey_ = event->key();
        pressed();
    } else {
        moved(value());
    }
}

void ThumbSlider::keyReleaseEvent(QKeyEvent* event) {
    QSlider::keyReleaseEvent(event);
    if (!event->isAutoRepeat() && event->key() == movingKey_)
        keysReleased();
}

void ThumbSlider::focusOutEvent(QFocusEvent* event) {
    QSlider::focusOutEvent(event);
    if (movingKey_ != 0)
        keysReleased();
}

void ThumbSlider::keysReleased() {
    movingKey_ = 0;
    released();
}

void ThumbSlider::wheelEvent(QWheelEvent* event) {
    if (!hasFocus()) {
        event->ignore(); // a passing wheel moves no wiper
        return;
    }
    const int before = value();
    QSlider::wheelEvent(event);
    if (value() != before) {
        pressed();
        released();
    }
}

ValueLabel::ValueLabel(const QString& widest, double scale, QWidget* parent)
    : QLabel(parent), widest_(widest) {
    setTextFormat(Qt::PlainText);
    setFont(valueFont(scale));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

QSize ValueLabel::sizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(widest_) + 4, metrics.height()};
}

} // namespace vrk::qt
