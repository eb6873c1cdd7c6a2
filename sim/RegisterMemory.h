#pragma once

#include "sim/Part.h"

#include <cstdint>
#include <vector>

namespace vrk::sim {

/// Where a register part keeps what: wipers at registers 0 up, then general-purpose bytes, then the access
/// control register (ACR).
struct RegisterLayout {
    int wipers = 1;
    int taps = 128; ///< a power of two up to 256
    std::uint8_t acr = 2;

    /// The non-volatile cells by register number, every wiper stored at mid-scale.
    std::vector<NonvolatileMemory::Cell> cells() const;
};

/// The registers of a register part, whichever bus leads to them.
///
/// A wiper is a pair: the volatile register WR, which sets the switches, and the non-volatile IVR behind it,
/// recalled into WR when power comes. ACR bit 7 chooses which of the two an access meets: 1 the WR alone; 0
/// the IVR, where a write loads the WR as well. ACR bit 6 at 0 shuts the wipers down. The ACR is volatile.
class RegisterMemory {
  public:
    /// \param stored the layout's cells. Must outlive the registers.
    RegisterMemory(const RegisterLayout& layout, NonvolatileMemory& stored)
        : layout_(layout), stored_(stored), wipers_(static_cast<std::size_t>(layout.wipers), 0) {}

    bool exists(std::uint8_t reg) const { return reg <= layout_.acr; }
    /// \return FF for a register that does not exist.
    std::uint8_t read(std::uint8_t reg) const;
    /// Values are cut to the register's width. A missed store of a position leaves the IVR, and the wiper
    /// falls back to it. \return false: no such register.
    bool write(std::uint8_t reg, std::uint8_t value);

    void powerUp();
    void powerDown();

    bool shutDown() const { return (acr_ & 0x40) == 0; }
    /// Position over taps; 0 for a channel that does not exist. Looks at no power or shutdown.
    double ratio(int channel) const;
    std::uint8_t wiper(int channel) const { return wipers_.at(static_cast<std::size_t>(channel)); }
    void describe(PartState& state) const;

  private:
    bool isWiper(std::uint8_t reg) const { return reg < wipers_.size(); }
    std::uint8_t stored(std::uint8_t reg) const { return static_cast<std::uint8_t>(stored_.read(reg)); }

    RegisterLayout layout_;
    NonvolatileMemory& stored_;
    std::vector<std::uint8_t> wipers_;
    std::uint8_t acr_ = 0;
};

} // namespace vrk::sim
