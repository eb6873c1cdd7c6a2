#include "platform/qt/theme.h"
#include "shell/frmStartup.h"
#include "views/panelViews.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>

namespace vrk {

using namespace qt;

namespace {

void drawBox(QPainter& painter, const QRectF& box, const QPalette& palette, const QString& title,
             const QString& detail) {
    painter.setPen(QPen(palette.color(QPalette::Mid), 1.5));
    painter.setBrush(palette.color(QPalette::Button));
    painter.drawRoundedRect(box, kUnit, kUnit);
    const QFontMetricsF metrics(painter.font());
    painter.setPen(palette.color(QPalette::WindowText));
    const QFont plain = painter.font();
    QFont bold = plain;
    bold.setBold(true);
    painter.setFont(bold);
    painter.drawText(box.adjusted(0, -metrics.height() / 2, 0, -metrics.height() / 2), Qt::AlignCenter,
                     title);
    painter.setFont(plain);
    painter.setPen(palette.color(QPalette::PlaceholderText));
    painter.drawText(box.adjusted(0, metrics.height() * 0.6, 0, metrics.height() * 0.6), Qt::AlignCenter,
                     detail);
}

void drawWire(QPainter& painter, const QPointF& from, const QPointF& to, const QPalette& palette,
              const QString& text) {
    painter.setPen(QPen(palette.color(QPalette::Highlight), 2.5));
    painter.drawLine(from, to);
    const QFontMetricsF metrics(painter.font());
    painter.setPen(palette.color(QPalette::WindowText));
    const QRectF place(from.x(), from.y() - metrics.height() - 2, to.x() - from.x(), metrics.height());
    painter.drawText(place, Qt::AlignCenter, text);
}

/// Computer, motherboard, part: what hangs on what.
void drawBench(QPainter& painter, const QRectF& area, const QPalette& palette) {
    const double width = area.width() * 0.25;
    const double gapWidth = (area.width() - 3 * width) / 2;
    const double height = std::min(area.height() * 0.42, width * 0.8);
    const double top = area.top() + area.height() * 0.12;
    const auto box = [&](int index) {
        return QRectF(area.left() + index * (width + gapWidth), top, width, height);
    };
    const double middle = top + height / 2;
    drawWire(painter, {box(0).right(), middle}, {box(1).left(), middle}, palette, "USB");
    drawWire(painter, {box(1).right(), middle}, {box(2).left(), middle}, palette, "I2C · SPI");
    drawBox(painter, box(0), palette, "Computer", "this program");
    drawBox(painter, box(1), palette, "Motherboard", "supplies, volts");
    drawBox(painter, box(2), palette, "Daughter board", "the part");
    // The wiper comes back to the analog inputs.
    const QFontMetricsF metrics(painter.font());
    const double below = top + height + area.height() * 0.16;
    painter.setPen(QPen(palette.color(QPalette::PlaceholderText), 2.0, Qt::DashLine));
    const QPolygonF back{QPointF(box(2).center().x(), box(2).bottom()), QPointF(box(2).center().x(), below),
                         QPointF(box(1).center().x(), below), QPointF(box(1).center().x(), box(1).bottom())};
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(back);
    painter.setPen(palette.color(QPalette::WindowText));
    painter.drawText(
        QRectF(box(1).center().x(), below + 2, box(2).center().x() - box(1).center().x(), metrics.height()),
        Qt::AlignCenter, "wiper volts");
}

/// A potentiometer as a circuit diagram shows it.
void drawPotentiometer(QPainter& painter, const QRectF& area, const QPalette& palette) {
    const double unit = std::min(area.width() / 8, area.height() / 5);
    const QPointF middle = area.center();
    painter.setPen(QPen(palette.color(QPalette::WindowText), unit / 5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(middle.x() - 2 * unit, middle.y(), 4 * unit, 1.2 * unit));
    painter.drawLine(middle + QPointF(-3.5 * unit, 0.6 * unit), middle + QPointF(-2 * unit, 0.6 * unit));
    painter.drawLine(middle + QPointF(2 * unit, 0.6 * unit), middle + QPointF(3.5 * unit, 0.6 * unit));
    painter.setPen(QPen(palette.color(QPalette::Highlight), unit / 4));
    painter.drawLine(middle + QPointF(0.6 * unit, -2 * unit), middle + QPointF(0.6 * unit, -0.2 * unit));
    painter.drawLine(middle + QPointF(0.1 * unit, -0.8 * unit), middle + QPointF(0.6 * unit, -0.15 * unit));
    painter.drawLine(middle + QPointF(1.1 * unit, -0.8 * unit), middle + QPointF(0.6 * unit, -0.15 * unit));
}

/// The choice as a list that stands open, with rows that say nothing left out of sight.
QListView* deviceList(PanelUi& ui, frmStartup& p) {
    QListView* list = ui.openList(p.cboVRKSelect);
    list->setAccessibleName("Device");
    list->setFont(textFont(1.25));
    list->setSpacing(4);
    list->setItemAlignment(Qt::AlignLeft);
    const auto hideEmpty = [list] {
        for (int row = 0; row < list->model()->rowCount(); ++row) {
            const QString text = list->model()->index(row, 0).data().toString().trimmed();
            list->setRowHidden(row, text.isEmpty() || text.startsWith("---"));
        }
    };
    QObject::connect(list->model(), &QAbstractItemModel::modelReset, list, hideEmpty);
    hideEmpty();
    const QFontMetrics metrics(list->font());
    list->setMinimumSize(metrics.averageCharWidth() * 34, (metrics.lineSpacing() + 9) * 7);
    return list;
}

} // namespace

void makeStartupView(PageUi& page, frmStartup& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Start panel");
    QMenu* about = page.menu("A&bout");
    QAction* aboutEntry = ui(p.mnuAboutShow);
    aboutEntry->setParent(about);
    about->addAction(aboutEntry);

    const QFontMetrics metrics = page.page()->fontMetrics();
    auto* instruction = ui(p.Label1);
    instruction->setFont(textFont(1.35, true));
    auto* picture =
        ui(p.Picture1, QSize(metrics.averageCharWidth() * 84, metrics.lineSpacing() * 13), drawBench);
    picture->setAccessibleName("How the hardware is connected");
    picture->setFocusPolicy(Qt::TabFocus);
    auto* symbol =
        ui(p.Picture2, QSize(metrics.averageCharWidth() * 10, metrics.lineSpacing() * 4), drawPotentiometer);
    symbol->setAccessibleName("Potentiometer");
    symbol->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);

    auto* list = deviceList(ui, p);
    auto* lamp = keepsPlace(ui(p.Shpstatus[2], "Waiting for a selection"));
    auto* part = ui(p.cboDeviceSelect, 14);
    auto* volts = ui(p.CboVCC, 8);
    QWidget* others = block(column({
        row({ui(p.OptLM73[0]), ui(p.OptLM73[1]), stretch}),
        row({caption("Part", part), part, gap, caption("VCC", volts), volts, stretch}),
        row({ui(p.cmdShow4410), ui(p.Command1), ui(p.Command2), ui(p.cmdShowBlock), stretch}),
    }));
    others->hide();
    others->setProperty("folded", true);
    auto* more = new QCheckBox("Further controls");
    QObject::connect(more, &QCheckBox::toggled, others, &QWidget::setVisible);

    page.setContent(block(column({
        row({symbol, instruction, stretch}),
        row({column({picture, stretch}), gap,
             column({list, row({lamp, quietText("Choose with a click, or with the arrow keys and Enter"),
                                stretch})})}),
        row({ui(p.ChkTrace), ui(p.chkTRDetail), gap, ui(p.Command3), stretch, more}),
        others,
        stretch,
    })));
    page.setFirstFocus(list);
}

} // namespace vrk
