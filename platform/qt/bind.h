#pragma once

#include "platform/controls/controls.h"
#include "platform/qt/Binding.h"
#include "platform/qt/KeyLineEdit.h"
#include "platform/qt/LogView.h"
#include "platform/qt/Widgets.h"

class QAbstractItemView;
class QAction;
class QCheckBox;
class QLabel;
class QListView;
class QPushButton;
class QRadioButton;
class QTableView;

namespace vrk::qt {

class GroupWidget;
class PictureWidget;

/// One binder for each kind of control. The binding belongs to the widget; see Binding for the rules.
Binding* bind(CheckBox& control, QCheckBox& widget);
/// The widget's own exclusiveness is switched off: the model says who is selected.
Binding* bind(OptionButton& control, QRadioButton& widget);
Binding* bind(Button& control, QPushButton& widget);
Binding* bind(MenuEntry& control, QAction& action);
Binding* bind(TextBox& control, KeyLineEdit& widget);
Binding* bind(ComboBox& control, ComboWidget& widget);
/// A list that stands open: a click or Enter picks a row.
Binding* bind(ComboBox& control, QListView& widget);
/// The wheel, the scroll bar and the arrow keys scroll; a click or Enter picks a row.
Binding* bind(ListBox& control, QListView& widget);
Binding* bind(Slider& control, ThumbSlider& widget);
Binding* bind(ProgressBar& control, LevelBar& widget);
Binding* bind(Label& control, QLabel& widget);
Binding* bind(Lamp& control, LampWidget& widget);
Binding* bind(Frame& control, GroupWidget& widget);
Binding* bind(Picture& control, PictureWidget& widget);
/// Row 0 of the grid becomes the heading.
Binding* bind(Grid& control, QTableView& widget);
Binding* bind(TextLog& control, LogView& widget);

} // namespace vrk::qt
