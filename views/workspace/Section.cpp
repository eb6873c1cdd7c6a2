#include "views/workspace/Section.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

namespace vrk {

using namespace qt;

namespace {

/// Words at the right that are cut at their end where the heading leaves no room.
class CutWords final : public QLabel {
  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignRight | Qt::AlignVCenter,
                         fontMetrics().elidedText(text(), Qt::ElideRight, width()));
    }
};

} // namespace

Section::Section(const QString& title, QWidget* content)
    : title_(title), content_(content), head_(new QToolButton), words_(new CutWords) {
    setObjectName("section." + title);
    head_->setFont(textFont(1.0, true));
    head_->setAutoRaise(true);
    head_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    head_->setArrowType(Qt::DownArrow);
    head_->setIconSize(QSize(dp(9), dp(9)));
    head_->setFocusPolicy(Qt::StrongFocus);
    setTitle(title);
    QObject::connect(head_, &QToolButton::clicked, this, [this] {
        setFolded(!folded_);
        chosenByUser_ = true;
        if (onUser)
            onUser();
    });
    words_->setFont(textFont(kSmall));
    words_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // What does not fit is cut, never the heading moved.
    words_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    headRow_ = new QHBoxLayout;
    headRow_->setContentsMargins(0, 0, 0, 0);
    headRow_->setSpacing(2);
    headRow_->addWidget(head_);
    headRow_->addWidget(words_, 1);
    // Tells tests and the palette that what stands in it is folded away, not hidden by its panel.
    content_->setProperty("folded", true);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 2, 0, 2);
    all->setSpacing(2);
    all->addLayout(headRow_);
    all->addWidget(content_);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void Section::setTitle(const QString& title) {
    title_ = title;
    head_->setText(title);
    head_->setAccessibleName(title);
    // The style leaves room for two more letters, which the summary needs.
    head_->setFixedWidth(head_->sizeHint().width() - dp(12));
}

void Section::addDivider() {
    // Its own line, so that a section that goes takes it along.
    static_cast<QVBoxLayout*>(layout())->insertWidget(0, separator(Qt::Horizontal));
}

void Section::setFolded(bool folded) {
    folded_ = folded;
    head_->setArrowType(folded ? Qt::RightArrow : Qt::DownArrow);
    head_->setAccessibleDescription(folded ? "folded" : "unfolded");
    content_->setVisible(!folded);
    // At once, as the inspector asks for the height between two foldings.
    layout()->invalidate();
    updateGeometry();
}

void Section::setSummary(std::function<QString()> summary) {
    summary_ = std::move(summary);
    refresh();
}

void Section::setSummary(QWidget* summary) {
    headRow_->addWidget(summary);
}

void Section::refresh() {
    if (!summary_)
        return;
    const QString words = summary_();
    if (words_->text() != words) {
        words_->setText(words);
        words_->setToolTip(words);
    }
}

void Section::setWanted(bool wanted) {
    setVisible(wanted);
}

} // namespace vrk
