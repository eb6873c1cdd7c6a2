#include "views/workspace/Workspace.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/pages.h"
#include "views/workspace/Band.h"
#include "views/workspace/Dock.h"
#include "views/workspace/Help.h"
#include "views/workspace/Inspector.h"
#include "views/workspace/KeyTable.h"
#include "views/workspace/PageWindow.h"
#include "views/workspace/Rail.h"
#include "views/workspace/Sheet.h"
#include "views/workspace/WireView.h"

#include <QLabel>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {
/// The last result changes with every exchange; a person reads it at this rate.
constexpr int kStatusMs = 150;
constexpr int kStatusHeight = 24;

QHBoxLayout* bare(QHBoxLayout* layout) {
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    return layout;
}
} // namespace

Workspace::Workspace(const ViewContext& context, QSettings* settings)
    : context_(context), settings_(settings) {
    setObjectName("workspace");
    keys_ = new KeyTable(*this);
    keys_->pressed = [this](const QKeySequence& key) { press(key); };
    build();
    makeMenus();
    addCommands();
    for (PanelSlotBase* slot : context_.bench.panels())
        subscriptions_.push_back(slot->observe([this, slot](SlotEvent event) { hear(*slot, event); }));
    connect(&statusTimer_, &QTimer::timeout, this, [this] { showStatus(); });
    statusTimer_.setInterval(kStatusMs);
    arrangeTimer_.setSingleShot(true);
    connect(&arrangeTimer_, &QTimer::timeout, this, [this] { arrange(); });
    resize(dp(1280), dp(720));
    restore();
    showFront();
}

Workspace::~Workspace() {
    remember();
    subscriptions_.clear();
    closeSheet();
    band_->setPage(nullptr);
    for (const auto& [page, window] : windows_)
        delete window;
    for (const auto& [slot, page] : pages_)
        delete page;
}

void Workspace::build() {
    band_ = new Band(context_);
    band_->onJump = [this](const QString& field) { jumpTo(field); };
    auto* all = new QVBoxLayout;
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(band_);
    all->addWidget(buildBody(), 1);
    auto* central = new QWidget;
    central->setLayout(all);
    setCentralWidget(central);
    buildStatus();
}

QWidget* Workspace::buildBody() {
    rail_ = new Rail;
    rail_->onOpen = [this](const PageRow& row) { open(row); };
    for (const PageRow& row : pageRows())
        if (*row.slot == '\0')
            rail_->setRefusal(row, "not in this version");
    middle_ = new QStackedWidget;
    auto* empty = quietText("The page that was here is in a window of its own.");
    empty->setAlignment(Qt::AlignCenter);
    middle_->addWidget(empty);
    middle_->setMinimumHeight(dp(120));
    // The widest page must not say how narrow the window may be: what does not fit scrolls.
    middle_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    middle_->setMinimumWidth(dp(320));
    dock_ = new Dock;
    dock_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    dock_->onUser = [this] {
        dockWish_ = !dock_->folded();
        dockAsked_ = true;
        arrange();
        if (dock_->current() == Dock::Trace && !dock_->folded())
            showTrace();
    };
    if (context_.wire != nullptr) {
        wire_ = new WireView(*context_.wire, context_.bench.events());
        dock_->setTab(Dock::Wire, wire_, wire_->tools());
    }
    auto* column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(middle_, 1);
    column->addWidget(dock_);
    inspector_ = new Inspector;
    inspector_->onStrip = [this](bool strip) {
        if (front_ != nullptr)
            inspectorWish_[front_->name()] = !strip;
        arrange();
    };
    help_ = new Help;
    help_->onClose = [this] {
        help_->hide();
        arrange();
    };
    auto* row = bare(new QHBoxLayout);
    row->addWidget(rail_);
    row->addLayout(column, 1);
    row->addWidget(inspector_);
    row->addWidget(help_);
    return block(row);
}

namespace {

/// "socket: KV4071 at 50", the address as the home page has it.
QString socketWords(const SocketView::State& state) {
    if (state.part.isEmpty())
        return "socket: empty";
    return "socket: " + state.part +
           (state.address < 0 ? QString()
                              : " at " + QString("%1").arg(state.address, 2, 16, QChar('0')).toUpper());
}

} // namespace

