#pragma once

#include "panels/blocks/BenchServices.h"
#include "platform/controls/PanelBlock.h"

namespace vrk {

/// P1.2 as the part's shutdown or write-protect pin, active low. Panels whose parts have another pin there
/// leave this block out.
class ShutdownPin : public PanelBlock {
  public:
    CheckBox ChkShutDown2{host(), "ChkShutDown2"};

    /// Drives the pin as the box says.
    void ChkShutDown2_Click();

  protected:
    ShutdownPin(Panel& panel, BenchServices& services, const char* caption);

    /// A part that is shut down disconnects its wipers.
    virtual void shutdownPinMoved() {}

  private:
    BenchServices& services_;
};

} // namespace vrk
