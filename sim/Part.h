#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vrk::sim {

inline constexpr int kPortCount = 5;

/// Logic levels of the ports P0 to P4 at the socket: bit n of element p is pin Pp.n.
using PinLevels = std::array<std::uint8_t, kPortCount>;

constexpr bool pinHigh(const PinLevels& pins, int port, int bit) {
    return ((pins[static_cast<std::size_t>(port)] >> bit) & 1U) != 0;
}

/// All that the board presents to the part in its socket, the bus transfers aside.
struct Surroundings {
    double vcc = 0.0;    ///< volts
    double vminus = 0.0; ///< volts, 0 or below
    PinLevels pins{};    ///< bus lines that a bus port of the controller holds stand at their idle level
};

/// What an onlooker with a debugger inside the part would see.
struct PartState {
    std::string name;
    std::vector<int> wipers;              ///< volatile positions, by channel
    std::vector<int> nonvolatile;         ///< stored positions, by channel
    std::map<std::string, int> registers; ///< the others, by two-digit hexadecimal number or by name
    int nonvolatileWrites = 0;            ///< since the part was made
};

/// Lets a store go wrong on purpose.
class StoreGuard {
  public:
    virtual ~StoreGuard() = default;
    /// \return true when the store now under way must fail: the cell keeps what it held.
    virtual bool missNextStore() = 0;
};

/// A part in the socket: a bus state machine with named lines. The board calls surround() after every change
/// of a supply or a pin, and the bus calls during a transfer, only while the part has power. A family
/// overrides the bus that it has; the other one stays unanswered.
///
/// Parts that watch pins (up/down, push-button, increments clocked by hand) override onPins(). A bus line
/// moves there only while the crossbar has taken its port off it, so edges on it are the host's own.
class Part {
  public:
    explicit Part(std::string name) : name_(std::move(name)) {}
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;
    virtual ~Part() = default;

    const std::string& name() const { return name_; }

    /// New supplies and pin levels. Raises power-up or power-down; a change of pins alone raises onPins().
    void surround(const Surroundings& now);

    /// Whether VCC is high enough for the logic to work: 2.0 V.
    bool powered() const { return powered_; }

    /// Who may make stores fail. Must outlive the part; null: nobody.
    void setStoreGuard(StoreGuard* guard) { guard_ = guard; }

    /// START or repeated START: the next byte written is the slave byte.
    virtual void i2cStart() {}
    /// A byte from the master. \return true for an acknowledge.
    virtual bool i2cWrite(std::uint8_t) { return false; }
    /// A byte to the master, who acknowledges it unless it is the last. A released line reads FF.
    virtual std::uint8_t i2cRead(bool /*acknowledged*/) { return 0xFF; }
    virtual void i2cStop() {}

    /// Chip select: true when it falls.
    virtual void spiSelect(bool) {}
    /// One byte each way. \return 0 from a part that does not drive the line.
    virtual std::uint8_t spiExchange(std::uint8_t) { return 0; }

    /// Where the wiper stands between its low (0.0) and high (1.0) terminal, shutdown and missing power
    /// taken into account. A channel that the part has not gives 0.
    virtual double wiperRatio(int channel) const = 0;

    virtual PartState state() const = 0;

  protected:
    virtual void onPowerUp() = 0;
    virtual void onPowerDown() = 0;
    /// Pins changed while the part has power.
    virtual void onPins(const PinLevels& /*before*/, const PinLevels& /*now*/) {}

    const PinLevels& pins() const { return surroundings_.pins; }
    StoreGuard* storeGuard() const { return guard_; }

  private:
    std::string name_;
    Surroundings surroundings_;
    StoreGuard* guard_ = nullptr;
    bool powered_ = false;
};

/// The four address pins A0 to A3 (P0.6, P0.7, P1.0, P1.1) as bits 1 to 4 of a slave byte.
std::uint8_t addressPins(const PinLevels& pins);

} // namespace vrk::sim
