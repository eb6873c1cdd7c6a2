#pragma once

#include <QObject>

#include <functional>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace vrk {

class ChannelBlock;
class PageUi;
class Plot;

/// The volts of each channel over its position, with the ideal line and the error below, in the dock's Plot
/// tab; the fields of a sweep stand in the tab's row. Belongs to the plot.
class ChannelPlot final : public QObject {
  public:
    /// \param inHand the channel that the user works on.
    ChannelPlot(PageUi& page, ChannelBlock& block, std::function<int()> inHand);
    Plot& plot() const { return *plot_; }
    /// Brings the plot into sight and the keyboard to the first field of the sweep.
    void prepareSweep();

  private:
    void makePlot();
    void makeTools();
    void addTool(const char* words, QWidget* tool);
    void watch();
    void add(int channel, int position, double volts);
    void clear();
    void showChannels();
    void showIdeal();
    void sweep();
    QString numbers() const;

    PageUi& page_;
    ChannelBlock& block_;
    std::function<int()> inHand_;
    Plot* plot_;
    QComboBox* channel_ = nullptr;
    QLineEdit* from_ = nullptr;
    QLineEdit* to_ = nullptr;
    QLineEdit* step_ = nullptr;
    QPushButton* sweep_ = nullptr;
    int taps_ = 0;
    int used_ = 0;
    double vcc_ = 0; ///< as last measured; 0: not measured yet, there is no ideal line then
};

} // namespace vrk
