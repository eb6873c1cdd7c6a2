#include "views/blocks/PinTimeline.h"

#include "link/reportLayout.h"
#include "platform/qt/theme.h"

#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>

#include <algorithm>
#include <array>
#include <utility>

namespace vrk {

using namespace qt;

namespace {
constexpr int kShowMs = 100; ///< a fast run has hundreds of edges a second
constexpr int kLane = 24;
constexpr std::array<std::uint8_t, 3> kPorts = {report::sfr::P0, report::sfr::P1, report::sfr::P2};
} // namespace

PinTimeline::PinTimeline(hid::WireRecorder* wire, EventLoop& events, std::vector<Pin> pins)
    : events_(events), pins_(std::move(pins)), now_(pins_.size()), before_(pins_.size()) {
    if (wire != nullptr)
        subscription_ = wire->observe([this](const hid::WireEvent& event) { take(event); });
}

int PinTimeline::edgesOf(std::size_t pin, bool high) const {
    return static_cast<int>(std::count_if(edges_.begin(), edges_.end(), [&](const Edge& edge) {
        return edge.pin == pin && edge.high == high;
    }));
}

void PinTimeline::take(const hid::WireEvent& event) {
    const hid::Report& sent = event.report;
    if (event.failed || event.direction != hid::WireEvent::Direction::Out ||
        sent[report::kCommandByte] != static_cast<std::uint8_t>(report::Command::SfrAccess) ||
        sent[report::kSubCommandByte] != report::kWrite)
        return;
    std::vector<Edge> moved;
    for (std::size_t pin = 0; pin < pins_.size(); ++pin) {
        const Pin& its = pins_[pin];
        if (sent[report::kSfrAddress] != kPorts.at(static_cast<std::size_t>(its.port)))
            continue;
        const bool high = (sent[report::kSfrValue] >> static_cast<unsigned>(its.bit) & 1U) != 0;
        const std::optional<bool> was = std::exchange(now_[pin], high);
        if (!was)
            before_[pin] = high; // how it stood ahead of this write nobody knows
        else if (*was != high)
            moved.push_back({pin, high, event.at});
    }
    for (const Edge& edge : moved)
        add(edge);
}

void PinTimeline::add(const Edge& edge) {
    if (action_.expired()) {
        // The loop lets go of the mark when the outermost action is over.
        const auto mark = std::make_shared<char>();
        action_ = mark;
        events_.retire(mark);
        edges_.clear();
        count_ = 0;
        before_ = now_;
        before_[edge.pin] = !edge.high;
    }
    if (count_ < kMost &&
        std::none_of(edges_.begin(), edges_.end(), [&](const Edge& other) { return other.pin == edge.pin; }))
        before_[edge.pin] = !edge.high; // it moved along with the first one, in one write
    edges_.push_back(edge);
    ++count_;
    if (edges_.size() > kMost) {
        before_[edges_.front().pin] = edges_.front().high;
        edges_.pop_front();
    }
    moved_.emit(edge);
}

/// Where time and lanes stand.
struct TimingPicture::Scale {
    QRectF place;
    Milliseconds first{0};
    double total = 1; ///< ms
    double lane = 1;

