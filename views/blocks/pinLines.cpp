#include "views/blocks/pinLines.h"

#include "platform/controls/Panel.h"
#include "platform/qt/theme.h"
#include "views/blocks/rows.h"
#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace vrk {

using namespace qt;

namespace {

constexpr int kRow = 28;
constexpr int kLamp = 20;
constexpr double kText = 13; ///< height of the window's font, pixels at 100%

/// A button with the shape of a pulse on it.
class PulseButton final : public QPushButton {
  public:
    explicit PulseButton(const QString& pin) {
        setObjectName("pulse." + pin);
        setAccessibleName("Pulse " + pin);
        setToolTip("Moves " + pin + " to the other level and back");
        setAutoDefault(false);
        setFixedSize(dp(28), dp(24));
        keepWithoutMnemonic(*this);
    }

  protected:
    void paintEvent(QPaintEvent* event) override {
        QPushButton::paintEvent(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
        painter.setPen(QPen(palette().color(group, QPalette::ButtonText), 1.6));
        const QPointF middle = QRectF(rect()).center();
        const double side = dp(4);
        painter.drawPolyline(QPolygonF{middle + QPointF(-2 * side, side), middle + QPointF(-side, side),
                                       middle + QPointF(-side, -side), middle + QPointF(side, -side),
                                       middle + QPointF(side, side), middle + QPointF(2 * side, side)});
    }
};

QPushButton* pulseButton(const PinLine& line, QWidget& box) {
    auto* button = new PulseButton(line.name);
    QObject::connect(button, &QPushButton::clicked, button, [&drive = line.drive] {
        // As one action of the user's, so that one picture shows both edges.
        (void)drive.panel().events().deliver([&drive] {
            if (drive.userClick().done())
                (void)drive.userClick();
        });
    });
    followEnabled(*button, box);
    return button;
}

} // namespace

QWidget* pinLines(PageUi& page, const std::vector<PinLine>& lines) {
    PanelUi& ui = page.ui();
    auto* all = new QGridLayout;
    all->setContentsMargins(0, 0, 0, 0);
    all->setHorizontalSpacing(kUnit / 2);
    all->setVerticalSpacing(0);
    int at = 0;
    for (const PinLine& line : lines) {
        auto* box = ui(line.drive);
        box->setFont(textFont(1.0, true));
        box->setAccessibleName(line.name);
        box->setToolTip("Checked drives " + line.name + " high");
        keepWithoutMnemonic(*box);
        auto* place = quietText(line.place.isEmpty() ? QString("no pin") : line.place);
        place->setFont(textFont(kSmall));
        auto* lamp = ui(line.level, line.name);
        lamp->setRole(LampWidget::Role::Pin);
        lamp->setSide(kLamp);
        auto* level = quietText({});
        level->setObjectName("level." + line.name);
        level->setFont(valueFont());
        ui.watch(line.level, [level, &its = line.level] {
            const bool high = its.colour() != Colour::Black;
            level->setText(high ? "HI" : "LO");
            level->setForegroundRole(high ? QPalette::WindowText : QPalette::PlaceholderText);
        });
        level->setMinimumWidth(level->fontMetrics().horizontalAdvance("HI"));
        all->setRowMinimumHeight(at, dp(kRow));
        int column = 0;
        for (QWidget* each : std::initializer_list<QWidget*>{box, place, lamp, level})
            all->addWidget(each, at, column++, Qt::AlignVCenter);
        if (!line.place.isEmpty())
            all->addWidget(pulseButton(line, *box), at, column, Qt::AlignVCenter);
        ++at;
    }
    all->setColumnStretch(1, 1);
    return block(all);
}

QWidget* largeVolts(PageUi& page, Reading& volts, const QString& name, int digits) {
    auto* value = page.ui().value(volts, "0.000", digits / kText);
    value->setAccessibleName(name);
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* unit = quietText("V");
    unit->setFont(textFont(std::max(1.0, digits / kText / 2.6)));
    return block(row({value, unit}));
}

QWidget* largeButton(QWidget* button, int height) {
    button->setFont(textFont(kNameScale, true));
    button->setFixedHeight(dp(height));
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    keepWithoutMnemonic(*button); // it has a twin
    return button;
}

} // namespace vrk
