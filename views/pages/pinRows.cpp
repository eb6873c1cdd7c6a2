#include "views/pages/pinRows.h"

#include "platform/qt/theme.h"
#include "views/pages/boxes.h"
#include "views/pages/consoleWords.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>

#include <utility>

namespace vrk {

using namespace qt;

namespace {

// Five ports stand side by side at 1280 pixels: each column is as wide as its longest word, no wider.
constexpr int kNameWidth = 38;
constexpr std::array<int, 3> kBoxWidths = {26, 30, 37}; ///< HI, push or drive, analog
constexpr int kNowWidth = 72;

/// Rows and their head share these columns, so that the boxes stand under their words.
QGridLayout* pinColumns(std::size_t boxes) {
    auto* grid = new QGridLayout;
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    grid->setColumnMinimumWidth(0, dp(kNameWidth));
    grid->setColumnStretch(0, kNameWidth);
    for (int at = 1; at <= static_cast<int>(boxes); ++at) {
        const int width = kBoxWidths.at(static_cast<std::size_t>(at - 1));
        grid->setColumnMinimumWidth(at, dp(width));
        grid->setColumnStretch(at, width);
    }
    const int last = static_cast<int>(boxes) + 1;
    grid->setHorizontalSpacing(1);
    grid->setColumnMinimumWidth(last, dp(kNowWidth));
    grid->setColumnStretch(last, kNowWidth);
    return grid;
}

QString wordOf(PinNow now) {
    switch (now) {
    case PinNow::HighImpedance:
        return "Hi-Z";
    case PinNow::PullsLow:
        return "pulls LO";
    case PinNow::DrivesLow:
        return "drives LO";
    case PinNow::DrivesHigh:
        return "drives HI";
    case PinNow::Analog:
        return "analog";
    case PinNow::ReadsLow:
        return "reads LO";
    case PinNow::ReadsHigh:
        return "reads HI";
    }
    return {};
}

bool differs(PinNow now) {
    return now == PinNow::ReadsLow || now == PinNow::ReadsHigh;
}

} // namespace

PinNow pinNow(bool high, bool push, bool analog) {
    if (analog)
        return PinNow::Analog;
    if (push)
        return high ? PinNow::DrivesHigh : PinNow::DrivesLow;
    return high ? PinNow::HighImpedance : PinNow::PullsLow;
}

PinRow::PinRow(const QString& pin, const std::vector<QCheckBox*>& boxes) : pin_(pin), boxes_(boxes.size()) {
    auto* columns = pinColumns(boxes.size());
    columns->setRowMinimumHeight(0, dp(22));
    columns->setRowMinimumHeight(1, dp(16));
    int at = 1;
    for (QCheckBox* each : boxes)
        columns->addWidget(each, 0, at++, Qt::AlignCenter);
    setLayout(columns);
    setObjectName("pin." + pin);
    setNow(now_);
}

void PinRow::setUse(const QString& use) {
    use_ = use;
    update();
}

QString PinRow::nowWord() const {
    return wordOf(now_);
}

void PinRow::setNow(PinNow now) {
    now_ = now;
    setAccessibleName(pin_ + " " + wordOf(now));
    setToolTip(use_.isEmpty() ? accessibleName() : pin_ + ": " + use_ + ", " + wordOf(now));
    update();
}

QWidget* PinRow::makeHead(std::initializer_list<const char*> boxes) {
    auto* columns = pinColumns(boxes.size());
    columns->addWidget(columnTitle("pin"), 0, 0);
    int at = 1;
    for (const char* word : boxes)
        columns->addWidget(columnTitle(word), 0, at++, Qt::AlignCenter);
    columns->addWidget(columnTitle("now"), 0, at);
    auto* head = new QWidget;
    head->setLayout(columns);
    return head;
}

void PinRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const bool tinted = differs(now_);
    if (tinted)
        painter.fillRect(rect().adjusted(0, 1, 0, 0), colours().differsGround);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(0, 0, width(), 0);

    const auto* columns = static_cast<const QGridLayout*>(layout());
    const QRect name = columns->cellRect(0, 0);
    QFont bold = valueFont(kStripScale);
    bold.setBold(true);
    painter.setFont(bold);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(name.adjusted(1, 2, dp(40), 0), Qt::AlignLeft | Qt::AlignVCenter, pin_);
    painter.setFont(textFont(kSmall));
    painter.setPen(tinted ? colours().differsText : palette().color(QPalette::PlaceholderText));
    painter.drawText(QRect(1, columns->cellRect(1, 0).top(), width() - 2, columns->cellRect(1, 0).height()),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetrics(painter.font()).elidedText(use_, Qt::ElideRight, width() - 2));

    const QRect now = columns->cellRect(0, static_cast<int>(boxes_) + 1).adjusted(0, 2, 0, 0);
    const bool level = now_ != PinNow::HighImpedance && now_ != PinNow::Analog;
    int left = now.left();
    if (level) {
        // An edge as the pin lamps have it, in the text's colour.
        const double side = dp(10);
        const bool high = now_ == PinNow::DrivesHigh || now_ == PinNow::ReadsHigh;
        const QPointF middle(left + side / 2, now.center().y() + 0.5);
        const double reach = side / 2 - 1;
        const double up = dp(4);
        painter.setPen(QPen(tinted ? colours().differsText : palette().color(QPalette::WindowText), 1.4));
        painter.drawPolyline(
            QPolygonF{middle + QPointF(-reach, high ? up : -up), middle + QPointF(0, high ? up : -up),
                      middle + QPointF(0, high ? -up : up), middle + QPointF(reach, high ? -up : up)});
        left += qRound(side) + 2;
    }
    painter.setFont(textFont(kSmall, level));
    painter.setPen(tinted  ? colours().differsText
                   : level ? palette().color(QPalette::WindowText)
                           : palette().color(QPalette::PlaceholderText));
    painter.drawText(now.adjusted(left - now.left(), 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                     wordOf(now_));
}

RegisterTable registerTable(const std::vector<RegisterLine>& lines) {
    RegisterTable table;
    auto* grid = new QGridLayout;
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(kUnit / 2);
    grid->setVerticalSpacing(2);
    // Over the pair and, where the box is narrow, over its neighbours' empty places.
    auto* words = row({columnTitle("written"), columnTitle("read"), stretch});
    words->setSpacing(kUnit / 2);
    grid->addLayout(words, 0, 1, 1, 3);
    int at = 1;
    for (const RegisterLine& line : lines) {
        auto* name = columnTitle(line.name);
        name->setForegroundRole(QPalette::WindowText);
        grid->addWidget(name, at, 0);
        auto* bytes = new QHBoxLayout;
        bytes->setSpacing(0);
        for (QWidget* byte : {line.written, line.read}) {
            bytes->addStretch(1);
            bytes->addWidget(byte);
            bytes->addStretch(1);
        }
        auto* pair = new DiffersGround(bytes);
        pair->setObjectName("pair." + line.written->objectName());
        pair->setMinimumHeight(dp(24));
        table.pairs.push_back(pair);
        grid->addWidget(pair, at, 1);
        int column = 2;
        for (QWidget* each : line.behind)
            grid->addWidget(each, at, column++);
        ++at;
    }
    grid->setColumnStretch(1, 1);
    table.widget = block(grid);
    return table;
}

} // namespace vrk
