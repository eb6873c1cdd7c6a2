#include "views/workspace/Inspector.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"
#include "views/workspace/Section.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

namespace vrk {

using namespace qt;

int Inspector::width() {
    return dp(312);
}
int Inspector::stripWidth() {
    return dp(28);
}

Inspector::Inspector() : area_(new QScrollArea) {
    setObjectName("inspector");
    setAccessibleName("Inspector");
    area_->setFrameShape(QFrame::NoFrame);
    area_->setWidgetResizable(true);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setFocusPolicy(Qt::NoFocus);
    // Sections that a strip stands for are folded away, not hidden by their panel.
    area_->setProperty("folded", true);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(dp(7), 0, 0, 0); // the edge that folds it
    all->addWidget(area_);
    // A section that was never unfolded knows its height only once it has been laid out.
    connect(area_->verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int, int last) {
        if (last > 0 && minimumWidth() == width())
            QTimer::singleShot(0, this, [this] { arrange(); });
    });
    setStrip(false);
}

bool Inspector::any() const {
    return page_ != nullptr && !page_->sections().empty();
}

void Inspector::setPage(PageUi* page) {
    if (page_ == page)
        return;
    if (QWidget* before = area_->takeWidget())
        before->setParent(nullptr);
    page_ = page;
    if (page != nullptr && page->inspector() != nullptr) {
        area_->setWidget(page->inspector());
        page->inspector()->show();
        for (Section* section : page->sections())
            section->onUser = [this] { arrange(); };
    }
    setVisible(any());
}

void Inspector::release(PageUi& page) {
    if (page_ == &page)
        setPage(nullptr);
}

void Inspector::setStrip(bool strip) {
    strip_ = strip;
    area_->setVisible(!strip);
    setFixedWidth(strip ? stripWidth() : width());
    setFocusPolicy(strip ? Qt::StrongFocus : Qt::NoFocus);
    setToolTip(strip ? "Show the inspector" : QString());
    setCursor(strip ? Qt::PointingHandCursor : Qt::ArrowCursor);
    update();
}

void Inspector::arrange() {
    if (!any() || strip_)
        return;
    // From the last to the first; those that fold last come at the end.
    std::vector<Section*> order;
    for (const bool last : {false, true})
        for (auto at = page_->sections().rbegin(); at != page_->sections().rend(); ++at)
            if ((*at)->foldsLast() == last && !(*at)->isHidden() && !(*at)->chosenByUser())
                order.push_back(*at);
    // Laid out anew after each step, since only the layout knows how high what is left will be.
    QLayout& layout = *page_->inspector()->layout();
    const auto tooHigh = [this, &layout] {
        layout.invalidate();
        return layout.totalSizeHint().height() > height();
    };
    area_->setUpdatesEnabled(false);
    for (Section* section : order)
        section->setFolded(false);
    for (Section* section : order) {
        if (!tooHigh())
            break;
        section->setFolded(true);
    }
    // The bar takes its room from outside: the sections are as wide as they can be already.
    setFixedWidth(width() + (tooHigh() ? area_->verticalScrollBar()->sizeHint().width() : 0));
    layout.activate(); // a resize that brings this about has laid the sections out unfolded
    area_->setUpdatesEnabled(true);
}

void Inspector::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrange();
}

void Inspector::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(QPointF(0.5, 0), QPointF(0.5, height()));
    const QColor ink = palette().color(QPalette::WindowText);
    if (!strip_) {
        // A mark in the middle of the edge says that it folds.
        painter.setPen(QPen(palette().color(QPalette::Dark), 1.5));
        const QPointF middle(dp(4), height() / 2.0);
        painter.drawPolyline(
            QPolygonF({middle + QPointF(-1.5, -4), middle + QPointF(1.5, 0), middle + QPointF(-1.5, 4)}));
        return;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    const QPointF top(QWidget::width() / 2.0, dp(13));
    painter.drawPolygon(QPolygonF({top + QPointF(-3, 0), top + QPointF(3, -4), top + QPointF(3, 4)}));
    painter.setPen(ink);
    double y = dp(32);
    painter.save();
    painter.translate(QWidget::width() / 2.0, 0);
    painter.rotate(90);
    for (const Section* section : page_ == nullptr ? std::vector<Section*>{} : page_->sections()) {
        if (section->isHidden())
            continue;
        painter.drawText(QPointF(y, fontMetrics().descent() + 1), section->title());
        y += fontMetrics().horizontalAdvance(section->title()) + dp(14);
    }
    painter.restore();
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
    }
}

void Inspector::mouseReleaseEvent(QMouseEvent* event) {
    if (onStrip && (strip_ || event->position().x() < dp(8)))
        onStrip(!strip_);
}

void Inspector::keyPressEvent(QKeyEvent* event) {
    if (strip_ && onStrip && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Space))
        onStrip(false);
    else
        QWidget::keyPressEvent(event);
}

} // namespace vrk
