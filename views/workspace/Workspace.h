#pragma once

#include "views/ViewContext.h"
#include "views/workspace/Page.h"
#include "views/workspace/Sheet.h"

#include "platform/controls/Panel.h"

#include <QMainWindow>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QLabel;
class QMenu;
class QSettings;
class QStackedWidget;

namespace vrk {

class Band;
class Dock;
class Help;
class Inspector;
class KeyTable;
class PageWindow;
class Rail;

class WireView;

/// The one main window: rail, band, page in front, inspector, dock and status line. A panel's page is made
/// when the panel is first shown, comes to the front with it, goes with it, and is dropped with it.
class Workspace final : public QMainWindow {
  public:
    /// \param settings where size, docks, shade and pages taken out are remembered; nullptr forgets them.
    explicit Workspace(const ViewContext& context, QSettings* settings = nullptr);
    ~Workspace() override;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    /// nullptr while the panel has no page.
    PageUi* page(const std::string& panel) const;
    std::vector<PageUi*> pages() const;
    /// The page in the middle; nullptr if none is.
    PageUi* front() const { return front_; }
    /// The page that a key or the palette is for: the sheet over the page in front, else that page.
    PageUi* working() const;
    PageUi* inUse() const;
    /// Opens what the rail's entry stands for, as its click does.
    void open(const PageRow& row);
    /// Goes to a control, "frmVRK_User1.txtHexDataWrt(0)".
    void jumpTo(const QString& field);
    void takeOut(PageUi& page);
    void putBack(PageUi& page);
    bool isOut(const PageUi& page) const;

    void showHelp(const QString& heading);
    void showKeys();
    /// Every action of the page in front, with its key and why it is refused now.
    void showPalette();
    void showTrace();
    /// \param tab of Dock::Tab. Opens the dock there, whatever room is left for the page.
    void openDock(int tab);
    /// What closing would do to a running action or a supply that is on; empty if it does no harm.
    QString lossOnClosing() const;

    Dock& dock() { return *dock_; }
    Band& band() { return *band_; }
    Help& help() { return *help_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    struct Command {
        QKeySequence key;
        QString what;
        std::function<void()> act;
    };

    void build();
    QWidget* buildBody();
    void buildStatus();
    void addCommands();
    // Pages
    void hear(PanelSlotBase& slot, SlotEvent event);
    PageUi* make(PanelSlotBase& slot);
    void place(PageUi& page);
    void drop(PageUi& page);
    void bringToFront(PageUi& page);
    void leave(PageUi& page);
    void openSheet(PageUi& page);
    void closeSheet();
    void leftSheet(const PageUi& left);
    void showFront();
    void activateLater();
    void followDevice();
    void showStatus();
    void openDevice(const PageRow& row, PanelSlotBase& slot);
    /// What gives way where room is short: dock, inspector, rail, in this order.
    void arrange();
    void arrangeLater();
    // Keys
    void press(const QKeySequence& key);
    void tieKeys(const PageUi& page, KeyTable& table) const;
    PageUi* pageOf(const QWidget* widget) const;
    // Menus
    void makeMenus();
    void showPageMenus();
    void fillFile(QMenu& menu);
    void closePage(PageUi& page);
    void fillPanels(QMenu& menu);
    void fillBoard(QMenu& menu);
    void fillTrace(QMenu& menu);
    void fillView(QMenu& menu);
    void fillHelp(QMenu& menu);
    QMenu* liveMenu(const QString& title, void (Workspace::*fill)(QMenu&));
    void refill(QMenu& menu, void (Workspace::*fill)(QMenu&));
    void endProgram();
    void inspectorToggle();
    void dockToggle();
    int menuBarHeight() const;
    // Memory
    void restore();
    void remember();

    ViewContext context_;
    QSettings* settings_;
    std::map<const PanelSlotBase*, PageUi*> pages_;
    std::map<const PageUi*, PageWindow*> windows_;
    std::vector<Subscription> subscriptions_;
    QPointer<PageUi> front_;
    QPointer<PageUi> device_;               ///< of the device panel that was in front last
    std::vector<QPointer<PageUi>> history_; ///< pages that were in front, the last one at the end
    std::vector<Command> commands_;
    QStringList toTakeOut_; ///< pages that were out when the program was left
    KeyTable* keys_ = nullptr;
    Band* band_ = nullptr;
    Rail* rail_ = nullptr;
    QStackedWidget* middle_ = nullptr;
    Inspector* inspector_ = nullptr;
    Dock* dock_ = nullptr;
    Help* help_ = nullptr;
    WireView* wire_ = nullptr;
    QPointer<Sheet> sheet_;
    QLabel* boardText_ = nullptr;
    QLabel* socketText_ = nullptr; ///< nullptr where the board's socket is not ours to see
    QLabel* lastText_ = nullptr;
    QLabel* hints_ = nullptr;
    QTimer statusTimer_;
    QTimer arrangeTimer_;
    std::map<QString, bool> inspectorWish_; ///< by page: the user wants it open or as a strip
    std::optional<bool> dockWish_;          ///< the user wants it open or folded, whatever the room
    bool dockAsked_ = false;                ///< opened by hand since the page came to the front
    std::vector<QMenu*> ownMenus_;
    QMenu* fileMenu_ = nullptr;
    bool asking_ = false;
};

} // namespace vrk
