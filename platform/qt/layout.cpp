#include "platform/qt/layout.h"

#include "platform/qt/theme.h"

#include <QFrame>
#include <QGridLayout>
#include <QTabWidget>

namespace vrk::qt {

namespace {

constexpr int kTight = kUnit / 2;

void put(QBoxLayout& layout, const Item& item) {
    switch (item.kind) {
    case Item::Kind::Empty:
        break;
    case Item::Kind::Widget:
        layout.addWidget(item.widget, 0, item.alignment);
        break;
    case Item::Kind::Layout:
        layout.addLayout(item.layout);
        if (item.alignment)
            layout.setAlignment(item.layout, item.alignment);
        break;
    case Item::Kind::Stretch:
        layout.addStretch(item.size);
        break;
    case Item::Kind::Gap:
        layout.addSpacing(kUnit * item.size);
        break;
    }
}

QBoxLayout* box(QBoxLayout::Direction direction, int spacing, const auto& items) {
    auto* layout = new QBoxLayout(direction);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    for (const Item& item : items)
        put(*layout, item);
    return layout;
}

std::vector<Item> withUnit(QWidget* widget, const QString& unit) {
    std::vector<Item> items{widget};
    if (!unit.isEmpty())
        items.emplace_back(quietText(unit));
    return items;
}

} // namespace

Item::Item(const char* text) : kind(Kind::Widget), widget(quietText(QString::fromUtf8(text))) {}

Item right(Item item) {
    item.alignment = Qt::AlignRight | Qt::AlignVCenter;
    return item;
}

Item centred(Item item) {
    item.alignment = Qt::AlignCenter;
    return item;
}

Item wide(Item item, int columns) {
    item.columns = columns;
    return item;
}

QBoxLayout* row(std::initializer_list<Item> items) {
    return box(QBoxLayout::LeftToRight, kUnit, items);
}
QBoxLayout* row(const std::vector<Item>& items) {
    return box(QBoxLayout::LeftToRight, kUnit, items);
}
QBoxLayout* column(std::initializer_list<Item> items) {
    return box(QBoxLayout::TopToBottom, kUnit, items);
}
QBoxLayout* column(const std::vector<Item>& items) {
    return box(QBoxLayout::TopToBottom, kUnit, items);
}
QBoxLayout* tightRow(const std::vector<Item>& items) {
    return box(QBoxLayout::LeftToRight, kTight, items);
}
QBoxLayout* tightColumn(const std::vector<Item>& items) {
    return box(QBoxLayout::TopToBottom, kTight, items);
}

QGridLayout* grid(const std::vector<std::vector<Item>>& rows) {
    auto* layout = new QGridLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kUnit);
    int line = 0;
    for (const auto& items : rows) {
        int at = 0;
        for (const Item& item : items) {
            if (item.kind == Item::Kind::Widget)
                layout->addWidget(item.widget, line, at, 1, item.columns, item.alignment);
            else if (item.kind == Item::Kind::Layout)
                layout->addLayout(item.layout, line, at, 1, item.columns, item.alignment);
            else if (item.kind == Item::Kind::Stretch)
                layout->setColumnStretch(at, item.size);
            at += item.columns;
        }
        ++line;
    }
    return layout;
}

QLabel* quietText(const QString& text) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    makeQuiet(*label);
    return label;
}

QLabel* heading(const QString& text, double scale) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setFont(textFont(scale, true));
    return label;
}

QLabel* caption(const QString& text, QWidget* field) {
    QLabel* label = quietText(text);
    label->setBuddy(field);
    if (field->accessibleName().isEmpty()) {
        QString name = text;
        field->setAccessibleName(name.remove('&').remove(':').trimmed());
    }
    return label;
}

QBoxLayout* field(const QString& text, QWidget* widget, const QString& unit) {
    std::vector<Item> items = withUnit(widget, unit);
    items.insert(items.begin(), Item(caption(text, widget)));
    return tightRow(items);
}

QBoxLayout* fieldAbove(const QString& text, QWidget* widget, const QString& unit) {
    return tightColumn({caption(text, widget), tightRow(withUnit(widget, unit))});
}

QWidget* block(QLayout* content) {
    auto* widget = new QWidget;
    content->setContentsMargins(0, 0, 0, 0);
    widget->setLayout(content);
    return widget;
}

GroupWidget::GroupWidget(const QString& title, QLayout* content) : title_(heading(title)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kUnit);
    layout->addWidget(title_);
    layout->addLayout(content);
    title_->setVisible(!title.isEmpty());
    setAccessibleName(title);
}

void GroupWidget::setTitle(const QString& title) {
    title_->setText(title);
    title_->setVisible(titled_ && !title.isEmpty());
    setAccessibleName(title);
}

void GroupWidget::setTitled(bool titled) {
    titled_ = titled;
    setTitle(title());
}

GroupWidget* group(const QString& title, QLayout* content) {
    return new GroupWidget(title, content);
}

QTabWidget* tabs(const std::vector<std::pair<QString, QWidget*>>& pages) {
    auto* widget = new QTabWidget;
    widget->setDocumentMode(true);
    for (const auto& [title, page] : pages)
        widget->addTab(page, title);
    return widget;
}

void setShown(QWidget& widget, bool shown) {
    if (!shown || widget.parentWidget() != nullptr)
        widget.setVisible(shown);
    else if (widget.testAttribute(Qt::WA_WState_ExplicitShowHide))
        widget.setAttribute(Qt::WA_WState_ExplicitShowHide, false); // hidden before: its page shows it
}

QWidget* separator(Qt::Orientation orientation) {
    auto* line = new QFrame;
    line->setFrameShape(orientation == Qt::Horizontal ? QFrame::HLine : QFrame::VLine);
    line->setForegroundRole(QPalette::Mid);
    line->setFrameShadow(QFrame::Plain);
    return line;
}

} // namespace vrk::qt
