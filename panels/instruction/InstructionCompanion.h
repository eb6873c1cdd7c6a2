#pragma once

#include <string>

namespace vrk {

class WiperPanel;

/// A device panel as the instruction panels beside it see it: it knows the part's address and measures its
/// wipers.
class InstructionCompanion {
  public:
    virtual ~InstructionCompanion() = default;
    virtual WiperPanel& devicePanel() = 0;
    /// Bytes of a read frame, as the panel's field says; empty where the bus has no frames.
    virtual std::string readFrameLength() const { return {}; }
    /// An instruction has moved wipers: what the device panel has read of them no longer holds.
    virtual void wipersMoved() {}
};

} // namespace vrk
