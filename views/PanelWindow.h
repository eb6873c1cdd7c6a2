#pragma once

#include "platform/qt/PanelUi.h"
#include "views/ViewContext.h"

#include <QMainWindow>
#include <QTimer>

#include <functional>
#include <utility>
#include <vector>

class QLabel;
class QMenu;

namespace vrk {

/// The window of one panel: menus, content, status line and the keys that every window has. What the panel
/// shows comes from its view.
class PanelWindow final : public QMainWindow {
  public:
    PanelWindow(const ViewContext& context, PanelSlotBase& slot, Panel& panel);

    const ViewContext& context() const { return context_; }
    PanelSlotBase& slot() const { return slot_; }
    qt::PanelUi& ui() { return ui_; }

    /// Shows the view's content. Called once, last.
    void setContent(QWidget* content);
    /// The size at which nothing of the content is out of sight.
    QSize wantedSize() const;
    /// A menu of the panel's own, before the others.
    QMenu* addPanelMenu(const QString& title);
    /// Gets the keyboard when the window is first shown.
    void setFirstFocus(QWidget* widget) { firstFocus_ = widget; }

    /// F5, Ctrl+Enter and Esc. A panel without such an action leaves the key out.
    void onRead(const QString& what, std::function<void()> action);
    void onWrite(const QString& what, std::function<void()> action);
    void onAbort(const QString& what, std::function<void()> action);
    void addKey(const QKeySequence& key, const QString& what, std::function<void()> action);
    /// Shows the link a second time, beside the status line; called whenever that is brought up to date.
    void onLinkShown(std::function<void(const LinkWords&)> show) { linkShown_ = std::move(show); }
    /// Heading of this panel's page in the manual.
    void setHelpPage(const QString& heading) { helpPage_ = heading; }
    const QString& helpPage() const { return helpPage_; }

    using KeyList = std::vector<std::pair<QString, QString>>;
    const KeyList& keyList() const { return keyList_; }
    void showKeys();
    void showHelp();

    /// The panel has gone: the window stays, dead, until no action is on the stack.
    void release();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    void showStatus();

    ViewContext context_;
    PanelSlotBase& slot_;
    qt::PanelUi ui_;
    QWidget* content_ = nullptr;
    QWidget* firstFocus_ = nullptr;
    QString helpPage_;
    KeyList keyList_;
    bool released_ = false;
    QMenu* firstMenu_ = nullptr;
    qt::LampWidget* linkLamp_ = nullptr;
    QLabel* boardText_ = nullptr;
    QLabel* lastText_ = nullptr;
    std::function<void(const LinkWords&)> linkShown_;
    QTimer statusTimer_;
};

} // namespace vrk
