#pragma once

#include "panels/blocks/ShellControl.h"
#include "platform/controls/Panel.h"

#include <functional>
#include <string>

namespace vrk {

/// What the product table has come to. Stands whether the panel is loaded or not.
struct ProductChoice {
    bool ParamSelected = false; ///< a row has been chosen
    bool ParamChanged = false;
    bool ProductReturned = false; ///< the user has left the table
};

/// The product table: the user chooses a part from a comma-separated file instead of setting address, taps
/// and channels by hand. The row chosen lands in labels that the device panel reads.
class ProductExec final : public Panel {
  public:
    static constexpr int kMostRows = 50;
    static constexpr int kFields = 18;

    struct Uses {
        const BusMode& mode;
        ShellState& state;
        ProductChoice& choice;
        /// Hides the table and brings the panel that opened it to the front.
        std::function<void()> goBack;
    };

    ProductExec(PanelContext& context, Uses uses);

    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload() override;
    void Form_Unload() override;

    Frame Frame1{*this, "Frame1"};
    Grid tGrid{*this, "tGrid"};
    ControlArray<Label> lblField{*this, "lblField", 0, kFields - 1};
    ControlArray<Label> lblDeviceSel{*this, "lblDeviceSel", 0, kFields - 1};
    Button cmdLoadParam{*this, "cmdLoadParam"};
    Button cmdSaveParam{*this, "cmdSaveParam"};
    Button cmdReturn{*this, "cmdReturn"};
    Timer Timer1{*this, "Timer1"};

    void cmdLoadParam_Click();
    void cmdSaveParam_Click();
    void cmdReturn_Click();
    void tGrid_Click();
    /// Replaces the table by the file's. \throws Fault if the file cannot be read; the table then stays.
    void ReadParameters(const std::string& path);
    /// \throws Fault if the file cannot be written; an old file then stays.
    void WriteParameters(const std::string& path);
    /// Back to no row chosen, as when the table opens.
    void forgetChoice();

  private:
    void showBusFields();
    int columns() const { return uses_.mode.SPIBusMode ? 19 : 15; }
    /// The last column that a choice uses.
    int lastColumn() const { return uses_.mode.SPIBusMode ? 17 : 13; }
    std::string defaultName() const { return uses_.mode.SPIBusMode ? "*SPI* .csv" : "*I2C* .csv"; }

    Uses uses_;
    bool displayed_ = false;
};

} // namespace vrk
