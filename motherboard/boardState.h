#pragma once

#include "platform/controls/SharedValues.h"
#include "platform/runtime/Fault.h"

#include <array>
#include <cstdint>
#include <string>

namespace vrk {

/// An array whose bad subscript is the run-time fault, as for the control arrays.
template <class T, int Count>
class CheckedArray {
  public:
    T& operator[](int index) {
        if (index < 0 || index >= Count)
            throw subscriptOutOfRange();
        return items_[static_cast<std::size_t>(index)];
    }
    const T& operator[](int index) const { return const_cast<CheckedArray&>(*this)[index]; }
    static constexpr int count() { return Count; }

  private:
    std::array<T, static_cast<std::size_t>(Count)> items_{};
};

/// What the analog services share.
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

/// The host's image of the ports.
struct PortState {
    /// 0 to 2 data of P0 to P2, 3 to 5 their drive enables; 6 to 10 unused.
    CheckedArray<std::uint8_t, 11> PBuf;
    bool pipeWriteBusy = false;           ///< the six registers are going out
    CheckedArray<std::uint8_t, 6> SPIBuf; ///< bytes of the last SPI action that keeps them
};

struct SupplyState {
    bool TrackOn = true;                  ///< V- follows VCC
    CheckedArray<std::string, 21> VCCHex; ///< code of each row of the volts list
};

void publish(SharedValues& values, AnalogState& state);
void publish(SharedValues& values, PortState& state);
void publish(SharedValues& values, SupplyState& state);

} // namespace vrk
