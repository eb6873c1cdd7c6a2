#include "views/workspace/PageWindow.h"

#include "platform/qt/QtDialogs.h"
#include "platform/qt/theme.h"
#include "views/workspace/Inspector.h"
#include "views/workspace/KeyTable.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace vrk {

using namespace qt;

PageWindow::PageWindow(PageUi& page) : page_(&page), inspector_(new Inspector), keys_(new KeyTable(*this)) {
    setObjectName("window." + page.name());
    setWindowTitle(page.name());
    auto* left = new QVBoxLayout;
    left->setContentsMargins(0, 0, 0, 0);
    left->setSpacing(0);
    left->addWidget(page.page(), 3);
    if (page.plot() != nullptr) {
        if (page.plotTools() != nullptr) {
            left->addWidget(page.plotTools(), 0, Qt::AlignRight);
            page.plotTools()->show();
        }
        left->addWidget(page.plot(), 2);
        page.plot()->show();
    }
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addLayout(left, 1);
    row->addWidget(inspector_);
    auto* all = new QWidget;
    all->setLayout(row);
    setCentralWidget(all);
    inspector_->setPage(&page);
    inspector_->setStrip(!page.opensInspector());
    inspector_->onStrip = [this](bool strip) {
        inspector_->setStrip(strip);
        inspector_->arrange();
    };
    page.page()->show();
    const int side = page.sections().empty() ? 0 : Inspector::width();
    const int plot = page.plot() == nullptr ? 0 : dp(240);
    if (minimumSizeHint().width() > roomOnScreen(*this).width())
        inspector_->setStrip(true);
    for (QLayout* laidOut : {centralWidget()->layout(), layout()})
        laidOut->activate(); // else the width of before is the least
    resize((page.leastSize().expandedTo(QSize(dp(640), dp(480))) + QSize(side, plot))
               .boundedTo(roomOnScreen(*this)));
}

PageWindow::~PageWindow() {
    giveBack();
}

void PageWindow::giveBack() {
    if (page_ == nullptr)
        return;
    inspector_->release(*page_);
    for (QWidget* widget : {page_->page(), page_->plot(), page_->plotTools()})
        if (widget != nullptr && widget->window() == this)
            widget->setParent(nullptr);
    page_ = nullptr;
}

void PageWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (onClose)
        onClose();
}

void PageWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || page_ == nullptr)
        return;
    // Where several windows are shown in a row each is active for a moment; only the one that stays counts.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (isActiveWindow() && page_ != nullptr && !page_->released())
                (void)page_->slot().userActivate();
        },
        Qt::QueuedConnection);
}

} // namespace vrk
