#pragma once

#include "platform/controls/Control.h"

#include <QString>

namespace vrk {

class Bench;
class modHID;

/// What stands at the other end of the link.
enum class BoardKind { Real, Simulated, Replayed };

/// What every window of a bench knows.
struct ViewContext {
    Bench& bench;
    BoardKind boardKind = BoardKind::Real;
    QString boardName; ///< the simulated part or the replayed file; empty for a real board
};

/// The link in words for a band and a status line.
struct LinkWords {
    QString state; ///< "attached", "simulated", "silent", "gone", "not opened"
    QString board; ///< "Board attached, instance 0"
    QString last;  ///< result of the last exchange
    Colour colour = Colour::Black;
};
LinkWords linkWords(const modHID& link, BoardKind kind, const QString& boardName);

} // namespace vrk
