#include "views/workspace/KeyTable.h"

#include <QShortcut>
#include <QWidget>

namespace vrk {

KeyTable::KeyTable(QWidget& window) : QObject(&window), window_(window) {}

void KeyTable::add(const QKeySequence& key) {
    QShortcut*& shortcut = keys_[key];
    if (shortcut != nullptr)
        return;
    shortcut = new QShortcut(key, &window_);
    // Some keyboards tell "?" with Shift and some without; Enter is there twice.
    if (key == QKeySequence(Qt::Key_Question))
        shortcut->setKeys({key, QKeySequence(Qt::SHIFT | Qt::Key_Question)});
    else if (key == QKeySequence(Qt::CTRL | Qt::Key_Return))
        shortcut->setKeys({key, QKeySequence(Qt::CTRL | Qt::Key_Enter)});
    connect(shortcut, &QShortcut::activated, this, [this, key] {
        if (pressed)
            pressed(key);
    });
}

} // namespace vrk
