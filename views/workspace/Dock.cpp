#include "views/workspace/Dock.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"

#include <QStackedWidget>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace vrk {

using namespace qt;

namespace {
constexpr int kTabRow = 32;

QWidget* emptyWords(const QString& text) {
    auto* words = quietText(text);
    words->setAlignment(Qt::AlignCenter);
    words->setWordWrap(true);
    return words;
}
} // namespace

Dock::Dock()
    : tabs_(new QTabBar),
      contents_(new QStackedWidget),
      tools_(new QStackedWidget),
      fold_(new QToolButton),
      row_(new QWidget) {
    setObjectName("dock");
    tabs_->setObjectName("dock.tabs");
    tabs_->setDrawBase(false);
    tabs_->setDocumentMode(true);
    tabs_->setExpanding(false);
    tabs_->setAccessibleName("Plot, trace, bytes on the wire");
    const struct {
        const char* name;
        const char* words;
    } kTabs[] = {{"Plot", "The page in front has no plot."},
                 {"Trace", "The trace is off. Trace On in the Trace menu switches it on."},
                 {"Bytes on the wire", "No report has passed yet."}};
    for (const auto& [name, words] : kTabs) {
        tabs_->addTab(name);
        places_.push_back({nullptr, nullptr, emptyWords(words)});
        contents_->addWidget(places_.back().empty);
    }
    tools_->addWidget(new QWidget);
    tools_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    fold_->setObjectName("dock.fold");
    fold_->setAutoRaise(true);
    auto* line = new QHBoxLayout(row_);
    line->setContentsMargins(kUnit, 0, kUnit / 2, 0);
    line->addWidget(tabs_);
    line->addWidget(tools_, 1);
    line->addWidget(fold_);
    row_->setFixedHeight(dp(kTabRow));
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(separator(Qt::Horizontal));
    all->addWidget(row_);
    all->addWidget(contents_, 1);
    QObject::connect(tabs_, &QTabBar::currentChanged, this, [this] { showCurrent(); });
    QObject::connect(tabs_, &QTabBar::tabBarClicked, this, [this](int tab) {
        if (tab < 0)
            return;
        open(static_cast<Tab>(tab));
        if (onUser)
            onUser();
    });
    QObject::connect(fold_, &QToolButton::clicked, this, [this] {
        setFolded(!folded_);
        if (onUser)
            onUser();
    });
    setFolded(false);
    showCurrent();
}

void Dock::setTab(Tab tab, QWidget* content, QWidget* tools) {
    Place& place = places_[static_cast<std::size_t>(tab)];
    const auto exchange = [](QStackedWidget& stack, QPointer<QWidget>& held, QWidget* next) {
        if (held == next)
            return;
        if (held != nullptr && stack.indexOf(held) >= 0)
            stack.removeWidget(held);
        held = next;
        if (next != nullptr)
            stack.addWidget(next);
    };
    exchange(*contents_, place.content, content);
    exchange(*tools_, place.tools, tools);
    showCurrent();
}

void Dock::showCurrent() {
    const Place& place = places_[static_cast<std::size_t>(current())];
    contents_->setCurrentWidget(place.content != nullptr ? place.content.data() : place.empty);
    if (place.tools != nullptr)
        tools_->setCurrentWidget(place.tools);
    else
        tools_->setCurrentIndex(0);
}

void Dock::open(Tab tab) {
    setFolded(false);
    choose(tab);
}

void Dock::choose(Tab tab) {
    tabs_->setCurrentIndex(tab);
}

Dock::Tab Dock::current() const {
    return static_cast<Tab>(tabs_->currentIndex());
}

void Dock::setFolded(bool folded) {
    folded_ = folded;
    contents_->setVisible(!folded);
    tools_->setEnabled(!folded);
    fold_->setArrowType(folded ? Qt::UpArrow : Qt::DownArrow);
    fold_->setToolTip(folded ? "Unfold" : "Fold to the tabs");
    fold_->setAccessibleName(fold_->toolTip());
}

int Dock::tabRowHeight() const {
    return row_->height() + 2;
}

} // namespace vrk
