#pragma once

#include "platform/hid/WireRecorder.h"
#include "shell/Bench.h"
#include "sim/SimulatedBus.h"

#include <ctime>
#include <filesystem>

namespace vrk {

/// A whole bench on a simulated board that answers without delay, on a clock that jumps through every wait:
/// what is left is the program's own work. With pace the clock tells how long a device on USB would take.
struct BenchRig {
    VirtualClock clock;
    EventLoop events{clock};
    ScriptedDialogs dialogs;
    MemoryClipboard clipboard;
    sim::SimulatedBus bus;
    hid::WireRecorder recorder{bus, clock, report::kVendorId, report::kProductId};
    Bench bench;

    /// \param recorded every report passes the recorder, whose cost does not belong in a measurement.
    explicit BenchRig(bool recorded = false, bool paced = false)
        : bus(clock, {.zeroLatency = !paced}),
          bench({events, dialogs, clipboard, recorded ? static_cast<hid::HidHost&>(recorder) : bus,
                 std::filesystem::temp_directory_path(), std::filesystem::temp_directory_path()}) {}

    /// Opens the I2C panel with VCC on.
    void openI2c() {
        bench.start();
        bench.frmStartup->cboVRKSelect.userSelect(frmStartup::kI2C);
        bench.frmVRK_User1->OptVCC[0].userClick();
    }
    /// The SPI panel with its part and VCC on.
    void openSpi() {
        bus.socket("KV4184");
        bench.start();
        bench.frmStartup->cboVRKSelect.userSelect(frmStartup::kSPI);
        bench.frmVRK_SPI1->mnuKV4184.userClick();
        bench.frmVRK_SPI1->OptVCC[0].userClick();
    }
};

/// As the link appends: the message's pieces, then the line break by itself.
inline void appendLines(TextLog& log, int lines) {
    for (int line = 0; line < lines; ++line) {
        log.append("Write F340 SFR Register ");
        log.append("A0");
        log.append(" = ");
        log.append("70");
        log.append("\r\n");
    }
}

/// Seconds of processor time that this thread has used.
inline double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace vrk
