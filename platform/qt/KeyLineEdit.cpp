#include "platform/qt/KeyLineEdit.h"

#include "platform/qt/Widgets.h"
#include "platform/qt/theme.h"
#include "platform/runtime/text.h"

#include <QApplication>
#include <QClipboard>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
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

void KeyLineEdit::setReading(Freshness::State state) {
    reading_ = state;
    setAccessibleDescription(state == Freshness::State::Never   ? "not read yet"
                             : state == Freshness::State::Stale ? "no longer holds"
                                                                : "");
    update();
}

void KeyLineEdit::paintEvent(QPaintEvent* event) {
    if (reading_ == Freshness::State::Fresh || hasFocus())
        return QLineEdit::paintEvent(event);
    // The text stays what the model says; the colour is looked up now, since the shade may change.
    QStyleOptionFrame option;
    initStyleOption(&option);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &option, &painter, this);
    const bool never = reading_ == Freshness::State::Never;
    painter.setPen(toneColour(never ? Tone::Quiet : Tone::Stale));
    painter.drawText(
        style()->subElementRect(QStyle::SE_LineEditContents, &option, this).adjusted(3, 0, -2, 0),
        static_cast<int>(alignment() | Qt::AlignVCenter), never ? kNeverRead : text());
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
    if (event->modifiers().testFlag(Qt::AltModifier) && !event->text().isEmpty() &&
        event->text().front().isPrint()) {
        event->ignore(); // a letter that no menu and no caption has: QLineEdit would type it
    } else if (!isEnabled() || isReadOnly() || !keyPressed) {
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
