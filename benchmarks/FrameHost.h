#pragma once

#include "platform/hid/HidHost.h"
#include "platform/runtime/Clock.h"

namespace vrk {

/// A board at the pace of a full-speed bus: a request takes one frame of 1 ms, its reply comes a frame later.
/// Passes everything on to the host under it until it answers by itself, good zeros to every request: a
/// simulated part would cost more time than the program that is measured.
class FrameHost final : public hid::HidHost {
  public:
    static constexpr std::chrono::milliseconds kFrame{1};

    FrameHost(hid::HidHost& under, Clock& clock) : under_(under), clock_(clock) {}

    /// From now on.
    void answerByItself() { byItself_ = true; }
    long long requests() const { return requests_; }

    std::vector<hid::DeviceInfo> list() override { return under_.list(); }
    hid::Handle open(const std::string& path) override { return under_.open(path); }
    void close(hid::Handle handle) noexcept override { under_.close(handle); }
    bool write(hid::Handle handle, const hid::Report& report) override {
        if (!byItself_)
            return under_.write(handle, report);
        ++requests_;
        pending_ = true;
        clock_.sleep(kFrame);
        return true;
    }
    hid::ReadResult read(hid::Handle handle, hid::Report& report,
                         std::chrono::milliseconds timeout) override {
        if (!byItself_)
            return under_.read(handle, report, timeout);
        if (!pending_) {
            clock_.sleep(timeout);
            return hid::ReadResult::TimedOut;
        }
        pending_ = false;
        clock_.sleep(kFrame);
        report = {1};
        return hid::ReadResult::Arrived;
    }

  private:
    hid::HidHost& under_;
    Clock& clock_;
    bool byItself_ = false;
    bool pending_ = false;
    long long requests_ = 0;
};

} // namespace vrk
