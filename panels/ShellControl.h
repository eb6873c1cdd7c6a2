#pragma once

namespace vrk {

/// What panels ask of the shell above them.
class ShellControl {
  public:
    virtual ~ShellControl() = default;
    virtual void showStartPanel() = 0;
    /// Closes the board's handles and ends the program. \throws ProgramEnded
    virtual void endProgram() = 0;
};

/// Start values that the start panel sets and device panels look at.
struct ShellState {
    bool lm73Enabled = true; ///< the start panel's choice; nothing reads it
    bool returningToMenu =
        false; ///< a device panel closes to go back to the start panel, not to end the program
    bool reloadI2CList = false; ///< set by the product table, read by the list actions
    bool reloadSPIList = false;
};

} // namespace vrk
