#pragma once

#include "platform/controls/SharedValues.h"

#include <string>

namespace vrk {

/// Publishes a whole number of 32 bits: a count of steps or judgements soon leaves the 16 that
/// SharedValues::scalar() takes. \param panel its owner, where others have its name.
void publishLong(SharedValues& values, const char* name, int& field, const std::string& panel = {});

} // namespace vrk
