#pragma once

#include "platform/controls/SharedValues.h"
#include "platform/runtime/CheckedArray.h"

#include <cstdint>
#include <string>

namespace vrk {

/// The host's image of the ports.
struct PortState {
    /// 0 to 2 data of P0 to P2, 3 to 5 their drive enables; 6 to 10 unused.
    CheckedArray<std::uint8_t, 11> PBuf;
    bool pipeWriteBusy = false;           ///< the six registers are going out
    CheckedArray<std::uint8_t, 6> SPIBuf; ///< bytes of the last SPI action that keeps them
    /// Name of the device panel whose part's pins stand in the image.
    std::string pinsOf{};
};

struct SupplyState {
    bool TrackOn = true;                  ///< V- follows VCC
    CheckedArray<std::string, 21> VCCHex; ///< code of each row of the volts list
};

struct CalibrationState {
    int CalRunning = 0; ///< -1 while the supply is calibrated; 0 asks the sweep to end
};

void publish(SharedValues& values, PortState& state);
void publish(SharedValues& values, SupplyState& state);
void publish(SharedValues& values, CalibrationState& state);

} // namespace vrk
