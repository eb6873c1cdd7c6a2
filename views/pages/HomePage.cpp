#include "platform/qt/theme.h"
#include "shell/frmStartup.h"
#include "views/pages/boxes.h"
#include "views/pages/homeCards.h"
#include "views/pages/pageMakers.h"
#include "views/workspace/Page.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {

void drawBox(QPainter& painter, const QRectF& box, const QPalette& palette, const QString& title,
             const QString& detail) {
    painter.setPen(QPen(palette.color(QPalette::Dark), 1.0));
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRoundedRect(box, 3, 3);
    const double half = box.height() / 2;
    painter.setPen(palette.color(QPalette::WindowText));
    const double wide = QFontMetricsF(textFont(1.0, true)).horizontalAdvance(title);
    painter.setFont(textFont(std::min(1.0, (box.width() - kUnit) / wide), true)); // whole in a narrow window
    painter.drawText(box.adjusted(0, 0, 0, -half * 0.7), Qt::AlignCenter, title);
    painter.setFont(textFont(kSmall));
    painter.setPen(palette.color(QPalette::PlaceholderText));
    painter.drawText(box.adjusted(0, half * 0.7, 0, 0), Qt::AlignCenter, detail);
}

void drawWire(QPainter& painter, const QPointF& from, const QPointF& to, const QPalette& palette,
              const QString& text) {
    painter.setPen(QPen(palette.color(QPalette::Highlight), 2.0));
    painter.drawLine(from, to);
    painter.setFont(textFont(kSmall));
    const QFontMetricsF metrics(painter.font());
    painter.setPen(palette.color(QPalette::PlaceholderText));
    const QRectF place(from.x(), from.y() - metrics.height() - 2, to.x() - from.x(), metrics.height());
    painter.drawText(place, Qt::AlignCenter, text);
}

