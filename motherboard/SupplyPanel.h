#pragma once

#include "link/modHID.h"

namespace vrk {

/// The supply fields of a panel that may be in front. A panel leaves out what it does not have, and the step
/// on that field is then left out too.
class SupplyPanel : public ActivePanel {
  public:
    virtual Lamp* vccLamp() { return nullptr; }
    virtual Lamp* minusLamp() { return nullptr; }
    /// 0 on, 1 off
    virtual OptionButton* vccOption(int /*index*/) { return nullptr; }
    virtual OptionButton* minusOption(int /*index*/) { return nullptr; }
    /// Another board is in use, or one came back with other supplies than the panel showed: what was measured
    /// no longer holds.
    virtual void suppliesMoved() {}
    /// Its own switch of VCC is at work, and goes on to the supply's DAC.
    virtual bool switchesVcc() { return false; }
    virtual CheckBox* trackBox() { return nullptr; }
    virtual ComboBox* vccList() { return nullptr; }
};

} // namespace vrk
