#pragma once

#include <QBoxLayout>
#include <QLabel>
#include <QString>
#include <QWidget>

#include <initializer_list>
#include <utility>
#include <vector>

class QGridLayout;
class QLayout;
class QTabWidget;

/// Layout as one nested expression, so that a view's file reads as the picture of its panel:
/// `column({row({a, b, stretch}), group("Supply", grid({{c, d}, {e, f}}))})`.
namespace vrk::qt {

/// One place in a layout. An empty item leaves the place free.
struct Item {
    enum class Kind { Empty, Widget, Layout, Stretch, Gap };

    Item() = default;
    Item(QWidget* item) : kind(Kind::Widget), widget(item) {}
    Item(QLayout* item) : kind(Kind::Layout), layout(item) {}
    /// A caption that steps back behind the values.
    Item(const char* text);
    explicit Item(Kind which, int amount = 1) : kind(which), size(amount) {}

    Kind kind = Kind::Empty;
    QWidget* widget = nullptr;
    QLayout* layout = nullptr;
    int size = 1;
    Qt::Alignment alignment{};
    int columns = 1; ///< that the item spans in a grid
};

/// Takes the space that nobody else wants.
inline const Item stretch{Item::Kind::Stretch};
/// Wider than the ordinary distance.
inline const Item gap{Item::Kind::Gap};

Item right(Item item);
Item centred(Item item);
/// Spans several columns of a grid.
Item wide(Item item, int columns);

QBoxLayout* row(std::initializer_list<Item> items);
QBoxLayout* row(const std::vector<Item>& items);
QBoxLayout* column(std::initializer_list<Item> items);
QBoxLayout* column(const std::vector<Item>& items);
/// Items closer together: what belongs to one field.
QBoxLayout* tightRow(const std::vector<Item>& items);
QBoxLayout* tightColumn(const std::vector<Item>& items);
QGridLayout* grid(const std::vector<std::vector<Item>>& rows);

/// A caption that moves the keyboard to its field. "&" marks the mnemonic.
QLabel* caption(const QString& text, QWidget* field);
/// A caption left of its field, the unit behind it.
QBoxLayout* field(const QString& text, QWidget* widget, const QString& unit = {});
/// A caption above its field.
QBoxLayout* fieldAbove(const QString& text, QWidget* widget, const QString& unit = {});
QLabel* quietText(const QString& text);
QLabel* heading(const QString& text, double scale = 1.0);

/// A widget around a layout.
QWidget* block(QLayout* content);

/// What belongs to one task: a bold title and its content, without a border.
class GroupWidget final : public QWidget {
  public:
    GroupWidget(const QString& title, QLayout* content);
    QString title() const { return title_->text(); }
    void setTitle(const QString& title);
    /// False where the title stands somewhere else already, in the heading of a section for example.
    void setTitled(bool titled);

  private:
    QLabel* title_;
    bool titled_ = true;
};
GroupWidget* group(const QString& title, QLayout* content);

QTabWidget* tabs(const std::vector<std::pair<QString, QWidget*>>& pages);

/// A thin line between two blocks.
QWidget* separator(Qt::Orientation orientation);

/// Shows or hides a part of a page. One that has no parent yet is left to the page that it will stand in:
/// shown by itself it would flash as a window and take the keyboard along.
void setShown(QWidget& widget, bool shown);

/// Keeps the widget's place when it is hidden, so that its neighbours stay where they are.
template <class Widget>
Widget* keepsPlace(Widget* widget) {
    QSizePolicy policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
    return widget;
}

} // namespace vrk::qt
