#pragma once

#include "platform/qt/layout.h"

#include <QString>

#include <functional>
#include <vector>

class QLabel;
class QLineEdit;
class QWidget;

namespace vrk {

class Control;
class PageUi;
class Section;
class TextBox;

/// What sections of the inspector are built of.

/// The caption at the left of a row: all of them together are one column. \param field gets the keyboard by
/// the caption's letter, may be nullptr.
QWidget* columnLabel(const QString& text, QWidget* field = nullptr);
/// A caption inside a row, where room is short.
QLabel* smallCaption(const QString& text, QWidget* field);
/// Rows with the distance of one group.
QBoxLayout* rows(const std::vector<qt::Item>& items);
/// Fixed width, so that buttons under one another have common edges.
QWidget* wideButton(QWidget* button, int width);
/// A field for a hexadecimal byte or address.
QWidget* byteField(PageUi& page, TextBox& box);

/// A label with a text of any length wraps and keeps the height of all its lines: the inspector goes by the
/// least heights and not by what a width needs.
void keepWhole(PageUi& page, Control& control, QLabel& label);

/// A button of the view's own takes what its control's widget takes, and looks like it.
void followEnabled(QWidget& follower, QWidget& leader);

/// Keeps a section's summary up to date. \param folded, unfolded words for either state of the section; both
/// are asked again when one of `watched` changes.
void summarise(PageUi& page, Section& section, std::function<QString()> folded,
               std::function<QString()> unfolded, const std::vector<Control*>& watched);
/// Shows `extra` in the section's heading while the section is folded.
void showWhileFolded(Section& section, QWidget* extra);

/// What two texts are worth as numbers, at the time of the call.
struct ComparedValues {
    std::function<int()> written;
    std::function<int()> read;
};

/// Tints the field of a value to write while what was read is another one, whatever its lamp says. A value
/// that was never read, or that no longer holds for another reason than a failed read, differs from nothing.
/// A failed read leaves the comparison with the last good one, whatever digits it shows.
/// \param words said beside the field, may be nullptr.
void tintDifference(PageUi& page, const TextBox& written, QLineEdit& field, const Control& read,
                    ComparedValues values, QWidget* words = nullptr);
/// The same for two hexadecimal texts.
void tintHexDifference(PageUi& page, TextBox& written, QLineEdit& field, Control& read,
                       std::function<std::string()> readText, QWidget* words = nullptr);

/// A read byte that the model keeps in a text box: without a box around it, grey while it holds nothing.
QLineEdit* readByte(PageUi& page, TextBox& box);

} // namespace vrk
