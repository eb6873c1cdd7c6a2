#pragma once

#include "platform/hid/HidHost.h"

#include <deque>
#include <functional>
#include <optional>

namespace vrk::hid {

/// A host of which each answer is told beforehand. Handles are the index in `devices` plus 1.
class FakeHost final : public HidHost {
  public:
    std::vector<DeviceInfo> devices;
    std::deque<std::optional<Report>> replies; ///< nothing: the read times out
    bool takesWrites = true;
    std::vector<Handle> closed;
    std::function<void()> onCall = [] {};
    std::function<void(std::chrono::milliseconds)> onTimeout = [](auto) {};

    std::vector<DeviceInfo> list() override {
        onCall();
        return devices;
    }
    Handle open(const std::string& path) override {
        onCall();
        for (std::size_t i = 0; i < devices.size(); ++i)
            if (devices[i].path == path)
                return static_cast<Handle>(i) + 1;
        return kNoHandle;
    }
    bool write(Handle, const Report&) override {
        onCall();
        return takesWrites;
    }
    ReadResult read(Handle, Report& report, std::chrono::milliseconds timeout) override {
        onCall();
        if (replies.empty() || !replies.front()) {
            if (!replies.empty())
                replies.pop_front();
            onTimeout(timeout);
            return ReadResult::TimedOut;
        }
        report = *replies.front();
        replies.pop_front();
        return ReadResult::Arrived;
    }
    void close(Handle handle) noexcept override { closed.push_back(handle); }
    std::string lastError() const override { return "as the host says"; }
};

/// A report that begins with these bytes; zeros follow.
inline Report reportOf(std::initializer_list<int> bytes) {
    Report report{};
    auto to = report.begin();
    for (const int byte : bytes)
        *to++ = static_cast<std::uint8_t>(byte);
    return report;
}

} // namespace vrk::hid
