#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vrk {

/// A JSON object that was read. Asking for a value that is not there, or is of another kind, \throws Fault
/// naming it.
class JsonObject {
  public:
    /// Nothing if the text is no JSON object.
    static std::optional<JsonObject> parse(std::string_view text);

    bool has(const char* name) const;
    std::string text(const char* name) const;
    double number(const char* name) const;
    /// \throws Fault also for one that does not fit 32 bits or has a fraction.
    int whole(const char* name) const;
    bool flag(const char* name) const;
    JsonObject object(const char* name) const;
    std::vector<int> wholes(const char* name) const;

  private:
    struct Value;
    explicit JsonObject(std::shared_ptr<const Value> value) : value_(std::move(value)) {}

    std::shared_ptr<const Value> value_;
};

/// A finite number as JSON writes it: the shortest text that gives the same value again.
std::string jsonNumber(double value);

} // namespace vrk
