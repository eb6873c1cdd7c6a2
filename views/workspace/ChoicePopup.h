#pragma once

#include <QFrame>
#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

class QLineEdit;
class QListWidget;

namespace vrk {

/// A list that opens over the window: typing filters it, Enter or a click takes the row. Of parts, of
/// actions, of results.
class ChoicePopup final : public QFrame {
  public:
    struct Choice {
        QString text;
        QString key;     ///< at the right: the key that does the same, a time
        QString refusal; ///< why it cannot be taken now; empty if it can
        std::function<void()> act;
        bool failed = false; ///< marked as a failure
    };

    ChoicePopup(QWidget& over, const QString& name, const QString& hint, std::vector<Choice> choices);
    /// Opens with its corner there, within the window, and takes the keyboard.
    void openAt(const QPoint& global, int width);
    QListWidget& list() const { return *list_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void fill();
    void takeRow();

    std::vector<Choice> choices_;
    QLineEdit* filter_;
    QListWidget* list_;
    QPointer<QWidget> before_; ///< had the keyboard
};

} // namespace vrk
