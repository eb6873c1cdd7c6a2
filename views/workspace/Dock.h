#pragma once

#include <QPointer>
#include <QWidget>

#include <functional>
#include <vector>

class QHBoxLayout;
class QStackedWidget;
class QTabBar;
class QToolButton;

namespace vrk {

/// The lower part of the workspace: one tab in front, its tools in the row of the tabs. Folds to that row.
class Dock final : public QWidget {
  public:
    enum Tab : int { Plot, Trace, Wire };

    Dock();

    /// What stands in a tab; either may be nullptr. What stood there before is taken out, not deleted.
    void setTab(Tab tab, QWidget* content, QWidget* tools);
    /// Shows the tab and unfolds.
    void open(Tab tab);
    Tab current() const;
    bool folded() const { return folded_; }
    void setFolded(bool folded);
    int tabRowHeight() const;

    /// Brings the tab to the front and leaves the dock as it is.
    void choose(Tab tab);

    /// The user has chosen a tab, folded or unfolded.
    std::function<void()> onUser;

  private:
    struct Place {
        QPointer<QWidget> content;
        QPointer<QWidget> tools;
        QWidget* empty = nullptr; ///< shown where there is no content
    };
    void showCurrent();

    QTabBar* tabs_;
    QStackedWidget* contents_;
    QStackedWidget* tools_;
    QToolButton* fold_;
    QWidget* row_;
    std::vector<Place> places_;
    bool folded_ = false;
};

} // namespace vrk