void Workspace::buildStatus() {
    boardText_ = quietText({});
    boardText_->setObjectName("status.board");
    if (context_.socket != nullptr) {
        socketText_ = quietText({});
        socketText_->setObjectName("status.socket");
    }
    lastText_ = quietText({});
    lastText_->setObjectName("status.last");
    auto* replay = quietText(context_.boardKind == BoardKind::Replayed ? "replay of " + context_.boardName
                                                                       : "no replay");
    auto* hints = quietText("F5 read · Ctrl+Enter write · Esc abort · Ctrl+K actions · ? keys");
    std::vector<Item> items;
    for (QLabel* label : {boardText_, socketText_, lastText_, replay}) {
        if (label == nullptr)
            continue;
        if (!items.empty())
            items.emplace_back(quietText("·"));
        items.emplace_back(label);
    }
    items.push_back(stretch);
    items.emplace_back(hints);
    auto* line = block(qt::row(items));
    for (QLabel* label : line->findChildren<QLabel*>())
        label->setFont(textFont(kSmall));
    // What does not fit is cut: the line must not decide how narrow the window may be.
    for (QLabel* label : {boardText_, hints})
        label->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    line->setMinimumWidth(1);
    line->layout()->setContentsMargins(kUnit, 0, kUnit, 0);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setFixedHeight(dp(kStatusHeight));
    statusBar()->addWidget(line, 1);
}

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
}

void Workspace::leave(PageUi& page) {
    std::erase_if(history_,
                  [&](const QPointer<PageUi>& other) { return other == nullptr || other == &page; });
    if (sheet_ != nullptr && (sheet_->sheet() == &page || sheet_->under() == &page))
        closeSheet();
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
    if (front_ != nullptr)
        front_->takeFocus();
}

void Workspace::showFront() {
    rail_->setFront(front_ == nullptr ? nullptr : &front_->row());
    inspector_->setPage(front_);
    dock_->setTab(Dock::Plot, front_ == nullptr ? nullptr : front_->plot(),
                  front_ == nullptr ? nullptr : front_->plotTools());
    showPageMenus();
    if (front_ == nullptr) {
        middle_->setCurrentIndex(0);
        setWindowTitle({});
    } else {
        middle_->setCurrentWidget(front_->page());
        setWindowTitle(front_->name());
        front_->takeFocus();
    }
    arrange();
    showStatus();
}

void Workspace::followDevice() {
    DevicePanel* panel = context_.bench.devicePanel();
    PageUi* page = panel == nullptr ? nullptr : this->page(panel->name());
    if (page != nullptr && page->released())
        page = nullptr;
    if (device_ == page && band_->page() == page && page != nullptr)
        return;
    device_ = page;
    band_->setPage(page);
}

void Workspace::takeOut(PageUi& page) {
    if (isOut(page) || page.row().place != PagePlace::Page)
        return;
    if (sheet_ != nullptr && sheet_->under() == &page)
        return; // the sheet first
    const bool wasFront = front_ == &page;
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
}

void Workspace::putBack(PageUi& page) {
    const auto found = windows_.find(&page);
    if (found == windows_.end())
        return;
    PageWindow* window = found->second;
    windows_.erase(found);
    window->giveBack();
    window->hide();
    window->deleteLater();
    place(page);
    if (page.slot().visible() && !page.released()) {
        bringToFront(page);
        activateLater();
    }
}

void Workspace::open(const PageRow& row) {
    PanelSlotBase* slot = *row.slot == '\0' ? nullptr : context_.bench.findPanel(row.slot);
    if (slot == nullptr)
        return;
    if (slot == &context_.bench.frmScriptOps)
        if (auto* wiper = dynamic_cast<WiperPanel*>(context_.bench.devicePanel());
            wiper != nullptr && !wiper->mnuScriptShow.userClick().refused())
            return; // scripts of the bus that is worked on
    if (const PageRow* beside = findPageRow(row.beside); beside != nullptr && !slot->visible()) {
        open(*beside);
        if (!context_.bench.findPanel(beside->slot)->visible())
            return; // refused, or the user has cancelled
    }
    if (row.startRow != 0 && !slot->visible())
        openDevice(row, *slot);
    else
        (void)context_.bench.events().deliver([slot] { slot->show(); });
}

void Workspace::openDevice(const PageRow& row, PanelSlotBase&) {
    Bench& bench = context_.bench;
    auto* start = bench.frmStartup.loadedPanel();
    if (start == nullptr)
        return;
    // One part is on the board at a time: the panel before it is left as its own button leaves it.
    DevicePanel* other = bench.devicePanel();
    PanelSlotBase* left = other == nullptr ? nullptr : bench.findPanel(other->name());
    if (left != nullptr && left->visible()) {
        (void)other->cmdMMenu.userClick();
        if (left->visible())
            return; // refused, or the user has cancelled
    }
    (void)start->cboVRKSelect.userSelect(row.startRow);
}

void Workspace::showStatus() {
    const LinkWords words = linkWords(context_);
    boardText_->setText(words.board);
    lastText_->setText(words.last.isEmpty() ? QString("No transfer yet") : words.last);
    if (socketText_ != nullptr)
        socketText_->setText(socketWords(context_.socket->state()));
    band_->showLink(words);
    band_->refresh();
    for (const auto& [slot, page] : pages_)
        page->showLink(words);
}

} // namespace vrk
