#include "shell/panelTable.h"

#include "shell/Bench.h"

namespace vrk {

std::vector<PanelRow> makePanelTable(Bench& bench) {
    return {
        {.slot = &bench.frmStartup, .manualPage = "The start panel"},
        {.slot = &bench.frmMotherboardDAQ2, .manualPage = "The motherboard console"},
        {.slot = &bench.frmMainF340, .manualPage = "The controller console"},
        {.slot = &bench.frmVRK_User1,
         .startRow = frmStartup::kI2C,
         .companions = {&bench.ProductExec},
         .manualPage = "The I2C panel"},
        {.slot = &bench.ProductExec, .manualPage = "The product table"},
        {.slot = &bench.Doco, .manualPage = "The trace"},
    };
}

} // namespace vrk
