#pragma once

#include "platform/hid/WireRecorder.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace vrk {

/// Knows from the wire on which boards a supply is on or a bus has lost its pins, and puts both right at the
/// end whatever else has broken: it needs neither panels nor events nor the link's handles, one report each.
class SupplyGuard {
  public:
    /// \param tell says that a supply may still be on.
    SupplyGuard(hid::WireRecorder& wire, std::function<void(const std::string& words)> tell);
    ~SupplyGuard();
    SupplyGuard(const SupplyGuard&) = delete;
    SupplyGuard& operator=(const SupplyGuard&) = delete;

    /// Supplies and pins stay as they are when this ends.
    void leaveAsTheyAre() { leave_ = true; }

  private:
    /// What was last written to a board's registers.
    struct Left {
        std::uint8_t port2 = 0;
        std::uint8_t crossbar = 0xFF;
    };
    void look(const hid::WireEvent& event);
    bool putRight(const std::string& path, const Left& left) noexcept;

    hid::WireRecorder& wire_;
    std::function<void(const std::string& words)> tell_;
    std::map<std::string, Left> left_; ///< by the board's path
    bool leave_ = false;
    Subscription events_;
};

} // namespace vrk
