#include "panels/WiperPanel.h"

#include "panels/blocks/choices.h"
#include "platform/runtime/text.h"

#include <utility>

namespace vrk {

namespace {
int selectedOption(const ControlArray<OptionButton>& options) {
    for (const auto& option : options)
        if (option->value())
            return option->index();
    return -1;
}
} // namespace

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
    cmdReadAllWipers.setCaptions({"Read All", "Set Write = Read"});
    cmdShowq4410.setCaption("Show Instruction Set Form");
    cmdStoreWCRs.setCaption("Store WCRs >> R0");
    cmdStoreWCRs.setToolTip("Write Wipers (WCRs) to Registers 0 for recall on power up.");
    for (Button* button : {&cmdShowq4410, &cmdStoreWCRs})
        button->setContainer(Frq4410Show);
    Frq4410Show.setVisible(false);
    wireClick(cmdReadAllWipers, &WiperPanel::cmdReadAllWipers_Click);
}

void WiperPanel::cmdReadAllWipers_Click(int index) {
    bool stopped = false;
    Activity activity(context().activities, cmdReadAllWipers[index].caption(),
                      [&stopped] { stopped = true; });
    for (int channel = 0; channel < wipers.channelCount && !stopped; ++channel) {
        if (index == 0) {
            if (!mayExchange())
                break; // once, not for each channel
            cmdI2Read_Click(channel);
        } else {
            wipers.WiperWrite[kWiperElement] = hexToInt(lblPotReadhex[channel].caption());
            // The box of channel 1 for every channel: the button's own index is used there, and users read
            // it so.
            txtDECDataWrt[1].setText(decimalText(wipers.WiperWrite[kWiperElement]));
            moveControls(channel, wipers.WiperWrite[kWiperElement] + 1);
            pump();
        }
        activity.progress(channel + 1, wipers.channelCount);
    }
    pump();
}

void WiperPanel::chooseFromTable() {
    ProductTable& table = services().products;
    if (choosing_) {
        table.open(bus(), *this); // once more to the front; who waits for it goes on waiting
        return;
    }
    choosing_ = true;
    const OnScopeExit chosen([this] { choosing_ = false; });
    {
        // What stands under the table waits with the action that opened it, and while the pins are made
        // ready too: a way out to the main menu would leave the table in front of the start panel.
        const OnScopeExit usable([this] { setEnabled(true); });
        setEnabled(false);
        beforeTable();
        table.open(bus(), *this);
        while (!table.returned())
            events().waitForEvents();
    }
    if (link().activePanel != this)
        return; // the panel was left meanwhile: nothing is taken
    if (!table.selected()) {
        context().say("No Device was selected from the list");
    } else if (const std::string fault = tableRowFault(table); !fault.empty()) {
        context().say("This row cannot be taken: " + fault + ".");
    } else {
        dropPending();
        countAnew();
        takeTableRow(table);
    }
    afterTable();
}

void WiperPanel::selectSizes(int tapsWithoutOption) {
    resetChannelRegisters();
    if (const auto option = channelOption(wipers.channelCount))
        OptChans[*option].setValue(true);
    if (const auto option = tapOption(wipers.TapCount); option && wipers.TapCount != tapsWithoutOption)
        OptTaps[*option].setValue(true);
    if (const int option = selectedOption(OptChans); option >= 0)
        OptChans_Click(option);
    if (const int option = selectedOption(OptTaps); option >= 0)
        OptTaps_Click(option);
}

void WiperPanel::placePins() {
    clearAddressPins();
    raiseAddressPins();
}

void WiperPanel::supplyChanged() {
    // A volatile position is lost with VCC, and every wiper's volts follow it.
    markChannelsStale("the supply changed since");
    markRegistersStale("the supply changed since");
}

void WiperPanel::shutdownPinMoved() {
    for (auto& volts : lblWiperVolts)
        volts->markStale("the shutdown pin was driven since");
}

void WiperPanel::afterRegister(RegisterAction action) {
    // It says which register a wiper's number leads to, and whether the wipers are connected at all.
    if (action == RegisterAction::ControlWrite)
        markChannelsStale("the control register was written since");
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
