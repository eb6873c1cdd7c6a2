#pragma once

#include "platform/controls/Panel.h"
#include "platform/runtime/text.h"

#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace vrk {

/// The bench's shared state by name, as scripts and the automation read and write it. Each state publishes
/// its own values where its struct stands.
class SharedValues {
  public:
    struct Value {
        std::string name;
        int first = kNoIndex; ///< of an array; kNoIndex for a value that stands alone
        int last = kNoIndex;
        std::function<ActionValue(int index)> get;
        std::function<void(int index, const ActionValue& value)> set;
        std::string panel{}; ///< whose it is, where several panels have one of the name
        bool isArray() const { return first != kNoIndex; }
    };

    void add(Value value) { values_.push_back(std::move(value)); }
    /// Publishes a field under its name. \param panel its owner, where others have the same name.
    template <class T>
    void scalar(const char* name, T& field, const std::string& panel = {}) {
        add({name, kNoIndex, kNoIndex, [&field](int) { return valueOf(field); },
             [&field](int, const ActionValue& value) { assign(field, value); }, panel});
    }
    /// The same for an array with bounds of its own.
    template <class Array>
    void array(const char* name, Array& field, const std::string& panel = {}) {
        add({name, 0, Array::count() - 1, [&field](int index) { return valueOf(field[index]); },
             [&field](int index, const ActionValue& value) { assign(field[index], value); }, panel});
    }

    /// By the bare name. Where several panels have one, it is that of the panel named by setFront(), else of
    /// the first that published. nullptr if there is none of that name.
    const Value* find(const std::string& name) const;
    /// That of one panel; nullptr if it has none.
    const Value* find(const std::string& panel, const std::string& name) const;
    /// Tells which panel a bare name means.
    void setFront(std::function<std::string()> panel) { front_ = std::move(panel); }
    const std::vector<Value>& all() const { return values_; }

  private:
    template <class T>
    static ActionValue valueOf(const T& field) {
        if constexpr (std::is_same_v<T, bool>)
            return field;
        else if constexpr (std::is_floating_point_v<T>)
            return static_cast<double>(field);
        else if constexpr (std::is_integral_v<T>)
            return static_cast<std::int64_t>(field);
        else
            return field;
    }
    template <class T>
    static void assign(T& field, const ActionValue& value) {
        const ActionArgs args = {value};
        if constexpr (std::is_same_v<T, bool>)
            field = wholeArgument(args, 0) != 0;
        else if constexpr (std::is_floating_point_v<T>)
            field = numberArgument(args, 0);
        else if constexpr (std::is_same_v<T, std::uint8_t>)
            field = toByte(wholeArgument(args, 0));
        else if constexpr (std::is_integral_v<T>)
            field = toInt16(wholeArgument(args, 0));
        else
            field = textArgument(args, 0);
    }

    std::vector<Value> values_;
    std::function<std::string()> front_;
};

} // namespace vrk
