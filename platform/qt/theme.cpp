#include "platform/qt/theme.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QFontDatabase>
#include <QPainter>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTabBar>
#include <QWidget>

namespace vrk::qt {

namespace {

constexpr const char* kTone = "tone";
constexpr const char* kAccent = "accent";
constexpr double kCorner = 3.0;

QColor between(const QColor& from, const QColor& to, double share) {
    return QColor::fromRgbF(static_cast<float>(from.redF() + (to.redF() - from.redF()) * share),
                            static_cast<float>(from.greenF() + (to.greenF() - from.greenF()) * share),
                            static_cast<float>(from.blueF() + (to.blueF() - from.blueF()) * share));
}

Tone toneOf(const QWidget* widget) {
    return widget == nullptr ? Tone::Plain : static_cast<Tone>(widget->property(kTone).toInt());
}
bool isAccent(const QWidget* widget) {
    return widget != nullptr && widget->property(kAccent).toBool();
}

/// Fusion, flat: every field, box and button has an outline of one pixel that stands out 3 : 1 in both
/// shades, where Fusion's own vanish on dark windows; the focus is a line of two in the accent colour. A
/// click in a slider's groove brings the thumb there instead of paging towards it.
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
        switch (element) {
        case PE_IndicatorCheckBox:
            return drawCheck(*option, *painter);
        case PE_IndicatorRadioButton:
            return drawRound(*option, *painter);
        case PE_PanelButtonCommand:
            return drawButton(*option, *painter, isAccent(widget));
        case PE_PanelLineEdit:
            if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
                frame != nullptr && frame->lineWidth > 0)
                return drawField(*option, *painter, toneOf(widget));
            break;
        case PE_FrameFocusRect: // buttons and fields show it in their outline
            if (qobject_cast<const QAbstractButton*>(widget) != nullptr ||
                qobject_cast<const QTabBar*>(widget) != nullptr)
                return drawFocus(*option, *painter, widget);
            break;
        case PE_Frame: // lists and logs
            if (qobject_cast<const QAbstractScrollArea*>(widget) != nullptr)
                return drawPanel(*option, *painter, Qt::transparent, outline(*option),
                                 option->state.testFlag(State_HasFocus));
            break;
        default:
            break;
        }
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        if (element == CE_PushButtonLabel && isAccent(widget) && (option->state & State_Enabled) != 0) {
            const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
            QStyleOptionButton white(*button);
            white.palette.setColor(QPalette::ButtonText, white.palette.color(QPalette::HighlightedText));
            return QProxyStyle::drawControl(element, &white, painter, widget);
        }
        if (element == CE_TabBarTabShape)
            return drawTab(*option, *painter);
        QProxyStyle::drawControl(element, option, painter, widget);
        // Fusion marks it once its menu is open, and not while the arrow keys choose it.
        if (element == CE_MenuBarItem && option->state.testFlag(State_Selected) &&
            !option->state.testFlag(State_Sunken))
            drawFocus(*option, *painter, widget);
        // Fusion shows it in a panel that is not drawn here, and in none of a flat button.
        if (element == CE_PushButton && option->state.testFlag(State_HasFocus))
            drawFocus(*option, *painter, widget);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override {
        const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
        if (control == CC_ComboBox && combo != nullptr && !combo->editable)
            return drawCombo(*combo, *painter);
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }

