#pragma once

#include "sim/Socket.h"
#include "sim/SpiRegisterPart.h"

#include <cstdint>

namespace vrk::sim {

/// The two switched supplies of the sockets. U5, a one-wiper part on the SPI bus with chip select on P2.4,
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
    /// Where U5 sits.
    Socket& u5() { return u5_; }
    const Socket& u5() const { return u5_; }

    std::uint8_t code() const { return part_->registers().wiper(0); }
    double vcc() const { return vccOn_ ? level() : 0.0; }        ///< volts
    double vminus() const { return vminusOn_ ? -level() : 0.0; } ///< volts

  private:
    double level() const;
    void power(double volts);

    Socket u5_;
    const SpiRegisterPart* part_; ///< in u5_
    bool powered_ = false;
    bool selected_ = false;
    bool vccOn_ = false;
    bool vminusOn_ = false;
};

} // namespace vrk::sim
