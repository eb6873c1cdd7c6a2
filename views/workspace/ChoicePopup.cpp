#include "views/workspace/ChoicePopup.h"

#include "platform/qt/QtHost.h"
#include "platform/qt/layout.h"
#include "platform/qt/theme.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {

enum Role : int { kIndex = Qt::UserRole, kKey, kRefusal, kFailed };
constexpr int kMostRows = 12;

/// Text at the left; the key or the reason for a refusal at the right, in smaller type.
class RowDelegate final : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {option.fontMetrics.averageCharWidth() * 20, dp(28)};
    }
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const QPalette& palette = option.palette;
        const bool chosen = (option.state & QStyle::State_Selected) != 0;
        const QString refusal = index.data(kRefusal).toString();
        painter->save();
        if (chosen)
            painter->fillRect(option.rect, palette.color(QPalette::Active, QPalette::Highlight));
        const QRect inside = option.rect.adjusted(kUnit, 0, -kUnit, 0);
        QColor ink = palette.color(chosen ? QPalette::HighlightedText : QPalette::Text);
        if (index.data(kFailed).toBool() && !chosen)
            ink = colours().failure;
        if (!refusal.isEmpty() && !chosen)
            ink = palette.color(QPalette::Disabled, QPalette::Text);
        painter->setPen(ink);
        painter->setFont(textFont(kSmall));
        const QString side = refusal.isEmpty() ? index.data(kKey).toString() : refusal;
        const int sideWidth =
            std::min(painter->fontMetrics().horizontalAdvance(side) + 4, inside.width() / 2);
        painter->drawText(inside, Qt::AlignRight | Qt::AlignVCenter,
                          painter->fontMetrics().elidedText(side, Qt::ElideRight, sideWidth));
        painter->setFont(textFont(1.0));
        painter->drawText(inside, Qt::AlignLeft | Qt::AlignVCenter,
                          painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideRight,
                                                            inside.width() - sideWidth - kUnit));
        painter->restore();
    }
};

} // namespace

ChoicePopup::ChoicePopup(QWidget& over, const QString& name, const QString& hint, std::vector<Choice> choices)
    : QFrame(&over, Qt::Popup),
      choices_(std::move(choices)),
      filter_(new QLineEdit),
      list_(new QListWidget),
      before_(QApplication::focusWidget()) {
    setObjectName(name);
    setAccessibleName(hint);
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameShape(QFrame::Box);
    filter_->setObjectName(name + ".filter");
    filter_->setPlaceholderText(hint);
    filter_->setAccessibleName(hint);
    list_->setObjectName(name + ".list");
    list_->setFrameShape(QFrame::NoFrame);
    list_->setItemDelegate(new RowDelegate(list_));
    list_->setFocusPolicy(Qt::NoFocus); // the keys go to the filter, which passes the arrows on
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* all = qt::column({filter_, list_});
    all->setContentsMargins(kUnit, kUnit, kUnit, kUnit);
    setLayout(all);
    filter_->installEventFilter(this);
    QObject::connect(filter_, &QLineEdit::textChanged, this, [this] { fill(); });
    QObject::connect(list_, &QListWidget::itemClicked, this, [this] { takeRow(); });
    fill();
}

void ChoicePopup::openAt(const QPoint& global, int width) {
    const int rows = std::min<int>(kMostRows, std::max<int>(1, static_cast<int>(choices_.size())));
    const int most = parentWidget()->window()->height() - dp(32); // longer ones scroll
    resize(width, std::min(most, rows * dp(28) + filter_->sizeHint().height() + 3 * kUnit + 4));
    QPoint corner = global;
    if (const QWidget* window = parentWidget()->window()) {
        const QRect room(window->mapToGlobal(QPoint()), window->size());
        corner.setX(std::clamp(corner.x(), room.left(), std::max(room.left(), room.right() - this->width())));
        corner.setY(std::clamp(corner.y(), room.top(), std::max(room.top(), room.bottom() - height())));
    }
    move(corner);
    show();
    filter_->setFocus(Qt::PopupFocusReason);
}

void ChoicePopup::fill() {
    list_->clear();
    const QStringList words = filter_->text().split(' ', Qt::SkipEmptyParts);
    for (std::size_t at = 0; at < choices_.size(); ++at) {
        const Choice& choice = choices_[at];
        if (!std::all_of(words.begin(), words.end(), [&](const QString& word) {
                return choice.text.contains(word, Qt::CaseInsensitive);
            }))
            continue;
        auto* item = new QListWidgetItem(choice.text, list_);
        item->setData(kIndex, static_cast<int>(at));
        item->setData(kKey, choice.key);
        item->setData(kRefusal, choice.refusal);
        item->setData(kFailed, choice.failed);
        item->setToolTip(choice.refusal.isEmpty() ? choice.text
                                                  : choice.text + "\nNot now: " + choice.refusal);
    }
    list_->setCurrentRow(0);
}

void ChoicePopup::takeRow() {
    const QListWidgetItem* item = list_->currentItem();
    if (item == nullptr)
        return;
    const Choice& choice = choices_[item->data(kIndex).toUInt()];
    if (!choice.refusal.isEmpty() || !choice.act)
        return;
    const auto act = choice.act;
    if (before_ != nullptr)
        before_->setFocus(Qt::PopupFocusReason);
    close();
    QtHost::guarded(act);
}

bool ChoicePopup::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        switch (key->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            QApplication::sendEvent(list_, event);
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            takeRow();
            return true;
        case Qt::Key_Escape:
            close();
            return true;
        default:
            break;
        }
    }
    return QFrame::eventFilter(watched, event);
}

} // namespace vrk
