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
///   with the data byte behind. A read answers in the frame that follows: its command, then the data.
///
/// Pin P1.2 is /SHDN, as on the I2C parts.
class SpiRegisterPart final : public Part {
  public:
    /// \param id the ID byte with all address pins low; none: framing without an ID.
    SpiRegisterPart(std::string name, const RegisterLayout& layout, std::optional<std::uint8_t> id)
        : Part(std::move(name), layout.cells()), layout_(layout), registers_(layout, memory()), id_(id) {}

    void spiSelect(bool low) override;
    std::uint8_t spiNext() const override;
    void spiTake(std::uint8_t in) override;

    double wiperRatio(int channel) const override;
    const RegisterMemory& registers() const { return registers_; }

  protected:
    void onPowerUp() override;
    void onPowerDown() override { registers_.powerDown(); }
    void describe(PartState& state) const override { registers_.describe(state); }

  private:
    struct Access {
        bool write = false;
        std::uint8_t reg = 0;
    };
    std::optional<Access> decode(std::uint8_t command) const;
    void takeWithId(std::uint8_t in);
    void takeWithoutId(std::uint8_t in);

    RegisterLayout layout_;
    RegisterMemory registers_;
    std::optional<std::uint8_t> id_;
    bool listening_ = false;
    int place_ = 0; ///< of the next byte since chip select fell
    std::uint8_t command_ = 0;
    std::optional<Access> access_;
    std::uint8_t out_ = 0;               ///< what the shift register gives in the next place
    std::optional<std::uint8_t> answer_; ///< in the second place of the next frame of two
};

} // namespace vrk::sim
