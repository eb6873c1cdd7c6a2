#pragma once

class QWidget;

namespace vrk {

class PageUi;

/// Every control of the page's panel that has no widget yet, in the order of its declaration, arrays in rows.
/// \return nullptr if there is none
QWidget* everyControl(PageUi& page);

} // namespace vrk
