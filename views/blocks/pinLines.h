#pragma once

#include <QString>
#include <QWidget>

#include <vector>

namespace vrk {

class CheckBox;
class Lamp;
class PageUi;
class Reading;

/// One pin of a panel that works a part by its pins.
struct PinLine {
    CheckBox& drive; ///< checked is high
    Lamp& level;
    QString place; ///< "P1.1 shared"; empty for a bit that leads nowhere
    QString name;  ///< "/INC of part #1", for a screen reader
};

/// Rows of pins: the box that drives it, its name, where it leads, its level, and a button that moves it to
/// the other level and back, as two clicks on the box would.
QWidget* pinLines(PageUi& page, const std::vector<PinLine>& lines);

/// Volts in digits for somebody who looks at the probe, right-aligned in a place for the longest value.
/// \param digits height in pixels at 100%.
QWidget* largeVolts(PageUi& page, Reading& volts, const QString& name, int digits);

/// A control's button for the same reader: bold. \param height at 100%.
QWidget* largeButton(QWidget* button, int height);

} // namespace vrk
