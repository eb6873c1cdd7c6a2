#pragma once

class QWidget;

namespace vrk::qt {

/// Gives the widget the keyboard; one that is disabled gets it as soon as it is enabled, unless the user has
/// taken the keyboard elsewhere until then.
void giveKeyboard(QWidget& widget);

/// QWidget::setEnabled(). Qt passes the keyboard of a widget that is disabled on to the next one; here it
/// comes back when the widget is enabled again, unless the user has taken it elsewhere until then. A press of
/// the button that got it in between does not count: that may be what ends the action.
void setEnabledWithKeyboard(QWidget& widget, bool enabled);
/// QWidget::hide(), in the same way.
void hideWithKeyboard(QWidget& widget);

/// What the keyboard is with in the widget's window, or was before actions disabled it; nullptr for nothing.
QWidget* keyboardHolder(const QWidget& within);

/// True if one of those that stand in the widget has lost the keyboard and is to have it again.
bool owesKeyboard(const QWidget& within);

} // namespace vrk::qt
