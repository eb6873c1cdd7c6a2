#pragma once

#include "platform/runtime/Clock.h"
#include "sim/NonvolatileMemory.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vrk::sim {

inline constexpr int kPortCount = 5;

/// Logic levels of the ports P0 to P4 at the sockets: bit n of element p is pin Pp.n.
using PinLevels = std::array<std::uint8_t, kPortCount>;

/// A port pin by its place.
struct Pin {
    int port = 0;
    int bit = 0;
};

constexpr bool isHigh(const PinLevels& pins, Pin pin) {
    return ((pins[static_cast<std::size_t>(pin.port)] >> pin.bit) & 1U) != 0;
}

constexpr bool rose(const PinLevels& before, const PinLevels& now, Pin pin) {
    return !isHigh(before, pin) && isHigh(now, pin);
}

constexpr bool fell(const PinLevels& before, const PinLevels& now, Pin pin) {
    return rose(now, before, pin);
}

/// The socket's pins, several of them with one meaning for each kind of part.
namespace pin {
inline constexpr Pin kSpiClock{0, 0}, kSpiOut{0, 2}, kSpiSelect{0, 3}, kSda{0, 4}, kScl{0, 5};
inline constexpr Pin kA0{0, 6}, kA1{0, 7}, kA2{1, 0}, kA3{1, 1}, kShutdown{1, 2};
} // namespace pin

/// All that the board presents to a part in a socket, the bus edges aside.
struct Surroundings {
    double vcc = 0.0;    ///< volts
    double vminus = 0.0; ///< volts, 0 or below
    PinLevels pins{};    ///< bus lines that a bus port of the controller holds stand at their idle level
};

/// What an onlooker with a debugger inside the part would see.
struct PartState {
    std::string name;
    std::vector<int> wipers;              ///< volatile positions, by channel
    std::vector<int> nonvolatile;         ///< positions that power recalls, by channel
    std::map<std::string, int> registers; ///< the others, by two-digit hexadecimal number or by name
    int nonvolatileWrites = 0;            ///< since the part was made
    std::map<std::string, int> writes;    ///< the same by register: "00", "DR0.1"; 0 is left out
};

/// A part in a socket. The socket calls surround() after every change of a supply or a pin, and turns the
/// edges of the bus lines into the calls of a family's bus, both only while the part has power. A family
/// overrides the bus that it has; the other one stays unanswered.
class Part {
  public:
    explicit Part(std::string name, std::vector<NonvolatileMemory::Cell> cells = {})
        : name_(std::move(name)), memory_(std::move(cells)) {}
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;
    virtual ~Part() = default;

    const std::string& name() const { return name_; }
    NonvolatileMemory& memory() { return memory_; }
    const NonvolatileMemory& memory() const { return memory_; }

    /// New supplies and pin levels. Raises power-up or power-down; a change of pins alone raises onPins().
    void surround(const Surroundings& now);
    /// The time has come to `now`, which never goes back.
    void passTime(Milliseconds now);

    /// Whether VCC is high enough for the logic to work: 2.0 V.
    bool powered() const { return powered_; }

    /// START or repeated START: the next byte written is the slave byte.
    virtual void i2cStart() {}
    /// A byte from the master. \return true for an acknowledge; without one the part hears nothing until the
    /// next START.
    virtual bool i2cWrite(std::uint8_t) { return false; }
    /// Whether the byte behind the one just acknowledged comes from the part.
    virtual bool i2cSends() const { return false; }
    /// A byte to the master.
    virtual std::uint8_t i2cRead() { return 0xFF; }
    /// The master's answer to that byte: true asks for another.
    virtual void i2cAcknowledged(bool) {}
    virtual void i2cStop() {}

    /// Chip select: true when it falls.
    virtual void spiSelect(bool) {}
    /// The byte that the part shifts out next, 0 where it does not drive the line.
    virtual std::uint8_t spiNext() const { return 0; }
    /// The byte shifted in meanwhile.
    virtual void spiTake(std::uint8_t) {}

    /// Whether each clock on the bus is now a step of the wiper, until STOP or until the select rises.
    virtual bool takesSteps() const { return false; }
    virtual void step(bool /*up*/) {}

    /// Where the wiper stands between its low (0.0) and high (1.0) terminal, shutdown and missing power
    /// taken into account. A channel that the part has not gives 0.
    virtual double wiperRatio(int channel) const = 0;

    PartState state() const;

  protected:
    virtual void onPowerUp() = 0;
    virtual void onPowerDown() = 0;
    /// Pins changed while the part has power.
    virtual void onPins(const PinLevels& /*before*/, const PinLevels& /*now*/) {}
    /// Time went on while the part has power.
    virtual void onTime() {}
    /// Fills wipers, stored positions and registers.
    virtual void describe(PartState&) const {}

    const PinLevels& pins() const { return surroundings_.pins; }
    Milliseconds now() const { return now_; }

  private:
    std::string name_;
    NonvolatileMemory memory_;
    Surroundings surroundings_;
    Milliseconds now_{0};
    bool powered_ = false;
};

/// The four address pins A0 to A3, A0 in bit 0.
std::uint8_t addressPins(const PinLevels& pins);

} // namespace vrk::sim
