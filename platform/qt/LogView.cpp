#include "platform/qt/LogView.h"

#include "platform/qt/logFailures.h"
#include "platform/qt/theme.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <limits>

namespace vrk::qt {

namespace {
/// The log may grow a thousand times between two frames; the screen is brought up to date once.
constexpr int kFrameMs = 30;
constexpr int kMargin = 4;
} // namespace

LogView::LogView(QWidget* parent) : QAbstractScrollArea(parent) {
    setFont(valueFont());
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setCursor(Qt::IBeamCursor);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    frame_.setSingleShot(true);
    frame_.setInterval(kFrameMs);
    connect(&frame_, &QTimer::timeout, this, [this] { catchUp(); });
    connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, [this] {
        QMetaObject::invokeMethod(
            this, [this] { userScrolled(); }, Qt::QueuedConnection);
    });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, viewport(), [this] { viewport()->update(); });
    connect(horizontalScrollBar(), &QScrollBar::valueChanged, viewport(), [this] { viewport()->update(); });
}

void LogView::setLog(const TextLog* log) {
    log_ = log;
    logReplaced();
}

void LogView::logGrew() {
    if (!frame_.isActive())
        frame_.start();
}

void LogView::logReplaced() {
    measured_ = 0;
    widest_ = 0;
    anchor_ = caret_ = {};
    follow_ = true;
    catchUp();
}

void LogView::catchUp() {
    frame_.stop();
    // The last line may still grow, so it is measured again next time.
    while (measured_ < lineCount()) {
        widest_ = std::max(widest_, static_cast<int>(log_->line(measured_).size()));
        if (measured_ + 1 == lineCount())
            break;
        ++measured_;
    }
    updateRanges();
    viewport()->update();
}

void LogView::updateRanges() {
    const int lines = static_cast<int>(std::min<std::size_t>(lineCount(), std::numeric_limits<int>::max()));
    verticalScrollBar()->setPageStep(std::max(1, linesInSight()));
    verticalScrollBar()->setSingleStep(3);
    verticalScrollBar()->setRange(0, std::max(0, lines - linesInSight()));
    const int width = static_cast<int>(widest_ * columnWidth()) + 2 * kMargin;
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(static_cast<int>(columnWidth()) * 4);
    horizontalScrollBar()->setRange(0, std::max(0, width - viewport()->width()));
    if (follow_)
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void LogView::userScrolled() {
    follow_ = verticalScrollBar()->value() == verticalScrollBar()->maximum();
}

void LogView::scrollToEnd() {
    follow_ = true;
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

QString LogView::lineText(std::size_t number) const {
    return QString::fromStdString(log_->line(number));
}

int LogView::lineHeight() const {
    return std::max(1, fontMetrics().lineSpacing());
}

double LogView::columnWidth() const {
    return QFontMetricsF(font()).horizontalAdvance('0');
}

int LogView::linesInSight() const {
    return (viewport()->height() - kMargin) / lineHeight();
}

LogView::Place LogView::placeAt(const QPoint& point) const {
    if (lineCount() == 0)
        return {};
    const int row = std::max(0, point.y() - kMargin / 2) / lineHeight() + verticalScrollBar()->value();
    const std::size_t line = std::min(static_cast<std::size_t>(std::max(0, row)), lineCount() - 1);
    const double column = (point.x() - kMargin + horizontalScrollBar()->value()) / columnWidth();
    return {line, std::clamp(static_cast<int>(column + 0.5), 0, static_cast<int>(lineText(line).size()))};
}

void LogView::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    painter.setFont(font());
    const double width = columnWidth();
    const int left = kMargin - horizontalScrollBar()->value();
    const Place from = std::min(anchor_, caret_);
    const Place to = std::max(anchor_, caret_);
    const auto first = static_cast<std::size_t>(verticalScrollBar()->value());
    const std::size_t last = std::min(lineCount(), first + static_cast<std::size_t>(linesInSight()) + 2);
    const LogFailures* failures = LogFailures::of(*this);
    int top = kMargin / 2;
    for (std::size_t number = first; number < last; ++number, top += lineHeight()) {
        const QString text = lineText(number);
        const int base = top + fontMetrics().ascent();
        const bool failed = failures != nullptr && failures->tells(log_->line(number));
        painter.setPen(failed ? toneColour(Tone::Failed) : palette().color(QPalette::Text));
        painter.drawText(left, base, text);
        if (from == to || number < from.line || number > to.line)
            continue;
        const int begin = number == from.line ? from.column : 0;
        const int end = number == to.line ? to.column : static_cast<int>(text.size()) + 1;
        const QRectF area(left + begin * width, top, (end - begin) * width, lineHeight());
        painter.fillRect(area, palette().highlight());
        painter.setPen(palette().color(QPalette::HighlightedText));
        painter.drawText(QPointF(left + begin * width, base), text.mid(begin, end - begin));
    }
}

void LogView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    updateRanges();
}

