#pragma once

#include "sim/DataRegisterMemory.h"

#include <optional>

namespace vrk::sim {

/// A potentiometer that is worked by pins alone: a wiper with one stored position behind it.
class PinPart : public Part {
  public:
    /// \param most highest position, at which the wiper is on its high terminal.
    PinPart(std::string name, int most)
        : Part(std::move(name), layout(most).cells()), registers_(layout(most), memory()) {}

    double wiperRatio(int channel) const override { return powered() ? registers_.ratio(channel) : 0.0; }

  protected:
    void onPowerUp() override { registers_.powerUp(); }
    void onPowerDown() override { registers_.powerDown(); }
    void describe(PartState& state) const override { registers_.describe(state); }

    void stepWiper(bool up) { registers_.step(0, up); }
    void storeWiper() { registers_.wiperToData(0, 0); }

  private:
    static DataRegisterLayout layout(int most) {
        return {.pots = 1, .registers = 1, .most = most, .span = most};
    }
    DataRegisterMemory registers_;
};

/// /CS, /INC (P1.1) and U/D (P1.2): with /CS low each fall of /INC is a step, up while U/D is high. /CS
/// rising stores the position while /INC is high, and does not while it is low. Two such parts share /INC and
/// U/D.
class UpDownPart final : public PinPart {
  public:
    UpDownPart(std::string name, int most, Pin select) : PinPart(std::move(name), most), select_(select) {}

  protected:
    void onPins(const PinLevels& before, const PinLevels& now) override;

  private:
    Pin select_;
};

/// Buttons pressed low: /UP (P1.1), /DOWN (P1.2), /STORE (P0.7), /MUTE (P0.2). A press is a step; one that is
/// held goes on stepping. Both together shut the part down for as long as both are held.
class PushButtonPart final : public PinPart {
  public:
    using PinPart::PinPart;

    double wiperRatio(int channel) const override;

  protected:
    void onPowerUp() override;
    void onPins(const PinLevels& before, const PinLevels& now) override;
    void onTime() override;

  private:
    struct Hold {
        bool up = false;
        Milliseconds nextStep{0};
    };
    std::optional<Hold> hold_;
};

} // namespace vrk::sim
