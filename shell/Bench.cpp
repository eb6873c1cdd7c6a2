#include "shell/Bench.h"

#include <memory>
#include <utility>

namespace vrk {

Bench::Bench(const Parts& parts)
    : context_{parts.events, parts.dialogs, parts.clipboard, parts.programFolder, parts.workingFolder},
      link_(context_, parts.host, trace_),
      rehearsalBench_(parts.rehearsalBench),
      breakpoints_(parts.breakpoints),
      frmStartup(context_, "frmStartup", "VRK Evaluation",
                 [this] {
                     return std::make_shared<class frmStartup>(
                         context_,
                         frmStartup::Uses{frmMainF340, frmMotherboardDAQ2, link_, trace_, analog_, supply_,
                                          shell_, [this](int row) { return panelOfRow(row); },
                                          [this]() -> PanelSlotBase& { return this->frmStartup; },
                                          [this] { frm_q4410.show(); }, [this] { frmAbout2.show(); }});
                 }),
      Doco(context_, "Doco", "Trace", [this] { return std::make_shared<class Doco>(context_, trace_); }),
      frmMainF340(context_, "frmMainF340", "HID Firmware Basic I/O ",
                  [this] {
                      return std::make_shared<class frmMainF340>(
                          context_,
                          frmMainF340::Uses{link_, trace_, analog_, [this] { frmMotherboardDAQ2.show(); }});
                  }),
      frmMotherboardDAQ2(context_, "frmMotherboardDAQ2", "VRK Motherboard Control",
                         [this] {
                             return std::make_shared<class frmMotherboardDAQ2>(
                                 context_,
                                 frmMotherboardDAQ2::Uses{frmMainF340, link_, trace_, analog_, ports_,
                                                          supply_, [this] { frmMotherboardDAQ2.unload(); }});
                         }),
      FrmVCCCal(context_, "FrmVCCCal", "VRK VCC Calibration",
                [this] {
                    return std::make_shared<class FrmVCCCal>(
                        context_, FrmVCCCal::Uses{frmMotherboardDAQ2, motherboard_, link_, analog_, ports_,
                                                  supply_, calibration_, [this] { leaveCalibration(); }});
                }),
      frmVRK_User1(context_, "frmVRK_User1", "VRK I2C Evaluation",
                   [this] {
                       return std::make_shared<class frmVRK_User1>(context_, services_, i2cWipers_,
                                                                   frm_q4410);
                   }),
      frm_q4410(context_, "frm_q4410", frm_q4410::kTitle,
                [this] {
                    return std::make_shared<class frm_q4410>(
                        context_, InstructionPanel::Uses{
                                      services_, instructionFields_, i2cInstruction_,
                                      [this]() -> InstructionCompanion& { return loadBeside(frmVRK_User1); },
                                      [this] { return frmVRK_User1.loadedPanel(); }});
                }),
      frmVRK_SPI1(context_, "frmVRK_SPI1", "VRK SPI Evaluation",
                  [this] {
                      return std::make_shared<class frmVRK_SPI1>(context_, services_, spiWipers_,
                                                                 frmVRK_SPI1::Companions{frm_q4420, Frm3310});
                  }),
      frm_q4420(context_, "frm_q4420", frm_q4420::kTitle,
                [this] {
                    return std::make_shared<class frm_q4420>(
                        context_, InstructionPanel::Uses{
                                      services_, instructionFields_, spiInstruction_,
                                      [this]() -> InstructionCompanion& { return loadBeside(frmVRK_SPI1); },
                                      [this] { return frmVRK_SPI1.loadedPanel(); }});
                }),
      Frm3310(context_, "Frm3310", Frm3310::kTitle,
              [this] {
                  return std::make_shared<class Frm3310>(
                      context_, Frm3310::Uses{services_, [this]() -> InstructionCompanion& {
                                                  return loadBeside(frmVRK_SPI1);
                                              }});
              }),
      frmVRK_UD1(context_, "frmVRK_UD1", "VRK Up/Down Evaluation",
                 [this] {
                     return std::make_shared<class frmVRK_UD1>(context_, services_, upDown_,
                                                               [this] { UPDN_Runin.show(); });
                 }),
      frmVRK_PB1(context_, "frmVRK_PB1", "VRK Push Button Evaluation",
                 [this] { return std::make_shared<class frmVRK_PB1>(context_, services_, pushButton_); }),
      UPDN_Runin(context_, "UPDN_Runin", "VRK EEPROM Run In Test",
                 [this] { return std::make_shared<class UPDN_Runin>(context_, services_, runIn_, trace_); }),
      ProductExec(context_, "ProductExec", "VRK Product Selection Parameter Table",
                  [this] {
                      return std::make_shared<class ProductExec>(
                          context_,
                          ProductExec::Uses{busMode_, shell_, choice_, [this] { leaveProductTable(); }});
                  }),
      frmScriptOps(context_, "frmScriptOps", "Script IC Send / Receive",
                   [this] {
                       return std::make_shared<class frmScriptOps>(
                           context_, frmScriptOps::Uses{services_, busMode_, run_, script_,
                                                        [this] { return scriptAddress(); }, rehearsalBench_,
                                                        breakpoints_, [this] { return devicePanel(); }});
                   }),
      frmAbout2(context_, "frmAbout2", "About this program",
                [this, tool = parts.informationTool] {
                    return std::make_shared<class frmAbout2>(
                        context_, frmAbout2::Uses{tool, [this] { frmAbout2.unload(); }});
                }),
      motherboard_(context_, link_, analog_, supply_, frmMotherboardDAQ2, FrmVCCCal),
      services_{
          frmMainF340, frmMotherboardDAQ2, motherboard_, link_, analog_, ports_, supply_, shell_, run_, *this,
          *this},
      table_(makePanelTable(*this)) {
    for (const PanelRow& row : table_)
        panels_.push_back(row.slot);
    followDevicePanels();
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

PanelSlotBase* Bench::panelOfRow(int row) const {
    for (const PanelRow& entry : table_)
        if (row != PanelRow::kNoRow && entry.startRow == row)
            return entry.slot;
    return nullptr;
}

void Bench::followDevicePanels() {
    for (PanelSlotBase* slot : panels_)
        slotWatches_.push_back(slot->observe([this, slot](SlotEvent event) {
            const bool device = dynamic_cast<DevicePanel*>(slot->panel()) != nullptr;
            if (device && (event == SlotEvent::Loaded || event == SlotEvent::Activated))
                lastDevicePanel_ = slot->name();
        }));
    // The run-in test moves the part by reports of its own, past the boxes of the panel that opened it.
    slotWatches_.push_back(UPDN_Runin.observe([this](SlotEvent event) {
        if (auto* upDown = frmVRK_UD1.loadedPanel(); upDown != nullptr && event == SlotEvent::Activated)
            upDown->pinsLent();
        if (event == SlotEvent::Unloaded)
            run_.ScriptAbort = true; // a run that is still on the stack must find its end
    }));
}

DevicePanel* Bench::devicePanel() const {
    const PanelSlotBase* slot = findPanel(lastDevicePanel_);
    return slot == nullptr ? nullptr : dynamic_cast<DevicePanel*>(slot->panel());
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

void Bench::hidePanel(const Panel& panel) {
    if (PanelSlotBase* slot = findPanel(panel.name()))
        slot->hide();
}

void Bench::setBusMode(Bus bus) {
    busMode_.I2CBusMode = bus == Bus::I2C;
    busMode_.SPIBusMode = bus == Bus::SPI;
}

void Bench::openScripts(Bus bus) {
    if (!script_.ScriptRunning)
        setBusMode(bus);
    frmScriptOps.show();
    frmScriptOps->showBus(); // it may have been in front before
}

std::string Bench::scriptAddress() const {
    // Asking for it must not load the panel: it would set up the board for I2C under an SPI part.
    const auto* panel = frmVRK_User1.loadedPanel();
    return panel == nullptr ? "50" : panel->txtDeviceAdr.text();
}

void Bench::open(Bus bus, Panel& opener) {
    setBusMode(bus);
    tableOpener_ = opener.name();
    ProductExec->forgetChoice();
    ProductExec.show();
}

bool Bench::isOpen() const {
    return ProductExec.visible();
}

bool Bench::returned() const {
    // Taken away by whomever, it cannot be returned from any more.
    return choice_.ProductReturned || !ProductExec.loaded();
}

bool Bench::selected() const {
    return choice_.ParamSelected;
}

std::string Bench::field(int column) const {
    const auto* table = ProductExec.loadedPanel();
    return table == nullptr ? std::string() : table->lblDeviceSel[column].caption();
}

void Bench::unloadCompanions(const Panel& panel) {
    for (const PanelRow& row : table_)
        if (row.slot->name() == panel.name())
            for (PanelSlotBase* companion : row.companions)
                companion->unload();
}

void Bench::leaveCalibration() {
    shell_.returningToMenu = true;
    FrmVCCCal.hide();
    frmStartup.show();
}

void Bench::leaveProductTable() {
    ProductExec.hide();
    if (PanelSlotBase* opener = findPanel(tableOpener_))
        opener->show();
}

} // namespace vrk
