#pragma once

#include <string_view>

namespace vrk {

/// Writes everything, however slowly it is taken, unless a stop is asked for meanwhile.
///
/// \param stop a descriptor that becomes readable when the program is to end, and stays so; -1 for none. A
/// signal alone would be lost if it came between the last look at its flag and a write that blocks.
/// \return 0, the system's error number (EPIPE: the reader has gone), or ECANCELED if a stop was asked for
/// while nothing more was taken.
int writeWhole(int descriptor, std::string_view text, int stop);

} // namespace vrk
