#pragma once

#include "panels/blocks/BenchServices.h"

namespace vrk {

/// Says so when VCC is off. \return true if it is on
inline bool requireVcc(const BenchServices& services, const PanelContext& context) {
    if (services.vccOn())
        return true;
    context.say("VCC is not turned on.");
    return false;
}

} // namespace vrk
