#pragma once

#include "platform/files/RegisterMap.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vrk {

/// Reads a map from text in TOML.
/// \param file its name, for messages.
/// \throws Fault "FILE:LINE:COLUMN: expected ..." for the first thing that is not as it must be.
RegisterMap parseRegisterMap(const std::string& text, const std::string& file);

/// \throws Fault as parseRegisterMap(), or with the system's description for a file that cannot be read.
RegisterMap readRegisterMap(const std::filesystem::path& path);

/// The folder of the maps that come with the programs: under the prefix of the installed program, or in the
/// build folder. Empty if there is none.
std::filesystem::path registerMapFolder();

/// The map that comes with the programs for a product, by the word that its name begins with ("KV4071, I2C"
/// and "KV4071/9" are KV4071). \throws Fault as readRegisterMap().
std::optional<RegisterMap> shippedRegisterMap(const std::string& product);

} // namespace vrk
