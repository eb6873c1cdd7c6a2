#pragma once

#include "platform/hid/ReplayHost.h"

namespace vrk {

/// Shows why a replay has ended, both reports byte by byte, in a box over whatever stands there: the link's
/// own box, which comes for the refused report, says nothing of the recording. On the UI thread.
void showReplayDifference(const hid::ReplayHost::Difference& difference);

} // namespace vrk
