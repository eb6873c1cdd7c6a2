#include "views/workspace/ManualBrowser.h"

#include "platform/qt/layout.h"
#include "platform/qt/theme.h"

#include <QDesktopServices>
#include <QDialog>
#include <QImage>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>

namespace vrk {

using namespace qt;

namespace {
/// Built in, beside the manual.
QString builtIn(const QUrl& name) {
    return ":/" + name.path();
}
} // namespace

ManualBrowser::ManualBrowser(int room) : room_(room) {
    setObjectName("manual");
    setAccessibleName("Manual");
    setOpenLinks(false);
    setFrameShape(QFrame::NoFrame);
    document()->setDocumentMargin(2 * kUnit);
    connect(this, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) { follow(link); });
}

QVariant ManualBrowser::loadResource(int type, const QUrl& name) {
    if (type != QTextDocument::ImageResource)
        return QTextBrowser::loadResource(type, name);
    QImage picture(builtIn(name));
    if (picture.isNull())
        return {};
    picture = picture.scaledToWidth(static_cast<int>(room_ * devicePixelRatioF()), Qt::SmoothTransformation);
    picture.setDevicePixelRatio(devicePixelRatioF());
    return picture;
}

void ManualBrowser::follow(const QUrl& link) {
    if (link.path().endsWith(".png"))
        showPicture(builtIn(link));
    else
        QDesktopServices::openUrl(link);
}

void ManualBrowser::showPicture(const QString& file) {
    auto* window = new QDialog(this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setObjectName("manual.picture");
    window->setWindowTitle("Picture of the manual");
    auto* picture = new QLabel;
    picture->setPixmap(QPixmap(file));
    picture->setAccessibleName("Picture of the manual");
    auto* area = new QScrollArea;
    area->setWidget(picture);
    area->setFrameShape(QFrame::NoFrame);
    auto* all = column({area});
    all->setContentsMargins(0, 0, 0, 0);
    window->setLayout(all);
    window->resize(picture->sizeHint().boundedTo(screen()->availableSize() * 0.9));
    window->show();
}

} // namespace vrk
