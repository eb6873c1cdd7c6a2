#pragma once

#include "panels/WiperPanel.h"
#include "panels/blocks/spiRow.h"
#include "panels/instruction/Frm3310.h"
#include "panels/instruction/InstructionCompanion.h"
#include "panels/instruction/InstructionEntry.h"
#include "panels/spi/spiFrames.h"
#include "panels/spi/spiParts.h"

#include <optional>
#include <string>
#include <vector>

namespace vrk {

/// The SPI panel: one panel for all parts that are controlled over SPI. The part selected fixes the command
/// bytes, the length of a frame, and whether an ID byte leads it.
class frmVRK_SPI1 final : public WiperPanel, public InstructionEntry, public InstructionCompanion {
  public:
    /// The panels of its families' instructions, beside this one.
    struct Companions {
        PanelSlotBase& quad;
        PanelSlot<Frm3310>& tenBit;
    };
    frmVRK_SPI1(PanelContext& context, BenchServices& services, WiperState& state,
                const Companions& companions);

    void Form_Load() override;
    void Form_Activate() override;

    // Set-up
    MenuEntry mnu_SPI_List{*this, "mnu_SPI_List"};
    MenuEntry mnuKV4180{*this, "mnuKV4180"};
    MenuEntry mnuKV4184{*this, "mnuKV4184"};
    TextBox txtBaseVRKReadAddress{*this, "txtBaseVRKReadAddress"};
    TextBox txtBaseVRKWriteAddress{*this, "txtBaseVRKWriteAddress"};
    TextBox txtSPIRDQuantity{*this, "txtSPIRDQuantity"};
    TextBox txtSPIWrCount{*this, "txtSPIWrCount"};
    CheckBox chkSendID{*this, "chkSendID"};
    ComboBox cboSPIClock{*this, "cboSPIClock"};
    Button cmdSetSPICLock{*this, "cmdSetSPICLock"};

    /// Selection from the product table; stands until the user has returned from it.
    void mnu_SPI_List_Click();
    void mnuKV4180_Click();
    void mnuKV4184_Click();
    void chkSendID_Click();
    void cboSPIClock_Click();
    /// Does nothing: the list acts by itself.
    void cmdSetSPICLock_Click() {}

    // Registers
    /// Commands: 0 write, 1 read
    ControlArray<TextBox> txtACRAddress{*this, "txtACRAddress", 0, 1};
    ControlArray<TextBox> txtGPAddress{*this, "txtGPAddress", 0, 1};

    // The frame that each button is about to send, as text
    ControlArray<Label> lblWriteFrame{*this, "lblWriteFrame", 0, kChannels - 1};
    ControlArray<Label> lblReadFrame{*this, "lblReadFrame", 0, kChannels - 1};
    /// In the order of RegisterAction.
    ControlArray<Label> lblRegisterFrame{*this, "lblRegisterFrame", 0, 3};

    Bus bus() const override { return Bus::SPI; }
    StoreRules storeRules() const override;
    std::string busName() const override { return "SPI"; }
    WiperPanel& devicePanel() override { return *this; }
    std::string readFrameLength() const override { return txtSPIRDQuantity.text(); }
    void wipersMoved() override { markChannelsStale("an instruction has moved wipers since"); }
    std::string busAddress() const override;
    std::vector<MenuEntry*> partEntries() override;

  protected:
    void partChanged() override;
    void addressChanged() override;
    void supplyChanged() override;
    void prepareInstructions(InstructionPanel& panel) override;

  private:
    /// What the panels beside this one have read no longer holds.
    void markCompanionsStale(const std::string& cause);
    void wireSetup();
    void wireRegisters();
    void wireFrames();
    void choosePart(const SpiPartFacts& part);
    void mirrorClocks();
    /// A board has been read whole: one that was away is back at its own clock.
    void readClock();
    /// Until the board has said which: behind a lost reply stands what Retry's discovery has read last.
    void listClocks();
    std::string tableRowFault(const ProductTable& table) const override;
    void takeTableRow(const ProductTable& table) override;
    void applyFamily();
    void leaveFamily();
    void beforeMenu() override;
    /// Two of the console's I2C options. The quad parts' family changes them.
    struct BusOptions {
        int twoWireRead;
        int random;
    };
    void setBusOptions(const BusOptions& options);
    void takeBusOptions();

    SpiFamily family() const { return spiFamilyOf(lblProduct.caption()); }
    SpiLead lead() const { return {chkSendID.checked(), txtDeviceAdr.text()}; }
    SpiFrame writeFrame(int channel) const;
    SpiFrame readFrame(int channel) const;
    SpiFrame registerFrame(RegisterAction action) const;
    void showWriteFrame(int channel);
    void showFrames();
    /// One frame through the motherboard's write row, or through its read row. \return true if the board has
    /// replied and the part has answered with something other than 0 behind the first byte.
    bool sendFrame(const SpiFrame& frame);
    /// Sets answered_ too. \param answerBytes at the frame's end that hold the value. \throws Fault
    /// "Subscript out of range" for a frame that is shorter
    bool exchangeFrame(const SpiFrame& frame, int answerBytes);
    bool judge(const SpiFrame& frame, int length, const SpiRowFields& row);
    /// A byte of the answer to the last exchangeFrame(). \param fromEnd 1 for the last.
    const std::string& answer(int fromEnd) const;

    bool mayExchange() override { return requireVcc(); }
    bool writeWiper(int channel) override;
    std::string sentText(int channel) const override;
    std::optional<int> readWiper(int channel) override;
    std::string failureDetail() const override { return failure_; }
    int shownPosition(int value) const override { return value; }
    int readDigits() const override { return family() == SpiFamily::TenBit ? 3 : 2; }
    Pace registerPace(RegisterAction action) const override;
    TextBox& registerAddress(RegisterAction action) override;
    const TextBox& registerAddress(RegisterAction action) const;
    std::vector<Control*> registerButtons(RegisterAction action) override;
    RegisterOutcome exchangeRegister(RegisterAction action) override;

    Companions companions_;
    std::string failure_;
    int answerLength_ = 0;  ///< bytes of the last frame that was exchanged for an answer
    bool answered_ = false; ///< and what came at its end is one
    /// From before the family changed them; nothing while it has not.
    std::optional<BusOptions> optionsBefore_;
    Subscription clocks_;
    Subscription boardRead_;
    std::vector<Subscription> frameSources_;
};

} // namespace vrk
