#pragma once

#include <QWidget>

class QLabel;

namespace vrk {

class ChannelBlock;
class PageUi;

namespace qt {
class ValueLabel;
}

/// What a channel reads, as large as the place allows: the position, the same in hexadecimal, the volts. Each
/// is right-aligned in a place for its longest value, so that digits never move.
class Readout final : public QWidget {
  public:
    Readout(PageUi& page, ChannelBlock& block, int channel);
    /// One channel alone has more room: larger digits and a word beside them.
    void setWide(bool wide);
    /// Room for the digits of every position up to this one.
    void setHighest(int position);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    struct Sizes;
    Sizes sizes() const;
    void place();

    bool wide_ = false;
    int digits_ = 3;
    int hexDigits_ = 2;
    qt::ValueLabel* position_;
    qt::ValueLabel* hex_;
    qt::ValueLabel* volts_;
    QLabel* positionWord_;
    QLabel* hexUnit_;
    QLabel* voltsUnit_;
};

} // namespace vrk
