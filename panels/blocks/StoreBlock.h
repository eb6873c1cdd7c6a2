#pragma once

#include "panels/blocks/BenchServices.h"
#include "panels/blocks/NonvolatileWrites.h"
#include "platform/controls/PanelBlock.h"

#include <optional>
#include <string>

namespace vrk {

/// Care for the part: the non-volatile writes since it was chosen, and a warning before a loop of the
/// program's own passes what the user allows.
class StoreBlock : public PanelBlock {
  public:
    /// All of them together, and by register: "00 12, 01 3".
    Label lblNvWrites{host(), "lblNvWrites"};
    Label lblNvRegisters{host(), "lblNvRegisters"};
    /// Decimal, from 1 to 1000000.
    TextBox txtNvBudget{host(), "txtNvBudget"};

    const NonvolatileWrites& nonvolatileWrites() const { return writes_; }

  protected:
    StoreBlock(Panel& panel, BenchServices& services);
    ~StoreBlock() override;

    /// Another part was chosen: counts begin anew.
    void countAnew() { writes_.restart(); }
    void partLostPower() { writes_.powerLost(); }
    /// Ahead of a loop that may write `more` times to non-volatile memory. \return false if the user, who is
    /// warned once, would rather not.
    bool mayStore(int more);
    bool wiperWritesAreStored() const { return writes_.wiperWritesAreStored(storeRules()); }
    /// The part, as the panel is set up for it.
    virtual StoreRules storeRules() const { return {}; }
    /// Pins that move are this panel's part's.
    virtual bool drivesPins() const { return false; }

  private:
    void look(const hid::Report& sent, int status);
    void showCounts();
    void takeBudget();
    bool askToGoOn(const std::string& what);

    BenchServices& services_;
    NonvolatileWrites writes_;
    std::optional<EventLoop::EventId> question_; ///< waits to be asked
    Subscription sent_;
    Subscription counted_;
};

} // namespace vrk
