#include "views/WiperPlot.h"

#include "panels/WiperPanel.h"
#include "platform/qt/theme.h"
#include "views/workspace/Page.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

namespace vrk {

using namespace qt;

namespace {

/// Told apart in light and dark and by people who do not tell red from green; the mark's shape says it too.
QColor channelColour(int channel) {
    static constexpr std::array<QRgb, WiperPlot::kChannels> kColours = {0xff2f7fd6, 0xffe08a1e, 0xff1f9e77,
                                                                        0xffb05cc6};
    return QColor::fromRgb(kColours[static_cast<std::size_t>(channel)]);
}

void drawMark(QPainter& painter, int channel, const QPointF& at, double size) {
    switch (channel) {
    case 0:
        painter.drawEllipse(at, size, size);
        break;
    case 1:
        painter.drawRect(QRectF(at.x() - size, at.y() - size, 2 * size, 2 * size));
        break;
    case 2:
        painter.drawPolygon(QPolygonF(
            {at + QPointF(0, -size * 1.3), at + QPointF(size * 1.2, size), at + QPointF(-size * 1.2, size)}));
        break;
    default:
        painter.drawPolygon(QPolygonF({at + QPointF(0, -size * 1.3), at + QPointF(size * 1.3, 0),
                                       at + QPointF(0, size * 1.3), at + QPointF(-size * 1.3, 0)}));
    }
}

} // namespace

WiperPlot::WiperPlot(QWidget* parent) : QWidget(parent) {
    setObjectName("wiperPlot");
    setAccessibleName("Wiper volts over position");
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
}

void WiperPlot::setPositions(int maximum) {
    maximum_ = std::max(1, maximum);
    update();
}

void WiperPlot::add(int channel, int position, double volts) {
    points_.at(static_cast<std::size_t>(channel))[position] = volts;
    update();
}

void WiperPlot::clear() {
    for (auto& points : points_)
        points.clear();
    update();
}

int WiperPlot::pointCount() const {
    int count = 0;
    for (const auto& points : points_)
        count += static_cast<int>(points.size());
    return count;
}

QString WiperPlot::csv() const {
    QString text = "channel,position,volts\n";
    for (int channel = 0; channel < kChannels; ++channel)
        for (const auto& [position, volts] : points_[static_cast<std::size_t>(channel)])
            text += QString("%1,%2,%3\n").arg(channel).arg(position).arg(volts, 0, 'f', 3);
    return text;
}

QSize WiperPlot::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 90, fontMetrics().lineSpacing() * 26};
}

double WiperPlot::highestVolts() const {
    double highest = 0;
    for (const auto& points : points_)
        for (const auto& [position, volts] : points)
            highest = std::max(highest, volts);
    // A whole number of volts, so that the axis stays while readings come in.
    return std::max(1.0, std::ceil(highest + 0.05));
}

