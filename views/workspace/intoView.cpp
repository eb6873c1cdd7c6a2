#include "views/workspace/intoView.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QEvent>
#include <QScrollArea>

namespace vrk {

namespace {

void scrollTo(QScrollArea& area, QWidget& widget) {
    constexpr int kMargin = 8;
    const QRect seen(-area.widget()->pos(), area.viewport()->size());
    QRect place(widget.mapTo(area.widget(), QPoint()), widget.size());
    if (qobject_cast<const QAbstractButton*>(&widget) != nullptr)
        place.setSize(place.size().boundedTo(seen.size())); // box and words stand where it begins
    if (place.width() <= seen.width() && place.height() <= seen.height())
        return area.ensureVisible(place.center().x(), place.center().y(), place.width() / 2 + kMargin,
                                  place.height() / 2 + kMargin);
    // Of what is larger its cursor or its row; a list in which none is chosen stays where it is seen.
    const auto* list = qobject_cast<const QAbstractItemView*>(&widget);
    if (list == nullptr || list->currentIndex().isValid() || !seen.intersects(place))
        area.ensureWidgetVisible(&widget);
}

bool lastWasKey = false;

class Presses final : public QObject {
  public:
    using QObject::QObject;

  protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::Shortcut)
            lastWasKey = true;
        else if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin ||
                 event->type() == QEvent::Wheel)
            lastWasKey = false;
        return false;
    }
};

} // namespace

bool keysInUse() {
    return lastWasKey;
}

void followKeysInUse(QObject& owner) {
    qApp->installEventFilter(new Presses(&owner));
}

void scrollIntoView(QWidget& widget) {
    for (QWidget* at = widget.parentWidget(); at != nullptr; at = at->parentWidget())
        if (auto* area = qobject_cast<QScrollArea*>(at); area != nullptr && area->widget() != nullptr)
            scrollTo(*area, widget);
}

} // namespace vrk
