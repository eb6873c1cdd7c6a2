#pragma once

#include "script/ScriptResults.h"

#include <QString>
#include <QTableView>
#include <QTimer>

#include <functional>
#include <vector>

namespace vrk {

class PageUi;
class StepModel;
class frmScriptOps;

/// The steps of a script. A click on a row runs it, so that what only looks at rows has places of its own:
/// the gutter sets breakpoints and selects nothing; the Verdict column, the arrow keys, Shift and Ctrl mark
/// rows. The row in progress is always in sight.
class StepTable final : public QTableView {
  public:
    /// Columns of ours around those of the grid.
    static constexpr int kGutter = 0;
    static constexpr int kVerdict = ScriptRow::kColumns + 1;

    StepTable(PageUi& page, frmScriptOps& panel);

    /// The row marked; 0: none.
    int marked() const;
    /// All of them, in their order.
    std::vector<int> markedRows() const;
    void mark(int row);
    void setFailsOnly(bool on);
    /// Brings everything up to date a moment later: a run changes more than anybody can read.
    void refreshSoon();
    /// The number of rows has changed.
    void refreshRows();
    /// The panel goes.
    void forget();

    std::function<void()> onMarked;
    /// The table has been brought up to date: whoever shows the same run may do so now.
    std::function<void()> onRefreshed;
    /// The user has chosen a row to be run, and the column.
    std::function<void(int row, int column)> onRun;

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

  private:
    bool inGutter(const QMouseEvent& event);
    void refresh();
    void showFails();
    void followRun();

    StepModel* model_;
    QTimer lag_;
    bool failsOnly_ = false;
    bool filtered_ = false;
    bool rowsChanged_ = false;
    int followed_ = 0;
};

/// "passed", "failed", "paused here"; empty for a row of which nothing is to be said.
QString verdictWords(const frmScriptOps& panel, int row);

} // namespace vrk
