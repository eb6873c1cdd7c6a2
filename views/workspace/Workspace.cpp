#include "views/workspace/Workspace.h"

#include "platform/qt/Binding.h"
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
#include "views/workspace/WireView.h"

#include <QLabel>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QStatusBar>
#include <QVBoxLayout>

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
    // What stands in it gives way step by step as it grows smaller, each time before the next step is asked
    // for: the sum of what stands there now must not say how small it may be.
    setMinimumSize(dp(600), dp(350));
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
    middle_ = new QStackedWidget;
    auto* empty = quietText("The page that was here is in a window of its own.");
    empty->setAlignment(Qt::AlignCenter);
    middle_->addWidget(empty);
    // The widest page must not say how narrow the window may be: what does not fit scrolls.
    middle_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    middle_->setMinimumWidth(dp(240));
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
        if (working() != nullptr)
            working()->takeFocus();
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

/// What the two keys that every family of pages has do on this one.
QString hintsOf(const PageUi* page) {
    static const QRegularExpression kBreak(R"(\W)");
    QString hints;
    for (const PageKey& key : page == nullptr ? std::vector<PageKey>{} : page->keys()) {
        const QString verb = key.what.section(kBreak, 0, 0).toLower();
        if (key.key == QKeySequence(Qt::Key_F5))
            hints += "F5 " + verb + " · ";
        else if (key.key == QKeySequence(Qt::CTRL | Qt::Key_Return))
            hints += "Ctrl+Enter " + verb + " · ";
    }
    return hints + "Esc abort · Ctrl+K actions · ? keys";
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
    hints_ = quietText({});
    hints_->setObjectName("status.hints");
    std::vector<Item> items;
    for (QLabel* label : {boardText_, socketText_, lastText_, replay}) {
        if (label == nullptr)
            continue;
        if (!items.empty())
            items.emplace_back(quietText("·"));
        items.emplace_back(label);
    }
    items.push_back(stretch);
    items.emplace_back(hints_);
    auto* line = block(qt::row(items));
    for (QLabel* label : line->findChildren<QLabel*>())
        label->setFont(textFont(kSmall));
    // What does not fit is cut: the line must not decide how narrow the window may be.
    for (QLabel* label : {boardText_, hints_})
        label->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    line->setMinimumWidth(1);
    line->layout()->setContentsMargins(kUnit, 0, kUnit, 0);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->setFixedHeight(dp(kStatusHeight));
    statusBar()->addWidget(line, 1);
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
    // While the calibration is open the supplies are its, unless a device panel has been opened over it.
    PageUi* calibration = this->page(context_.bench.FrmVCCCal.name());
    if (calibration != nullptr && context_.bench.FrmVCCCal.visible() &&
        (page == nullptr || !page->slot().visible() || front_ == calibration))
        page = calibration;
    if (page != nullptr && page->released())
        page = nullptr;
    if (device_ == page && band_->page() == page && page != nullptr)
        return;
    device_ = page;
    band_->setPage(page);
}

void Workspace::open(const PageRow& row) {
    PanelSlotBase* slot = context_.bench.findPanel(row.slot);
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
    // One panel has the supplies at a time: the one before it is left as its own button leaves it.
    const auto leave = [&bench](const Panel* panel, Button* button) {
        const PanelSlotBase* slot = panel == nullptr ? nullptr : bench.findPanel(panel->name());
        if (slot == nullptr || !slot->visible())
            return true;
        if (const QString why = refusalOf(*button); !why.isEmpty()) {
            panel->tell(false, panel->title() + " cannot be left now", why.toStdString());
            return false;
        }
        (void)button->userClick();
        return !slot->visible(); // else the user has cancelled
    };
    DevicePanel* device = bench.devicePanel();
    FrmVCCCal* calibration = bench.FrmVCCCal.loadedPanel();
    if (!leave(device, device == nullptr ? nullptr : &device->cmdMMenu) ||
        !leave(calibration, calibration == nullptr ? nullptr : &calibration->cmdReturn))
        return;
    // The choice hides the consoles. Were one of them in front, the start panel would come there in the
    // middle of it, and its activation forgets the choice.
    if (front_ != page(bench.frmStartup.name()))
        (void)bench.events().deliver([&bench] { bench.frmStartup.show(); });
    (void)start->cboVRKSelect.userSelect(row.startRow);
}

void Workspace::showStatus() {
    const LinkWords words = linkWords(context_);
    boardText_->setText(words.board);
    lastText_->setText(words.last.isEmpty() ? QString("No transfer yet") : words.last);
    if (socketText_ != nullptr)
        socketText_->setText(socketWords(context_.socket->state()));
    hints_->setText(hintsOf(working()));
    band_->showLink(words);
    band_->refresh();
    for (const auto& [slot, page] : pages_)
        page->showLink(words);
}

} // namespace vrk
