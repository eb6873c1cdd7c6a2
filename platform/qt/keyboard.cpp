#include "platform/qt/keyboard.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>

#include <algorithm>
#include <vector>

namespace vrk::qt {

namespace {

/// A key by which the user moves the keyboard or uses the field that has it.
bool takesHold(const QKeyEvent& key) {
    const bool moves = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab ||
                       (key.key() >= Qt::Key_Home && key.key() <= Qt::Key_PageDown);
    return moves || (!key.text().isEmpty() && key.text().front().isPrint() && key.key() != Qt::Key_Space);
}

/// Who is to have the keyboard again. An action may disable, one after the other, those that Qt passes it on
/// to: all of them are remembered, and the one that had it first has the first claim.
class OwedKeyboard final : public QObject {
  public:
    static OwedKeyboard& instance() {
        static QPointer<OwedKeyboard> one;
        if (one == nullptr)
            one = new OwedKeyboard;
        return *one;
    }

    void owe(QWidget& widget) {
        std::erase_if(owed_, [&](const auto& other) { return other == nullptr || other == &widget; });
        if (owed_.empty())
            qApp->installEventFilter(this);
        owed_.emplace_back(&widget);
    }
    /// Pays the first of those who can have it; the ones before are still owed.
    void pay() {
        const auto paid = std::find_if(owed_.begin(), owed_.end(), [](const auto& widget) {
            return widget != nullptr && widget->isEnabled() && widget->isVisible();
        });
        if (paid == owed_.end())
            return;
        QWidget* widget = *paid;
        owed_.erase(paid, owed_.end());
        if (owed_.empty())
            forget();
        widget->setFocus(Qt::OtherFocusReason);
    }
    /// The first claim; nullptr if there is none.
    QWidget* first() const {
        const auto claim =
            std::find_if(owed_.begin(), owed_.end(), [](const auto& widget) { return widget != nullptr; });
        return claim == owed_.end() ? nullptr : claim->data();
    }
    bool owes(const QWidget& within) const {
        return std::any_of(owed_.begin(), owed_.end(), [&](const auto& widget) {
            return widget != nullptr && within.isAncestorOf(widget);
        });
    }
    void forget() {
        owed_.clear();
        qApp->removeEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const bool letter = event->type() == QEvent::Shortcut && watched->isWidgetType(); // Alt+letter
        if (letter || event->type() == QEvent::MouseButtonPress ||
            (event->type() == QEvent::KeyPress && takesHold(*static_cast<QKeyEvent*>(event))))
            forget();
        return false;
    }

  private:
    OwedKeyboard() : QObject(qApp) {}

    std::vector<QPointer<QWidget>> owed_;
};

/// What has the keyboard in the widget or is it; nullptr if that is elsewhere in its window.
QWidget* keyboardIn(const QWidget& widget) {
    QWidget* keyboard = widget.window()->focusWidget();
    return keyboard == &widget || widget.isAncestorOf(keyboard) ? keyboard : nullptr;
}

} // namespace

void giveKeyboard(QWidget& widget) {
    OwedKeyboard& owed = OwedKeyboard::instance();
    owed.forget();
    if (widget.isEnabled())
        widget.setFocus(Qt::OtherFocusReason);
    else
        owed.owe(widget);
}

void setEnabledWithKeyboard(QWidget& widget, bool enabled) {
    QWidget* keyboard = enabled ? nullptr : keyboardIn(widget);
    widget.setEnabled(enabled);
    if (keyboard != nullptr)
        OwedKeyboard::instance().owe(*keyboard);
    else if (enabled)
        OwedKeyboard::instance().pay();
}

void hideWithKeyboard(QWidget& widget) {
    QWidget* keyboard = keyboardIn(widget);
    widget.hide();
    if (keyboard != nullptr)
        OwedKeyboard::instance().owe(*keyboard);
}

QWidget* keyboardHolder(const QWidget& within) {
    QWidget* owed = OwedKeyboard::instance().first();
    return owed != nullptr ? owed : within.window()->focusWidget();
}

bool owesKeyboard(const QWidget& within) {
    return OwedKeyboard::instance().owes(within);
}

} // namespace vrk::qt
