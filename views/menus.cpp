#include "views/menus.h"

#include "platform/qt/theme.h"
#include "shell/Bench.h"
#include "views/PanelWindow.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>

namespace vrk {

namespace {

/// The device panel whose window this is; nullptr for the others.
DevicePanel* devicePanelOf(PanelSlotBase& slot) {
    return dynamic_cast<DevicePanel*>(slot.panel());
}

void show(Bench& bench, PanelSlotBase& slot) {
    (void)bench.events().deliver([&slot] { slot.show(); });
}

/// Consoles and trace open at any time; a device panel needs what the start panel does before it.
bool opensAnywhere(const Bench& bench, const PanelSlotBase& slot) {
    return &slot == &bench.frmMainF340 || &slot == &bench.frmMotherboardDAQ2 || &slot == &bench.Doco;
}

void addPanelEntries(QMenu& menu, PanelWindow& window) {
    Bench& bench = window.context().bench;
    if (DevicePanel* device = devicePanelOf(window.slot())) {
        QAction* back = menu.addAction("Back to &Start Panel (VCC off)");
        QObject::connect(back, &QAction::triggered, &window,
                         [device] { (void)device->cmdMMenu.userClick(); });
        menu.addSeparator();
    }
    for (PanelSlotBase* slot : bench.panels()) {
        QAction* entry = menu.addAction(QString::fromStdString(slot->title()).trimmed());
        entry->setCheckable(true);
        entry->setChecked(slot->visible());
        entry->setEnabled(slot->visible() || opensAnywhere(bench, *slot));
        QObject::connect(entry, &QAction::triggered, &window, [&bench, slot] { show(bench, *slot); });
    }
    menu.addSeparator();
    QAction* dark = menu.addAction("&Dark Colours");
    dark->setCheckable(true);
    dark->setChecked(qt::currentShade() == qt::Shade::Dark);
    QObject::connect(dark, &QAction::triggered, &window,
                     [](bool on) { qt::applyTheme(*qApp, on ? qt::Shade::Dark : qt::Shade::Light); });
    QAction* close = menu.addAction("&Close Window");
    close->setShortcut(QKeySequence::Close);
    QObject::connect(close, &QAction::triggered, &window, &QWidget::close);
    QAction* quit = menu.addAction("&Quit");
    quit->setShortcut(QKeySequence::Quit);
    QObject::connect(quit, &QAction::triggered, &window, [&bench] { (void)bench.frmStartup.userClose(); });
}

void addBoardEntries(QMenu& menu, PanelWindow& window) {
    Bench& bench = window.context().bench;
    auto* console = bench.frmMainF340.loadedPanel();
    QAction* reconnect = menu.addAction("&Reconnect");
    // Never disabled: its key works before the menu has been opened once. Before the console lives there is
    // nothing to connect again.
    reconnect->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    QObject::connect(reconnect, &QAction::triggered, &window, [&bench] {
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
            QObject::connect(entry, &QAction::triggered, &window,
                             [console, row] { (void)console->cboEVBinstance.userSelect(row); });
        }
    }
    menu.addSeparator();
    QObject::connect(menu.addAction("&Controller Console"), &QAction::triggered, &window,
                     [&bench] { show(bench, bench.frmMainF340); });
    QObject::connect(menu.addAction("&Motherboard Console"), &QAction::triggered, &window,
                     [&bench] { show(bench, bench.frmMotherboardDAQ2); });
}

void addTraceEntries(QMenu& menu, PanelWindow& window) {
    Bench& bench = window.context().bench;
    QAction* open = menu.addAction("&Show Trace");
    open->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_T));
    QObject::connect(open, &QAction::triggered, &window, [&bench] { show(bench, bench.Doco); });
    menu.addSeparator();
    const auto flag = [&](const QString& text, bool on, CheckBox& (*box)(class Doco&)) {
        QAction* entry = menu.addAction(text);
        entry->setCheckable(true);
        entry->setChecked(on);
        QObject::connect(entry, &QAction::triggered, &window, [&bench, box] {
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

void addHelpEntries(QMenu& menu, PanelWindow& window) {
    QObject::connect(menu.addAction("&Help on This Panel\tF1"), &QAction::triggered, &window,
                     [&window] { window.showHelp(); });
    QObject::connect(menu.addAction("&Keys\t?"), &QAction::triggered, &window,
                     [&window] { window.showKeys(); });
}

/// A menu that is made anew each time it opens, since what it offers depends on the bench. It is made once at
/// the start too, so that its shortcuts work.
QMenu* liveMenu(PanelWindow& window, const QString& title, void (*fill)(QMenu&, PanelWindow&)) {
    QMenu* menu = window.menuBar()->addMenu(title);
    fill(*menu, window);
    QObject::connect(menu, &QMenu::aboutToShow, &window, [menu, &window, fill] {
        menu->clear();
        fill(*menu, window);
    });
    return menu;
}

} // namespace

QMenu* addBenchMenus(PanelWindow& window) {
    QMenu* first = liveMenu(window, "&Panels", addPanelEntries);
    liveMenu(window, "&Board", addBoardEntries);
    liveMenu(window, "&Trace", addTraceEntries);
    liveMenu(window, "&Help", addHelpEntries);
    return first;
}

} // namespace vrk
