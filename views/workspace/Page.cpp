#include "views/workspace/Page.h"

#include "platform/qt/QtHost.h"
#include "platform/qt/keyboard.h"
#include "platform/qt/theme.h"
#include "views/pages.h"
#include "views/workspace/HeadRoom.h"
#include "views/workspace/Section.h"
#include "views/workspace/intoView.h"

#include <QApplication>
#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QMenu>
#include <QResizeEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {
/// Letters of the menus, which no field may take.
const QString kMenuLetters = "FDPBTVH";
} // namespace

PageUi::PageUi(const ViewContext& context, PanelSlotBase& slot, Panel& panel, const PageRow& row)
    : context_(context), slot_(slot), row_(row), ui_(panel), page_(new QWidget), inspector_(new QWidget) {
    page_->setObjectName("page." + QString::fromStdString(slot.name()));
    page_->setAccessibleName(name());
    auto* all = new QVBoxLayout(page_);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    makeHead();
    area_ = new QScrollArea;
    area_->setFrameShape(QFrame::NoFrame);
    area_->setWidgetResizable(true);
    area_->setFocusPolicy(Qt::NoFocus);
    all->addWidget(area_, 1);

    auto* sections = new QVBoxLayout(inspector_);
    sections->setContentsMargins(kUnit, kUnit / 2, kUnit, kUnit / 2);
    sections->setSpacing(0);
    sections->addStretch(1);
}

PageUi::~PageUi() {
    ui_.release();
    for (const QPointer<QWidget>& widget : {page_, inspector_, plot_, plotTools_, headItemsBlock_})
        delete widget.data();
}

void PageUi::makeHead() {
    auto* head = new QWidget;
    head->setObjectName("head");
    head->setFixedHeight(dp(36));
    auto* nameText = heading(name(), kNameScale);
    auto* titleText = quietText(title());
    titleText->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    headItems_ = qt::row(std::vector<Item>{});
    headItemsBlock_ = block(headItems_);
    head_ = head;
    frameItems_ = qt::row(std::vector<Item>{});
    auto* layout = new QHBoxLayout(head);
    layout->setContentsMargins(kUnit, 0, kUnit, 0);
    layout->setSpacing(kUnit);
    layout->addWidget(nameText);
    layout->addWidget(titleText, 1);
    subtitle_ = titleText;
    layout->addWidget(headItemsBlock_);
    layout->addLayout(frameItems_);
    page_->layout()->addWidget(head);
    // A page of the dock has the row of its tab as its head.
    head->setHidden(row_.place == PagePlace::Dock);
}

QString PageUi::name() const {
    return row_.name;
}

QString PageUi::title() const {
    return QString::fromStdString(slot_.title()).trimmed();
}

void PageUi::setContent(QWidget* content) {
    content_ = content;
    if (content->layout() != nullptr)
        content->layout()->setContentsMargins(kUnit, 0, kUnit, kUnit);
    area_->setWidget(content);
    // The bar stands where the margin was: a page that scrolls down need not scroll sideways for it.
    connect(area_->verticalScrollBar(), &QScrollBar::rangeChanged, content, [content](int, int last) {
        if (content->layout() != nullptr)
            content->layout()->setContentsMargins(kUnit, 0, last > 0 ? 0 : kUnit, kUnit);
    });
    content->installEventFilter(this);
    area_->viewport()->installEventFilter(this);
    if (row_.place != PagePlace::Dock)
        new HeadRoom(*head_, *headItems_, *content);
    ui_.placed();
    QString taken = kMenuLetters;
    for (QWidget* root : {page_.data(), inspector_.data()})
        taken = assignMnemonics(*root, taken);
}

void PageUi::setSubtitle(QWidget* subtitle) {
    subtitle->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    delete subtitle_->parentWidget()->layout()->replaceWidget(subtitle_, subtitle);
    delete std::exchange(subtitle_, subtitle);
}

void PageUi::addHeadItem(QWidget* item) {
    headItems_->addWidget(item);
}

void PageUi::addFrameItem(QWidget* item) {
    frameItems_->addWidget(item);
}

Section& PageUi::addSection(const QString& title, QWidget* content, std::function<QString()> summary,
                            const std::vector<Control*>& watched) {
    auto* section = new Section(title, content);
    auto* layout = static_cast<QVBoxLayout*>(inspector_->layout());
    if (!sections_.empty())
        section->addDivider();
    layout->insertWidget(layout->count() - 1, section);
    sections_.push_back(section);
    if (summary) {
        section->setSummary(std::move(summary));
        for (Control* control : watched)
            ui_.watch(*control, [section] { section->refresh(); });
    }
    return *section;
}

Section& PageUi::addSection(Frame& frame, const QString& title, QWidget* content,
                            std::function<QString()> summary, const std::vector<Control*>& watched) {
    Section& section = addSection(title, content, std::move(summary), watched);
    ui_.watch(frame, [&section, &frame] {
        section.setWanted(frame.reachable());
        if (const QString words = plainCaption(frame); !words.isEmpty())
            section.setTitle(words);
    });
    return section;
}

void PageUi::setPlot(QWidget* plot) {
    plot_ = plot;
}

