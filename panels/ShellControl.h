#pragma once

#include <string>

namespace vrk {

/// What panels ask of the shell above them.
class ShellControl {
  public:
    virtual ~ShellControl() = default;
    virtual void showStartPanel() = 0;
    /// Closes the board's handles and ends the program. \throws ProgramEnded
    virtual void endProgram() = 0;
};

/// The product table as the device panels use it.
class ProductTable {
  public:
    enum class Bus { I2C, SPI };
    virtual ~ProductTable() = default;
    /// Shows the table for one bus; an earlier choice is forgotten.
    virtual void open(Bus bus) = 0;
    /// The user has returned from it, with or without a choice.
    virtual bool returned() const = 0;
    virtual bool selected() const = 0;
    /// A field of the row chosen, by column.
    virtual std::string field(int column) const = 0;
    virtual void unload() = 0;
};

/// Start values that the start panel sets and device panels look at.
struct ShellState {
    bool lm73Enabled = true;      ///< the start panel's choice; nothing reads it
    bool returningToMenu = false; ///< a device panel closes to go back to the menu, not to end the program
    bool reloadI2CList = false;   ///< set by the product table, read by the list actions
    bool reloadSPIList = false;
    bool showConsoles = false; ///< the next device panel brings both consoles along
};

} // namespace vrk
