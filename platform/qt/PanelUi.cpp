#include "platform/qt/PanelUi.h"

#include "platform/qt/theme.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <utility>

namespace vrk::qt {

namespace {
constexpr const char* kMnemonic = "mnemonic";
constexpr const char* kWithoutMnemonic = "withoutMnemonic";
} // namespace

QCheckBox* PanelUi::operator()(CheckBox& control, const QString& text) {
    return tie(control, new QCheckBox(text));
}

QRadioButton* PanelUi::operator()(OptionButton& control, const QString& text) {
    return tie(control, new QRadioButton(text));
}

QPushButton* PanelUi::operator()(Button& control, const QString& text) {
    auto* button = new QPushButton(text);
    button->setAutoDefault(false); // Enter belongs to the field that has the keyboard
    return tie(control, button);
}

QAction* PanelUi::operator()(MenuEntry& control, const QString& text) {
    auto* action = new QAction(text);
    bindings_.push_back(bind(control, *action));
    return action;
}

KeyLineEdit* PanelUi::operator()(TextBox& control, int characters) {
    auto* edit = new KeyLineEdit;
    edit->setCharacters(characters);
    edit->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return tie(control, edit);
}

ComboWidget* PanelUi::operator()(ComboBox& control, int characters) {
    auto* combo = new ComboWidget;
    combo->setCharacters(characters);
    return tie(control, combo);
}

QListView* PanelUi::operator()(ListBox& control, int rows, int characters) {
    auto* list = new QListView;
    list->setFont(valueFont());
    const QFontMetrics metrics(list->font());
    list->setFixedHeight(metrics.lineSpacing() * rows + 2 * list->frameWidth() + 2);
    list->setMinimumWidth(metrics.horizontalAdvance('0') * (characters + 2) + 2 * list->frameWidth() +
                          list->verticalScrollBar()->sizeHint().width());
    list->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    return tie(control, list);
}

QListView* PanelUi::openList(ComboBox& control) {
    return tie(control, new QListView);
}

ThumbSlider* PanelUi::operator()(Slider& control) {
    return tie(control, new ThumbSlider(Qt::Horizontal));
}

LevelBar* PanelUi::operator()(ProgressBar& control) {
    return tie(control, new LevelBar);
}

QLabel* PanelUi::operator()(Label& control) {
    return tie(control, new ToneLabel);
}

LampWidget* PanelUi::operator()(Lamp& control, const QString& name) {
    auto* lamp = new LampWidget;
    lamp->setName(name);
    return tie(control, lamp);
}

LampWidget* PanelUi::supplyLamp(Lamp& control, const QString& name) {
    LampWidget* lamp = (*this)(control, name);
    lamp->setRole(LampWidget::Role::Supply);
    return lamp;
}

LogView* PanelUi::operator()(TextLog& control) {
    return tie(control, new LogView);
}

QTableView* PanelUi::operator()(Grid& control) {
    return tie(control, new QTableView);
}

PictureWidget* PanelUi::operator()(Picture& control, QSize size, PictureWidget::Draw draw) {
    return tie(control, new PictureWidget(size, std::move(draw)));
}

ValueLabel* PanelUi::value(Label& control, const QString& widest, double scale) {
    return tie(control, new ValueLabel(widest, scale));
}

AgeLabel* PanelUi::age(Label& control) {
    auto* label = new AgeLabel;
    const Clock& clock = panel_.context().clock();
    label->words = [&control, &clock]() -> std::pair<QString, Tone> {
        if (!control.freshness())
            return {QString(), Tone::Quiet};
        return ageWords(*control.freshness(), clock.now());
    };
    watch(control, [label] { label->refresh(); });
    ages_.push_back(label);
    return label;
}

GroupWidget* PanelUi::frame(Frame& control, const QString& title, QLayout* content) {
    return tie(control, new GroupWidget(title, content));
}

void PanelUi::watch(Control& control, std::function<void()> show) {
    show();
    watches_.push_back(control.observe([show = std::move(show)](Aspect) { show(); }));
}

QLabel* PanelUi::mirror(Label& control) {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    watch(control,
          [label, &control] { label->setText(QString::fromStdString(control.caption()).trimmed()); });
    return label;
}

QLabel* PanelUi::mirror(TextBox& control) {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    watch(control, [label, &control] { label->setText(QString::fromStdString(control.text())); });
    return label;
}

LampWidget* PanelUi::mirror(Lamp& control, LampWidget::Role role) {
    auto* lamp = new LampWidget;
    lamp->setRole(role);
    watch(control, [lamp, &control] { lamp->setColour(control.colour()); });
    return lamp;
}

Binding* PanelUi::find(const Control& control) const {
    const auto found = std::find_if(bindings_.begin(), bindings_.end(),
                                    [&](const Binding* binding) { return binding->control() == &control; });
    return found == bindings_.end() ? nullptr : *found;
}

void PanelUi::placed() {
    for (Binding* binding : bindings_)
        binding->placed();
}

void PanelUi::release() {
    watches_.clear();
    for (const QPointer<AgeLabel>& label : ages_)
        if (label != nullptr)
            label->words = {};
    // The widgets, and the bindings with them, may go before this does.
    for (Binding* binding : std::exchange(bindings_, {}))
        binding->release();
}

void keepWithoutMnemonic(QWidget& widget) {
    widget.setProperty(kWithoutMnemonic, true);
}

QString withMnemonic(const QString& text, const QWidget& widget) {
    const QString letter = widget.property(kMnemonic).toString();
    const qsizetype at =
        letter.isEmpty() || text.contains('&') ? -1 : text.indexOf(letter, 0, Qt::CaseInsensitive);
    return at < 0 ? text : QString(text).insert(at, '&');
}

QString assignMnemonics(QWidget& root, const QString& taken) {
    QString used = taken.toUpper();
    const auto textOf = [](QWidget* widget) {
        if (auto* button = qobject_cast<QAbstractButton*>(widget))
            return button->text();
        auto* label = qobject_cast<QLabel*>(widget);
        return label != nullptr && label->buddy() != nullptr ? label->text() : QString();
    };
    std::vector<QWidget*> wanting;
    for (QWidget* widget : root.findChildren<QWidget*>()) {
        const QString text = textOf(widget);
        if (text.isEmpty() || widget->property(kWithoutMnemonic).toBool())
            continue;
        if (const qsizetype at = text.indexOf('&'); at >= 0 && at + 1 < text.size())
            used += text[at + 1].toUpper();
        else
            wanting.push_back(widget);
    }
    for (QWidget* widget : wanting) {
        const QString text = textOf(widget);
        // The first letter of a word is found more easily than one inside it.
        QString letters;
        for (qsizetype at = 0; at < text.size(); ++at)
            if (text[at].isLetter() && (at == 0 || !text[at - 1].isLetterOrNumber()))
                letters += text[at].toUpper();
        letters += text.toUpper();
        for (const QChar letter : letters) {
            if (letter < 'A' || letter > 'Z' || used.contains(letter))
                continue;
            used += letter;
            widget->setProperty(kMnemonic, QString(letter));
            if (auto* button = qobject_cast<QAbstractButton*>(widget))
                button->setText(withMnemonic(text, *widget));
            else
                static_cast<QLabel*>(widget)->setText(withMnemonic(text, *widget));
            break;
        }
    }
    return used;
}

void setTabOrder(const std::vector<QWidget*>& widgets) {
    for (std::size_t at = 1; at < widgets.size(); ++at)
        QWidget::setTabOrder(widgets[at - 1], widgets[at]);
}

} // namespace vrk::qt
