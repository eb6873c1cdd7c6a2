#include "views/workspace/Rail.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"

#include <QAbstractButton>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace vrk {

using namespace qt;

namespace {
constexpr int kWidth = 128;
constexpr int kNarrowWidth = 44;
constexpr int kRow = 28;
constexpr int kLeastRow = 17;
constexpr int kSignSize = 16;
} // namespace

/// One entry: its sign, its name, and a bar at the left while its page is in front.
class RailEntry final : public QAbstractButton {
  public:
    explicit RailEntry(const PageRow& row) : sign_(row.sign) {
        setObjectName(QString("rail.") + row.name);
        setText(row.name);
        setAccessibleName(row.name);
        setToolTip(row.name);
        setCheckable(true);
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_Hover);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Maximum);
    }
    QSize sizeHint() const override { return {dp(kNarrowWidth), dp(kRow)}; }
    QSize minimumSizeHint() const override { return {dp(kNarrowWidth), dp(kLeastRow)}; }

  protected:
    // The model says which page is in front, not the click.
    void nextCheckState() override {}
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QPalette& colours = palette();
        if (isChecked()) {
            painter.fillRect(rect(), colours.color(QPalette::Base));
            painter.fillRect(QRect(0, 0, dp(3), height()), colours.color(QPalette::Highlight));
        } else if (underMouse() && isEnabled()) {
            painter.fillRect(rect(), colours.color(QPalette::Button));
        }
        const QColor ink =
            colours.color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText);
        const int side = dp(kSignSize);
        drawSign(painter, sign_, QRectF(dp(12), (height() - side) / 2.0, side, side), ink);
        if (width() > dp(kNarrowWidth)) {
            painter.setPen(ink);
            const QRect room = rect().adjusted(dp(35), 0, -dp(2), 0);
            // The longest names stand smaller, and the longest of them never bold.
            for (const QFont& font :
                 {textFont(1.0, isChecked()), textFont(kSmall, isChecked()), textFont(kSmall)}) {
                painter.setFont(font);
                if (QFontMetricsF(font).horizontalAdvance(text()) <= room.width())
                    break;
            }
            painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                             painter.fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
        }
        if (hasFocus()) {
            painter.setPen(QPen(colours.color(QPalette::Highlight), 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
        }
    }

  private:
    Sign sign_;
};

Rail::Rail() {
    setObjectName("rail");
    setAccessibleName("Pages");
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, kUnit, 1, kUnit);
    all->setSpacing(0);
    QString group;
    for (const PageRow& row : pageRows()) {
        if (row.place != PagePlace::Page)
            continue;
        if (group != row.group) {
            group = row.group;
            QLabel* words = quietText(group);
            words->setFont(textFont(kSmall));
            words->setContentsMargins(dp(12), dp(12), 0, dp(6));
            headings_.push_back(words);
            all->addWidget(words);
        }
        auto* entry = new RailEntry(row);
        entries_[&row] = entry;
        all->addWidget(entry);
        QObject::connect(entry, &QAbstractButton::clicked, this, [this, &row] {
            if (onOpen)
                onOpen(row);
        });
    }
    all->addStretch(1);
    full_ = sizeHint().height();
    setNarrow(false, full_);
}

void Rail::setFront(const PageRow* row) {
    for (const auto& [its, entry] : entries_)
        entry->setChecked(its == row);
}

void Rail::setNarrow(bool narrow, int height) {
    narrow_ = narrow;
    setFixedWidth(dp(narrow ? kNarrowWidth : kWidth));
    for (QWidget* words : headings_)
        words->setVisible(!narrow && height >= full_);
}

void Rail::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(width() - 1, 0, width() - 1, height());
}

} // namespace vrk
