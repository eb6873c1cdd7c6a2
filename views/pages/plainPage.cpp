#include "views/pages/plainPage.h"

#include "views/workspace/Page.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

namespace vrk {

using namespace qt;

namespace {

QWidget* widgetOf(PageUi& page, Control& control) {
    PanelUi& ui = page.ui();
    const QString name = QString::fromStdString(control.path());
    QWidget* widget = nullptr;
    if (auto* box = dynamic_cast<CheckBox*>(&control))
        widget = ui(*box);
    else if (auto* option = dynamic_cast<OptionButton*>(&control))
        widget = ui(*option);
    else if (auto* button = dynamic_cast<Button*>(&control))
        widget = ui(*button, name);
    else if (auto* text = dynamic_cast<TextBox*>(&control))
        widget = ui(*text, 8);
    else if (auto* label = dynamic_cast<Label*>(&control))
        widget = ui(*label);
    else if (auto* lamp = dynamic_cast<Lamp*>(&control))
        widget = ui(*lamp, name);
    else if (auto* log = dynamic_cast<TextLog*>(&control))
        widget = ui(*log);
    else if (auto* list = dynamic_cast<ComboBox*>(&control))
        widget = ui(*list);
    else if (auto* frame = dynamic_cast<Frame*>(&control))
        widget = ui.frame(*frame, {}, row({}));
    if (widget != nullptr && widget->accessibleName().isEmpty())
        widget->setAccessibleName(name);
    return widget;
}

} // namespace

QWidget* everyControl(PageUi& page) {
    std::vector<Item> lines;
    std::vector<Item> items;
    const std::string* name = nullptr;
    const auto endLine = [&] {
        if (items.empty())
            return;
        items.push_back(stretch);
        lines.emplace_back(row(items));
        items.clear();
    };
    for (Control* control : page.panel().controls()) {
        if (page.ui().find(*control) != nullptr || control->kind() == Control::Kind::Timer)
            continue;
        if (name == nullptr || control->name() != *name) {
            endLine();
            items.emplace_back(quietText(QString::fromStdString(control->name())));
        }
        name = &control->name();
        if (QWidget* widget = widgetOf(page, *control))
            items.emplace_back(widget);
    }
    endLine();
    return lines.empty() ? nullptr : block(column(lines));
}

} // namespace vrk
