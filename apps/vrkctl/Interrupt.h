#pragma once

#include "apps/vrkctl/Options.h"

#include <optional>

/// Ctrl-C, a closed terminal and the system's request to end only leave a mark, so that a command can leave
/// the board as it should be. A broken pipe and a file at its size limit are failures of the write alone.
namespace vrk::interrupt {

/// Takes the signals over, for the rest of the program. One that its parent lets be ignored (nohup) stays so.
/// However often they come, the command goes to its end: every wait for a board has a limit.
void takeSignals();

/// The exit code of the first signal that came.
std::optional<ExitCode> requested();

/// Becomes readable with the first signal and stays so.
int descriptor();

} // namespace vrk::interrupt
