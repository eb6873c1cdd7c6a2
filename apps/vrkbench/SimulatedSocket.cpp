#include "apps/vrkbench/SimulatedSocket.h"

#include "sim/PartCatalogue.h"

namespace vrk {

SocketView::State SimulatedSocket::state() const {
    if (bus_.boards() == 0)
        return {};
    const auto part = bus_.state().part;
    if (!part)
        return {};
    const sim::PartFacts& facts = sim::partFacts(part->name);
    const int own = facts.address ? *facts.address : -1;
    return {.part = QString::fromStdString(part->name),
            .address = address_ < 0 ? own : address_,
            .wipers = part->wipers,
            .positions = facts.positions};
}

void SimulatedSocket::put(const std::string& part, int address) {
    if (bus_.boards() == 0)
        return;
    bus_.socket(part, address < 0 ? std::nullopt : std::optional(address));
    address_ = address;
}

void SimulatedSocket::empty() {
    if (bus_.boards() > 0)
        bus_.socket(std::nullopt);
    address_ = -1;
}

} // namespace vrk
