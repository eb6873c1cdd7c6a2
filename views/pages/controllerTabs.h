#pragma once

class QWidget;

namespace vrk {

class PageUi;
class frmMainF340;

/// The pages of the controller console, one task each.
QWidget* makeBoardPage(PageUi& page, frmMainF340& panel);
QWidget* makeI2cPage(PageUi& page, frmMainF340& panel);
QWidget* makeSpiPage(PageUi& page, frmMainF340& panel);
/// Bytes written and read by register number, under the I2C and the SPI page alike.
QWidget* makeByteTable(PageUi& page, frmMainF340& panel);
/// Ports and registers keep a place for the box of one register, which stands on the one in front.
QWidget* makeGpioPage(PageUi& page, frmMainF340& panel, QWidget* registerPlace);
QWidget* makeSfrPage(PageUi& page, frmMainF340& panel, QWidget* registerPlace);
QWidget* makeOneRegister(PageUi& page, frmMainF340& panel);
QWidget* makeAdcPage(PageUi& page, frmMainF340& panel);

} // namespace vrk
