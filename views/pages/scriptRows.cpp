#include "views/pages/scriptRows.h"

#include "platform/qt/Binding.h"
#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "script/frmScriptOps.h"
#include "views/workspace/Page.h"
#include "views/workspace/intoView.h"

#include <QAbstractTableModel>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>
#include <array>
#include <utility>

namespace vrk {

using namespace qt;

namespace {

/// Twenty-five pictures a second are fluid, and cost a run next to nothing.
constexpr int kLagMs = 40;
constexpr int kRowHigh = 24;
constexpr int kSign = 14;

bool bad(const RowResult* result) {
    return result != nullptr && result->verdict >= RowVerdict::Fail;
}

} // namespace

QString verdictWords(const frmScriptOps& panel, int row) {
    const ScriptDebugger& debugger = panel.debugger();
    const RowResult* result = panel.latest(row);
    if (debugger.pausedAt() == row && debugger.reason() != ScriptDebugger::Reason::Fail)
        return "paused here";
    if (panel.rowInProgress() == row && !debugger.paused())
        return "runs";
    if (result == nullptr)
        return !panel.results().passes.empty() && row <= panel.lastOfMainPart() ? "not reached" : "";
    static constexpr std::array<const char*, 5> kWords = {"not reached", "ran", "passed", "failed", "error"};
    QString text = kWords.at(static_cast<std::size_t>(result->verdict));
    if (const int runs = panel.rowRuns(row); runs > 1)
        text += QString(", run %1").arg(runs);
    return text;
}

/// The grid's rows between two columns of ours.
class StepModel final : public QAbstractTableModel {
  public:
    StepModel(frmScriptOps& panel, QObject* parent) : QAbstractTableModel(parent), panel_(&panel) {}

    frmScriptOps* panel() const { return panel_; }
    void forget() { panel_ = nullptr; }

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : rows_; }
    int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : StepTable::kVerdict + 1;
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (panel_ == nullptr || orientation != Qt::Horizontal)
            return {};
        if (role == Qt::ToolTipRole && section == StepTable::kGutter)
            return "A click here sets or clears a breakpoint (F9)";
        if (role == Qt::ToolTipRole)
            return section == StepTable::kVerdict ? "A click here marks a row without running it"
                                                  : "A click on a row runs it";
        if (role != Qt::DisplayRole)
            return {};
        if (section == StepTable::kVerdict)
            return "Verdict";
        return section < panel_->vbalGrid1.columns() ? words(panel_->vbalGrid1.cell(0, section)) : QString();
    }
    QVariant data(const QModelIndex& index, int role) const override {
        const int row = index.row() + 1;
        if (panel_ == nullptr || row >= panel_->vbalGrid1.rows())
            return {};
        if (role == Qt::ToolTipRole)
            return tip(row, index.column());
        if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)
            return {};
        if (index.column() == StepTable::kGutter)
            return role == Qt::AccessibleTextRole ? tip(row, StepTable::kGutter) : QString();
        return index.column() == StepTable::kVerdict ? verdictWords(*panel_, row)
                                                     : words(panel_->vbalGrid1.cell(row, index.column()));
    }
    /// What the check says of the row, the worst first; nullptr if nothing.
    const ScriptFinding* finding(int row) const {
        const ScriptFinding* found = nullptr;
        for (const ScriptFinding& one : panel_->findings())
            if (one.line == row && (found == nullptr || one.severity < found->severity))
                found = &one;
        return found;
    }
    void rebuild() {
        beginResetModel();
        rows_ = panel_ == nullptr ? 0 : std::max(0, panel_->vbalGrid1.rows() - 1);
        endResetModel();
    }
    void changed() {
        if (rows_ > 0)
            Q_EMIT dataChanged(index(0, 0), index(rows_ - 1, StepTable::kVerdict));
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, StepTable::kVerdict);
    }

  private:
    QString tip(int row, int column) const {
        if (column != StepTable::kGutter)
            return column == StepTable::kVerdict ? verdictTip(row)
                                                 : words(panel_->vbalGrid1.cell(row, column));
        QStringList lines;
        if (panel_->debugger().breakpoints().contains(row))
            lines += "Breakpoint";
        for (const ScriptFinding& one : panel_->findings())
            if (one.line == row)
                lines += (one.severity == ScriptFinding::Severity::Error ? "Error: " : "Warning: ") +
                         words(one.text);
        return lines.join('\n');
    }
    QString verdictTip(int row) const {
        const RowResult* result = panel_->latest(row);
        if (result == nullptr)
            return {};
        if (result->verdict == RowVerdict::Fail)
            return "expected " + words(result->expected) + ", read " +
                   (result->read.empty() ? QString("nothing") : words(result->read));
        return words(result->why);
    }

    frmScriptOps* panel_;
    int rows_ = 0;
};

