#pragma once

#include "platform/runtime/Fault.h"

#include <array>
#include <cstddef>

namespace vrk {

/// An array whose bad subscript is the run-time fault, as for the control arrays.
template <class T, int Count>
class CheckedArray {
  public:
    T& operator[](int index) {
        if (index < 0 || index >= Count)
            throw subscriptOutOfRange();
        return items_[static_cast<std::size_t>(index)];
    }
    const T& operator[](int index) const { return const_cast<CheckedArray&>(*this)[index]; }
    static constexpr int count() { return Count; }

  private:
    std::array<T, static_cast<std::size_t>(Count)> items_{};
};

} // namespace vrk
