#include "views/workspace/intoView.h"

#include <QScrollArea>

namespace vrk {

void scrollIntoView(QWidget& widget) {
    for (QWidget* at = widget.parentWidget(); at != nullptr; at = at->parentWidget())
        if (auto* area = qobject_cast<QScrollArea*>(at))
            area->ensureWidgetVisible(&widget);
}

} // namespace vrk
