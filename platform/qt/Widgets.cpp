#include "platform/qt/Widgets.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QWheelEvent>

#include <algorithm>
#include <array>

namespace vrk::qt {

QColor lampColour(Colour colour) {
    static constexpr std::array<QRgb, 18> kColours = {
        0xff3a3f44, 0xff2f5fd0, 0xff1f8a3b, 0xff168a90, 0xffa02020, 0xff8a2f8a,
        0xff8a5a1f, 0xffb8bcc0, 0xff70757a, 0xff4f8ff7, 0xff35b558, 0xff38c4cc,
        0xffe0453d, 0xffd65fd6, 0xffe8c13a, 0xfff4f6f8, 0xffff0000, 0xff00c000};
    return QColor::fromRgb(kColours[static_cast<std::size_t>(colour)]);
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

void LevelBar::setState(Freshness::State state) {
    state_ = state;
    describe();
    update();
}

void LevelBar::describe() {
    setAccessibleDescription(state_ == Freshness::State::Never
                                 ? QString("not read yet")
                                 : QString("%1 of %2").arg(value_).arg(maximum_));
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
    painter.setPen(palette().color(QPalette::Dark));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(groove, round, round);
    const double share = maximum_ > 0 ? std::clamp(static_cast<double>(value_) / maximum_, 0.0, 1.0) : 0.0;
    QPainterPath inside;
    inside.addRoundedRect(groove.adjusted(0.5, 0.5, -0.5, -0.5), round, round);
    painter.setClipPath(inside);
    QRectF fill = groove;
    fill.setWidth(state_ == Freshness::State::Never ? 0.0 : groove.width() * share);
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    painter.fillRect(fill, state_ == Freshness::State::Stale ? palette().color(group, QPalette::Mid)
                                                             : palette().color(group, QPalette::Highlight));
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

ToneLabel::ToneLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
}

void ToneLabel::setTone(Tone tone) {
    if (std::exchange(tone_, tone) == tone)
        return;
    setForegroundRole(tone == Tone::Quiet ? QPalette::PlaceholderText : QPalette::NoRole);
    update();
}

void ToneLabel::paintEvent(QPaintEvent* event) {
    // The colours of the other tones are no palette roles; they are looked up now, since the shade may have
    // changed since the last time.
    if (tone_ == Tone::Plain || tone_ == Tone::Quiet || hasSelectedText())
        return QLabel::paintEvent(event);
    QPainter painter(this);
    painter.setPen(toneColour(tone_));
    painter.drawText(contentsRect(), static_cast<int>(alignment()) | (wordWrap() ? Qt::TextWordWrap : 0),
                     text());
}

ValueLabel::ValueLabel(const QString& widest, double scale, QWidget* parent)
    : ToneLabel(parent), widest_(widest) {
    setFont(valueFont(scale));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

QSize ValueLabel::sizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(widest_) + 4, metrics.height()};
}

AgeLabel::AgeLabel() {
    setFont(textFont(kSmall));
    setTone(Tone::Quiet);
    older_.setInterval(1000);
    QObject::connect(&older_, &QTimer::timeout, this, [this] { refresh(); });
}

void AgeLabel::refresh() {
    if (!words)
        return;
    const auto [said, tone] = words();
    setTone(tone);
    if (text() != said)
        setText(said);
}

void AgeLabel::showEvent(QShowEvent* event) {
    ToneLabel::showEvent(event);
    refresh();
    older_.start();
}

void AgeLabel::hideEvent(QHideEvent* event) {
    ToneLabel::hideEvent(event);
    older_.stop();
}

namespace {
QString duration(Milliseconds age) {
    const auto seconds = std::max<long long>(0, age.count() / 1000);
    if (seconds < 60)
        return QString("%1 s").arg(seconds);
    if (seconds < 3600)
        return QString("%1 min").arg(seconds / 60);
    return QString("%1 h").arg(seconds / 3600);
}
} // namespace

std::pair<QString, Tone> ageWords(const Freshness& freshness, Milliseconds now) {
    const QString age = duration(now - freshness.since);
    switch (freshness.state) {
    case Freshness::State::Never:
        if (freshness.failed)
            return {"read failed", Tone::Failed};
        return {"not read yet", Tone::Quiet};
    case Freshness::State::Fresh:
        return {"read " + age + " ago", Tone::Quiet};
    case Freshness::State::Stale:
        break;
    }
    // Of the last good one: what stands there now may be what the failed one left.
    if (freshness.failed)
        return {"last read failed; good " + age + " ago", Tone::Failed};
    const QString cause = QString::fromStdString(freshness.cause);
    return {cause.isEmpty() ? age + " old" : age + " old, " + cause, Tone::Quiet};
}

SegmentedSwitch::SegmentedSwitch(const QString& first, const QString& second) : words_{first, second} {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SegmentedSwitch::setChosen(int segment) {
    chosen_ = segment;
    setAccessibleDescription(segment < 0 ? QString() : words_.at(static_cast<std::size_t>(segment)));
    update();
}

QSize SegmentedSwitch::sizeHint() const {
    return {dp(78), dp(24)};
}

void SegmentedSwitch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& p = palette();
    const QRectF all = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath shape;
    shape.addRoundedRect(all, 3, 3);
    painter.fillPath(shape, p.color(isEnabled() ? QPalette::Button : QPalette::Window));
    for (int segment = 0; segment < 2; ++segment) {
        const QRectF part(all.left() + segment * all.width() / 2, all.top(), all.width() / 2, all.height());
        const bool on = segment == chosen_;
        if (on) {
            painter.save();
            painter.setClipPath(shape);
            painter.fillRect(part, isEnabled() ? toneColour(Tone::Plain) : p.color(QPalette::Mid));
            painter.restore();
        }
        painter.setFont(textFont(1.0, on));
        painter.setPen(on && isEnabled() ? p.color(QPalette::Base) : p.color(QPalette::ButtonText));
        painter.drawText(part, Qt::AlignCenter, words_.at(static_cast<std::size_t>(segment)));
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(hasFocus() ? QPen(p.color(QPalette::Highlight), 2)
                              : QPen(p.color(isEnabled() ? QPalette::Dark : QPalette::Mid), 1));
    painter.drawPath(shape);
}

void SegmentedSwitch::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && picked)
        picked(event->position().x() < width() / 2.0 ? 0 : 1);
}

void SegmentedSwitch::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Left && picked)
        picked(0);
    else if (event->key() == Qt::Key_Right && picked)
        picked(1);
    else if ((event->key() == Qt::Key_Space || event->key() == Qt::Key_Return) && picked)
        picked(chosen_ == 0 ? 1 : 0);
    else
        QWidget::keyPressEvent(event);
}

} // namespace vrk::qt