  private:
    static QColor outline(const QStyleOption& option) {
        return option.palette.color(option.state.testFlag(State_Enabled) ? QPalette::Dark : QPalette::Mid);
    }
    static void drawPanel(const QStyleOption& option, QPainter& painter, const QColor& fill, QColor edge,
                          bool focus) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        const double line = focus ? 2.0 : 1.0;
        if (focus)
            edge = option.palette.color(QPalette::Active, QPalette::Highlight);
        painter.setPen(QPen(edge, line));
        painter.setBrush(fill);
        const double half = line / 2;
        painter.drawRoundedRect(QRectF(option.rect).adjusted(half, half, -half, -half), kCorner, kCorner);
        painter.restore();
    }
    static void drawButton(const QStyleOption& option, QPainter& painter, bool accent) {
        const bool enabled = option.state.testFlag(State_Enabled);
        const QPalette& palette = option.palette;
        QColor fill = palette.color(!enabled ? QPalette::Window
                                    : accent ? QPalette::Highlight
                                             : QPalette::Button);
        const QColor ink = palette.color(QPalette::ButtonText);
        if (enabled && option.state.testFlag(State_Sunken))
            fill = between(fill, ink, 0.10);
        else if (enabled && option.state.testFlag(State_MouseOver))
            fill = between(fill, ink, 0.05);
        if (enabled && option.state.testFlag(State_On))
            fill = between(fill, ink, 0.10);
        drawPanel(option, painter, fill, enabled && accent ? fill : outline(option), false);
    }
    static void drawFocus(const QStyleOption& option, QPainter& painter, const QWidget* widget) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        const bool command = qobject_cast<const QPushButton*>(widget) != nullptr;
        // A checked box that has no words beside it is in the accent colour all over.
        const auto* box = qobject_cast<const QAbstractButton*>(widget);
        const bool filled = !command && box != nullptr && box->isChecked() && box->text().isEmpty();
        const QColor ring = option.palette.color(isAccent(widget) ? QPalette::HighlightedText
                                                 : filled         ? QPalette::WindowText
                                                                  : QPalette::Highlight);
        painter.setPen(QPen(ring, isAccent(widget) ? 1.0 : 2.0));
        painter.setBrush(Qt::NoBrush);
        const QRectF around = command ? QRectF(widget->rect()) : QRectF(option.rect);
        const double inset = isAccent(widget) ? 2.5 : 1.0;
        painter.drawRoundedRect(around.adjusted(inset, inset, -inset, -inset), kCorner, kCorner);
        painter.restore();
    }
    static void drawField(const QStyleOption& option, QPainter& painter, Tone tone) {
        QColor fill = option.palette.color(QPalette::Base);
        QColor edge = outline(option);
        if (tone == Tone::Differs) {
            fill = colours().differsGround;
            edge = colours().differsText;
        } else if (tone == Tone::Failed) {
            edge = colours().failure;
        }
        drawPanel(option, painter, fill, edge, option.state.testFlag(State_HasFocus));
    }
    static void drawCombo(const QStyleOptionComboBox& option, QPainter& painter) {
        const bool enabled = option.state.testFlag(State_Enabled);
        QColor fill = option.palette.color(enabled ? QPalette::Button : QPalette::Window);
        if (enabled && option.state.testFlag(State_MouseOver))
            fill = between(fill, option.palette.color(QPalette::ButtonText), 0.05);
        drawPanel(option, painter, fill, outline(option), enabled && option.state.testFlag(State_HasFocus));
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(option.palette.color(QPalette::ButtonText));
        const double side = option.fontMetrics.height() / 4.0;
        const QPointF tip(option.rect.right() - 2.2 * side - 1, option.rect.center().y() + side / 2 + 1);
        painter.drawPolygon(QPolygonF({tip, tip + QPointF(-side, -side), tip + QPointF(side, -side)}));
        painter.restore();
    }
    static void drawTab(const QStyleOption& option, QPainter& painter) {
        const QPalette& palette = option.palette;
        if (option.state.testFlag(State_Selected)) {
            const int thick = 2;
            painter.fillRect(
                QRect(option.rect.left(), option.rect.bottom() - thick + 1, option.rect.width(), thick),
                palette.color(QPalette::Active, QPalette::Highlight));
        } else if (option.state.testFlag(State_MouseOver)) {
            painter.fillRect(option.rect, palette.color(QPalette::Button));
        }
    }
    static void prepare(const QStyleOption& option, QPainter& painter, bool filled) {
        const bool enabled = option.state.testFlag(State_Enabled);
        const QColor fill = !enabled ? option.palette.color(filled ? QPalette::Mid : QPalette::Window)
                                     : option.palette.color(filled ? QPalette::Highlight : QPalette::Base);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(filled ? fill : outline(option), 1.2));
        painter.setBrush(fill);
    }
    static void drawCheck(const QStyleOption& option, QPainter& painter) {
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

QColor rgb(unsigned value) {
    return QColor::fromRgb(value);
}

} // namespace

