/// A page's way through the workspace: made, brought to the front, taken out and put back, left, dropped.

#include "shell/Bench.h"
#include "views/pages.h"
#include "views/workspace/Band.h"
#include "views/workspace/Dock.h"
#include "views/workspace/Inspector.h"
#include "views/workspace/KeyTable.h"
#include "views/workspace/PageWindow.h"
#include "views/workspace/WireView.h"
#include "views/workspace/Workspace.h"

#include <QStackedWidget>
#include <QToolButton>

#include <algorithm>

namespace vrk {

using namespace qt;

PageUi* Workspace::page(const std::string& panel) const {
    for (const auto& [slot, page] : pages_)
        if (slot->name() == panel)
            return page;
    return nullptr;
}

std::vector<PageUi*> Workspace::pages() const {
    std::vector<PageUi*> all;
    for (const auto& [slot, page] : pages_)
        all.push_back(page);
    return all;
}

PageUi* Workspace::working() const {
    if (sheet_ != nullptr && sheet_->under() == front_ && sheet_->sheet() != nullptr)
        return sheet_->sheet();
    return front_;
}

bool Workspace::isOut(const PageUi& page) const {
    return windows_.count(&page) > 0;
}

PageUi* Workspace::make(PanelSlotBase& slot) {
    if (const auto found = pages_.find(&slot); found != pages_.end())
        return found->second;
    const PageRow* row = findPageRow(slot.name());
    if (row == nullptr || row->make == nullptr)
        return nullptr;
    auto* page = new PageUi(context_, slot, *slot.panel(), *row);
    pages_[&slot] = page;
    page->onLeastSize = [this] { arrangeLater(); };
    page->onOpenPlot = [this] { openDock(Dock::Plot); };
    page->onOpenPage = [this](const QString& name) {
        for (const PageRow& other : pageRows())
            if (name == other.name)
                open(other);
    };
    page->onShowWire = [this](const WireExcerpt& excerpt, bool open) {
        if (wire_ == nullptr)
            return;
        wire_->showExcerpt(excerpt);
        if (open)
            openDock(Dock::Wire);
    };
    if (row->place == PagePlace::Page) {
        auto* out = new QToolButton;
        out->setObjectName("takeOut");
        out->setIcon(signIcon(Sign::TakeOut));
        out->setToolTip("Take this page out into a window of its own, or put it back");
        out->setAccessibleName("Take out");
        connect(out, &QToolButton::clicked, page,
                [this, page] { isOut(*page) ? putBack(*page) : takeOut(*page); });
        page->addFrameItem(out);
    }
    row->make(*page, *slot.panel());
    if (auto* device = dynamic_cast<DevicePanel*>(slot.panel()); device != nullptr && page->band() == nullptr)
        page->setBand(bandOf(*device));
    tieKeys(*page, *keys_);
    place(*page);
    if (toTakeOut_.removeAll(QString::fromStdString(slot.name())) > 0)
        takeOut(*page);
    return page;
}

void Workspace::place(PageUi& page) {
    switch (page.row().place) {
    case PagePlace::Dock:
        dock_->setTab(Dock::Trace, page.page(), page.headItems());
        break;
    case PagePlace::Page:
        middle_->addWidget(page.page());
        break;
    case PagePlace::Sheet:
        break;
    }
}

void Workspace::hear(PanelSlotBase& slot, SlotEvent event) {
    switch (event) {
    case SlotEvent::Loaded:
        if (const PageRow* row = findPageRow(slot.name()); row != nullptr && row->place == PagePlace::Dock)
            (void)make(slot);
        break;
    case SlotEvent::Shown:
    case SlotEvent::Activated:
        if (PageUi* page = make(slot))
            bringToFront(*page);
        break;
    case SlotEvent::Hidden:
        if (PageUi* page = this->page(slot.name()))
            leave(*page);
        break;
    case SlotEvent::Unloaded:
        if (auto node = pages_.extract(&slot))
            drop(*node.mapped());
        break;
    }
    followDevice();
}

void Workspace::drop(PageUi& page) {
    page.release();
    leave(page);
    if (const auto found = windows_.find(&page); found != windows_.end()) {
        found->second->giveBack();
        found->second->hide();
        found->second->deleteLater();
        windows_.erase(found);
    }
    if (page.row().place == PagePlace::Dock)
        dock_->setTab(Dock::Trace, nullptr, nullptr);
    // One of its own event handlers may be on the stack below the action that unloads it.
    page.page()->hide();
    page.setParent(this); // goes with the workspace, should that go first
    context_.bench.events().retire(
        std::shared_ptr<void>(&page, [](void* pointer) { static_cast<PageUi*>(pointer)->deleteLater(); }));
}

void Workspace::bringToFront(PageUi& page) {
    if (isHidden())
        show();
    switch (page.row().place) {
    case PagePlace::Dock:
        openDock(Dock::Trace);
        return;
    case PagePlace::Sheet:
        return openSheet(page);
    case PagePlace::Page:
        break;
    }
    if (const auto found = windows_.find(&page); found != windows_.end()) {
        found->second->show();
        // Asking again for what the user has just done would start two windows on a game of catch.
        if (!found->second->isActiveWindow()) {
            found->second->raise();
            found->second->activateWindow();
        }
        return;
    }
    std::erase_if(history_,
                  [&](const QPointer<PageUi>& other) { return other == nullptr || other == &page; });
    history_.push_back(&page);
    if (front_ == &page)
        return;
    if (front_ != nullptr)
        front_->keepFocus();
    front_ = &page;
    dockAsked_ = false;
    showFront();
    // A panel that rests until its table is answered shows the table: the band opens it over any page.
    if (QPointer<PageUi> sheet = sheet_ == nullptr ? nullptr : sheet_->sheet();
        sheet != nullptr && sheet_->under() != &page && !page.panel().enabled()) {
        closeSheet();
        openSheet(*sheet);
    }
}

void Workspace::leave(PageUi& page) {
    std::erase_if(history_,
                  [&](const QPointer<PageUi>& other) { return other == nullptr || other == &page; });
    const bool overAll = sheet_ != nullptr && sheet_->sheet() == &page;
    if (overAll || (sheet_ != nullptr && sheet_->under() == &page))
        closeSheet();
    if (overAll)
        leftSheet(page);
    if (const auto found = windows_.find(&page); found != windows_.end())
        found->second->hide();
    if (front_ != &page)
        return;
    front_ = history_.empty() ? nullptr : history_.back();
    showFront();
    activateLater();
}

void Workspace::activateLater() {
    if (front_ == nullptr)
        return;
    // Where several pages come and go in a row, only the one that stays in front counts.
    QMetaObject::invokeMethod(
        front_,
        [this, page = front_] {
            if (page != nullptr && page == front_ && !page->released() && sheet_ == nullptr)
                (void)page->slot().userActivate();
        },
        Qt::QueuedConnection);
}

void Workspace::openSheet(PageUi& page) {
    if (sheet_ != nullptr && sheet_->sheet() == &page)
        return;
    closeSheet();
    if (front_ == nullptr) {
        middle_->setCurrentIndex(middle_->addWidget(page.page()));
        return;
    }
    front_->keepFocus();
    sheet_ = new Sheet(page, *front_);
    page.takeFocus();
}

void Workspace::closeSheet() {
    if (sheet_ == nullptr)
        return;
    sheet_->giveBack();
    sheet_->hide();
    sheet_->deleteLater();
    sheet_ = nullptr;
    // The panel under it may be enabled when the action that waited has ended, and gets the keyboard then.
    if (front_ != nullptr)
        front_->takeFocus();
}

/// What lay under a sheet is in front again: another sheet that is still open, else the page.
void Workspace::leftSheet(const PageUi& left) {
    for (const auto& [slot, page] : pages_)
        if (page != &left && page->row().place == PagePlace::Sheet && slot->visible())
            return openSheet(*page);
    activateLater();
}

void Workspace::takeOut(PageUi& page) {
    if (isOut(page) || page.row().place != PagePlace::Page)
        return;
    if (sheet_ != nullptr && sheet_->under() == &page)
        return; // the sheet first
    const bool wasFront = front_ == &page;
    page.keepFocus();
    std::erase_if(history_,
                  [&](const QPointer<PageUi>& other) { return other == nullptr || other == &page; });
    inspector_->release(page);
    if (wasFront) {
        dock_->setTab(Dock::Plot, nullptr, nullptr);
        front_ = history_.empty() ? nullptr : history_.back();
    }
    middle_->removeWidget(page.page());
    auto* window = new PageWindow(page);
    windows_[&page] = window;
    tieKeys(page, window->keys());
    for (const Command& command : commands_)
        window->keys().add(command.key);
    window->keys().pressed = [this](const QKeySequence& key) { press(key); };
    window->onClose = [this, shown = &page] { putBack(*shown); };
    if (wasFront)
        showFront();
    if (page.slot().visible())
        window->show();
    if (wasFront)
        page.takeFocus(); // Qt forgets it with the window of before
}

void Workspace::putBack(PageUi& page) {
    const auto found = windows_.find(&page);
    if (found == windows_.end())
        return;
    PageWindow* window = found->second;
    windows_.erase(found);
    page.keepFocus();
    window->giveBack();
    window->hide();
    window->deleteLater();
    place(page);
    if (page.slot().visible() && !page.released()) {
        bringToFront(page);
        activateLater();
    }
}

} // namespace vrk