void WiperPlot::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font());
    const QFontMetrics metrics(font());
    const double high = highestVolts();
    const QRectF area = QRectF(rect()).adjusted(metrics.horizontalAdvance("00.0 V") + 2 * kUnit,
                                                metrics.height() * 2, -3.0 * kUnit, -metrics.height() * 3.0);
    const auto place = [&](double position, double volts) {
        return QPointF(area.left() + area.width() * position / maximum_,
                       area.bottom() - area.height() * volts / high);
    };

    const QColor ink = palette().color(QPalette::Text);
    QColor faint = ink;
    faint.setAlphaF(0.18F);
    QColor quiet = palette().color(QPalette::PlaceholderText);
    const double voltStep = high <= 2 ? 0.25 : high <= 6 ? 0.5 : 1.0;
    for (double volts = 0; volts <= high + 1e-9; volts += voltStep) {
        painter.setPen(faint);
        painter.drawLine(place(0, volts), place(maximum_, volts));
        painter.setPen(quiet);
        painter.drawText(
            QRectF(0, place(0, volts).y() - metrics.height() / 2.0, area.left() - kUnit, metrics.height()),
            Qt::AlignRight | Qt::AlignVCenter, QString::number(volts, 'f', voltStep < 0.5 ? 2 : 1));
    }
    for (int eighth = 0; eighth <= 8; ++eighth) {
        const double position = maximum_ * eighth / 8.0;
        painter.setPen(faint);
        painter.drawLine(place(position, 0), place(position, high));
        painter.setPen(quiet);
        const double x = place(position, 0).x();
        painter.drawText(QRectF(x - 40, area.bottom() + kUnit / 2.0, 80, metrics.height()), Qt::AlignCenter,
                         QString::number(std::lround(position)));
    }
    painter.drawText(
        QRectF(area.left(), area.bottom() + metrics.height() * 1.5, area.width(), metrics.height()),
        Qt::AlignCenter, "Position");
    painter.drawText(QRectF(kUnit, kUnit / 2.0, area.width(), metrics.height()), Qt::AlignLeft,
                     "Wiper volts, V");

    double legend = area.right();
    for (int channel = kChannels - 1; channel >= 0; --channel) {
        const auto& points = points_[static_cast<std::size_t>(channel)];
        if (points.empty())
            continue;
        QPolygonF line;
        for (const auto& [position, volts] : points)
            line << place(position, volts);
        painter.setPen(QPen(channelColour(channel), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawPolyline(line);
        painter.setBrush(channelColour(channel));
        for (const QPointF& point : line)
            drawMark(painter, channel, point, 3.0);
        const QString name = QString("Channel %1").arg(channel);
        legend -= metrics.horizontalAdvance(name);
        painter.setPen(ink);
        painter.drawText(QPointF(legend, kUnit / 2.0 + metrics.ascent()), name);
        legend -= 1.5 * kUnit;
        painter.setPen(channelColour(channel));
        drawMark(painter, channel, QPointF(legend, kUnit / 2.0 + metrics.height() / 2.0), 4.0);
        legend -= 2.0 * kUnit;
    }
    if (pointCount() == 0) {
        painter.setPen(quiet);
        painter.drawText(area, Qt::AlignCenter, "Each position that is read appears here with its volts.");
    }
}

WiperPlotView::WiperPlotView(PageUi& owner, WiperPanel& panel)
    : plot_(new WiperPlot), title_("Wiper volts over position") {
    setObjectName("wiperPlotWindow");
    setWindowTitle(title_);
    auto* copyButton = new QPushButton("&Copy");
    auto* saveButton = new QPushButton("&Save…");
    auto* clearButton = new QPushButton("C&lear");
    QObject::connect(copyButton, &QPushButton::clicked, this, [this] { copy(); });
    QObject::connect(saveButton, &QPushButton::clicked, this, [this] { askAndSave(); });
    QObject::connect(clearButton, &QPushButton::clicked, plot_, [this] { plot_->clear(); });
    for (QWidget* tool : {clearButton, copyButton, saveButton})
        owner.addPlotTool(tool);
    setLayout(column({plot_}));
    layout()->setContentsMargins(kUnit, 0, kUnit, 0);
    owner.setPlot(this);
    owner.ui().keep(panel.observePoints([this](const WiperPanel::Point& reading) {
        plot_->add(reading.channel, reading.position, reading.volts);
    }));
    // Another part or another number of taps: what was read no longer belongs together.
    owner.ui().watch(panel.lblProduct, [this] { plot_->clear(); });
    owner.ui().watch(panel.Slider1[0], [this, slider = &panel.Slider1[0]] {
        if (slider->maximum() != plot_->positions())
            plot_->clear();
        plot_->setPositions(slider->maximum());
    });
}

void WiperPlotView::copy() const {
    QApplication::clipboard()->setPixmap(plot_->grab());
}

bool WiperPlotView::save(const QString& path) const {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const bool written = path.endsWith(".csv", Qt::CaseInsensitive) ? file.write(plot_->csv().toUtf8()) >= 0
                                                                    : plot_->grab().save(&file, "PNG");
    return written && file.commit();
}

void WiperPlotView::askAndSave() {
    QFileDialog dialog(this, "Save the picture");
    dialog.setObjectName("fileDialog");
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilters({"Picture (*.png)", "Numbers (*.csv)"});
    dialog.setDefaultSuffix("png");
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& filter) {
        dialog.setDefaultSuffix(filter.contains("csv") ? "csv" : "png");
    });
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    const QString path = dialog.selectedFiles().front();
    if (!save(path))
        QMessageBox::warning(this, title_, "Cannot write " + path + ".");
}

} // namespace vrk
