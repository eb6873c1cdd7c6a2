#pragma once

#include "platform/controls/Control.h"

#include <QString>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

class Bench;
class modHID;
namespace hid {
class WireRecorder;
}

/// What stands at the other end of the link.
enum class BoardKind { Real, Simulated, Replayed };

/// The socket of the simulated board, for the pages that show it or put another part into it.
class SocketView {
  public:
    struct State {
        QString part;            ///< empty: nothing in the socket
        int address = -1;        ///< bus address or ID; -1 for a part without one
        std::vector<int> wipers; ///< positions, by channel
        int positions = 0;       ///< that each wiper has; 0 where the part does not tell
    };
    virtual ~SocketView() = default;
    virtual State state() const = 0;
    virtual std::vector<std::string> partNames() const = 0;
    /// A part fresh from the factory. \param address -1 for the part's own.
    virtual void put(const std::string& part, int address) = 0;
    virtual void empty() = 0;
};

/// What every window of a bench knows.
struct ViewContext {
    Bench& bench;
    BoardKind boardKind = BoardKind::Real;
    QString boardName; ///< the simulated part or the replayed file; empty for a real board
    /// Boards that the system says are plugged in; empty where it says nothing.
    std::shared_ptr<const std::optional<int>> plugged{};
    /// nullptr on a real or replayed board.
    std::shared_ptr<SocketView> socket{};
    /// What passes on the wire; nullptr where nobody listens.
    hid::WireRecorder* wire = nullptr;
};

/// The link in words for a band and a status line.
struct LinkWords {
    QString state; ///< "attached", "simulated", "silent", "gone", "not open"
    QString board; ///< "Board attached, instance 0"
    QString last;  ///< result of the last exchange
    Colour colour = Colour::Black;
};
LinkWords linkWords(const modHID& link, BoardKind kind, const QString& boardName);
/// The same, and what the system says of plugs: the link itself notices at its next exchange only.
LinkWords linkWords(const ViewContext& context);

} // namespace vrk
