#include "platform/qt/KeyLineEdit.h"

#include "platform/qt/theme.h"
#include "platform/runtime/text.h"

#include <QApplication>
#include <QClipboard>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QStyle>
#include <QStyleOptionFrame>

#include <algorithm>

namespace vrk::qt {

namespace {
constexpr int kCtrl = 2;

bool isCharacter(const QKeyEvent& event) {
    constexpr auto kCommand = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    return event.text().size() == 1 && event.text().front().isPrint() && !(event.modifiers() & kCommand);
}

bool isPlainBackspace(const QKeyEvent& event) {
    return event.key() == Qt::Key_Backspace && !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier));
}
} // namespace

KeyLineEdit::KeyLineEdit(QWidget* parent) : QLineEdit(parent) {
    setFont(valueFont());
}

void KeyLineEdit::setCharacters(int characters) {
    characters_ = characters;
    updateGeometry();
}

QSize KeyLineEdit::sizeHint() const {
    const QFontMetrics metrics(font());
    QStyleOptionFrame option;
    initStyleOption(&option);
    const QMargins margins = textMargins();
    const QSize content(metrics.horizontalAdvance('0') * characters_ + metrics.averageCharWidth() +
                            margins.left() + margins.right(),
                        std::max(metrics.height(), 14));
    return style()->sizeFromContents(QStyle::CT_LineEdit, &option, content, this);
}

QSize KeyLineEdit::minimumSizeHint() const {
    return sizeHint();
}

bool KeyLineEdit::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && !plain_ &&
        static_cast<QKeyEvent*>(event)->text() == QLatin1String("?")) {
        event->ignore(); // no box for numbers takes it, so it may call for help from here too
        return false;
    }
    return QLineEdit::event(event);
}

void KeyLineEdit::keyPressEvent(QKeyEvent* event) {
    const bool controlKeys = takesControlKeys && takesControlKeys();
    if (!isEnabled() || isReadOnly() || !keyPressed) {
        QLineEdit::keyPressEvent(event);
    } else if (isCharacter(*event)) {
        keyPressed(event->text().front().unicode(), 0);
    } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
               !(event->modifiers() & Qt::ControlModifier)) {
        keyPressed(kEnterKey, 0);
    } else if (isPlainBackspace(*event)) {
        keyPressed(kBackspaceKey, 0);
    } else if (controlKeys && event->matches(QKeySequence::SelectAll)) {
        keyPressed('A', kCtrl);
    } else if (controlKeys && event->matches(QKeySequence::Copy)) {
        keyPressed('C', kCtrl);
    } else if (controlKeys && event->matches(QKeySequence::Paste)) {
        keyPressed('V', kCtrl);
    } else if (event->matches(QKeySequence::Paste)) {
        pasted(QApplication::clipboard()->text());
    } else {
        direct_ = true;
        QLineEdit::keyPressEvent(event);
        direct_ = false;
    }
}

} // namespace vrk::qt
