#pragma once

#include "automation/RpcError.h"
#include "platform/controls/controls.h"

#include <optional>
#include <string>

namespace vrk {

/// True for "click", "key", "enter", "focus", "leave", "select", "scroll", "drag" and "doubleClick". Typing
/// is no gesture of this kind, since it takes several events.
bool isGesture(const std::string& method);

/// Does what the user's hand would do. \throws RpcError (invalid parameters) where the control's kind has no
/// such gesture or a parameter is wrong.
Outcome performGesture(Control& control, const std::string& method, const Json& params);

/// The control as a text box. \throws RpcError (invalid parameters) if it is another kind.
TextBox& asTextBox(Control& control, const std::string& method);

/// Turns an outcome that is not good into an error: refused (and why), faulted (with the fault's text),
/// ended.
void requireDone(const Outcome& outcome, const Control* control = nullptr);

} // namespace vrk