namespace {

class StepDelegate final : public QStyledItemDelegate {
  public:
    explicit StepDelegate(StepModel& model, QObject* parent) : QStyledItemDelegate(parent), model_(model) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const int row = index.row() + 1;
        if (model_.panel() == nullptr || row >= model_.panel()->vbalGrid1.rows())
            return;
        painter->save();
        // Marked rows are outlined: a ground of their own would hide what cells say by theirs.
        painter->fillRect(option.rect, option.palette.color(QPalette::Active, QPalette::Base));
        const int column = index.column();
        if (column == StepTable::kGutter)
            paintGutter(*painter, option, row);
        else if (column == StepTable::kVerdict)
            paintVerdict(*painter, option, row, index.data().toString());
        else
            paintCell(*painter, option, row, column);
        paintLines(*painter, option, row, column);
        painter->restore();
    }

  private:
    static constexpr int kInset = 6;

    void paintGutter(QPainter& painter, const QStyleOptionViewItem& option, int row) const {
        const frmScriptOps& panel = *model_.panel();
        painter.setRenderHint(QPainter::Antialiasing);
        const double side = dp(kSign);
        const auto place = [&](int slot) {
            return QRectF(option.rect.left() + kInset + slot * (side + 4),
                          option.rect.center().y() - side / 2, side, side);
        };
        painter.setPen(Qt::NoPen);
        if (panel.debugger().breakpoints().contains(row)) {
            const QRectF at = place(0).adjusted(1, 1, -1, -1);
            painter.setBrush(colours().differsText);
            painter.drawPolygon(QPolygonF({{at.center().x(), at.top()},
                                           {at.right(), at.center().y()},
                                           {at.center().x(), at.bottom()},
                                           {at.left(), at.center().y()}}));
        }
        const bool here =
            panel.debugger().paused() ? panel.debugger().pausedAt() == row : panel.rowInProgress() == row;
        if (here)
            paintArrow(painter, place(1), option.palette.color(QPalette::Active, QPalette::Highlight));
        if (const ScriptFinding* finding = model_.finding(row)) {
            const bool error = finding->severity == ScriptFinding::Severity::Error;
            const QRectF at = place(2);
            painter.setBrush(error ? colours().failure : colours().power);
            painter.drawPolygon(
                QPolygonF({{at.center().x(), at.top() + 1}, at.bottomRight(), at.bottomLeft()}));
            painter.setPen(option.palette.color(QPalette::Base));
            QFont mark = textFont(kSmall, true);
            painter.setFont(mark);
            painter.drawText(at.adjusted(0, 3, 0, 0), Qt::AlignCenter, "!");
        }
    }

    static void paintArrow(QPainter& painter, const QRectF& at, const QColor& colour) {
        painter.setBrush(colour);
        const double middle = at.center().y();
        const double neck = at.left() + 0.5 * at.width();
        painter.drawPolygon(QPolygonF({{at.left(), middle - 2.5},
                                       {neck, middle - 2.5},
                                       {neck, at.top() + 1},
                                       {at.right(), middle},
                                       {neck, at.bottom() - 1},
                                       {neck, middle + 2.5},
                                       {at.left(), middle + 2.5}}));
    }

    void paintVerdict(QPainter& painter, const QStyleOptionViewItem& option, int row,
                      const QString& text) const {
        const frmScriptOps& panel = *model_.panel();
        const RowResult* result = panel.latest(row);
        const QRect inside = option.rect.adjusted(kInset, 0, -2, 0);
        const int side = dp(kSign);
        const bool paused = text == "paused here";
        if (result != nullptr && result->verdict >= RowVerdict::Pass && !paused)
            drawLamp(painter, QRectF(inside.left(), inside.center().y() - side / 2.0 + 0.5, side, side),
                     bad(result) ? Colour::LightRed : Colour::LightGreen, LampWidget::Role::Status,
                     option.palette);
        const bool strong = bad(result) || paused;
        painter.setFont(textFont(1.0, strong));
        painter.setPen(paused        ? option.palette.color(QPalette::Active, QPalette::Link)
                       : bad(result) ? colours().failure
                       : result == nullptr || result->verdict == RowVerdict::Ran
                           ? option.palette.color(QPalette::PlaceholderText)
                           : option.palette.color(QPalette::Text));
        drawCut(painter, inside.adjusted(side + kInset, 0, 0, 0), text);
    }