Shade desktopShade() {
    const QPalette palette = QApplication::palette();
    return palette.color(QPalette::Window).lightnessF() < palette.color(QPalette::WindowText).lightnessF()
               ? Shade::Dark
               : Shade::Light;
}

QPalette paletteOf(Shade shade) {
    const auto pick = [shade](unsigned light, unsigned dark) {
        return rgb(shade == Shade::Dark ? dark : light);
    };
    const QColor window = pick(0xf1f3f5, 0x24272b);
    const QColor text = pick(0x1d2228, 0xe8eaec);
    const QColor base = pick(0xffffff, 0x1a1c1f);
    const QColor accent = pick(0x1f6fc9, 0x4d9df0);
    QPalette palette(pick(0xe6e9ed, 0x363b41), window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, pick(0xf6f8fa, 0x202327));
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, pick(0x55606b, 0xa6aeb6));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, pick(0xffffff, 0x0c1218));
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::Mid, pick(0xccd2d8, 0x40464c));
    palette.setColor(QPalette::Dark, pick(0x7f8993, 0x757e87));
    const QColor dim = pick(0x8a939c, 0x727a82);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, dim);
    palette.setColor(QPalette::Disabled, QPalette::Base, window);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, dim);
    return palette;
}

const Colours& colours() {
    static const Colours kLight{
        .stale = rgb(0x757e88),
        .good = rgb(0x1b7f3b),
        .goodGround = rgb(0xdff2e4),
        .failure = rgb(0xc4261d),
        .failureGround = rgb(0xfbe3e0),
        .supplyGround = rgb(0xffdf9e),
        .supplyText = rgb(0x6b4500),
        .power = rgb(0x9a5f00),
        .differsGround = rgb(0xe5dcfa),
        .differsText = rgb(0x4b2d8f),
        .changed = rgb(0x1a84cf),
        .blue = rgb(0x173f94),
        .source = rgb(0xa67f00),
        .chosenRow = rgb(0xfff0b3),
        .channels = {rgb(0x1f6fc9), rgb(0xb35900), rgb(0x7a4fb5), rgb(0x00827f)},
    };
    static const Colours kDark{
        .stale = rgb(0x858d96),
        .good = rgb(0x4cc06f),
        .goodGround = rgb(0x1f3d29),
        .failure = rgb(0xff7265),
        .failureGround = rgb(0x4a2320),
        .supplyGround = rgb(0x5a4208),
        .supplyText = rgb(0xffd27a),
        .power = rgb(0xffb938),
        .differsGround = rgb(0x3d3266),
        .differsText = rgb(0xcdbdff),
        .changed = rgb(0x52b4f5),
        .blue = rgb(0x3a6fd8),
        .source = rgb(0xe8c23a),
        .chosenRow = rgb(0x4a4212),
        .channels = {rgb(0x4d9df0), rgb(0xe0954a), rgb(0xb79af5), rgb(0x3cc2bd)},
    };
    return currentShade() == Shade::Dark ? kDark : kLight;
}

QColor toneColour(Tone tone) {
    switch (tone) {
    case Tone::Quiet:
        return QApplication::palette().color(QPalette::PlaceholderText);
    case Tone::Stale:
        return colours().stale;
    case Tone::Failed:
        return colours().failure;
    case Tone::Differs:
        return colours().differsText;
    case Tone::Good:
        return colours().good;
    case Tone::Plain:
        break;
    }
    return QApplication::palette().color(QPalette::WindowText);
}

void setTone(QWidget& widget, Tone tone) {
    widget.setProperty(kTone, static_cast<int>(tone));
    widget.update();
}

void makeAccent(QWidget& button, bool accent) {
    button.setProperty(kAccent, accent);
    button.update();
}

void applyTheme(QApplication& application, Shade shade) {
    application.setStyle(new BenchStyle);
    application.setPalette(paletteOf(shade));
}

Shade currentShade() {
    return desktopShade();
}

int dp(int measure) {
    constexpr double kLine = 15.0; ///< height of the font that the measures were taken with, 13 px
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
