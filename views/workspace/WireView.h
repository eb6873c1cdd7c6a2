#pragma once

#include "platform/hid/WireRecorder.h"
#include "platform/runtime/EventLoop.h"

#include <QAbstractTableModel>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <memory>

class QLabel;
class QPushButton;
class QTableView;

namespace vrk {

/// The reports of the last action: when, which way, their bytes and what they say.
class WireView final : public QWidget {
  public:
    /// Reports that are kept of one action; of a longer one the last.
    static constexpr std::size_t kMost = 1000;

    WireView(hid::WireRecorder& wire, EventLoop& events);
    ~WireView() override;
    /// The button in the row of the tab.
    QWidget* tools() const { return tools_; }
    /// Lines as they stand, tabs between the columns.
    QString text() const;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    class Model;
    void take(const hid::WireEvent& event);
    void showReports();

    EventLoop& events_;
    std::deque<hid::WireEvent> reports_;
    std::uint64_t dropped_ = 0;
    Milliseconds start_{0};
    std::weak_ptr<void> action_; ///< of the last report
    Model* model_;
    QTableView* table_;
    QLabel* note_;
    QWidget* tools_;
    QTimer lag_;
    Subscription subscription_;
};

/// What a report says, in words: "I2C write of 2 bytes to 50: 02 3F".
QString reportWords(const hid::WireEvent& event);

} // namespace vrk
