#pragma once

#include "platform/hid/WireRecorder.h"
#include "platform/runtime/EventLoop.h"

#include <QAbstractTableModel>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <memory>
#include <optional>
#include <vector>

class QLabel;
class QPushButton;
class QTableView;

namespace vrk {

/// Reports that a page wants to be looked at, and what they came to.
struct WireExcerpt {
    QString title;    ///< "Row 010, pass 1"
    QString expected; ///< hexadecimal; empty: nothing was compared
    QString read;
    QString note;
    bool failed = false;
    std::vector<hid::WireEvent> reports{};
};

/// The reports of the last action: when, which way, their bytes and what they say.
class WireView final : public QWidget {
  public:
    /// Reports that are kept of one action; of a longer one the last.
    static constexpr std::size_t kMost = 1000;

    WireView(hid::WireRecorder& wire, EventLoop& events);
    ~WireView() override;
    /// The button in the row of the tab.
    QWidget* tools() const { return tools_; }
    /// Shows these reports in place of the last action's, until the next action moves some.
    void showExcerpt(const WireExcerpt& excerpt);
    /// Lines as they stand, tabs between the columns.
    QString text() const;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    class Model;
    class Head;
    std::size_t count() const { return excerpt_ ? excerpt_->reports.size() : reports_.size(); }
    const hid::WireEvent& shown(std::size_t row) const {
        return excerpt_ ? excerpt_->reports[row] : reports_[row];
    }
    Milliseconds shownStart() const;
    QString wordsOf(std::size_t row) const;
    void take(const hid::WireEvent& event);
    void showReports();

    EventLoop& events_;
    std::deque<hid::WireEvent> reports_;
    std::uint64_t dropped_ = 0;
    Milliseconds start_{0};
    std::weak_ptr<void> action_; ///< of the last report
    std::optional<WireExcerpt> excerpt_;
    Head* head_;
    Model* model_;
    QTableView* table_;
    QLabel* note_;
    QWidget* tools_;
    QTimer lag_;
    Subscription subscription_;
};

/// What a report says, in words: "I2C write of 2 bytes to 50: 02 3F". \param request what a reply answers;
/// nullptr if that is not known.
QString reportWords(const hid::WireEvent& event, const hid::WireEvent* request = nullptr);

} // namespace vrk
