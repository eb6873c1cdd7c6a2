#include "shell/panelTable.h"

#include "shell/Bench.h"

namespace vrk {

std::vector<PanelRow> makePanelTable(Bench& bench) {
    return {
        {.slot = &bench.frmStartup, .manualPage = "Start panel"},
        {.slot = &bench.frmMotherboardDAQ2, .manualPage = "Motherboard console"},
        {.slot = &bench.frmMainF340, .manualPage = "Controller console"},
        {.slot = &bench.frmVRK_User1,
         .startRow = frmStartup::kI2C,
         .companions = {&bench.ProductExec},
         .manualPage = "I2C panel"},
        {.slot = &bench.ProductExec, .manualPage = "Product table"},
        {.slot = &bench.Doco, .manualPage = "Trace"},
    };
}

} // namespace vrk
