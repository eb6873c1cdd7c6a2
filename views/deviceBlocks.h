#pragma once

#include <initializer_list>

class QLabel;
class QWidget;

namespace vrk {

class Control;
class DevicePanel;
class PageUi;

/// What every device window shows, in the same place.

/// Part, bus and address, both supplies and the link, readable from across the bench.
/// \param part the panel's own label of the part. \param addressFields what the bus text depends on.
QWidget* makeBand(PageUi& page, DevicePanel& panel, QLabel* part,
                  std::initializer_list<Control*> addressFields);
/// Switches, level, measurement and calibration of the supplies.
QWidget* makeSupplyBlock(PageUi& page, DevicePanel& panel);
/// The six lamps of link and transfers.
QWidget* makeStatusBlock(PageUi& page, DevicePanel& panel);

} // namespace vrk
