#include "platform/qt/theme.h"
#include "views/plot/Plot.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QMessageBox>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>

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

} // namespace

void Plot::copy() const {
    QApplication::clipboard()->setPixmap(const_cast<Plot*>(this)->grab());
}

QString Plot::save(const QString& path) const {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return "Cannot write " + path + ": " + file.errorString() + ".";
    const QString ending = path.section('.', -1).toLower();
    const QRectF whole(QPointF(0, 0), QSizeF(size().expandedTo({640, 400})));
    const auto draw = [&](QPainter& painter) {
        painter.fillRect(whole, palette().color(QPalette::Window));
        picture(whole).paint(painter, palette());
    };
    bool written = false;
    if (ending == "csv") {
        written = file.write(model_.csv().toUtf8()) >= 0;
    } else if (ending == "pdf") {
        QPdfWriter writer(&file);
        writer.setTitle(name_);
        writer.setResolution(kDotsPerInch);
        writer.setPageMargins({0, 0, 0, 0});
        writer.setPageSize(QPageSize(whole.size() * kPointsPerInch / kDotsPerInch, QPageSize::Point, name_,
                                     QPageSize::ExactMatch));
        written = paint(writer, draw);
    } else if (ending == "svg") {
        QSvgGenerator writer;
        writer.setOutputDevice(&file);
        writer.setTitle(name_);
        writer.setSize(whole.size().toSize());
        writer.setViewBox(whole);
        writer.setResolution(kDotsPerInch);
        written = paint(writer, draw);
    } else {
        constexpr int kFiner = 2; // sharp in a report too
        QImage image(whole.size().toSize() * kFiner, QImage::Format_RGB32);
        image.setDevicePixelRatio(kFiner);
        written = paint(image, draw) && image.save(&file, "PNG");
    }
    if (!written || !file.commit())
        return "Cannot write " + path + ": " + file.errorString() + ".";
    return {};
}

void Plot::askAndSave() {
    QFileDialog dialog(this, "Save the plot");
    dialog.setObjectName("fileDialog");
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilters({"Picture (*.png)", "Document (*.pdf)", "Drawing (*.svg)", "Numbers (*.csv)"});
    dialog.setDefaultSuffix("png");
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&dialog](const QString& filter) {
        dialog.setDefaultSuffix(filter.section('.', -1).remove(')'));
    });
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    if (const QString fault = save(dialog.selectedFiles().front()); !fault.isEmpty())
        QMessageBox::warning(this, name_, fault);
}

} // namespace vrk
