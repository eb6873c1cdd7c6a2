#pragma once

#include "sim/SpiRegisterPart.h"

#include <cstdint>

namespace vrk::sim {

/// The two switched supplies of the socket. U5, a one-wiper part on the SPI bus with chip select on P2.4,
/// sets the level of both; P2.5 switches VCC on, P2.6 V-. U5's select is gated with that of the SPI port:
/// each transfer while P2.4 is low is a frame.
class Supplies {
  public:
    Supplies();

    /// The board's own power. U5 recalls its stored code.
    void powerUp();
    void powerDown();

    /// \param pins levels of the ports.
    void follow(const PinLevels& pins);

    /// Whether P2.4 gives the SPI bus to U5.
    bool selected() const { return selected_; }
    Part& u5() { return u5_; }

    std::uint8_t code() const { return u5_.memory().wiper(0); }
    double vcc() const { return vccOn_ ? level() : 0.0; }        ///< volts
    double vminus() const { return vminusOn_ ? -level() : 0.0; } ///< volts

  private:
    double level() const;

    SpiRegisterPart u5_;
    bool powered_ = false;
    bool selected_ = false;
    bool vccOn_ = false;
    bool vminusOn_ = false;
};

} // namespace vrk::sim
