#pragma once

#include "sim/SimulatedBus.h"
#include "views/ViewContext.h"

namespace vrk {

/// The socket of the first simulated board, for the window.
class SimulatedSocket final : public SocketView {
  public:
    explicit SimulatedSocket(sim::SimulatedBus& bus) : bus_(bus) {}
    State state() const override;
    std::vector<std::string> partNames() const override { return sim::SimulatedBus::partNames(); }
    void put(const std::string& part, int address) override;
    void empty() override;

  private:
    sim::SimulatedBus& bus_;
    int address_ = -1; ///< asked for; the part's own where it is not
};

} // namespace vrk
