#pragma once

#include "views/workspace/Page.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>

namespace vrk {

class Inspector;
class KeyTable;

/// A page that was taken out of the workspace, with its inspector and its plot: for a second screen. Closing
/// it puts the page back.
class PageWindow final : public QMainWindow {
  public:
    explicit PageWindow(PageUi& page);
    ~PageWindow() override;

    PageUi* page() const { return page_; }
    KeyTable& keys() { return *keys_; }
    /// Lets the page's widgets go, before it is put back or dropped.
    void giveBack();

    std::function<void()> onClose;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    QPointer<PageUi> page_;
    Inspector* inspector_;
    KeyTable* keys_;
};

} // namespace vrk
