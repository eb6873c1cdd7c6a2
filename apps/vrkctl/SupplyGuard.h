#pragma once

#include "platform/hid/WireRecorder.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vrk {

/// Knows from the wire on which boards a supply is on, and switches it off at the end whatever else has
/// broken: it needs neither panels nor events nor the link's handles, one report a board alone.
class SupplyGuard {
  public:
    explicit SupplyGuard(hid::WireRecorder& wire);
    ~SupplyGuard();
    SupplyGuard(const SupplyGuard&) = delete;
    SupplyGuard& operator=(const SupplyGuard&) = delete;

    /// The supplies stay as they are when this ends.
    void leaveAsTheyAre() { leave_ = true; }

  private:
    void look(const hid::WireEvent& event);
    bool switchOff(const std::string& path, std::uint8_t port2) noexcept;

    hid::WireRecorder& wire_;
    std::map<std::string, std::uint8_t> port2_; ///< by the board's path: what was last written to P2
    bool leave_ = false;
    Subscription events_;
};

} // namespace vrk
