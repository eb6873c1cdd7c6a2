#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace vrk::hid {

/// Every report of the board, in both directions, is 64 bytes, byte 0 being the report ID.
inline constexpr int kReportSize = 64;
using Report = std::array<std::uint8_t, kReportSize>;

/// An open way to a device. Valid handles are above 0.
using Handle = int;
inline constexpr Handle kNoHandle = -1;

struct DeviceInfo {
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::string path; ///< what open() takes; of no meaning to anyone else
};

enum class ReadResult {
    Arrived,  ///< 64 bytes came in
    TimedOut, ///< nothing within the time given
    Failed    ///< the device is gone or the handle is dead: comes back at once
};

/// The operating system's HID services, or something that stands in for them: a simulated board, a
/// recorder. One caller at a time; no call throws.
class HidHost {
  public:
    HidHost() = default;
    HidHost(const HidHost&) = delete;
    HidHost& operator=(const HidHost&) = delete;
    virtual ~HidHost() = default;

    /// The HID devices that are plugged in, of any vendor, in the system's order.
    virtual std::vector<DeviceInfo> list() = 0;

    /// Opens a path that list() gave. The same path may be opened more than once; each handle gets every
    /// input report. \return kNoHandle on failure.
    virtual Handle open(const std::string& path) = 0;

    /// Writes one output report. \return false when the device did not take it.
    virtual bool write(Handle handle, const Report& report) = 0;

    /// Waits up to `timeout` for one input report. `report` is untouched unless the result is Arrived.
    virtual ReadResult read(Handle handle, Report& report, std::chrono::milliseconds timeout) = 0;

    /// Closes a handle; kNoHandle and dead handles are let pass.
    virtual void close(Handle handle) noexcept = 0;

    /// The last failure in words a user understands; empty if a device has been opened or written to since.
    virtual std::string lastError() const { return {}; }
};

} // namespace vrk::hid
