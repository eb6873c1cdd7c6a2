#include "views/HelpWindow.h"

#include "platform/qt/theme.h"

#include <QApplication>
#include <QFile>
#include <QFontMetrics>
#include <QPointer>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>

namespace vrk {

namespace {

QString manualText() {
    QFile file(":/manual.md"); // built in
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

HelpWindow::HelpWindow() : browser_(new QTextBrowser) {
    setObjectName("help");
    setWindowTitle("Manual");
    browser_->setObjectName("manual");
    browser_->setAccessibleName("Manual");
    browser_->setOpenExternalLinks(true);
    browser_->setFrameShape(QFrame::NoFrame);
    browser_->document()->setDocumentMargin(2 * qt::kUnit);
    browser_->setMarkdown(manualText());
    setCentralWidget(browser_);
    const QFontMetrics metrics(font());
    resize(metrics.averageCharWidth() * 96, metrics.lineSpacing() * 40);
}

HelpWindow& HelpWindow::showPage(QWidget& near, const QString& heading) {
    static QPointer<HelpWindow> window;
    if (window == nullptr) {
        window = new HelpWindow;
        window->setAttribute(Qt::WA_DeleteOnClose);
        // Not longer than the last window that matters.
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, window, [] { delete window.data(); });
        window->move(near.pos() + QPoint(4 * qt::kUnit, 4 * qt::kUnit));
    }
    window->show();
    window->raise();
    window->activateWindow();
    window->goTo(heading);
    return *window;
}

void HelpWindow::goTo(const QString& heading) {
    QTextBlock found = browser_->document()->begin();
    if (!heading.isEmpty())
        for (QTextBlock block = found; block.isValid(); block = block.next())
            if (block.blockFormat().headingLevel() > 0 &&
                block.text().contains(heading, Qt::CaseInsensitive)) {
                found = block;
                break;
            }
    browser_->setTextCursor(QTextCursor(found));
    const QRect place = browser_->cursorRect();
    browser_->verticalScrollBar()->setValue(browser_->verticalScrollBar()->value() + place.top());
}

} // namespace vrk
