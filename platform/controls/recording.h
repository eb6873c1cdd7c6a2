#pragma once

#include "platform/controls/Panel.h"
#include "platform/controls/TextLog.h"

#include <string>

namespace vrk {

/// Asks where a log shall be recorded. A cancelled dialog leaves the field as it is.
void chooseRecording(const PanelContext& context, TextBox& path);

/// A log as a trace file has it: a heading with date and time, the text, "END" on a line of its own.
std::string recordingText(const PanelContext& context, const TextLog& log);

/// Saves a log as a trace file. A path that cannot be written is told in a box; an old file then stays.
/// \param append behind what the file holds, instead of in its place.
/// \return whether it was written.
bool saveRecording(const PanelContext& context, const TextLog& log, const std::string& path, bool append);

} // namespace vrk
