#pragma once

#include <QKeySequence>
#include <QObject>

#include <functional>
#include <map>

class QShortcut;
class QWidget;

namespace vrk {

/// The keys of one window. Which of the things in it a key is for is decided when it is pressed, so that the
/// page and the trace may both have an Esc.
class KeyTable final : public QObject {
  public:
    explicit KeyTable(QWidget& window);
    void add(const QKeySequence& key);
    std::function<void(const QKeySequence& key)> pressed;

  private:
    QWidget& window_;
    std::map<QKeySequence, QShortcut*> keys_;
};

} // namespace vrk
