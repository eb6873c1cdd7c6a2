#include "views/workspace/Workspace.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/pages.h"
#include "views/workspace/Dock.h"
#include "views/workspace/Rail.h"
#include "views/workspace/Section.h"

#include <QEvent>
#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QVBoxLayout>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {
/// The last result changes with every exchange; a person reads it at this rate.
constexpr int kStatusMs = 150;
constexpr int kInspectorWidth = 312;
} // namespace

Workspace::Workspace(const ViewContext& context) : context_(context) {
    setObjectName("workspace");
    build();
    for (PanelSlotBase* slot : context_.bench.panels())
        subscriptions_.push_back(slot->observe([this, slot](SlotEvent event) { hear(*slot, event); }));
    connect(&statusTimer_, &QTimer::timeout, this, [this] { showStatus(); });
    statusTimer_.start(kStatusMs);
    resize(dp(1280), dp(720));
}

Workspace::~Workspace() {
    subscriptions_.clear();
    for (const auto& [slot, page] : pages_)
        delete page;
}

void Workspace::build() {
    rail_ = new Rail;
    rail_->onOpen = [this](const PageRow& row) { open(row); };
    for (const PageRow& row : pageRows())
        if (*row.slot == '\0')
            rail_->setRefusal(row, "not in this version");
    middle_ = new QStackedWidget;
    middle_->addWidget(new QWidget);
    dock_ = new Dock;
    auto* column = new QSplitter(Qt::Vertical);
    column->addWidget(middle_);
    column->addWidget(dock_);
    column->setStretchFactor(0, 1);
    column->setCollapsible(0, false);
    inspectors_ = new QStackedWidget;
    inspectors_->addWidget(new QWidget);
    auto* scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(inspectors_);
    scroll->setFixedWidth(dp(kInspectorWidth));
    inspectorArea_ = scroll;
    auto* body = new QHBoxLayout;
    body->setContentsMargins(0, 0, 0, 0);
    body->setSpacing(0);
    body->addWidget(rail_);
    body->addWidget(column, 1);
    body->addWidget(separator(Qt::Vertical));
    body->addWidget(inspectorArea_);
    auto* all = new QWidget;
    all->setLayout(body);
    setCentralWidget(all);
    statusText_ = quietText({});
    statusText_->setObjectName("status.board");
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(statusText_, 1);
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

PageUi* Workspace::make(PanelSlotBase& slot) {
    if (const auto found = pages_.find(&slot); found != pages_.end())
        return found->second;
    const PageRow* row = findPageRow(slot.name());
    if (row == nullptr || row->make == nullptr)
        return nullptr;
    auto* page = new PageUi(context_, slot, *slot.panel(), *row);
    pages_[&slot] = page;
    page->onOpenPlot = [this] { dock_->open(Dock::Plot); };
    page->onOpenPage = [this](const QString& name) {
        for (const PageRow& other : pageRows())
            if (name == other.name)
                open(other);
    };
    row->make(*page, *slot.panel());
    if (row->place == PagePlace::Dock) {
        dock_->setTab(Dock::Trace, page->page(), nullptr);
    } else {
        middle_->addWidget(page->page());
        inspectors_->addWidget(page->inspector());
    }
    return page;
}

void Workspace::hear(PanelSlotBase& slot, SlotEvent event) {
    switch (event) {
    case SlotEvent::Loaded:
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
        if (auto node = pages_.extract(&slot)) {
            PageUi* gone = node.mapped();
            gone->release();
            leave(*gone);
            // One of its own event handlers may be on the stack below the action that unloads it.
            context_.bench.events().retire(std::shared_ptr<void>(
                gone, [](void* pointer) { static_cast<PageUi*>(pointer)->deleteLater(); }));
        }
        break;
    }
}

void Workspace::bringToFront(PageUi& page) {
    show();
    if (page.row().place == PagePlace::Dock) {
        dock_->open(Dock::Trace);
        return;
    }
    std::erase_if(history_,
                  [&](const QPointer<PageUi>& other) { return other == nullptr || other == &page; });
    history_.push_back(&page);
    front_ = &page;
    showFront();
}

void Workspace::leave(PageUi& page) {
    std::erase_if(history_,
                  [&](const QPointer<PageUi>& other) { return other == nullptr || other == &page; });
    if (front_ != &page)
        return;
    front_ = history_.empty() ? nullptr : history_.back();
    showFront();
    if (front_ != nullptr)
        // Where several pages come and go in a row, only the one that stays in front counts.
        QMetaObject::invokeMethod(
            front_,
            [page = front_] {
                if (page != nullptr && !page->released())
                    (void)page->slot().userActivate();
            },
            Qt::QueuedConnection);
}

void Workspace::showFront() {
    rail_->setFront(front_ == nullptr ? nullptr : &front_->row());
    if (front_ == nullptr) {
        middle_->setCurrentIndex(0);
        inspectors_->setCurrentIndex(0);
        inspectorArea_->hide();
        dock_->setTab(Dock::Plot, nullptr, nullptr);
        return;
    }
    middle_->setCurrentWidget(front_->page());
    inspectors_->setCurrentWidget(front_->inspector());
    inspectorArea_->setVisible(!front_->sections().empty());
    dock_->setTab(Dock::Plot, front_->plot(), front_->plotTools());
    setWindowTitle(front_->name());
    front_->takeFocus();
}

void Workspace::open(const PageRow& row) {
    Bench& bench = context_.bench;
    PanelSlotBase* slot = bench.findPanel(row.slot);
    if (slot == nullptr)
        return;
    if (row.startRow != 0 && !slot->visible())
        (void)bench.frmStartup->cboVRKSelect.userSelect(row.startRow);
    else
        (void)bench.events().deliver([slot] { slot->show(); });
}

void Workspace::showStatus() {
    const LinkWords words = linkWords(context_);
    statusText_->setText(words.board + "  ·  " + words.last);
    for (PageUi* page : pages())
        page->showLink(words);
}

void Workspace::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || front_ == nullptr)
        return;
    QMetaObject::invokeMethod(
        front_,
        [this, page = front_] {
            if (page != nullptr && page == front_ && !page->released() && isActiveWindow())
                (void)page->slot().userActivate();
        },
        Qt::QueuedConnection);
}

} // namespace vrk
