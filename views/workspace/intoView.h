#pragma once

class QWidget;

namespace vrk {

/// Scrolls everything that the widget stands in until it can be seen; of a list or a table its current row.
void scrollIntoView(QWidget& widget);

} // namespace vrk
