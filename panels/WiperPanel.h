#pragma once

#include "panels/DevicePanel.h"
#include "panels/blocks/AddressPins.h"
#include "panels/blocks/ChannelBlock.h"
#include "panels/blocks/ControlRegister.h"
#include "panels/blocks/ShutdownPin.h"

#include <string>
#include <vector>

namespace vrk {

/// A device panel for parts with wipers on a bus: channels, control register, address and shutdown pin. The
/// I2C and the SPI panel differ in the exchange alone.
class WiperPanel : public DevicePanel,
                   public ControlRegister,
                   public ChannelBlock,
                   public AddressPins,
                   public ShutdownPin {
  public:
    MenuEntry mnuDeviceSelect{*this, "mnuDeviceSelect"};
    MenuEntry mnuScriptShow{*this, "mnuScriptShow"};
    Label lblProduct{*this, "lblProduct"};
    ComboBox cboRegSize{*this, "cboRegSize"};
    ComboBox cboDataSize{*this, "cboDataSize"};

    /// Scripts of the bus that this panel works on.
    void mnuScriptShow_Click() { services().shell.openScripts(bus()); }

    virtual Bus bus() const = 0;
    std::string busAddress() const override { return txtDeviceAdr.text(); }
    /// The entries of the part menu, in their order, the product table's first.
    virtual std::vector<MenuEntry*> partEntries() = 0;

  protected:
    WiperPanel(PanelContext& context, std::string name, std::string title, BenchServices& services,
               WiperState& state, const char* shutdownCaption);

    bool productStarts(std::string_view start) const { return startsWith(lblProduct.caption(), start); }
    void afterVccSwitch() override { ChkShutDown2_Click(); }
    void supplyChanged() override;
    void addressChanged() override;
    void partChanged() override;
    bool mayLoop(int writes) override { return mayStore(wiperWritesAreStored() ? writes : 0); }
    void measureWiper(Reading& volts) override { measure(volts); }
    /// Both sizes list "None", one and two bytes; one byte is chosen.
    void fillSizes();
};

} // namespace vrk
