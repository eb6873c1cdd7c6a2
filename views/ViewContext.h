#pragma once

#include "platform/controls/Control.h"

#include <QString>

#include <memory>
#include <optional>

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
    /// Boards that the system says are plugged in; empty where it says nothing.
    std::shared_ptr<const std::optional<int>> plugged{};
};

/// The link in words for a band and a status line.
struct LinkWords {
    QString state; ///< "attached", "simulated", "silent", "gone", "not opened"
    QString board; ///< "Board attached, instance 0"
    QString last;  ///< result of the last exchange
    Colour colour = Colour::Black;
};
LinkWords linkWords(const modHID& link, BoardKind kind, const QString& boardName);
/// The same, and what the system says of plugs: the link itself notices at its next exchange only.
LinkWords linkWords(const ViewContext& context);

} // namespace vrk
