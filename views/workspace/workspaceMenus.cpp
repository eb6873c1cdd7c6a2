/// The menus, and the ways to the program's end.

#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/pages.h"
#include "views/workspace/Band.h"
#include "views/workspace/Dock.h"
#include "views/workspace/Inspector.h"
#include "views/workspace/PageWindow.h"
#include "views/workspace/Workspace.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>

namespace vrk {

using namespace qt;

namespace {

/// Works in windows of pages that were taken out as well.
QAction* withKey(QAction* entry, const QKeySequence& key) {
    entry->setShortcut(key);
    entry->setShortcutContext(Qt::ApplicationShortcut);
    return entry;
}

void showPanel(Bench& bench, PanelSlotBase& slot) {
    (void)bench.events().deliver([&slot] { slot.show(); });
}

} // namespace

/// A menu that is made anew each time it opens, since what it offers depends on the bench. It is made once at
/// the start too, so that its shortcuts work.
QMenu* Workspace::liveMenu(const QString& title, void (Workspace::*fill)(QMenu&)) {
    auto* menu = new QMenu(title, this);
    menuBar()->addMenu(menu);
    ownMenus_.push_back(menu);
    (this->*fill)(*menu);
    connect(menu, &QMenu::aboutToShow, this, [this, menu, fill] { refill(*menu, fill); });
    return menu;
}

void Workspace::refill(QMenu& menu, void (Workspace::*fill)(QMenu&)) {
    // Entries that belong to a page are not the menu's to delete.
    for (QAction* action : menu.actions()) {
        QMenu* further = action->menu();
        menu.removeAction(action);
        if (further != nullptr && further->parent() == &menu)
            further->deleteLater();
        else if (action->parent() == &menu)
            action->deleteLater();
    }
    (this->*fill)(menu);
}

void Workspace::makeMenus() {
    fileMenu_ = liveMenu("&File", &Workspace::fillFile);
    liveMenu("&Panels", &Workspace::fillPanels);
    liveMenu("&Board", &Workspace::fillBoard);
    liveMenu("&Trace", &Workspace::fillTrace);
    liveMenu("&View", &Workspace::fillView);
    liveMenu("&Help", &Workspace::fillHelp);
}

void Workspace::showPageMenus() {
    for (QAction* action : menuBar()->actions()) {
        bool own = false;
        for (const QMenu* menu : ownMenus_)
            own = own || menu->menuAction() == action;
        if (!own)
            menuBar()->removeAction(action);
    }
    refill(*fileMenu_, &Workspace::fillFile); // its keys work before it has been opened
    if (front_ == nullptr)
        return;
    for (QMenu* menu : front_->menus())
        if (menu->title() != "&File")
            menuBar()->insertMenu(ownMenus_[1]->menuAction(), menu);
}

void Workspace::fillFile(QMenu& menu) {
    if (front_ != nullptr)
        for (QMenu* own : front_->menus())
            if (own->title() == "&File") {
                menu.addActions(own->actions());
                menu.addSeparator();
            }
    if (front_ != nullptr && front_->row().place == PagePlace::Page) {
        QAction* out = menu.addAction("Take This Page &Out");
        connect(out, &QAction::triggered, front_, [this, page = front_] { takeOut(*page); });
        if (front_->panel().closeHides())
            connect(withKey(menu.addAction("&Close This Page"), QKeySequence::Close), &QAction::triggered,
                    front_, [this, page = front_] { closePage(*page); });
    }
    connect(withKey(menu.addAction("&Quit"), QKeySequence::Quit), &QAction::triggered, this,
            [this] { close(); });
}

void Workspace::closePage(PageUi& page) {
    (void)page.slot().userClose();
    // The calibration has put away what stood under it; home is where every way begins.
    if (front_ == nullptr)
        showPanel(context_.bench, context_.bench.frmStartup);
}

void Workspace::fillPanels(QMenu& menu) {
    if (DevicePanel* device = context_.bench.devicePanel()) {
        QAction* back = menu.addAction("Back to &Start Panel (VCC off)");
        connect(back, &QAction::triggered, this, [device] { (void)device->cmdMMenu.userClick(); });
        menu.addSeparator();
    }
    for (const PageRow& row : pageRows()) {
        if (row.place != PagePlace::Page)
            continue;
        QAction* entry = menu.addAction(row.name);
        entry->setIcon(signIcon(row.sign));
        entry->setCheckable(true);
        entry->setChecked(front_ != nullptr && &front_->row() == &row);
        connect(entry, &QAction::triggered, this, [this, &row] { open(row); });
    }
}

void Workspace::fillBoard(QMenu& menu) {
    Bench& bench = context_.bench;
    auto* console = bench.frmMainF340.loadedPanel();
    // Never disabled: its key works before the menu has been opened once. Before the console lives there is
    // nothing to connect again.
    QAction* reconnect = withKey(menu.addAction("&Reconnect"), QKeySequence(Qt::CTRL | Qt::Key_R));
    connect(reconnect, &QAction::triggered, this, [&bench] {
        if (auto* loaded = bench.frmMainF340.loadedPanel())
            (void)loaded->cmdReconnect.userClick();
    });
    QMenu* instances = menu.addMenu("&Instance");
    instances->setEnabled(console != nullptr);
    if (console != nullptr) {
        for (int row = 0; row < console->cboEVBinstance.rowCount(); ++row) {
            QAction* entry = instances->addAction(
                "Board " + QString::fromStdString(console->cboEVBinstance.row(row).text));
            entry->setCheckable(true);
            entry->setChecked(row == bench.link().instance());
            connect(entry, &QAction::triggered, this,
                    [console, row] { (void)console->cboEVBinstance.userSelect(row); });
        }
    }
    if (context_.socket != nullptr) {
        QMenu* parts = menu.addMenu("&Part in the Socket");
        const QString now = context_.socket->state().part;
        for (const std::string& name : context_.socket->partNames()) {
            QAction* entry = parts->addAction(QString::fromStdString(name));
            entry->setCheckable(true);
            entry->setChecked(entry->text() == now);
            connect(entry, &QAction::triggered, this, [this, name] {
                context_.socket->put(name, -1);
                showStatus();
            });
        }
        parts->addSeparator();
        connect(parts->addAction("&Empty"), &QAction::triggered, this, [this] {
            context_.socket->empty();
            showStatus();
        });
    }
    menu.addSeparator();
    connect(menu.addAction("&Controller Console"), &QAction::triggered, this,
            [&bench] { showPanel(bench, bench.frmMainF340); });
    connect(menu.addAction("&Motherboard Console"), &QAction::triggered, this,
            [&bench] { showPanel(bench, bench.frmMotherboardDAQ2); });
}

void Workspace::showTrace() {
    Bench& bench = context_.bench;
    (void)bench.events().deliver([&bench] { bench.Doco.load(); });
    openDock(Dock::Trace);
}

void Workspace::openDock(int tab) {
    dockWish_ = true;
    dockAsked_ = true;
    dock_->open(static_cast<Dock::Tab>(tab));
    arrange();
}

void Workspace::fillTrace(QMenu& menu) {
    Bench& bench = context_.bench;
    QAction* open = withKey(menu.addAction("&Show Trace"), QKeySequence(Qt::CTRL | Qt::Key_T));
    connect(open, &QAction::triggered, this, [this, &bench] {
        showTrace();
        if (PageUi* trace = page(bench.Doco.name()))
            trace->takeFocus(); // its keys go by the keyboard
    });
    menu.addSeparator();
    const auto flag = [&](const QString& text, bool on, CheckBox& (*box)(class Doco&)) {
        QAction* entry = menu.addAction(text);
        entry->setCheckable(true);
        entry->setChecked(on);
        connect(entry, &QAction::triggered, this, [&bench, box] {
            (void)bench.events().deliver([&bench] { bench.Doco.load(); });
            if (auto* loaded = bench.Doco.loadedPanel())
                (void)box(*loaded).userClick();
        });
    };
    flag("&Trace On", bench.trace().traceOn,
         [](class Doco& trace) -> CheckBox& { return trace.ChkTrace[2]; });
    flag("&Detailed", bench.trace().traceDetail,
         [](class Doco& trace) -> CheckBox& { return trace.chkTRDetail; });
}

void Workspace::inspectorToggle() {
    if (front_ == nullptr || !inspector_->any())
        return;
    inspectorWish_[front_->name()] = inspector_->strip();
    arrange();
}

void Workspace::dockToggle() {
    dockWish_ = dock_->folded() || dock_->isHidden();
    dockAsked_ = true;
    arrange();
}

int Workspace::menuBarHeight() const {
    return menuBar()->height();
}

void Workspace::fillView(QMenu& menu) {
    QAction* dark = menu.addAction("&Dark Colours");
    dark->setCheckable(true);
    dark->setChecked(currentShade() == Shade::Dark);
    connect(dark, &QAction::triggered, this,
            [](bool on) { applyTheme(*qApp, on ? Shade::Dark : Shade::Light); });
    menu.addSeparator();
    const auto toggle = [&](const QString& text, bool on, void (Workspace::*act)()) {
        QAction* entry = menu.addAction(text);
        entry->setCheckable(true);
        entry->setChecked(on);
        connect(entry, &QAction::triggered, this, [this, act] { (this->*act)(); });
    };
    toggle("&Inspector\tCtrl+I", !inspector_->strip(), &Workspace::inspectorToggle);
    toggle("D&ock\tCtrl+D", !dock_->folded(), &Workspace::dockToggle);
    if (!windows_.empty()) {
        menu.addSeparator();
        for (const auto& [shown, window] : windows_) {
            PageUi* page = window->page();
            connect(menu.addAction("Put back " + page->name()), &QAction::triggered, page,
                    [this, page] { putBack(*page); });
        }
    }
}

void Workspace::fillHelp(QMenu& menu) {
    connect(menu.addAction("&Help on This Page\tF1"), &QAction::triggered, this,
            [this] { showHelp(working() == nullptr ? QString() : working()->helpPage()); });
    connect(menu.addAction("&Actions of This Page\tCtrl+K"), &QAction::triggered, this,
            [this] { showPalette(); });
    connect(menu.addAction("&Keys\t?"), &QAction::triggered, this, [this] { showKeys(); });
    menu.addSeparator();
    Bench& bench = context_.bench;
    connect(menu.addAction("&About"), &QAction::triggered, this,
            [&bench] { showPanel(bench, bench.frmAbout2); });
}

QString Workspace::lossOnClosing() const {
    QStringList loss;
    if (const Activity* running = context_.bench.context().activities.current())
        loss += QString::fromStdString(running->name()) + " runs and is broken off.";
    else if (context_.bench.events().depth() > 0)
        loss += "An action runs and is broken off.";
    if (const auto* script = context_.bench.frmScriptOps.loadedPanel();
        script != nullptr && script->unsavedRecording())
        loss += "The recorded script is in no file: it is lost.";
    if (band_->supplyOn())
        loss += "VCC goes off: what the part has not stored is lost.";
    return loss.join('\n');
}

void Workspace::endProgram() {
    Bench& bench = context_.bench;
    if (bench.frmStartup.loaded())
        (void)bench.frmStartup.userClose();
    else
        (void)bench.events().deliver([&bench] { bench.events().endProgram(); });
}

void Workspace::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (asking_ || context_.bench.events().ended())
        return;
    const QString loss = lossOnClosing();
    if (!loss.isEmpty()) {
        asking_ = true;
        QMessageBox box(this);
        box.setObjectName("messageBox");
        box.setWindowTitle(QApplication::applicationDisplayName());
        box.setIcon(QMessageBox::Question);
        box.setText("End the program?");
        box.setInformativeText(loss);
        QAbstractButton* end = box.addButton("End", QMessageBox::AcceptRole);
        end->setObjectName("End");
        QPushButton* stay = box.addButton("Stay", QMessageBox::RejectRole);
        stay->setObjectName("Stay");
        box.setDefaultButton(stay);
        box.setEscapeButton(stay);
        box.exec();
        asking_ = false;
        if (box.clickedButton() != end)
            return;
    }
    endProgram();
}

void Workspace::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        activateLater();
    else if (event->type() == QEvent::PaletteChange && band_ != nullptr)
        band_->refreshColours();
    else if (event->type() == QEvent::FontChange)
        arrangeLater();
}

} // namespace vrk
