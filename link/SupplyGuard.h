#pragma once

#include "platform/hid/WireRecorder.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace vrk {

/// Knows from the wire on which boards a supply is on, and switches it off at the end whatever else has
/// broken: it needs neither panels nor events nor the link's handles, one report a board alone.
class SupplyGuard {
  public:
    /// \param tell says that a supply may still be on.
    SupplyGuard(hid::WireRecorder& wire, std::function<void(const std::string& words)> tell);
    ~SupplyGuard();
    SupplyGuard(const SupplyGuard&) = delete;
    SupplyGuard& operator=(const SupplyGuard&) = delete;

    /// The supplies stay as they are when this ends.
    void leaveAsTheyAre() { leave_ = true; }

  private:
    void look(const hid::WireEvent& event);
    bool switchOff(const std::string& path, std::uint8_t port2) noexcept;

    hid::WireRecorder& wire_;
    std::function<void(const std::string& words)> tell_;
    std::map<std::string, std::uint8_t> port2_; ///< by the board's path: what was last written to P2
    bool leave_ = false;
    Subscription events_;
};

} // namespace vrk
