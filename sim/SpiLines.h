#pragma once

#include <cstdint>

namespace vrk::sim {

class Part;

/// Levels of the three SPI lines that the host drives.
struct SpiLevels {
    bool select = true; ///< low selects
    bool clock = false;
    bool data = false;
};

/// A part's end of the SPI lines: turns their edges into frames, bytes and steps, whether the controller's
/// bus port or the host's own port writes moved them. Data is taken at the clock's rise and given at its
/// fall, most significant bit first; the clock may rest at either level.
class SpiLines {
  public:
    /// New levels; the part hears of what they mean.
    void follow(const SpiLevels& levels, Part& part);
    /// As power leaves it: not selected until the select falls.
    void reset(SpiLevels levels);
    void restart() { reset(levels_); }
    /// Level of the part's data output; low where it does not drive the line.
    bool output() const { return selected_ && ((out_ >> (7 - outBits_)) & 1) != 0; }

  private:
    void clockRose(Part& part);
    void clockFell(Part& part);

    SpiLevels levels_;
    bool selected_ = false;
    bool stepping_ = false; ///< the clock that now is high belongs to a step
    std::uint8_t in_ = 0;
    std::uint8_t out_ = 0;
    int bits_ = 0; ///< of the byte coming in
    int outBits_ = 0;
};

} // namespace vrk::sim