void LogView::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateRanges();
}

void LogView::keyPressEvent(QKeyEvent* event) {
    auto* bar = verticalScrollBar();
    if (event->matches(QKeySequence::Copy))
        copy();
    else if (event->matches(QKeySequence::SelectAll))
        selectAll();
    else if (event->key() == Qt::Key_Home)
        bar->triggerAction(QAbstractSlider::SliderToMinimum);
    else if (event->key() == Qt::Key_End)
        scrollToEnd();
    else if (event->key() == Qt::Key_PageUp)
        bar->triggerAction(QAbstractSlider::SliderPageStepSub);
    else if (event->key() == Qt::Key_PageDown)
        bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
    else
        QAbstractScrollArea::keyPressEvent(event);
}

void LogView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    const Place place = placeAt(event->pos());
    select(event->modifiers().testFlag(Qt::ShiftModifier) ? anchor_ : place, place);
}

void LogView::mouseMoveEvent(QMouseEvent* event) {
    if (!event->buttons().testFlag(Qt::LeftButton))
        return;
    const Place place = placeAt(event->pos());
    if (event->pos().y() < 0)
        verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
    else if (event->pos().y() > viewport()->height())
        verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    select(anchor_, place);
}

void LogView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (lineCount() == 0)
        return;
    const Place place = placeAt(event->pos());
    select({place.line, 0}, {place.line, static_cast<int>(lineText(place.line).size())});
}

void LogView::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu;
    QAction* copyText = menu.addAction("&Copy", this, [this] { copy(); });
    copyText->setEnabled(anchor_ != caret_);
    menu.addAction("Select &All", this, [this] { selectAll(); });
    menu.addAction("Go to &End", this, [this] { scrollToEnd(); });
    menu.exec(event->globalPos());
}

void LogView::select(const Place& from, const Place& to) {
    anchor_ = from;
    caret_ = to;
    viewport()->update();
}

void LogView::selectAll() {
    if (lineCount() > 0)
        select({}, {lineCount() - 1, static_cast<int>(lineText(lineCount() - 1).size())});
}

QString LogView::selectedText() const {
    const Place from = std::min(anchor_, caret_);
    const Place to = std::max(anchor_, caret_);
    if (from == to || to.line >= lineCount())
        return {};
    QString text;
    for (std::size_t number = from.line; number <= to.line; ++number) {
        QString line = lineText(number);
        if (number == to.line)
            line.truncate(to.column);
        if (number == from.line)
            line.remove(0, from.column);
        text += (number == from.line ? "" : "\n") + line;
    }
    return text;
}

void LogView::copy() const {
    if (const QString text = selectedText(); !text.isEmpty())
        QApplication::clipboard()->setText(text);
}

void LogView::ensureVisible(const Place& place) {
    auto* bar = verticalScrollBar();
    const int line = static_cast<int>(place.line);
    if (line < bar->value() || line >= bar->value() + linesInSight())
        bar->setValue(std::max(0, line - linesInSight() / 2));
    const int x = static_cast<int>(place.column * columnWidth());
    auto* sideways = horizontalScrollBar();
    if (x < sideways->value() ||
        x > sideways->value() + viewport()->width() - static_cast<int>(columnWidth()))
        sideways->setValue(x - viewport()->width() / 2);
    userScrolled();
}

bool LogView::find(const QString& text, bool forward) {
    if (text.isEmpty() || lineCount() == 0)
        return false;
    frame_.stop();
    catchUp();
    const std::size_t count = lineCount();
    const Place start = forward ? std::max(anchor_, caret_) : std::min(anchor_, caret_);
    // Once round, and the first line a second time for the part on the other side of the start.
    for (std::size_t step = 0; step <= count; ++step) {
        const std::size_t number = (start.line + (forward ? step : count * 2 - step)) % count;
        const QString line = lineText(number);
        int column = 0;
        if (forward)
            column = static_cast<int>(line.indexOf(text, step == 0 ? start.column : 0, Qt::CaseInsensitive));
        else if (step > 0)
            column = static_cast<int>(line.lastIndexOf(text, -1, Qt::CaseInsensitive));
        else
            column =
                start.column == 0
                    ? -1
                    : static_cast<int>(line.left(start.column).lastIndexOf(text, -1, Qt::CaseInsensitive));
        if (column < 0)
            continue;
        select({number, column}, {number, column + static_cast<int>(text.size())});
        ensureVisible(caret_);
        return true;
    }
    return false;
}

} // namespace vrk::qt
