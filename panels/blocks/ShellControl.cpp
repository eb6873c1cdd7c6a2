#include "panels/blocks/ShellControl.h"

namespace vrk {

void publish(SharedValues& values, BusMode& mode) {
    values.scalar("I2CBusMode", mode.I2CBusMode);
    values.scalar("SPIBusMode", mode.SPIBusMode);
}

void publish(SharedValues& values, ShellState& state) {
    values.scalar("lm73Enabled", state.lm73Enabled);
    values.scalar("returningToMenu", state.returningToMenu);
    values.scalar("reloadI2CList", state.reloadI2CList);
    values.scalar("reloadSPIList", state.reloadSPIList);
    values.scalar("showConsoles", state.showConsoles);
}

void publish(SharedValues& values, RunState& state) {
    values.scalar("ScriptAbort", state.ScriptAbort);
    values.scalar("PinBatch", state.PinBatch);
}

} // namespace vrk
