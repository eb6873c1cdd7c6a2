#pragma once

namespace vrk {

class Doco;
class PanelWindow;
class ProductExec;
class frmMainF340;
class frmMotherboardDAQ2;
class frmStartup;
class frmVRK_User1;

/// One file a panel: layout only. Each fills the window of its panel.
void makeStartupView(PanelWindow& window, frmStartup& panel);
void makeTraceView(PanelWindow& window, Doco& panel);
void makeProductView(PanelWindow& window, ProductExec& panel);
void makeI2cPanelView(PanelWindow& window, frmVRK_User1& panel);
void makeConsoleView(PanelWindow& window, frmMainF340& panel);
void makeMotherboardView(PanelWindow& window, frmMotherboardDAQ2& panel);

} // namespace vrk
