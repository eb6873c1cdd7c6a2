#pragma once

#include "sim/Part.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk::sim {

/// What a simulated part is: which model, and its numbers.
struct PartFacts {
    enum class Model {
        I2cRegisters,
        SpiRegisters,
        Banks,
        I2cInstructions,
        SpiInstructions,
        UpDown,
        PushButton
    };
    const char* name;
    Model model;
    std::optional<std::uint8_t> address; ///< slave address or ID, address pins low; none: it has none
    int pots;
    int positions;
    std::uint8_t acr = 0; ///< number of the access control register, of a part with byte registers
    int sockets = 1;      ///< how many of them the board is fitted with
};

/// Names of the parts that can be socketed.
std::vector<std::string> partNames();

/// \throws std::invalid_argument for an unknown name, naming those that are known.
const PartFacts& partFacts(const std::string& name);

/// A part fresh from the factory.
/// \param address in place of the base address or ID that the part comes with, 8-bit form: 00 to FE, even.
/// \param socket 0 for part #1, 1 for part #2: which pin is the /CS of a part with one of its own.
/// \throws std::invalid_argument for an unknown name, a bad address, or an address for a part without one.
std::unique_ptr<Part> makePart(const std::string& name, std::optional<int> address = std::nullopt,
                               int socket = 0);

} // namespace vrk::sim
