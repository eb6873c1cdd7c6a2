#pragma once

#include "automation/RpcError.h"
#include "sim/SimulatedBus.h"

#include <functional>

namespace vrk {

/// One operation on the simulated boards (`op` and its parameters), checked and ready to run: it may run
/// later, under a standing message box. Running it gives the operation's result. \throws RpcError (invalid
/// parameters), from here for what can be told at once, from the operation for what depends on the boards as
/// they are then.
std::function<Json()> prepareSimOperation(sim::SimulatedBus& bus, const Json& params);

} // namespace vrk
