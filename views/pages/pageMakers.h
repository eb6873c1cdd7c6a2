#pragma once

namespace vrk {

class Doco;
class PageUi;
class ProductExec;
class frmMainF340;
class frmMotherboardDAQ2;
class frmStartup;
class frmVRK_User1;

/// One file a panel: layout only. Each fills the window of its panel.
void makeHomePage(PageUi& page, frmStartup& panel);
void makeTracePage(PageUi& page, Doco& panel);
void makeProductTablePage(PageUi& page, ProductExec& panel);
void makeI2cPanelView(PageUi& page, frmVRK_User1& panel);
void makeControllerPage(PageUi& page, frmMainF340& panel);
void makeMotherboardPage(PageUi& page, frmMotherboardDAQ2& panel);

} // namespace vrk
