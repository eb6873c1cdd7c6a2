#pragma once

class QObject;
class QWidget;

namespace vrk {

/// Scrolls everything that the widget stands in until it can be seen; of a list or a table its current row.
void scrollIntoView(QWidget& widget);

/// \return whether the user's last press was of a key. What it leads to may then be scrolled into sight;
/// under the mouse nothing moves, as the widget would leave it.
bool keysInUse();
/// \param owner for as long as it lives, presses are followed.
void followKeysInUse(QObject& owner);

} // namespace vrk
