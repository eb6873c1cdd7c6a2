#include "link/AnalogState.h"

namespace vrk {

void publish(SharedValues& values, AnalogState& state) {
    values.scalar("ProcessorID", state.ProcessorID);
    values.scalar("ADRef", state.ADRef);
    values.scalar("VrefCal", state.VrefCal);
    values.scalar("ADVolts", state.ADVolts);
    values.scalar("ADVolts2", state.ADVolts2);
    values.scalar("ADHigh", state.ADHigh);
    values.scalar("ADLow", state.ADLow);
    values.scalar("MuxVCCIndex", state.MuxVCCIndex);
    values.scalar("MuxGroundIndex", state.MuxGroundIndex);
    values.scalar("EndSampling", state.EndSampling);
}

} // namespace vrk
