#pragma once

namespace vrk {

class Doco;
class Frm3310;
class FrmVCCCal;
class PageUi;
class ProductExec;
class UPDN_Runin;
class frmAbout2;
class frmMainF340;
class frmMotherboardDAQ2;
class frmScriptOps;
class frmStartup;
class frmVRK_PB1;
class frmVRK_SPI1;
class frmVRK_UD1;
class frmVRK_User1;
class frm_q4410;
class frm_q4420;

/// One file a panel: layout only. Each fills the window of its panel.
void makeHomePage(PageUi& page, frmStartup& panel);
void makeTracePage(PageUi& page, Doco& panel);
void makeAboutPage(PageUi& page, frmAbout2& panel);
void makeProductTablePage(PageUi& page, ProductExec& panel);
void makeI2cPanelView(PageUi& page, frmVRK_User1& panel);
void makeSpiPanelView(PageUi& page, frmVRK_SPI1& panel);
void makeI2cInstructionPage(PageUi& page, frm_q4410& panel);
void makeSpiInstructionPage(PageUi& page, frm_q4420& panel);
void makeSingleWiperPage(PageUi& page, Frm3310& panel);
void makeUpDownPage(PageUi& page, frmVRK_UD1& panel);
void makePushButtonPage(PageUi& page, frmVRK_PB1& panel);
void makeRunInPage(PageUi& page, UPDN_Runin& panel);
void makeCalibrationPage(PageUi& page, FrmVCCCal& panel);
void makeControllerPage(PageUi& page, frmMainF340& panel);
void makeScriptPage(PageUi& page, frmScriptOps& panel);
void makeMotherboardPage(PageUi& page, frmMotherboardDAQ2& panel);

} // namespace vrk
