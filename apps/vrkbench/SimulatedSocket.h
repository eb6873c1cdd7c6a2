#pragma once

#include "sim/SimulatedBus.h"
#include "views/ViewContext.h"

namespace vrk {

/// The socket of the first simulated board, for the window.
class SimulatedSocket final : public SocketView {
  public:
    /// The bus must outlive this.
    explicit SimulatedSocket(sim::SimulatedBus& bus) : bus_(bus) {}

    State state() const override;
    std::vector<std::string> partNames() const override { return sim::SimulatedBus::partNames(); }
    /// \throws std::invalid_argument for a part or an address that there is not; the socket then stays.
    void put(const std::string& part, int address) override;
    void empty() override;

  private:
    sim::SimulatedBus& bus_;
    int address_ = -1; ///< of the part that was put last, if not its own
};

} // namespace vrk
