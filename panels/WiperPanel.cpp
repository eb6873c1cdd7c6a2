#include "panels/WiperPanel.h"

#include <utility>

namespace vrk {

WiperPanel::WiperPanel(PanelContext& panelContext, std::string name, std::string title,
                       BenchServices& panelServices, WiperState& state, const char* shutdownCaption)
    : DevicePanel(panelContext, std::move(name), std::move(title), panelServices),
      ControlRegister(*this, state.ACRImage),
      ChannelBlock(*this, panelServices, state, {&cmdACRWrite, &cmdACRRead}),
      AddressPins(*this, panelServices),
      ShutdownPin(*this, panelServices, shutdownCaption) {
    mnuDeviceSelect.setCaption("Device Select");
    mnuScriptShow.setCaption("Script");
    wireClick(mnuScriptShow, &WiperPanel::mnuScriptShow_Click);
    lblProduct.setCaption("Manual Setup");
    cboRegSize.setCaption("Address Size");
    cboDataSize.setCaption("Data Size");
}

void WiperPanel::supplyChanged() {
    // A volatile position is lost with VCC, and every wiper's volts follow it.
    markChannelsStale("the supply changed since");
    markRegistersStale("the supply changed since");
}

void WiperPanel::addressChanged() {
    markChannelsStale("the address changed since");
    markRegistersStale("the address changed since");
}

void WiperPanel::partChanged() {
    markRegistersStale("the part was chosen since");
}

void WiperPanel::fillSizes() {
    cboRegSize.setRows({{"None", 0}, {"1 Byte", 1}, {"2 Bytes", 2}});
    cboDataSize.setRows({{"None", 0}, {"1-Byte", 1}, {"2-Bytes", 2}});
    cboRegSize.setListIndex(1);
    cboDataSize.setListIndex(1);
}

} // namespace vrk
