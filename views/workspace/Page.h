#pragma once

#include "platform/qt/PanelUi.h"
#include "views/ViewContext.h"

#include <QKeySequence>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class QBoxLayout;
class QMenu;
class QScrollArea;

namespace vrk {

class Section;
struct PageRow;
struct WireExcerpt;

/// An action of a page that a key does.
struct PageKey {
    QKeySequence key;
    QString what;
    std::function<void()> act;
};

/// What the band works on while a device panel is in front. What a panel has not is left out.
struct BandSource {
    std::function<QString()> about;   ///< "I2C · 1 channel · 128 taps"
    std::function<QString()> part;    ///< "KV4071"
    std::function<QString()> address; ///< "50", hexadecimal; empty for a panel without a bus
    std::vector<MenuEntry*> parts;    ///< what the part picker offers, in its order
    OptionButton* on = nullptr;       ///< VCC
    OptionButton* off = nullptr;
    ComboBox* level = nullptr;
    Label* volts = nullptr;
    Lamp* vcc = nullptr;   ///< any colour but black is on
    Lamp* minus = nullptr; ///< V-, as vcc
    CheckBox* track = nullptr;
    std::vector<Control*> watched; ///< further controls that the texts depend on
};

/// One panel as a page of the workspace: what a page's file fills. It gives the content, the head's buttons,
/// the inspector's sections, the plot and the keys; where they stand is the workspace's.
///
/// A page may be taken out into a window of its own and put back: it must not keep its window.
class PageUi final : public QObject {
  public:
    PageUi(const ViewContext& context, PanelSlotBase& slot, Panel& panel, const PageRow& row);
    ~PageUi() override;

    qt::PanelUi& ui() { return ui_; }
    const ViewContext& context() const { return context_; }
    Panel& panel() const { return ui_.panel(); }
    PanelSlotBase& slot() const { return slot_; }
    const PageRow& row() const { return row_; }

    // For the page's file.

    /// The middle of the page; it scrolls where it does not fit. Called once, last.
    void setContent(QWidget* content);
    /// Stands behind the name in the head in place of the panel's title.
    void setSubtitle(QWidget* subtitle);
    /// A button or field in the head, right of name and title, from left to right.
    void addHeadItem(QWidget* item);
    /// A section of the inspector, from top to bottom. \param summary what its heading tells of it, folded or
    /// not. \param watched the controls that the summary depends on.
    Section& addSection(const QString& title, QWidget* content, std::function<QString()> summary = {},
                        const std::vector<Control*>& watched = {});
    /// The same with the title of a group; it comes and goes with the group.
    Section& addSection(Frame& frame, const QString& title, QWidget* content,
                        std::function<QString()> summary = {}, const std::vector<Control*>& watched = {});
    /// Stands in the dock's Plot tab while the page is in front.
    void setPlot(QWidget* plot);
    /// A field or button in the row of the Plot tab.
    void addPlotTool(QWidget* tool);
    /// Brings the plot into sight, as a key or button of the page does.
    void openPlot() const {
        if (onOpenPlot)
            onOpenPlot();
    }
    /// Shows reports in the dock's tab of bytes. \param open brings the tab into sight; else they are shown
    /// where it is in sight already.
    void showWire(const WireExcerpt& excerpt, bool open) const {
        if (onShowWire)
            onShowWire(excerpt, open);
    }
    /// Opens another page, as its entry in the rail does. \param name as in the table of pages.
    void openPage(const QString& name) const {
        if (onOpenPage)
            onOpenPage(name);
    }
    /// For pages that need the width: the inspector is a strip until the user opens it.
    void startsWithInspectorFolded() { inspectorFolded_ = true; }
    /// For pages that need the height, or have nothing for the dock: it is away until the user opens it.
    void withoutDock() { dock_ = false; }
    /// What the band shows and works on while this page is the last device panel in front.
    void setBand(BandSource source) { band_ = std::move(source); }
    /// A menu of the panel's own, shown in the menu bar while the page is in front. "&File" is merged into
    /// the workspace's.
    QMenu* menu(const QString& title);
    /// Gets the keyboard when the page is first shown.
    void setFirstFocus(QWidget* widget) { firstFocus_ = widget; }

