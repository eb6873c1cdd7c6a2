#pragma once

#include "views/ViewContext.h"

#include "platform/controls/Panel.h"

#include <map>
#include <string>
#include <vector>

namespace vrk {

class PanelWindow;

/// Gives every panel its window: made when the panel is first shown, hidden and shown with it, dropped with
/// it. The user's closing and bringing to the front go to the panel's slot.
class WindowManager {
  public:
    explicit WindowManager(const ViewContext& context);
    ~WindowManager();
    WindowManager(const WindowManager&) = delete;
    WindowManager& operator=(const WindowManager&) = delete;

    /// nullptr while the panel has no window.
    PanelWindow* window(const std::string& panel) const;
    std::vector<PanelWindow*> windows() const;

  private:
    void hear(PanelSlotBase& slot, SlotEvent event);
    PanelWindow& make(PanelSlotBase& slot);

    ViewContext context_;
    std::map<const PanelSlotBase*, PanelWindow*> windows_;
    std::vector<Subscription> subscriptions_;
};

} // namespace vrk
