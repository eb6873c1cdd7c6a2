#pragma once

#include "panels/blocks/StatusBlock.h"
#include "panels/blocks/StoreBlock.h"
#include "panels/blocks/SupplyBlock.h"

#include <string>

namespace vrk {

/// What every device panel has: the supply block, the status block, the count of what wears the part out, the
/// way back to the start panel.
class DevicePanel : public Panel,
                    public SupplyPanel,
                    public SupplyBlock,
                    public StatusBlock,
                    public StoreBlock {
  public:
    ~DevicePanel() override;

    void Form_Activate() override;
    /// Closing the window ends the program, unless the panel is on its way back to the start panel.
    void Form_QueryUnload() override;
    void Form_Unload() override;

    Button cmdMMenu{*this, "cmdMMenu"};

    /// VCC off and back to the start panel.
    void cmdMMenu_Click();

    Lamp* attachLamp() override { return &ShpAttach; }
    Lamp* transferLamp() override { return &Shp_USB_Transfer; }
    Lamp* vccLamp() override { return &ShpVCCon; }
    Lamp* minusLamp() override { return &ShVM; }
    OptionButton* vccOption(int index) override { return &OptVCC[index]; }
    OptionButton* minusOption(int index) override { return &OptVM[index]; }
    void suppliesMoved() override {
        partLostPower();
        lblVCCVolts.markStale("another board is in use, or this one came back with other supplies");
        supplyChanged();
    }
    bool switchesVcc() override { return switching(); }
    CheckBox* trackBox() override { return &ChkTrack; }
    ComboBox* vccList() override { return &CboVCC; }

    /// The bus and the address or ID byte of the part, in words: "I2C", "50"; the second is empty where the
    /// bus has none.
    virtual std::string busName() const = 0;
    virtual std::string busAddress() const = 0;

  protected:
    DevicePanel(PanelContext& context, std::string name, std::string title, BenchServices& services);

    BenchServices& services() const { return services_; }
    frmMainF340& console() const { return services_.console(); }
    frmMotherboardDAQ2& board() const { return services_.board(); }
    modHID& link() const { return services_.link; }
    void becomeActive() { services_.link.activePanel = this; }

    bool drivesPins() const override { return services_.link.activePanel == this; }

    /// The part's pins as this panel's boxes say, in the image; another panel's part was on the board before.
    /// The ports are written with the supply that follows.
    virtual void placePins() {}
    /// On the way back to the start panel, with VCC off: puts back what others share.
    virtual void beforeMenu() {}
    /// Says so when VCC is off. \return true if it is on
    bool requireVcc();

  private:
    BenchServices& services_;
};

} // namespace vrk
