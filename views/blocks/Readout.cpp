#include "views/blocks/Readout.h"

#include "panels/blocks/ChannelBlock.h"
#include "platform/qt/theme.h"
#include "views/workspace/Page.h"

#include <QLabel>

#include <algorithm>

namespace vrk {

using namespace qt;

/// Measures at 100%, and what the place makes of them.
struct Readout::Sizes {
    double position = 104; ///< height of the digits' face, in pixels
    double volts = 38;
    double hex = 24;
    double unit = 13;

    static constexpr double kAdvance = 0.603; ///< width of a digit of a fixed face against its height
    static constexpr double kLine = 1.17;     ///< height of a line
    static constexpr int kVoltsPlaces = 6;    ///< "10.000"

    double unitWidth() const { return 2.4 * unit; }
    double secondRow(int hexPlaces) const {
        return hex * kAdvance * hexPlaces + volts * kAdvance * kVoltsPlaces;
    }
    void scale(double by) {
        for (double* size : {&position, &volts, &hex})
            *size *= by;
        hex = std::max(hex, 0.8 * volts); // legible in small strips too
    }
};

Readout::Readout(PageUi& page, ChannelBlock& block, int channel)
    : position_(page.ui().value(block.lblPotRead[channel], "0000")),
      hex_(page.ui().value(block.lblPotReadhex[channel], "000")),
      volts_(page.ui().value(block.lblWiperVolts[channel], "00.000")),
      positionWord_(quietText("position")),
      hexUnit_(quietText("hex")),
      voltsUnit_(quietText("V")) {
    const QString number = QString::number(channel);
    position_->setAccessibleName("Position read, channel " + number);
    hex_->setAccessibleName("Position read, hexadecimal, channel " + number);
    volts_->setAccessibleName("Wiper volts, channel " + number);
    for (QLabel* label :
         std::initializer_list<QLabel*>{position_, hex_, volts_, positionWord_, hexUnit_, voltsUnit_}) {
        label->setParent(this);
        label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    for (QLabel* unit : {positionWord_, hexUnit_, voltsUnit_})
        unit->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
}

void Readout::setWide(bool wide) {
    wide_ = wide;
    setShown(*positionWord_, wide);
    // Upright the room that is left over is the list's.
    setMaximumHeight(wide ? QWIDGETSIZE_MAX : sizeHint().height());
    updateGeometry();
    place();
}

void Readout::setHighest(int position) {
    digits_ = static_cast<int>(QString::number(position).size());
    hexDigits_ = static_cast<int>(QString::number(position, 16).size());
    place();
}

QSize Readout::sizeHint() const {
    return {dp(wide_ ? 480 : 250), dp(wide_ ? 190 : 176)};
}

QSize Readout::minimumSizeHint() const {
    return {dp(120), dp(wide_ ? 110 : 84)};
}

Readout::Sizes Readout::sizes() const {
    Sizes all;
    if (wide_)
        all = {.position = 120, .volts = 34, .hex = 34, .unit = 16};
    for (double* size : {&all.position, &all.volts, &all.hex, &all.unit})
        *size *= dp(160) / 160.0;
    // Upright the digits are the same in every part, so that strips of 1024 and of 16 taps look alike.
    const int places = wide_ ? digits_ : 4;
    const double word = wide_ ? 6.0 * all.unit : 0.0;
    const double needed = std::max(all.position * Sizes::kAdvance * places + word,
                                   all.secondRow(hexDigits_) + 2 * all.unitWidth() + kUnit);
    const double high = (all.position + all.volts) * Sizes::kLine;
    all.scale(std::min({1.0, width() / needed, height() / high}));
    return all;
}

void Readout::place() {
    const Sizes all = sizes();
    const auto font = [](QLabel& label, double pixels, bool digits) {
        QFont face = digits ? valueFont() : textFont(1.0);
        face.setPixelSize(std::max(8, qRound(pixels)));
        label.setFont(face);
    };
    font(*position_, all.position, true);
    font(*hex_, all.hex, true);
    font(*volts_, all.volts, true);
    for (QLabel* unit : {positionWord_, hexUnit_, voltsUnit_})
        font(*unit, all.unit, false);
    const double line = Sizes::kLine;
    const int below = qRound(all.volts * line);
    // What is left over stands around the large digits.
    const int upper = height() - below;
    const int digitsHigh = qRound(all.position * line);
    const int digitsWide = qRound(all.position * Sizes::kAdvance * (wide_ ? digits_ : 4)) + 4;
    position_->setGeometry(width() - digitsWide, (upper - digitsHigh) / 2, digitsWide, digitsHigh);
    const int wordWide = positionWord_->sizeHint().width();
    positionWord_->setGeometry(position_->x() - wordWide - 2 * kUnit,
                               position_->geometry().center().y() - below / 2, wordWide, below);
    const auto unitWide = [](const QLabel& unit) { return unit.sizeHint().width(); };
    const int voltsWide = qRound(all.volts * Sizes::kAdvance * Sizes::kVoltsPlaces) + 4;
    const int hexWide = qRound(all.hex * Sizes::kAdvance * hexDigits_) + 4;
    const int top = height() - below;
    voltsUnit_->setGeometry(width() - unitWide(*voltsUnit_), top + below / 12, unitWide(*voltsUnit_), below);
    volts_->setGeometry(voltsUnit_->x() - kUnit / 2 - voltsWide, top, voltsWide, below);
    // Laid wide the hexadecimal stands nearer to the volts, else it begins at the strip's edge.
    const int hexAt = wide_ ? volts_->x() - 2 * kUnit - unitWide(*hexUnit_) - hexWide : 0;
    hex_->setAlignment((wide_ ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    hex_->setGeometry(hexAt, top + (wide_ ? 0 : below / 12), hexWide, below);
    hexUnit_->setGeometry(hexAt + hexWide + kUnit / 2, top + below / 12, unitWide(*hexUnit_), below);
}

void Readout::resizeEvent(QResizeEvent*) {
    place();
}

} // namespace vrk
