#pragma once

#include <QMainWindow>

class QTextBrowser;
class QWidget;

namespace vrk {

/// Shows the manual. One for the whole program.
class HelpWindow final : public QMainWindow {
  public:
    /// Opens the manual at the heading that holds `heading`, or at its start. \param near window that asked.
    static HelpWindow& showPage(QWidget& near, const QString& heading);
    QTextBrowser& browser() const { return *browser_; }

  private:
    HelpWindow();
    void goTo(const QString& heading);

    QTextBrowser* browser_;
};

} // namespace vrk
