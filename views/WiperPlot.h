#pragma once

#include "platform/runtime/Signal.h"

#include <QPointF>
#include <QWidget>

#include <array>
#include <map>

namespace vrk {

class PageUi;
class WiperPanel;

/// Wiper volts over position, one line a channel, from the positions that were read.
class WiperPlot final : public QWidget {
  public:
    static constexpr int kChannels = 4;

    explicit WiperPlot(QWidget* parent = nullptr);

    /// \param maximum highest position of the axis.
    void setPositions(int maximum);
    int positions() const { return maximum_; }
    /// A new reading of a position replaces the one before.
    void add(int channel, int position, double volts);
    void clear();
    int pointCount() const;
    /// "channel,position,volts" and a line a point.
    QString csv() const;

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    double highestVolts() const;

    int maximum_ = 128;
    std::array<std::map<int, double>, kChannels> points_;
};

/// The picture with its buttons, in the dock's Plot tab.
class WiperPlotView final : public QWidget {
  public:
    WiperPlotView(PageUi& owner, WiperPanel& panel);
    WiperPlot& plot() const { return *plot_; }
    /// As a picture (.png) or as numbers (.csv), by the name's ending. \return false if the file could not be
    /// written.
    bool save(const QString& path) const;

  private:
    void copy() const;
    void askAndSave();

    WiperPlot* plot_;
    QString title_;
};

} // namespace vrk
