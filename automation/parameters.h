#pragma once

#include "automation/RpcError.h"
#include "platform/controls/Panel.h"

#include <cstdint>
#include <optional>
#include <string>

/// Reading a request's named parameters. Every function throws RpcError (invalid parameters) that names the
/// parameter and what it takes.
namespace vrk {

/// nullptr if the request has none of that name, or null.
const Json* findParameter(const Json& params, const char* name);

/// A whole number; one written with a fraction of zero counts.
std::int64_t wholeNumber(const Json& value, const std::string& name, std::int64_t least, std::int64_t most);
std::int64_t wholeParameter(const Json& params, const char* name, std::int64_t least, std::int64_t most);
std::int64_t wholeParameter(const Json& params, const char* name, std::int64_t least, std::int64_t most,
                            std::int64_t ifAbsent);

const std::string& textParameter(const Json& params, const char* name);
std::optional<std::string> optionalText(const Json& params, const char* name);
bool flagParameter(const Json& params, const char* name);
double numberParameter(const Json& params, const char* name);

/// Bytes as hexadecimal digits, blanks between them allowed; at most `most` bytes.
std::vector<std::uint8_t> bytesParameter(const Json& params, const char* name, std::size_t most);

/// Upper-case digits without blanks.
std::string hexOfBytes(const std::uint8_t* bytes, std::size_t count);

ActionValue toActionValue(const Json& value, const std::string& name);
Json toJson(const ActionValue& value);

} // namespace vrk
