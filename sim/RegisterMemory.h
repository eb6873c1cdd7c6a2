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
};

/// The memory of a register part, whichever bus leads to it.
///
/// A wiper is a pair: the volatile register WR, which sets the switches, and the non-volatile IVR behind it,
/// recalled into WR when power comes. ACR bit 7 chooses which of the two an access meets: 1 the WR alone; 0
/// the IVR, where a write loads the WR as well. ACR bit 6 at 0 shuts the wipers down. The ACR is volatile.
class RegisterMemory {
  public:
    /// Leaves the factory with every wiper stored at mid-scale.
    explicit RegisterMemory(const RegisterLayout& layout);

    bool exists(std::uint8_t reg) const { return reg <= layout_.acr; }
    /// \return FF for a register that does not exist.
    std::uint8_t read(std::uint8_t reg) const;
    /// Values are cut to the register's width. A missed store of a position leaves the IVR, and the wiper
    /// falls back to it. \param guard null: no store is missed. \return false: no such register.
    bool write(std::uint8_t reg, std::uint8_t value, StoreGuard* guard);

    void powerUp();
    void powerDown();

    bool shutDown() const { return (acr_ & 0x40) == 0; }
    /// Position over taps; 0 for a channel that does not exist. Looks at no power or shutdown.
    double ratio(int channel) const;
    std::uint8_t wiper(int channel) const { return wipers_.at(static_cast<std::size_t>(channel)); }
    PartState state(const std::string& name) const;

  private:
    bool isWiper(std::uint8_t reg) const { return reg < wipers_.size(); }

    RegisterLayout layout_;
    std::vector<std::uint8_t> wipers_;
    std::vector<std::uint8_t> stored_; ///< IVRs, then the general-purpose bytes: by register number
    std::uint8_t acr_ = 0;
    int nonvolatileWrites_ = 0;
};

} // namespace vrk::sim
