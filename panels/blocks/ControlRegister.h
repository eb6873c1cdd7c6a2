#pragma once

#include "platform/controls/PanelBlock.h"

namespace vrk {

/// The control register (ACR) and the general register of a part: what a byte is composed of, what was read,
/// and the lamps. How the bytes travel is the panel's.
class ControlRegister : public PanelBlock {
  public:
    Frame SSFrame2{host(), "SSFrame2"};
    Button cmdACRRead{host(), "cmdACRRead"};
    Button cmdACRWrite{host(), "cmdACRWrite"};
    /// 0 to write, 1 read
    ControlArray<TextBox> txtACR{host(), "txtACR", 0, 1};
    ControlArray<OptionButton> Option1{host(), "Option1", 0, 1};
    Frame FrmShutdown{host(), "FrmShutdown"};
    CheckBox chkShutdown{host(), "chkShutdown"};
    Label lblShutDown{host(), "lblShutDown"};
    Frame frmRegisterWrite{host(), "frmRegisterWrite"};
    TextBox txtGPWrite{host(), "txtGPWrite"};
    Reading lblGPRead{host(), "lblGPRead"};
    Label lblGDRs{host(), "lblGDRs"};
    Button cmdGPRead{host(), "cmdGPRead"};
    Button cmdWriteGP{host(), "cmdWriteGP"};
    /// 0 control register written, 1 read, 2 general register written, 3 read
    ControlArray<Lamp> Shape2{host(), "Shape2", 0, 3};

    /// Bit 7 says where wiper writes go, bit 6 is the shutdown, active low. Sends nothing.
    void Option1_Click(int index);
    void chkShutdown_Click();
    virtual void cmdACRRead_Click() = 0;
    virtual void cmdACRWrite_Click() = 0;
    virtual void cmdGPRead_Click() = 0;
    virtual void cmdWriteGP_Click() = 0;

  protected:
    /// \param image the composed byte, kept with the panel's wiper state.
    ControlRegister(Panel& panel, int& image);

    /// The registers of another part or address stand here: what was read no longer holds.
    void markRegistersStale(const std::string& cause);

  private:
    int& image_;
    OptionGroup optionGroup_;
};

} // namespace vrk
