#pragma once

#include "link/frmMainF340.h"
#include "link/modHID.h"
#include "motherboard/FrmVCCCal.h"
#include "motherboard/Motherboard.h"
#include "motherboard/frmMotherboardDAQ2.h"
#include "panels/blocks/BenchServices.h"
#include "panels/discrete/UPDN_Runin.h"
#include "panels/discrete/frmVRK_PB1.h"
#include "panels/discrete/frmVRK_UD1.h"
#include "panels/i2c/frmVRK_User1.h"
#include "panels/instruction/Frm3310.h"
#include "panels/instruction/frm_q4410.h"
#include "panels/instruction/frm_q4420.h"
#include "panels/spi/frmVRK_SPI1.h"
#include "platform/controls/Panel.h"
#include "platform/controls/SharedValues.h"
#include "platform/hid/HidHost.h"
#include "platform/runtime/InformationTool.h"
#include "script/frmScriptOps.h"
#include "shell/Doco.h"
#include "shell/ProductExec.h"
#include "shell/frmAbout2.h"
#include "shell/frmStartup.h"
#include "shell/panelTable.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vrk {

/// One bench: every panel, the state they share and the link under them. Two benches may live in one program.
class Bench final : private ShellControl, private ProductTable {
  public:
    struct Parts {
        EventLoop& events;
        Dialogs& dialogs;
        Clipboard& clipboard;
        hid::HidHost& host;
        std::filesystem::path programFolder;
        std::filesystem::path workingFolder;
        /// Makes a simulated bench to rehearse a script on; empty: scripts cannot be rehearsed.
        RehearsalFactory rehearsalBench{};
        /// Where the breakpoints of scripts outlive the program; nullptr: they go with it.
        BreakpointStore* breakpoints = nullptr;
        /// What the about box opens; nullptr: nothing.
        InformationTool* informationTool = nullptr;
    };

    explicit Bench(const Parts& parts);
    ~Bench() override;

    PanelContext& context() { return context_; }
    EventLoop& events() { return context_.events; }
    modHID& link() { return link_; }
    const Trace& trace() const { return trace_; }
    /// What the program gives its run-in tests.
    RunInHome& runInHome() { return runIn_.home; }
    /// What device panels of this bench work with.
    BenchServices& services() { return services_; }

    /// Loads the start panel and brings it to the front, as an event. Never throws.
    Outcome start();

    /// Every panel's slot, in the order in which they load.
    const std::vector<PanelSlotBase*>& panels() const { return panels_; }
    /// nullptr if there is none of that name.
    PanelSlotBase* findPanel(const std::string& name) const;
    /// What the shell knows of each panel, in the order of panels().
    const std::vector<PanelRow>& panelTable() const { return table_; }
    /// The device panel that was in front last, and still lives; nullptr if there is none.
    DevicePanel* devicePanel() const;

    /// For which bus the product table and the scripts work.
    const BusMode& busMode() const { return busMode_; }

    SharedValues& sharedValues() { return sharedValues_; }
    /// An action of a module that is no panel (`initSupplyDefaults`, `initHIDConnection`); nullptr if there
    /// is none.
    const Panel::Action* findModuleAction(const std::string& name) const;
    const std::vector<Panel::NamedAction>& moduleActions() const { return moduleActions_; }

  private:
    void showStartPanel() override;
    void hidePanel(const Panel& panel) override;
    void unloadCompanions(const Panel& panel) override;
    void openScripts(Bus bus) override;
    void endProgram() override;
    void open(Bus bus, Panel& opener) override;
    void setBusMode(Bus bus);
    std::string scriptAddress() const;
    bool isOpen() const override;
    bool returned() const override;
    bool selected() const override;
    std::string field(int column) const override;
    void leaveProductTable();
    void leaveCalibration();
    PanelSlotBase* panelOfRow(int row) const;
    void followDevicePanels();
    /// The device panel beside another one. Loaded here it stays unseen, and is not the one in front.
    template <class P>
    P& loadBeside(PanelSlot<P>& slot) {
        ActivePanel* const front = link_.activePanel;
        const bool loads = !slot.loaded();
        P& panel = *slot;
        if (loads)
            link_.activePanel = front;
        return panel;
    }
    void registerSharedValues();
    void registerModuleActions();

    PanelContext context_;
    Trace trace_;
    modHID link_;
    AnalogState analog_;
    PortState ports_;
    SupplyState supply_;
    CalibrationState calibration_;
    ShellState shell_;
    BusMode busMode_;
    ProductChoice choice_;
    RunState run_;
    ScriptState script_;
    WiperState i2cWipers_;
    WiperState spiWipers_;
    PinPanelState upDown_;
    PinPanelState pushButton_;
    RunInState runIn_;
    RehearsalFactory rehearsalBench_;
    BreakpointStore* breakpoints_;
    InstructionFields instructionFields_;
    InstructionChoice i2cInstruction_;
    InstructionChoice spiInstruction_;
    std::string lastDevicePanel_; ///< name; the panel may be gone
    std::string tableOpener_;     ///< name of the panel that the product table stands for

  public:
    PanelSlot<class frmStartup> frmStartup;
    PanelSlot<class Doco> Doco;
    PanelSlot<class frmMainF340> frmMainF340;
    PanelSlot<class frmMotherboardDAQ2> frmMotherboardDAQ2;
    PanelSlot<class FrmVCCCal> FrmVCCCal;
    PanelSlot<class frmVRK_User1> frmVRK_User1;
    PanelSlot<class frm_q4410> frm_q4410;
    PanelSlot<class frmVRK_SPI1> frmVRK_SPI1;
    PanelSlot<class frm_q4420> frm_q4420;
    PanelSlot<class Frm3310> Frm3310;
    PanelSlot<class frmVRK_UD1> frmVRK_UD1;
    PanelSlot<class frmVRK_PB1> frmVRK_PB1;
    PanelSlot<class UPDN_Runin> UPDN_Runin;
    PanelSlot<class ProductExec> ProductExec;
    PanelSlot<class frmScriptOps> frmScriptOps;
    PanelSlot<class frmAbout2> frmAbout2;

  private:
    Motherboard motherboard_;
    BenchServices services_;
    std::vector<PanelRow> table_;
    std::vector<PanelSlotBase*> panels_;
    std::vector<Subscription> slotWatches_;
    SharedValues sharedValues_;
    std::vector<Panel::NamedAction> moduleActions_;
};

} // namespace vrk
