#pragma once

#include "platform/controls/Panel.h"

#include <string>

namespace vrk {

/// A group of controls and their actions that several panels have: the supply switches, the channels. A panel
/// inherits the blocks that it has, after Panel, so that their controls are its own under their names; what
/// one panel does differently is a virtual function of the block.
class PanelBlock {
  public:
    PanelBlock(const PanelBlock&) = delete;
    PanelBlock& operator=(const PanelBlock&) = delete;

  protected:
    /// \param panel the panel that the block's controls stand on.
    explicit PanelBlock(Panel& panel) : host_(panel) {}
    virtual ~PanelBlock() = default;

    Panel& host() const { return host_; }

    /// Registers one of the block's own actions under its name on the panel.
    template <class P, class R, class... A>
    void bindAction(const std::string& name, R (P::*method)(A...)) {
        host_.bindActionTo(static_cast<P*>(this), name, method);
    }
    /// Ties a control's click to the block's handler, which becomes callable as "<control>_Click".
    template <class C, class P>
    void bindClick(C& control, void (P::*method)()) {
        host_.bindClickTo(static_cast<P*>(this), control, method);
    }
    template <class C, class P>
    void bindClick(ControlArray<C>& array, void (P::*method)(int)) {
        host_.bindClickTo(static_cast<P*>(this), array, method);
    }

  private:
    Panel& host_;
};

} // namespace vrk
