#pragma once

class QMenu;

namespace vrk {

class PanelWindow;

/// Panels, Board, Trace and Help. \return the first of them.
QMenu* addBenchMenus(PanelWindow& window);

} // namespace vrk
