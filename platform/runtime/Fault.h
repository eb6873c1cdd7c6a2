#pragma once

#include <stdexcept>
#include <string>

namespace vrk {

/// A fault of the run time that an action may count on: the text is what the user reads. The action that
/// raised it is dropped by whoever delivered the user's gesture, unless it has an error path of its own.
class Fault : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

Fault subscriptOutOfRange();
Fault overflow();
Fault typeMismatch();
Fault divisionByZero();

/// \param action what was tried, "open" or "write". \param path the file. \param errorNumber errno.
Fault fileFault(const std::string& action, const std::string& path, int errorNumber);

/// Unwinds every action on the stack when the program ends from deep inside one, as Cancel in a link
/// dialog does. No std::exception, so that nobody catches it by accident.
struct ProgramEnded {};

} // namespace vrk
