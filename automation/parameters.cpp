#include "automation/parameters.h"

#include <cctype>
#include <cmath>

namespace vrk {

namespace {
const Json& required(const Json& params, const char* name) {
    const Json* value = findParameter(params, name);
    if (value == nullptr)
        throw invalidParams(std::string("parameter '") + name + "' is missing");
    return *value;
}

std::string notThis(const std::string& name, const Json& value, const std::string& takes) {
    constexpr std::size_t kShown = 40;
    std::string shown = value.is_array()    ? "a list"
                        : value.is_object() ? "an object"
                                            : value.dump(-1, ' ', true, Json::error_handler_t::replace);
    if (shown.size() > kShown)
        shown = shown.substr(0, kShown) + "...";
    return "parameter '" + name + "' takes " + takes + ", not " + shown;
}
} // namespace

const Json* findParameter(const Json& params, const char* name) {
    const auto found = params.find(name);
    return found == params.end() || found->is_null() ? nullptr : &*found;
}

std::int64_t wholeNumber(const Json& value, const std::string& name, std::int64_t least, std::int64_t most) {
    // Through double: a number of any size is compared before it is converted.
    const double number = value.is_number() ? value.get<double>() : std::nan("");
    if (!(number >= static_cast<double>(least) && number <= static_cast<double>(most)) ||
        number != std::floor(number))
        throw invalidParams(notThis(
            name, value, "a whole number from " + std::to_string(least) + " to " + std::to_string(most)));
    return value.is_number_float() ? static_cast<std::int64_t>(number) : value.get<std::int64_t>();
}

std::int64_t wholeParameter(const Json& params, const char* name, std::int64_t least, std::int64_t most) {
    return wholeNumber(required(params, name), name, least, most);
}

std::int64_t wholeParameter(const Json& params, const char* name, std::int64_t least, std::int64_t most,
                            std::int64_t ifAbsent) {
    const Json* value = findParameter(params, name);
    return value == nullptr ? ifAbsent : wholeNumber(*value, name, least, most);
}

const std::string& textParameter(const Json& params, const char* name) {
    const Json& value = required(params, name);
    if (!value.is_string())
        throw invalidParams(notThis(name, value, "a text"));
    return value.get_ref<const std::string&>();
}

std::optional<std::string> optionalText(const Json& params, const char* name) {
    if (findParameter(params, name) == nullptr)
        return std::nullopt;
    return textParameter(params, name);
}

bool flagParameter(const Json& params, const char* name) {
    const Json& value = required(params, name);
    if (value.is_boolean())
        return value.get<bool>();
    if (value.is_number_integer() && (value == 0 || value == 1))
        return value == 1;
    throw invalidParams(notThis(name, value, "true or false"));
}

double numberParameter(const Json& params, const char* name) {
    const Json& value = required(params, name);
    if (!value.is_number())
        throw invalidParams(notThis(name, value, "a number"));
    return value.get<double>();
}

std::vector<std::uint8_t> bytesParameter(const Json& params, const char* name, std::size_t most) {
    std::string digits;
    for (const char c : textParameter(params, name))
        if (std::isspace(static_cast<unsigned char>(c)) == 0)
            digits += c;
    const bool allHex = digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!allHex || digits.size() % 2 != 0 || digits.size() > most * 2)
        throw invalidParams(
            notThis(name, params.at(name),
                    "up to " + std::to_string(most) + " bytes of two hexadecimal digits each"));
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(at, 2), nullptr, 16)));
    return bytes;
}

std::string hexOfBytes(const std::uint8_t* bytes, std::size_t count) {
    std::string text;
    text.reserve(count * 2);
    for (std::size_t at = 0; at < count; ++at)
        text += byteToHex2(bytes[at]);
    return text;
}

ActionValue toActionValue(const Json& value, const std::string& name) {
    if (value.is_null())
        return {};
    if (value.is_boolean())
        return value.get<bool>();
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number_float())
        return value.get<double>();
    if (value.is_number_integer())
        return wholeNumber(value, name, -(std::int64_t{1} << 53), std::int64_t{1} << 53);
    throw invalidParams(notThis(name, value, "a number, a text, true, false or null"));
}

Json toJson(const ActionValue& value) {
    return std::visit(
        [](const auto& held) -> Json {
            if constexpr (std::is_same_v<std::decay_t<decltype(held)>, std::monostate>)
                return nullptr;
            else
                return held;
        },
        value);
}

} // namespace vrk
