#pragma once

#include "platform/files/RegisterMap.h"
#include "platform/hid/HidHost.h"
#include "platform/runtime/Signal.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>

namespace vrk {

/// What of the reports on the wire stores something in a part, as the panel is set up for it.
struct StoreRules {
    enum class Pins {
        None,
        UpDown,    ///< /CS of part #1 or #2 (P0.6, P0.7) rising while /INC (P1.1) is high
        PushButton ///< /STORE (P0.7) falling
    };
    PartBus bus = PartBus::Pins;
    PartProtocol protocol = PartProtocol::None;
    Pins pins = Pins::None;
    /// Slave byte or ID; none: SPI frames without an ID.
    std::optional<int> address{};
    int wipers = 0; ///< register parts: registers 0 up, stored unless the control register says volatile
    /// Number of the control or status register; on SPI the command that writes it. None: the part has none.
    std::optional<int> control{};
    int firstWrite = 0xC0; ///< SPI register parts: command that writes register 0
};

/// Counts the non-volatile writes of one part by register, from what was sent to it: whoever sent it. A write
/// counts unless it is known that the part did not take it: it wears its memory also where the reply was
/// lost.
class NonvolatileWrites {
  public:
    static constexpr int kDefaultBudget = 10000;

    /// Another part: counts begin anew.
    void restart();
    /// One report that the board took. \param status of an I2C transfer: 8 good, 1 not acknowledged, 2 no
    /// reply. \param pinsCount false: pins that move are another panel's.
    void look(const hid::Report& report, int status, const StoreRules& rules, bool pinsCount);
    /// The part lost its supply without a report: its board was unplugged.
    void powerLost();

    int total() const { return total_; }
    /// Registers of a part with instructions or banks as "DR1.3", others as two hexadecimal digits, parts
    /// without a bus as "part 1" and "part 2".
    const std::map<std::string, int>& byRegister() const { return counts_; }
    /// The writes behind one wiper.
    int ofWiper(int channel) const;

    /// Whether a write of a wiper, as things stand at the part, goes to its non-volatile memory.
    bool wiperWritesAreStored(const StoreRules& rules) const;

    int budget() const { return budget_; }
    /// \param budget at least 1. Passing it may be warned of once more.
    void setBudget(int budget);
    /// True, once for a part and a budget, if `more` writes on top of those so far would pass the budget.
    bool shouldWarn(int more);

    /// A count, the part or the budget has changed.
    [[nodiscard]] Subscription observe(std::function<void()> observer) {
        return changed_.connect(std::move(observer));
    }

  private:
    using Bytes = std::span<const std::uint8_t>;

    void lookAtPort(std::uint8_t address, std::uint8_t value, const StoreRules& rules, bool pinsCount);
    void lookAtPins(std::array<std::uint8_t, 2> before, const StoreRules& rules);
    void lookAtI2c(const hid::Report& report, const StoreRules& rules);
    void lookAtSpi(const hid::Report& report, const StoreRules& rules);
    void writeRegister(int reg, std::uint8_t value, const StoreRules& rules);
    void instruction(Bytes bytes, PartProtocol protocol);
    void count(const std::string& name);

    std::map<std::string, int> counts_;
    int total_ = 0;
    int budget_ = kDefaultBudget;
    bool warned_ = false;
    bool volatileWrites_ = false; ///< the control register's bit 7, as last written
    std::uint8_t bank_ = 0;       ///< the status register of a part with banks, as last written
    std::array<std::uint8_t, 3> ports_{0xFF, 0xFF, 0}; ///< P0 to P2, as last written
    Signal<> changed_;
};

} // namespace vrk
