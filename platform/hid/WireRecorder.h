#pragma once

#include "platform/hid/HidHost.h"
#include "platform/runtime/Clock.h"
#include "platform/runtime/Signal.h"

#include <map>
#include <set>
#include <string>

namespace vrk::hid {

/// One report that passed between host and board.
struct WireEvent {
    enum class Direction { Out, In };

    Milliseconds at{0}; ///< on the recorder's clock: when the write or the read came back
    Direction direction = Direction::Out;
    int board = 0;         ///< from 0: the board's place in the last list before it was opened
    std::string boardPath; ///< as the host lists it
    Report report{};
    bool failed = false; ///< the board did not take the report
};

/// Passes every call on to the host under it and tells observers of each report of the boards. Devices of
/// other makers pass unrecorded. Observers run on the caller's thread, so a host that changes threads
/// belongs under the recorder, not over it.
class WireRecorder final : public HidHost {
  public:
    /// \param vendor, product what a board lists as.
    WireRecorder(HidHost& host, const Clock& clock, std::uint16_t vendor, std::uint16_t product);

    /// The observer hears of a report after the exchange with the host is over. An observer that throws
    /// does not disturb the exchange.
    [[nodiscard]] Subscription observe(std::function<void(const WireEvent&)> observer) {
        return reports_.connect(std::move(observer));
    }

    std::vector<DeviceInfo> list() override;
    Handle open(const std::string& path) override;
    bool write(Handle handle, const Report& report) override;
    ReadResult read(Handle handle, Report& report, std::chrono::milliseconds timeout) override;
    void close(Handle handle) noexcept override;
    std::string lastError() const override { return host_.lastError(); }

  private:
    struct Board {
        int number;
        std::string path;
    };

    void meet(const std::string& path);
    void tell(Handle handle, WireEvent::Direction direction, const Report& report, bool failed);

    HidHost& host_;
    const Clock& clock_;
    std::uint16_t vendor_;
    std::uint16_t product_;
    std::map<std::string, int> numbers_;
    std::set<std::string> foreign_;
    std::map<Handle, Board> open_;
    Signal<const WireEvent&> reports_;
};

} // namespace vrk::hid
