#include "views/WindowManager.h"

#include "shell/Bench.h"
#include "views/PanelWindow.h"
#include "views/panelViews.h"

#include <utility>

namespace vrk {

namespace {

void fill(PanelWindow& window, Panel& panel) {
    if (auto* startup = dynamic_cast<frmStartup*>(&panel))
        makeStartupView(window, *startup);
    else if (auto* trace = dynamic_cast<Doco*>(&panel))
        makeTraceView(window, *trace);
    else if (auto* products = dynamic_cast<ProductExec*>(&panel))
        makeProductView(window, *products);
    else if (auto* i2c = dynamic_cast<frmVRK_User1*>(&panel))
        makeI2cPanelView(window, *i2c);
    else if (auto* console = dynamic_cast<frmMainF340*>(&panel))
        makeConsoleView(window, *console);
    else if (auto* motherboard = dynamic_cast<frmMotherboardDAQ2*>(&panel))
        makeMotherboardView(window, *motherboard);
}

} // namespace

WindowManager::WindowManager(const ViewContext& context) : context_(context) {
    for (PanelSlotBase* slot : context_.bench.panels())
        subscriptions_.push_back(slot->observe([this, slot](SlotEvent event) { hear(*slot, event); }));
}

WindowManager::~WindowManager() {
    subscriptions_.clear();
    for (const auto& [slot, window] : windows_)
        delete window;
}

PanelWindow* WindowManager::window(const std::string& panel) const {
    for (const auto& [slot, window] : windows_)
        if (slot->name() == panel)
            return window;
    return nullptr;
}

std::vector<PanelWindow*> WindowManager::windows() const {
    std::vector<PanelWindow*> all;
    for (const auto& [slot, window] : windows_)
        all.push_back(window);
    return all;
}

PanelWindow& WindowManager::make(PanelSlotBase& slot) {
    PanelWindow*& window = windows_[&slot];
    if (window == nullptr) {
        window = new PanelWindow(context_, slot, *slot.panel());
        fill(*window, *slot.panel());
    }
    return *window;
}

void WindowManager::hear(PanelSlotBase& slot, SlotEvent event) {
    switch (event) {
    case SlotEvent::Loaded:
        break;
    case SlotEvent::Shown:
        make(slot).show();
        break;
    case SlotEvent::Activated:
        // Asking again for what the user has just done would start two windows on a game of catch.
        if (auto* shown = window(slot.name()); shown != nullptr && !shown->isActiveWindow()) {
            shown->raise();
            shown->activateWindow();
        }
        break;
    case SlotEvent::Hidden:
        if (auto* shown = window(slot.name()))
            shown->hide();
        break;
    case SlotEvent::Unloaded:
        if (auto node = windows_.extract(&slot)) {
            PanelWindow* gone = node.mapped();
            gone->release();
            // One of its own event handlers may be on the stack below the action that unloads it.
            context_.bench.events().retire(std::shared_ptr<void>(
                gone, [](void* pointer) { static_cast<PanelWindow*>(pointer)->deleteLater(); }));
        }
        break;
    }
}

} // namespace vrk