    double x(Milliseconds at) const {
        constexpr double kLead = 0.04, kTail = 0.14;
        const double share = total <= 0 ? 0.5 : static_cast<double>((at - first).count()) / total;
        return place.left() + place.width() * (kLead + (1 - kLead - kTail) * share);
    }
};

TimingPicture::TimingPicture(std::unique_ptr<PinTimeline> timeline, std::vector<std::size_t> counted)
    : timeline_(std::move(timeline)),
      counted_(std::move(counted)),
      drawing_(*this, {.name = "Last edges",
                       .paint = [this](QPainter& painter, const QRectF& area) { paint(painter, area); },
                       .least = {640, 120}}),
      menu_(new QMenu(this)) {
    setObjectName("timing");
    setAccessibleName("Last edges");
    setFocusPolicy(Qt::StrongFocus);
    drawing_.addTo(*menu_);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    lag_.setSingleShot(true);
    lag_.setInterval(kShowMs);
    connect(&lag_, &QTimer::timeout, this, [this] {
        if (onShown)
            onShown();
        update();
    });
    edges_ = timeline_->observe([this](const PinTimeline::Edge&) {
        if (!lag_.isActive())
            lag_.start();
    });
}

void TimingPicture::setLanes(std::vector<std::size_t> lanes) {
    lanes_ = std::move(lanes);
    updateGeometry();
    update();
}

void TimingPicture::setWords(const QString& words) {
    setAccessibleDescription(words);
    setToolTip(words);
}

QSize TimingPicture::minimumSizeHint() const {
    return {dp(240), dp(14) * static_cast<int>(lanes_.size()) + QFontMetrics(textFont(kSmall)).height() + 4};
}

QSize TimingPicture::sizeHint() const {
    return {dp(600),
            dp(kLane) * static_cast<int>(lanes_.size()) + QFontMetrics(textFont(kSmall)).height() + 4};
}

TimingPicture::Scale TimingPicture::scaleOf(const QRectF& area) const {
    const QFontMetricsF words(font());
    double names = 0;
    for (const PinTimeline::Pin& pin : timeline_->pins())
        names = std::max(names, words.horizontalAdvance(pin.name));
    const double below = QFontMetricsF(textFont(kSmall)).height() + 2;
    Scale scale;
    scale.place = area.adjusted(names + kUnit, 1, -1, -below - 1);
    scale.lane = scale.place.height() / static_cast<double>(std::max<std::size_t>(1, lanes_.size()));
    const auto& edges = timeline_->edges();
    if (!edges.empty()) {
        scale.first = edges.front().at;
        scale.total = static_cast<double>((edges.back().at - edges.front().at).count());
    }
    return scale;
}

void TimingPicture::paintNumbers(QPainter& painter, const Scale& scale) const {
    painter.setFont(textFont(kSmall));
    const QFontMetricsF metrics(painter.font());
    const auto& edges = timeline_->edges();
    // Of a longer action the first edges are gone, and how many of them counted.
    const bool partial = timeline_->count() > edges.size();
    int number = 0;
    double free = scale.place.left();
    for (const PinTimeline::Edge& edge : edges) {
        if (edge.high || std::find(counted_.begin(), counted_.end(), edge.pin) == counted_.end() ||
            std::find(lanes_.begin(), lanes_.end(), edge.pin) == lanes_.end())
            continue;
        ++number;
        const double at = scale.x(edge.at);
        const QString words = QString::number(number);
        const double half = metrics.horizontalAdvance(words) / 2;
        if (at - half < free || partial)
            continue;
        free = at + half + metrics.averageCharWidth();
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(QPointF(at, scale.place.top() + 1), QPointF(at, scale.place.bottom() - 1));
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(QPointF(at - half, scale.place.bottom() + metrics.ascent() + 2), words);
    }
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QString length = scale.total < 1000 ? QString("%1 ms").arg(scale.total, 0, 'f', 0)
                                              : QString("%1 s").arg(scale.total / 1000, 0, 'f', 2);
    const double wide = metrics.horizontalAdvance(length);
    if (scale.place.right() - wide > free)
        painter.drawText(QPointF(scale.place.right() - wide, scale.place.bottom() + metrics.ascent() + 2),
                         length);
}

void TimingPicture::paintLane(QPainter& painter, const Scale& scale, std::size_t lane) const {
    const std::size_t pin = lanes_[lane];
    const double top = scale.place.top() + scale.lane * static_cast<double>(lane);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(QRectF(0, top, scale.place.left() - kUnit / 2.0, scale.lane),
                     Qt::AlignRight | Qt::AlignVCenter, timeline_->pins()[pin].name);
    if (timeline_->edges().empty())
        return;
    std::optional<bool> level = timeline_->before(pin);
    const auto y = [&](bool high) { return top + scale.lane * (high ? 0.22 : 0.78); };
    QPolygonF line;
    if (level)
        line << QPointF(scale.place.left(), y(*level));
    for (const PinTimeline::Edge& edge : timeline_->edges()) {
        if (edge.pin != pin)
            continue;
        const double at = scale.x(edge.at);
        line << QPointF(at, y(!edge.high)) << QPointF(at, y(edge.high));
        level = edge.high;
    }
    if (!level)
        return; // nobody knows how the pin stands
    line << QPointF(scale.place.right(), y(*level));
    painter.setPen(QPen(palette().color(QPalette::Text), 2));
    painter.drawPolyline(line);
}

void TimingPicture::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paint(painter, rect());
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(1, 1, -1, -1));
    }
}

void TimingPicture::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy))
        drawing_.copy();
    else
        QWidget::keyPressEvent(event);
}

void TimingPicture::contextMenuEvent(QContextMenuEvent* event) {
    menu_->popup(event->globalPos());
}

void TimingPicture::paint(QPainter& painter, const QRectF& area) const {
    const Scale scale = scaleOf(area);
    painter.setPen(palette().color(QPalette::Dark));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRect(scale.place);
    if (timeline_->edges().empty()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(scale.place, Qt::AlignCenter, "No pin has been moved yet");
    } else {
        paintNumbers(painter, scale);
    }
    for (std::size_t lane = 0; lane < lanes_.size(); ++lane)
        paintLane(painter, scale, lane);
}

} // namespace vrk
