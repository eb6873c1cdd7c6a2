#pragma once

#include "views/workspace/Page.h"

#include <QPointer>
#include <QWidget>

#include <functional>

class QScrollArea;

namespace vrk {

/// The sections of a page beside it, or a strip with their titles. Where they do not fit, the lower ones fold
/// first; what the user has folded or unfolded stays so.
class Inspector final : public QWidget {
  public:
    Inspector();

    /// nullptr or a page without sections shows nothing. What stood there is taken out, not deleted.
    void setPage(PageUi* page);
    /// Takes the page's sections out, for another window.
    void release(PageUi& page);
    bool strip() const { return strip_; }
    void setStrip(bool strip);
    bool any() const;
    /// Folds and unfolds for the height that there is.
    void arrange();

    /// The user wants the strip, or the sections.
    std::function<void(bool strip)> onStrip;

    static int width();
    static int stripWidth();

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QPointer<PageUi> page_;
    QScrollArea* area_;
    bool strip_ = false;
};

} // namespace vrk
