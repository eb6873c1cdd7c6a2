#pragma once

#include "benchmarks/SelfAnsweringHost.h"
#include "platform/runtime/Clock.h"

namespace vrk {

/// A board at the pace of a full-speed bus: a request takes one frame of 1 ms, its reply comes a frame later,
/// good zeros to every request.
class FrameHost final : public SelfAnsweringHost {
  public:
    static constexpr std::chrono::milliseconds kFrame{1};

    FrameHost(hid::HidHost& under, Clock& clock) : SelfAnsweringHost(under), clock_(clock) {}

    long long requests() const { return requests_; }

  private:
    void take(const hid::Report& /*request*/) override {
        ++requests_;
        pending_ = true;
        clock_.sleep(kFrame);
    }
    hid::ReadResult answer(hid::Report& report, std::chrono::milliseconds timeout) override {
        if (!pending_) {
            clock_.sleep(timeout);
            return hid::ReadResult::TimedOut;
        }
        pending_ = false;
        clock_.sleep(kFrame);
        report = {1};
        return hid::ReadResult::Arrived;
    }

    Clock& clock_;
    bool pending_ = false;
    long long requests_ = 0;
};

} // namespace vrk
