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
    /// 0 "Read All", 1 "Set Write = Read"
    ControlArray<Button> cmdReadAllWipers{*this, "cmdReadAllWipers", 0, 1};
    /// Shown for the quad parts with instructions; a bus panel that has their panel ties it to these.
    Frame Frq4410Show{*this, "Frq4410Show"};
    Button cmdShowq4410{*this, "cmdShowq4410"};
    Button cmdStoreWCRs{*this, "cmdStoreWCRs"};

    /// 0 reads every channel, 1 takes what was read as the values to write
    void cmdReadAllWipers_Click(int index);

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
    void showTransfer(bool read, Colour colour) override { Shape1[read ? 2 : 1].setColour(colour); }
    void placePins() override;
    void supplyChanged() override;
    void addressChanged() override;
    void shutdownPinMoved() override;
    void afterRegister(RegisterAction action) override;
    void partChanged() override;
    bool mayLoop(int writes) override { return mayStore(wiperWritesAreStored() ? writes : 0); }
    void measureWiper(Reading& volts) override { measure(volts); }
    /// Both sizes list "None", one and two bytes; one byte is chosen.
    void fillSizes();

    /// Opens the product table, disables this panel and stands until the user has returned. A row is checked
    /// whole before anything of it is taken; a panel that was left meanwhile takes nothing.
    void chooseFromTable();
    /// Before the table opens.
    virtual void beforeTable() {}
    /// What is wrong with the row chosen, in words; empty if the panel can take it.
    virtual std::string tableRowFault(const ProductTable& table) const = 0;
    virtual void takeTableRow(const ProductTable& table) = 0;
    /// With a row taken or without.
    virtual void afterTable() {}
    /// Selects the options of the part's channels and taps, and runs their clicks. A number without an option
    /// leaves the one that stands. \param tapsWithoutOption a number of taps that counts as such.
    void selectSizes(int tapsWithoutOption = 0);

  private:
    bool choosing_ = false; ///< the product table stands for this panel
};

} // namespace vrk
