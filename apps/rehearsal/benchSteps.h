#pragma once

#include "shell/Bench.h"

#include <functional>
#include <string>

/// How a part is brought up on a bench, by the gestures that its user would make.
namespace vrk {

enum class ScriptedBus { I2C, SPI };
/// "i2c", "spi": as commands and reports name it.
const char* busName(ScriptedBus bus);
BusMode busModeOf(ScriptedBus bus);

/// Carries a gesture out and judges it. \param what it does, for a message: "opening the panel".
using BenchStep = std::function<void(const std::function<Outcome()>& gesture, const std::string& what)>;

struct BringUp {
    ScriptedBus bus = ScriptedBus::I2C;
    std::string part;    ///< entry of the panel's menu; empty, or none of its: the panel's manual set-up
    std::string level;   ///< of the supply list; empty: the one that the panel starts with
    bool powered = true; ///< VCC is switched on last
};

/// The start panel found no board that it may use.
class NoBoardFault : public Fault {
  public:
    NoBoardFault() : Fault("the board cannot be used: another program may have it open") {}
};

/// Opens the panel of the bus on a bench that has started, chooses the part and its supply. Where the bus has
/// no panel the two consoles do it: their supply has no levels then.
/// \throws NoBoardFault; Fault if the supply list has no such level.
void bringUp(Bench& bench, const BringUp& wanted, const BenchStep& step);

/// VCC on, of whatever the part was brought up with: also behind a lost link, in the midst of an exchange.
void switchVccOn(Bench& bench);

/// "5" and "5.0" are one level, "min" and "Min" too.
bool sameLevel(const std::string& one, const std::string& other);

} // namespace vrk
