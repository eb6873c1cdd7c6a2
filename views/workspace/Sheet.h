#pragma once

#include "views/workspace/Page.h"

#include <QPointer>
#include <QWidget>

namespace vrk {

/// A page that lies over the page that opened it, which shows dimmed at its edges until the sheet goes.
class Sheet final : public QWidget {
  public:
    Sheet(PageUi& sheet, PageUi& under);
    ~Sheet() override;

    PageUi* sheet() const { return sheet_; }
    PageUi* under() const { return under_; }
    /// Lets the sheet's page go; the rest is an empty veil.
    void giveBack();

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QPointer<PageUi> sheet_;
    QPointer<PageUi> under_;
};

} // namespace vrk
