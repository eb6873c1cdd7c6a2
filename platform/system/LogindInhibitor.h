#pragma once

#include "platform/runtime/SleepInhibitor.h"

#include <string>
#include <utility>

namespace vrk {

/// Asks logind. A system without it, or a user whom it refuses, gets no lock and no message: a run goes on
/// all the same.
class LogindInhibitor final : public SleepInhibitor {
  public:
    /// \param program as the system's list of locks names it
    explicit LogindInhibitor(std::string program) : program_(std::move(program)) {}

    std::shared_ptr<void> keepAwake(const std::string& why) override;

  private:
    std::string program_;
};

} // namespace vrk