    void paintCell(QPainter& painter, const QStyleOptionViewItem& option, int row, int column) const {
        const frmScriptOps& panel = *model_.panel();
        const auto place = static_cast<ScriptColumn>(column);
        const Colour colour = panel.vbalGrid1.cellColour(row, column);
        // A write or expected cell that a bad transfer turned red is never cleared; the latest run counts.
        const RowResult* latest = panel.latest(row);
        const bool mended = latest != nullptr && !bad(latest) && place != ScriptColumn::Actual;
        const bool failed = colour == Colour::PureRed && place != ScriptColumn::Address && !mended;
        if (failed)
            painter.fillRect(option.rect, colours().failureGround);
        else if (place == ScriptColumn::Actual && colour == Colour::PureGreen)
            painter.fillRect(option.rect, colours().goodGround);
        if (place == ScriptColumn::Address && colour != Colour::Black) {
            // It ran; red stays where a fault broke the row off.
            const bool broken = colour == Colour::PureRed && panel.rowInProgress() != row;
            if (colour == Colour::PureGreen || broken)
                painter.fillRect(QRect(option.rect.left(), option.rect.top(), 4, option.rect.height()),
                                 broken ? colours().failure : option.palette.color(QPalette::Dark));
        }
        const bool value = column <= static_cast<int>(ScriptColumn::Actual);
        QFont font = value ? valueFont() : textFont(1.0);
        font.setBold(failed);
        painter.setFont(font);
        const bool waits = !panel.results().passes.empty() && latest == nullptr;
        painter.setPen(failed  ? colours().failure
                       : waits ? option.palette.color(QPalette::PlaceholderText)
                               : option.palette.color(QPalette::Text));
        drawCut(painter, option.rect.adjusted(kInset + 2, 0, -2, 0),
                words(panel.vbalGrid1.cell(row, column)).trimmed());
    }

    static void drawCut(QPainter& painter, const QRect& place, const QString& text) {
        painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(text, Qt::ElideRight, place.width()));
    }

    void paintLines(QPainter& painter, const QStyleOptionViewItem& option, int row, int column) const {
        const QRect& place = option.rect;
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(QRect(place.left(), place.bottom(), place.width(), 1),
                         option.palette.color(QPalette::Mid));
        const bool marked = (option.state & QStyle::State_Selected) != 0;
        const bool paused = model_.panel()->debugger().pausedAt() == row;
        if (!marked && !paused)
            return;
        const QColor line = option.palette.color(QPalette::Active, QPalette::Highlight);
        constexpr int kThick = 2;
        painter.fillRect(QRect(place.left(), place.top(), place.width(), kThick), line);
        painter.fillRect(QRect(place.left(), place.bottom() - 1, place.width(), kThick), line);
        if (marked && column == StepTable::kGutter)
            painter.fillRect(QRect(place.left(), place.top(), kThick, place.height()), line);
        if (marked && column == StepTable::kVerdict)
            painter.fillRect(QRect(place.right() - 1, place.top(), kThick, place.height()), line);
    }

    StepModel& model_;
};

/// Ties the panel's grid to the table.
class StepBinding final : public TypedBinding<Grid, StepTable> {
  public:
    StepBinding(Grid& grid, StepTable& table) : TypedBinding(grid, table) {
        table.onRun = [this](int row, int column) {
            gesture([row, column](Grid& steps) {
                if (row < steps.rows() && column < steps.columns())
                    (void)steps.userSelect(row, column);
            });
        };
        start();
        table.refreshRows();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Rows)
            view().refreshRows();
        else
            view().refreshSoon();
    }
    void released() override { view().forget(); }
};

} // namespace

