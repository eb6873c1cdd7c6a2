#pragma once

#include "sim/Part.h"
#include "sim/RegisterMemory.h"

#include <optional>

namespace vrk::sim {

/// A potentiometer with registers on SPI. The output is the tail of the input shift register, so a byte comes
/// back one place later unless data is due in its place. Two framings:
///
/// - With an ID byte: ID, then C0 + register to write or B0 + register to read, then the data byte. A read
///   answers from the third byte on. A frame with another ID is left alone.
/// - Without: frames of two bytes, C0 + register or 60 (ACR) to write, 80 + register or 20 (ACR) to read,
/// with
///   the data byte behind. A read answers in the frame that follows: its command, then the data.
///
/// Pin P1.2 is /SHDN, as on the I2C parts.
class SpiRegisterPart final : public Part {
  public:
    /// \param id the ID byte with all address pins low; none: framing without an ID.
    SpiRegisterPart(std::string name, const RegisterLayout& layout, std::optional<std::uint8_t> id)
        : Part(std::move(name)), layout_(layout), memory_(layout), id_(id) {}

    void spiSelect(bool low) override;
    std::uint8_t spiExchange(std::uint8_t in) override;

    double wiperRatio(int channel) const override;
    PartState state() const override { return memory_.state(name()); }
    const RegisterMemory& memory() const { return memory_; }

  protected:
    void onPowerUp() override;
    void onPowerDown() override { memory_.powerDown(); }

  private:
    struct Access {
        bool write = false;
        std::uint8_t reg = 0;
    };
    std::optional<Access> decode(std::uint8_t command) const;
    std::uint8_t exchangeWithId(std::uint8_t in);
    std::uint8_t exchangeWithoutId(std::uint8_t in);

    RegisterLayout layout_;
    RegisterMemory memory_;
    std::optional<std::uint8_t> id_;
    bool selected_ = false;
    int place_ = 0;             ///< of the next byte since chip select fell
    std::uint8_t previous_ = 0; ///< what the shift register still holds: the byte, or the frame, before
    std::uint8_t command_ = 0;
    std::optional<Access> access_;
    std::optional<std::uint8_t> answer_; ///< for the next frame of two
};

} // namespace vrk::sim
