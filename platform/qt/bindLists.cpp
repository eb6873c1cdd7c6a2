#include "platform/qt/bind.h"

#include <QAbstractListModel>
#include <QAbstractTableModel>
#include <QHeaderView>
#include <QKeyEvent>
#include <QListView>
#include <QScrollBar>
#include <QTableView>
#include <QTimer>

#include <algorithm>
#include <type_traits>
#include <utility>

namespace vrk::qt {

namespace {

/// Rebuilds once an event turn however many rows were added meanwhile.
class OnceATurn {
  public:
    explicit OnceATurn(QObject* parent, std::function<void()> rebuild) : rebuild_(std::move(rebuild)) {
        timer_ = new QTimer(parent);
        timer_->setSingleShot(true);
        timer_->setInterval(0);
        QObject::connect(timer_, &QTimer::timeout, parent, [this] { rebuild_(); });
    }
    void schedule() {
        if (!timer_->isActive())
            timer_->start();
    }
    /// What is waiting happens now.
    void flush() {
        if (timer_->isActive()) {
            timer_->stop();
            rebuild_();
        }
    }
    bool waiting() const { return timer_->isActive(); }

  private:
    std::function<void()> rebuild_;
    QTimer* timer_;
};

QString rowText(const RowControl& control, int row) {
    return QString::fromStdString(control.rows()[static_cast<std::size_t>(row)].text);
}

class ComboBinding final : public TypedBinding<ComboBox, ComboWidget> {
  public:
    ComboBinding(ComboBox& model, ComboWidget& view)
        : TypedBinding(model, view), rebuild_(this, [this] { showRows(); }) {
        connect(&view, &QComboBox::activated, this, [this](int index) {
            gesture([index](ComboBox& combo) {
                if (index < combo.rowCount())
                    (void)combo.userSelect(index);
            });
        });
        start();
        rebuild_.flush();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Rows)
            rebuild_.schedule();
        else if (aspect == Aspect::Value && !rebuild_.waiting())
            view().setCurrentIndex(model()->listIndex());
    }

  private:
    void showRows() {
        if (model() == nullptr)
            return;
        view().clear();
        for (int row = 0; row < model()->rowCount(); ++row)
            view().addItem(rowText(*model(), row));
        view().setCurrentIndex(model()->listIndex());
    }

    OnceATurn rebuild_;
};

/// Rows straight from the control; nothing is copied.
class RowsModel final : public QAbstractListModel {
  public:
    RowsModel(const RowControl& control, QObject* parent) : QAbstractListModel(parent), control_(&control) {}
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : rows_; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (control_ == nullptr || index.row() >= control_->rowCount())
            return {};
        if (role == Qt::DisplayRole)
            return rowText(*control_, index.row());
        // Numbers stand in the middle of their narrow list, words at the left.
        if (role == Qt::TextAlignmentRole && control_->kind() == Control::Kind::ListBox)
            return static_cast<int>(Qt::AlignCenter);
        return {};
    }
    void rebuild() {
        beginResetModel();
        rows_ = control_ == nullptr ? 0 : control_->rowCount();
        endResetModel();
    }
    void forget() { control_ = nullptr; }

  private:
    const RowControl* control_;
    int rows_ = 0;
};

/// A list that stands open: a ListBox, or a ComboBox that has room for all its rows.
template <class Rows>
class ListBinding final : public TypedBinding<Rows, QListView> {
    using Base = TypedBinding<Rows, QListView>;
    using Base::gesture;
    using Base::model;
    using Base::view;

  public:
    ListBinding(Rows& control, QListView& list)
        : Base(control, list), rows_(new RowsModel(control, &list)), rebuild_(this, [this] { showRows(); }) {
        list.setModel(rows_);
        list.setUniformItemSizes(true);
        list.setEditTriggers(QAbstractItemView::NoEditTriggers);
        list.setSelectionMode(QAbstractItemView::SingleSelection);
        QObject::connect(&list, &QListView::clicked, this,
                         [this](const QModelIndex& index) { pick(index.row()); });
        // Only what the user does to the bar; a row that the program brings into sight moves it too.
        QObject::connect(list.verticalScrollBar(), &QScrollBar::actionTriggered, this,
                         [this] { scrolled(); });
        this->start();
        rebuild_.flush();
    }

