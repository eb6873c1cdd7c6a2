#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <random>

namespace vrk::sim {

inline constexpr double kReferenceVolts = 3.3;
inline constexpr int kFullScale = 1023;

/// Channel codes of the multiplexer.
namespace channel {
inline constexpr std::uint8_t kVin0 = 0x06, kVin3 = 0x09, kVin4 = 0x0A, kLastPin = 0x0F;
inline constexpr std::uint8_t kTemperature = 0x1E, kVdd = 0x1F;          ///< as positive input
inline constexpr std::uint8_t kNegativeReference = 0x1E, kGround = 0x1F; ///< as negative input
} // namespace channel

/// The controller's 10-bit converter behind its multiplexer. A conversion runs on what the sampling
/// capacitor took while the conversion before it ran: the first one after a change of channel is still of
/// the channel before.
class Converter {
  public:
    /// Volts at the pin or source with this code.
    using Source = std::function<double(std::uint8_t code)>;

    explicit Converter(std::uint32_t seed) : random_(seed) {}

    /// As power leaves it: disabled, the capacitor on channel 00 against ground.
    void reset();
    void enable(bool on) { enabled_ = on; }
    bool enabled() const { return enabled_; }

    /// One conversion of the positive against the negative input, clamped to 0 and 1023. Disabled, it gives
    /// the last count again. \param noise largest error, in counts.
    int convert(std::uint8_t positive, std::uint8_t negative, const Source& volts, int noise);

  private:
    struct Inputs {
        std::uint8_t positive = 0;
        std::uint8_t negative = channel::kGround;
    };
    bool enabled_ = false;
    Inputs held_; ///< what the sampling capacitor was connected to last
    int last_ = 0;
    std::mt19937 random_;
};

/// The 24-bit converter of the controller card: a file of byte registers and a signed result of full scale
/// 2.5 V.
class ExternalConverter {
  public:
    void reset() { registers_.fill(0); }
    void write(std::uint8_t reg, std::uint8_t value) { registers_[reg] = value; }
    std::uint8_t read(std::uint8_t reg) const { return registers_[reg]; }
    /// -800000h to 7FFFFFh.
    static std::int32_t convert(double volts);

  private:
    std::array<std::uint8_t, 256> registers_{};
};

} // namespace vrk::sim
