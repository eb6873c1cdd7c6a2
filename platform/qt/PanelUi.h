#pragma once

#include "platform/controls/Panel.h"
#include "platform/qt/PictureWidget.h"
#include "platform/qt/bind.h"
#include "platform/qt/layout.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

namespace vrk::qt {

/// Makes the widgets of one panel and keeps them tied to its controls. A view asks for a control's widget at
/// the place where it stands: `row({ui(panel.cmdRead), ui(panel.cmdWrite)})`.
class PanelUi {
  public:
    explicit PanelUi(Panel& panel) : panel_(panel) {}
    PanelUi(const PanelUi&) = delete;
    PanelUi& operator=(const PanelUi&) = delete;

    Panel& panel() const { return panel_; }

    QCheckBox* operator()(CheckBox& control, const QString& text = {});
    QRadioButton* operator()(OptionButton& control, const QString& text = {});
    /// \param text shown where the control has no caption of its own.
    QPushButton* operator()(Button& control, const QString& text = {});
    QAction* operator()(MenuEntry& control, const QString& text = {});
    /// \param characters room for so many.
    KeyLineEdit* operator()(TextBox& control, int characters = 4);
    ComboWidget* operator()(ComboBox& control, int characters = 10);
    /// \param rows in sight without scrolling.
    QListView* operator()(ListBox& control, int rows, int characters);
    /// The same choice as a list that stands open.
    QListView* openList(ComboBox& control);
    ThumbSlider* operator()(Slider& control);
    LevelBar* operator()(ProgressBar& control);
    QLabel* operator()(Label& control);
    /// \param name what the lamp tells about.
    LampWidget* operator()(Lamp& control, const QString& name);
    LogView* operator()(TextLog& control);
    QTableView* operator()(Grid& control);
    PictureWidget* operator()(Picture& control, QSize size, PictureWidget::Draw draw);

    /// Digits of one width with room for the widest value. \param scale relative to the ordinary size.
    ValueLabel* value(Label& control, const QString& widest, double scale = 1.0);
    /// How old the reading is that the label shows; empty for a label that shows none.
    AgeLabel* age(Label& control);
    /// A lamp whose light red means "on".
    LampWidget* supplyLamp(Lamp& control, const QString& name);
    /// The group that a frame stands for. \param title shown where the frame has no caption.
    GroupWidget* frame(Frame& control, const QString& title, QLayout* content);

    /// Calls `show` now and whenever the control changes. For pictures of a control other than its own
    /// widget.
    void watch(Control& control, std::function<void()> show);
    /// Ends the subscription with the panel.
    void keep(Subscription subscription) { watches_.push_back(std::move(subscription)); }
    /// A binding that a view has made by itself, for a widget of its own kind.
    void adopt(Binding* binding) { bindings_.push_back(binding); }
    /// Ties a menu's own entry in its menu bar.
    void tieMenu(MenuEntry& control, QAction& action) { bindings_.push_back(bind(control, action)); }
    /// A second, silent picture of a text: a band's, a heading's.
    QLabel* mirror(Label& control);
    QLabel* mirror(TextBox& control);
    LampWidget* mirror(Lamp& control, LampWidget::Role role);

    const std::vector<Binding*>& bindings() const { return bindings_; }
    /// nullptr if the view does not show the control.
    Binding* find(const Control& control) const;

    /// Every widget stands in its window now.
    void placed();
    /// The panel is going: every widget stays as it is and does nothing any more.
    void release();

  private:
    template <class Model, class Widget>
    Widget* tie(Model& model, Widget* widget) {
        bindings_.push_back(bind(model, *widget));
        return widget;
    }

    Panel& panel_;
    std::vector<Binding*> bindings_;
    std::vector<Subscription> watches_;
    std::vector<QPointer<AgeLabel>> ages_;
};

/// Gives every button, box and captioned field under `root` that has no mnemonic yet a letter of its own, in
/// reading order, as long as there are letters. \param taken letters of the menus. \return all that are taken
/// now
QString assignMnemonics(QWidget& root, const QString& taken);
/// Leaves the letters to others: the widget has a shortcut or many twins.
void keepWithoutMnemonic(QWidget& widget);
/// Puts "&" before the widget's letter, if it has one and the text holds it.
QString withMnemonic(const QString& text, const QWidget& widget);

/// Makes the tab key walk through the widgets in this order.
void setTabOrder(const std::vector<QWidget*>& widgets);

} // namespace vrk::qt
