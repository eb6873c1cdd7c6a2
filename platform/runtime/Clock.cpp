#include "platform/runtime/Clock.h"

#include <ctime>
#include <thread>

namespace vrk {

double Clock::secondsOfDay() const {
    const WallTime time = wallTime();
    return time.hour * 3600.0 + time.minute * 60.0 + time.second + time.millisecond / 1000.0;
}

RealClock::RealClock() : start_(std::chrono::steady_clock::now()) {}

Milliseconds RealClock::now() const {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - start_);
}

WallTime RealClock::wallTime() const {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    const auto fraction = std::chrono::duration_cast<Milliseconds>(now.time_since_epoch()) % 1000;
    return {local.tm_year + 1900,
            local.tm_mon + 1,
            local.tm_mday,
            local.tm_hour,
            local.tm_min,
            local.tm_sec,
            static_cast<int>(fraction.count())};
}

void RealClock::sleep(Milliseconds duration) {
    std::this_thread::sleep_for(duration);
}

VirtualClock::VirtualClock(const WallTime& start)
    : start_(std::chrono::sys_days(std::chrono::year(start.year) / start.month / start.day) +
             std::chrono::hours(start.hour) + std::chrono::minutes(start.minute) +
             std::chrono::seconds(start.second) + Milliseconds(start.millisecond)) {}

WallTime VirtualClock::wallTime() const {
    const auto time = start_ + now_;
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(clock.hours().count()),
            static_cast<int>(clock.minutes().count()),
            static_cast<int>(clock.seconds().count()),
            static_cast<int>(clock.subseconds().count())};
}

void VirtualClock::jumpTo(Milliseconds time) {
    if (time > now_)
        now_ = time;
}

} // namespace vrk
