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

/// Chooses the part by its entry in the panel's menu; leaves a part that has none to manual set-up.
void choosePart(Panel& panel, const std::string& part, const BenchStep& step);

/// Opens the panel of the bus on a bench that has started, chooses the part and switches VCC on. Where the
/// bus has no panel the two consoles do it.
void bringUp(Bench& bench, ScriptedBus bus, const std::string& part, const BenchStep& step);

/// VCC on, of whatever the part was brought up with: also behind a lost link, in the midst of an exchange.
void switchVccOn(Bench& bench);

/// "5" and "5.0" are one level, "min" and "Min" too.
bool sameLevel(const std::string& one, const std::string& other);

} // namespace vrk
