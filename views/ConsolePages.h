#pragma once

class QWidget;

namespace vrk {

class PanelWindow;
class frmMainF340;

/// The pages of the controller console, one task each.
QWidget* makeBoardPage(PanelWindow& window, frmMainF340& panel);
QWidget* makeI2cPage(PanelWindow& window, frmMainF340& panel);
QWidget* makeSpiPage(PanelWindow& window, frmMainF340& panel);
/// Bytes written and read by register number, under the I2C and the SPI page alike.
QWidget* makeByteTable(PanelWindow& window, frmMainF340& panel);
QWidget* makeGpioPage(PanelWindow& window, frmMainF340& panel);
QWidget* makeSfrPage(PanelWindow& window, frmMainF340& panel);
QWidget* makeAdcPage(PanelWindow& window, frmMainF340& panel);

} // namespace vrk
