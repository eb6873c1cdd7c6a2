#include "views/workspace/Sheet.h"

#include "platform/qt/theme.h"

#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace vrk {

using namespace qt;

Sheet::Sheet(PageUi& sheet, PageUi& under) : QWidget(under.page()), sheet_(&sheet), under_(&under) {
    setObjectName("sheet");
    const int edge = dp(12);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(edge, edge, edge, edge);
    all->addWidget(sheet.page());
    sheet.page()->setAutoFillBackground(true);
    sheet.page()->show();
    setGeometry(under.page()->rect());
    under.page()->installEventFilter(this);
    raise();
    show();
}

Sheet::~Sheet() {
    giveBack();
}

void Sheet::giveBack() {
    if (sheet_ != nullptr && sheet_->page() != nullptr && sheet_->page()->parentWidget() == this)
        sheet_->page()->setParent(nullptr);
    sheet_ = nullptr;
}

void Sheet::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QColor veil = palette().color(QPalette::Mid);
    veil.setAlphaF(0.75F);
    painter.fillRect(rect(), veil);
    if (sheet_ != nullptr) {
        painter.setPen(palette().color(QPalette::Dark));
        painter.setBrush(palette().color(QPalette::Window));
        painter.drawRect(sheet_->page()->geometry().adjusted(-1, -1, 0, 0));
    }
}

bool Sheet::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize && under_ != nullptr)
        setGeometry(under_->page()->rect());
    return QWidget::eventFilter(watched, event);
}

} // namespace vrk
