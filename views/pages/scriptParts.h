#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace vrk {

class PageUi;
class frmScriptOps;

/// A row's number as the table's first column has it: three digits.
inline QString rowNumber(int row) {
    return QString::number(row).rightJustified(3, '0');
}

/// Parts of the script page. What shows a run is brought up to date by the function given back.
struct LivePart {
    QWidget* widget = nullptr;
    std::function<void()> refresh;
};

/// The counts in large digits, and the passes of the run.
LivePart makeScriptCounts(PageUi& page, frmScriptOps& panel);

/// A question that stands on the page until it is answered: nothing else has to wait for it.
QWidget* makeScriptQuestions(PageUi& page, frmScriptOps& panel);

/// Sections of the inspector. \param mark marks a row of the table
std::function<void()> addScriptSections(PageUi& page, frmScriptOps& panel,
                                        const std::function<void(int row)>& mark);

} // namespace vrk
