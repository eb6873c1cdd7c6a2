#include "views/workspace/HeadRoom.h"

#include "platform/qt/theme.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLayout>
#include <QWidget>

#include <algorithm>
#include <memory>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

/// One after the other, in as many lines as it takes; no wider than its widest item must be.
class Lines final : public QLayout {
  public:
    /// \param width in sight of a page that may be wider.
    void setLimit(int width) {
        if (std::exchange(limit_, width) != width)
            invalidate();
    }
    void addItem(QLayoutItem* item) override {
        item->setAlignment(Qt::AlignVCenter);
        items_.emplace_back(item);
    }
    int count() const override { return static_cast<int>(items_.size()); }
    QLayoutItem* itemAt(int index) const override {
        return index < 0 || index >= count() ? nullptr : items_[static_cast<std::size_t>(index)].get();
    }
    QLayoutItem* takeAt(int index) override {
        if (index < 0 || index >= count())
            return nullptr;
        QLayoutItem* item = items_[static_cast<std::size_t>(index)].release();
        items_.erase(items_.begin() + index);
        return item;
    }
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return place(QRect(0, 0, width, 0), false); }
    QSize minimumSize() const override {
        QSize least;
        for (const auto& item : items_)
            least = least.expandedTo(item->minimumSize());
        return least + QSize(0, kUnit);
    }
    QSize sizeHint() const override { return minimumSize(); }
    void setGeometry(const QRect& rect) override {
        QLayout::setGeometry(rect);
        (void)place(rect, true);
    }

  private:
    /// Returns the height that it takes, with the distance to the page below.
    int place(const QRect& rect, bool move) const {
        const int room = std::min(rect.width(), limit_);
        int high = 0;
        for (const auto& item : items_)
            high = std::max(high, item->sizeHint().height());
        int x = 0;
        int y = 0;
        for (const auto& item : items_) {
            if (item->isEmpty())
                continue;
            const int wide = std::min(item->sizeHint().width(), room);
            if (x > 0 && x + wide > room) {
                x = 0;
                y += high + kUnit / 2;
            }
            if (move)
                item->setGeometry(QRect(rect.left() + x, rect.top() + y, wide, high));
            x += wide + kUnit;
        }
        return y + high + kUnit;
    }

    std::vector<std::unique_ptr<QLayoutItem>> items_;
    int limit_ = QWIDGETSIZE_MAX;
};

} // namespace

HeadRoom::HeadRoom(QWidget& head, QBoxLayout& items, QWidget& content)
    : QObject(&head), head_(head), items_(items), content_(&content) {
    for (int at = 0; at < items.count(); ++at)
        if (QWidget* widget = items.itemAt(at)->widget())
            widgets_.emplace_back(widget);
    later_.setSingleShot(true);
    connect(&later_, &QTimer::timeout, this, [this] { arrange(); });
    head.installEventFilter(this);
}

int HeadRoom::needed() const {
    const QLayout& line = *head_.layout();
    const QMargins margins = line.contentsMargins();
    int width = margins.left() + margins.right();
    for (int at = 0; at < line.count(); ++at)
        if (line.itemAt(at)->widget() != items_.parentWidget())
            width += line.itemAt(at)->minimumSize().width() + line.spacing();
    for (const auto& widget : widgets_)
        if (widget != nullptr && !widget->isHidden())
            width += std::clamp(widget->minimumSizeHint().width(), widget->minimumWidth(),
                                widget->maximumWidth()) +
                     items_.spacing();
    return width;
}

void HeadRoom::arrange() {
    auto* column = content_ == nullptr ? nullptr : qobject_cast<QBoxLayout*>(content_->layout());
    if (column == nullptr || column->direction() != QBoxLayout::TopToBottom)
        return;
    const bool fits = needed() <= head_.width();
    if (fits != (below_ == nullptr))
        move(*column, fits);
    if (below_ != nullptr)
        static_cast<Lines*>(below_->layout())->setLimit(head_.width() - 2 * kUnit);
}

void HeadRoom::move(QBoxLayout& column, bool intoHead) {
    QWidget* keyboard = head_.window()->focusWidget();
    QWidget* left = below_;
    QLayout* to = &items_;
    if (!intoHead) {
        below_ = new QWidget;
        to = new Lines;
        below_->setLayout(to);
        column.insertWidget(0, below_);
    }
    for (const auto& widget : widgets_)
        if (widget != nullptr)
            to->addWidget(widget);
    if (intoHead) {
        below_ = nullptr;
        left->deleteLater();
    }
    // A widget that gets another parent loses it.
    if (keyboard != nullptr && std::any_of(widgets_.begin(), widgets_.end(), [&](const auto& widget) {
            return widget == keyboard || (widget != nullptr && widget->isAncestorOf(keyboard));
        }))
        keyboard->setFocus(Qt::OtherFocusReason);
}

bool HeadRoom::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest)
        later_.start(0); // not while the head lays itself out
    return QObject::eventFilter(watched, event);
}

} // namespace vrk
