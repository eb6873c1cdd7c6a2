#pragma once

#include <memory>
#include <string>

namespace vrk {

/// Keeps the system awake while something runs for hours that a sleep would break.
class SleepInhibitor {
  public:
    SleepInhibitor() = default;
    SleepInhibitor(const SleepInhibitor&) = delete;
    SleepInhibitor& operator=(const SleepInhibitor&) = delete;
    virtual ~SleepInhibitor() = default;

    /// The system stays awake for as long as the result lives; null where nobody can see to that.
    /// \param why for the user who asks the system what keeps it awake
    virtual std::shared_ptr<void> keepAwake(const std::string& why) = 0;
};

} // namespace vrk
