#include "platform/controls/SharedValues.h"

#include "platform/controls/longValues.h"

#include <algorithm>

namespace vrk {

const SharedValues::Value* SharedValues::find(const std::string& name) const {
    const std::string front = front_ ? front_() : std::string();
    if (!front.empty())
        if (const Value* own = find(front, name))
            return own;
    const auto found =
        std::find_if(values_.begin(), values_.end(), [&](const Value& value) { return value.name == name; });
    return found == values_.end() ? nullptr : &*found;
}

const SharedValues::Value* SharedValues::find(const std::string& panel, const std::string& name) const {
    const auto found = std::find_if(values_.begin(), values_.end(), [&](const Value& value) {
        return value.name == name && value.panel == panel;
    });
    return found == values_.end() ? nullptr : &*found;
}

void publishLong(SharedValues& values, const char* name, int& field, const std::string& panel) {
    values.add(
        {name, kNoIndex, kNoIndex, [&field](int) { return ActionValue(std::int64_t{field}); },
         // What 32 bits do not hold is refused where the argument is read.
         [&field](int, const ActionValue& value) { field = static_cast<int>(wholeArgument({value}, 0)); },
         panel});
}

} // namespace vrk
