#include "platform/controls/SharedValues.h"

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

} // namespace vrk