StepTable::StepTable(PageUi& page, frmScriptOps& panel) : model_(new StepModel(panel, this)) {
    setModel(model_);
    setItemDelegate(new StepDelegate(*model_, this));
    setAccessibleName("Steps");
    setShowGrid(false);
    setWordWrap(false);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(dp(kRowHigh));
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setFont(textFont(kSmall));
    horizontalHeader()->setMinimumSectionSize(dp(24));
    static constexpr std::array<int, kVerdict + 1> kWidths = {58, 42, 54, 56, 64, 64, 92, 142, 90, 122};
    for (int column = 0; column <= kVerdict; ++column)
        setColumnWidth(column, dp(kWidths.at(static_cast<std::size_t>(column))));
    horizontalHeader()->setSectionResizeMode(static_cast<int>(ScriptColumn::Comment), QHeaderView::Stretch);
    setMinimumHeight(dp(7 * kRowHigh));
    lag_.setSingleShot(true);
    connect(&lag_, &QTimer::timeout, this, [this] { refresh(); });
    connect(this, &QTableView::clicked, this, [this](const QModelIndex& index) {
        const bool marks =
            (QGuiApplication::keyboardModifiers() & (Qt::ShiftModifier | Qt::ControlModifier)) != 0;
        if (!marks && index.column() != kGutter && index.column() != kVerdict && onRun)
            onRun(index.row() + 1, index.column());
    });
    page.ui().adopt(new StepBinding(panel.vbalGrid1, *this));
}

int StepTable::marked() const {
    const QModelIndex at = currentIndex();
    return at.isValid() && selectionModel()->isRowSelected(at.row(), {}) ? at.row() + 1 : 0;
}

std::vector<int> StepTable::markedRows() const {
    std::vector<int> rows;
    for (const QModelIndex& index : selectionModel()->selectedRows())
        rows.push_back(index.row() + 1);
    std::sort(rows.begin(), rows.end());
    return rows;
}

void StepTable::mark(int row) {
    setCurrentIndex(model_->index(row - 1, kVerdict));
}

void StepTable::setFailsOnly(bool on) {
    failsOnly_ = on;
    showFails();
}

void StepTable::refreshSoon() {
    if (!lag_.isActive())
        lag_.start(kLagMs);
}

void StepTable::refreshRows() {
    // Many rows may come in one event: the table is made anew behind it.
    rowsChanged_ = true;
    lag_.start(0);
}

void StepTable::forget() {
    model_->forget();
    lag_.stop();
}

void StepTable::refresh() {
    if (model_->panel() == nullptr)
        return;
    if (std::exchange(rowsChanged_, false))
        model_->rebuild();
    else
        model_->changed();
    showFails();
    followRun();
    if (onRefreshed)
        onRefreshed();
}

void StepTable::showFails() {
    if (model_->panel() == nullptr || (!failsOnly_ && !filtered_))
        return;
    for (int row = 0; row < model_->rowCount(); ++row)
        setRowHidden(row, failsOnly_ && !bad(model_->panel()->latest(row + 1)));
    filtered_ = failsOnly_;
}

void StepTable::followRun() {
    const frmScriptOps& panel = *model_->panel();
    const int row = panel.debugger().paused() ? panel.debugger().pausedAt() : panel.rowInProgress();
    if (row != std::exchange(followed_, row) && row > 0)
        scrollTo(model_->index(row - 1, kGutter));
}

void StepTable::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    // The table may be higher than what the page has in sight; under the mouse no row moves away.
    if (hasFocus() && QGuiApplication::mouseButtons() == Qt::NoButton)
        scrollIntoView(*this);
}

void StepTable::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    followed_ = 0; // what was in sight may be out of it
    refreshSoon();
}

bool StepTable::inGutter(const QMouseEvent& event) {
    const QModelIndex at = indexAt(event.position().toPoint());
    if (!at.isValid() || at.column() != kGutter || event.button() != Qt::LeftButton)
        return false;
    if (frmScriptOps* panel = model_->panel())
        panel->debugger().toggleBreakpoint(at.row() + 1);
    return true;
}

void StepTable::mousePressEvent(QMouseEvent* event) {
    if (!inGutter(*event))
        QTableView::mousePressEvent(event);
}

void StepTable::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!inGutter(*event))
        QTableView::mouseDoubleClickEvent(event);
}

void StepTable::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if ((enter || event->key() == Qt::Key_Space) && event->modifiers() == Qt::NoModifier) {
        if (const int row = marked(); row > 0 && onRun)
            onRun(row, static_cast<int>(ScriptColumn::Line));
        return;
    }
    QTableView::keyPressEvent(event);
}

void StepTable::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTableView::selectionChanged(selected, deselected);
    if (onMarked)
        onMarked();
}

} // namespace vrk
