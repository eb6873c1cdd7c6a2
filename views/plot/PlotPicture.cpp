#include "views/plot/PlotPicture.h"

#include "platform/qt/theme.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPalette>

#include <algorithm>
#include <cmath>

namespace vrk {

namespace {

constexpr double kTraceWidth = 2.0;
constexpr double kIdealWidth = 1.2;
constexpr double kMarkSize = 4.0;

QColor inkColour(PlotInk ink, const QPalette& palette) {
    if (ink == PlotInk::Quiet)
        return palette.color(QPalette::PlaceholderText);
    if (ink == PlotInk::Earlier)
        return palette.color(QPalette::Dark);
    return qt::colours().channels.at(static_cast<std::size_t>(ink));
}

void paintMark(QPainter& painter, PlotMark mark, const QPointF& at, double size) {
    const auto corners = [&](std::initializer_list<QPointF> offsets) {
        QPolygonF polygon;
        for (const QPointF& offset : offsets)
            polygon << at + offset * size;
        painter.drawPolygon(polygon);
    };
    switch (mark) {
    case PlotMark::None:
        break;
    case PlotMark::Disc:
        painter.drawEllipse(at, size, size);
        break;
    case PlotMark::Square:
        corners({{-1, -1}, {1, -1}, {1, 1}, {-1, 1}});
        break;
    case PlotMark::Triangle:
        corners({{0, -1.3}, {1.2, 1}, {-1.2, 1}});
        break;
    case PlotMark::Diamond:
        corners({{0, -1.3}, {1.3, 0}, {0, 1.3}, {-1.3, 0}});
        break;
    }
}

/// The smallest step of its kind with which labels of `room` pixels fit.
double tickStep(PlotAxis::Steps steps, double range, double pixels, double room) {
    const double least = range * room / std::max(1.0, pixels);
    if (steps == PlotAxis::Steps::Binary)
        return std::pow(2.0, std::max(0.0, std::ceil(std::log2(std::max(least, 1e-9)))));
    const double decade = std::pow(10.0, std::floor(std::log10(std::max(least, 1e-12))));
    for (const double factor : {1.0, 2.0, 5.0})
        if (factor * decade >= least)
            return factor * decade;
    return 10 * decade;
}

int decimalsOf(double step) {
    return step >= 1 ? 0 : static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
}

QString number(double value, int decimals, bool sign) {
    QString text = QString::number(std::abs(value), 'f', decimals);
    const bool zero = text.toDouble() == 0;
    if (value < 0 && !zero)
        return "−" + text;
    return sign && !zero ? "+" + text : text;
}

/// A value of the horizontal axis.
QString place(const PlotAxis& axis, double value, int decimals) {
    constexpr int kHexBase = 16;
    return axis.hex ? QString("%1").arg(std::lround(value), 2, kHexBase, QChar('0')).toUpper()
                    : number(value, decimals, false);
}

} // namespace

PlotPicture::PlotPicture(const PlotModel& model, const QRectF& area, const QFont& font, double from,
                         double to)
    : model_(model), area_(area), font_(font), from_(from), to_(std::max(to, from + 1e-9)) {
    const QFontMetricsF metrics(font_);
    const double line = metrics.height();
    const QRectF inner =
        area.adjusted(line + metrics.horizontalAdvance("−00.0"), line * 0.6, -line * 1.1, -line * 2.3);
    const double between = line;
    double shares = 0;
    for (const PlotPane& pane : model_.panes)
        shares += pane.share;
    const double height =
        inner.height() - between * static_cast<double>(model_.panes.empty() ? 0 : model_.panes.size() - 1);
    double top = inner.top();
    for (const PlotPane& pane : model_.panes) {
        const double high = std::max(line, height * pane.share / shares);
        panes_.push_back({QRectF(inner.left(), top, inner.width(), high), pane.y.from, pane.y.to});
        top += high + between;
        fit(panes_.size() - 1);
    }
    // Where an axis has long numbers all panes give way, so that its title stands beside them.
    double left = inner.left();
    for (std::size_t index = 0; index < panes_.size(); ++index) {
        const auto [step, decimals] = ticksOf(index);
        for (const double end : {panes_[index].low, panes_[index].high})
            left = std::max(left, area.left() + line * 1.5 +
                                      metrics.horizontalAdvance(
                                          number(-std::abs(end), decimals, model_.panes[index].y.sign)));
    }
    for (Pane& pane : panes_)
        pane.place.setLeft(left);
}

PlotPicture::Ticks PlotPicture::ticksOf(std::size_t index) const {
    const Pane& pane = panes_[index];
    const PlotAxis& y = model_.panes[index].y;
    const double line = QFontMetricsF(font_).height();
    const double step = tickStep(y.steps, pane.high - pane.low, pane.place.height(), line * 1.2);
    return {step, std::max(decimalsOf(step), y.sign ? 0 : 1)};
}

void PlotPicture::fit(std::size_t index) {
    Pane& pane = panes_[index];
    const PlotPane& shown = model_.panes[index];
    const auto take = [&pane](double y) {
        pane.low = std::min(pane.low, y);
        pane.high = std::max(pane.high, y);
    };
    for (const PlotSeries& series : shown.series)
        for (const QPointF& point : series.points)
            if (series.dashed || (point.x() >= from_ && point.x() <= to_))
                take(point.y());
    if (shown.limits) {
        take(shown.limits->first);
        take(shown.limits->second);
    }
    for (const PlotTarget& target : shown.targets)
        take(target.at.y());
    for (const QPointF& point : shown.fails)
        take(point.y());
    const double margin = (pane.high - pane.low) * 0.04;
    pane.high += margin;
    if (pane.low < 0)
        pane.low -= margin;
}

QRectF PlotPicture::plotArea() const {
    return panes_.empty() ? area_ : panes_.front().place.united(panes_.back().place);
}

double PlotPicture::pixelOf(double x) const {
    const QRectF place = plotArea();
    return place.left() + place.width() * (x - from_) / (to_ - from_);
}

double PlotPicture::xAt(double pixel) const {
    const QRectF place = plotArea();
    return from_ + (to_ - from_) * (pixel - place.left()) / std::max(1.0, place.width());
}

double PlotPicture::pixelY(const Pane& pane, double y) const {
    return pane.place.bottom() - pane.place.height() * (y - pane.low) / (pane.high - pane.low);
}

void PlotPicture::paint(QPainter& painter, const QPalette& palette) const {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font_);
    if (model_.empty()) {
        painter.setPen(palette.color(QPalette::PlaceholderText));
        painter.drawText(area_, Qt::AlignCenter | Qt::TextWordWrap, model_.emptyWords);
        return;
    }
    for (std::size_t pane = 0; pane < panes_.size(); ++pane) {
        paintGrid(painter, palette, pane);
        paintPane(painter, palette, pane);
    }
    paintLegend(painter, palette);
}

