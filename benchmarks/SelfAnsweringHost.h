#pragma once

#include "platform/hid/HidHost.h"

namespace vrk {

/// Passes everything on to the host under it until it answers by itself: a simulated part would cost more
/// time than the program that is measured.
class SelfAnsweringHost : public hid::HidHost {
  public:
    explicit SelfAnsweringHost(hid::HidHost& under) : under_(under) {}

    /// From now on.
    void answerByItself() { byItself_ = true; }

    std::vector<hid::DeviceInfo> list() override { return under_.list(); }
    hid::Handle open(const std::string& path) override { return under_.open(path); }
    void close(hid::Handle handle) noexcept override { under_.close(handle); }
    bool write(hid::Handle handle, const hid::Report& report) override {
        if (!byItself_)
            return under_.write(handle, report);
        take(report);
        return true;
    }
    hid::ReadResult read(hid::Handle handle, hid::Report& report,
                         std::chrono::milliseconds timeout) override {
        return byItself_ ? answer(report, timeout) : under_.read(handle, report, timeout);
    }

  protected:
    /// A request that went out.
    virtual void take(const hid::Report& request) = 0;
    /// The oldest reply that is due within the time-out, in report; takes as long as the bus would.
    virtual hid::ReadResult answer(hid::Report& report, std::chrono::milliseconds timeout) = 0;

  private:
    hid::HidHost& under_;
    bool byItself_ = false;
};

} // namespace vrk
