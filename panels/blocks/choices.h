#pragma once

#include <array>
#include <optional>

namespace vrk {

/// Tap counts that the panels offer, in the order of their options, with the slider's tick distance.
struct TapChoice {
    int taps;
    int tick;
};
inline constexpr std::array<TapChoice, 8> kTapChoices = {
    {{16, 1}, {32, 2}, {64, 4}, {100, 5}, {128, 8}, {256, 16}, {512, 32}, {1024, 64}}};

/// Option of a tap count; nothing if none offers it.
constexpr std::optional<int> tapOption(int taps) {
    for (int option = 0; option < static_cast<int>(kTapChoices.size()); ++option)
        if (kTapChoices.at(static_cast<std::size_t>(option)).taps == taps)
            return option;
    return std::nullopt;
}

/// Channel counts in the order of their options.
inline constexpr std::array<int, 3> kChannelChoices = {1, 2, 4};

constexpr std::optional<int> channelOption(int channels) {
    for (int option = 0; option < static_cast<int>(kChannelChoices.size()); ++option)
        if (kChannelChoices.at(static_cast<std::size_t>(option)) == channels)
            return option;
    return std::nullopt;
}

} // namespace vrk
