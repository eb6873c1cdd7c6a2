#pragma once

#include "panels/blocks/BenchServices.h"
#include "platform/controls/PanelBlock.h"

namespace vrk {

/// The six lamps of link and transfers.
class StatusBlock : public PanelBlock {
  public:
    Lamp ShpAttach{host(), "ShpAttach"};
    /// 1 write, 2 read, 3 timer, 4 communication with the part
    ControlArray<Lamp> Shape1{host(), "Shape1", 1, 4};
    Lamp Shp_USB_Transfer{host(), "Shp_USB_Transfer"};
    ControlArray<Label> lblUSBChk{host(), "lblUSBChk", 0, 5};

  protected:
    StatusBlock(Panel& panel, BenchServices& services);

    void goodWrite();
    void goodRead();
    void badWrite();
    void badRead();

  private:
    Subscription attached_;
};

} // namespace vrk
