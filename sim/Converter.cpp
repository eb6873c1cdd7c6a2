#include "sim/Converter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vrk::sim {

void Converter::reset() {
    enabled_ = false;
    held_ = {};
    last_ = 0;
}

int Converter::convert(std::uint8_t positive, std::uint8_t negative, const Source& volts, int noise) {
    if (!enabled_) {
        return last_;
    }
    const Inputs inputs = std::exchange(held_, {positive, negative});

    double low = 0.0;
    if (inputs.negative == channel::kNegativeReference) {
        low = kReferenceVolts;
    } else if (inputs.negative != channel::kGround) {
        low = volts(inputs.negative);
    }
    const double scaled = (volts(inputs.positive) - low) / kReferenceVolts * kFullScale;
    int count = static_cast<int>(std::lround(std::clamp<double>(scaled, 0.0, kFullScale)));
    if (noise > 0) {
        const auto span = static_cast<std::uint32_t>(2 * noise + 1);
        count = std::clamp(count + static_cast<int>(random_() % span) - noise, 0, kFullScale);
    }
    last_ = count;
    return count;
}

std::int32_t ExternalConverter::convert(double volts) {
    constexpr double kSpan = 8388607.0;
    return static_cast<std::int32_t>(std::lround(std::clamp(volts / 2.5 * kSpan, -kSpan - 1.0, kSpan)));
}

} // namespace vrk::sim
