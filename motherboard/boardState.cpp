#include "motherboard/boardState.h"

namespace vrk {

void publish(SharedValues& values, PortState& state) {
    values.array("PBuf", state.PBuf);
    values.array("SPIBuf", state.SPIBuf);
    values.scalar("pipeWriteBusy", state.pipeWriteBusy);
}

void publish(SharedValues& values, SupplyState& state) {
    values.scalar("TrackOn", state.TrackOn);
    values.array("VCCHex", state.VCCHex);
}

void publish(SharedValues& values, CalibrationState& state) {
    values.scalar("CalRunning", state.CalRunning);
}

} // namespace vrk
