#include "shell/Bench.h"

#include <memory>
#include <utility>

namespace vrk {

Bench::Bench(const Parts& parts)
    : context_{parts.events, parts.dialogs, parts.clipboard, parts.programFolder, parts.workingFolder},
      link_(context_, parts.host, trace_),
      frmStartup(context_, "frmStartup", "VRK Evaluation",
                 [this] {
                     return std::make_shared<class frmStartup>(
                         context_,
                         frmStartup::Uses{frmMainF340, frmMotherboardDAQ2, link_, trace_, analog_, supply_,
                                          shell_, [this](int row) { return panelOfRow(row); },
                                          [this]() -> PanelSlotBase& { return this->frmStartup; }});
                 }),
      Doco(context_, "Doco", "Trace", [this] { return std::make_shared<class Doco>(context_, trace_); }),
      frmMainF340(context_, "frmMainF340", "HID Firmware Basic I/O ",
                  [this] {
                      return std::make_shared<class frmMainF340>(
                          context_, frmMainF340::Uses{link_, trace_, analog_.ProcessorID, analog_.MuxVCCIndex,
                                                      analog_.MuxGroundIndex, analog_.ADRef, analog_.ADVolts,
                                                      analog_.ADHigh, analog_.ADLow,
                                                      [this] { frmMotherboardDAQ2.show(); }});
                  }),
      frmMotherboardDAQ2(context_, "frmMotherboardDAQ2", "VRK Motherboard Control",
                         [this] {
                             return std::make_shared<class frmMotherboardDAQ2>(
                                 context_,
                                 frmMotherboardDAQ2::Uses{frmMainF340, link_, trace_, analog_, ports_,
                                                          supply_, [this] { frmMotherboardDAQ2.unload(); }});
                         }),
      frmVRK_User1(context_, "frmVRK_User1", "VRK I2C Evaluation",
                   [this] {
                       return std::make_shared<class frmVRK_User1>(
                           context_, deviceUses([this] { frmVRK_User1.hide(); }), i2cWipers_);
                   }),
      ProductExec(context_, "ProductExec", "VRK Product Selection Parameter Table",
                  [this] {
                      return std::make_shared<class ProductExec>(
                          context_, ProductExec::Uses{busMode_, shell_, choice_, [this] {
                                                          ProductExec.hide();
                                                          frmVRK_User1.show();
                                                      }});
                  }),
      motherboard_(context_, link_, analog_, supply_, frmMotherboardDAQ2),
      panels_{&frmStartup, &frmMotherboardDAQ2, &frmMainF340, &frmVRK_User1, &ProductExec, &Doco} {
    trace_.setSink([this](std::string_view text) { Doco->rtxt1.append(text); });
    link_.setBoardsListed([this] { frmMainF340->cboEVB_init(); });
    link_.setGiveUp([this] { endProgram(); });
    context_.events.setFaultHandler([this](const std::string& fault) { context_.say(fault); });
    registerSharedValues();
    registerModuleActions();
}

Bench::~Bench() {
    context_.events.setFaultHandler({});
}

DevicePanel::Uses Bench::deviceUses(std::function<void()> hideSelf) {
    return {frmMainF340, frmMotherboardDAQ2, motherboard_, link_, analog_, ports_, supply_, shell_, *this,
            *this,       std::move(hideSelf)};
}

PanelSlotBase* Bench::panelOfRow(int row) {
    return row == frmStartup::kI2C ? &frmVRK_User1 : nullptr;
}

Outcome Bench::start() {
    return context_.events.deliver([this] { frmStartup.show(); });
}

PanelSlotBase* Bench::findPanel(const std::string& name) const {
    for (PanelSlotBase* slot : panels_)
        if (slot->name() == name)
            return slot;
    return nullptr;
}

const Panel::Action* Bench::findModuleAction(const std::string& name) const {
    for (const Panel::NamedAction& action : moduleActions_)
        if (action.name == name)
            return &action.run;
    return nullptr;
}

void Bench::showStartPanel() {
    frmStartup.show();
}

void Bench::endProgram() {
    link_.closeHIDHandles();
    context_.events.endProgram();
}

void Bench::open(Bus bus) {
    busMode_.I2CBusMode = bus == Bus::I2C;
    busMode_.SPIBusMode = bus == Bus::SPI;
    ProductExec->forgetChoice();
    ProductExec.show();
}

bool Bench::returned() const {
    return choice_.ProductReturned;
}

bool Bench::selected() const {
    return choice_.ParamSelected;
}

std::string Bench::field(int column) const {
    auto* table = ProductExec.loadedPanel();
    return table == nullptr ? std::string() : table->lblDeviceSel[column].caption();
}

void Bench::unload() {
    ProductExec.unload();
}

} // namespace vrk
