#pragma once

#include <chrono>
#include <cstdint>

namespace vrk {

using Milliseconds = std::chrono::milliseconds;

/// Local date and time of day, as a log line or a file header shows it.
struct WallTime {
    int year = 2020;
    int month = 1; ///< 1 to 12
    int day = 1;   ///< 1 to 31
    int hour = 12;
    int minute = 0;
    int second = 0;
    int millisecond = 0;

    bool operator==(const WallTime&) const = default;
};

/// The one source of time: every wait and every clock reading of the models goes through it, so that a
/// run on virtual time is exact and costs nothing.
class Clock {
  public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// Time since the clock was made. Never goes back.
    virtual Milliseconds now() const = 0;

    /// Local date and time. May jump, as a day's clock does.
    virtual WallTime wallTime() const = 0;

    /// Blocks the caller. Lets no events run.
    virtual void sleep(Milliseconds duration) = 0;

    /// Seconds since midnight, 0 up to but not including 86400.
    double secondsOfDay() const;
};

/// The computer's clock.
class RealClock final : public Clock {
  public:
    RealClock();
    Milliseconds now() const override;
    WallTime wallTime() const override;
    void sleep(Milliseconds duration) override;

  private:
    std::chrono::steady_clock::time_point start_;
};

/// A clock that stands still between waits and jumps through them.
class VirtualClock final : public Clock {
  public:
    /// \param start wall time at now() == 0.
    explicit VirtualClock(const WallTime& start = {});
    Milliseconds now() const override { return now_; }
    WallTime wallTime() const override;
    void sleep(Milliseconds duration) override { now_ += duration; }

    /// Moves forward to `time`; an earlier time changes nothing.
    void jumpTo(Milliseconds time);

  private:
    Milliseconds now_{0};
    std::chrono::sys_time<Milliseconds> start_;
};

} // namespace vrk
