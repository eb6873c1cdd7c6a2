#include "views/pages/consoleWords.h"

#include "platform/qt/theme.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace vrk {

using namespace qt;

namespace {
/// Darker than a light window, lighter than a dark one.
constexpr QColor kReadTint(128, 128, 128, 36);
} // namespace

QCheckBox* bareBox(PanelUi& ui, CheckBox& control, const QString& name) {
    QCheckBox* box = plainBox(ui, control);
    ui.watch(control, [box, name] {
        box->setText({});
        box->setAccessibleName(name);
    });
    return box;
}

QCheckBox* plainBox(PanelUi& ui, CheckBox& control, const QString& text) {
    QCheckBox* box = ui(control, text);
    keepWithoutMnemonic(*box);
    return box;
}

QPushButton* plainButton(PanelUi& ui, Button& control) {
    QPushButton* button = ui(control);
    keepWithoutMnemonic(*button);
    return button;
}

KeyLineEdit* entry(PanelUi& ui, TextBox& control, int characters, const QString& name) {
    KeyLineEdit* edit = ui(control, characters);
    edit->setAccessibleName(name);
    return edit;
}

KeyLineEdit* readBack(PanelUi& ui, TextBox& control, int characters, const QString& name) {
    KeyLineEdit* edit = entry(ui, control, characters, name);
    edit->setFrame(false);
    QPalette tint; // of the base alone: every other colour goes on following the theme
    tint.setColor(QPalette::Base, kReadTint);
    edit->setPalette(tint);
    return edit;
}

std::vector<Item> entries(PanelUi& ui, ControlArray<TextBox>& array, int characters, const QString& name) {
    std::vector<Item> items;
    for (auto& control : array)
        items.emplace_back(entry(ui, *control, characters, QString("%1 %2").arg(name).arg(control->index())));
    return items;
}

std::vector<Item> readBacks(PanelUi& ui, ControlArray<TextBox>& array, int characters, const QString& name) {
    std::vector<Item> items;
    for (auto& control : array)
        items.emplace_back(
            readBack(ui, *control, characters, QString("%1 %2").arg(name).arg(control->index())));
    return items;
}

QBoxLayout* byteRow(PanelUi& ui, ControlArray<Label>& labels, const QString& name,
                    std::initializer_list<const char*> bytes) {
    std::vector<Item> items;
    auto byte = bytes.begin();
    for (auto& label : labels) {
        auto* value = ui.value(*label, "00");
        value->setToolTip(QString("%1: %2").arg(name, byte != bytes.end() ? *byte++ : ""));
        value->setAccessibleName(value->toolTip());
        items.emplace_back(value);
    }
    items.push_back(stretch);
    return tightRow(items);
}

QLabel* captionOf(const Control& control, QWidget* widget) {
    return caption(plainCaption(control), widget);
}

QLabel* wrapped(QLabel* label, int characters) {
    label->setWordWrap(true);
    label->setMinimumWidth(label->fontMetrics().averageCharWidth() * characters);
    label->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    return label;
}

QLabel* columnTitle(const QString& text) {
    QLabel* label = quietText(text);
    label->setFont(textFont(0.85));
    return label;
}

QWidget* withLetters(QWidget* page, const QString& taken) {
    assignMnemonics(*page, "PBTHF" + taken);
    return page;
}

QGridLayout* dense(QGridLayout* grid, int vertical) {
    grid->setVerticalSpacing(vertical);
    return grid;
}

void press(PanelUi& ui, const Button& button) {
    if (Binding* tied = ui.find(button))
        if (auto* widget = qobject_cast<QPushButton*>(&tied->target()))
            widget->click();
}

} // namespace vrk
