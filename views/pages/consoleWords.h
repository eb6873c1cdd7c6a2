#pragma once

#include "platform/qt/PanelUi.h"

#include <initializer_list>

class QCheckBox;
class QGridLayout;
class QPushButton;

namespace vrk {

/// Layout words of the two consoles: bytes in columns, boxes that a table's row names, lamps beside a button.

/// A box in a table whose row and column say what it stands for. \param name for a screen reader.
QCheckBox* bareBox(qt::PanelUi& ui, CheckBox& control, const QString& name);
/// A box with its caption, one of many alike: it takes no letter of the keyboard.
QCheckBox* plainBox(qt::PanelUi& ui, CheckBox& control, const QString& text = {});
/// A button that has twins.
QPushButton* plainButton(qt::PanelUi& ui, Button& control);
/// A field to type in. \param name for a screen reader.
qt::KeyLineEdit* entry(qt::PanelUi& ui, TextBox& control, int characters, const QString& name);
/// A field that the program fills: tinted and without a frame, so that it does not look like one to type in.
qt::KeyLineEdit* readBack(qt::PanelUi& ui, TextBox& control, int characters, const QString& name);
/// The same for the fields of an array, side by side.
std::vector<qt::Item> entries(qt::PanelUi& ui, ControlArray<TextBox>& array, int characters,
                              const QString& name);
std::vector<qt::Item> readBacks(qt::PanelUi& ui, ControlArray<TextBox>& array, int characters,
                                const QString& name);
/// Bytes of a reply in a row. \param name of the reply, and \param bytes of each byte: told by its tip and to
/// a screen reader.
QBoxLayout* byteRow(qt::PanelUi& ui, ControlArray<Label>& labels, const QString& name,
                    std::initializer_list<const char*> bytes);
/// The control's own caption before its widget.
QLabel* captionOf(const Control& control, QWidget* widget);
/// A text that breaks into lines. \param characters in a line.
QLabel* wrapped(QLabel* label, int characters);
/// A caption of a column, smaller than the values under it.
QLabel* columnTitle(const QString& text);
/// Gives the page's controls their letters. Pages are never in sight together, so each has the alphabet to
/// itself, but for `taken` and the menus' letters.
QWidget* withLetters(QWidget* page, const QString& taken = {});
/// Rows closer together than fields are.
QGridLayout* dense(QGridLayout* grid, int vertical = 2);

/// Presses the widget of the button, as a key of the window does.
void press(qt::PanelUi& ui, const Button& button);

} // namespace vrk
