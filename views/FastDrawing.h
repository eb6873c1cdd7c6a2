#pragma once

#include <QPointer>
#include <QRectF>
#include <QSize>
#include <QString>

#include <functional>

class QMenu;
class QPainter;
class QWidget;

namespace vrk {

class PageUi;

/// A widget's picture for everywhere else: the clipboard, a report, a drawing program. Plots and timing
/// pictures share it, so that each offers the same entries and writes the same kinds of file.
class FastDrawing {
  public:
    struct Source {
        QString name; ///< title of the document and of the dialog: "Wiper volts over position"
        /// Draws the picture into the area, which has its ground already.
        std::function<void(QPainter& painter, const QRectF& area)> paint;
        /// What the picture was made of, as CSV; empty where there is nothing but the picture.
        std::function<QString()> numbers{};
        QSize least{640, 400}; ///< on paper a picture is not smaller than this, however small its dock is
    };
    /// \param widget gives size, palette and dialogs; it outlives the drawing.
    FastDrawing(QWidget& widget, Source source);

    void copy() const;
    /// By the name's ending: .pdf, .svg, .csv where there are numbers, else a PNG. A file is replaced whole
    /// or not at all. \return what went wrong, empty if nothing did.
    QString save(const QString& path) const;
    void askAndSave() const;
    /// \param page tells there what was saved.
    void tellOn(PageUi& page);
    /// Copy and save; the caller adds what it has of its own.
    void addTo(QMenu& menu) const;

  private:
    void draw(QPainter& painter, const QRectF& area) const;

    QWidget& widget_;
    Source source_;
    QPointer<PageUi> page_;
};

} // namespace vrk
