#include "shell/panelTable.h"

#include "shell/Bench.h"

namespace vrk {

std::vector<PanelRow> makePanelTable(Bench& bench) {
    return {
        {.slot = &bench.frmStartup, .manualPage = "Home"},
        {.slot = &bench.frmMotherboardDAQ2, .manualPage = "Motherboard"},
        {.slot = &bench.frmMainF340, .manualPage = "Controller"},
        {.slot = &bench.frmVRK_User1,
         .startRow = frmStartup::kI2C,
         .companions = {&bench.ProductExec, &bench.frm_q4410, &bench.frm_q4420},
         .manualPage = "I2C panel"},
        {.slot = &bench.frmVRK_SPI1,
         .startRow = frmStartup::kSPI,
         .companions = {&bench.ProductExec, &bench.frm_q4420, &bench.Frm3310},
         .manualPage = "SPI panel"},
        {.slot = &bench.frm_q4410, .manualPage = "Instruction panels"},
        {.slot = &bench.frm_q4420, .manualPage = "Instruction panels"},
        {.slot = &bench.Frm3310, .manualPage = "Single-wiper panel"},
        {.slot = &bench.frmVRK_UD1,
         .startRow = frmStartup::kUpDown,
         .companions = {&bench.UPDN_Runin},
         .manualPage = "Up/Down"},
        {.slot = &bench.frmVRK_PB1, .startRow = frmStartup::kPushButton, .manualPage = "Push Button"},
        {.slot = &bench.UPDN_Runin, .manualPage = "Run-in"},
        {.slot = &bench.FrmVCCCal, .startRow = frmStartup::kCalibrate, .manualPage = "Calibration"},
        {.slot = &bench.ProductExec, .manualPage = "Product table"},
        {.slot = &bench.frmScriptOps, .manualPage = "Script"},
        {.slot = &bench.Doco, .manualPage = "Trace"},
        {.slot = &bench.frmAbout2, .manualPage = "About"},
    };
}

} // namespace vrk