/// Computer, motherboard, part: what hangs on what.
void drawBench(QPainter& painter, const QRectF& area, const QPalette& palette) {
    const double width = std::min(area.width() * 0.22, dp(160) * 1.5);
    const double between = std::min((area.width() - 3 * width - 4) / 2, width * 0.7);
    const double below = QFontMetricsF(textFont(kSmall)).height() * 2.6;
    const double height = std::min(area.height() - below, static_cast<double>(dp(72)));
    const double top = area.top() + (area.height() - height - below) / 2;
    const auto box = [&](int index) {
        return QRectF(area.left() + 2 + index * (width + between), top + 1, width, height - 2);
    };
    const double middle = top + height / 2;
    drawWire(painter, {box(0).right(), middle}, {box(1).left(), middle}, palette, "USB");
    drawWire(painter, {box(1).right(), middle}, {box(2).left(), middle}, palette, "bus or pins");
    drawBox(painter, box(0), palette, "Computer", "this program");
    drawBox(painter, box(1), palette, "Motherboard", "supplies, volts");
    drawBox(painter, box(2), palette, "Daughter board", "the part");
    // The wiper comes back to the analog inputs.
    const double line = top + height + below * 0.45;
    painter.setPen(QPen(palette.color(QPalette::PlaceholderText), 1.5, Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(QPolygonF{QPointF(box(2).center().x(), box(2).bottom()),
                                   QPointF(box(2).center().x(), line), QPointF(box(1).center().x(), line),
                                   QPointF(box(1).center().x(), box(1).bottom())});
    painter.setFont(textFont(kSmall));
    painter.setPen(palette.color(QPalette::PlaceholderText));
    painter.drawText(QRectF(box(1).center().x(), line + 2, box(2).center().x() - box(1).center().x(),
                            QFontMetricsF(painter.font()).height()),
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

/// What most users never need: folded away, but there.
QWidget* furtherControls(PanelUi& ui, frmStartup& p) {
    auto* part = ui(p.cboDeviceSelect, 14);
    part->setAccessibleName("Part");
    auto* volts = ui(p.CboVCC, 6);
    volts->setAccessibleName("VCC");
    auto* consoles = new QCheckBox("show both consoles");
    consoles->setObjectName("showConsoles");
    consoles->setToolTip(QString::fromStdString(p.Picture1.toolTip()));
    QObject::connect(consoles, &QCheckBox::clicked, consoles, [consoles, &p] {
        // A double click can only switch it on: so stands the choice until the program ends.
        (void)p.Picture1.userDoubleClick();
        consoles->setChecked(true);
    });
    auto* content = block(column({
        row({part, volts, ui(p.OptLM73[0]), ui(p.OptLM73[1]), stretch, ui(p.cmdShow4410)}),
        row({"With the choice", consoles, stretch, "without effect", ui(p.Command1), ui(p.Command2),
             ui(p.cmdShowBlock)}),
    }));
    content->setObjectName("further");
    content->setProperty("folded", true);
    return content;
}

} // namespace

void makeHomePage(PageUi& page, frmStartup& p) {
    PanelUi& ui = page.ui();
    page.setHelpPage("Home");
    page.withoutDock();
    auto* instruction = ui(p.Label1);
    makeQuiet(*instruction);
    page.setSubtitle(instruction);
    auto* lamp = keepsPlace(ui(p.Shpstatus[2], "Waiting for a choice"));
    auto* waiting = keepsPlace(quietText("waiting for a choice"));
    ui.watch(p.Shpstatus[2], [waiting, &p] { setShown(*waiting, p.Shpstatus[2].visible()); });
    page.addHeadItem(lamp);
    page.addHeadItem(waiting);

    const HomePart cards = makeHomeCards(page, p);
    const HomePart board = makeHomeBoard(page);
    page.onLinkShown([cards, board](const LinkWords& words) {
        cards.show(words);
        board.show(words);
    });
    board.show(linkWords(page.context()));

    auto* picture = ui(p.Picture1, QSize(dp(480), dp(100)), drawBench);
    picture->setAccessibleName("How the hardware is connected");
    picture->setFocusPolicy(Qt::TabFocus);
    picture->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    auto* symbol = ui(p.Picture2, QSize(dp(40), dp(24)), drawPotentiometer);
    symbol->setAccessibleName("Potentiometer");
    symbol->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* choice = ui(p.cboVRKSelect, 26);
    auto* about = new QPushButton("About");
    about->setObjectName("home.about");
    QAction* aboutEntry = ui(p.mnuAboutShow);
    aboutEntry->setParent(about);
    QObject::connect(about, &QPushButton::clicked, aboutEntry, &QAction::trigger);
    auto* consoles = new QPushButton("Consoles only");
    consoles->setObjectName("home.consoles");
    consoles->setToolTip("Looks for the board and opens Motherboard and Controller, without a panel");
    QObject::connect(consoles, &QPushButton::clicked, &page, [&page, &p] {
        (void)p.cboVRKSelect.userSelect(frmStartup::kConsolesOnly);
        page.openPage("Motherboard");
        page.openPage("Controller");
    });
    for (QPushButton* button : {about, consoles})
        button->setAutoDefault(false);

    QWidget* further = furtherControls(ui, p);
    auto* fold = new QToolButton;
    fold->setObjectName("further.fold");
    fold->setText("Further controls");
    fold->setFont(textFont(1.0, true));
    fold->setAutoRaise(true);
    fold->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    fold->setFocusPolicy(Qt::StrongFocus);
    const auto setFolded = [fold, further](bool folded) {
        setShown(*further, !folded);
        fold->setArrowType(folded ? Qt::RightArrow : Qt::DownArrow);
        fold->setAccessibleDescription(folded ? "folded" : "unfolded");
    };
    QObject::connect(fold, &QToolButton::clicked, fold,
                     [further, setFolded] { setFolded(!further->isHidden()); });
    setFolded(true);

    auto* connection = column({
        picture,
        separator(Qt::Horizontal),
        row({ui(p.ChkTrace), ui(p.chkTRDetail), ui(p.Command3), about, stretch, consoles}),
        row({fold, stretch}),
        further,
    });
    connection->setStretch(0, 1);
    QWidget* corner = block(row({symbol, gap, caption("Device", choice), choice}));
    auto* lower = row({box("Connection", connection, BoxFrame::Ground::Window, corner), board.widget});
    lower->setStretch(0, 756);
    lower->setStretch(1, 372);
    auto* all = column({cards.widget, lower});
    all->setStretch(1, 1);
    page.setContent(block(all));
}

} // namespace vrk
