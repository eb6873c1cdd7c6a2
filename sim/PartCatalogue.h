#pragma once

#include "sim/Part.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk::sim {

/// Names of the parts that can be socketed.
std::vector<std::string> partNames();

/// A part fresh from the factory.
/// \param address in place of the base address or ID that the part comes with, 8-bit form: 00 to FE, even.
/// \throws std::invalid_argument for an unknown name, a bad address, or an address for a part without one.
std::unique_ptr<Part> makePart(const std::string& name, std::optional<int> address = std::nullopt);

} // namespace vrk::sim
