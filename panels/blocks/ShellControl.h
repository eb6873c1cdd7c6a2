#pragma once

#include "platform/controls/SharedValues.h"

#include <string>

namespace vrk {

class Panel;

enum class Bus { I2C, SPI };

/// What panels ask of the shell above them.
class ShellControl {
  public:
    virtual ~ShellControl() = default;
    virtual void showStartPanel() = 0;
    /// The panel's window goes; the panel lives on.
    virtual void hidePanel(const Panel& panel) = 0;
    /// Unloads the panels that work for this one alone. Whoever waits for the product table gets no choice.
    virtual void unloadCompanions(const Panel& panel) = 0;
    /// Brings the script panel to the front, for scripts of one bus from now on. While a script runs, it goes
    /// on with the bus that it began with.
    virtual void openScripts(Bus bus) = 0;
    /// Closes the board's handles and ends the program. \throws ProgramEnded
    virtual void endProgram() = 0;
};

/// For which bus the product table and the scripts work: exactly one is true while they do.
struct BusMode {
    bool I2CBusMode = true;
    bool SPIBusMode = false;
};

/// The product table as the device panels use it. It belongs to the panel that opened it, which is disabled
/// while it stands.
class ProductTable {
  public:
    using Bus = vrk::Bus;
    virtual ~ProductTable() = default;
    /// Shows the table for one bus, or brings it to the front again; an earlier choice is forgotten.
    virtual void open(Bus bus, Panel& opener) = 0;
    /// True while it stands, for whomever.
    virtual bool isOpen() const = 0;
    /// The user has left it, with or without a choice, or it was taken away.
    virtual bool returned() const = 0;
    virtual bool selected() const = 0;
    /// A field of the row chosen, by column.
    virtual std::string field(int column) const = 0;
};

/// Start values that the start panel sets and device panels look at.
struct ShellState {
    bool lm73Enabled = true;      ///< the start panel's choice; nothing reads it
    bool returningToMenu = false; ///< a device panel closes to go back to the menu, not to end the program
    bool reloadI2CList = false;   ///< set by the product table, read by the list actions
    bool reloadSPIList = false;
    bool showConsoles = false; ///< the next device panel brings both consoles along
};

/// What long runs of the program look at between their steps.
struct RunState {
    bool ScriptAbort = false; ///< stops a script or a run-in test; cleared at the start of a run
    bool PinBatch = false;    ///< pin routines change their fields and leave the ports to their caller
};

void publish(SharedValues& values, BusMode& mode);
void publish(SharedValues& values, ShellState& state);
void publish(SharedValues& values, RunState& state);

} // namespace vrk
