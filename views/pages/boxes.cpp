#include "views/pages/boxes.h"

#include "platform/qt/theme.h"

#include <QGridLayout>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace vrk {

using namespace qt;

namespace {
constexpr double kCorner = 3.0;
constexpr int kInside = 12;
} // namespace

BoxFrame::BoxFrame(QLayout* content, Ground ground) : ground_(ground) {
    content->setContentsMargins(kInside, kUnit, kInside, kInside);
    setLayout(content);
}

void BoxFrame::setGround(Ground ground) {
    if (std::exchange(ground_, ground) != ground)
        update();
}

void BoxFrame::setMarked(bool marked) {
    if (std::exchange(marked_, marked) != marked)
        update();
}

void BoxFrame::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& p = palette();
    painter.setBrush(p.color(QPalette::Active, ground_ == Ground::Base ? QPalette::Base : QPalette::Window));
    const double line = marked_ ? 2.0 : 1.0;
    painter.setPen(QPen(p.color(QPalette::Active, marked_ ? QPalette::Highlight : QPalette::Mid), line));
    painter.drawRoundedRect(QRectF(rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2), kCorner,
                            kCorner);
}

BoxFrame* box(const QString& title, QLayout* content, BoxFrame::Ground ground, QWidget* corner) {
    auto* name = heading(title, kStripScale);
    auto* head = corner == nullptr ? row({name, stretch}) : row({name, stretch, corner});
    auto* all = column({head, content});
    all->setStretch(1, 1);
    auto* framed = new BoxFrame(all, ground);
    framed->setAccessibleName(title);
    return framed;
}

DiffersGround::DiffersGround(QLayout* content) {
    content->setContentsMargins(0, 0, 0, 0);
    setLayout(content);
}

void DiffersGround::setDiffers(bool differs) {
    if (std::exchange(differs_, differs) == differs)
        return;
    setToolTip(differs ? "what was read differs from what was written" : "");
    setAccessibleDescription(toolTip());
    update();
}

void DiffersGround::paintEvent(QPaintEvent*) {
    if (differs_)
        QPainter(this).fillRect(rect(), colours().differsGround);
}

BoxFlow::BoxFlow(std::vector<QWidget*> boxes, int least, std::vector<int> shares)
    : boxes_(std::move(boxes)), least_(least), shares_(std::move(shares)), grid_(new QGridLayout(this)) {
    grid_->setContentsMargins(0, 0, 0, 0);
    grid_->setSpacing(kUnit);
    arrange(static_cast<int>(boxes_.size()));
}

QSize BoxFlow::sizeHint() const {
    return {grid_->sizeHint().width(), grid_->minimumSize().height()};
}

QSize BoxFlow::minimumSizeHint() const {
    // One box wide: the lines break before the page scrolls sideways.
    return {least_, grid_->minimumSize().height()};
}

void BoxFlow::resizeEvent(QResizeEvent*) {
    const int most = static_cast<int>(boxes_.size());
    int fits = std::clamp((width() + kUnit) / (least_ + kUnit), 1, most);
    // Even lines: three and two rather than four and one.
    fits = (most + (most + fits - 1) / fits - 1) / ((most + fits - 1) / fits);
    arrange(fits);
}

void BoxFlow::arrange(int columns) {
    if (columns == columns_)
        return;
    columns_ = columns;
    const bool shared = columns == static_cast<int>(shares_.size());
    for (int at = 0; at < static_cast<int>(boxes_.size()); ++at)
        grid_->setColumnStretch(at, at >= columns ? 0
                                    : shared      ? shares_.at(static_cast<std::size_t>(at))
                                                  : 1);
    int at = 0;
    for (QWidget* each : boxes_) {
        grid_->removeWidget(each);
        if (shares_.empty())
            each->setMinimumWidth(least_);
        grid_->addWidget(each, at / columns, at % columns);
        ++at;
    }
    updateGeometry();
}

FrontStack::FrontStack() {
    // The stack's layout would hold the window to the largest page.
    layout()->setSizeConstraint(QLayout::SetNoConstraint);
    connect(this, &QStackedWidget::currentChanged, this, [this] { updateGeometry(); });
}

QSize FrontStack::sizeHint() const {
    return currentWidget() == nullptr ? QSize() : currentWidget()->sizeHint();
}

QSize FrontStack::minimumSizeHint() const {
    return currentWidget() == nullptr ? QSize() : currentWidget()->minimumSizeHint();
}

namespace {

class ElidedLabel final : public QLabel {
  public:
    using QLabel::QLabel;
    QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setPen(palette().color(foregroundRole()));
        painter.drawText(contentsRect(), static_cast<int>(Qt::AlignVCenter | alignment()),
                         fontMetrics().elidedText(text(), Qt::ElideRight, width()));
    }
};

} // namespace

QLabel* elidedText(const QString& text) {
    auto* label = new ElidedLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

} // namespace vrk