  protected:
    void showAspect(Aspect aspect) override {
        Base::showAspect(aspect);
        if (aspect == Aspect::Rows)
            rebuild_.schedule();
        else if (aspect == Aspect::Value && !rebuild_.waiting())
            showIndex();
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) {
            switch (static_cast<QKeyEvent*>(event)->key()) {
            case Qt::Key_Up:
            case Qt::Key_Down:
            case Qt::Key_PageUp:
            case Qt::Key_PageDown:
            case Qt::Key_Home:
            case Qt::Key_End:
                scrolled(); // the view moves its mark; Enter takes the row
                break;
            case Qt::Key_Return:
            case Qt::Key_Enter:
            case Qt::Key_Space:
                pick(view().currentIndex().row());
                return true;
            default:
                break;
            }
        } else if (event->type() == QEvent::FocusOut && model() != nullptr && !rebuild_.waiting() &&
                   !isPassingFocusChange(static_cast<QFocusEvent*>(event)->reason())) {
            showIndex(); // a row that the keys went to and that was not taken is not the list's
        }
        return Base::eventFilter(watched, event);
    }

    void released() override { rows_->forget(); }

  private:
    void pick(int row) {
        gesture([row](Rows& list) {
            if (row >= 0 && row < list.rowCount())
                (void)list.userSelect(row);
        });
    }
    void scrolled() {
        if constexpr (std::is_same_v<Rows, ListBox>)
            if (model() != nullptr)
                (void)model()->userScroll();
    }
    void showRows() {
        if (model() == nullptr)
            return;
        rows_->rebuild();
        showIndex();
    }
    void showIndex() {
        const QModelIndex index = rows_->index(model()->listIndex());
        view().setCurrentIndex(index);
        if (index.isValid())
            view().scrollTo(index, QAbstractItemView::EnsureVisible);
        else
            view().scrollToTop();
    }

    RowsModel* rows_;
    OnceATurn rebuild_;
};

class CellsModel final : public QAbstractTableModel {
  public:
    CellsModel(const Grid& grid, QObject* parent) : QAbstractTableModel(parent), grid_(&grid) { rebuild(); }
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : rows_; }
    int columnCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : columns_; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (!holds(index.row() + 1, index.column()))
            return {};
        if (role == Qt::DisplayRole)
            return QString::fromStdString(grid_->cell(index.row() + 1, index.column()));
        const Colour colour = grid_->cellColour(index.row() + 1, index.column());
        if (role == Qt::DecorationRole && colour != Colour::Black && colour != Colour::White)
            return lampColour(colour);
        return {};
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (role != Qt::DisplayRole)
            return {};
        if (orientation == Qt::Vertical)
            return section + 1;
        return holds(0, section) ? QString::fromStdString(grid_->cell(0, section)) : QString();
    }
    void rebuild() {
        beginResetModel();
        rows_ = grid_ == nullptr ? 0 : std::max(0, grid_->rows() - 1);
        columns_ = grid_ == nullptr ? 0 : grid_->columns();
        endResetModel();
    }
    void cellsChanged() {
        if (rows_ > 0 && columns_ > 0)
            Q_EMIT dataChanged(index(0, 0), index(rows_ - 1, columns_ - 1));
        if (columns_ > 0)
            Q_EMIT headerDataChanged(Qt::Horizontal, 0, columns_ - 1);
    }
    void forget() { grid_ = nullptr; }

  private:
    bool holds(int row, int column) const {
        return grid_ != nullptr && row < grid_->rows() && column < grid_->columns();
    }

    const Grid* grid_;
    int rows_ = 0;
    int columns_ = 0;
};

