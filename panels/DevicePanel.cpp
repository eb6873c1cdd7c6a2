#include "panels/DevicePanel.h"

#include "panels/blocks/vccCheck.h"

#include <utility>

namespace vrk {

DevicePanel::DevicePanel(PanelContext& context, std::string name, std::string title, BenchServices& services)
    : Panel(context, std::move(name), std::move(title)),
      SupplyBlock(*this, services),
      StatusBlock(*this, services),
      StoreBlock(*this, services),
      services_(services) {
    cmdMMenu.setCaption("Main Menu");
    wireClick(cmdMMenu, &DevicePanel::cmdMMenu_Click);
}

DevicePanel::~DevicePanel() {
    if (services_.link.activePanel == this)
        services_.link.activePanel = nullptr;
}

void DevicePanel::Form_Activate() {
    becomeActive();
    if (std::exchange(services_.ports.pinsOf, name()) != name())
        placePins();
    // Another panel has had the supplies meanwhile and left them off.
    if (OptVCC[0].value() && !services_.vccOn()) {
        suppliesMoved();
        board().showSuppliesOn(*this);
    }
    if (!OptVCC[1].value())
        return;
    OptVCC_Click(1);
    pump();
    services_.motherboard.initSupplyDefaults();
}

void DevicePanel::Form_QueryUnload() {
    if (!services_.state.returningToMenu)
        services_.shell.endProgram();
}

void DevicePanel::Form_Unload() {
    if (services_.link.activePanel == this)
        services_.link.activePanel = nullptr;
    if (!services_.state.returningToMenu)
        services_.shell.endProgram();
}

namespace {
/// What VCC's switch leaves without Track, or where Track was set with the two apart: VCC's bit in the image,
/// which the next panel's pins would send, and V-. Nothing on the start panel has their switches.
void leaveNoSupply(frmMotherboardDAQ2& board, SupplyPanel& panel) {
    board.setPin(frmMotherboardDAQ2::kPinVcc, 0);
    if (!board.chkPData[frmMotherboardDAQ2::kPinMinus].checked())
        return;
    board.setPin(frmMotherboardDAQ2::kPinMinus, 0);
    board.followSupplyPins();
    board.cmdWrtPipe1_Click();
    board.showSuppliesOn(panel);
}
} // namespace

void DevicePanel::cmdMMenu_Click() {
    OptVCC[1].setValue(true);
    OptVCC_Click(1);
    pump();
    leaveNoSupply(board(), *this);
    beforeMenu();
    services_.state.returningToMenu = true;
    services_.shell.unloadCompanions(*this);
    services_.shell.hidePanel(*this);
    services_.shell.showStartPanel();
    pump();
}

bool DevicePanel::requireVcc() {
    return vrk::requireVcc(services_, context());
}

} // namespace vrk
