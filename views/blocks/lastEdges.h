#pragma once

#include "views/blocks/PinTimeline.h"

namespace vrk {

/// The timing picture under its heading. \param words what its edges come to.
QWidget* lastEdges(TimingPicture& picture, std::function<QString(const PinTimeline&)> words);

} // namespace vrk
