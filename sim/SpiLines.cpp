#include "sim/SpiLines.h"

#include "sim/Part.h"

#include <utility>

namespace vrk::sim {

void SpiLines::reset(SpiLevels levels) {
    *this = {};
    levels_ = levels;
}

void SpiLines::follow(const SpiLevels& levels, Part& part) {
    const SpiLevels before = std::exchange(levels_, levels);
    if (before.select != levels.select) {
        reset(levels);
        selected_ = !levels.select;
        part.spiSelect(selected_);
        out_ = selected_ ? part.spiNext() : 0;
    } else if (selected_ && !before.clock && levels.clock) {
        clockRose(part);
    } else if (selected_ && before.clock && !levels.clock) {
        clockFell(part);
    }
}

void SpiLines::clockRose(Part& part) {
    stepping_ = part.takesSteps();
    if (stepping_) {
        return;
    }
    in_ = static_cast<std::uint8_t>((in_ << 1) | (levels_.data ? 1 : 0));
    if (++bits_ == 8) {
        part.spiTake(in_);
    }
}

void SpiLines::clockFell(Part& part) {
    if (stepping_) {
        part.step(levels_.data);
        return;
    }
    if (bits_ == 8) {
        bits_ = 0;
        out_ = part.spiNext();
    }
    outBits_ = bits_;
}

} // namespace vrk::sim
