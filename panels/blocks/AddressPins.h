#pragma once

#include "panels/blocks/BenchServices.h"
#include "platform/controls/PanelBlock.h"

#include <string>

namespace vrk {

/// The part's address pins A0 to A3, and the address or ID byte that follows from them.
class AddressPins : public PanelBlock {
  public:
    Frame fraADDRSelect{host(), "fraADDRSelect"};
    ControlArray<CheckBox> chkI2CAdr{host(), "chkI2CAdr", 0, 3};
    TextBox txtCalcAddr{host(), "txtCalcAddr"};
    Button cmdCopyAdr{host(), "cmdCopyAdr"};
    TextBox txtDeviceAdr{host(), "txtDeviceAdr"};
    Button cmdSlave{host(), "cmdSlave"};

    void chkI2CAdr_Click(int index);
    void cmdCopyAdr_Click();
    void cmdSlave_Click();

  protected:
    AddressPins(Panel& panel, BenchServices& services);

    /// Only in the image; the caller writes the ports.
    void clearAddressPins();
    /// Drives the pins whose boxes are checked, in the image.
    void raiseAddressPins();
    /// The active address has changed: what was read of another one no longer holds.
    virtual void addressChanged() {}

  private:
    BenchServices& services_;
};

} // namespace vrk
