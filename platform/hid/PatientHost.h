#pragma once

#include "platform/hid/HidHost.h"
#include "platform/runtime/EventLoop.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vrk::hid {

/// Keeps a window painting while the device stalls. Every call that can block runs on one worker thread;
/// the caller waits for it. It waits outright at first, since nearly every exchange is over within a few
/// milliseconds; after that it paints, and holds back every gesture and timer until the call is done.
///
/// All calls are made on the UI thread, and as the caller always waits, the host under this one never sees
/// two calls at a time. A call that painting itself makes meanwhile is refused as if the device did not
/// answer.
class PatientHost final : public HidHost {
  public:
    /// How long a call may take before the window is painted.
    static constexpr std::chrono::milliseconds kOutright{100};
    static constexpr std::chrono::milliseconds kPaintInterval{10};

    /// \param host the host that may block; used on the worker thread and on the caller's, in turn.
    /// \param paintOnly paints the windows and handles no input. What it throws is dropped.
    PatientHost(HidHost& host, EventLoop& events, std::function<void()> paintOnly);
    ~PatientHost() override;

    std::vector<DeviceInfo> list() override;
    Handle open(const std::string& path) override;
    bool write(Handle handle, const Report& report) override;
    ReadResult read(Handle handle, Report& report, std::chrono::milliseconds timeout) override;
    /// Does not wait. During another call, which painting may have led here from, the handle closes after it.
    void close(Handle handle) noexcept override;
    std::string lastError() const override;

  private:
    void run(const std::function<void()>& call);
    void paint() noexcept;
    void work();

    HidHost& host_;
    EventLoop& events_;
    std::function<void()> paintOnly_;

    bool inFlight_ = false; ///< of the calling thread alone
    std::vector<Handle> toClose_;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable done_;
    const std::function<void()>* call_ = nullptr; ///< under mutex_; null when the worker has nothing to do
    bool stopping_ = false;                       ///< under mutex_
    std::thread worker_;
};

} // namespace vrk::hid
