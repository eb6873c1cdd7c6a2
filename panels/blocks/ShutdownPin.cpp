#include "panels/blocks/ShutdownPin.h"

namespace vrk {

ShutdownPin::ShutdownPin(Panel& panel, BenchServices& services, const char* caption)
    : PanelBlock(panel), services_(services) {
    ChkShutDown2.setCaption(caption);
    ChkShutDown2.showValue(1);
    bindClick(ChkShutDown2, &ShutdownPin::ChkShutDown2_Click);
}

void ShutdownPin::ChkShutDown2_Click() {
    frmMotherboardDAQ2& board = services_.board();
    board.chkPData[frmMotherboardDAQ2::kPinShutdown].setValue(0);
    if (ChkShutDown2.checked())
        board.chkPData[frmMotherboardDAQ2::kPinShutdown].setValue(1);
    board.chkPData_Click(frmMotherboardDAQ2::kPinShutdown);
    host().pump();
    board.cmdWrtPipe1_Click();
    shutdownPinMoved();
    host().pump();
}

} // namespace vrk
