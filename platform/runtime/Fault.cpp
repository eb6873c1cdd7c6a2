#include "platform/runtime/Fault.h"

#include <system_error>

namespace vrk {

Fault subscriptOutOfRange() {
    return Fault("Subscript out of range");
}
Fault overflow() {
    return Fault("Overflow");
}
Fault typeMismatch() {
    return Fault("Type mismatch");
}
Fault divisionByZero() {
    return Fault("Division by zero");
}

Fault fileFault(const std::string& action, const std::string& path, int errorNumber) {
    return Fault("Cannot " + action + " " + (path.empty() ? "a file without a name" : "\"" + path + "\"") +
                 ": " + std::generic_category().message(errorNumber));
}

} // namespace vrk
