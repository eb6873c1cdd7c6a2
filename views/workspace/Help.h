#pragma once

#include <QWidget>

#include <functional>
#include <vector>

class QComboBox;
class QLabel;
class QLineEdit;
class QTextBrowser;

namespace vrk {

/// The manual beside the page: its headings to choose from, a search, and the way back.
class Help final : public QWidget {
  public:
    Help();
    /// Opens the manual at the heading that holds `heading`, or at its start.
    void showPage(const QString& heading);
    /// \param most that there is for it; 420 at 100% where there is more.
    void setRoom(int most);
    QTextBrowser& browser() const { return *browser_; }

    std::function<void()> onClose;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void read();
    void go(int position);
    void search();

    QComboBox* contents_;
    QLineEdit* find_;
    QLabel* outcome_;
    QTextBrowser* browser_;
    std::vector<int> headings_; ///< places in the text, as the contents list them
    std::vector<int> before_;   ///< places to go back to
};

} // namespace vrk
