#include "views/FastDrawing.h"

#include "platform/qt/QtDialogs.h"
#include "views/workspace/Page.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>
#include <QWidget>

#include <utility>

namespace vrk {

namespace {

constexpr int kDotsPerInch = 96; ///< sizes on paper as on a screen of 100%
constexpr double kPointsPerInch = 72;

bool paint(QPaintDevice& device, const std::function<void(QPainter&)>& draw) {
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    draw(painter);
    return painter.end();
}

/// Sharp in a report too.
QImage sharpImage(const QSize& size) {
    constexpr int kFiner = 2;
    QImage image(size * kFiner, QImage::Format_RGB32);
    image.setDevicePixelRatio(kFiner);
    return image;
}

} // namespace

FastDrawing::FastDrawing(QWidget& widget, Source source) : widget_(widget), source_(std::move(source)) {}

void FastDrawing::draw(QPainter& painter, const QRectF& area) const {
    painter.setFont(widget_.font());
    painter.fillRect(area, widget_.palette().color(QPalette::Window));
    source_.paint(painter, area);
}

void FastDrawing::copy() const {
    QImage image = sharpImage(widget_.size());
    if (paint(image, [&](QPainter& painter) { draw(painter, QRectF(QPointF(0, 0), widget_.size())); }))
        QApplication::clipboard()->setImage(image);
}

QString FastDrawing::save(const QString& path) const {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return "Cannot write " + path + ": " + file.errorString() + ".";
    const QString ending = path.section('.', -1).toLower();
    const QRectF whole(QPointF(0, 0), QSizeF(widget_.size().expandedTo(source_.least)));
    const auto picture = [&](QPainter& painter) { draw(painter, whole); };
    bool written = false;
    if (ending == "csv" && source_.numbers) {
        written = file.write(source_.numbers().toUtf8()) >= 0;
    } else if (ending == "pdf") {
        QPdfWriter writer(&file);
        writer.setTitle(source_.name);
        writer.setResolution(kDotsPerInch);
        writer.setPageMargins({0, 0, 0, 0});
        writer.setPageSize(QPageSize(whole.size() * kPointsPerInch / kDotsPerInch, QPageSize::Point,
                                     source_.name, QPageSize::ExactMatch));
        written = paint(writer, picture);
    } else if (ending == "svg") {
        QSvgGenerator writer;
        writer.setOutputDevice(&file);
        writer.setTitle(source_.name);
        writer.setSize(whole.size().toSize());
        writer.setViewBox(whole);
        writer.setResolution(kDotsPerInch);
        written = paint(writer, picture);
    } else {
        QImage image = sharpImage(whole.size().toSize());
        written = paint(image, picture) && image.save(&file, "PNG");
    }
    if (!written || !file.commit())
        return "Cannot write " + path + ": " + file.errorString() + ".";
    return {};
}

void FastDrawing::askAndSave() const {
    QFileDialog dialog(&widget_, "Save " + source_.name);
    dialog.setObjectName("fileDialog");
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    QStringList kinds = {"Picture (*.png)", "Document (*.pdf)", "Drawing (*.svg)"};
    if (source_.numbers)
        kinds += "Numbers (*.csv)";
    dialog.setNameFilters(kinds);
    dialog.setDefaultSuffix("png");
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& filter) {
        dialog.setDefaultSuffix(filter.section('.', -1).remove(')'));
    });
    qt::fitToScreen(dialog);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    const QString path = dialog.selectedFiles().front();
    if (const QString fault = save(path); !fault.isEmpty())
        QMessageBox::warning(&widget_, source_.name, fault);
    else if (page_ != nullptr && !page_->released())
        page_->panel().tell(true, "Saved " + source_.name.toStdString(), path.toStdString());
}

void FastDrawing::tellOn(PageUi& page) {
    page_ = &page;
}

void FastDrawing::addTo(QMenu& menu) const {
    QObject::connect(menu.addAction("Copy"), &QAction::triggered, &widget_, [this] { copy(); });
    QObject::connect(menu.addAction("Save…"), &QAction::triggered, &widget_, [this] { askAndSave(); });
}

} // namespace vrk