class GridBinding final : public TypedBinding<Grid, QTableView> {
  public:
    GridBinding(Grid& model, QTableView& view)
        : TypedBinding(model, view),
          cells_(new CellsModel(model, &view)),
          refresh_(this, [this] { showCells(); }) {
        view.setModel(cells_);
        view.setEditTriggers(QAbstractItemView::NoEditTriggers);
        view.setSelectionBehavior(QAbstractItemView::SelectRows);
        view.setSelectionMode(QAbstractItemView::SingleSelection);
        view.setAlternatingRowColors(true);
        view.setTabKeyNavigation(false); // Tab would go from cell to cell and never out again
        connect(&view, &QTableView::clicked, this, [this](const QModelIndex& index) { pick(index); });
        // The row that is marked is the row that is chosen, however the mark got there.
        connect(view.selectionModel(), &QItemSelectionModel::currentRowChanged, this,
                [this](const QModelIndex& index) {
                    if (std::exchange(byKey_, false))
                        pick(index);
                });
        start();
        refresh_.flush();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Rows)
            sized_ = false;
        if (aspect == Aspect::Rows || aspect == Aspect::Value || aspect == Aspect::Colour)
            refresh_.schedule();
        else if (aspect == Aspect::Selection)
            showSelection();
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent*>(event)->key();
            if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) {
                pick(view().currentIndex());
                return true;
            }
            // The view's cursor waits at the first row unmarked: a key that would bring it there marks it.
            const bool first = key == Qt::Key_Up || key == Qt::Key_PageUp || key == Qt::Key_Home;
            if (first && view().currentIndex().row() == 0 && !view().selectionModel()->hasSelection()) {
                pick(view().currentIndex());
                return true;
            }
            byKey_ = true;
        } else if (event->type() == QEvent::KeyRelease || event->type() == QEvent::FocusOut) {
            byKey_ = false;
        }
        return TypedBinding::eventFilter(watched, event);
    }

    void released() override { cells_->forget(); }

  private:
    void pick(const QModelIndex& index) {
        gesture([&index](Grid& grid) {
            if (index.isValid() && index.row() + 1 < grid.rows() && index.column() < grid.columns())
                (void)grid.userSelect(index.row() + 1, index.column());
        });
    }
    void showSelection() {
        byKey_ = false;
        if (model()->row() > 0)
            view().selectRow(model()->row() - 1);
        else
            view().clearSelection();
    }
    void showCells() {
        if (model() == nullptr)
            return;
        if (std::exchange(sized_, true)) {
            cells_->cellsChanged();
            return;
        }
        cells_->rebuild();
        showSelection(); // a new table forgets its mark
    }

    CellsModel* cells_;
    OnceATurn refresh_;
    bool sized_ = false;
    bool byKey_ = false; ///< the mark moves as a key told it
};

class LogBinding final : public TypedBinding<TextLog, LogView> {
  public:
    LogBinding(TextLog& model, LogView& view) : TypedBinding(model, view) {
        view.setLog(&model);
        start();
    }

  protected:
    void showAspect(Aspect aspect) override {
        TypedBinding::showAspect(aspect);
        if (aspect == Aspect::Appended)
            view().logGrew();
        else if (aspect == Aspect::Value)
            view().logReplaced();
    }
    void released() override { view().setLog(nullptr); }
};

} // namespace

Binding* bind(ComboBox& control, ComboWidget& widget) {
    return new ComboBinding(control, widget);
}
Binding* bind(ComboBox& control, QListView& widget) {
    return new ListBinding<ComboBox>(control, widget);
}
Binding* bind(ListBox& control, QListView& widget) {
    return new ListBinding<ListBox>(control, widget);
}
Binding* bind(Grid& control, QTableView& widget) {
    return new GridBinding(control, widget);
}
Binding* bind(TextLog& control, LogView& widget) {
    return new LogBinding(control, widget);
}

} // namespace vrk::qt
