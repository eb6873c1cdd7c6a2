#include "platform/qt/theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <QWidget>

namespace vrk::qt {

namespace {

/// Fusion, with two differences: a click in a slider's groove brings the thumb there instead of paging
/// towards it, and boxes are drawn from palette roles, since Fusion's own outlines vanish on dark windows.
class BenchStyle final : public QProxyStyle {
  public:
    BenchStyle() : QProxyStyle(QStyleFactory::create("Fusion")) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        if (hint == SH_Slider_AbsoluteSetButtons)
            return Qt::LeftButton;
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        if (element == PE_IndicatorCheckBox)
            drawBox(*option, *painter);
        else if (element == PE_IndicatorRadioButton)
            drawRound(*option, *painter);
        else
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

  private:
    static void prepare(const QStyleOption& option, QPainter& painter, bool filled) {
        const bool enabled = option.state.testFlag(State_Enabled);
        const QPalette& palette = option.palette;
        const QColor fill = palette.color(filled ? QPalette::Highlight : QPalette::Base);
        const QColor edge = filled    ? fill
                            : enabled ? palette.color(QPalette::PlaceholderText)
                                      : palette.color(QPalette::Mid);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(edge, 1.2));
        painter.setBrush(fill);
    }
    static void drawBox(const QStyleOption& option, QPainter& painter) {
        const bool on = option.state.testFlag(State_On);
        painter.save();
        prepare(option, painter, on);
        const QRectF box = QRectF(option.rect).adjusted(1.0, 1.0, -1.0, -1.0);
        painter.drawRoundedRect(box, 2.5, 2.5);
        if (on) {
            QPen pen(option.palette.color(QPalette::HighlightedText), box.width() / 7);
            pen.setCapStyle(Qt::RoundCap);
            pen.setJoinStyle(Qt::RoundJoin);
            painter.setPen(pen);
            painter.setBrush(Qt::NoBrush);
            const QPolygonF tick{box.topLeft() + QPointF(0.22 * box.width(), 0.54 * box.height()),
                                 box.topLeft() + QPointF(0.43 * box.width(), 0.74 * box.height()),
                                 box.topLeft() + QPointF(0.79 * box.width(), 0.28 * box.height())};
            painter.drawPolyline(tick);
        }
        painter.restore();
    }
    static void drawRound(const QStyleOption& option, QPainter& painter) {
        const bool on = option.state.testFlag(State_On);
        painter.save();
        prepare(option, painter, on);
        const QRectF box = QRectF(option.rect).adjusted(1.0, 1.0, -1.0, -1.0);
        painter.drawEllipse(box);
        if (on) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(option.palette.color(QPalette::HighlightedText));
            painter.drawEllipse(box.center(), box.width() * 0.19, box.width() * 0.19);
        }
        painter.restore();
    }
};

} // namespace

Shade desktopShade() {
    const QPalette palette = QApplication::palette();
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF()
               ? Shade::Dark
               : Shade::Light;
}

QPalette paletteOf(Shade shade) {
    const bool dark = shade == Shade::Dark;
    const QColor window = dark ? QColor(0x24, 0x27, 0x2b) : QColor(0xf1, 0xf3, 0xf5);
    const QColor base = dark ? QColor(0x1a, 0x1c, 0x1f) : QColor(0xff, 0xff, 0xff);
    const QColor button = dark ? QColor(0x34, 0x38, 0x3e) : QColor(0xe6, 0xe9, 0xed);
    const QColor text = dark ? QColor(0xe6, 0xe8, 0xea) : QColor(0x1d, 0x22, 0x28);
    const QColor accent = dark ? QColor(0x4d, 0x9d, 0xf0) : QColor(0x1f, 0x6f, 0xc9);
    QPalette palette(button, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, dark ? QColor(0x21, 0x24, 0x28) : QColor(0xf6, 0xf8, 0xfa));
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, dark ? QColor(0x9a, 0xa2, 0xab) : QColor(0x5c, 0x66, 0x70));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, dark ? QColor(0x0c, 0x12, 0x18) : QColor(0xff, 0xff, 0xff));
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::Mid, dark ? QColor(0x4a, 0x50, 0x57) : QColor(0xc3, 0xc9, 0xd0));
    const QColor dim = dark ? QColor(0x77, 0x7e, 0x86) : QColor(0x92, 0x9a, 0xa3);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, dim);
    palette.setColor(QPalette::Disabled, QPalette::Base, window);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, dim);
    return palette;
}

void applyTheme(QApplication& application, Shade shade) {
    application.setStyle(new BenchStyle);
    application.setPalette(paletteOf(shade));
}

Shade currentShade() {
    return desktopShade();
}

int dp(int measure) {
    constexpr double kLine = 16.0;
    return qRound(measure * QFontMetricsF(QApplication::font()).height() / kLine);
}

QFont valueFont(double scale) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::Monospace);
    font.setPointSizeF(QApplication::font().pointSizeF() * scale);
    return font;
}

QFont textFont(double scale, bool bold) {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(bold);
    return font;
}

void makeQuiet(QWidget& widget) {
    widget.setForegroundRole(QPalette::PlaceholderText);
}

} // namespace vrk::qt
