#pragma once

#include "sim/I2cLines.h"
#include "sim/Part.h"
#include "sim/SpiLines.h"

#include <memory>

namespace vrk::sim {

/// A place for a part and its ends of the bus lines. Without a part, or without VCC on it, the lines are
/// left alone.
class Socket {
  public:
    /// A part in place of the one there; null empties the socket.
    void put(std::unique_ptr<Part> part);
    Part* part() { return part_.get(); }
    const Part* part() const { return part_.get(); }
    /// Whether the part has VCC.
    bool live() const { return part_ && part_->powered(); }

    /// Supplies and pins after a change; their bus lines are followed too.
    /// \param spiSelect level of the select as it reaches the socket.
    void follow(const Surroundings& now, bool spiSelect);
    void driveI2c(bool sda, bool scl);
    void driveSpi(const SpiLevels& levels);

    bool pullsSdaLow() const { return live() && i2c_.pullsLow(); }
    bool spiOutput() const { return live() && spi_.output(); }

  private:
    std::unique_ptr<Part> part_;
    I2cLines i2c_;
    SpiLines spi_;
};

} // namespace vrk::sim