void PlotPicture::paintGrid(QPainter& painter, const QPalette& palette, std::size_t index) const {
    const Pane& pane = panes_[index];
    const QFontMetricsF metrics(font_);
    const double line = metrics.height();
    const QColor quiet = palette.color(QPalette::PlaceholderText);
    const QColor grid = palette.color(QPalette::Mid);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(palette.color(QPalette::Dark), 1));
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRect(pane.place);

    const PlotAxis& y = model_.panes[index].y;
    const auto [yStep, yDecimals] = ticksOf(index);
    for (double tick = std::ceil(pane.low / yStep) * yStep; tick <= pane.high + yStep * 1e-6; tick += yStep) {
        const double at = pixelY(pane, tick);
        painter.setPen(grid);
        painter.drawLine(QPointF(pane.place.left() + 1, at), QPointF(pane.place.right() - 1, at));
        painter.setPen(quiet);
        painter.drawText(
            QRectF(area_.left(), at - line / 2, pane.place.left() - area_.left() - line * 0.3, line),
            Qt::AlignRight | Qt::AlignVCenter, number(tick, yDecimals, y.sign));
    }
    painter.save();
    painter.translate(area_.left() + line * 0.2, pane.place.center().y());
    painter.rotate(-90);
    painter.drawText(QRectF(-pane.place.height(), 0, 2 * pane.place.height(), line), Qt::AlignCenter,
                     y.title);
    painter.restore();

    const bool lowest = index + 1 == panes_.size();
    const PlotAxis& x = model_.x;
    const double room = metrics.horizontalAdvance(number(to_, 0, false)) + line * 4;
    const double xStep = tickStep(x.steps, to_ - from_, pane.place.width(), room);
    for (double tick = std::ceil(from_ / xStep) * xStep; tick <= to_ + xStep * 1e-6; tick += xStep) {
        const double at = pixelOf(tick);
        painter.setPen(grid);
        painter.drawLine(QPointF(at, pane.place.top() + 1), QPointF(at, pane.place.bottom() - 1));
        painter.setPen(quiet);
        if (lowest)
            painter.drawText(QRectF(at - room, pane.place.bottom() + line * 0.1, 2 * room, line),
                             Qt::AlignCenter, place(x, tick, decimalsOf(xStep)));
    }
    if (lowest)
        painter.drawText(
            QRectF(pane.place.left(), pane.place.bottom() + line * 1.1, pane.place.width(), line),
            Qt::AlignCenter, x.title);
    painter.setRenderHint(QPainter::Antialiasing, true);
}

