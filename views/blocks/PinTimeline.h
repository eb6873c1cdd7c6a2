#pragma once

#include "platform/hid/WireRecorder.h"
#include "platform/runtime/EventLoop.h"
#include "views/FastDrawing.h"

#include <QString>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QMenu;

namespace vrk {

/// Levels of some pins over the time of the last action that moved one of them. Taken from the port writes
/// that went out on the wire, so that it holds what the board was told, whoever told it.
class PinTimeline {
  public:
    struct Pin {
        QString name;
        int port = 0; ///< 0 to 2
        int bit = 0;
    };
    struct Edge {
        std::size_t pin = 0;
        bool high = false; ///< from now on
        Milliseconds at{0};
    };
    /// Edges that are kept of one action; of a longer one the last.
    static constexpr std::size_t kMost = 2000;

    /// \param wire nullptr: nothing is heard.
    PinTimeline(hid::WireRecorder* wire, EventLoop& events, std::vector<Pin> pins);

    const std::vector<Pin>& pins() const { return pins_; }
    const std::deque<Edge>& edges() const { return edges_; }
    /// Of the action, those that are not kept any more included.
    std::size_t count() const { return count_; }
    /// Now; nothing before the first write of its port.
    std::optional<bool> level(std::size_t pin) const { return now_.at(pin); }
    /// Ahead of the first edge that is kept.
    std::optional<bool> before(std::size_t pin) const { return before_.at(pin); }
    /// Edges kept of one pin in one direction.
    int edgesOf(std::size_t pin, bool high) const;

    /// Hears of each edge; every level is up to date by then, also of the other pins of its port.
    [[nodiscard]] Subscription observe(std::function<void(const Edge&)> observer) {
        return moved_.connect(std::move(observer));
    }

  private:
    void take(const hid::WireEvent& event);
    void add(const Edge& edge);

    EventLoop& events_;
    std::vector<Pin> pins_;
    std::vector<std::optional<bool>> now_;
    std::vector<std::optional<bool>> before_;
    std::deque<Edge> edges_;
    std::size_t count_ = 0;
    std::weak_ptr<void> action_; ///< of the last edge
    Signal<const Edge&> moved_;
    Subscription subscription_;
};

/// The timeline as a timing picture: one lane a pin, its falling edges numbered below where they count. Its
/// menu and Ctrl+C copy it and save it, as those of a plot do.
class TimingPicture final : public QWidget {
  public:
    /// \param counted pins whose falling edges are numbered.
    TimingPicture(std::unique_ptr<PinTimeline> timeline, std::vector<std::size_t> counted);
    PinTimeline& timeline() { return *timeline_; }
    const PinTimeline& timeline() const { return *timeline_; }
    /// Pins in sight, from top to bottom.
    void setLanes(std::vector<std::size_t> lanes);
    /// What the edges come to, in words; for a screen reader.
    void setWords(const QString& words);
    FastDrawing& drawing() { return drawing_; }
    /// Called when the picture is brought up to date, ten times a second at most.
    std::function<void()> onShown;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    struct Scale;
    Scale scaleOf(const QRectF& area) const;
    void paint(QPainter& painter, const QRectF& area) const;
    void paintNumbers(QPainter& painter, const Scale& scale) const;
    void paintLane(QPainter& painter, const Scale& scale, std::size_t lane) const;

    std::unique_ptr<PinTimeline> timeline_;
    std::vector<std::size_t> counted_;
    std::vector<std::size_t> lanes_;
    QTimer lag_;
    FastDrawing drawing_;
    QMenu* menu_;
    Subscription edges_;
};

} // namespace vrk
