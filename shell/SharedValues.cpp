#include "shell/SharedValues.h"

namespace vrk {

const SharedValues::Value* SharedValues::find(const std::string& name) const {
    for (const Value& value : values_)
        if (value.name == name)
            return &value;
    return nullptr;
}

} // namespace vrk