    /// F5, Ctrl+Enter and Esc. A panel without such an action leaves the key out. Esc goes to the action that
    /// runs, where one can be aborted, before it comes here.
    void onRead(const QString& what, std::function<void()> action);
    void onWrite(const QString& what, std::function<void()> action);
    void onAbort(const QString& what, std::function<void()> action);
    void addKey(const QKeySequence& key, const QString& what, std::function<void()> action);
    /// Called whenever the link's words are brought up to date.
    void onLinkShown(std::function<void(const LinkWords&)> show) { linkShown_ = std::move(show); }
    /// Heading of this panel's page in the manual.
    void setHelpPage(const QString& heading) { helpPage_ = heading; }

    // For the workspace and tests.

    /// Head and content.
    QWidget* page() const { return page_; }
    /// Every section in its order; empty for a page without.
    const std::vector<Section*>& sections() const { return sections_; }
    QWidget* inspector() const { return inspector_; }
    bool wantsDock() const { return dock_; }
    bool opensInspector() const { return !inspectorFolded_; }
    /// nullptr if the page has none.
    QWidget* plot() const { return plot_; }
    QWidget* plotTools() const { return plotTools_; }
    const BandSource* band() const { return band_ ? &*band_ : nullptr; }
    const std::vector<QMenu*>& menus() const { return menus_; }
    const std::vector<PageKey>& keys() const { return keys_; }
    const QString& helpPage() const { return helpPage_; }
    QString name() const;
    QString title() const;
    bool released() const { return released_; }
    /// True if the widget stands on this page, its inspector, its plot or their tools.
    bool holds(const QWidget& widget) const;
    /// The head's buttons alone, for a page without a head.
    QWidget* headItems() const { return headItemsBlock_; }
    /// A widget of this page by its object name, wherever it stands; nullptr if there is none.
    QWidget* find(const QString& name) const;
    QAction* findAction(const QString& name) const;
    std::function<void()> onOpenPlot;
    std::function<void(const QString&)> onOpenPage;
    std::function<void(const WireExcerpt&, bool open)> onShowWire;
    /// The content's least size has changed: what gives way to it may be another.
    std::function<void()> onLeastSize;
    /// Widgets of the head that belong to the workspace: the button that takes the page out.
    void addFrameItem(QWidget* item);
    /// The keyboard goes to where it was when the page was left, at first to the field that the page names.
    void takeFocus();
    void keepFocus();
    void disable(bool disabled);
    /// The tops of all that the page consists of, wherever in the window they stand.
    std::vector<QWidget*> roots() const;
    /// Content's least size, for what gives way where room is short.
    QSize leastSize() const;
    void showLink(const LinkWords& words);
    /// Size at which nothing of the content is out of sight.
    QSize wantedSize() const;
    /// The panel has gone: the page stays, dead, until no action is on the stack.
    void release();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void makeHead();
    void focusSomeEntry() const;
    void keepKeyboardInSight(const std::optional<QRect>& seen) const;

    ViewContext context_;
    PanelSlotBase& slot_;
    const PageRow& row_;
    qt::PanelUi ui_;
    QPointer<QWidget> page_;
    QPointer<QWidget> inspector_;
    QPointer<QWidget> plot_;
    QPointer<QWidget> plotTools_;
    QPointer<QWidget> firstFocus_;
    QPointer<QWidget> lastFocus_;
    QPointer<QWidget> content_;
    QSize least_;
    QScrollArea* area_ = nullptr;
    QWidget* head_ = nullptr;
    QPointer<QWidget> headItemsBlock_;
    QBoxLayout* headItems_ = nullptr;
    QWidget* subtitle_ = nullptr;
    QBoxLayout* frameItems_ = nullptr;
    std::vector<Section*> sections_;
    std::vector<QMenu*> menus_;
    std::vector<PageKey> keys_;
    std::optional<BandSource> band_;
    std::function<void(const LinkWords&)> linkShown_;
    QString helpPage_;
    bool inspectorFolded_ = false;
    bool dock_ = true;
    bool released_ = false;
};

} // namespace vrk
