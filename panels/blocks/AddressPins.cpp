#include "panels/blocks/AddressPins.h"

#include "platform/runtime/text.h"

namespace vrk {

namespace {
constexpr int kFirstAddressPin = 6; ///< A0 to A3 are P0.6, P0.7, P1.0, P1.1
constexpr int kBaseAddress = 0x50;
constexpr const char* kDefaultAddress = "50";
} // namespace

AddressPins::AddressPins(Panel& panel, BenchServices& services) : PanelBlock(panel), services_(services) {
    chkI2CAdr.setCaptions({"A0", "A1", "A2", "A3"});
    txtCalcAddr.setText(kDefaultAddress);
    txtCalcAddr.setToolTip("Address computed from the pins");
    cmdCopyAdr.setCaption("Copy");
    txtDeviceAdr.setText(kDefaultAddress);
    txtDeviceAdr.onChange([this] { addressChanged(); });
    cmdSlave.setCaption("Set 50");
    for (auto& box : chkI2CAdr)
        box->setContainer(fraADDRSelect);
    for (Control* control : std::initializer_list<Control*>{&txtCalcAddr, &cmdCopyAdr})
        control->setContainer(fraADDRSelect);
    bindClick(chkI2CAdr, &AddressPins::chkI2CAdr_Click);
    bindClick(cmdCopyAdr, &AddressPins::cmdCopyAdr_Click);
    bindClick(cmdSlave, &AddressPins::cmdSlave_Click);
}

void AddressPins::clearAddressPins() {
    for (int pin = 0; pin < chkI2CAdr.count(); ++pin)
        services_.board().chkPData[kFirstAddressPin + pin].setValue(0);
}

void AddressPins::raiseAddressPins() {
    for (int pin = 0; pin < chkI2CAdr.count(); ++pin)
        if (chkI2CAdr[pin].checked())
            services_.board().chkPData[kFirstAddressPin + pin].setValue(1);
}

void AddressPins::chkI2CAdr_Click(int /*index*/) {
    clearAddressPins();
    raiseAddressPins();
    int address = kBaseAddress;
    for (int pin = 0; pin < chkI2CAdr.count(); ++pin)
        if (chkI2CAdr[pin].checked())
            address += 2 << pin;
    txtCalcAddr.setText(hexText(address));
    services_.board().cmdWrtPipe1_Click();
    host().pump();
}

void AddressPins::cmdCopyAdr_Click() {
    txtDeviceAdr.setText(txtCalcAddr.text());
}

void AddressPins::cmdSlave_Click() {
    txtDeviceAdr.setText(kDefaultAddress);
}

} // namespace vrk
