#pragma once

class QWidget;

namespace vrk {

class DevicePanel;
class PageUi;

/// What every device window shows, in the same place.

/// Switches, level, measurement and calibration of the supplies.
QWidget* makeSupplyBlock(PageUi& page, DevicePanel& panel);
/// The six lamps of link and transfers.
QWidget* makeStatusBlock(PageUi& page, DevicePanel& panel);

} // namespace vrk
