#pragma once

#include "platform/controls/SharedValues.h"

#include <cstdint>

namespace vrk {

/// What the converter services of both consoles and the panels above them share.
struct AnalogState {
    int ProcessorID = 320;   ///< 320 or 340: rows of the pin tables. No action sets 340
    double ADRef = 3.3;      ///< volts at full scale
    double VrefCal = 3.3;    ///< reference of the calibration file, volts
    double ADVolts = 0;      ///< last conversion, volts at the pin
    double ADVolts2 = 0;     ///< twice that: the board halves its inputs
    std::uint8_t ADHigh = 0; ///< bytes of the last conversion
    std::uint8_t ADLow = 0;
    int MuxVCCIndex = 10;    ///< list row of VIN4, which sees half of VCC
    int MuxGroundIndex = 17; ///< list row of ground at the negative input
    int EndSampling = 0;     ///< -1 ends the sampling loop
};

void publish(SharedValues& values, AnalogState& state);

} // namespace vrk
