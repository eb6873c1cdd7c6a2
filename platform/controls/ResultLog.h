#pragma once

#include "platform/runtime/Clock.h"
#include "platform/runtime/Signal.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <utility>

namespace vrk {

/// What an action came to, in one line for the user.
struct Result {
    std::uint64_t number = 0; ///< 1 is the first of the session
    bool good = true;
    std::string text;   ///< "Wrote 3F to wiper 0"
    std::string detail; ///< "read back 3F, 2.470 V"; may be empty
    std::string field;  ///< path of the control to look at, "frmVRK_User1.txtHexDataWrt(0)"; may be empty
    WallTime time;
};

/// The results of the session's actions: the last one stands in the window's band, the others can be looked
/// up. Long tests run for days, so that only the last kKept are held.
class ResultLog {
  public:
    static constexpr std::size_t kKept = 1000;

    void add(Result result) {
        result.number = ++last_;
        kept_.push_back(std::move(result));
        if (kept_.size() > kKept)
            kept_.pop_front();
        added_.emit(kept_.back());
    }
    /// In the order of their numbers.
    const std::deque<Result>& kept() const { return kept_; }
    /// Number of the newest, 0 while there is none.
    std::uint64_t last() const { return last_; }
    [[nodiscard]] Subscription observe(std::function<void(const Result&)> observer) {
        return added_.connect(std::move(observer));
    }

  private:
    std::uint64_t last_ = 0;
    std::deque<Result> kept_;
    Signal<const Result&> added_;
};

} // namespace vrk
