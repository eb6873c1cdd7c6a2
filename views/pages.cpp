#include "views/pages.h"

#include "script/frmScriptOps.h"
#include "shell/Bench.h"
#include "views/pages/pageMakers.h"

#include <algorithm>

namespace vrk {

namespace {

/// A page's function takes its own panel; the table holds them all alike.
template <class P, void (*make)(PageUi&, P&)>
void page(PageUi& ui, Panel& panel) {
    make(ui, dynamic_cast<P&>(panel));
}

} // namespace

const std::vector<PageRow>& pageRows() {
    using enum PagePlace;
    static const std::vector<PageRow> kRows = {
        {"frmStartup", "Home", "", Sign::Home, 0, page<frmStartup, makeHomePage>},
        {"frmVRK_User1", "I2C", "Parts", Sign::I2c, frmStartup::kI2C, page<frmVRK_User1, makeI2cPanelView>},
        {"frmVRK_SPI1", "SPI", "Parts", Sign::Spi, frmStartup::kSPI, page<frmVRK_SPI1, makeSpiPanelView>},
        {"frmVRK_UD1", "Up/Down", "Parts", Sign::UpDown, frmStartup::kUpDown,
         page<frmVRK_UD1, makeUpDownPage>},
        {"frmVRK_PB1", "Push Button", "Parts", Sign::PushButton, frmStartup::kPushButton,
         page<frmVRK_PB1, makePushButtonPage>},
        {"frm_q4410", "Instructions", "Parts", Sign::Instructions, 0, page<frm_q4410, makeI2cInstructionPage>,
         Page, "frmVRK_User1"},
        {"frm_q4420", "SPI instructions", "Parts", Sign::Instructions, 0,
         page<frm_q4420, makeSpiInstructionPage>, Page, "frmVRK_SPI1"},
        {"Frm3310", "Single wiper", "Parts", Sign::Instructions, 0, page<Frm3310, makeSingleWiperPage>, Page,
         "frmVRK_SPI1"},
        {"frmScriptOps", "Script", "Procedures", Sign::Script, 0, page<frmScriptOps, makeScriptPage>},
        {"UPDN_Runin", "Run-in", "Procedures", Sign::RunIn, 0, page<UPDN_Runin, makeRunInPage>, Page,
         "frmVRK_UD1"},
        {"FrmVCCCal", "Calibration", "Procedures", Sign::Calibration, frmStartup::kCalibrate,
         page<FrmVCCCal, makeCalibrationPage>},
        {"frmMotherboardDAQ2", "Motherboard", "Board", Sign::Motherboard, 0,
         page<frmMotherboardDAQ2, makeMotherboardPage>},
        {"frmMainF340", "Controller", "Board", Sign::Controller, 0, page<frmMainF340, makeControllerPage>},
        {"Doco", "Trace", "", Sign::Script, 0, page<Doco, makeTracePage>, Dock},
        {"ProductExec", "Product table", "", Sign::Instructions, 0, page<ProductExec, makeProductTablePage>,
         Sheet},
        {"frmAbout2", "About", "", Sign::Home, 0, page<frmAbout2, makeAboutPage>, Sheet},
    };
    return kRows;
}

const PageRow* findPageRow(const std::string& slot) {
    const auto& rows = pageRows();
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](const PageRow& row) { return slot == row.slot; });
    return found == rows.end() ? nullptr : &*found;
}

} // namespace vrk
