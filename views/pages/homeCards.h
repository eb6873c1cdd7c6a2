#pragma once

#include <functional>

class QWidget;

namespace vrk {

class PageUi;
class frmStartup;
struct LinkWords;

/// A part of the home page, and what brings it up to date with board and socket.
struct HomePart {
    QWidget* widget = nullptr;
    std::function<void(const LinkWords&)> show;
};

/// The families and procedures as cards: their parts, whether they can be used now, and Open. Puts Ctrl+Enter
/// on the card whose part is in the socket.
HomePart makeHomeCards(PageUi& page, frmStartup& panel);
/// State, firmware and instance of the board, and with the simulator the part in its socket.
HomePart makeHomeBoard(PageUi& page);

} // namespace vrk
