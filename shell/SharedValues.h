#pragma once

#include "platform/controls/Panel.h"

#include <functional>
#include <string>
#include <vector>

namespace vrk {

/// The bench's module state by name, as scripts and the automation read and write it.
class SharedValues {
  public:
    struct Value {
        std::string name;
        int first = kNoIndex; ///< of an array; kNoIndex for a value that stands alone
        int last = kNoIndex;
        std::function<ActionValue(int index)> get;
        std::function<void(int index, const ActionValue& value)> set;
        bool isArray() const { return first != kNoIndex; }
    };

    void add(Value value) { values_.push_back(std::move(value)); }
    /// nullptr if there is none of that name.
    const Value* find(const std::string& name) const;
    const std::vector<Value>& all() const { return values_; }

  private:
    std::vector<Value> values_;
};

} // namespace vrk
