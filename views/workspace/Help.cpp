#include "views/workspace/Help.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"
#include "views/workspace/ManualBrowser.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>

#include <algorithm>

namespace vrk {

using namespace qt;

namespace {
constexpr int kWidth = 420;
constexpr int kRoom = kWidth - 60; ///< beside the margins and the scroll bar
} // namespace

Help::Help()
    : contents_(new QComboBox),
      find_(new QLineEdit),
      outcome_(quietText({})),
      browser_(new ManualBrowser(dp(kRoom))) {
    setObjectName("help");
    setAccessibleName("Manual");
    setFixedWidth(dp(kWidth));
    contents_->setObjectName("help.contents");
    contents_->setAccessibleName("Contents of the manual");
    contents_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    find_->setObjectName("help.find");
    find_->setPlaceholderText("Search the manual");
    find_->setAccessibleName("Search the manual");
    find_->setClearButtonEnabled(true);
    auto* back = new QPushButton("Back");
    back->setObjectName("help.back");
    back->setAutoDefault(false);
    auto* close = new QPushButton("Close");
    close->setObjectName("help.close");
    close->setAutoDefault(false);
    auto* first = qt::row({contents_, back, close});
    first->setStretch(0, 1);
    auto* second = qt::row({find_, outcome_});
    second->setStretch(0, 1);
    auto* all = qt::column({first, second, browser_});
    all->setContentsMargins(kUnit, kUnit / 2, kUnit, kUnit / 2);
    all->setStretch(2, 1);
    setLayout(all);
    QObject::connect(contents_, &QComboBox::activated, this,
                     [this](int row) { go(headings_[static_cast<std::size_t>(row)]); });
    QObject::connect(back, &QPushButton::clicked, this, [this] {
        if (before_.empty())
            return;
        const int position = before_.back();
        before_.pop_back();
        go(position);
        before_.pop_back(); // going back is no step forward
    });
    QObject::connect(close, &QPushButton::clicked, this, [this] {
        if (onClose)
            onClose();
    });
    QObject::connect(find_, &QLineEdit::returnPressed, this, [this] { search(); });
    hide();
}

void Help::read() {
    QFile file(":/manual.md"); // built in
    if (!headings_.empty() || !file.open(QIODevice::ReadOnly))
        return;
    browser_->setMarkdown(QString::fromUtf8(file.readAll()));
    for (QTextBlock at = browser_->document()->begin(); at.isValid(); at = at.next())
        if (const int level = at.blockFormat().headingLevel(); level > 0) {
            headings_.push_back(at.position());
            contents_->addItem(QString(2 * (level - 1), ' ') + at.text());
        }
}

void Help::go(int position) {
    before_.push_back(browser_->textCursor().position());
    QTextCursor cursor(browser_->document());
    cursor.setPosition(position);
    browser_->setTextCursor(cursor);
    const QRect place = browser_->cursorRect();
    browser_->verticalScrollBar()->setValue(browser_->verticalScrollBar()->value() + place.top());
    for (std::size_t at = 0; at < headings_.size(); ++at)
        if (headings_[at] <= position)
            contents_->setCurrentIndex(static_cast<int>(at));
}

void Help::setRoom(int most) {
    setFixedWidth(std::min(dp(kWidth), most));
}

void Help::showPage(const QString& heading) {
    read();
    show();
    for (std::size_t at = 0; at < headings_.size(); ++at)
        if (!heading.isEmpty() &&
            contents_->itemText(static_cast<int>(at)).contains(heading, Qt::CaseInsensitive))
            return go(headings_[at]);
    go(0);
}

void Help::search() {
    const QString words = find_->text();
    if (words.isEmpty())
        return outcome_->setText({});
    const int before = browser_->textCursor().position();
    bool found = browser_->find(words);
    if (!found) { // from the top, once round
        browser_->moveCursor(QTextCursor::Start);
        found = browser_->find(words);
    }
    outcome_->setText(found ? QString() : QString("not found"));
    if (found)
        before_.push_back(before);
}

void Help::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(0, 0, 0, height());
}

} // namespace vrk
