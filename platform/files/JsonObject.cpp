#include "platform/files/JsonObject.h"

#include "platform/runtime/Fault.h"

#include <nlohmann/json.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace vrk {

using nlohmann::json;

struct JsonObject::Value {
    json object;

    const json& at(const char* name, bool (json::*is)() const noexcept, const char* kind) const {
        const auto found = object.find(name);
        if (found == object.end() || !((*found).*is)())
            throw Fault(std::string("\"") + name + "\" is no " + kind);
        return *found;
    }
};

namespace {

int wholeOf(const json& value, const char* name) {
    const double number = value.is_number() ? value.get<double>() : std::nan("");
    if (!(number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max()) ||
        number != std::floor(number))
        throw Fault(std::string("\"") + name + "\" is no whole number");
    return static_cast<int>(number);
}

} // namespace

std::optional<JsonObject> JsonObject::parse(std::string_view text) {
    json value = json::parse(text, nullptr, false);
    if (!value.is_object())
        return std::nullopt;
    return JsonObject(std::make_shared<const Value>(Value{std::move(value)}));
}

bool JsonObject::has(const char* name) const {
    return value_->object.contains(name);
}

std::string JsonObject::text(const char* name) const {
    return value_->at(name, &json::is_string, "text").get<std::string>();
}

double JsonObject::number(const char* name) const {
    return value_->at(name, &json::is_number, "number").get<double>();
}

int JsonObject::whole(const char* name) const {
    return wholeOf(value_->at(name, &json::is_number, "whole number"), name);
}

bool JsonObject::flag(const char* name) const {
    return value_->at(name, &json::is_boolean, "true or false").get<bool>();
}

JsonObject JsonObject::object(const char* name) const {
    return JsonObject(std::make_shared<const Value>(Value{value_->at(name, &json::is_object, "object")}));
}

std::vector<int> JsonObject::wholes(const char* name) const {
    std::vector<int> all;
    for (const json& one : value_->at(name, &json::is_array, "list"))
        all.push_back(wholeOf(one, name));
    return all;
}

std::string jsonNumber(double value) {
    constexpr std::size_t kLongest = 32;
    std::array<char, kLongest> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end};
}

} // namespace vrk