void PlotPicture::paintPane(QPainter& painter, const QPalette& palette, std::size_t index) const {
    const Pane& pane = panes_[index];
    const PlotPane& shown = model_.panes[index];
    painter.save();
    painter.setClipRect(pane.place.adjusted(-kMarkSize, -kMarkSize, kMarkSize, kMarkSize));
    if (shown.limits) {
        const double top = pixelY(pane, shown.limits->second);
        const double bottom = pixelY(pane, shown.limits->first);
        painter.fillRect(QRectF(pane.place.left(), top, pane.place.width(), bottom - top),
                         palette.color(QPalette::AlternateBase));
        painter.setPen(QPen(palette.color(QPalette::Dark), 1, Qt::DashLine));
        for (const double edge : {top, bottom})
            painter.drawLine(QPointF(pane.place.left(), edge), QPointF(pane.place.right(), edge));
    }
    for (const auto& [first, last] : model_.resumed) {
        painter.setPen(QPen(qt::colours().differsText, 1, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(QPointF(pixelOf(first), pane.place.top() + 1),
                                QPointF(pixelOf(last), pane.place.bottom() - 1)));
    }
    for (const PlotSeries& series : shown.series) {
        if (series.points.empty())
            continue;
        const QColor ink = inkColour(series.ink, palette);
        painter.setPen(series.dashed ? QPen(ink, kIdealWidth, Qt::DashLine) : QPen(ink, kTraceWidth));
        painter.setBrush(Qt::NoBrush);
        if (series.bars) {
            paintBars(painter, palette, pane, series);
            continue;
        }
        paintTrace(painter, pane, series);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        const QPointF& last = series.points.back();
        const QPointF end(pixelOf(last.x()), pixelY(pane, last.y()));
        // A single point is no line: its mark is all that there is of it.
        if (last.x() <= to_ && last.x() >= from_)
            paintMark(painter,
                      series.points.size() == 1 && series.endMark == PlotMark::None ? PlotMark::Disc
                                                                                    : series.endMark,
                      end, kMarkSize);
    }
    paintTargets(painter, palette, pane, shown.targets);
    painter.setPen(QPen(qt::colours().failure, kTraceWidth));
    for (const QPointF& fail : shown.fails) {
        const QPointF at(pixelOf(fail.x()), pixelY(pane, fail.y()));
        const QPointF down(kMarkSize, kMarkSize);
        const QPointF up(kMarkSize, -kMarkSize);
        painter.drawLine(at - down, at + down);
        painter.drawLine(at - up, at + up);
    }
    painter.restore();
}

void PlotPicture::paintTargets(QPainter& painter, const QPalette& palette, const Pane& pane,
                               const std::vector<PlotTarget>& targets) const {
    const QFontMetricsF metrics(font_);
    const QColor ink = palette.color(QPalette::Text);
    for (const PlotTarget& target : targets) {
        const QPointF at(pixelOf(target.at.x()), pixelY(pane, target.at.y()));
        painter.setPen(QPen(palette.color(QPalette::PlaceholderText), 1, Qt::DotLine));
        painter.drawLine(at, QPointF(at.x(), pane.place.bottom()));
        if (!target.name.isEmpty())
            painter.drawLine(at, QPointF(pane.place.left(), at.y()));
        painter.setPen(QPen(ink, 1));
        painter.setBrush(palette.color(QPalette::Base));
        paintMark(painter, PlotMark::Diamond, at, kMarkSize);
        painter.drawText(at - QPointF(metrics.horizontalAdvance(target.name) + 2 * kMarkSize, kMarkSize),
                         target.name);
    }
}

void PlotPicture::paintBars(QPainter& painter, const QPalette& palette, const Pane& pane,
                            const PlotSeries& series) const {
    constexpr double kBarWidth = 5;
    for (const QPointF& point : series.points)
        painter.fillRect(QRectF(QPointF(pixelOf(point.x()) - kBarWidth / 2, pixelY(pane, 0)),
                                QPointF(pixelOf(point.x()) + kBarWidth / 2, pixelY(pane, point.y())))
                             .normalized(),
                         palette.color(QPalette::Text));
    painter.setPen(QPen(palette.color(QPalette::Dark), 1));
    painter.drawLine(QPointF(pane.place.left(), pixelY(pane, 0)),
                     QPointF(pane.place.right(), pixelY(pane, 0)));
}

void PlotPicture::paintTrace(QPainter& painter, const Pane& pane, const PlotSeries& series) const {
    const auto before = [](const QPointF& point, double x) { return point.x() < x; };
    auto first = std::lower_bound(series.points.begin(), series.points.end(), from_, before);
    auto last = std::lower_bound(first, series.points.end(), to_, before);
    // The lines that come in from outside and go out.
    if (first != series.points.begin())
        --first;
    if (last != series.points.end())
        ++last;
    QPolygonF line;
    const auto columns = static_cast<std::ptrdiff_t>(pane.place.width());
    if (last - first <= 2 * std::max<std::ptrdiff_t>(columns, 1)) {
        for (auto point = first; point != last; ++point)
            line << QPointF(pixelOf(point->x()), pixelY(pane, point->y()));
        painter.drawPolyline(line);
        return;
    }
    long column = std::lround(pixelOf(first->x()));
    double enter = first->y();
    double low = enter;
    double high = enter;
    double leave = enter;
    const auto flush = [&] {
        for (const double y : {enter, low, high, leave})
            line << QPointF(static_cast<double>(column), pixelY(pane, y));
    };
    for (auto point = first; point != last; ++point) {
        const long at = std::lround(pixelOf(point->x()));
        if (at != column) {
            flush();
            column = at;
            enter = low = high = point->y();
        }
        low = std::min(low, point->y());
        high = std::max(high, point->y());
        leave = point->y();
    }
    flush();
    painter.drawPolyline(line);
}

void PlotPicture::paintLegend(QPainter& painter, const QPalette& palette) const {
    const QFontMetricsF metrics(font_);
    const double line = metrics.height();
    const auto& traces = model_.panes.front().series;
    const bool several = std::count_if(traces.begin(), traces.end(), [](const PlotSeries& series) {
                             return !series.dashed && !series.name.isEmpty();
                         }) > 1;
    QPointF at = panes_.front().place.topLeft() + QPointF(line * 0.6, line * 0.9);
    for (const PlotPane& pane : model_.panes)
        for (const PlotSeries& series : pane.series) {
            if (series.name.isEmpty())
                continue;
            const QColor ink = inkColour(series.ink, palette);
            // A level's line that ran through the words would strike them out.
            const double wide = line * 2.4 + metrics.horizontalAdvance(series.name);
            painter.fillRect(QRectF(at.x() - line * 0.2, at.y() - line / 2, wide, line),
                             palette.color(QPalette::Window));
            painter.setPen(series.dashed ? QPen(ink, kIdealWidth, Qt::DashLine) : QPen(ink, kTraceWidth));
            painter.drawLine(at, at + QPointF(line * 1.6, 0));
            painter.setPen(Qt::NoPen);
            painter.setBrush(ink);
            if (several)
                paintMark(painter, series.endMark, at + QPointF(line * 0.8, 0), kMarkSize * 0.8);
            painter.setPen(palette.color(QPalette::Text));
            painter.drawText(at + QPointF(line * 2.0, metrics.ascent() / 2 - 1), series.name);
            at.rx() += line * 3.2 + metrics.horizontalAdvance(series.name);
        }
}

std::optional<PlotPicture::Spot> PlotPicture::spotAt(double x, std::optional<double> pixel) const {
    if (panes_.empty())
        return std::nullopt;
    const auto nearest = [](const PlotSeries& series, double value) {
        auto at = std::lower_bound(series.points.begin(), series.points.end(), value,
                                   [](const QPointF& point, double wanted) { return point.x() < wanted; });
        if (at == series.points.end() ||
            (at != series.points.begin() && value - (at - 1)->x() < at->x() - value))
            --at;
        return *at;
    };
    const auto& traces = model_.panes.front().series;
    std::optional<Spot> found;
    double best = 0;
    int shown = 0;
    for (std::size_t index = 0; index < traces.size(); ++index) {
        if (traces[index].dashed || traces[index].points.empty())
            continue;
        ++shown;
        const QPointF point = nearest(traces[index], x);
        const double sideways = std::abs(pixelOf(point.x()) - pixelOf(x));
        const double away = sideways + (pixel ? std::abs(pixelY(panes_.front(), point.y()) - *pixel) : 0.0);
        if (found && away >= best)
            continue;
        best = away;
        found = Spot{point.x(), index, {}};
    }
    if (!found)
        return std::nullopt;
    QStringList words;
    if (shown > 1)
        words += traces[found->series].name;
    words +=
        place(model_.x, found->x, model_.x.decimals) + (model_.x.unit.isEmpty() ? "" : " " + model_.x.unit);
    for (const PlotPane& pane : model_.panes) {
        if (found->series >= pane.series.size() || pane.series[found->series].points.empty())
            continue;
        const QPointF point = nearest(pane.series[found->series], found->x);
        if (point.x() == found->x)
            words += number(point.y(), pane.y.decimals, pane.y.sign) + " " + pane.y.unit;
    }
    found->words = words.join(" · ");
    return found;
}

void PlotPicture::paintCrosshair(QPainter& painter, const QPalette& palette, const Spot& spot) const {
    const QFont face = qt::valueFont(qt::kSmall);
    const QFontMetricsF metrics(face);
    const QRectF place = plotArea();
    const double at = pixelOf(spot.x);
    if (at < place.left() - 1 || at > place.right() + 1)
        return;
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(palette.color(QPalette::Text));
    painter.drawLine(QPointF(at, place.top()), QPointF(at, place.bottom()));
    const QSizeF size(metrics.horizontalAdvance(spot.words) + metrics.height(), metrics.height() * 1.35);
    QRectF box(QPointF(at + 5, panes_.front().place.bottom() - size.height() - 4), size);
    if (box.right() > place.right())
        box.moveRight(at - 5);
    painter.setPen(palette.color(QPalette::Dark));
    painter.setBrush(palette.color(QPalette::Window));
    painter.drawRect(box);
    painter.setPen(palette.color(QPalette::Text));
    painter.setFont(face);
    painter.drawText(box, Qt::AlignCenter, spot.words);
}

} // namespace vrk