void PageUi::addPlotTool(QWidget* tool) {
    if (plotTools_ == nullptr)
        plotTools_ = block(qt::row({stretch}));
    plotTools_->layout()->addWidget(tool);
}

QMenu* PageUi::menu(const QString& title) {
    auto* menu = new QMenu(title, page_);
    menus_.push_back(menu);
    return menu;
}

void PageUi::addKey(const QKeySequence& key, const QString& what, std::function<void()> action) {
    keys_.push_back({key, what, [this, act = std::move(action)] {
                         if (!released_)
                             QtHost::guarded(act);
                     }});
}

void PageUi::onRead(const QString& what, std::function<void()> action) {
    addKey(QKeySequence(Qt::Key_F5), what, std::move(action));
}

void PageUi::onWrite(const QString& what, std::function<void()> action) {
    addKey(QKeySequence(Qt::CTRL | Qt::Key_Return), what, std::move(action));
}

void PageUi::onAbort(const QString& what, std::function<void()> action) {
    addKey(QKeySequence(Qt::Key_Escape), what, std::move(action));
}

std::vector<QWidget*> PageUi::roots() const {
    std::vector<QWidget*> all;
    for (const QPointer<QWidget>& root : {page_, inspector_, plot_, plotTools_, headItemsBlock_})
        if (root != nullptr)
            all.push_back(root);
    return all;
}

bool PageUi::holds(const QWidget& widget) const {
    const auto all = roots();
    return std::any_of(all.begin(), all.end(),
                       [&](const QWidget* root) { return root == &widget || root->isAncestorOf(&widget); });
}

QWidget* PageUi::find(const QString& name) const {
    for (QWidget* root : roots()) {
        if (root->objectName() == name)
            return root;
        if (auto* found = root->findChild<QWidget*>(name))
            return found;
    }
    return nullptr;
}

QAction* PageUi::findAction(const QString& name) const {
    for (const QWidget* root : roots())
        if (auto* found = root->findChild<QAction*>(name))
            return found;
    return nullptr;
}

void PageUi::takeFocus() {
    // Another part may have fewer channels than the one that was left.
    if (lastFocus_ == nullptr || !lastFocus_->isVisibleTo(lastFocus_->window()))
        lastFocus_ = firstFocus_;
    if (lastFocus_ == nullptr)
        return;
    giveKeyboard(*lastFocus_);
    // It comes there when what runs is over. Until then it is not left to whatever stands first in the
    // window.
    if (!lastFocus_->isEnabled() && panel().context().activities.current() != nullptr)
        focusSomeEntry();
}

/// Of the content: what can be used while something runs.
void PageUi::focusSomeEntry() const {
    for (QWidget* at = content_->nextInFocusChain(); at != content_; at = at->nextInFocusChain())
        if (content_->isAncestorOf(at) && at->isEnabled() && at->isVisible() &&
            (at->focusPolicy() & Qt::TabFocus) != 0) {
            at->setFocus(Qt::OtherFocusReason);
            return;
        }
}

void PageUi::keepFocus() {
    QWidget* focus = QApplication::focusWidget();
    for (const QWidget* root : roots())
        if (focus != nullptr && root->isAncestorOf(focus))
            lastFocus_ = focus;
}

void PageUi::disable(bool disabled) {
    for (QWidget* root : roots())
        root->setEnabled(!disabled);
}

void PageUi::showLink(const LinkWords& words) {
    if (linkShown_ && !released_)
        linkShown_(words);
    for (Section* section : sections_)
        section->refresh();
}

QSize PageUi::wantedSize() const {
    if (content_ == nullptr)
        return page_->sizeHint();
    return content_->sizeHint() + QSize(area_->verticalScrollBar()->sizeHint().width(), dp(36));
}

QSize PageUi::leastSize() const {
    if (content_ == nullptr)
        return {};
    return content_->minimumSizeHint() + QSize(0, dp(36));
}

bool PageUi::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && content_ != nullptr && watched != content_)
        keepKeyboardInSight(QRect(QPoint(), static_cast<QResizeEvent*>(event)->oldSize()));
    if (event->type() == QEvent::LayoutRequest) {
        const QSize least = leastSize();
        if (std::exchange(least_, least) != least) {
            keepKeyboardInSight(std::nullopt); // another part: what was in sight stands elsewhere now
            if (onLeastSize)
                onLeastSize();
        }
    }
    return QObject::eventFilter(watched, event);
}

/// What has the keyboard comes into sight once the page is laid out.
/// \param seen only if it was within; nullopt: wherever it was.
void PageUi::keepKeyboardInSight(const std::optional<QRect>& seen) const {
    QWidget* focus = QApplication::focusWidget();
    if (focus == nullptr || content_ == nullptr || !content_->isAncestorOf(focus) || !keysInUse())
        return;
    if (!seen || seen->intersects(QRect(focus->mapTo(area_->viewport(), QPoint()), focus->size())))
        QTimer::singleShot(0, focus, [focus] { scrollIntoView(*focus); });
}

void PageUi::release() {
    released_ = true;
    ui_.release();
    disable(true);
}

} // namespace vrk
