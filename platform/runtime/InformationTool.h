#pragma once

#include <optional>
#include <string>

namespace vrk {

/// The desktop's own program that tells of processor, memory, devices and drivers: what a maker's support
/// asks for first.
class InformationTool {
  public:
    InformationTool() = default;
    InformationTool(const InformationTool&) = delete;
    InformationTool& operator=(const InformationTool&) = delete;
    virtual ~InformationTool() = default;

    /// Its name as the desktop shows it; nothing where none is installed.
    virtual std::optional<std::string> name() = 0;
    /// Starts it; it outlives this program. \throws Fault with the system's reason.
    virtual void open() = 0;
};

} // namespace vrk
