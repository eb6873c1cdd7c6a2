#pragma once

#include "automation/RpcError.h"
#include "platform/controls/Panel.h"

#include <optional>
#include <string>

namespace vrk {

/// Everything that a control shows, by aspect name: kind, enabled, visible, tip, those of its kind, and for
/// what the board said `state` and `ageMs`, ms since the last good read.
Json readAspects(const Control& control);

/// Where an assignment goes.
struct Assignment {
    const Json& value;
    std::optional<std::string> aspect{}; ///< nothing: the one that its kind is there for
    std::optional<int> row{};            ///< of a grid
    std::optional<int> column{};
};

/// Checks the assignment against the control and gives the action that makes it, as code makes it: clicks and
/// changes are raised. \throws RpcError (invalid parameters) for an aspect that the kind does not have or a
/// value that the aspect cannot hold.
std::function<void()> prepareAssignment(Control& control, const Assignment& assignment);

} // namespace vrk
