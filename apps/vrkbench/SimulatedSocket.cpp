#include "apps/vrkbench/SimulatedSocket.h"

namespace vrk {

SocketView::State SimulatedSocket::state() const {
    State state;
    if (bus_.boards() == 0)
        return state;
    if (const auto part = bus_.state(0).part) {
        state.part = QString::fromStdString(part->name);
        state.address = address_;
        state.wipers = part->wipers;
    }
    return state;
}

void SimulatedSocket::put(const std::string& part, int address) {
    if (bus_.boards() == 0)
        return;
    bus_.socket(part, address < 0 ? std::nullopt : std::optional<int>(address), 0);
    address_ = address;
}

void SimulatedSocket::empty() {
    if (bus_.boards() > 0)
        bus_.socket(std::nullopt, std::nullopt, 0);
    address_ = -1;
}

} // namespace vrk
