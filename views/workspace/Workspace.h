#pragma once

#include "views/ViewContext.h"
#include "views/workspace/Page.h"

#include "platform/controls/Panel.h"

#include <QMainWindow>
#include <QPointer>
#include <QTimer>

#include <map>
#include <string>
#include <vector>

class QLabel;
class QStackedWidget;

namespace vrk {

class Dock;
class Rail;

/// The one main window: rail, band, page in front, inspector, dock and status line. A panel's page is made
/// when the panel is first shown, comes to the front with it, goes with it, and is dropped with it.
class Workspace final : public QMainWindow {
  public:
    explicit Workspace(const ViewContext& context);
    ~Workspace() override;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    /// nullptr while the panel has no page.
    PageUi* page(const std::string& panel) const;
    std::vector<PageUi*> pages() const;
    /// The page in the middle; nullptr if none is.
    PageUi* front() const { return front_; }
    /// Opens what the rail's entry stands for, as its click does.
    void open(const PageRow& row);
    Dock& dock() { return *dock_; }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void build();
    void hear(PanelSlotBase& slot, SlotEvent event);
    PageUi* make(PanelSlotBase& slot);
    void bringToFront(PageUi& page);
    void leave(PageUi& page);
    void showFront();
    void showStatus();

    ViewContext context_;
    std::map<const PanelSlotBase*, PageUi*> pages_;
    std::vector<Subscription> subscriptions_;
    QPointer<PageUi> front_;
    std::vector<QPointer<PageUi>> history_; ///< pages that were in front, the last one at the end
    Rail* rail_ = nullptr;
    QStackedWidget* middle_ = nullptr;
    QStackedWidget* inspectors_ = nullptr;
    QWidget* inspectorArea_ = nullptr;
    Dock* dock_ = nullptr;
    QLabel* statusText_ = nullptr;
    QTimer statusTimer_;
};

} // namespace vrk
